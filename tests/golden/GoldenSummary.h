#pragma once
// Reduces a stereo render to a few numbers that change when the sound changes: peaks, the energy
// per octave band in three windows, where the echoes land, and a hash of the raw samples.

#include <complex>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

struct GoldenSummary
{
    static constexpr int kWindows = 3;
    static constexpr int kBands = 10; // octaves from 31.25 Hz; the last one takes all above 16 kHz

    double peakL = 0.0;
    double peakR = 0.0;
    double bandRms[kWindows][kBands] = {};
    std::vector<int> echoesMs; // onsets of the loudest events, in time order
    std::uint64_t hash = 0;

    static GoldenSummary Of(const std::vector<double>& l, const std::vector<double>& r, double rate);
    std::string ToLine() const;
    // False when `line` does not hold a summary.
    static bool FromLine(const std::string& line, GoldenSummary& out);
    // Empty when the two agree: numbers within a relative 1e-9, echoes and hash exactly.
    std::string Difference(const GoldenSummary& expected) const;
};
