#include "editor/IGraphicsX11.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>

#include "editor/IPlatformWindow.h"
#include "editor/X11ErrorTrap.h"
#include "pluginterfaces/gui/iplugview.h"

using namespace Steinberg;

namespace
{
// Presses closer than this in time and space make a double click.
constexpr auto kDoubleClickTime = std::chrono::milliseconds(400);
constexpr int kDoubleClickDistance = 4;

class X11Window;

// What the host's run loop calls. The host may keep a reference after the window is gone, so the
// handler outlives it and forgets its window when the window closes.
class RunLoopHandler final : public Linux::IEventHandler, public Linux::ITimerHandler
{
  public:
    explicit RunLoopHandler(X11Window* window) : mWindow(window) {}
    void Detach() { mWindow = nullptr; }

    void PLUGIN_API onFDIsSet(Linux::FileDescriptor) override;
    void PLUGIN_API onTimer() override;

    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        if (FUnknownPrivate::iidEqual(iid, Linux::IEventHandler::iid) ||
            FUnknownPrivate::iidEqual(iid, FUnknown::iid))
        {
            addRef();
            *obj = static_cast<Linux::IEventHandler*>(this);
            return kResultOk;
        }
        if (FUnknownPrivate::iidEqual(iid, Linux::ITimerHandler::iid))
        {
            addRef();
            *obj = static_cast<Linux::ITimerHandler*>(this);
            return kResultOk;
        }
        *obj = nullptr;
        return kNoInterface;
    }
    uint32 PLUGIN_API addRef() override { return ++mRefs; }
    uint32 PLUGIN_API release() override
    {
        const uint32 refs = --mRefs;
        if (refs == 0) delete this;
        return refs;
    }

  private:
    ~RunLoopHandler() = default;
    std::atomic<uint32> mRefs{1};
    X11Window* mWindow;
};

class X11Window final : public IPlatformWindow
{
  public:
    X11Window(IGraphics& graphics, Display* display, Window window, Linux::IRunLoop* runLoop)
        : mGraphics(graphics), mDisplay(display), mWindow(window), mRunLoop(runLoop),
          mHandler(new RunLoopHandler(this))
    {
        mRunLoop->addRef();
        mGC = XCreateGC(mDisplay, mWindow, 0, nullptr);
        mRunLoop->registerEventHandler(mHandler, ConnectionNumber(mDisplay));
        mRunLoop->registerTimer(mHandler,
                                static_cast<Linux::TimerInterval>(1000 / std::max(1, graphics.FPS())));
    }

    ~X11Window() override
    {
        mRunLoop->unregisterTimer(mHandler);
        mRunLoop->unregisterEventHandler(mHandler);
        mHandler->Detach();
        mHandler->release();
        mRunLoop->release();
        XFreeGC(mDisplay, mGC);
        // A host may destroy its parent window (and so ours) before it removes the view.
        if (!mGone) XDestroyWindow(mDisplay, mWindow);
        // Errors still on their way are taken by the trap before it lets the connection go.
        XSync(mDisplay, False);
        x11trap::Unwatch(mDisplay);
        XCloseDisplay(mDisplay);
    }

    void Invalidate(const IRECT& r) override
    {
        if (mGone) return;
        IRaster& raster = mGraphics.Raster();
        const double s = raster.Scale();
        const int x0 = std::max(0, static_cast<int>(std::floor(r.L * s)));
        const int y0 = std::max(0, static_cast<int>(std::floor(r.T * s)));
        const int x1 = std::min(raster.DeviceWidth(), static_cast<int>(std::ceil(r.R * s)));
        const int y1 = std::min(raster.DeviceHeight(), static_cast<int>(std::ceil(r.B * s)));
        if (x1 <= x0 || y1 <= y0) return;
        // The raster's rows are used in place: 32-bit pixels in the visual's native order.
        XImage* image = XCreateImage(mDisplay, DefaultVisual(mDisplay, DefaultScreen(mDisplay)), 24, ZPixmap,
                                     0, reinterpret_cast<char*>(const_cast<std::uint32_t*>(raster.Pixels())),
                                     static_cast<unsigned>(raster.DeviceWidth()),
                                     static_cast<unsigned>(raster.DeviceHeight()), 32, raster.Stride());
        if (!image) return;
        XPutImage(mDisplay, mWindow, mGC, image, x0, y0, x0, y0, static_cast<unsigned>(x1 - x0),
                  static_cast<unsigned>(y1 - y0));
        image->data = nullptr; // the raster owns the pixels
        XDestroyImage(image);
        XFlush(mDisplay);
    }

