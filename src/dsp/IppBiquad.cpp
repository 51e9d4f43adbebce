#include "dsp/IppBiquad.h"

#include "dsp/Decibels.h"
#include "dsp/FreqMapping.h"
#include "dsp/Vec.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kTwoPi = 2.0 * M_PI;
// Lowest corner of the designs, and the highest: at low rates the mapped 20 kHz lies beyond
// Nyquist, where the section formulas turn unstable.
constexpr double kMinRelFreq = 0.0002;
constexpr double kMaxRelFreq = 0.49;

// Formants in hertz: four groups of three vowels of three formants.
constexpr float kVowelGroups[4][3][3] = {
    {{270.f, 2290.f, 3010.f}, {530.f, 1840.f, 2480.f}, {300.f, 870.f, 2240.f}},
    {{390.f, 1990.f, 2550.f}, {660.f, 1720.f, 2410.f}, {730.f, 1090.f, 2440.f}},
    {{520.f, 1190.f, 2390.f}, {570.f, 840.f, 2410.f}, {300.f, 870.f, 2240.f}},
    {{660.f, 1720.f, 2410.f}, {440.f, 1020.f, 2240.f}, {490.f, 1350.f, 1690.f}},
};

void LoadVowelGroup(int group)
{
    group = std::clamp(group, 0, 3);
    for (int v = 0; v < 3; ++v)
        for (int k = 0; k < 3; ++k)
            gVowelFormants[v][k] = kVowelGroups[group][v][k];
}

void SetSection(double* taps, double b0, double b1, double b2, double a0, double a1, double a2)
{
    taps[0] = b0;
    taps[1] = b1;
    taps[2] = b2;
    taps[3] = a0;
    taps[4] = a1;
    taps[5] = a2;
}

// Section 0 is designed; every other section is a copy of it.
void InitCascade(IppBiquad& f)
{
    const int sections = std::clamp(int(f.mSections), 1, kBiquadMaxSections);
    for (int s = 1; s < sections; ++s)
        std::copy(f.mTaps, f.mTaps + 6, f.mTaps + 6 * s);
    IirInitBiquad(&f.mState, f.mTaps, sections, f.mDelay, f.mWork);
}

void DesignLowpass(IppBiquad& f)
{
    const double c = std::cos(double(f.mOmega)), a = f.mAlpha;
    SetSection(f.mTaps, (1.0 - c) * 0.5, 1.0 - c, (1.0 - c) * 0.5, 1.0 + a, -2.0 * c, 1.0 - a);
    InitCascade(f);
}

void DesignHighpass(IppBiquad& f)
{
    const double c = std::cos(double(f.mOmega)), a = f.mAlpha;
    SetSection(f.mTaps, (1.0 + c) * 0.5, -(1.0 + c), (1.0 + c) * 0.5, 1.0 + a, -2.0 * c, 1.0 - a);
    InitCascade(f);
}

void DesignBandpass(IppBiquad& f)
{
    const double c = std::cos(double(f.mOmega)), a = f.mAlpha;
    SetSection(f.mTaps, a, 0.0, -a, 1.0 + a, -2.0 * c, 1.0 - a);
    InitCascade(f);
}

void DesignAllpass(IppBiquad& f)
{
    const double c = std::cos(double(f.mOmega)), a = f.mAlpha;
    SetSection(f.mTaps, 1.0 - a, -2.0 * c, 1.0 + a, 1.0 + a, -2.0 * c, 1.0 - a);
    InitCascade(f);
}

void DesignSplit(IppBiquad& f)
{
    if (f.mChannelSign > 0.0)
        DesignLowpass(f);
    else
        DesignHighpass(f);
}

