#include "fx/PhaserC.h"

#include "dsp/Denormals.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kMinW = 0.6;
constexpr double kMinC = 0.002;
constexpr double kMaxC = 0.9976;
constexpr double kMaxHalfBandwidth = 1.45; // keeps tan() of the half bandwidth finite near Nyquist
} // namespace

PhaserC::PhaserC(bool isRight) : SimpleOSC(44100.0), DSPShell(isRight)
{
    PhaserC::Reset();
}

void PhaserC::Reset()
{
    DSPShell::Reset();
    mSmoothA.SetTime(50.0);
    mSmoothB.SetTime(10.0);
    for (int i = 0; i < kMaxStages; ++i)
        mV1[i] = mV2[i] = mY1[i] = mY2[i] = 0.0;
    mFeedbackState = 0.0;
    mRunStages = 0;
    mW = -1.0;
    mSnap = true;
}

void PhaserC::SetParam(int id, double value)
{
    switch (id)
    {
    case 0:
        mBase = (value * value + 0.1) * 6.0;
        break;
    case 1:
        mDepthX = value;
        break;
    case 2:
        mStages = 1 + int(std::lround(7.0 * std::clamp(value, 0.0, 1.0)));
        break;
    case 3:
        mSpread = value * mChannelSign * 6.0;
        break;
    case 4:
        mFeedbackX = value;
        break;
    default:
        break;
    }
}

double PhaserC::TargetW() const
{
    const double w = mBase + 6.0 * (ModValue(0) + ModValue(3) * mChannelSign) + mSpread;
    return std::max(w, kMinW);
}

// Second-order all-pass per section: (a + b z^-1 + z^-2) / (1 + b z^-1 + a z^-2), with
// b = -cos(centre) (1 - a) and a from the bandwidth by the bilinear transform.
void PhaserC::Design(double w)
{
    mW = w;
    const double rateScale = 44100.0 * gInvSampleRate;
    for (int i = 0; i < kMaxStages; ++i)
    {
        const double omega = M_PI * std::clamp(w * kSectionTable[i] * rateScale, kMinC, kMaxC);
        const double t = std::tan(std::min(0.5 * omega, kMaxHalfBandwidth));
        const double cc = (t - 1.0) / (t + 1.0);
        mA[i] = -cc;
        mB[i] = -std::cos(omega) * (1.0 - cc);
    }
}

void PhaserC::Process()
{
    const double target = TargetW();
    if (mSnap)
    {
        mSmoothA.SetLastD(target);
        mSnap = false;
    }
    const double w = mSmoothA.RunD(target, gBlockLen)[gBlockLen - 1];
    if (std::fabs(w - mW) > 1e-9 * w) Design(w);

    const double d = std::clamp(mDepthX + ModValue(1), 0.0, 1.0);
    const double depth = 0.5 * d;
    const double dry = 1.0 - depth;
    const int stages = mStages;
    for (int i = mRunStages; i < stages; ++i)
        mV1[i] = mV2[i] = mY1[i] = mY2[i] = 0.0;
    mRunStages = stages;
    const double stageGain = stages == kMaxStages ? 1.0 / 1.5 : 1.0;
    const double wetGain = depth * (1.0 + depth) * stageGain;
    const double dryGain = dry * (1.0 + depth) * stageGain;
    const double feedback = std::sqrt(std::clamp(mFeedbackX + ModValue(4), 0.0, 1.0)) * 0.95;

    for (int n = 0; n < gBlockLen; ++n)
    {
        const double x = mIn1[n];
        double v = x + mFeedbackState;
        for (int i = 0; i < stages; ++i)
        {
            const double y = mA[i] * (v - mY2[i]) + mB[i] * (mV1[i] - mY1[i]) + mV2[i];
            mV2[i] = mV1[i];
            mV1[i] = v;
            mY2[i] = mY1[i];
            mY1[i] = y;
            v = y;
        }
        mFeedbackState = v * feedback;
        mOut1[n] = v * wetGain + x * dryGain;
    }
    mFeedbackState = Undenormal(mFeedbackState);
    for (int i = 0; i < stages; ++i)
    {
        mY1[i] = Undenormal(mY1[i]);
        mY2[i] = Undenormal(mY2[i]);
    }
}
