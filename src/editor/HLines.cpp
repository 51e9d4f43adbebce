#include "editor/HLines.h"

#include <algorithm>

#include "editor/IGraphics.h"

HLines::HLines(IPlugBase* plug, const IRECT& rect, const IColor* color, int distance, float width)
    : IControl(plug, rect), mColor(color), mDistance(distance), mWidth(width)
{
}

void HLines::SetDistance(int distance)
{
    if (distance == mDistance) return;
    mDistance = distance;
    mDirty = true;
}

int HLines::NLines() const
{
    if (mDistance <= 0 || mRect.H() <= 0) return 0;
    return std::max(0, mRect.H() / mDistance - 1);
}

float HLines::LineY(int k) const
{
    // On a pixel's centre, so that a 1-pixel line covers exactly one row.
    return mRect.T + k * mDistance + 0.5f;
}

void HLines::Draw(IGraphics* graphics)
{
    if (!mColor) return;
    const int n = NLines();
    for (int k = 1; k <= n; ++k)
        graphics->DrawLine(*mColor, static_cast<float>(mRect.L), LineY(k), static_cast<float>(mRect.R),
                           LineY(k), mWidth);
}