// The boost or cut of mGainRange * mGain dB is shared among the sections. With full makeup a
// boost is brought back to level after the filter; a cut is not (the gain is limited to 1).
void DesignPeak(IppBiquad& f)
{
    const int sections = std::clamp(int(f.mSections), 1, kBiquadMaxSections);
    const double c = std::cos(double(f.mOmega)), a = f.mAlpha;
    const double dB = double(f.mGainRange) * f.mGain;
    const double A = std::exp(((dB * 0.5) / sections) * kDbToLn);
    const float makeup = f.mMakeup;
    f.mOutGain = std::min(makeup / float(std::exp(dB * kDbToLn)) + (1.0f - makeup), 1.0f);
    SetSection(f.mTaps, 1.0 + a * A, -2.0 * c, 1.0 - a * A, 1.0 + a / A, -2.0 * c, 1.0 - a / A);
    InitCascade(f);
}

// Shelves take mGain as a linear amplitude, the square root of the shelf's gain.
void DesignLowShelf(IppBiquad& f)
{
    const double c = std::cos(double(f.mOmega)), a = f.mAlpha;
    const double A = f.mGain, S = 2.0 * std::sqrt(std::max(A, 0.0)) * a, Ap = A + 1.0, Am = A - 1.0;
    SetSection(f.mTaps, A * ((Ap - Am * c) + S), 2.0 * A * (Am - Ap * c), A * ((Ap - Am * c) - S),
               (Ap + Am * c) + S, -2.0 * (Am + Ap * c), (Ap + Am * c) - S);
    InitCascade(f);
}

void DesignHighShelf(IppBiquad& f)
{
    const double c = std::cos(double(f.mOmega)), a = f.mAlpha;
    const double A = f.mGain, S = 2.0 * std::sqrt(std::max(A, 0.0)) * a, Ap = A + 1.0, Am = A - 1.0;
    SetSection(f.mTaps, A * ((Ap + Am * c) + S), -2.0 * A * (Am + Ap * c), A * ((Ap + Am * c) - S),
               (Ap - Am * c) + S, 2.0 * (Am - Ap * c), (Ap - Am * c) - S);
    InitCascade(f);
}

// Three peak sections, one per formant, between two neighbouring vowels of the shared table;
// the 0..1 control (unmapped) runs through vowels 0, 1, 2.
void DesignVowel(IppBiquad& f)
{
    const float v = 2.0f * float(std::clamp(f.mFreq, 0.0, 1.0));
    int i = int(std::floor(v));
    float t = v - float(i);
    if (i >= 2)
    {
        i = 1;
        t = 1.0f;
    }
    const double dB = double(f.mGainRange) * f.mGain;
    const double A = std::exp(dB * 0.5 * kDbToLn);
    const float makeup = f.mMakeup;
    f.mOutGain = makeup / float(std::exp(dB * kDbToLn)) + (1.0f - makeup);
    for (int k = 0; k < 3; ++k)
    {
        const float lo = gVowelFormants[i][k], hi = gVowelFormants[i + 1][k];
        const float formant = lo + t * (hi - lo);
        const double w = kTwoPi * gInvSampleRate * formant;
        const double q = std::sin(w) * 0.1, c = std::cos(w);
        SetSection(f.mTaps + 6 * k, 1.0 + q * A, -2.0 * c, 1.0 - q * A, 1.0 + q / A, -2.0 * c, 1.0 - q / A);
    }
    IirInitBiquad(&f.mState, f.mTaps, 3, f.mDelay, f.mWork);
}

// First stage of the biquad designs: corner and bandwidth, then the type's section.
void UpdateBiquad(IppBiquad& f)
{
    const IppBiquad::StageFn design = f.mDesign;
    if (design == nullptr) return;
    if (f.mType != kBqVowel)
    {
        const double rel = std::clamp(f.mFreq, kMinRelFreq, kMaxRelFreq);
        f.mOmega = float(kTwoPi * rel);
        f.mAlpha = float(std::sin(double(f.mOmega)) / (f.mResSpan * f.mRes + f.mResMin));
    }
    design(f);
}

