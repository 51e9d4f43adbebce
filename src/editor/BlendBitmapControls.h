#pragma once
// Bitmap controls with a fade weight and a colour role: a strip laid over the background at its
// weight, and a round switch with an accent ring.
// UI thread only.

#include "editor/IBlendControl.h"
#include "editor/IControl.h"

// A bitmap strip drawn at a fade weight (1 opaque, 0 gone). Without a bitmap, the colour role
// fills the rectangle at the same weight.
class IBlendBitmapControl : public IBitmapControl, public IBlendControl
{
  public:
    IBlendBitmapControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap, float weight,
                        const IColor* color = nullptr);
    // Marks for redraw only on a change.
    void SetWeight(float weight);
    void Draw(IGraphics* graphics) override;
};

// A round switch with a ring in its colour role about it, at the rectangle grown by the margin;
// the ring is thicker while the switch is on. The draw rectangle includes the ring; the hit area
// is the switch.
class IBlendRoundSwitchControl : public ISwitchControl, public IBlendControl
{
  public:
    IBlendRoundSwitchControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap,
                             const IColor* color, int margin = 2);
    bool IsOn() const { return CurrentFrame() > 1; }
    IRECT RingRect() const { return mRect; }
    void Draw(IGraphics* graphics) override;

  private:
    IRECT mSwitchRect;
};
