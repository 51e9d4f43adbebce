#pragma once
// Driving a delay channel block by block as the engine does (read first, then write), and
// reading echo positions and sine delays from its output.

#include "common/Measure.h"
#include "delay/QLMMultiDelay.h"
#include "dsp/TimeBase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
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
        std::copy(y, y + gBlockLen, out.begin() + long(b));
        d.WriteBlock(src.data() + b);
    }
    return out;
}

inline std::vector<double> Sine(double hz, size_t n)
{
    std::vector<double> x(n);
    for (size_t i = 0; i < n; ++i)
        x[i] = std::sin(2.0 * M_PI * hz / gSampleRate * double(i));
    return x;
}

// Uniform noise in -0.5..0.5 with 53-bit values, so that samples can be told apart by value.
inline std::vector<double> UniqueNoise(size_t n, uint64_t seed = 12345)
{
    std::vector<double> x(n);
    for (auto& v : x)
    {
        seed = seed * 6364136223846793005ull + 1442695040888963407ull;
        v = double(seed >> 11) / double(1ull << 53) - 0.5;
    }
    return x;
}

inline size_t ArgMaxAbs(const std::vector<double>& y)
{
    return size_t(
        std::max_element(y.begin(), y.end(), [](double a, double b) { return std::fabs(a) < std::fabs(b); }) -
        y.begin());
}

// An impulse response with one unit echo at `at` and nothing else of weight (a head one sample
// off would leave a residue near 1; the single-precision smoother jitters by thousandths).
inline void ExpectSingleEcho(const std::vector<double>& y, size_t at)
{
    double rest = -y[at] * y[at];
    for (const double v : y)
        rest += v * v;
    EXPECT_TRUE(ArgMaxAbs(y) == at && std::fabs(y[at] - 1.0) < 1e-3 && rest < 1e-4)
        << "echo at " << ArgMaxAbs(y) << " of " << y[ArgMaxAbs(y)] << ", the rest " << rest;
}
} // namespace delaytest
