#pragma once
// The controls of the delay pages and the state behind them: the overview's mode sections, the
// large view's step faders and mask buttons, and the buttons that move between the overview and
// a slot's large view. The tap and step masks are not parameters: the editor keeps their bits
// and tells the plug-in of each press through DelayPages' actions; the plug-in pushes its own
// masks in after a state or preset load. UI thread only.

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "editor/IControl.h"
#include "editor/IMyControls.h"
#include "editor/LayoutDelay.h"
#include "editor/ValuePopUpControl.h"

class QuorvexEditor;

// What the mask buttons tell the plug-in.
struct StepMaskActions
{
    // Both channels' on state of one tap after a press on either.
    std::function<void(int slot, int tap, bool left, bool right)> tapOn;
    // The effect of one tap on or off.
    std::function<void(int slot, int tap, bool on)> stepFx;
    // The step modulation of tap effect parameter row (0 or 1) of one tap on or off.
    std::function<void(int slot, int row, int tap, bool on)> stepMod;
};

class DelayPages
{
  public:
    explicit DelayPages(QuorvexEditor& editor);

    void SetActions(StepMaskActions actions) { mActions = std::move(actions); }

    // The plug-in's masks, e.g. after a state load: one 16-bit word, bit t for tap t.
    void SetTapOnMask(int slot, int channel, std::uint16_t mask);
    void SetStepFxMask(int slot, std::uint16_t mask);
    void SetStepModMask(int row, int slot, std::uint16_t mask);
    std::uint16_t TapOnMask(int slot, int channel) const { return mTapOn[slot & 3][channel & 1]; }
    std::uint16_t StepFxMask(int slot) const { return mStepFx[slot & 3]; }
    std::uint16_t StepModMask(int row, int slot) const { return mStepMod[row & 1][slot & 3]; }
    bool Bit(EStepMask mask, int slot, int tap) const;
    // A press on a mask button: flips the bit, tells the plug-in, grays the faders it governs.
    void Toggle(EStepMask mask, int slot, int tap);
    // The channels a tap sounds on as an index of kChannelMarks (bit 0 left, bit 1 right); setting
    // them is one report to the plug-in, as a press on either mask button is.
    int TapChannels(int slot, int tap) const;
    void SetTapChannels(int slot, int tap, int mark);

    // Preset `preset` of step row r's menu (kStepRows) on the slot's taps in use, written through
    // the faders as one gesture each, snapped to the row's step grid when it has one.
    void ApplyStepPreset(int slot, int r, int preset);
    // Tap on/off pattern `pattern` (kTapPatterns) on both channels of all 16 taps; every tap is
    // reported through the tap action.
    void ApplyTapPattern(int slot, int pattern);

    // Moves step row r's values one tap to the left (dir -1) or right (+1) around the taps in
    // use; the tap that falls off one end comes in at the other.
    void MoveRow(int slot, int r, int dir);
    // Copies all five step rows and the masks of a slot; pasting writes them onto a slot (the
    // rows through their faders, the masks through the actions).
    void CopySlot(int slot);
    void PasteSlot(int slot);
    bool HasCopy() const { return mCopy.mValid; }
    // A large view's title, which shows what an edit just did for a moment.
    void AddTitle(int slot, IMyTextControl* title);

    // The tap of each slot that plays now, -1 for none: the idle tick pushes it, the large
    // view lights that tap's number.
    void SetPlayingTap(int slot, int tap);
    int PlayingTap(int slot) const { return mPlaying[slot & 3]; }

    // Shows the rows of the page shown that its rules allow; the rest of the page stays hidden.
    void Refresh();
    // A parameter changed: a delay mode, time base or tap count reshapes the pages.
    void OnParam(int id);

  private:
    int Index(int param, int slot) const;
    // Index of a list parameter from the slot's large view (its step counts).
    int LargeIndex(int param, int slot) const;
    void RefreshOverview();
    void RefreshLarge(int slot, bool steps);

    // Sets a fader from the editor as one gesture, skipping a value it already has.
    void WriteStep(IControl* fader, double normalized);
    IControl* Fader(int slot, int r, int tap) const;

