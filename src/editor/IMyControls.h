#pragma once
// The editor's own variants of the plain toolkit controls: a switch without a value prompt, radio
// buttons whose selection can be switched off, a value label with its format and unit, and a
// panel in a colour role. All of them keep working, drawn by code, when their bitmap is missing.
// UI thread only.

#include <string>

#include "editor/IBlendControl.h"
#include "editor/IControl.h"

// A switch over a strip; the number of states is the strip's frame count. The right button does
// nothing: a switch has too few states to be worth a prompt.
class IMySwitchControl : public ISwitchControl
{
  public:
    IMySwitchControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap,
                     const IColor* accent = nullptr);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override;

  private:
    const IColor* mAccent;
};

// Radio buttons. A click on the selected button switches the selection off (no button lit, the
// value kept, the plug-in or action told); a click on another selects it with the value
// index / (n - 1). Clicks between buttons do nothing.
class IMyRadioControl : public IRadioButtonsControl
{
  public:
    // Without a bitmap (or one of no size) the buttons share the rectangle evenly.
    IMyRadioControl(IPlugBase* plug, const IRECT& rect, int paramIdx, int nButtons, const IBitmap& bitmap,
                    EDirection direction = kHorizontal, const IColor* accent = nullptr);
    // The lit button, -1 when the selection is off.
    int Selection() const { return mSelectionOn ? SelectedButton() : -1; }
    bool SelectionOn() const { return mSelectionOn; }
    // A value from the plug-in selects its button again.
    void SetValueFromPlug(double value) override;
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override;

  private:
    IBitmap mBitmap;
    const IColor* mAccent;
    bool mSelectionOn = true;
};

// A label in a colour role, aligned left or right, that shows a value through a printf-style
// format ("%.1f") and a unit text (" ms"). A format with no numeric conversion (the "%s" of a
// value list) leaves the text to SetText.
class IMyTextControl : public IControl, public IBlendControl
{
  public:
    IMyTextControl(IPlugBase* plug, const IRECT& rect, const IText& style, const IColor* color,
                   bool alignRight = false, std::string format = "%.1f", std::string unit = {});

    void SetFormat(std::string format, std::string unit);
    const std::string& Format() const { return mFormat; }
    const std::string& Unit() const { return mUnit; }
    // The value through the format, then the unit. Redraws only on a change of the text.
    void SetValueText(double value);
    void SetText(const std::string& text);
    const std::string& GetText() const { return mStr; }
    // A notice shown for `ticks` idle ticks, after which the label's own text comes back. Texts
    // set meanwhile are kept for then; a second notice replaces the first but not the text kept.
    void SetTimedText(const std::string& text, int ticks);
    // One idle tick; true on the tick the label's own text came back.
    bool TimedTick();
    bool TimedTextShowing() const { return mTimedTicks > 0; }
    bool AlignRight() const { return mStyle.mAlign == IText::kAlignFar; }

    // value formatted by a format of one conversion of f, F, e, E, g, G, d or i (with flags,
    // width and precision), then unit. An unusable format gives the value as "%g" does.
    static std::string FormatValue(const std::string& format, const std::string& unit, double value);

    void OnMouseDown(int x, int y, const IMouseMod& mod) override {}
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override {}
    void Draw(IGraphics* graphics) override;

  private:
    IText mStyle;
    std::string mFormat;
    std::string mUnit;
    std::string mStr;
    std::string mKeptStr;
    int mTimedTicks = 0;
};

// A filled rectangle in a colour role, with optional round corners. Decoration: it takes no mouse.
class IMyPanelControl : public IControl
{
  public:
    IMyPanelControl(IPlugBase* plug, const IRECT& rect, const IColor* color, double cornerRadius = 0.0);
    bool IsHit(int x, int y) const override { return false; }
    void Draw(IGraphics* graphics) override;

  private:
    const IColor* mColor;
    double mCornerRadius;
};
