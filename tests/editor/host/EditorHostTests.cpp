// The editor as a host meets it: the installed bundle loaded through VST 3, its view attached to a
// parent window on an Xvfb display that this test starts, with a run loop of the test's own, and
// driven by XTest like a user's mouse and keyboard. The values are checked where they reach the
// host (beginEdit/performEdit/endEdit) and the plug-in's parameters. It links none of our
// libraries: only the layout tables are read, to know where the controls sit.
#include <cairo.h>
#include <fontconfig/fontconfig.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <memory>
#include <regex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "PluginModule.h"
#include "common/HostDoubles.h"
#include "editor/IOverlay.h"
#include "editor/MainLayout.h"
#include "editor/PageLayouts.h"
#include "params/ParamIds.h"
#include "pluginterfaces/gui/iplugview.h"
#include "pluginterfaces/gui/iplugviewcontentscalesupport.h"
#include "pluginterfaces/vst/ivstcomponent.h"
#include "pluginterfaces/vst/ivstcontextmenu.h"
#include "pluginterfaces/vst/ivsteditcontroller.h"

// Xlib last: its macros (None, Bool, Status) would break the headers above.
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

extern char** environ;

using namespace Steinberg;
using namespace Steinberg::Vst;

namespace
{
// Joins texts (gcc 12 warns falsely about "literal" + std::string temporaries).
std::string Cat(std::initializer_list<std::string_view> parts)
{
    std::string out;
    for (std::string_view p : parts)
        out.append(p);
    return out;
}

// The X server of the whole run, on the first free display number; gDisplay stays empty when none
// could be started. At the end the plug-in's text, which went through cairo's and fontconfig's
// caches that live until the process ends, hands them back so the leak checker sees only ours.
std::string gDisplay;

class XvfbEnvironment : public ::testing::Environment
{
  public:
    void SetUp() override
    {
        for (int n = 91; n < 140 && gDisplay.empty(); ++n)
        {
            if (std::filesystem::exists(Cat({"/tmp/.X", std::to_string(n), "-lock"}))) continue;
            const std::string name = Cat({":", std::to_string(n)});
            const char* argv[] = {"Xvfb",         name.c_str(), "-screen", "0",
                                  "2600x1400x24", "-nolisten",  "tcp",     nullptr};
            if (posix_spawnp(&mPid, "Xvfb", nullptr, nullptr, const_cast<char* const*>(argv), environ) != 0)
                return;
            for (int wait = 0; wait < 100 && gDisplay.empty(); ++wait)
            {
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
                if (Display* d = XOpenDisplay(name.c_str()))
                {
                    XCloseDisplay(d);
                    setenv("DISPLAY", name.c_str(), 1);
                    gDisplay = name;
                }
                else if (waitpid(mPid, nullptr, WNOHANG) == mPid)
                    break; // that number was taken: next
            }
            if (gDisplay.empty() && kill(mPid, SIGTERM) == 0) waitpid(mPid, nullptr, 0);
        }
    }
    void TearDown() override
    {
        if (!gDisplay.empty() && kill(mPid, SIGTERM) == 0) waitpid(mPid, nullptr, 0);
        cairo_debug_reset_static_data();
        FcFini();
    }

  private:
    pid_t mPid = -1;
};
const auto* gEnv = ::testing::AddGlobalTestEnvironment(new XvfbEnvironment);

// ---- The host's side -----------------------------------------------------------------------------

using hostdoubles::StackUnknown;

class RunLoop : public StackUnknown<Linux::IRunLoop>
{
  public:
    tresult PLUGIN_API registerEventHandler(Linux::IEventHandler* handler, Linux::FileDescriptor fd) override
    {
        return handler->addRef(), mHandlers.push_back({handler, fd}), kResultOk;
    }
    tresult PLUGIN_API unregisterEventHandler(Linux::IEventHandler* handler) override
    {
        return Unregister(mHandlers, handler);
    }
    tresult PLUGIN_API registerTimer(Linux::ITimerHandler* handler, Linux::TimerInterval ms) override
    {
        return handler->addRef(), mTimers.push_back({handler, std::chrono::milliseconds(ms), Clock::now()}),
               kResultOk;
    }
    tresult PLUGIN_API unregisterTimer(Linux::ITimerHandler* handler) override
    {
        return Unregister(mTimers, handler);
    }

