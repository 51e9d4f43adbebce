#include "dsp/Dynamics.h"

#include "dsp/Vec.h"

#include <algorithm>
#include <cmath>

namespace
{
// Smoothing of the block mean square: a step per block, so its time depends on the block length
// and not on the sample rate.
constexpr double kMeanSquareStep = 0.015;
constexpr double kMeanSquareGuard = 1e-09;

// Length of a time in samples, at least one.
double TimeSamples(double ms)
{
    return std::max(1.0, ms * 0.001 * double(gSampleRate));
}
} // namespace

Dynamics::Dynamics(bool isRight)
    : DSPShell(isRight), mLowCut(isRight, kBqLowpass, 2, 24.0f), mHighCut(isRight, kBqHighpass, 2, 24.0f)
{
    Dynamics::Reset();
}

void Dynamics::Reset()
{
    DSPShell::Reset();
    UpdateAttack();
    UpdateRelease();
    mLowCut.Reset();
    mHighCut.Reset();
    mMeanSquare = 0.0;
    mLevelDb = 0.0;
    mEnvOut = 0.0;
    mScalarOut = 0.0;
    mRms = 0.0;
}

void Dynamics::UpdateAttack()
{
    const double len = TimeSamples(mAttackMs);
    mAttackInc = 1.0 / len;
    // Growth per 32-sample block, above 1.
    mAttackCoef = std::pow(1.0 / std::exp(-2.0 * M_PI / len), 32.0);
}

void Dynamics::UpdateRelease()
{
    const double len = TimeSamples(mReleaseMs);
    mReleaseInc = 1.0 / len;
    mReleaseCoef = std::pow(std::exp(-2.0 * M_PI / len), 32.0);
}

void Dynamics::SetAttack(double ms)
{
    mAttackMs = 2.0 * ms;
    UpdateAttack();
}

void Dynamics::SetRelease(double ms)
{
    mReleaseMs = 2.0 * ms;
    UpdateRelease();
}

double Dynamics::RmsLevel(const double* block)
{
    double mean = 0.0;
    VecSqr(block, mScratch, mBlockLen);
    VecMean(mScratch, mBlockLen, &mean);
    return RmsFromMeanSquare(mean);
}

double Dynamics::RmsFromMeanSquare(double mean)
{
    mMeanSquare = mean * kMeanSquareStep + mMeanSquare * (1.0 - kMeanSquareStep) + kMeanSquareGuard;
    return std::sqrt(mMeanSquare - kMeanSquareGuard);
}

void Dynamics::MeanSquares(const double* a, const double* b, int n, double& meanA, double& meanB)
{
    if (n <= 0) return;
    double sa = 0.0, sb = 0.0;
    for (int i = 0; i < n; ++i)
    {
        sa += a[i] * a[i];
        sb += b[i] * b[i];
    }
    meanA = sa / n;
    meanB = sb / n;
}

double Dynamics::Follow(double x, double e) const
{
    if (x < e)
        e *= mReleaseCoef;
    else
        e = std::min(e * mAttackCoef, x);
    return std::max(e, kFollowFloor);
}
