#include "dsp/Envelope.h"

#include "dsp/Vec.h"

#include <algorithm>

namespace
{
// Output scale of the follower and the soft knee v / (v + 0.03) that lifts low levels.
constexpr double kFollowerRange = 1.43;
constexpr double kKnee = 0.03;
constexpr double kKneeGain = 1.01;
// The gate stages advance by one 32-sample block per Process.
constexpr double kStageBlock = 32.0;
} // namespace

Envelope::Envelope(bool isRight) : Dynamics(isRight)
{
    mAttackMs = 20.0;
    mReleaseMs = 200.0;
    mLowCut.SetTypeFixed();
    mHighCut.SetTypeFixed();
    // Open band until the owner sets the corners.
    mLowCut.SetParam(0, 1.0);
    mHighCut.SetParam(0, 0.0);
    Envelope::Reset();
}

void Envelope::Reset()
{
    Dynamics::Reset();
    mFollow = 0.0;
    mPhase = 0.0;
    mGateState = kGateIdle;
    mOutSmooth.SetTime(1.0);
    mOutSmooth.mLastD = 0.0;
    VecZero(mFiltered, gBlockLen);
    VecZero(mOut, gBlockLen);
}

void Envelope::SetHold(double ms)
{
    mHoldInc = 1.0 / (std::max(0.001, ms) * 0.001 * double(gSampleRate));
}

void Envelope::SetLowCutFreq(double value)
{
    mHighCut.SetParam(0, std::clamp(value, 0.0, 1.0));
}

void Envelope::SetHighCutFreq(double value)
{
    mLowCut.SetParam(0, std::clamp(value, 0.0, 1.0));
}

void Envelope::ClearOutput(bool keep)
{
    if (!keep) VecZero(mOut, gBlockLen);
}

void Envelope::Process()
{
    VecCopy(mIn1, mFiltered, mBlockLen);
    for (IppBiquad* filter : {&mLowCut, &mHighCut})
        RunBand(*filter);
    Detect();
}

void Envelope::RunBand(IppBiquad& filter)
{
    if (filter.mBypass) return;
    filter.mIn1 = mFiltered;
    filter.mOut1 = mFiltered;
    filter.Process();
}

void Envelope::ProcessPair(Envelope& a, Envelope& b)
{
    if (a.mBlockLen != b.mBlockLen)
    {
        a.Process();
        b.Process();
        return;
    }
    VecCopy(a.mIn1, a.mFiltered, a.mBlockLen);
    VecCopy(b.mIn1, b.mFiltered, b.mBlockLen);
    // Each band filter of the one and its twin of the other as the two lanes of one vector: the
    // filters' recursions are the longest chains here, and side by side they overlap.
    const auto band = [&a, &b](IppBiquad& fa, IppBiquad& fb)
    {
        if (fa.mBypass || fb.mBypass)
        {
            a.RunBand(fa);
            b.RunBand(fb);
            return;
        }
        fa.mIn1 = fa.mOut1 = a.mFiltered;
        fb.mIn1 = fb.mOut1 = b.mFiltered;
        IppBiquad::ProcessPair(fa, fb);
    };
    if (a.mLowCut.mBypass || b.mLowCut.mBypass || a.mHighCut.mBypass || b.mHighCut.mBypass)
    {
        band(a.mLowCut, b.mLowCut);
        band(a.mHighCut, b.mHighCut);
    }
    else
    {
        // Both band filters of each side as one cascade: four recursions overlap instead of two.
        for (Envelope* e : {&a, &b})
            for (IppBiquad* f : {&e->mLowCut, &e->mHighCut})
            {
                f->mIn1 = e->mFiltered;
                f->mOut1 = e->mFiltered;
            }
        IppBiquad::ProcessChainPair(a.mLowCut, b.mLowCut, a.mHighCut, b.mHighCut);
    }
    DetectPair(a, b);
}

void Envelope::Detect()
{
    VecScaleI(mInputGain, mFiltered, mBlockLen);
    DetectFrom(RmsLevel(mFiltered));
}

void Envelope::DetectPair(Envelope& a, Envelope& b)
{
    const int n = a.mBlockLen;
    VecScaleI(a.mInputGain, a.mFiltered, n);
    VecScaleI(b.mInputGain, b.mFiltered, n);
    double meanA = 0.0, meanB = 0.0;
    MeanSquares(a.mFiltered, b.mFiltered, n, meanA, meanB);
    a.DetectFrom(a.RmsFromMeanSquare(meanA));
    b.DetectFrom(b.RmsFromMeanSquare(meanB));
}

void Envelope::DetectFrom(double r)
{
    const int n = mBlockLen;
    mRms = r;

    double level = 0.0;
    if (mFollowerMode)
    {
        const double e = Follow(r, mFollow);
        mFollow = e;
        double v = (e - kFollowFloor) * kFollowScale * kFollowerRange;
        if (!mLinear) v = (v / (v + kKnee)) * kKneeGain;
        VecCopy(mOutSmooth.RunD(v, n), mOut, n);
        level = v;
    }
    else
    {
        VecZero(mOut, n);
        if (r >= mGateThreshold || mGateState != kGateIdle) level = StepGate(r);
    }

    const double depth = mDepth;
    VecScaleI(depth, mOut, n);
    mEnvOut = level;
    mScalarOut = depth * level;
}

double Envelope::StepGate(double r)
{
    const double threshold = mGateThreshold;
    double level = 0.0;
    // Several stages may pass in one block: each falls through to the next.
    if (mGateState == kGateIdle || mGateState == kGateAttack)
    {
        mGateState = kGateAttack;
        mPhase += kStageBlock * mAttackInc;
        level = mPhase;
        if (mPhase >= 1.0)
        {
            mGateState = kGateHold;
            mPhase = 0.0;
        }
    }
    if (mGateState == kGateHold)
    {
        // The hold restarts for as long as the input stays above the threshold.
        mPhase = (r < threshold ? mPhase : 0.0) + kStageBlock * mHoldInc;
        level = 1.0;
        if (mPhase >= 1.0)
        {
            mGateState = kGateRelease;
            mPhase = 0.0;
        }
    }
    if (mGateState == kGateRelease)
    {
        level = 1.0 - mPhase;
        mPhase += kStageBlock * mReleaseInc;
        if (mPhase >= 1.0)
        {
            mGateState = kGateIdle;
            mPhase = 0.0;
        }
        if (r >= threshold)
        {
            // The attack resumes from where the level stands.
            mPhase = level;
            mGateState = kGateAttack;
        }
    }
    return level;
}
