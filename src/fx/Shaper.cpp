#include "fx/Shaper.h"

#include "dsp/Vec.h"
#include "fx/ShaperCurves.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr int kWaveShapeType = 6;

// tanh antialiased by its anti-derivative: the mean slope of ln cosh between the last two inputs,
// or the tanh of their midpoint when they are too close for the quotient to be accurate.
inline double AdaaTanh(Shaper& s, double x)
{
    const double f = shaper::LnCosh(x);
    const double dx = x - s.mPrevX;
    const double y = std::fabs(dx) > 0.01 ? (f - s.mPrevF) / dx : std::tanh(0.5 * (x + s.mPrevX));
    s.mPrevX = x;
    s.mPrevF = f;
    return y;
}

// Prepare steps: amount vector to per-sample coefficients.
void PrepareNone(Shaper&) {}

void PrepareSaturate(Shaper& s)
{
    for (int i = 0; i < gBlockLen; ++i)
    {
        const double a = s.mAmount[i];
        s.mCoefA[i] = 16.0 * a + 1.0;
        s.mCoefB[i] = 1.0 / (3.0 * a + 1.0);
    }
}

void PrepareRectify(Shaper& s)
{
    for (int i = 0; i < gBlockLen; ++i)
        s.mCoefA[i] = 2.0 * s.mAmount[i] - 1.0;
}

void PrepareDestroy(Shaper& s)
{
    for (int i = 0; i < gBlockLen; ++i)
    {
        s.mCoefA[i] = 1.0 + std::min(15.0 * s.mAmount[i], 3.0);
        s.mCoefB[i] = 1.0;
    }
}

void PrepareNoise(Shaper& s)
{
    for (int i = 0; i < gBlockLen; ++i)
    {
        const double a = s.mAmount[i];
        s.mCoefA[i] = 1.0 + std::min(7.5 * a * a, 3.0);
        s.mCoefB[i] = 0.5;
    }
}

// Hold step and input gain; the powers are formed once when the amount stands still.
void PrepareLofi(Shaper& s)
{
    if (s.mAmount[0] == s.mAmount[gBlockLen - 1])
    {
        const double a = s.mAmount[0];
        VecSet(1.0 - std::pow(a, 0.125) * 0.99, s.mCoefA, gBlockLen);
        VecSet(1.25 * a + 1.0, s.mCoefB, gBlockLen);
        return;
    }
    for (int i = 0; i < gBlockLen; ++i)
    {
        const double a = s.mAmount[i];
        s.mCoefA[i] = 1.0 - std::pow(a, 0.125) * 0.99;
        s.mCoefB[i] = 1.25 * a + 1.0;
    }
}

// WAVE SHAPE: the amount is the GAIN. It sets the peak filter's boost before the filter runs, and
// the share of the filtered signal in the drive.
void PrepareWave(Shaper& s)
{
    const double g = s.mAmount[gBlockLen - 1];
    s.mFilter.mGainParam = g;
    s.mCoefA[0] = std::min(1.0, g + 0.1);
}

// Run steps.
void RunCopy(Shaper&, const double* dry, const double*, double* out)
{
    if (out != dry) VecCopy(dry, out, gBlockLen);
}

void RunSaturate(Shaper& s, const double*, const double* in, double* out)
{
    for (int i = 0; i < gBlockLen; ++i)
        out[i] = AdaaTanh(s, in[i] * s.mCoefA[i]) * s.mCoefB[i];
}

void RunRectify(Shaper& s, const double*, const double* in, double* out)
{
    for (int i = 0; i < gBlockLen; ++i)
        out[i] = std::clamp(std::fabs(in[i]) * s.mCoefA[i], -1.0, 1.0);
}

void RunFold(Shaper& s, const double*, const double* in, double* out)
{
    for (int i = 0; i < gBlockLen; ++i)
        out[i] = shaper::Fold(in[i] * s.mCoefA[i]) * s.mCoefB[i];
}

void RunLofi(Shaper& s, const double*, const double* in, double* out)
{
    for (int i = 0; i < gBlockLen; ++i)
    {
        s.mPhase += s.mCoefA[i];
        if (s.mPhase >= 1.0)
        {
            s.mPhase -= 1.0;
            s.mHeld = in[i] * s.mCoefB[i];
        }
        out[i] = shaper::SoftClip(s.mHeld);
    }
}

// Drive of WAVE SHAPE: the filtered signal mixed with the dry one, the dry path skipped near 1.
inline double WaveDrive(double mix, double dry, double shaped)
{
    return mix >= 0.99 ? shaped : mix * shaped + (1.0 - mix) * dry;
}

template <double (*Curve)(double)>
void RunWaveCurve(Shaper& s, const double* dry, const double* in, double* out)
{
    const double mix = s.mCoefA[0];
    for (int i = 0; i < gBlockLen; ++i)
        out[i] = Curve(WaveDrive(mix, dry[i], in[i]));
}

void RunWaveSaturate(Shaper& s, const double* dry, const double* in, double* out)
{
    const double mix = s.mCoefA[0];
    for (int i = 0; i < gBlockLen; ++i)
        out[i] = AdaaTanh(s, WaveDrive(mix, dry[i], in[i]));
}

// Curves of the "SHAPE MODE" list, in list order.
constexpr Shaper::RunFn kWaveRuns[kShapeModeIds.size()] = {
    &RunWaveSaturate,
    &RunWaveCurve<&shaper::Tube>,
    &RunWaveCurve<&shaper::Rectify>,
    &RunWaveCurve<&shaper::SineSum<1>>,
    &RunWaveCurve<&shaper::SineSum<2>>,
    &RunWaveCurve<&shaper::SineSum<3>>,
    &RunWaveCurve<&shaper::AsymTanh<2>>,
    &RunWaveCurve<&shaper::AsymTanh<4>>,
};