    // Runs the loop for ms milliseconds: descriptors that can be read, then timers that are due.
    void Pump(int ms)
    {
        for (const auto end = Clock::now() + std::chrono::milliseconds(ms); Clock::now() < end;)
        {
            std::vector<pollfd> fds;
            for (const Handler& h : mHandlers)
                fds.push_back({h.fd, POLLIN, 0});
            poll(fds.data(), fds.size(), 5);
            const auto handlers = mHandlers;
            for (size_t i = 0; i < fds.size() && i < handlers.size(); ++i)
                if (fds[i].revents & POLLIN) handlers[i].handler->onFDIsSet(handlers[i].fd);
            const auto now = Clock::now();
            for (const Timer t : std::vector<Timer>(mTimers))
                if (now >= t.next)
                {
                    for (Timer& live : mTimers)
                        live.next = live.handler == t.handler ? now + live.interval : live.next;
                    t.handler->onTimer();
                }
        }
    }
    size_t Registered() const { return mHandlers.size() + mTimers.size(); }

  private:
    using Clock = std::chrono::steady_clock;
    struct Handler
    {
        Linux::IEventHandler* handler;
        Linux::FileDescriptor fd;
    };
    struct Timer
    {
        Linux::ITimerHandler* handler;
        std::chrono::milliseconds interval;
        Clock::time_point next;
    };
    template <typename Entries, typename H> static tresult Unregister(Entries& entries, H* handler)
    {
        for (auto it = entries.begin(); it != entries.end(); ++it)
            if (it->handler == handler) return entries.erase(it), handler->release(), kResultOk;
        return kInvalidArgument;
    }
    std::vector<Handler> mHandlers;
    std::vector<Timer> mTimers;
};

// The host's frame, which also hands out the run loop when it has one.
class Frame : public hostdoubles::PlugFrame
{
  public:
    explicit Frame(RunLoop* loop) : mLoop(loop) {}
    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        if (!mLoop || !FUnknownPrivate::iidEqual(iid, Linux::IRunLoop::iid))
            return PlugFrame::queryInterface(iid, obj);
        return *obj = static_cast<Linux::IRunLoop*>(mLoop), kResultOk;
    }

  private:
    RunLoop* mLoop;
};

// The host's record of edits, read per parameter as a gesture string ("BPPPE").
class EditLog : public hostdoubles::ComponentHandler
{
  public:
    // The gesture string of `id`.
    std::string Of(ParamID id)
    {
        std::string s;
        for (const Edit& e : Edits())
            if (e.id == id) s += static_cast<char>(std::toupper(e.kind));
        return s;
    }
    // The last value performed for `id` (or -1).
    ParamValue Last(ParamID id)
    {
        ParamValue v = -1;
        for (const Edit& e : Edits())
            if (e.id == id && e.kind == 'p') v = e.value;
        return v;
    }
};

// A host that offers its own context menu for parameters (IComponentHandler3). The menu records
// the items the plug-in adds and "shows" by remembering where; the test then picks an item.
class MenuHost : public EditLog
{
  public:
    class Menu : public StackUnknown<IContextMenu>
    {
      public:
        // The test reads mItems itself.
        int32 PLUGIN_API getItemCount() override { return static_cast<int32>(mItems.size()); }
        tresult PLUGIN_API getItem(int32, Item&, IContextMenuTarget**) override { return kNotImplemented; }
        tresult PLUGIN_API addItem(const Item& item, IContextMenuTarget* target) override
        {
            return (target && target->addRef()), mItems.push_back({item, target}), kResultOk;
        }
        tresult PLUGIN_API removeItem(const Item&, IContextMenuTarget*) override { return kNotImplemented; }
        // "Shows" by remembering where.
        tresult PLUGIN_API popup(UCoord x, UCoord y) override { return mAt = {x, y}, kResultOk; }
        ~Menu()
        {
            for (auto& entry : mItems)
                if (entry.second) entry.second->release();
        }
        std::vector<std::pair<Item, IContextMenuTarget*>> mItems;
        std::pair<UCoord, UCoord> mAt{-1, -1};
    };
    class Handler3 : public StackUnknown<IComponentHandler3>
    {
      public:
        explicit Handler3(MenuHost& host) : mHost(host) {}
        IContextMenu* PLUGIN_API createContextMenu(IPlugView*, const ParamID* id) override
        {
            mHost.mMenuParam = id ? static_cast<int>(*id) : -1;
            return &mHost.mMenu;
        }
        MenuHost& mHost;
    };

    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        if (!FUnknownPrivate::iidEqual(iid, IComponentHandler3::iid))
            return EditLog::queryInterface(iid, obj);
        return *obj = static_cast<IComponentHandler3*>(&mHandler3), kResultOk;
    }
    Menu mMenu;
    Handler3 mHandler3{*this};
    int mMenuParam = -1;
};

