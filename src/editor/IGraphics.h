#pragma once
// The editor: the list of controls, the offscreen raster they draw into, mouse and key routing,
// the prompts (value entry, popup menus, text box) and the link to the window back end. Controls
// are drawn in the order attached and hit-tested from the last; each timer tick redraws only the
// union of what changed. Coordinates are layout pixels of the width x height window at 100 %:
// the back end maps the screen's scale away before calling in. UI thread only; it takes no lock.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "editor/ColorSets.h"
#include "editor/IControl.h"
#include "editor/IGraphicsTypes.h"
#include "editor/IOverlay.h"
#include "editor/IPopupMenu.h"
#include "editor/IRaster.h"
#include "host/IEditorWindow.h"
#include "host/IPlugBase.h"

class IParamRecord;
class IPlatformWindow;

// Hands an address to the desktop's opener ("xdg-open") as a child process; false when it
// can't be started.
bool OpenURLInBrowser(const std::string& url);

// Makes the window of a platform inside a host's parent; null when that fails.
using PlatformWindowFactory = std::function<std::unique_ptr<IPlatformWindow>(
    class IGraphics& graphics, void* parent, void* hostContext)>;

class IGraphics : public IEditorLink, public IEditorWindow
{
  public:
    using PopupDone = IPopupOverlay::Done;
    using TextDone = ITextEntryOverlay::Done;
    // Ticks a mouse has to rest on a control before its tooltip shows.
    static constexpr int kTooltipDelayTicks = 12;

    IGraphics(IPlugBase* plug, int width, int height, int fps);
    ~IGraphics() override;
    IGraphics(const IGraphics&) = delete;
    IGraphics& operator=(const IGraphics&) = delete;

    // ---- Building ----
    // Takes ownership; answers the control's index.
    int AttachControl(IControl* control);
    void AttachBackground(const IBitmap& bitmap) { mBackground = bitmap; }
    // A plain colour behind everything when there is no background bitmap.
    void AttachPanelBackground(const IColor& color) { mPanelColor = color; }
    // "<resource dir>/<name>.png" (and its @2x twin); a missing file gives a bitmap that draws
    // nothing. The id is the bitmap's resource number, kept for the look-up by id.
    IBitmap LoadIBitmap(int id, const char* name, int frames = 1);
    void SetResourceDir(std::string dir) { mResourceDir = std::move(dir); }
    const std::string& ResourceDir() const { return mResourceDir; }

    int NControls() const { return static_cast<int>(mControls.size()); }
    IControl* GetControl(int idx) const;
    IPlugBase* Plug() const { return mPlug; }
    int FPS() const { return mFPS; }

    // ---- Colour sets ----
    ColorRoles& Colors() { return mColors; }
    // Applies a set (an index out of range as the default) and marks everything for redraw;
    // answers the index applied.
    int SetColorSet(int index);

    // ---- Drawing, for controls ----
    void DrawBitmap(const IBitmap& bitmap, const IRECT& rect, int frame = 1,
                    const IChannelBlend* blend = nullptr);
    void DrawRotatedBitmap(const IBitmap& bitmap, int cx, int cy, double angleDeg,
                           const IChannelBlend* blend = nullptr);
    void DrawRect(const IColor& color, const IRECT& rect);
    void FillIRect(const IColor& color, const IRECT& rect);
    void FillCircle(const IColor& color, int cx, int cy, float radius);
    void DrawLine(const IColor& color, float x1, float y1, float x2, float y2, float width = 1.0f);
    void DrawArc(const IColor& color, float cx, float cy, float radius, float fromDeg, float toDeg,
                 float width);
    void DrawIText(const IText& text, const char* str, const IRECT& rect);
    IRECT MeasureIText(const IText& text, const char* str);
    IRaster& Raster() { return *mRaster; }

    // ---- Redraw ----
    // Union of what needs redrawing (dirty visible controls, controls that just hid, overlays,
    // a forced full redraw); false when nothing does. Clears the controls' flags.
    bool IsDirty(IRECT& rect);
    // Draws background, controls and overlays inside rect into the raster.
    void Draw(const IRECT& rect);
    void SetAllControlsDirty() { mFullRedraw = true; }
    // Runs first in every timer tick (the plug-in delivers what its audio thread held back).
    void SetIdleHook(std::function<void()> hook) { mIdleHook = std::move(hook); }
    // Hears the parameter of every control a left press takes (the focus panel follows it).
    void SetTouchHook(std::function<void(int param)> hook) { mTouchHook = std::move(hook); }
    // One timer tick: the idle hook, tooltips, then redraw of the dirty union, which is handed to the window.
    // Answers the rectangle drawn (empty when nothing was).
    IRECT OnTimerTick();
    // Scale of the raster (1 = 100 %); the next draw is a full one.
    void SetScale(double scale) override;
    double Scale() const override { return mScale; }

    // ---- Plug-in side (IEditorLink) ----
    void SetParameterFromPlug(int id, double value, bool normalized) override;
    void PrepDraw() override;
    // A control's new value reaches the other controls of its parameter.
    void SetParameterFromControl(const IControl& source);
    // A control's parameters changed after it was attached.
    void InvalidateParamBindings() { mBindingsStale = true; }

