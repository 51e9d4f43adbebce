#include "dsp/QLMSVF.h"

#include "dsp/Denormals.h"
#include "dsp/FreqMapping.h"
#include "dsp/Vec.h"

#include <algorithm>

namespace
{
// Highest tuning, as a fraction of half the sample rate: the prewarp has its pole at 1, and at low
// rates the mapped 20 kHz would lie beyond it.
constexpr float kMaxHalfRel = 0.98f;
constexpr float kMinHalfRel = 0.002f;

// tanh by its continued fraction, exact enough over the range the band state reaches.
inline double SoftClip(double v)
{
    const double v2 = v * v;
    return v * (((v2 + 378.0) * v2 + 17325.0) * v2 + 135135.0) /
           (((28.0 * v2 + 3150.0) * v2 + 62370.0) * v2 + 135135.0);
}

struct PassTerms
{
    double g, r, h;
};

// Selected output of one pass over n samples of src into dst; the three blocks keep every output.
template <bool Saturate>
void RunPass(QLMSVF& f, const double* src, double* dst, int n, double& s1, double& s2, const PassTerms& t)
{
    const double g = t.g, r = t.r, h = t.h;
    double a = s1, b = s2;
    for (int i = 0; i < n; ++i)
    {
        const double x = src[i];
        double hp = (x - a * r - b) * h;
        if constexpr (Saturate) hp = Undenormal(hp);
        const double bp = hp * g + a;
        const double lp = bp * g + b;
        if constexpr (Saturate)
            a = SoftClip(g * hp + bp);
        else
            a = g * hp + bp;
        b = g * bp + lp;
        f.mHighOut[i] = hp;
        f.mBandOut[i] = bp;
        f.mLowOut[i] = lp;
    }
    s1 = a;
    s2 = b;
    switch (int(f.mOutputSel))
    {
    case kSvfHigh:
        VecCopy(f.mHighOut, dst, n);
        break;
    case kSvfBand:
        VecCopy(f.mBandOut, dst, n);
        break;
    case kSvfLowHigh:
        VecAdd(f.mLowOut, f.mHighOut, dst, n);
        break;
    case kSvfInputBand:
        VecAdd(src, f.mBandOut, dst, n);
        break;
    default:
        VecCopy(f.mLowOut, dst, n);
        break;
    }
}

double* OutBlock(QLMSVF& f)
{
    return f.mOut1 != nullptr ? f.mOut1 : const_cast<double*>(f.mIn1);
}

void LinearPass(QLMSVF& f)
{
    const double* src = *static_cast<const double* const*>(f.mInputPtr);
    RunPass<false>(f, src, OutBlock(f), f.mBlockLen, f.mS1b, f.mS2b, {f.mG, f.mR1, f.mH1});
}

void SaturatingPass(QLMSVF& f)
{
    RunPass<true>(f, f.mIn1, OutBlock(f), f.mBlockLen, f.mS1, f.mS2, {f.mG, f.mR2, f.mH2});
}

// The saturating pass writes its output block, which the linear pass then filters again.
void TwoPasses(QLMSVF& f)
{
    SaturatingPass(f);
    LinearPass(f);
}

struct TypeRow
{
    QLMSVF::PassFn pass;
    int output;
};

const TypeRow kTypes[11] = {
    {&TwoPasses, kSvfLow},       {&SaturatingPass, kSvfLow},       {&LinearPass, kSvfLow},
    {&TwoPasses, kSvfHigh},      {&SaturatingPass, kSvfHigh},      {&LinearPass, kSvfLow},
    {&SaturatingPass, kSvfBand}, {&TwoPasses, kSvfBand},           {&LinearPass, kSvfLow},
    {&TwoPasses, kSvfLowHigh},   {&SaturatingPass, kSvfInputBand},
};
} // namespace

QLMSVF::QLMSVF(bool isRight, int type) : QLMFilter(isRight)
{
    SetType(type);
    QLMSVF::Reset();
}

void QLMSVF::SetType(int type)
{
    type = std::clamp(type, 0, 10);
    const TypeRow& row = kTypes[type];
    mResonant = !(type == 2 || type == 5 || type == 8 || type == 11);
    mOutputSel = row.output;
    mInputPtr = row.pass == &TwoPasses ? static_cast<const double* const*>(&mOut1) : &mIn1;
    mProcessFn = row.pass;
    mType = type;
    mDirty = true;
}

void QLMSVF::SetParam(int id, double value)
{
    switch (id)
    {
    case 0:
        mFreqParam = std::clamp(value, 0.0, 1.0);
        break;
    case 1:
        SetResonance(float(std::clamp(value, 0.0, 1.0)));
        break;
    case 2:
        mSpread = std::fabs(value) * value * mChannelSign;
        break;
    case 3:
        SetType(int(std::clamp(value, 0.0, 10.0)));
        break;
    case 4:
        mMix = value;
        break;
    default:
        break;
    }
}

void QLMSVF::Tune()
{
    const float f = float(std::clamp(mFreq, 0.0, 1.0));
    mFreqUsed = f;
    // Twice the corner relative to the rate, so that the prewarp below is tan(pi * w / 2).
    float w = float(Pow400Poly(f) * gHundredOverRate);
    w = std::clamp(w, kMinHalfRel, kMaxHalfRel);
    const double s = double(w) * w;
    const double g = ((s * 0.10928518325090408 - 4.380795955657959) * s + 15.827852249145508) * w /
                     ((s - 11.076322555541992) * s + 10.076322555541992);
    mG = g;
    mR1 = g + 1.0;
    mH1 = 1.0 / (g * (g + 1.0) + 1.0);
    if (mResonant)
    {
        // Slightly less feedback towards the top of the range.
        const double k = (1.1 - 0.1 * double(f) * f * f) * mRes;
        mR2 = g + 1.0 - k;
        mH2 = 1.0 / ((g + 1.0 - k) * g + 1.0);
    }
}

void QLMSVF::Reset()
{
    DSPShell::Reset();
    RetimeSmoothers();
    Tune();
    mS1 = mS2 = mS1b = mS2b = 0.0;
    VecZero(mHighOut, gBlockLen);
    VecZero(mBandOut, gBlockLen);
    VecZero(mLowOut, gBlockLen);
}

void QLMSVF::Process()
{
    mUpdatePhase = (mUpdatePhase - 1) & 1;
    if (mUpdatePhase == 0 || mDirty)
    {
        const bool dirty = mDirty;
        mDirty = false;
        UpdateControls(0.5, 2.0);
        if (HasChanged() || dirty) Tune();
    }
    if (const PassFn pass = mProcessFn; pass != nullptr) pass(*this);
}