    void Resize(int deviceW, int deviceH) override
    {
        if (mGone) return;
        XResizeWindow(mDisplay, mWindow, static_cast<unsigned>(deviceW), static_cast<unsigned>(deviceH));
        XFlush(mDisplay);
    }

    void OnTimer() { mGraphics.OnTimerTick(); }

    void OnEvents()
    {
        while (XPending(mDisplay) > 0)
        {
            XEvent event;
            XNextEvent(mDisplay, &event);
            Dispatch(event);
        }
    }

  private:
    IMouseMod Mods(unsigned state, unsigned button) const
    {
        IMouseMod mod;
        mod.L = button == Button1 || (button == 0 && (state & Button1Mask));
        mod.R = button == Button3 || (button == 0 && (state & Button3Mask));
        mod.S = state & ShiftMask;
        mod.C = state & ControlMask;
        mod.A = state & Mod1Mask;
        return mod;
    }
    int LayoutX(int x) const { return static_cast<int>(std::floor(x / mGraphics.Scale())); }
    int LayoutY(int y) const { return static_cast<int>(std::floor(y / mGraphics.Scale())); }

    static int KeyOf(KeySym sym, const char* text, int len)
    {
        switch (sym)
        {
        case XK_BackSpace:
            return kKeyBackspace;
        case XK_Tab:
            return kKeyTab;
        case XK_Return:
        case XK_KP_Enter:
            return kKeyEnter;
        case XK_Escape:
            return kKeyEscape;
        case XK_Delete:
        case XK_KP_Delete:
            return kKeyDelete;
        case XK_Left:
            return kKeyLeft;
        case XK_Right:
            return kKeyRight;
        case XK_Up:
            return kKeyUp;
        case XK_Down:
            return kKeyDown;
        case XK_Home:
            return kKeyHome;
        case XK_End:
            return kKeyEnd;
        case XK_Page_Up:
            return kKeyPageUp;
        case XK_Page_Down:
            return kKeyPageDown;
        default:
            return len == 1 && static_cast<unsigned char>(text[0]) >= 32 ? static_cast<unsigned char>(text[0])
                                                                         : static_cast<int>(kKeyNone);
        }
    }

    void Dispatch(XEvent& e)
    {
        switch (e.type)
        {
        case Expose:
        {
            // Exposure shows the raster again; nothing is redrawn.
            const double s = mGraphics.Scale();
            mGraphics.Window()->Invalidate(
                IRECT(static_cast<int>(e.xexpose.x / s), static_cast<int>(e.xexpose.y / s),
                      static_cast<int>(std::ceil((e.xexpose.x + e.xexpose.width) / s)),
                      static_cast<int>(std::ceil((e.xexpose.y + e.xexpose.height) / s))));
            break;
        }
        case ButtonPress:
        {
            const int x = LayoutX(e.xbutton.x), y = LayoutY(e.xbutton.y);
            const IMouseMod mod = Mods(e.xbutton.state, e.xbutton.button);
            if (e.xbutton.button == Button4 || e.xbutton.button == Button5)
            {
                mGraphics.OnMouseWheel(x, y, mod, e.xbutton.button == Button4 ? 1 : -1);
                break;
            }
            if (e.xbutton.button != Button1 && e.xbutton.button != Button3) break;
            XSetInputFocus(mDisplay, mWindow, RevertToParent, CurrentTime);
            const auto now = std::chrono::steady_clock::now();
            const bool dbl = e.xbutton.button == mLastButton && now - mLastPress < kDoubleClickTime &&
                             std::abs(e.xbutton.x - mLastPressX) <= kDoubleClickDistance &&
                             std::abs(e.xbutton.y - mLastPressY) <= kDoubleClickDistance;
            mLastButton = dbl ? 0 : e.xbutton.button;
            mLastPress = now;
            mLastPressX = e.xbutton.x;
            mLastPressY = e.xbutton.y;
            mButtonDown = true;
            if (dbl)
                mGraphics.OnMouseDblClick(x, y, mod);
            else
                mGraphics.OnMouseDown(x, y, mod);
            break;
        }
        case ButtonRelease:
            if (e.xbutton.button != Button1 && e.xbutton.button != Button3) break;
            mButtonDown = false;
            mGraphics.OnMouseUp(LayoutX(e.xbutton.x), LayoutY(e.xbutton.y),
                                Mods(e.xbutton.state, e.xbutton.button));
            break;
        case MotionNotify:
        {
            const int x = LayoutX(e.xmotion.x), y = LayoutY(e.xmotion.y);
            const IMouseMod mod = Mods(e.xmotion.state, 0);
            if (mButtonDown)
                mGraphics.OnMouseDrag(x, y, mod);
            else
                mGraphics.OnMouseOver(x, y, mod);
            break;
        }
        case DestroyNotify:
            if (e.xdestroywindow.window == mWindow) mGone = true;
            break;
        case LeaveNotify:
            if (!mButtonDown) mGraphics.OnMouseOut();
            break;
        case KeyPress:
        {
            char text[8] = {};
            KeySym sym = NoSymbol;
            const int len = XLookupString(&e.xkey, text, sizeof text, &sym, nullptr);
            const int key = KeyOf(sym, text, len);
            if (key != kKeyNone) mGraphics.OnKeyDown(LayoutX(e.xkey.x), LayoutY(e.xkey.y), key);
            break;
        }
        default:
            break;
        }
    }

