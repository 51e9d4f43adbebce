#pragma once
// The frequency law of the tunable filters and of most effect knobs: a 0..1 control to
// 50 Hz * 400^x. The power is not the exact exponential but a short polynomial for 2^u on the
// fractional octave, times 2^i on the whole octaves; its values (not the exponential's) are the law.
// Everything is computed in single precision, as the law is defined.

#include <cmath>

// log2(400), in single precision: the control spans this many octaves above 50 Hz.
inline constexpr float kFreqOctaves = 8.643856f;
inline constexpr double kFreqLowHz = 50.0;

// About 400^x: 2^i * p(u) with x * log2(400) = i + u, i truncated. Exact at x = 0 (1.0).
inline float Pow400Poly(float x)
{
    const float octaves = x * kFreqOctaves;
    const int i = static_cast<int>(octaves);
    const float u = octaves - static_cast<float>(i);
    const float p = (((0.0136991f * u + 0.0517387f) * u + 0.2415636f) * u + 0.6929986f) * u + 1.0f;
    return std::ldexp(p, i);
}

// Control 0..1 to hertz: 50 Hz at 0, about 20 kHz at 1.
inline double MapFreqHz(float x)
{
    return kFreqLowHz * Pow400Poly(x);
}

// Control 0..1 to a fraction of the sample rate, given 1 / sampleRate.
inline double MapFreqRel(float x, double invSampleRate)
{
    return Pow400Poly(x) * kFreqLowHz * invSampleRate;
}
