#include "dsp/DSPShell.h"

#include "dsp/Vec.h"

DSPShell::DSPShell(bool isRight) : mChannelSign(isRight ? -1.0 : 1.0)
{
    for (int k = 0; k < kModInputs; ++k)
    {
        mModSource[k] = nullptr;
        mModDepth[k] = gNoSignal;
    }
    // Reset is virtual and a derived class is not built yet: this runs the base's own.
    DSPShell::Reset();
}

void DSPShell::Wire()
{
    for (int k = 0; k < kModInputs; ++k)
    {
        mModSource[k] = nullptr;
        mModDepth[k] = gNoSignal;
    }
    mBlockLen = gBlockLen;
    mSmoothA.SetTime(50.0);
    mSmoothB.SetTime(10.0);
    VecZero(mScratch, 2 * gBlockLen);
}

void DSPShell::Reset()
{
    VecZero(mScratch, 2 * gBlockLen);
    // Control updates every other block keep their schedule from here, as a new module does.
    mUpdatePhase = 0;
}

void DSPShell::Process()
{
    if (mOut1 != nullptr && mOut1 != mIn1) VecCopy(mIn1, mOut1, mBlockLen);
}

void DSPShell::Init()
{
    Wire();
    Reset();
}

void DSPShell::SetBypass(bool bypass)
{
    mBypass = bypass;
    Reset();
}

void DSPShell::SetModSource(int input, const double* value)
{
    if (input < 0 || input >= kModInputs) return;
    mModSource[input] = value;
    OnModSource(input, value);
}

void DSPShell::SetModDepth(int input, const double* depth)
{
    if (input < 0 || input >= kModInputs) return;
    mModDepth[input] = depth != nullptr ? depth : gNoSignal;
    OnModDepth(input, depth);
}

namespace QLM_DSPFunctions
{
void SimpleOSC::SetRate(double hz)
{
    mRateHz = hz;
    OnRate(hz);
    mPhaseInc = mRateHz / mRateDivisor;
    mHalfPhaseInc = mPhaseInc * 0.5;
    OnPhase(mHalfPhaseInc);
}
} // namespace QLM_DSPFunctions