    // ---- Window (IEditorWindow) ----
    bool IsPlatformTypeSupported(const char* type) const override;
    // hostContext is what the back end needs of the host (the VST 3 frame on Linux).
    bool OpenWindow(void* parent, void* hostContext) override;
    void CloseWindow() override;
    int Width() const override { return mWidth; }
    int Height() const override { return mHeight; }
    bool WindowIsOpen() const { return mWindow != nullptr; }
    IPlatformWindow* Window() const { return mWindow.get(); }
    void SetPlatform(const char* platformType, PlatformWindowFactory factory);

    // ---- Mouse and keys, in layout pixels ----
    void OnMouseDown(int x, int y, const IMouseMod& mod);
    void OnMouseUp(int x, int y, const IMouseMod& mod);
    void OnMouseDrag(int x, int y, const IMouseMod& mod);
    void OnMouseDblClick(int x, int y, const IMouseMod& mod);
    // d: +1 per notch away from the user.
    void OnMouseWheel(int x, int y, const IMouseMod& mod, int d);
    // Mouse moved without a button.
    void OnMouseOver(int x, int y, const IMouseMod& mod);
    void OnMouseOut();
    bool OnKeyDown(int x, int y, int key);
    // A key forwarded by the host's view, at the last mouse position.
    bool OnHostKeyDown(char16_t character, int virtualKey) override;
    // Index of the control a press at (x, y) would reach, -1 for none.
    int HitTest(int x, int y) const;

    // ---- Prompts and services ----
    // A value entry for control: its parameter's value list as a popup with the current entry
    // checked, or a text box with the value's text that is parsed, cut to range and set.
    void PromptUserInput(IControl* control, const IRECT& rect);
    // Opens a popup below anchor; `done` hears the pick (or a null menu).
    void CreateIPopupMenu(std::shared_ptr<IPopupMenu> menu, const IRECT& anchor, PopupDone done);
    void PromptForText(const IRECT& rect, const std::string& text, TextDone done);
    // A message box the user acknowledges; `done` hears that. A message while one is showing
    // replaces its text and keeps the box (and the first box's `done`).
    void ShowMessageBox(const std::string& text, const std::string& caption, std::function<void()> done = {});
    // The save prompt: a name (starting as fileName) in dir or one of its sub-folders, with the
    // extension added; `done` hears the full path, or an empty one when cancelled.
    void PromptForFile(const std::string& fileName, const std::string& dir, const std::string& extension,
                       std::function<void(const std::string& path)> done,
                       const std::string& caption = "SAVE");
    IOverlay* ModalOverlay() const { return mModal.get(); }
    bool MessageBoxShowing() const;
    IOverlay* Tooltip() const { return mTooltip.get(); }
    // Opens an address in the desktop's browser (a child process; the UI does not wait).
    bool OpenURL(const std::string& url);
    void SetURLOpener(std::function<bool(const std::string&)> opener) { mURLOpener = std::move(opener); }

    // Text to value for a parameter: the leading number of the text (blanks allowed before it),
    // cut to the parameter's range; false when the text has no number.
    static bool ParseValueEntry(const IParamRecord& param, const std::string& text, double& value);

  private:
    void SetFromPrompt(IControl* control, double normalized);
    template <typename Event> void ToModal(Event&& event);
    void BeginGesture(IControl* control);
    // Common to a press and a double click: the control that takes it (its gesture begun), or null.
    IControl* Press(int x, int y, const IMouseMod& mod);
    void EndGesture();

    IPlugBase* mPlug;
    int mWidth, mHeight, mFPS;
    double mScale = 1.0;
    std::vector<std::unique_ptr<IControl>> mControls;
    // The controls of each parameter id in attach order (aux -1: the control's own parameter):
    // the plug-in may move all 1095 parameters in one go, and a search of every control for each
    // would cost a thousand times more.
    struct ParamBinding
    {
        IControl* control;
        int aux;
    };
    std::vector<std::vector<ParamBinding>> mBindings;
    std::size_t mBoundControls = 0;
    bool mBindingsStale = true;
    void BindParams();
    std::vector<bool> mShown; // visible at its last draw, per control
    IBitmap mBackground;
    IColor mPanelColor = IColor::FromRGB(0x14171D);
    std::string mResourceDir;
    ColorRoles mColors;
    std::unique_ptr<IRaster> mRaster;
    bool mFullRedraw = true;

    int mMouseCapture = -1;
    int mMouseOver = -1;
    int mLastX = 0, mLastY = 0;
    int mGestureParam = -1;
    int mHoverTicks = 0;
    bool mTooltipShown = false;

    std::unique_ptr<IOverlay> mModal;
    std::unique_ptr<IOverlay> mTooltip;
    IRECT mOverlayDrawn; // what overlays covered at the last draw

    std::string mPlatformType;
    PlatformWindowFactory mWindowFactory;
    std::unique_ptr<IPlatformWindow> mWindow;
    std::function<bool(const std::string&)> mURLOpener;
    std::function<void()> mIdleHook;
    std::function<void(int)> mTouchHook;
};
