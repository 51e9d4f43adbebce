#include "dsp/FadeRamp.h"

namespace
{
// The step is counted in blocks at 44.1 kHz, on purpose, at every rate.
constexpr double kFadeRate = 44100.0;
constexpr double kFadeBlock = 32.0;

double BlockStep(double ms)
{
    return ms == 0.0 ? 1.0 : kFadeBlock / (ms * kFadeRate * 0.001);
}
} // namespace

void FadeRamp::Prepare()
{
    mSwitchNow = false;
    mInStep = BlockStep(mInMs);
    mOutStep = BlockStep(mOutMs);
}
