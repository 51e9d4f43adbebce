#pragma once
// A transparent overlay that lays a colour band over a knob: the band runs along the knob's rim
// from the lower stop to the value. It follows its parameter (a hidden knob's value shows through
// it) and takes no input, so the mouse reaches whatever lies below.
// UI thread only.

#include "editor/IBlendControl.h"
#include "editor/IControl.h"

class IInvColOverlayControl : public IControl, public IBlendControl
{
  public:
    IInvColOverlayControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IColor* color,
                          float weight = 0.6f, float bandWidth = 3.0f);

    bool IsHit(int x, int y) const override { return false; }
    void OnMouseDown(int x, int y, const IMouseMod& mod) override {}
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override {}
    void Draw(IGraphics* graphics) override;

  private:
    float mBandWidth;
};
