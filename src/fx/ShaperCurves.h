#pragma once
// The memoryless curves of the shaping effects, per sample. Odd curves (saturation, sines, fold)
// give odd harmonics only; the tube and the asymmetric tanh give even ones as well.

#include <algorithm>
#include <cmath>

namespace shaper
{
// tanh by its continued fraction, clamped where the fraction reaches 1 with zero slope, so that it
// stays a bounded soft clip for any input.
inline double SoftClip(double v)
{
    constexpr double kKnee = 4.97178685852829;
    v = std::clamp(v, -kKnee, kKnee);
    const double v2 = v * v;
    const double y = v * (((v2 + 378.0) * v2 + 17325.0) * v2 + 135135.0) /
                     (((28.0 * v2 + 3150.0) * v2 + 62370.0) * v2 + 135135.0);
    return std::clamp(y, -1.0, 1.0);
}

// Anti-derivative of tanh, ln cosh x, in a form that does not overflow.
inline double LnCosh(double x)
{
    const double a = std::fabs(x);
    return a + std::log1p(std::exp(-2.0 * a)) - 0.69314718055994531;
}

// Triangle fold into -1..1: identity inside, mirrored at the rails outside.
inline double Fold(double v)
{
    double t = (v + 1.0) * 0.25;
    t -= std::floor(t);
    return 1.0 - 4.0 * std::fabs(t - 0.5);
}

// Triode-like: a quadratic step that lifts the positive half, cut at the curve's vertex so that it
// stays monotonic, then clipped to -0.6 and 1.026.
inline double Tube(double x)
{
    constexpr double kBend = 0.39;
    const double u = std::max(x, -0.5 / kBend);
    return std::clamp(u + kBend * u * u, -0.6, 1.026);
}

// Odd sine partials with weights 1.5/k at k pi: with k = 1, 3, 5 this tends towards a square of
// height 1.18 inside -1..1 and folds beyond it.
template <int Partials> inline double SineSum(double x)
{
    double y = 0.0;
    for (int j = 0; j < Partials; ++j)
    {
        const double k = 2.0 * j + 1.0;
        y += 1.5 / k * std::sin(k * M_PI * x);
    }
    return y;
}

// tanh on the positive half, a harder tanh (k times the drive, 1/k the ceiling) on the negative one.
template <int K> inline double AsymTanh(double x)
{
    return x >= 0.0 ? std::tanh(x) : std::tanh(K * x) / K;
}

inline double Rectify(double x)
{
    return std::min(std::fabs(x), 1.0);
}
} // namespace shaper
