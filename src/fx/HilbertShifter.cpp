#include "fx/HilbertShifter.h"

#include "dsp/Denormals.h"
#include "dsp/Vec.h"

#include <algorithm>
#include <cmath>

namespace
{
// All-pass coefficients of the two chains; chain one, delayed by one sample, lags chain two by
// 90 degrees within a few thousandths of a degree from about 40 Hz to near Nyquist.
constexpr double kChainA[HilbertShifter::kSections] = {0.150069, 0.453848, 0.708102, 0.858996,
                                                       0.935362, 0.971513, 0.988669, 0.998062};
constexpr double kChainB[HilbertShifter::kSections] = {0.040627, 0.298439, 0.593846, 0.795335,
                                                       0.90407,  0.956837, 0.981597, 0.993872};
constexpr double kTwoPi = 2.0 * M_PI;
constexpr double kMinHpAngle = 0.002;
} // namespace

void HilbertShifter::AllPassChain::Clear()
{
    for (int i = 0; i < kSections; ++i)
        x1[i] = x2[i] = y1[i] = y2[i] = 0.0;
}

// Each section is (k - z^-2) / (1 - k z^-2).
double HilbertShifter::AllPassChain::Run(const double* k, double v)
{
    for (int i = 0; i < kSections; ++i)
    {
        const double y = k[i] * (v + y2[i]) - x2[i];
        x2[i] = x1[i];
        x1[i] = v;
        y2[i] = y1[i];
        y1[i] = y;
        v = y;
    }
    return v;
}

void HilbertShifter::AllPassChain::Undenormalise()
{
    for (int i = 0; i < kSections; ++i)
    {
        y1[i] = Undenormal(y1[i]);
        y2[i] = Undenormal(y2[i]);
    }
}

HilbertShifter::HilbertShifter(bool isRight) : SimpleOSC(44100.0), DSPShell(isRight)
{
    HilbertShifter::Reset();
}

void HilbertShifter::Reset()
{
    DSPShell::Reset();
    mSmoothA.SetTime(50.0);
    mSmoothB.SetTime(10.0);
    mChainA.Clear();
    mChainB.Clear();
    mDelayedA = 0.0;
    mPhase = 0.0;
    VecZero(mFeedback, gBlockLen);
    mHpW = -1.0;
    mHpX1 = mHpX2 = mHpY1 = mHpY2 = 0.0;
    mSnap = true;
}

void HilbertShifter::SetParam(int id, double value)
{
    switch (id)
    {
    case 0:
        mShiftX = value;
        break;
    case 1:
        mScaleIndex = std::clamp(int(std::lround(value)), 0, 2);
        break;
    case 2:
        mFeedbackX = value;
        break;
    case 3:
    {
        const double s = 2.0 * value - 1.0;
        mSpread = s * std::fabs(s) * mChannelSign;
        break;
    }
    case 4:
        mMix = value;
        break;
    default:
        break;
    }
}

double HilbertShifter::ShiftHz() const
{
    const double f = 2.0 * std::clamp(mShiftX + 0.5 * ModValue(0), 0.0, 1.0) - 1.0;
    double s = mSpread;
    if (ModWired(3)) s = std::clamp(s + mChannelSign * ModValue(3), -1.0, 1.0);
    return (f + s) * kScales[mScaleIndex];
}

// Second-order high-pass at angle w, Q of 1 / (2 * 0.5882).
void HilbertShifter::DesignHighpass(double w)
{
    mHpW = w;
    const double c = std::cos(w), s = std::sin(w);
    const double a0 = 1.0 + 0.5882 * s;
    mHp[0] = 0.5 * (1.0 + c) / a0;
    mHp[1] = -(1.0 + c) / a0;
    mHp[2] = mHp[0];
    mHp[3] = -2.0 * c / a0;
    mHp[4] = (1.0 - 0.5882 * s) / a0;
}

void HilbertShifter::Process()
{
    const double step = -kTwoPi * std::clamp(ShiftHz() * gInvSampleRate, -1.0, 1.0);
    const double feedback = std::clamp(mFeedbackX + ModValue(2), 0.0, 1.0) * kMaxFeedback;
    if (mSnap)
    {
        mSmoothA.SetLastD(step);
        mSmoothB.SetLastD(feedback);
        mSnap = false;
    }
    const double* steps = mSmoothA.RunD(step, gBlockLen);
    const double* gains = mSmoothB.RunD(feedback, gBlockLen);

    const double w = std::max(steps[gBlockLen - 1] + kMinHpAngle, kMinHpAngle);
    if (w != mHpW) DesignHighpass(w);

    double* phase = mScratch;
    double* cosine = mScratch + gBlockLen;
    double sine[gBlockLen];
    double p = mPhase;
    for (int i = 0; i < gBlockLen; ++i)
    {
        p += steps[i];
        if (p > kTwoPi)
            p -= kTwoPi;
        else if (p < -kTwoPi)
            p += kTwoPi;
        phase[i] = p;
    }
    mPhase = p;
    VecSinCos(phase, sine, cosine, gBlockLen);

    for (int i = 0; i < gBlockLen; ++i)
    {
        const double v = mIn1[i] + mFeedback[i] * gains[i];
        const double h = mHp[0] * v + mHp[1] * mHpX1 + mHp[2] * mHpX2 - mHp[3] * mHpY1 - mHp[4] * mHpY2;
        mHpX2 = mHpX1;
        mHpX1 = v;
        mHpY2 = mHpY1;
        mHpY1 = h;
        const double a = mDelayedA;
        mDelayedA = mChainA.Run(kChainA, h);
        const double b = mChainB.Run(kChainB, h);
        const double y = b * cosine[i] + a * sine[i];
        mFeedback[i] = y;
        mOut1[i] = y;
    }
    mHpY1 = Undenormal(mHpY1);
    mHpY2 = Undenormal(mHpY2);
    mChainA.Undenormalise();
    mChainB.Undenormalise();
}
