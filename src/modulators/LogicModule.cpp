#include "modulators/LogicModule.h"

#include "dsp/Denormals.h"
#include "dsp/OnePoleBlock.h"
#include "dsp/Vec.h"

#include <algorithm>
#include <cmath>
#include <emmintrin.h>
#include <numbers>

namespace
{
void ScaledOrZero(const double* source, double depth, double* dst, int n)
{
    if (source)
        VecScale(source, depth, dst, n);
    else
        VecZero(dst, n);
}
} // namespace

LogicModule::Mode LogicModule::ModeFromMenu(int value)
{
    return kMenuModes[static_cast<size_t>(std::clamp(value, 0, kNumModes - 1))];
}

LogicModule::LogicModule(double* output) : mOut(output ? output : mOwnOut)
{
    VecZero(mOut, gBlockLen);
}

void LogicModule::SetSmooth(double ms)
{
    mSmoothMs = std::clamp(ms, 0.0, 1000.0);
    UpdateSmooth();
}

void LogicModule::UpdateSmooth()
{
    // One pole whose time constant is the set time divided by 2 pi; 0 ms passes straight through.
    const double samples = mSmoothMs * 0.001 * double(gSampleRate);
    const double a = samples > 0.0 ? std::clamp(std::exp(-2.0 * std::numbers::pi / samples), 0.0, 1.0) : 0.0;
    mA = a;
    mB = 1.0 - a;
}

void LogicModule::Reset()
{
    mY = 0.0;
    UpdateSmooth();
}

void LogicModule::Process()
{
    Combine();
    // The guard keeps the pole's state out of the denormal range while it decays.
    mY = OnePoleBlock(mWorkA, gBlockLen, mA, mB, kDenormGuard, mY);
    ApplyDepth();
}

void LogicModule::ProcessPair(LogicModule& a, LogicModule& b)
{
    a.Combine();
    b.Combine();
    OnePoleBlockPair(a.mWorkA, b.mWorkA, gBlockLen, a.mA, a.mB, b.mA, b.mB, kDenormGuard, a.mY, b.mY);
    a.ApplyDepth();
    b.ApplyDepth();
}

void LogicModule::Combine()
{
    const int n = gBlockLen;
    double* a = mWorkA;
    double* b = mWorkB;
    const double* source1 = mSource1;
    const double* source2 = mSource2;
    // A missing source counts as silence.
    ScaledOrZero(source1, mSource1Depth, a, n);
    ScaledOrZero(source2, mSource2Depth, b, n);

    switch (static_cast<int>(mMode))
    {
    case kAdd:
        VecAddI(b, a, n);
        break;
    case kMultiply:
        if (source2) VecMulI(b, a, n);
        break;
    case kAbsMin:
    case kAbsMax:
    {
        const bool takeMin = mMode == kAbsMin;
        for (int i = 0; i < n; ++i)
        {
            const double absA = std::fabs(a[i]);
            const double absB = std::fabs(b[i]);
            const double sign = a[i] > 0.0 ? 1.0 : (a[i] < 0.0 ? -1.0 : 0.0);
            a[i] = sign * (takeMin ? std::min(absA, absB) : std::max(absA, absB));
        }
        break;
    }
    case kMin:
        VecMinI(b, a, n);
        break;
    case kMax:
        VecMaxI(b, a, n);
        break;
    case kGate:
        for (int i = 0; i < n; ++i)
            if (std::fabs(a[i]) < std::fabs(b[i])) a[i] = 0.0;
        break;
    case kHigher:
        for (int i = 0; i < n; ++i)
            a[i] = a[i] > b[i] ? 1.0 : 0.0;
        break;
    case kLower:
        for (int i = 0; i < n; ++i)
            a[i] = a[i] < b[i] ? 1.0 : 0.0;
        break;
    default:
        break;
    }
}

void LogicModule::ApplyDepth()
{
    const int n = gBlockLen;
    const double* a = mWorkA;
    // Depth after smoothing, so a depth change acts at once, and the output's bounds, in one pass
    // (min and max are the clamp without a branch). Each sample of the depth source is read before
    // that sample of the output is written: reading our own output gives the last block.
    const double depth = mOutDepth;
    const double* depthSource = mDepthSource;
    // max(-1, x) then min(1, x) as SSE2 gives them are std::max(x, -1.0) and std::min(x, 1.0),
    // NaN and signed zeros included; the compiler's own form of the std pair is a long blend.
    static_assert(gBlockLen % 2 == 0);
    const __m128d lo = _mm_set1_pd(-1.0), hi = _mm_set1_pd(1.0), d = _mm_set1_pd(depth);
    if (depthSource)
    {
        const __m128d mod = _mm_set1_pd(mDepthMod);
        for (int i = 0; i < n; i += 2)
        {
            const __m128d gain = _mm_add_pd(_mm_mul_pd(_mm_loadu_pd(depthSource + i), mod), d);
            const __m128d v = _mm_mul_pd(_mm_loadu_pd(a + i), gain);
            _mm_storeu_pd(mOut + i, _mm_min_pd(hi, _mm_max_pd(lo, v)));
        }
    }
    else
    {
        for (int i = 0; i < n; i += 2)
        {
            const __m128d v = _mm_mul_pd(_mm_loadu_pd(a + i), d);
            _mm_storeu_pd(mOut + i, _mm_min_pd(hi, _mm_max_pd(lo, v)));
        }
    }
}
