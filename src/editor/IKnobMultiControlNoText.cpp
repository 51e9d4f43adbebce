#include "editor/IKnobMultiControlNoText.h"

#include <algorithm>
#include <cmath>

#include "editor/ControlLook.h"
#include "editor/IGraphics.h"

IKnobMultiControlNoText::IKnobMultiControlNoText(IPlugBase* plug, const IRECT& rect, int paramIdx,
                                                 const IBitmap& bitmap, const IColor* ringColor,
                                                 int* lastTouched, EDirection direction)
    : IKnobControl(plug, rect, paramIdx, direction), IBlendControl(ringColor), mKnobRect(rect),
      mBitmap(bitmap), mLastTouched(lastTouched)
{
    SetRing(false, mRingMargin);
}

int IKnobMultiControlNoText::FrameFor(double value, int frames, int steps, double shape)
{
    if (frames <= 1) return 1;
    double v = std::clamp(value, 0.0, 1.0);
    if (steps >= 1 && steps <= frames)
    {
        // A non-positive shape would make every value the last step; it counts as linear.
        const double s = shape > 0.0 ? shape : 1.0;
        v = std::floor(steps * std::pow(v, s)) / steps;
    }
    return std::clamp(1 + static_cast<int>(std::lround(v * (frames - 1))), 1, frames);
}

void IKnobMultiControlNoText::SetSteps(int steps, double shape)
{
    mSteps = steps;
    mShape = shape;
    mDirty = true;
}

void IKnobMultiControlNoText::SetRing(bool filled, int margin)
{
    mRingFilled = filled;
    mRingMargin = std::max(0, margin);
    // Without a colour there is no ring, and the knob draws only in its own rectangle.
    mRect = mColorSlot ? RingRect() : mKnobRect;
    mTargetRect = mKnobRect;
    mDirty = true;
}

double IKnobMultiControlNoText::ValueAt(int x, int y) const
{
    const IRECT& r = mKnobRect;
    if (mDirection == kVertical)
        return r.H() > 0 ? std::clamp(static_cast<double>(r.B - y) / r.H(), 0.0, 1.0) : 0.0;
    return r.W() > 0 ? std::clamp(static_cast<double>(x - r.L) / r.W(), 0.0, 1.0) : 0.0;
}

void IKnobMultiControlNoText::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mLastTouched && mParamIdx >= 0) *mLastTouched = mParamIdx;
    if (mod.R || !mJumpToClick)
    {
        IKnobControl::OnMouseDown(x, y, mod);
        return;
    }
    mValue = ValueAt(x, y);
    SetDirty(true);
}

void IKnobMultiControlNoText::OnMouseDrag(int x, int y, int dX, int dY, const IMouseMod& mod)
{
    // The drag's gearing belongs to the knob's size, not to the ring drawn around it.
    const IRECT drawn = mRect;
    mRect = mKnobRect;
    IKnobControl::OnMouseDrag(x, y, dX, dY, mod);
    mRect = drawn;
}

void IKnobMultiControlNoText::Draw(IGraphics* graphics)
{
    const float gray = mGrayed ? controllook::kGrayedWeight : 1.0f;
    if (mColorSlot)
    {
        const IRECT ring = RingRect();
        const IColor color = BlendColor(gray);
        if (mRingFilled)
            graphics->FillCircle(color, (ring.L + ring.R) / 2, (ring.T + ring.B) / 2,
                                 std::min(ring.W(), ring.H()) / 2.0f);
        else
            controllook::DrawRing(graphics, ring, color, 2.0f);
    }
    if (mBitmap.mRaster)
        graphics->DrawBitmap(mBitmap, mKnobRect, CurrentFrame(), &mBlend);
    else
    {
        // Without its strip the knob shows the same step positions on a drawn face.
        const int frames = std::max(2, mBitmap.N);
        const double shown = (FrameFor(mValue, frames, mSteps, mShape) - 1.0) / (frames - 1);
        controllook::DrawKnobFace(graphics, mKnobRect, shown, gray);
    }
}