void RunWave(Shaper& s, const double* dry, const double* in, double* out)
{
    kWaveRuns[std::clamp(int(s.mModeIndex), 0, int(kShapeModeIds.size()) - 1)](s, dry, in, out);
}

// Filter input fed by each of the five module inputs (-1: none).
constexpr int kWaveInputs[5] = {-1, -1, 0, 1, 2};
constexpr int kShapeInputs[5] = {-1, 0, 1, 2, -1};
constexpr int kListInputs[5] = {-1, 0, -1, 2, -1};

struct ShaperKind
{
    int type;
    Shaper::PrepareFn prepare;
    Shaper::RunFn run;
    int filterType;
    double filterFreq; // starting control, so that a fresh module is open
    bool listMode;     // parameter 2 picks the filter type
};

constexpr ShaperKind kKinds[] = {
    {kWaveShapeType, &PrepareWave, &RunWave, kBqPeakB, 0.5, false},
    {14, &PrepareSaturate, &RunSaturate, kBqLowpass, 1.0, false},
    {15, &PrepareSaturate, &RunSaturate, kBqLowpass, 1.0, true},
    {16, &PrepareRectify, &RunRectify, kBqLowpass, 1.0, false},
    {17, &PrepareRectify, &RunRectify, kBqLowpass, 1.0, true},
    {18, &PrepareDestroy, &RunFold, kBqLowpass, 1.0, false},
    {19, &PrepareDestroy, &RunFold, kBqLowpass, 1.0, true},
    {20, &PrepareNoise, &RunFold, kBqLowpass, 1.0, false},
    {21, &PrepareNoise, &RunFold, kBqLowpass, 1.0, true},
    {23, &PrepareLofi, &RunLofi, kBqHighpass, 0.0, false},
    {24, &PrepareLofi, &RunLofi, kBqLowpass, 1.0, true},
};
constexpr ShaperKind kPassThrough = {-1, &PrepareNone, &RunCopy, kBqOff, 0.0, false};

const ShaperKind& FindKind(int type)
{
    for (const ShaperKind& k : kKinds)
        if (k.type == type) return k;
    return kPassThrough;
}
} // namespace

Shaper::Shaper(int type, bool isRight)
    : DSPShell(isRight), mFilter(isRight, FindKind(type).filterType, 1, 24.0f), mType(type),
      mAmountInput(type == kWaveShapeType ? 1 : 0),
      mFilterInputs(type == kWaveShapeType ? kWaveInputs
                                           : (FindKind(type).listMode ? kListInputs : kShapeInputs)),
      mPrepare(FindKind(type).prepare), mRun(FindKind(type).run)
{
    mFilter.SetParam(0, FindKind(type).filterFreq);
    Shaper::Reset();
}

void Shaper::SetParam(int id, double value)
{
    if (mType == kWaveShapeType)
    {
        switch (id)
        {
        case 0:
            mModeIndex = std::clamp(int(value), 0, int(kShapeModeIds.size()) - 1);
            break;
        case 1:
            mAmountParam = std::clamp(value, 0.0, 1.0);
            break;
        case 2:
            mFilter.SetParam(0, value);
            break;
        case 3:
            mFilter.SetParam(1, value * value);
            break;
        case 4:
            mFilter.SetParam(2, 2.0 * value - 1.0);
            break;
        default:
            break;
        }
        return;
    }
    switch (id)
    {
    case 0:
        mAmountParam = std::clamp(value, 0.0, 1.0);
        break;
    case 1:
        mFilter.SetParam(0, value);
        break;
    case 2:
        if (FindKind(mType).listMode)
            mFilter.SetType(kShaperFilterModeTypes[std::clamp(int(value), 0, 3)]);
        else
            mFilter.SetParam(1, value);
        break;
    case 3:
        mFilter.SetParam(2, 2.0 * value - 1.0);
        break;
    case 4:
        mMix = value;
        break;
    default:
        break;
    }
}

void Shaper::OnModSource(int input, const double* value)
{
    if (input >= 0 && input < 5 && mFilterInputs[input] >= 0)
        mFilter.SetModSource(mFilterInputs[input], value);
}

void Shaper::OnModDepth(int input, const double* depth)
{
    if (input >= 0 && input < 5 && mFilterInputs[input] >= 0)
        mFilter.SetModDepth(mFilterInputs[input], depth);
}

void Shaper::Reset()
{
    DSPShell::Reset();
    mFilter.Reset();
    mAmountSmooth.SetTime(10.0);
    mAmountSmooth.SetLastD(mAmountParam);
    VecZero(mFiltered, gBlockLen);
    mPrevX = mPrevF = 0.0;
    mPhase = mHeld = 0.0;
}

void Shaper::Process()
{
    const double* dry = mIn1;
    double* out = mOut1 != nullptr ? mOut1 : const_cast<double*>(mIn1);

    const double* amount = mAmountSmooth.RunD(mAmountParam, gBlockLen);
    const double mod = ModValue(mAmountInput);
    for (int i = 0; i < gBlockLen; ++i)
        mAmount[i] = std::clamp(amount[i] + mod, 0.0, 1.0);
    mPrepare(*this);

    const double* shaped = dry;
    if (mFilter.mType != kBqOff)
    {
        mFilter.mIn1 = dry;
        mFilter.mOut1 = mFiltered;
        mFilter.Process();
        shaped = mFiltered;
    }
    mRun(*this, dry, shaped, out);
}