    // A notice in the slot's large-view titles ("COPIED", the pattern's name...) for a moment.
    void Notify(int slot, const std::string& notice);

    struct SlotCopy
    {
        bool mValid = false;
        int mSlot = 0;
        std::array<std::array<double, 16>, layout::kNumStepRows> mValues{};
        std::array<std::uint16_t, 2> mTapOn{};
        std::uint16_t mStepFx = 0;
        std::array<std::uint16_t, 2> mStepMod{};
    };

    QuorvexEditor& mEditor;
    SlotCopy mCopy;
    std::array<int, 4> mPlaying{-1, -1, -1, -1};
    std::array<std::vector<IMyTextControl*>, 4> mTitles; // each large view's title, by slot
    StepMaskActions mActions;
    std::array<std::array<std::uint16_t, 2>, 4> mTapOn{};
    std::array<std::uint16_t, 4> mStepFx{};
    std::array<std::array<std::uint16_t, 4>, 2> mStepMod{};
};

// The control for a row of the delay pages' own kinds, or null for background rows. instance is
// the slot of a large view.
IControl* BuildDelayPageControl(QuorvexEditor& editor, const LayoutRow& row, int param, int instance);

// A knob that may hide with its section: it draws its scale and label itself, as the background
// does for the knobs that always show.
class DelayModeKnob : public IBitmapKnobControl
{
  public:
    DelayModeKnob(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap, const IColor* arc,
                  bool bipolar, std::string label);
    void Draw(IGraphics* graphics) override;

  private:
    std::string mLabel;
    bool mBipolarScale;
};

// One tap step as a vertical fader: a column filled from the bottom, or from the middle when
// bipolar. A drag is relative, the fader's height covering the whole range.
class StepFaderControl : public IKnobControl
{
  public:
    StepFaderControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IColor* color, bool bipolar);
    void Draw(IGraphics* graphics) override;
    bool IsBipolar() const { return mBipolar; }

  private:
    const IColor* mColor;
    bool mBipolar;
};

// A small lit text button: lit while `lit` answers true; a press runs the action.
class DelayTextButton : public IControl
{
  public:
    DelayTextButton(IPlugBase* plug, const IRECT& rect, const IColor* color, std::string text,
                    std::function<bool()> lit, std::function<void()> press);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override { OnMouseDown(x, y, mod); }
    void Draw(IGraphics* graphics) override;
    bool IsLit() const { return mLit && mLit(); }
    // Unlit, only the text shows (a number that lights up now and then).
    void SetFrameless(bool frameless) { mFrameless = frameless; }

  private:
    const IColor* mColor;
    std::string mText;
    std::function<bool()> mLit;
    std::function<void()> mPress;
    bool mFrameless = false;
};

// A tap column's number: lit while that tap plays; a press offers the channels the tap sounds on.
class TapNumberControl : public DelayTextButton
{
  public:
    TapNumberControl(IPlugBase* plug, const IRECT& rect, const IColor* color, std::string text,
                     DelayPages* pages, int slot, int tap);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;

  private:
    DelayPages* mPages;
    int mSlot, mTap;
};

// A modulation source field too narrow for the usual type: the source's short name ("L1", "E2")
// as large as fits; its menu still lists the full names.
class SourceFieldControl : public IValuePopUpControl
{
  public:
    using IValuePopUpControl::IValuePopUpControl;
    void Draw(IGraphics* graphics) override;
    std::string ShortText() const;
};

// A name that opens a menu: the step rows' names open their presets, the pattern button the tap
// patterns. A chevron marks it as a menu.
class DelayMenuLabel : public IControl
{
  public:
    using Choose = std::function<void(int index)>;
    DelayMenuLabel(IPlugBase* plug, const IRECT& rect, std::string text, const IColor* color,
                   const char* const* items, int count, Choose choose);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override { OnMouseDown(x, y, mod); }
    void Draw(IGraphics* graphics) override;

  private:
    std::string mText;
    const IColor* mColor;
    const char* const* mItems;
    int mCount;
    Choose mChoose;
};