IRECT RowRect(ELayoutKind kind, int param)
{
    for (const LayoutRow& row : kMainLayout)
        if (row.mKind == kind && row.mParam == param) return row.mRect;
    return IRECT();
}

struct EditorHost : ::testing::Test
{
    std::unique_ptr<vst3host::PluginModule> module;
    IComponent* component = nullptr;
    IEditController* controller = nullptr;
    hostdoubles::HostApplication app;
    EditLog log;
    RunLoop loop;
    Frame frame{&loop};
    Display* display = nullptr;
    Window parent = 0;
    IPlugView* view = nullptr;
    double scale = 1.0;

    void SetUp() override
    {
        ASSERT_FALSE(gDisplay.empty()) << "Xvfb could not be started";
        std::string error;
        const char* bundle = std::getenv("QUORVEX_BUNDLE");
        module = vst3host::PluginModule::Load(bundle ? bundle : QUORVEX_BUNDLE_DIR, error);
        ASSERT_NE(module, nullptr) << error;
        IPluginFactory* factory = module->Factory();
        PClassInfo info;
        for (int32 i = 0; i < factory->countClasses(); ++i)
            if (factory->getClassInfo(i, &info) == kResultOk &&
                std::string(info.category) == kVstAudioEffectClass)
                break;
        void* obj = nullptr;
        ASSERT_EQ(factory->createInstance(info.cid, IComponent::iid, &obj), kResultOk);
        component = static_cast<IComponent*>(obj);
        ASSERT_EQ(component->initialize(&app), kResultOk);
        ASSERT_EQ(component->queryInterface(IEditController::iid, reinterpret_cast<void**>(&controller)),
                  kResultOk);
        controller->setComponentHandler(&log);
        display = XOpenDisplay(gDisplay.c_str());
        ASSERT_NE(display, nullptr);
    }

    void TearDown() override
    {
        Close();
        if (display) XCloseDisplay(display);
        if (controller) controller->release();
        if (component) component->terminate(), component->release();
        module.reset();
    }

    // Opens the editor at a scale in a fresh parent window at the screen's corner.
    void Open(double s)
    {
        scale = s;
        view = controller->createView(ViewType::kEditor);
        ASSERT_NE(view, nullptr);
        ASSERT_EQ(view->isPlatformTypeSupported(kPlatformTypeX11EmbedWindowID), kResultTrue);
        IPlugViewContentScaleSupport* scaling = nullptr;
        ASSERT_EQ(view->queryInterface(IPlugViewContentScaleSupport::iid, reinterpret_cast<void**>(&scaling)),
                  kResultOk);
        view->setFrame(&frame);
        scaling->setContentScaleFactor(static_cast<float>(s));
        scaling->release();
        ViewRect size;
        ASSERT_EQ(view->getSize(&size), kResultTrue);
        EXPECT_EQ(size.getWidth(), static_cast<int>(std::lround(kEditorWidth * s)));
        EXPECT_EQ(size.getHeight(), static_cast<int>(std::lround(kEditorHeight * s)));
        XSetWindowAttributes a{};
        a.override_redirect = True;
        parent =
            XCreateWindow(display, DefaultRootWindow(display), 0, 0, static_cast<unsigned>(size.getWidth()),
                          static_cast<unsigned>(size.getHeight()), 0, CopyFromParent, InputOutput,
                          CopyFromParent, CWOverrideRedirect, &a);
        XMapRaised(display, parent);
        XSync(display, False);
        ASSERT_EQ(view->attached(reinterpret_cast<void*>(parent), kPlatformTypeX11EmbedWindowID), kResultOk);
        loop.Pump(300);
    }

