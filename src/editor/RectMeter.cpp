#include "editor/RectMeter.h"

#include <algorithm>
#include <cmath>

#include "editor/ControlLook.h"
#include "editor/IGraphics.h"

RectMeter::RectMeter(IPlugBase* plug, const IRECT& rect, const IColor* color, bool horizontal, int paramIdx)
    : IControl(plug, rect, paramIdx), IBlendControl(color), mHorizontal(horizontal)
{
}

IRECT RectMeter::BarRect() const
{
    // A NaN from a broken readout shows as empty rather than as whatever a cast makes of it.
    const double v = std::isnan(mValue) ? 0.0 : std::clamp(mValue, 0.0, 1.0);
    if (mHorizontal)
    {
        const int w = static_cast<int>(std::lround(v * mRect.W()));
        return w > 0 ? IRECT(mRect.L, mRect.T, mRect.L + w, mRect.B) : IRECT();
    }
    const int h = static_cast<int>(std::lround(v * mRect.H()));
    return h > 0 ? IRECT(mRect.L, mRect.B - h, mRect.R, mRect.B) : IRECT();
}

void RectMeter::Draw(IGraphics* graphics)
{
    graphics->FillIRect(controllook::kWell, mRect);
    const IRECT bar = BarRect();
    if (!bar.Empty()) graphics->FillIRect(BlendColor(mGrayed ? controllook::kGrayedWeight : 1.0f), bar);
}
