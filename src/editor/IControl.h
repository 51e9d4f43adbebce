#pragma once
// The editor's widgets. A control has a draw rectangle, a hit rectangle, an optional parameter
// (and further linked parameters it writes alongside), a normalised value and its flags. It
// exists from the plug-in's construction, window or not: the engine may set its value any time.
// A control tied to a parameter tells the plug-in through SetParameterFromGUI; one without may
// carry an action that runs instead. UI thread only.

#include <functional>
#include <string>
#include <vector>

#include "editor/IGraphicsTypes.h"

class IPlugBase;
class IGraphics;

class IControl
{
  public:
    // A further parameter that the control writes with its own, with its normalised value.
    struct AuxParam
    {
        int mParamIdx;
        double mValue;
    };
    using Action = std::function<void(IControl&)>;

    IControl(IPlugBase* plug, const IRECT& rect, int paramIdx = -1, IChannelBlend blend = {});
    virtual ~IControl() = default;
    IControl(const IControl&) = delete;
    IControl& operator=(const IControl&) = delete;

    // ---- Virtual operations, in slot order ----
    // Right button: prompt for a value (the host's menu first); else set from the mouse position.
    virtual void OnMouseDown(int x, int y, const IMouseMod& mod);
    virtual void OnMouseUp(int x, int y, const IMouseMod& mod) {}
    virtual void OnMouseDrag(int x, int y, int dX, int dY, const IMouseMod& mod) {}
    // Back to the default value, if there is one, and the plug-in is told.
    virtual void OnMouseDblClick(int x, int y, const IMouseMod& mod);
    virtual void OnMouseWheel(int x, int y, const IMouseMod& mod, int d) {}
    virtual bool OnKeyDown(int x, int y, int key) { return false; }
    virtual void OnMouseOver(int x, int y, const IMouseMod& mod) {}
    virtual void OnMouseOut() {}
    virtual void Draw(IGraphics* graphics) = 0;
    // From the engine or host: the plug-in is not told. The first value becomes the default when
    // there is none.
    virtual void SetValueFromPlug(double value);
    // From a prompt: a change is stored and told to the plug-in.
    virtual void SetValueFromUserInput(double value);
    virtual void Redraw() {}
    virtual void GrayOut(bool gray);
    virtual void Hide(bool hide);
    // Reads and clears the flag.
    virtual bool IsDirty();
    // Clamps (if wanted) and marks dirty; with pushToPlug tells the plug-in about the parameter
    // and its linked ones, or runs the action of a control without parameter.
    virtual void SetDirty(bool pushToPlug = true);
    virtual void SetClean() { mDirty = false; }
    virtual bool IsHit(int x, int y) const { return mTargetRect.Contains(x, y); }
    virtual void SetAuxParamValueFromPlug(int auxIdx, double value);

    // ---- Plain members ----
    const IRECT& GetRECT() const { return mRect; }
    const IRECT& GetTargetRECT() const { return mTargetRect; }
    void SetTargetArea(const IRECT& r) { mTargetRect = r; }
    int ParamIdx() const { return mParamIdx; }
    double GetValue() const { return mValue; }
    void SetValue(double value) { mValue = value; }
    double GetDefaultValue() const { return mDefaultValue; }
    void SetDefaultValue(double value) { mDefaultValue = value; }
    bool IsHidden() const { return mHide; }
    bool IsGrayed() const { return mGrayed; }
    bool PeekDirty() const { return mDirty; }
    void SetClampValue(bool clamp) { mClampValue = clamp; }
    void DisablePrompt(bool disable) { mDisablePrompt = disable; }
    bool IsPromptDisabled() const { return mDisablePrompt; }
    void SetTooltip(std::string text) { mTooltip = std::move(text); }
    const std::string& Tooltip() const { return mTooltip; }
    void AddAuxParam(int paramIdx);
    const std::vector<AuxParam>& AuxParams() const { return mAuxParams; }
    void SetAction(Action action) { mAction = std::move(action); }
    IPlugBase* Plug() const { return mPlug; }
    // Set by IGraphics::AttachControl.
    void SetGraphics(IGraphics* graphics) { mGraphics = graphics; }
    IGraphics* Graphics() const { return mGraphics; }

  protected:
    IPlugBase* mPlug;
    IGraphics* mGraphics = nullptr;
    IRECT mRect;
    IRECT mTargetRect;
    int mParamIdx;
    std::vector<AuxParam> mAuxParams;
    double mValue = 0.0;
    double mDefaultValue = -1.0; // negative: none
    IChannelBlend mBlend;
    bool mHide = false;
    bool mGrayed = false;
    bool mClampValue = true;
    bool mDirty = true;
    bool mDisablePrompt = false;
    std::string mTooltip;
    Action mAction;
};

