#include "fx/EQ_M.h"

#include "dsp/Vec.h"

#include <algorithm>

EQ_M::EQ_M(int layout, bool isRight)
    : DSPShell(isRight), mLayout(std::clamp(layout, 0, 2)), mLowShelf(isRight, kBqLowShelf, 1, 24.0f),
      mPeak1(isRight, kBqPeak, 1, kPeakRangeDb), mPeak2(isRight, kBqPeak, 1, kPeakRangeDb),
      mHighShelf(isRight, kBqHighShelf, 1, 24.0f)
{
    for (IppBiquad* f : {&mLowShelf, &mPeak1, &mPeak2, &mHighShelf})
        f->mMapFreq = false; // frequencies arrive relative to the rate
    // Flat until the engine sends gains: shelf amplitude 1, peak at the middle of its range.
    mLowShelf.mGainParam = 1.0;
    mHighShelf.mGainParam = 1.0;
    mPeak1.SetParam(3, 0.5);
    mPeak2.SetParam(3, 0.5);
    switch (mLayout)
    {
    case kEqFix:
        mChain[0] = &mPeak1;
        mChain[1] = &mLowShelf;
        mChain[2] = &mHighShelf;
        mChainLen = 3;
        break;
    case kEqTwoBand:
        mChain[0] = &mPeak1;
        mChain[1] = &mPeak2;
        mChainLen = 2;
        break;
    default:
        mChain[0] = &mLowShelf;
        mChain[1] = &mHighShelf;
        mChainLen = 2;
        break;
    }
    EQ_M::Reset();
}

void EQ_M::SetFrequency(IppBiquad& section, double hz)
{
    section.SetParam(0, std::clamp(hz * gInvSampleRate, 0.0, 1.0));
}

void EQ_M::ApplyFrequencies()
{
    SetFrequency(mLowShelf, mLowShelfHz);
    SetFrequency(mPeak1, mPeak1Hz);
    SetFrequency(mPeak2, mPeak2Hz);
    SetFrequency(mHighShelf, mHighShelfHz);
}

void EQ_M::SetParam(int id, double value)
{
    // A shelf takes its amplitude straight; a peak maps its fraction to 2 * value - 1 itself.
    switch (mLayout * 4 + id)
    {
    case kEqFix * 4 + 0:
    case kEqShelves * 4 + 0:
        mLowShelf.mGainParam = value;
        break;
    case kEqFix * 4 + 1:
    case kEqTwoBand * 4 + 1:
        mPeak1Hz = value;
        SetFrequency(mPeak1, value);
        break;
    case kEqFix * 4 + 2:
    case kEqTwoBand * 4 + 0:
        mPeak1.SetParam(3, value);
        break;
    case kEqFix * 4 + 3:
    case kEqShelves * 4 + 2:
        mHighShelf.mGainParam = value;
        break;
    case kEqTwoBand * 4 + 2:
        mPeak2.SetParam(3, value);
        break;
    case kEqTwoBand * 4 + 3:
        mPeak2Hz = value;
        SetFrequency(mPeak2, value);
        break;
    case kEqShelves * 4 + 1:
        mLowShelfHz = value;
        SetFrequency(mLowShelf, value);
        break;
    case kEqShelves * 4 + 3:
        mHighShelfHz = value;
        SetFrequency(mHighShelf, value);
        break;
    default:
        if (id == 4) mMix = value;
        break;
    }
}

void EQ_M::Reset()
{
    DSPShell::Reset();
    ApplyFrequencies();
    for (IppBiquad* f : {&mLowShelf, &mPeak1, &mPeak2, &mHighShelf})
        f->Reset();
}

void EQ_M::Process()
{
    double* out = mOut1 != nullptr ? mOut1 : const_cast<double*>(mIn1);
    const double* src = mIn1;
    for (int k = 0; k < mChainLen; ++k)
    {
        IppBiquad& f = *mChain[k];
        if (f.mBypass) continue;
        f.mBlockLen = mBlockLen;
        f.mIn1 = src;
        f.mOut1 = out;
        f.Process();
        src = out;
    }
    if (src != out) VecCopy(src, out, mBlockLen);
}
