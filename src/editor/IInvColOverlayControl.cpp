#include "editor/IInvColOverlayControl.h"

#include <algorithm>
#include <cmath>

#include "editor/ControlLook.h"
#include "editor/IGraphics.h"

IInvColOverlayControl::IInvColOverlayControl(IPlugBase* plug, const IRECT& rect, int paramIdx,
                                             const IColor* color, float weight, float bandWidth)
    : IControl(plug, rect, paramIdx), IBlendControl(color, weight), mBandWidth(bandWidth)
{
    SetTargetArea(IRECT());
}

void IInvColOverlayControl::Draw(IGraphics* graphics)
{
    const double from = IBitmapKnobControl::kMinAngle, to = controllook::KnobAngle(mValue);
    if (to - from < 0.5) return;
    const float cx = (mRect.L + mRect.R) / 2.0f, cy = (mRect.T + mRect.B) / 2.0f;
    const float radius = std::min(mRect.W(), mRect.H()) / 2.0f - mBandWidth / 2.0f;
    if (radius <= 0.0f) return;
    graphics->DrawArc(BlendColor(mGrayed ? controllook::kGrayedWeight : 1.0f), cx, cy, radius,
                      static_cast<float>(from), static_cast<float>(to), mBandWidth);
}