    void Close()
    {
        if (!view) return;
        EXPECT_EQ(view->removed(), kResultOk);
        view->release();
        view = nullptr;
        EXPECT_EQ(loop.Registered(), 0u); // no handler or timer survives the window
        if (parent) XDestroyWindow(display, parent);
        XSync(display, False);
        parent = 0;
    }

    // Mouse and keys at layout coordinates, as XTest input on the screen.
    void Sent()
    {
        XFlush(display);
        loop.Pump(30);
    }
    void Move(int x, int y)
    {
        XTestFakeMotionEvent(display, -1, static_cast<int>(x * scale), static_cast<int>(y * scale),
                             CurrentTime);
        Sent();
    }
    void Button(unsigned button, bool down)
    {
        XTestFakeButtonEvent(display, button, down, CurrentTime);
        Sent();
    }
    void Press(unsigned button)
    {
        Button(button, true);
        Button(button, false);
    }
    // Waits after the press so that the next one makes no double click.
    void Click(int x, int y, unsigned button = 1)
    {
        Move(x, y);
        Press(button);
        loop.Pump(450);
    }
    void Key(KeySym sym)
    {
        const KeyCode code = XKeysymToKeycode(display, sym);
        XTestFakeKeyEvent(display, code, True, CurrentTime);
        XTestFakeKeyEvent(display, code, False, CurrentTime);
        Sent();
    }

    // The parent window's pixels (0xRRGGBB), written as a PNG when a folder is given.
    std::vector<std::uint32_t> Grab(const std::string& pngName = "")
    {
        loop.Pump(100);
        XWindowAttributes wa;
        XGetWindowAttributes(display, parent, &wa);
        XImage* image = XGetImage(display, parent, 0, 0, static_cast<unsigned>(wa.width),
                                  static_cast<unsigned>(wa.height), AllPlanes, ZPixmap);
        std::vector<std::uint32_t> pixels;
        for (int y = 0; image && y < wa.height; ++y)
            for (int x = 0; x < wa.width; ++x)
                pixels.push_back(static_cast<std::uint32_t>(XGetPixel(image, x, y)) & 0xFFFFFF);
        if (image) XDestroyImage(image);
        const char* dir = std::getenv("QUORVEX_SCREENSHOT_DIR");
        if (!dir || pngName.empty() || pixels.empty()) return pixels;
        std::filesystem::create_directories(dir);
        cairo_surface_t* png =
            cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()),
                                                CAIRO_FORMAT_RGB24, wa.width, wa.height, wa.width * 4);
        cairo_surface_write_to_png(png, Cat({dir, "/", pngName}).c_str());
        cairo_surface_destroy(png);
        return pixels;
    }
    std::uint32_t PixelAt(const std::vector<std::uint32_t>& pixels, int x, int y) const
    {
        const int w = static_cast<int>(std::lround(kEditorWidth * scale));
        return pixels[static_cast<size_t>(static_cast<int>(y * scale) * w + static_cast<int>(x * scale))];
    }

    void SetColorSetThroughState(int set)
    {
        hostdoubles::MemoryStream out;
        ASSERT_EQ(component->getState(&out), kResultOk);
        std::vector<std::uint8_t> bytes = out.Bytes();
        ASSERT_GE(bytes.size(), 8u);
        std::int32_t value = set;
        std::memcpy(bytes.data() + 4, &value, 4); // after the version word
        hostdoubles::MemoryStream in(bytes);
        ASSERT_EQ(component->setState(&in), kResultOk);
    }
};
} // namespace

