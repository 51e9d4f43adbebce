#pragma once
// A field that shows its parameter's current text (display text or number with unit) and opens
// the parameter's value list on a press. Drawn live, so it needs no bitmap per list.

#include <array>
#include <string>

#include "editor/IControl.h"

// The look of every value field: a framed well, the accent mark, the text and a down arrow.
void DrawValueField(IGraphics* graphics, const IRECT& rect, const IColor* accent, const char* text);

class IValuePopUpControl : public IControl
{
  public:
    IValuePopUpControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IColor* accent);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override;
    // The text shown for the current value.
    std::string ValueText() const;

  private:
    const IColor* mAccent;
};

// A label that names one knob of a group whose meaning follows a selector parameter (the master
// effect's four knobs follow its type). It takes no mouse.
class ISelectorLabelControl : public IControl
{
  public:
    ISelectorLabelControl(IPlugBase* plug, const IRECT& rect, int selectorParam, const IText& text,
                          const std::array<const char*, 4>* names, int count, int knob);
    void SetValueFromPlug(double value) override;
    void Draw(IGraphics* graphics) override;
    const char* Text() const;

  private:
    IText mText;
    const std::array<const char*, 4>* mNames;
    int mCount;
    int mKnob;
};
