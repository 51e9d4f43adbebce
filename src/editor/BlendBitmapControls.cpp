#include "editor/BlendBitmapControls.h"

#include <algorithm>

#include "editor/ControlLook.h"
#include "editor/IGraphics.h"

IBlendBitmapControl::IBlendBitmapControl(IPlugBase* plug, const IRECT& rect, int paramIdx,
                                         const IBitmap& bitmap, float weight, const IColor* color)
    : IBitmapControl(plug, rect, paramIdx, bitmap, IChannelBlend(IChannelBlend::kBlendScale, weight)),
      IBlendControl(color, weight)
{
}

void IBlendBitmapControl::SetWeight(float weight)
{
    SetBlendWeight(weight);
    if (mBlend.mWeight == mBlendWeight) return;
    mBlend = IChannelBlend(IChannelBlend::kBlendScale, mBlendWeight);
    mDirty = true;
}

void IBlendBitmapControl::Draw(IGraphics* graphics)
{
    const float gray = mGrayed ? controllook::kGrayedWeight : 1.0f;
    if (mBitmap.mRaster)
    {
        const IChannelBlend blend(IChannelBlend::kBlendScale, mBlendWeight * gray);
        graphics->DrawBitmap(mBitmap, mRect, CurrentFrame(), &blend);
    }
    else if (mColorSlot)
        graphics->FillIRect(BlendColor(gray), mRect);
}

IBlendRoundSwitchControl::IBlendRoundSwitchControl(IPlugBase* plug, const IRECT& rect, int paramIdx,
                                                   const IBitmap& bitmap, const IColor* color, int margin)
    : ISwitchControl(plug, rect.Inset(-std::max(0, margin)), paramIdx, bitmap), IBlendControl(color),
      mSwitchRect(rect)
{
    mTargetRect = rect;
}

void IBlendRoundSwitchControl::Draw(IGraphics* graphics)
{
    const float gray = mGrayed ? controllook::kGrayedWeight : 1.0f;
    const IColor accent = BlendColor(gray);
    if (mBitmap.mRaster)
        graphics->DrawBitmap(mBitmap, mSwitchRect, CurrentFrame(), &mBlend);
    else
        controllook::DrawRoundFace(graphics, mSwitchRect, IsOn(), accent);
    controllook::DrawRing(graphics, RingRect(), IsOn() ? accent : controllook::Faded(accent, 0.45f),
                          IsOn() ? 2.0f : 1.0f);
}