TEST_F(EditorHost, MouseAndKeysReachTheHostAndTheViewResizesAtEveryScale)
{
    for (double s : {1.0, 2.0})
    {
        log.Clear();
        Open(s);
        const std::string tag = s > 1.5 ? "200" : "100";
        SCOPED_TRACE(tag);

        // Drag a knob: one gesture, the value up by the drag.
        const IRECT dry = RowRect(ELayoutKind::kKnob, kDryLevel);
        const double dryBefore = controller->getParamNormalized(kDryLevel);
        Move(dry.L + 26, dry.T + 26);
        Button(1, true);
        for (int i = 1; i <= 12; ++i)
            Move(dry.L + 26, dry.T + 26 - 2 * i);
        Button(1, false);
        EXPECT_TRUE(std::regex_match(log.Of(kDryLevel), std::regex("BP+E"))) << log.Of(kDryLevel);
        // 24 pixels of a 52-pixel knob at gearing 3, cut at the top.
        EXPECT_NEAR(controller->getParamNormalized(kDryLevel), std::min(1.0, dryBefore + 24.0 / (3 * 52)),
                    0.03);
        EXPECT_DOUBLE_EQ(log.Last(kDryLevel), controller->getParamNormalized(kDryLevel));
        loop.Pump(450);

        // Click a switch.
        const IRECT bypass = RowRect(ELayoutKind::kSwitch, kMasterFXBypass);
        const double bypassBefore = controller->getParamNormalized(kMasterFXBypass);
        Click(bypass.L + 10, bypass.T + 8);
        EXPECT_EQ(log.Of(kMasterFXBypass), "BPE");
        EXPECT_DOUBLE_EQ(controller->getParamNormalized(kMasterFXBypass), 1.0 - bypassBefore);

        // Open the master effect's list and pick "ROOM" (then "REVERB").
        const int item = s == 1.0 ? 3 : 2;
        const IRECT fx = RowRect(ELayoutKind::kPopup, kMasterFX);
        Click(fx.L + 20, fx.T + 10);
        const int itemY = fx.B + IPopupOverlay::kPad + item * IPopupOverlay::kRowH + IPopupOverlay::kRowH / 2;
        if (s == 1.0) Grab(Cat({"editor-popup-", tag, ".png"}));
        Move(fx.L + 40, itemY);
        Click(fx.L + 40, itemY);
        EXPECT_NEAR(log.Last(kMasterFX), item / 7.0, 1e-9);
        EXPECT_NEAR(controller->getParamNormalized(kMasterFX), item / 7.0, 1e-9);

        // Type a value into a knob's text box (right button).
        const IRECT wet = RowRect(ELayoutKind::kKnob, kWetLevel);
        Click(wet.L + 26, wet.T + 26, 3);
        const KeySym digit = s == 1.0 ? XK_3 : XK_4;
        Key(digit);
        Key(digit);
        Key(XK_Return);
        const double typed = s == 1.0 ? 0.33 : 0.44;
        EXPECT_NEAR(log.Last(kWetLevel), typed, 1e-9);
        EXPECT_NEAR(controller->getParamNormalized(kWetLevel), typed, 1e-9);

        // A colour set change reaches the accent pixels of an arc.
        Move(5, 610);
        loop.Pump(200);
        const auto shot = Grab(Cat({"editor-", tag, ".png"}));
        ASSERT_FALSE(shot.empty());
        const IRECT width = RowRect(ELayoutKind::kKnob, kGlobalWidth); // at 100 %: its arc crosses the top
        const std::uint32_t before = PixelAt(shot, (width.L + width.R) / 2, width.T + 2);
        SetColorSetThroughState(4);
        loop.Pump(200);
        const std::uint32_t after = PixelAt(Grab(), (width.L + width.R) / 2, width.T + 2);
        EXPECT_NE(before, after);
        EXPECT_GT(before & 0xFF, before >> 16); // the default set's blue
        EXPECT_GT(after >> 16, after & 0xFF);   // "FIRE": red over blue
        SetColorSetThroughState(0);
        // Resizing keeps the aspect and the range: {asked width, width and height given}.
        for (const auto& [askW, wantW, wantH] :
             {std::tuple{1860, 1860, 930}, {400, 930, 465}, {5000, 2480, 1240}})
        {
            ViewRect r(0, 0, askW, 300), now;
            ASSERT_EQ(view->checkSizeConstraint(&r), kResultTrue);
            EXPECT_TRUE(r.getWidth() == wantW && r.getHeight() == wantH) << askW;
            EXPECT_EQ(view->onSize(&r), kResultOk);
            view->getSize(&now);
            EXPECT_EQ(now.getWidth(), wantW);
        }
        Close();
    }
}

