#include "fx/LPHP.h"

#include "dsp/Vec.h"

#include <algorithm>

namespace
{
constexpr int kDriveShape = 14; // SATURATE
constexpr int kModeSections[3] = {2, 4, 6};
} // namespace

LPHP::LPHP(bool isRight)
    : DSPShell(isRight), mLow(isRight, kBqLowpass, 1, 24.0f), mHigh(isRight, kBqHighpass, 1, 24.0f),
      mShaper(kDriveShape, isRight)
{
    mLow.SetType(kBqLowpass);
    // The drive is the bare curve: the filters around it do the filtering.
    mShaper.mFilter.SetType(kBqOff);
}

void LPHP::SetSections(IppBiquad& filter, int sections)
{
    // SetOrder takes truncate(2x + 2) sections.
    filter.SetOrder(0.5 * (std::clamp(sections, 1, kBiquadMaxSections) - 2));
}

void LPHP::SetMode(int slope)
{
    if (slope == mSlope) return;
    mSlope = slope;
    if (slope < 0 || slope > 5) return;
    const int sections = kModeSections[slope % 3];
    SetSections(mLow, sections);
    SetSections(mHigh, sections);
    mParallel = slope > 2;
}

void LPHP::SetParam(int id, double value)
{
    switch (id)
    {
    case 0:
        mHigh.SetParam(0, value);
        break;
    case 1:
        mLow.SetParam(0, value);
        break;
    case 2:
        mShaper.SetParam(0, value);
        break;
    case 3:
        SetMode(int(value));
        break;
    case 4:
        mMix = value;
        break;
    default:
        break;
    }
}

void LPHP::OnModSource(int input, const double* value)
{
    if (input == 0) mHigh.SetModSource(0, value);
    if (input == 1) mLow.SetModSource(0, value);
    if (input == 2) mShaper.SetModSource(0, value);
}

void LPHP::OnModDepth(int input, const double* depth)
{
    if (input == 0) mHigh.SetModDepth(0, depth);
    if (input == 1) mLow.SetModDepth(0, depth);
    if (input == 2) mShaper.SetModDepth(0, depth);
}

void LPHP::Reset()
{
    DSPShell::Reset();
    mLow.Reset();
    mHigh.Reset();
    mShaper.Reset();
}

void LPHP::Process()
{
    const double* s = mIn1;
    double* out = mOut1 != nullptr ? mOut1 : const_cast<double*>(mIn1);
    if (mDrive && !mShaper.mBypass)
    {
        mShaper.mIn1 = s;
        mShaper.mOut1 = out;
        mShaper.Process();
        s = out;
    }
    if (!mParallel)
    {
        mLow.mIn1 = s;
        mLow.mOut1 = out;
        mLow.Process();
        mHigh.mIn1 = out;
        mHigh.mOut1 = out;
        mHigh.Process();
        return;
    }
    mLow.mIn1 = s;
    mLow.mOut1 = mScratch;
    mLow.Process();
    mHigh.mIn1 = s;
    mHigh.mOut1 = out;
    mHigh.Process();
    VecAddI(mScratch, out, gBlockLen);
}

void VARILPHP::SetParam(int id, double value)
{
    switch (id)
    {
    case 0:
        mHigh.SetParam(0, value);
        break;
    case 1:
        SetSections(mHigh, int(value) + 1);
        break;
    case 2:
        mLow.SetParam(0, value);
        break;
    case 3:
        SetSections(mLow, int(value) + 1);
        break;
    case 4:
        mMix = value;
        break;
    default:
        break;
    }
}

void VARILPHP::OnModSource(int input, const double* value)
{
    if (input == 0) mHigh.SetModSource(0, value);
    if (input == 2) mLow.SetModSource(0, value);
}

void VARILPHP::OnModDepth(int input, const double* depth)
{
    if (input == 0) mHigh.SetModDepth(0, depth);
    if (input == 2) mLow.SetModDepth(0, depth);
}

LPHP_ST::LPHP_ST() : DSPShell(false) {}

void LPHP_ST::SetMode(int slope)
{
    mLeft.SetMode(slope);
    mRight.SetMode(slope);
}

void LPHP_ST::SetParam(int id, double value)
{
    mLeft.SetParam(id, value);
    mRight.SetParam(id, value);
}

void LPHP_ST::OnModSource(int input, const double* value)
{
    mLeft.SetModSource(input, value);
    mRight.SetModSource(input, value);
}

void LPHP_ST::OnModDepth(int input, const double* depth)
{
    mLeft.SetModDepth(input, depth);
    mRight.SetModDepth(input, depth);
}

void LPHP_ST::Reset()
{
    DSPShell::Reset();
    mLeft.Reset();
    mRight.Reset();
}

void LPHP_ST::Init()
{
    DSPShell::Init();
    mLeft.Init();
    mRight.Init();
}

void LPHP_ST::Process()
{
    if (!mLeft.mBypass)
    {
        mLeft.mIn1 = mIn1;
        mLeft.mOut1 = mOut1 != nullptr ? mOut1 : const_cast<double*>(mIn1);
        mLeft.Process();
    }
    if (!mRight.mBypass)
    {
        mRight.mIn1 = mIn2;
        mRight.mOut1 = mOut2 != nullptr ? mOut2 : const_cast<double*>(mIn2);
        mRight.Process();
    }
}
