#pragma once
// A level bar: the value (0..1) as a filled part of the rectangle in a colour role, growing from
// the bottom, or from the left when horizontal, over a dark well. The idle code sets its value;
// whatever it is given, the bar stays inside the rectangle.
// UI thread only.

#include "editor/IBlendControl.h"
#include "editor/IControl.h"

class RectMeter : public IControl, public IBlendControl
{
  public:
    RectMeter(IPlugBase* plug, const IRECT& rect, const IColor* color, bool horizontal = false,
              int paramIdx = -1);
    // The filled part for the present value; empty at 0 or below.
    IRECT BarRect() const;
    bool IsHit(int x, int y) const override { return false; }
    void Draw(IGraphics* graphics) override;

  private:
    bool mHorizontal;
};
