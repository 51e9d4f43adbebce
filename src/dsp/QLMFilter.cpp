#include "dsp/QLMFilter.h"

#include "dsp/Denormals.h"

#include <algorithm>

namespace
{
// y = x * b + y * a + 1e-15, read back without the guard: the block-rate one-pole of a control.
double OnePoleStep(const BlockSmoother& smoother, double& state, double x)
{
    state = x * smoother.mGain + state * smoother.mCoef + kDenormGuard;
    return state - kDenormGuard;
}
} // namespace

QLMFilter::QLMFilter(bool isRight) : DSPShell(isRight) {}

bool QLMFilter::HasChanged()
{
    if (mFreq != mFreqLast)
    {
        mFreqLast = mFreq;
        return true;
    }
    if (mRes != mResLast)
    {
        mResLast = mRes;
        return true;
    }
    if (mGain != mGainLast)
    {
        mGainLast = mGain;
        return true;
    }
    return false;
}

double QLMFilter::UpdateControls(double gainLo, double gainHi)
{
    const double oldFreq = mFreqLast;
    mRes = mResParam;
    mGain = mGainParam;

    double f = mFreqParam + mSpread;
    f += ModValue(0);
    f += ModValue(2) * mChannelSign;
    mFreq = OnePoleStep(mFreqSmooth, mFreqState, std::clamp(f, 0.0, 1.0));

    double res = mResParam;
    if (ModWired(1)) res = std::clamp(ModValue(1) + res, 0.0, 1.0);
    mRes = OnePoleStep(mResSmooth, mResState, res);

    double gain = mGainParam;
    if (const double* source = mModSource[3]; source != nullptr)
        BlockSmoother::ApplyMod(source, ModDepth(3), &gain, nullptr, 1, gainLo, gainHi);
    mGain = OnePoleStep(mGainSmooth, mGainState, gain);
    return oldFreq;
}

void QLMFilter::RetimeSmoothers()
{
    mFreqSmooth.SetTime(1.0);
    mResSmooth.SetTime(1.0);
    mGainSmooth.SetTime(5.0 / 32.0);
}
