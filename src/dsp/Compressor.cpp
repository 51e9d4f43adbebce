#include "dsp/Compressor.h"

#include "dsp/Decibels.h"
#include "dsp/Denormals.h"
#include "dsp/Vec.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kMakeupRangeDb = 24.0;
constexpr double kLookAheadMs = 10.0;
constexpr int kMakeupInput = 4;
} // namespace

Compressor::Compressor(bool isRight) : Dynamics(isRight)
{
    mAttackMs = 10.0;
    mReleaseMs = 400.0;
    // Sized once for the highest rate, so that a rate change (on the audio thread) never allocates.
    mDelay.Allocate(static_cast<int>(kMaxSampleRate * 0.001 * kLookAheadMs) + gBlockLen);
    Compressor::Reset();
}

void Compressor::PrepareLookAhead()
{
    mLookAhead = static_cast<int>(double(gSamplesPerMs) * kLookAheadMs);
}

void Compressor::SetParam(int id, double value)
{
    switch (id)
    {
    case 0:
        mThreshold = value;
        break;
    case 1:
        mRatio = value;
        break;
    case 2:
        SetAttack(value);
        break;
    case 3:
        SetRelease(value);
        break;
    case 4:
        mMakeup = value;
        break;
    default:
        break;
    }
}

void Compressor::Reset()
{
    Dynamics::Reset();
    mSmoothB.SetTime(1.0);
    PrepareLookAhead();
    mDelay.Clear();
    mLevelDb = 0.0;
    mGainState = 1.0;
}

void Compressor::Process()
{
    const int n = mBlockLen;
    double makeup = mMakeup;
    BlockSmoother::ApplyMod(mModSource[kMakeupInput], ModDepth(kMakeupInput), &makeup, nullptr, 1, 0.0, 1.0);
    const double makeupGain = std::exp(makeup * kMakeupRangeDb * kDbToLn);

    mDelay.Write(mIn1, n);
    const double r = RmsLevel(mIn1);

    // dB above the threshold, then the follower in dB.
    const double over = std::max(kLnToDb * std::log(std::fabs(r / mThreshold)), 0.0);
    mLevelDb = Follow(over, mLevelDb);
    const double ratio = mRatio;
    const double reductionDb = ((mLevelDb - kFollowFloor) * kFollowScale * (ratio - 1.0)) / ratio;
    const double g = std::exp(-reductionDb * kDbToLn);

    // Block-rate one-pole with the coefficients of the 1 ms smoother.
    mGainState = g * makeupGain * mSmoothB.mGain + mGainState * mSmoothB.mCoef + kDenormGuard;
    const double gain = mGainState - kDenormGuard;

    double* out = mOut1 != nullptr ? mOut1 : const_cast<double*>(mIn1);
    VecScale(mDelay.Read(mLookAhead, n), gain, out, n);
}
