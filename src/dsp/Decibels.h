#pragma once
// The decibel law, in the form the signal code uses it: gain = exp(dB * kDbToLn).

#include <cmath>

inline constexpr double kDbToLn = 0.1151292546497;   // ln(10) / 20
inline constexpr double kLnToDb = 8.685889638065037; // 20 / ln(10)

inline double DbToGain(double dB)
{
    return std::exp(dB * kDbToLn);
}
