#pragma once
// Running a module in 32-sample blocks and reading the gain and phase of a steady sine at its
// output; shared by the filter and effect tests.

#include "common/SineFit.h"
#include "dsp/DSPShell.h"
#include "dsp/TimeBase.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

namespace filtertest
{
struct RateGuard
{
    ~RateGuard() { SetTimeBase(44100.0); }
};

struct Tone
{
    double gain;  // output amplitude / input amplitude
    double phase; // radians, output relative to input, in -pi..pi
    double dB() const { return 20.0 * std::log10(gain); }
};

// Bilinear transform with the corner prewarped: the analogue frequency of hz relative to the corner.
inline double Warp(double hz, double cornerHz)
{
    const double rate = gSampleRate;
    return std::tan(M_PI * hz / rate) / std::tan(M_PI * cornerHz / rate);
}

// Runs n samples of src through the module, 32 at a time; returns the output.
inline std::vector<double> RunBlocks(DSPShell& f, const std::vector<double>& src)
{
    std::vector<double> out(src.size(), 0.0);
    const size_t blocks = src.size() / gBlockLen;
    for (size_t b = 0; b < blocks; ++b)
    {
        f.mIn1 = src.data() + b * gBlockLen;
        f.mOut1 = out.data() + b * gBlockLen;
        f.Process();
    }
    return out;
}

// Lets the block-rate controls reach their targets on silence.
inline void SettleControls(DSPShell& f, double seconds = 1.0)
{
    std::vector<double> zeros(gBlockLen, 0.0), out(gBlockLen);
    const int blocks = int(seconds * gSampleRate / gBlockLen) + 1;
    for (int b = 0; b < blocks; ++b)
    {
        f.mIn1 = zeros.data();
        f.mOut1 = out.data();
        f.Process();
    }
}

// Gain and phase of y over [from, from + count) for an input sine of amplitude amp.
inline Tone FitTone(const std::vector<double>& y, double w, size_t from, size_t count, double amp)
{
    const testfit::SineFit f = testfit::FitSine(y, w, from, count);
    return {f.amplitude / amp, f.phase};
}

// Gain and phase of a steady sine of hz at the module's output. The settling time covers slow
// high-Q responses; the window holds at least 20 cycles.
inline Tone MeasureTone(DSPShell& f, double hz, double amp = 1.0, double settleSeconds = 0.6)
{
    const double rate = gSampleRate;
    const double w = 2.0 * M_PI * hz / rate;
    const size_t settle = size_t(settleSeconds * rate);
    const size_t window = size_t(std::max(0.15 * rate, 20.0 * rate / hz));
    const size_t total = (settle + window + gBlockLen) / gBlockLen * gBlockLen;
    std::vector<double> x(total);
    for (size_t n = 0; n < total; ++n)
        x[n] = amp * std::sin(w * double(n));
    const std::vector<double> y = RunBlocks(f, x);
    return FitTone(y, w, settle, window, amp);
}

// Response of one section b0 b1 b2 / a0 a1 a2 at w radians per sample.
inline std::complex<double> SectionResponse(const double* t, double w)
{
    const std::complex<double> z1 = std::polar(1.0, -w), z2 = z1 * z1;
    return (t[0] + t[1] * z1 + t[2] * z2) / (t[3] + t[4] * z1 + t[5] * z2);
}

inline double WrapPhase(double p)
{
    while (p > M_PI)
        p -= 2.0 * M_PI;
    while (p < -M_PI)
        p += 2.0 * M_PI;
    return p;
}
} // namespace filtertest
