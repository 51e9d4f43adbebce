#include "fx/Lofi.h"

#include "dsp/Denormals.h"
#include "fx/ShaperCurves.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kNoQuantisation = 16777216.0; // 2^24: finer than any signal needs
constexpr double kLevelMs = 10.0;
} // namespace

Lofi::Lofi(bool isRight) : DSPShell(isRight), mSeed(isRight ? 0x9e3779b9u : 0x2545f491u), mSeedStart(mSeed)
{
    Lofi::Reset();
}

double Lofi::CrushLevels(double x)
{
    return std::exp2((1.0 - std::pow(std::clamp(x, 0.0, 1.0), 0.2)) * 22.0 + 2.0);
}

double Lofi::HoldStep(double x)
{
    return 1.0 - std::pow(std::clamp(x, 0.0, 1.0), 0.125) * 0.99;
}

void Lofi::SetParam(int id, double value)
{
    switch (id)
    {
    case 0:
        mDrive = value;
        break;
    case 1:
        mNoise = value;
        break;
    case 2:
        mDownsample = value;
        break;
    case 3:
        mCrush = value;
        break;
    case 4:
        mMix = value;
        break;
    default:
        break;
    }
}

void Lofi::Reset()
{
    DSPShell::Reset();
    mDriveSmooth.SetTime(10.0);
    mDriveSmooth.SetLastD(mDrive);
    mLevelCoef = std::exp(-double(gBlockLen) / (kLevelMs * 0.001 * gSampleRate));
    mLevel = 0.0;
    mPhase = 0.0;
    mHeld = 0.0;
    mSeed = mSeedStart;
}

// Uniform in -2..2 from a 32-bit linear congruential generator.
double Lofi::NextNoise()
{
    mSeed = mSeed * 1664525u + 1013904223u;
    return double(mSeed) * (4.0 / 4294967296.0) - 2.0;
}

void Lofi::Process()
{
    const double* in = mIn1;
    double* out = mOut1 != nullptr ? mOut1 : const_cast<double*>(mIn1);

    const double* drive = mDriveSmooth.RunD(mDrive, gBlockLen);
    const double driveMod = ModValue(0);
    double sumAbs = 0.0;
    for (int i = 0; i < gBlockLen; ++i)
    {
        const double d = std::clamp(drive[i] + driveMod, 0.0, 1.0);
        out[i] = shaper::SoftClip(in[i] * (7.0 * d + 1.0));
        sumAbs += std::fabs(out[i]);
    }

    mLevel = Undenormal(mLevel * mLevelCoef + (sumAbs / gBlockLen) * (1.0 - mLevelCoef));
    const double noise = std::clamp(mNoise + ModValue(1), 0.0, 1.0);
    if (noise > 0.0)
    {
        const double amp = noise * mLevel;
        for (int i = 0; i < gBlockLen; ++i)
            out[i] += amp * NextNoise();
    }

    const double step = HoldStep(mDownsample + ModValue(2));
    for (int i = 0; i < gBlockLen; ++i)
    {
        mPhase += step;
        if (mPhase >= 1.0)
        {
            mPhase -= 1.0;
            mHeld = out[i];
        }
        out[i] = mHeld;
    }

    const double levels = CrushLevels(mCrush + ModValue(3));
    if (levels < kNoQuantisation)
    {
        const double inv = 1.0 / levels;
        for (int i = 0; i < gBlockLen; ++i)
            out[i] = std::nearbyint(out[i] * levels) * inv;
    }
}