// A filled rectangle in a colour slot.
class IPanelControl : public IControl
{
  public:
    IPanelControl(IPlugBase* plug, const IRECT& rect, const IColor* color);
    void Draw(IGraphics* graphics) override;

  private:
    const IColor* mColor;
};

// A bitmap strip showing the frame that belongs to the value.
class IBitmapControl : public IControl
{
  public:
    IBitmapControl(IPlugBase* plug, int x, int y, int paramIdx, const IBitmap& bitmap,
                   IChannelBlend blend = {});
    IBitmapControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap,
                   IChannelBlend blend = {});
    void Draw(IGraphics* graphics) override;
    // 1-based frame for a value: 1 + value * (frames - 1) + 0.5, cut to the strip.
    static int FrameForValue(double value, int frames);
    int CurrentFrame() const { return FrameForValue(mValue, mBitmap.N); }
    const IBitmap& Bitmap() const { return mBitmap; }

  protected:
    IBitmap mBitmap;
};

// A bitmap switch: each press advances one frame, wrapping to the first after the last.
class ISwitchControl : public IBitmapControl
{
  public:
    using IBitmapControl::IBitmapControl;
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    // The next value of a switch of n states: one step up, 0 past the top.
    static double NextValue(double value, int states);
};

// A switch with no drawing of its own (the background shows it), of `states` positions.
class IInvisibleSwitchControl : public IControl
{
  public:
    IInvisibleSwitchControl(IPlugBase* plug, const IRECT& rect, int paramIdx, int states = 2);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override {}

  private:
    int mStates;
};

// n buttons in a row or column, one 2-frame bitmap; the selected button shows frame 2.
class IRadioButtonsControl : public IControl
{
  public:
    enum EDirection
    {
        kHorizontal,
        kVertical
    };
    IRadioButtonsControl(IPlugBase* plug, const IRECT& rect, int paramIdx, int nButtons,
                         const IBitmap& bitmap, EDirection direction = kHorizontal);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override;
    int NButtons() const { return static_cast<int>(mButtons.size()); }
    const IRECT& ButtonRect(int i) const { return mButtons[i]; }
    int SelectedButton() const;

  private:
    std::vector<IRECT> mButtons;
    IBitmap mBitmap;
};

// Drag (vertical or horizontal) and wheel behaviour of a knob; subclasses draw it.
class IKnobControl : public IControl
{
  public:
    enum EDirection
    {
        kVertical,
        kHorizontal
    };
    static constexpr double kWheelStep = 0.01;
    static constexpr double kFineWheelStep = 0.001;
    // A full-range drag covers `gearing` times the control's height (or width).
    IKnobControl(IPlugBase* plug, const IRECT& rect, int paramIdx, EDirection direction = kVertical,
                 double gearing = 3.0);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseDrag(int x, int y, int dX, int dY, const IMouseMod& mod) override;
    void OnMouseWheel(int x, int y, const IMouseMod& mod, int d) override;

  protected:
    EDirection mDirection;
    double mGearing;
};

// A knob drawn as a bitmap strip, with a value arc in a colour slot when one is given.
class IBitmapKnobControl : public IKnobControl
{
  public:
    // A bipolar knob's arc starts at twelve o'clock.
    IBitmapKnobControl(IPlugBase* plug, int x, int y, int paramIdx, const IBitmap& bitmap,
                       const IColor* arcColor = nullptr, bool bipolar = false);
    void Draw(IGraphics* graphics) override;
    // Arc sweep of a knob: from -135 to +135 degrees about twelve o'clock.
    static constexpr double kMinAngle = -135.0;
    static constexpr double kMaxAngle = 135.0;

  private:
    IBitmap mBitmap;
    const IColor* mArcColor;
    bool mBipolar;
};

// Plain text held by the control.
class ITextControl : public IControl
{
  public:
    ITextControl(IPlugBase* plug, const IRECT& rect, const IText& text, std::string str = {});
    void Draw(IGraphics* graphics) override;
    // Redraws only on a change.
    void SetTextFromPlug(const std::string& str);
    const std::string& GetText() const { return mStr; }
    void OnMouseDown(int x, int y, const IMouseMod& mod) override {}
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override {}

  protected:
    IText mText;
    std::string mStr;
};

// A text entered in the toolkit's text box; its action runs after each accepted entry.
class ITextInputControl : public ITextControl
{
  public:
    using ITextControl::ITextControl;
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void SetTextFromUser(const std::string& str);
};

// Opens a fixed address in the desktop's browser.
class IURLControl : public IControl
{
  public:
    IURLControl(IPlugBase* plug, const IRECT& rect, std::string url);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override {}
    const std::string& URL() const { return mURL; }

  private:
    std::string mURL;
};

// A switch whose press opens its parameter's value list as a popup.
class ISwitchPopUpControl : public ISwitchControl
{
  public:
    using ISwitchControl::ISwitchControl;
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
};
