#include "fx/Comb.h"

#include "dsp/Denormals.h"
#include "dsp/Vec.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kMinHz = 1.0;
constexpr double kMaxHz = 10000.0;
// The read runs before the write, so the oldest sample (a full line back) is still there to serve as
// the interpolation partner of the longest delay.
constexpr double kMaxDelay = Comb::kLineLength - 1.0;
constexpr double kMinDelay = 1.0;

double SoftLimit(double y)
{
    if (y >= 1.5) return 1.0;
    if (y <= -1.5) return -1.0;
    return y - (4.0 / 27.0) * y * y * y;
}

// A one-pole coefficient tuned at 44.1 kHz, moved to the running rate with the same corner.
double RateCoef(double g)
{
    return 1.0 - std::pow(1.0 - g, 44100.0 * gInvSampleRate);
}
} // namespace

Comb::Comb(bool isRight) : SimpleOSC(44100.0), DSPShell(isRight), mLine(new double[kLineLength])
{
    Comb::Reset();
}

void Comb::Reset()
{
    DSPShell::Reset();
    mSmoothA.SetTime(50.0);
    mSmoothB.SetTime(10.0);
    VecZero(mLine.get(), kLineLength);
    mWrite = 0;
    mLowState = mHighState = 0.0;
    mSnap = true;
}

void Comb::SetParam(int id, double value)
{
    switch (id)
    {
    case 0:
        mFreqX = value;
        break;
    case 1:
        mFeedbackX = value;
        break;
    case 2:
        mHighX = value;
        break;
    case 3:
        mLowX = value;
        break;
    case 4:
        mSpread = value * mChannelSign;
        break;
    default:
        break;
    }
}

double Comb::CombHz() const
{
    const double x = std::clamp(mFreqX + ModValue(0), 0.0, 1.0);
    const double spread = mSpread + ModValue(4) * mChannelSign;
    return std::clamp(std::pow(10.0, 4.0 * x + spread), kMinHz, kMaxHz);
}

double Comb::TargetDelay() const
{
    return std::clamp(gSampleRate / CombHz(), kMinDelay, kMaxDelay);
}

void Comb::Process()
{
    const double target = TargetDelay();
    // Once the glide has arrived it stops, so that the comb sits exactly on its frequency (the
    // smoother's single-precision tables would leave it a few parts in 10^7 off).
    if (mSnap || std::fabs(mSmoothA.LastD() - target) < 1e-6 * target)
    {
        mSmoothA.SetLastD(target);
        mSnap = false;
    }
    const double* delay = mScratch;
    if (mSmoothA.LastD() == target)
        VecSet(target, mScratch, gBlockLen);
    else
        delay = mSmoothA.RunD(target, gBlockLen);
    const double feedback = std::clamp(mFeedbackX + ModValue(1), 0.0, 1.0) * kFeedbackScale;
    const double high = std::clamp(mHighX + ModValue(2), 0.0, 1.0);
    const double low = std::clamp(mLowX + ModValue(3), 0.0, 1.0);
    const double gHigh = RateCoef(0.5 * high * high);
    const double gLow = RateCoef(1.0 - 0.98 * low);

    double* line = mLine.get();
    for (int n = 0; n < gBlockLen; ++n)
    {
        const double d = std::clamp(delay[n], kMinDelay, kMaxDelay);
        const int whole = int(d);
        const double frac = d - whole;
        int r0 = mWrite - whole;
        if (r0 < 0) r0 += kLineLength;
        const int r1 = r0 == 0 ? kLineLength - 1 : r0 - 1;
        const double tap = line[r0] + frac * (line[r1] - line[r0]);

        mLowState += gLow * (tap - mLowState);
        mHighState += gHigh * (mLowState - mHighState);
        const double x = mIn1[n];
        const double y = x + (mLowState - mHighState);
        line[mWrite] = x + SoftLimit(y * feedback) * kLimitGain;
        if (++mWrite == kLineLength) mWrite = 0;
        mOut1[n] = y;
    }
    mLowState = Undenormal(mLowState);
    mHighState = Undenormal(mHighState);
}
