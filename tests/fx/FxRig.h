#pragma once
// Signals in and measurements out for the effect modules: sines, whole blocks, knob settings,
// impulse responses and the level of one tone in a window.

#include "common/FilterMeasure.h"
#include "common/Measure.h"

#include <complex>
#include <initializer_list>
#include <vector>

namespace fxrig
{
using filtertest::RateGuard;
using filtertest::RunBlocks;

// n samples of amp sin(2 pi hz i / rate + phase) at the present rate.
inline std::vector<double> Sine(double hz, size_t n, double amp = 1.0, double phase = 0.0)
{
    std::vector<double> x(n);
    for (size_t i = 0; i < n; ++i)
        x[i] = amp * std::sin(2.0 * M_PI * hz * double(i) / gSampleRate + phase);
    return x;
}

// Samples in the whole blocks that cover `seconds`.
inline size_t Blocks(double seconds)
{
    return (size_t(seconds * gSampleRate) / gBlockLen + 1) * gBlockLen;
}

// Sets the knobs P1, P2, ... in order.
inline void SetParams(DSPShell& m, std::initializer_list<double> values)
{
    int p = 0;
    for (double v : values)
        m.SetParam(p++, v);
}

// Impulse response after the controls have settled, scaled back to a unit impulse; a small
// impulse keeps soft limits linear.
inline std::vector<double> ImpulseResponse(DSPShell& m, size_t n, double amp = 1.0)
{
    filtertest::SettleControls(m, 0.3);
    std::vector<double> x(n, 0.0);
    x[0] = amp;
    std::vector<double> h = RunBlocks(m, x);
    for (double& v : h)
        v /= amp;
    return h;
}

// Four-term Blackman-Harris window at i of n: sidelobes below -90 dB, so tones some tens of hertz
// apart do not leak into each other.
inline double BlackmanHarris(size_t i, size_t n)
{
    const double t = 2.0 * M_PI * double(i) / double(n);
    return 0.35875 - 0.48829 * std::cos(t) + 0.14128 * std::cos(2 * t) - 0.01168 * std::cos(3 * t);
}

// Amplitude of the component at hz in y[from, from + count).
inline double ToneLevel(const std::vector<double>& y, size_t from, size_t count, double hz)
{
    const double w = 2.0 * M_PI * hz / gSampleRate;
    std::complex<double> acc = 0.0;
    double wsum = 0.0;
    for (size_t n = 0; n < count; ++n)
    {
        const double win = BlackmanHarris(n, count - 1);
        acc += win * y[from + n] * std::polar(1.0, -w * double(from + n));
        wsum += win;
    }
    return 2.0 * std::abs(acc) / wsum;
}
} // namespace fxrig