// Chebyshev types: a direct filter, with the resonance setting the passband ripple in dB; fast
// sweeps scale the ripple down.
void UpdateCheby(IppBiquad& f, bool highpass)
{
    const int order = std::clamp(int(f.mSections), 1, kIirMaxOrder);
    const double rel = std::clamp(f.mFreq, kMinRelFreq, kMaxRelFreq);
    const double ripple = (f.mRes * 14.0 + 1.0) * f.mRippleScale;
    if (highpass)
        IirDesignHighpass(rel, ripple, order, f.mTaps, 1, f.mWork);
    else
        IirDesignLowpass(rel, ripple, order, f.mTaps, 1, f.mWork);
    IirInit(&f.mState, f.mTaps, order, f.mDelay, f.mWork);
}

void UpdateChebyLow(IppBiquad& f)
{
    UpdateCheby(f, false);
}
void UpdateChebyHigh(IppBiquad& f)
{
    UpdateCheby(f, true);
}

bool HasOutGain(int type)
{
    return type == kBqPeak || type == kBqPeakB || type == kBqVowel;
}
} // namespace

IppBiquad::IppBiquad(bool isRight, int type, int sections, float gainRange)
    : QLMFilter(isRight), mSections(std::clamp(sections, 1, kBiquadMaxSections)), mGainRange(gainRange),
      mOrderFromParam(type == kBqOrderFromParam)
{
    mResMin = 1.45;
    mResSpan = 8.0;
    mFreqSmooth.SetTime(1.0);
    int directBytes = 0, cascadeBytes = 0;
    IirStateSize(kIirMaxOrder, &directBytes);
    IirBiquadStateSize(kBiquadMaxSections, &cascadeBytes);
    mWork = VecAllocBytes(std::max(directBytes, cascadeBytes));
    SetType(type);
    mClearPending = false;
    IppBiquad::Reset();
}

IppBiquad::~IppBiquad()
{
    VecFree(mWork);
}

void IppBiquad::ChangeSections(int sections)
{
    sections = std::clamp(sections, 1, kBiquadMaxSections);
    if (sections == mSections) return;
    mSections = sections;
    mClearPending = true;
    mDirty = true;
}

void IppBiquad::SetType(int type)
{
    if (type == mType) return;
    mMapFreq = true;
    mDesignPending = true;
    StageFn update = &UpdateBiquad;
    switch (type)
    {
    case kBqHighpass:
        mDesign = &DesignHighpass;
        break;
    case kBqBandpass:
        mDesign = &DesignBandpass;
        break;
    case kBqPeak:
    case kBqPeakB:
        mDesign = &DesignPeak;
        break;
    case kBqChebyLow2:
    case kBqChebyLow4:
        update = &UpdateChebyLow;
        ChangeSections(type == kBqChebyLow2 ? 2 : 4);
        break;
    case kBqChebyHigh2:
    case kBqChebyHigh4:
        update = &UpdateChebyHigh;
        ChangeSections(type == kBqChebyHigh2 ? 2 : 4);
        break;
    case kBqAllpass:
        mDesign = &DesignAllpass;
        break;
    case kBqVowel:
        mDesign = &DesignVowel;
        ChangeSections(3);
        LoadVowelGroup(0);
        mGainParam = 4.0;
        break;
    case kBqLowHighSplit:
        mDesign = &DesignSplit;
        break;
    case kBqLowShelf:
        mDesign = &DesignLowShelf;
        break;
    case kBqHighShelf:
        mDesign = &DesignHighShelf;
        break;
    case kBqOff:
        break;
    default:
        mDesign = &DesignLowpass;
        break;
    }
    mUpdate = update;
    mType = type;
    mDirty = true;
}