    IGraphics& mGraphics;
    Display* mDisplay;
    Window mWindow;
    GC mGC = nullptr;
    Linux::IRunLoop* mRunLoop;
    RunLoopHandler* mHandler;
    bool mGone = false; // destroyed with the host's parent
    bool mButtonDown = false;
    unsigned mLastButton = 0;
    std::chrono::steady_clock::time_point mLastPress{};
    int mLastPressX = 0, mLastPressY = 0;
};

void PLUGIN_API RunLoopHandler::onFDIsSet(Linux::FileDescriptor)
{
    if (mWindow) mWindow->OnEvents();
}

void PLUGIN_API RunLoopHandler::onTimer()
{
    if (mWindow) mWindow->OnTimer();
}

std::unique_ptr<IPlatformWindow> OpenX11Window(IGraphics& graphics, void* parent, void* hostContext)
{
    auto* frame = static_cast<IPlugFrame*>(hostContext);
    if (!frame || !parent) return nullptr;
    Linux::IRunLoop* runLoop = nullptr;
    if (frame->queryInterface(Linux::IRunLoop::iid, reinterpret_cast<void**>(&runLoop)) != kResultOk ||
        !runLoop)
        return nullptr;
    Display* display = XOpenDisplay(nullptr);
    if (!display)
    {
        runLoop->release();
        return nullptr;
    }
    x11trap::Watch(display);
    IRaster& raster = graphics.Raster();
    XSetWindowAttributes attributes{};
    attributes.event_mask = ExposureMask | ButtonPressMask | ButtonReleaseMask | PointerMotionMask |
                            KeyPressMask | KeyReleaseMask | LeaveWindowMask | StructureNotifyMask |
                            FocusChangeMask;
    attributes.background_pixel = 0;
    const Window window = XCreateWindow(
        display, static_cast<Window>(reinterpret_cast<std::uintptr_t>(parent)), 0, 0,
        static_cast<unsigned>(raster.DeviceWidth()), static_cast<unsigned>(raster.DeviceHeight()), 0,
        CopyFromParent, InputOutput, CopyFromParent, CWEventMask | CWBackPixel, &attributes);
    XMapWindow(display, window);
    // A parent that does not exist (or is already gone) fails here, not later in the host's loop.
    XSync(display, False);
    if (x11trap::ErrorCount(display) > 0)
    {
        x11trap::Unwatch(display);
        XCloseDisplay(display);
        runLoop->release();
        return nullptr;
    }
    auto result = std::make_unique<X11Window>(graphics, display, window, runLoop);
    runLoop->release(); // the window holds its own reference
    return result;
}
} // namespace

PlatformWindowFactory MakeX11WindowFactory()
{
    return OpenX11Window;
}
