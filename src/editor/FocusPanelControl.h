#pragma once
// The focus panel in the top bar: the name and value of the control touched last, so that a
// producer reads the exact value while turning a knob. The plug-in sets its texts each frame;
// the panel redraws only when they change. It takes no mouse.

#include <string>

#include "editor/IControl.h"

class IFocusPanelControl : public IControl
{
  public:
    IFocusPanelControl(IPlugBase* plug, const IRECT& rect, const IColor* accent);
    void SetTexts(const std::string& label, const std::string& value);
    const std::string& Label() const { return mLabel; }
    const std::string& Value() const { return mValueText; }
    void Draw(IGraphics* graphics) override;

  private:
    const IColor* mAccent;
    std::string mLabel, mValueText;
};