void IppBiquad::SetParam(int id, double value)
{
    const int type = mType;
    switch (id)
    {
    case 0:
        mFreqParam = float(std::clamp(value, 0.0, 1.0));
        break;
    case 1:
        if (type == kBqVowel)
        {
            LoadVowelGroup(int(std::floor(3.0 * value)));
            mDirty = true;
        }
        else if (mOrderFromParam)
            ChangeSections(int(std::floor(3.0 * value) + 1.0));
        else
            SetResonance(float(value));
        break;
    case 2:
        mSpread = std::fabs(value) * value * mChannelSign;
        break;
    case 3:
        if (type == kBqPeak)
            mGainParam = 2.0 * value - 1.0;
        else if (type == kBqVowel)
            mGainParam = value;
        else
            SetType(int(value));
        break;
    case 4:
        if (type == kBqPeak || type == kBqVowel)
        {
            mMakeup = float(value);
            mDirty = true;
        }
        else
            mMix = value;
        break;
    default:
        break;
    }
}

void IppBiquad::SetOrder(double x)
{
    ChangeSections(int(2.0 * x + 2.0));
}

void IppBiquad::Reset()
{
    DSPShell::Reset();
    VecZero(mDelay, 2 * kBiquadMaxSections);
    IirSetDelay(mState, mDelay);
    VecZero(mHistory, kTypeChangeHistory);
    mHasRun = false;
    RetimeSmoothers();
    mDirty = true;
}

void IppBiquad::ControlUpdate()
{
    // Cleared before the values are read, so that a change arriving meanwhile flags the next block.
    const bool dirty = mDirty || mState == nullptr;
    mDirty = false;
    const int type = mType;
    const double oldFreq = UpdateControls(type == kBqPeak ? -1.0 : 0.0, 1.0);
    if (!HasChanged() && !dirty) return;

    const double d = (oldFreq - mFreq) * 5.0;
    mRippleScale = d == 0.0 ? 1.0 : std::min(0.01 / (d * d), 1.0);
    if (mMapFreq && type != kBqVowel) mFreq = MapFreqRel(float(mFreq), gInvSampleRate);
    const bool typeChanged = mDesignPending && mHasRun;
    // A redesign starts the new state from mDelay: the memory the old one has run up goes there.
    IirGetDelay(mState, mDelay);
    if (const StageFn update = mUpdate; update != nullptr) update(*this);
    if (typeChanged) WarmUpFromHistory();
    mDesignPending = false;
}

void IppBiquad::WarmUpFromHistory()
{
    // The new design runs over the recent input from silence, oldest block first, so that it goes
    // on as if it had always been this type; what it forgets lies beyond the history's reach.
    VecZero(mDelay, 2 * kBiquadMaxSections);
    IirSetDelay(mState, mDelay);
    for (int done = 0; done < kTypeChangeHistory; done += gBlockLen)
    {
        const int pos = (mHistoryPos + done) % kTypeChangeHistory;
        IirRun(mHistory + pos, mScratch, gBlockLen, mState);
    }
    IirGetDelay(mState, mDelay);
}

bool IppBiquad::PrepareControls(int type)
{
    if (type == kBqOff) return false;
    if (mClearPending)
    {
        mClearPending = false;
        VecZero(mDelay, 2 * kBiquadMaxSections);
        IirSetDelay(mState, mDelay);
        VecZero(mHistory, kTypeChangeHistory);
        mHasRun = false; // a new section count starts from silence
        mDirty = true;
    }
    mUpdatePhase = (mUpdatePhase - 1) & 1;
    if (mUpdatePhase == 0 || mDirty || mState == nullptr) ControlUpdate();
    return mState != nullptr;
}

void IppBiquad::KeepHistory(const double* input)
{
    if (mKeepHistory)
    {
        VecCopy(input, mHistory + mHistoryPos, mBlockLen);
        mHistoryPos = (mHistoryPos + mBlockLen) % kTypeChangeHistory;
    }
    mHasRun = true;
}

bool IppBiquad::PrepareRun(int type)
{
    if (!PrepareControls(type)) return false;
    KeepHistory(mIn1);
    return true;
}

bool IppBiquad::BeginBlock()
{
    mBegunType = mType;
    return PrepareControls(mBegunType);
}

bool IppBiquad::SingleSection(IirSingleSection& out)
{
    return !HasOutGain(mBegunType) && IirGetSingleSection(mState, out);
}

