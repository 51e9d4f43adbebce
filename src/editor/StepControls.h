#pragma once
// Numbered cells of the step and tap rows: a step of a step bar that lights when it is the step
// playing, a plain number label, and the tap selector. They draw their number and colour frame
// themselves, over a two-frame bitmap when there is one.
// UI thread only.

#include <string>

#include "editor/IBlendControl.h"
#include "editor/IControl.h"

// One step of a step bar: frame 2 of its strip while it is the current step, its number in the
// rectangle inset by the margin, and a frame in its colour role. It shows; it takes no press.
class StepLengthControl : public IBitmapControl, public IBlendControl
{
  public:
    StepLengthControl(IPlugBase* plug, const IRECT& rect, const IBitmap& bitmap, const IColor* color,
                      const IText& style, int number, int margin = 2);
    // Marks for redraw only on a change: the idle code calls it every tick.
    void SetCurrent(bool current);
    bool IsCurrent() const { return mCurrent; }
    void SetNumber(int number);
    int Number() const { return mNumber; }
    bool IsHit(int x, int y) const override { return false; }
    void Draw(IGraphics* graphics) override;

  private:
    IText mStyle;
    int mNumber;
    int mMargin;
    bool mCurrent = false;
};

// A number on a bitmap with a ring (round) or a frame in a colour role; the text sits in the
// rectangle inset by the margin.
class NumberLabel : public IBitmapControl, public IBlendControl
{
  public:
    NumberLabel(IPlugBase* plug, const IRECT& rect, const IBitmap& bitmap, const IColor* color,
                const IText& style, int margin = 2, bool round = false);
    void SetNumber(int number) { SetText(std::to_string(number)); }
    void SetText(const std::string& text);
    const std::string& GetText() const { return mStr; }
    bool IsHit(int x, int y) const override { return false; }
    void Draw(IGraphics* graphics) override;

  private:
    IText mStyle;
    std::string mStr;
    int mMargin;
    bool mRound;
};

// Selects a tap: a press selects it (value 1, the plug-in or action told), and the page code
// unselects the others. Frame 2 of the strip while selected, the tap's number inset, a colour
// frame; the tap that is playing is lit, set from the idle code.
class TapSelector : public ISwitchControl, public IBlendControl
{
  public:
    TapSelector(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap, const IColor* color,
                const IText& style, int number, int margin = 2);
    // From the page code: no plug-in call.
    void SetSelected(bool selected);
    bool IsSelected() const { return mSelected; }
    // Marks for redraw only on a change.
    void SetPlaying(bool playing);
    bool IsPlaying() const { return mPlaying; }
    int Number() const { return mNumber; }
    int Frame() const { return mSelected ? 2 : 1; }
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    // A bound parameter's value selects (above one half) or unselects.
    void SetValueFromPlug(double value) override;
    void Draw(IGraphics* graphics) override;

  private:
    IText mStyle;
    int mNumber;
    int mMargin;
    bool mSelected = false;
    bool mPlaying = false;
};
