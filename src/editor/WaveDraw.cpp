#include "editor/WaveDraw.h"

#include <algorithm>
#include <cmath>

#include "editor/ControlLook.h"
#include "editor/IGraphics.h"

namespace
{
// Room kept above and below the curve for the line's width.
constexpr double kPad = 2.0;
} // namespace

WaveDraw::WaveDraw(IPlugBase* plug, const IRECT& rect, const IColor* color)
    : IControl(plug, rect), IBlendControl(color)
{
}

void WaveDraw::SetTable(const double* table, int size)
{
    mTable = size > 0 ? table : nullptr;
    mTableSize = mTable ? size : 0;
    mDirty = true;
}

void WaveDraw::SetFunction(WaveFunction wave)
{
    mFunction = std::move(wave);
    mDirty = true;
}

void WaveDraw::SetPhase(double fraction)
{
    const double phase = std::clamp(fraction, 0.0, 1.0);
    if (phase == mPhase) return;
    mPhase = phase;
    mDirty = true;
}

void WaveDraw::SetPolarity(int polarity)
{
    const int p = std::clamp(polarity, static_cast<int>(kPos), static_cast<int>(kBi));
    if (p == mPolarity) return;
    mPolarity = p;
    mDirty = true;
}

void WaveDraw::SetReverse(bool reverse)
{
    if (reverse == mReverse) return;
    mReverse = reverse;
    mDirty = true;
}

void WaveDraw::SetSwap(bool swap)
{
    if (swap == mSwap) return;
    mSwap = swap;
    mDirty = true;
}

bool WaveDraw::HasWave() const
{
    return mTable || mFunction;
}

double WaveDraw::RawAt(double position) const
{
    double x = 0.0;
    if (mTable)
    {
        // As the LFO reads it: the point at the position, shifted by the whole points of the
        // phase offset and wrapped; reverse reads from the other end.
        const int n = mTableSize;
        const int offset = static_cast<int>((n - 1) * mPhase);
        int index = std::clamp(static_cast<int>(position * n), 0, n - 1);
        index = (index + offset) % n;
        x = mTable[mReverse ? n - 1 - index : index];
    }
    else if (mFunction)
    {
        double p = position + mPhase;
        p -= std::floor(p);
        x = mFunction(mReverse ? 1.0 - p : p);
    }
    if (mSwap) x = -x;
    return std::clamp(x, -1.0, 1.0);
}

double WaveDraw::ValueAt(double position) const
{
    const double x = RawAt(std::clamp(position, 0.0, 1.0));
    switch (mPolarity)
    {
    case kPos:
        return 0.5 * x + 0.5;
    case kNeg:
        return -0.5 * x - 0.5;
    default:
        return x;
    }
}

double WaveDraw::YFor(double value) const
{
    const double mid = (mRect.T + mRect.B) / 2.0;
    const double half = std::max(0.0, mRect.H() / 2.0 - kPad);
    return mid - std::clamp(value, -1.0, 1.0) * half;
}

std::vector<std::pair<double, double>> WaveDraw::Points() const
{
    std::vector<std::pair<double, double>> points;
    const int w = mRect.W();
    if (!HasWave() || w <= 0) return points;
    points.reserve(w + 1);
    for (int i = 0; i <= w; ++i)
    {
        // The last column repeats the cycle's last point, so the curve ends at the right edge.
        const double position = std::min(static_cast<double>(i) / w, std::nextafter(1.0, 0.0));
        points.emplace_back(mRect.L + i, YFor(ValueAt(position)));
    }
    return points;
}

void WaveDraw::Draw(IGraphics* graphics)
{
    const float gray = mGrayed ? controllook::kGrayedWeight : 1.0f;
    const double zero = YFor(0.0);
    graphics->DrawLine(controllook::Faded(controllook::kFaceEdge, gray), mRect.L, zero, mRect.R, zero, 1.0f);
    const auto points = Points();
    const IColor color = BlendColor(gray);
    for (size_t i = 1; i < points.size(); ++i)
        graphics->DrawLine(color, points[i - 1].first, points[i - 1].second, points[i].first,
                           points[i].second, 1.5f);
}