// The wheel, a double click and keys the host forwards through the view, on one knob.
TEST_F(EditorHost, WheelDoubleClickAndForwardedKeys)
{
    Open(1.0);
    const IRECT wet = RowRect(ELayoutKind::kKnob, kWetLevel);
    const double before = controller->getParamNormalized(kWetLevel);
    Move(wet.L + 26, wet.T + 26);
    Press(4); // one notch up
    EXPECT_NEAR(controller->getParamNormalized(kWetLevel), before + 0.01, 1e-9);
    XTestFakeKeyEvent(display, XKeysymToKeycode(display, XK_Shift_L), True, CurrentTime);
    Press(5); // one fine notch down
    XTestFakeKeyEvent(display, XKeysymToKeycode(display, XK_Shift_L), False, CurrentTime);
    EXPECT_NEAR(controller->getParamNormalized(kWetLevel), before + 0.009, 1e-9);
    EXPECT_EQ(log.Of(kWetLevel), "BPEBPE");
    // Two quick presses return the knob to the value it had when the editor was built.
    Press(1);
    Press(1);
    EXPECT_NEAR(controller->getParamNormalized(kWetLevel), before, 1e-9);

    log.Clear();
    Click(wet.L + 26, wet.T + 26, 3);
    for (char16 c : {u'5', char16(0), u'2'}) // 0: the left arrow, as a virtual key
        EXPECT_EQ(view->onKeyDown(c, c ? 0 : 11, 0), kResultTrue);
    EXPECT_EQ(view->onKeyDown(0, 4, 0), kResultTrue); // return
    EXPECT_NEAR(controller->getParamNormalized(kWetLevel), 0.25, 1e-9);
    EXPECT_EQ(log.Of(kWetLevel), "BPE");
    EXPECT_EQ(view->onKeyDown(0, 4, 0), kResultFalse); // nothing takes keys now
}

// A host with a context menu of its own gets the right button: the menu of the parameter under the
// mouse, at the view's pixels, holding our value entry, which still works from there.
TEST_F(EditorHost, TheHostsContextMenuCarriesOurValueEntry)
{
    MenuHost host;
    controller->setComponentHandler(&host);
    Open(2.0);
    const IRECT wet = RowRect(ELayoutKind::kKnob, kWetLevel);
    Click(wet.L + 26, wet.T + 26, 3);
    EXPECT_EQ(host.mMenuParam, kWetLevel);
    EXPECT_NEAR(host.mMenu.mAt.first, 2 * (wet.L + 26), 2);
    EXPECT_NEAR(host.mMenu.mAt.second, 2 * (wet.T + 26), 2);
    ASSERT_EQ(host.mMenu.mItems.size(), 1u);
    const auto& [item, target] = host.mMenu.mItems[0];
    EXPECT_EQ(std::u16string(item.name), u"Enter value...");
    ASSERT_NE(target, nullptr);
    EXPECT_EQ(target->executeMenuItem(item.tag), kResultOk);
    loop.Pump(100);
    Key(XK_1);
    Key(XK_2);
    Key(XK_Return);
    EXPECT_NEAR(controller->getParamNormalized(kWetLevel), 0.12, 1e-9);
    EXPECT_EQ(host.Of(kWetLevel), "BPE");
    Close();
    controller->setComponentHandler(&log);
}

// The test's own X errors, seen by the handler it installs before the plug-in opens a window.
std::vector<int> gTestErrors;
int RecordTestError(Display*, XErrorEvent* e)
{
    gTestErrors.push_back(e->error_code);
    return 0;
}

