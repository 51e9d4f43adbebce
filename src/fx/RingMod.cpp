#include "fx/RingMod.h"

#include "dsp/Vec.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kShapeMax = 0.9;
constexpr double kWobbleDepth = 0.75;
constexpr double kSpreadOctaves = 0.5;

double WrapHalfCycles(double d)
{
    while (d > 1.0)
        d -= 2.0;
    while (d <= -1.0)
        d += 2.0;
    return d;
}
} // namespace

RingMod::RingMod(bool isRight, const RingMod* partner)
    : SimpleOSC(44100.0), DSPShell(isRight), mPartner(partner)
{
    RingMod::Reset();
}

void RingMod::Reset()
{
    DSPShell::Reset();
    mSmoothA.SetTime(50.0);
    mSmoothB.SetTime(10.0);
    mSmoothA.SetLastD(0.0);
    mPhase = 0.0;
    mWobble = 0.0;
    mLocked = false;
}

void RingMod::SetParam(int id, double value)
{
    switch (id)
    {
    case 0:
        mFreqX = value;
        break;
    case 1:
        mShapeX = value;
        break;
    case 2:
        mWidthX = value;
        break;
    case 3:
        mSpread = (2.0 * value - 1.0) * mChannelSign;
        break;
    case 4:
        mMix = value;
        break;
    default:
        break;
    }
}

double RingMod::CarrierHz() const
{
    double z = std::clamp(mFreqX + ModValue(0), 0.0, 1.0);
    z = 0.25 * z * z;
    const double spread = std::clamp(mSpread + ModValue(3) * mChannelSign, -1.0, 1.0);
    return (z * z * 4999.9 + 0.1) * std::exp2(kSpreadOctaves * spread);
}

void RingMod::Process()
{
    const double s = std::clamp(mShapeX + ModValue(1), 0.0, 1.0) * kShapeMax;
    const double width = std::clamp(mWidthX + ModValue(2), 0.0, 1.0);
    const double inc = 2.0 * CarrierHz() * gInvSampleRate;

    mWobble += gBlockLen * gInvSampleRate;
    if (mWobble >= 2.0) mWobble -= 2.0;
    const double* wobble = mSmoothA.RunD(std::sin(M_PI * mWobble) * kWobbleDepth * width, gBlockLen);

    // Phase lock of the right channel onto its partner's: the offset is ramped out over this block.
    const bool lockable =
        mPartner != nullptr && width == 0.0 && mSpread == 0.0 && !ModWired(2) && !ModWired(3);
    double offset = 0.0;
    if (lockable && !mLocked) offset = WrapHalfCycles(mPartner->Phase() - (mPhase + gBlockLen * inc));
    mLocked = lockable;

    double* c = mScratch;
    double p = mPhase;
    for (int i = 0; i < gBlockLen; ++i)
    {
        p += inc;
        if (p >= 2.0) p -= 2.0;
        c[i] = M_PI * (p + offset * double(i + 1) / gBlockLen + wobble[i] * mChannelSign);
    }
    mPhase = p + offset;
    if (mPhase >= 2.0)
        mPhase -= 2.0;
    else if (mPhase < 0.0)
        mPhase += 2.0;

    double* cosine = mScratch + gBlockLen;
    double sine[gBlockLen];
    VecSinCos(c, sine, cosine, gBlockLen);
    const double norm = 1.0 - s * s;
    const double bias = 1.0 + s * s;
    for (int i = 0; i < gBlockLen; ++i)
        mOut1[i] = mIn1[i] * norm * sine[i] / (bias - 2.0 * s * cosine[i]);
}
