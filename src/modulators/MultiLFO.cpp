#include "modulators/MultiLFO.h"

#include "dsp/TimeBase.h"

#include <cmath>
#include <numbers>

namespace
{
// Output scalings that bring the attractor's x and y into about -1 .. 1.
constexpr double kScaleX = 0.05107000097632408;
constexpr double kScaleY = 0.06790000200271606;
// Attractor step per unit of phase step.
constexpr double kStepPerFreqNorm = 2.9;
} // namespace

MultiLFO::MultiLFO() : SimpleOSC(gSampleRate)
{
    SetModRate(30.0);
}

void MultiLFO::SetShape(int shape)
{
    mShape = (shape >= 0 && shape < kNumShapes) ? shape : kRoessler;
}

void MultiLFO::OnRate(double hz)
{
    // The phase step is per block but normalised by the sample rate, as the base forms it.
    mRateDivisor = gSampleRate;
}

void MultiLFO::OnPhase(double halfPhaseInc)
{
    mDt = kStepPerFreqNorm * mPhaseInc;
}

void MultiLFO::Reset()
{
    SetRate(mRateHz);
    mPhase = 0.0;
    mX = 0.0;
    mY = 1.0;
    mZ = 1.0;
    mOut.fill(0.0);
}

void MultiLFO::StepAttractor(double dt)
{
    const double x = mX - (mY + mZ) * dt;
    const double y = mY + (0.15 * mY + mX) * dt;
    const double z = mZ + ((mX - 10.0) * mZ + 0.2) * dt;
    mX = x;
    mY = y;
    mZ = z;
    mOut[kLPlus] = x * kScaleX;
    mOut[kRPlus] = y * kScaleY;
    mOut[kLMinus] = -mOut[kLPlus];
    mOut[kRMinus] = -mOut[kRPlus];
}

void MultiLFO::Tick()
{
    if (mPhase < 1.0)
        mPhase += mPhaseInc;
    else
        mPhase -= 2.0;

    double v = 0.0;
    switch (mShape)
    {
    case kRoessler:
        StepAttractor(mDt);
        return;
    case kSine:
        v = std::sin(mPhase * std::numbers::pi);
        break;
    case kSaw:
        v = mPhase;
        break;
    case kInvertedSaw:
        v = -mPhase;
        break;
    case kSquare:
        v = mPhase >= 0.0 ? 1.0 : -1.0;
        break;
    default:
        v = 1.0 - std::abs(2.0 * mPhase);
        break;
    }
    // The plain waves drive the two positive outputs only; the negative pair keeps its last value.
    mOut[kLPlus] = mOut[kRPlus] = (v + mOffset) * mGain;
}
