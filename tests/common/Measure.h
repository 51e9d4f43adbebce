#pragma once
// Level measurements shared by the test suites: RMS, peak, decibels, and the magnitude of one
// frequency in a block (Goertzel on a Hann window, or a plain DFT of a response).

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <vector>

namespace testmeasure
{
inline double Db(double ratio)
{
    return 20.0 * std::log10(ratio);
}

// RMS of y[from, to); to = 0 means the end.
inline double Rms(const std::vector<double>& y, std::size_t from = 0, std::size_t to = 0)
{
    if (to == 0) to = y.size();
    double e = 0.0;
    for (std::size_t i = from; i < to; ++i)
        e += y[i] * y[i];
    return std::sqrt(e / double(to - from));
}

// Largest magnitude of y[from, to); to = 0 means the end.
inline double Peak(const std::vector<double>& y, std::size_t from = 0, std::size_t to = 0)
{
    if (to == 0) to = y.size();
    double m = 0.0;
    for (std::size_t i = from; i < to; ++i)
        m = std::max(m, std::fabs(y[i]));
    return m;
}

// Hann-windowed copy of y[from, to).
inline std::vector<double> Windowed(const std::vector<double>& y, std::size_t from, std::size_t to)
{
    std::vector<double> w(y.begin() + long(from), y.begin() + long(to));
    for (std::size_t n = 0; n < w.size(); ++n)
        w[n] *= 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * double(n) / double(w.size()));
    return w;
}

// Goertzel magnitude of a (windowed) block at hz.
inline double Goertzel(const std::vector<double>& w, double hz, double rate)
{
    const double c = 2.0 * std::cos(2.0 * std::numbers::pi * hz / rate);
    double s1 = 0, s2 = 0;
    for (double v : w)
    {
        const double s0 = v + c * s1 - s2;
        s2 = s1;
        s1 = s0;
    }
    return std::sqrt(std::max(s1 * s1 + s2 * s2 - c * s1 * s2, 0.0));
}

// Complex response at hz of an impulse response h (its DFT at one frequency).
inline std::complex<double> ResponseAt(const std::vector<double>& h, double hz, double rate)
{
    const std::complex<double> rotate = std::polar(1.0, -2.0 * std::numbers::pi * hz / rate);
    std::complex<double> acc = 0.0, z = 1.0;
    for (std::size_t n = 0; n < h.size(); ++n, z *= rotate)
        acc += h[n] * z;
    return acc;
}
} // namespace testmeasure