void IppBiquad::EndBlock(const double* input, double* output)
{
    KeepHistory(input);
    FinishRun(output, mBegunType);
}

void IppBiquad::RunBlockInPlace(double* block)
{
    KeepHistory(block);
    IirRun(block, block, mBlockLen, mState);
    FinishRun(block, mBegunType);
}

void IppBiquad::FinishRun(double* out, int type)
{
    IirFlushFirstDelay(mState);
    if (HasOutGain(type)) VecScaleI(double(mOutGain), out, mBlockLen);
}

void IppBiquad::Process()
{
    const int type = mType;
    if (!PrepareRun(type)) return;
    double* out = RunTarget();
    IirRun(mIn1, out, mBlockLen, mState);
    FinishRun(out, type);
}

void IppBiquad::ProcessPair(IppBiquad& left, IppBiquad& right)
{
    const int typeL = left.mType;
    const int typeR = right.mType;
    const bool runL = left.PrepareRun(typeL);
    const bool runR = right.PrepareRun(typeR);
    RunPreparedPair(left, runL, typeL, right, runR, typeR);
}

void IppBiquad::ProcessChainPair(IppBiquad& firstL, IppBiquad& firstR, IppBiquad& thenL, IppBiquad& thenR)
{
    const int typeL = firstL.mType, typeR = firstR.mType, thenTypeL = thenL.mType, thenTypeR = thenR.mType;
    double* outL = firstL.RunTarget();
    double* outR = firstR.RunTarget();
    // The second pair's history would be the first pair's output, and an output gain of the first
    // pair would come between the two: either keeps the runs apart.
    const int n = firstL.mBlockLen;
    const bool chained = firstL.mIn1 == outL && firstR.mIn1 == outR && thenL.mIn1 == outL &&
                         thenR.mIn1 == outR && thenL.RunTarget() == outL && thenR.RunTarget() == outR &&
                         firstR.mBlockLen == n && thenL.mBlockLen == n && thenR.mBlockLen == n &&
                         !thenL.mKeepHistory && !thenR.mKeepHistory && !HasOutGain(typeL) &&
                         !HasOutGain(typeR);
    if (!chained)
    {
        ProcessPair(firstL, firstR);
        ProcessPair(thenL, thenR);
        return;
    }
    // The second pair's controls and memory do not depend on the first pair's output.
    const bool runL = firstL.PrepareRun(typeL), runR = firstR.PrepareRun(typeR);
    const bool thenRunL = thenL.PrepareRun(thenTypeL), thenRunR = thenR.PrepareRun(thenTypeR);
    if (runL && runR && thenRunL && thenRunR)
    {
        IirRunPairChainI(outL, outR, n, firstL.mState, firstR.mState, thenL.mState, thenR.mState);
        firstL.FinishRun(outL, typeL);
        firstR.FinishRun(outR, typeR);
        thenL.FinishRun(outL, thenTypeL);
        thenR.FinishRun(outR, thenTypeR);
        return;
    }
    RunPreparedPair(firstL, runL, typeL, firstR, runR, typeR);
    RunPreparedPair(thenL, thenRunL, thenTypeL, thenR, thenRunR, thenTypeR);
}

void IppBiquad::RunPreparedPair(IppBiquad& left, bool runL, int typeL, IppBiquad& right, bool runR, int typeR)
{
    double* outL = left.RunTarget();
    double* outR = right.RunTarget();
    if (runL && runR && left.mIn1 == outL && right.mIn1 == outR && left.mBlockLen == right.mBlockLen)
    {
        IirRunPairI(outL, outR, left.mBlockLen, left.mState, right.mState);
        left.FinishRun(outL, typeL);
        right.FinishRun(outR, typeR);
        return;
    }
    if (runL)
    {
        IirRun(left.mIn1, outL, left.mBlockLen, left.mState);
        left.FinishRun(outL, typeL);
    }
    if (runR)
    {
        IirRun(right.mIn1, outR, right.mBlockLen, right.mState);
        right.FinishRun(outR, typeR);
    }
}
