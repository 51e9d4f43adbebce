#include "reverb/Ambience.h"

#include "dsp/Vec.h"
#include "reverb/ReverbLaws.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace
{
// 6 * 96000 / 44100: the rings hold the longest line at size 6 and 96 kHz.
constexpr double kRingScale = 13.061224937438965;
// Scales of the attractor's x and y into size offsets of lines 0 and 1.
constexpr double kChaosScaleA = 0.05107000097632408;
constexpr double kChaosScaleB = 0.0679000020027161;
} // namespace

Ambience::Ambience() : mDampL(false, kBqLowpass, 1, 24.0f), mDampR(true, kBqLowpass, 1, 24.0f)
{
    for (int i = 0; i < kLines; ++i)
    {
        mTime[i] = 0.0;
        mLoopPtr[i] = mLoop[i];
        mLineOut[i] = mLine[i].mOut;
        mLine[i].Allocate(int(mBaseLength[i] * kRingScale));
    }
    // Butterworth sections: a resonant peak above unity inside a loop of gain near 1 would run away.
    for (IppBiquad* damp : {&mDampL, &mDampR})
    {
        damp->mResMin = std::numbers::sqrt2 * 0.5;
        damp->SetParam(0, 1.0);
    }
    mDampL.mIn1 = mDampL.mOut1 = mLoop[0];
    mDampR.mIn1 = mDampR.mOut1 = mLoop[1];
    Reset();
}

void Ambience::SetParam(int id, double value)
{
    switch (id)
    {
    case 0:
        mSize = std::min(value, kMaxSize);
        SetFixedTimes();
        break;
    case 1:
        // The loop gain is negative: the sign is put here.
        mFeedback = -value;
        break;
    case 2:
        mChaosDepth = value * 0.05;
        break;
    case 3:
        mDampL.SetParam(0, std::clamp(value, 0.0, 1.0));
        mDampR.SetParam(0, std::clamp(value, 0.0, 1.0));
        break;
    default:
        break;
    }
}

double Ambience::LimitTime(int line, double samples) const
{
    // A read a block long must stay inside the ring, even for a size or a rate beyond the design.
    return std::clamp(samples, 0.0, double(mLine[line].mMask - 2 * gBlockLen));
}

void Ambience::SetFixedTimes()
{
    const double size = mSize;
    const double ratio = ReverbLengthRatio();
    mTime[2] = LimitTime(2, size * mBaseLength[2] * ratio);
    mTime[3] = LimitTime(3, size * mBaseLength[3] * ratio);
}

void Ambience::SetChaosTimes()
{
    const double size = mSize;
    const double ratio = ReverbLengthRatio();
    mTime[0] = LimitTime(0, (mChaosA + size) * mBaseLength[0] * ratio);
    mTime[1] = LimitTime(1, (size + mChaosB) * mBaseLength[1] * ratio);
}

void Ambience::Reset()
{
    DSPShell::Reset();
    mDampL.Reset();
    mDampR.Reset();
    mSize = std::min(double(mSize), kMaxSize);
    SetFixedTimes();
    SetChaosTimes();
    for (int i = 0; i < kLines; ++i)
    {
        mLine[i].Clear();
        // Start at the delay itself rather than gliding in from zero.
        mLine[i].mTimeSmoother.SetLastD(mTime[i]);
    }
    VecZero(&mLoop[0][0], kLines * gBlockLen);
}

void Ambience::Init()
{
    // The attractor runs on across Reset (clearing the rings), but a new run starts it afresh.
    mX = 0.0;
    mY = 1.0;
    mZ = 1.0;
    mDx = mDy = mDz = 0.0;
    mChaosA = mChaosB = 0.0;
    for (ModDelayBuffer& line : mLine)
        line.mTimeSmoother.SetTime(10.0);
    mRate = 8.7e-05;
    DSPShell::Init(); // ends in Reset
}

void Ambience::Process()
{
    const int n = gBlockLen;

    // One Euler step of the Rossler attractor (a 0.15, b 0.2, c 10) per block.
    mDy = mX + 0.15 * mY;
    mDx = -(mY + mZ);
    mDz = 0.2 + mZ * (mX - 10.0);
    const double h = n * mRate * gInvSampleRateRatio;
    const double x = mX + mDx * h, y = mY + mDy * h, z = mZ + mDz * h;
    // Never taken on the attractor itself; only a state gone non-finite starts again.
    if (std::isfinite(x) && std::isfinite(y) && std::isfinite(z))
        mX = x, mY = y, mZ = z;
    else
        mX = 0.0, mY = 1.0, mZ = 1.0;

    const double depth = mChaosDepth;
    mChaosA = mX * kChaosScaleA * depth;
    mChaosB = mY * kChaosScaleB * depth;
    SetChaosTimes();

    VecAddI(mIn1, mLoop[0], n);
    VecAddI(mIn2, mLoop[1], n);
    if (!mDampL.mBypass) mDampL.Process();
    if (!mDampR.mBypass) mDampR.Process();

    for (int i = 0; i < kLines; ++i)
    {
        mLine[i].Write(mLoop[i], n);
        mLineOut[i] = mLine[i].ReadModulated(mTime[i], n);
    }
    const double fb = mFeedback;
    const double *o0 = mLineOut[0], *o1 = mLineOut[1], *o2 = mLineOut[2], *o3 = mLineOut[3];
    for (int s = 0; s < n; ++s)
    {
        // Householder reflection I - (2/4) ones, then the loop gain.
        mSumBlock[s] = -0.5 * (o0[s] + o1[s] + o2[s] + o3[s]);
        mLoop[0][s] = (o0[s] + mSumBlock[s]) * fb;
        mLoop[1][s] = (o1[s] + mSumBlock[s]) * fb;
        mLoop[2][s] = (o2[s] + mSumBlock[s]) * fb;
        mLoop[3][s] = (o3[s] + mSumBlock[s]) * fb;
    }
    for (int s = 0; s < n; ++s)
    {
        mOut1[s] = 2.0 * o0[s];
        mOut2[s] = 2.0 * o1[s];
    }
}