// A host may destroy the parent window before it removes the view, or hand over a window that does
// not exist: neither ends the process (Xlib's own handler would), and the host's error handler
// still hears about errors on its own connection, before, during and after.
TEST_F(EditorHost, AGoneParentWindowIsNoErrorOfTheHosts)
{
    gTestErrors.clear();
    const XErrorHandler before = XSetErrorHandler(RecordTestError);
    auto provokeOwnError = [&]
    {
        XMapWindow(display, 0x3FFFFFF0); // no such window
        XSync(display, False);
    };
    for (int round = 0; round < 3; ++round)
    {
        Open(1.0);
        provokeOwnError();
        XDestroyWindow(display, parent);
        XSync(display, False);
        parent = 0;
        if (round > 0) loop.Pump(200); // the plug-in may or may not have seen its window go
        const IRECT bypass = RowRect(ELayoutKind::kSwitch, kMasterFXBypass);
        Click(bypass.L + 10, bypass.T + 8); // lands on the root window: nothing happens
        Close();
    }
    ASSERT_EQ(gTestErrors.size(), 3u);
    for (int code : gTestErrors)
        EXPECT_EQ(code, BadWindow);

    // A parent that never existed, or a host without a run loop: no window, no handler left behind.
    Frame bare(nullptr);
    parent = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 100, 100, 0, 0, 0);
    for (const auto& [frameGiven, window] : {std::pair{&frame, Window(0x3FFFFFF0)}, {&bare, parent}})
    {
        view = controller->createView(ViewType::kEditor);
        ASSERT_NE(view, nullptr);
        view->setFrame(frameGiven);
        EXPECT_EQ(view->attached(reinterpret_cast<void*>(window), kPlatformTypeX11EmbedWindowID),
                  kResultFalse);
        EXPECT_EQ(loop.Registered(), 0u);
        view->release();
        view = nullptr;
    }
    Window root = 0, up = 0, *children = nullptr;
    unsigned n = 0;
    XQueryTree(display, parent, &root, &up, &children, &n);
    if (children) XFree(children);
    EXPECT_EQ(n, 0u);
    XDestroyWindow(display, parent);
    parent = 0;

    // The host's handler is back in charge of its own connection, and the editor still works.
    provokeOwnError();
    EXPECT_EQ(gTestErrors.size(), 4u);
    Open(1.0);
    log.Clear();
    const IRECT bypass = RowRect(ELayoutKind::kSwitch, kMasterFXBypass);
    Click(bypass.L + 10, bypass.T + 8);
    EXPECT_EQ(log.Of(kMasterFXBypass), "BPE");
    Close();
    XSetErrorHandler(before);
}

// Every page through its tab: the page's own controls show and take the mouse, and a change
// reaches the host as one gesture. (The options button is the main page tests'.)
TEST_F(EditorHost, EveryPageTakesTheMouse)
{
    Open(1.0);
    const LayoutRow* tabs = nullptr;
    for (const LayoutRow& row : kMainLayout)
        if (row.mKind == ELayoutKind::kPageSelect) tabs = &row;
    ASSERT_NE(tabs, nullptr);
    const int tabW = kBitmapRows[tabs->mBitmap].mW;
    int pagesWithControls = 0;
    for (int page = 0; page < kPageOptions; ++page)
    {
        Click(tabs->mRect.L + (tabs->mRect.W() - tabW) * page / (kNumSelectablePages - 1) + tabW / 2,
              tabs->mRect.T + 10);
        // The page's first switch (else its first knob).
        const LayoutRow* target = nullptr;
        int param = -1;
        for (const PageLayout& layout : kPageLayouts)
        {
            const int instance = ListOfPage(page) - layout.mFirstList;
            if (instance < 0 || instance >= layout.mInstances) continue;
            for (ELayoutKind kind : {ELayoutKind::kSwitch, ELayoutKind::kKnob})
                for (const LayoutRow& row : layout.mRows)
                    if (!target && row.mKind == kind && row.mParam >= 0)
                    {
                        target = &row;
                        param = ParamOfRow(row, layout, instance);
                    }
        }
        if (!target) continue;
        ++pagesWithControls;
        log.Clear();
        const double before = controller->getParamNormalized(static_cast<ParamID>(param));
        // A switch is pressed; a knob turns one notch of the wheel, towards the middle.
        const IRECT r = target->mRect;
        if (target->mKind == ELayoutKind::kSwitch)
            Click((r.L + r.R) / 2, (r.T + r.B) / 2);
        else
        {
            Move((r.L + r.R) / 2, (r.T + r.B) / 2);
            Press(before < 0.5 ? 4 : 5);
        }
        EXPECT_EQ(log.Of(static_cast<ParamID>(param)), "BPE") << "page " << page;
        EXPECT_NE(controller->getParamNormalized(static_cast<ParamID>(param)), before) << "page " << page;
        Grab(Cat({"page-", std::to_string(page), ".png"}));
    }
    EXPECT_GE(pagesWithControls, 3); // the three effect pages at least
}
