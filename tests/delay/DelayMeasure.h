#pragma once
// Measuring helpers for the delay tests: drive a delay channel block by block as the engine does
// (read first, then write), and read the level, delay and spectral peak of a steady sine.

#include "delay/QLMMultiDelay.h"
#include "dsp/TimeBase.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <vector>

namespace delaytest
{
struct RateGuard
{
    explicit RateGuard(double rate) { SetTimeBase(rate); }
    ~RateGuard() { SetTimeBase(44100.0); }
};

// Runs src through one head at a fixed delay; blocks of 32, read before write.
inline std::vector<double> Drive(QLMMultiDelay& d, const std::vector<double>& src, float delay, int tap = 0)
{
    std::vector<double> out(src.size(), 0.0);
    for (size_t b = 0; b + gBlockLen <= src.size(); b += gBlockLen)
    {
        const double* y = d.ReadTap(delay, tap);
        std::copy(y, y + gBlockLen, out.begin() + b);
        d.WriteBlock(src.data() + b);
    }
    return out;
}

inline std::vector<double> Sine(double hz, size_t n)
{
    std::vector<double> x(n);
    const double w = 2.0 * M_PI * hz / gSampleRate;
    for (size_t i = 0; i < n; ++i)
        x[i] = std::sin(w * double(i));
    return x;
}

// Uniform noise in -0.5..0.5 with 53-bit values, so that samples can be told apart by value.
inline std::vector<double> Noise(size_t n, uint64_t seed = 12345)
{
    std::vector<double> x(n);
    for (auto& v : x)
    {
        seed = seed * 6364136223846793005ull + 1442695040888963407ull;
        v = double(seed >> 11) / double(1ull << 53) - 0.5;
    }
    return x;
}

// Least-squares fit of y[n] = A sin(w n) + B cos(w n) over [from, to).
struct Fit
{
    double gain;
    double phase; // of the output relative to sin(w n)
};
inline Fit FitSine(const std::vector<double>& y, double hz, size_t from, size_t to)
{
    const double w = 2.0 * M_PI * hz / gSampleRate;
    double ss = 0, cc = 0, sc = 0, ys = 0, yc = 0;
    for (size_t n = from; n < to; ++n)
    {
        const double s = std::sin(w * double(n)), c = std::cos(w * double(n));
        ss += s * s;
        cc += c * c;
        sc += s * c;
        ys += y[n] * s;
        yc += y[n] * c;
    }
    const double det = ss * cc - sc * sc;
    const double a = (ys * cc - yc * sc) / det, b = (yc * ss - ys * sc) / det;
    return {std::hypot(a, b), std::atan2(b, a)};
}

// Delay in samples of a fitted sine, brought next to `expected` (the phase only knows it modulo
// one period).
inline double SineDelay(const Fit& f, double hz, double expected)
{
    const double period = gSampleRate / hz;
    const double d = -f.phase / (2.0 * M_PI) * period;
    return d + period * std::round((expected - d) / period);
}

// Hann-windowed copy of y[from, to).
inline std::vector<double> Windowed(const std::vector<double>& y, size_t from, size_t to)
{
    std::vector<double> w(y.begin() + long(from), y.begin() + long(to));
    for (size_t n = 0; n < w.size(); ++n)
        w[n] *= 0.5 - 0.5 * std::cos(2.0 * M_PI * double(n) / double(w.size()));
    return w;
}

// Spectral level of a windowed block at hz (Goertzel).
inline double Level(const std::vector<double>& w, double hz)
{
    const double c = 2.0 * std::cos(2.0 * M_PI * hz / gSampleRate);
    double s1 = 0, s2 = 0;
    for (double v : w)
    {
        const double s0 = v + c * s1 - s2;
        s2 = s1;
        s1 = s0;
    }
    return std::sqrt(std::max(s1 * s1 + s2 * s2 - c * s1 * s2, 0.0));
}

// Frequency of the strongest component of a windowed block between lo and hi, on a grid of
// `step` hertz.
inline double PeakHz(const std::vector<double>& w, double lo, double hi, double step)
{
    double best = lo, bestLevel = -1.0;
    for (double f = lo; f <= hi; f += step)
        if (const double l = Level(w, f); l > bestLevel)
        {
            bestLevel = l;
            best = f;
        }
    return best;
}

inline size_t ArgMaxAbs(const std::vector<double>& y)
{
    size_t best = 0;
    for (size_t i = 1; i < y.size(); ++i)
        if (std::fabs(y[i]) > std::fabs(y[best])) best = i;
    return best;
}
} // namespace delaytest
