#pragma once
// Deterministic uniform white noise for the tests: the LCG x * 1664525 + 1013904223 over 32 bits,
// of which the top 24 make the sample, so every value is exact in float and double and a test's
// expected numbers do not depend on the platform.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace testnoise
{
// One stream of samples in -amplitude..amplitude (24-bit steps). Interleave calls for stereo.
struct NoiseSource
{
    std::uint32_t state = 12345u;
    double Next(double amplitude = 1.0)
    {
        state = state * 1664525u + 1013904223u;
        return amplitude * (static_cast<double>(state >> 8) / 8388608.0 - 1.0);
    }
};

// n samples of mono noise in -amplitude..amplitude.
inline std::vector<double> Noise(std::size_t n, double amplitude = 1.0, std::uint32_t seed = 12345u)
{
    NoiseSource source{seed};
    std::vector<double> x(n);
    for (double& v : x)
        v = source.Next(amplitude);
    return x;
}
} // namespace testnoise
