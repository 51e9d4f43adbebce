#include "core/LevelMeter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "dsp/Decibels.h"
#include "dsp/TimeBase.h"
#include "dsp/Vec.h"

double BlockPeak(const double* x, int n)
{
    if (x == nullptr || n <= 0) return 0.0;
    double peak = 0.0;
    VecMaxAbs(x, n, &peak);
    return peak;
}

double MeterLaw(double peak)
{
    // ln(0) is -inf and clamps to the floor, so silence reads 0.
    const double scaled = std::log(peak) * kLnToDb * (1.0 / kMeterRangeDb);
    return std::clamp(scaled, -1.0, 0.0) + 1.0;
}

double PairMeterLaw(const double* l, const double* r, int n)
{
    return MeterLaw(std::max(BlockPeak(l, n), BlockPeak(r, n)) * kBusMeterBoost);
}

double SlotActivityLaw(double peak)
{
    const double v = std::fabs(peak) * kBusMeterBoost;
    return v * 4.0 / (v * 3.0 + 1.0);
}

void LevelMeter::SetFrameRate(double frameRate)
{
    const double fs = gSampleRate;
    const double ms = frameRate * 50.0 * 32.0 / fs;
    const double c = std::clamp(std::exp(-2.0 * std::numbers::pi / (ms * 0.001 * fs)), 0.0, 1.0);
    mCoef = c;
    mGain = 1.0 - c;
}

double LevelMeter::Tick(double m)
{
    mY = m * mGain + mY * mCoef + kGuard;
    return Value();
}
