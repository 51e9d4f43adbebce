#include "dsp/BlockSmoother.h"

#include "dsp/Denormals.h"
#include "dsp/Vec.h"
#include "dsp/WideLanes.h"

#include <algorithm>
#include <bit>
#include <cmath>

void BlockSmoother::SetTime(double ms)
{
    const double a = std::clamp(std::exp(-2.0 * M_PI / (ms * 0.001 * gSampleRate)), 0.0, 1.0);
    mCoef = a;
    mGain = 1.0 - a;
    mRunD.n = -1;
    mRunF.n = -1;
    double sum = 0.0;
    for (int i = 0; i < mLen; ++i)
    {
        double p;
        if (i == 0)
            p = 1.0;
        else if (i == 2)
            p = a * a;
        else
            p = std::pow(a, i);
        p = static_cast<float>(p);
        sum += p;
        mPowD[i] = p * a;
        mPowF[i] = static_cast<float>(p * a);
        mSumD[i] = sum;
        mSumF[i] = static_cast<float>(sum);
    }
}

const double* BlockSmoother::RunD(double target, int n)
{
    n = std::min(n, mLen);
    if (n <= 0) return mOutD;
    const double step = mGain * target;
    const double last = mLastD;
    const LastRun run{std::bit_cast<std::uint64_t>(target), std::bit_cast<std::uint64_t>(last), n};
    mHeldD = run.n == mRunD.n && run.target == mRunD.target && run.last == mRunD.last;
    if (!mHeldD)
    {
        mRunD = run;
        for (int i = 0; i < n; ++i)
            mOutD[i] = mPowD[i] * last + mSumD[i] * step;
    }
    mLastD = Undenormal(mOutD[n - 1]);
    return mOutD;
}

namespace
{
inline void FillF(const float* pow, const float* sum, double last, float step, float* out, int n)
{
    for (int i = 0; i < n; ++i)
        out[i] = static_cast<float>(pow[i] * last + sum[i] * step);
}

void FillFBaseline(const float* pow, const float* sum, double last, float step, float* out, int n)
{
    FillF(pow, sum, last, step, out, n);
}

// Every tap of a tapped line glides its own time: four lanes halve the conversions and products.
__attribute__((target("avx2"))) void FillFWide(const float* pow, const float* sum, double last, float step,
                                               float* out, int n)
{
    FillF(pow, sum, last, step, out, n);
}
} // namespace

const float* BlockSmoother::RunF(float target, int n)
{
    n = std::min(n, mLen);
    if (n <= 0) return mOutF;
    const float step = static_cast<float>(target * mGain);
    const double last = mLastF;
    const LastRun run{std::bit_cast<std::uint32_t>(target), std::bit_cast<std::uint64_t>(last), n};
    if (run.n != mRunF.n || run.target != mRunF.target || run.last != mRunF.last)
    {
        mRunF = run;
        (WideLanes() ? FillFWide : FillFBaseline)(mPowF, mSumF, last, step, mOutF, n);
    }
    mLastF = Undenormal(mOutF[n - 1]);
    return mOutF;
}

void BlockSmoother::ApplyMod(const double* mod, double depth, double* value, double* dest, int n, double lo,
                             double hi)
{
    if (n < 2)
    {
        if (dest != nullptr)
        {
            *dest = *value;
            value = dest;
        }
        if (mod != nullptr) *value = std::clamp(depth * *mod + *value, lo, hi);
        return;
    }
    if (dest != nullptr)
    {
        VecSet(*value, dest, n);
        value = dest;
    }
    if (mod != nullptr)
    {
        VecAddScaled(mod, depth, value, n);
        VecCeilI(value, n, hi);
        VecFloorI(value, n, lo);
    }
}
