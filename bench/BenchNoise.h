#pragma once
// The benchmarks' input: uniform noise from a fixed seed (a linear congruential stream whose top
// 24 bits make each sample), so every run and every driver plays the same samples.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench_noise
{
// n samples peaking at `peak` (0.5: -6 dBFS).
inline std::vector<double> Noise(std::size_t n, std::uint32_t seed, double peak = 0.5)
{
    std::vector<double> v(n);
    std::uint32_t x = seed;
    for (double& s : v)
    {
        x = x * 1664525u + 1013904223u;
        s = peak * (double(x >> 8) / 8388608.0 - 1.0);
    }
    return v;
}
} // namespace bench_noise
