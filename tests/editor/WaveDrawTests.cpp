// The wave the LFO page draws: one cycle of a function or a table, turned by polarity, phase,
// reverse and swap as the LFO turns it, and laid across its rectangle. (That each display follows
// its LFO's wave and polarity is the engine suite's EditorLfoWaves test.)
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "editor/WaveDraw.h"

namespace
{
constexpr IColor kRed(255, 255, 0, 0);
} // namespace

TEST(WaveDrawTest, PolarityPhaseReverseAndSwapOfOneCycle)
{
    WaveDraw wave(nullptr, IRECT(0, 0, 100, 54), &kRed);
    EXPECT_FALSE(wave.HasWave());
    EXPECT_TRUE(wave.Points().empty());
    wave.SetFunction([](double p) { return 2.0 * p - 1.0; }); // a rising ramp
    const std::tuple<int, double, bool, bool, double, double> cases[] = {
        {WaveDraw::kBi, 0.0, false, false, 0.0, -1.0},
        {WaveDraw::kBi, 0.0, false, false, 0.75, 0.5},
        {WaveDraw::kPos, 0.0, false, false, 0.0, 0.0},
        {WaveDraw::kPos, 0.0, false, false, 0.75, 0.75},
        // NEG turns the wave over into the lower half: the ramp now falls.
        {WaveDraw::kNeg, 0.0, false, false, 0.75, -0.75},
        // The phase moves the start of the cycle, wrapping.
        {WaveDraw::kBi, 0.25, false, false, 0.0, -0.5},
        {WaveDraw::kBi, 0.25, false, false, 0.875, -0.75},
        {WaveDraw::kBi, 0.0, true, false, 0.25, 0.5},
        {WaveDraw::kBi, 0.0, false, true, 0.25, 0.5},
        {WaveDraw::kPos, 0.0, false, true, 0.25, 0.75},
    };
    for (const auto& [polarity, phase, reverse, swap, at, value] : cases)
    {
        wave.SetPolarity(polarity);
        wave.SetPhase(phase);
        wave.SetReverse(reverse);
        wave.SetSwap(swap);
        EXPECT_NEAR(wave.ValueAt(at), value, 1e-12)
            << polarity << " phase " << phase << " rev " << reverse << " swap " << swap << " at " << at;
    }
    // One cycle across the rectangle: a point per column, +1 at the top and -1 at the bottom,
    // kept 2 pixels off the edges.
    wave.SetPolarity(WaveDraw::kBi);
    wave.SetPhase(0.0);
    wave.SetReverse(false);
    wave.SetSwap(false);
    const auto points = wave.Points();
    ASSERT_EQ(points.size(), 101u);
    EXPECT_DOUBLE_EQ(points.front().first, 0.0);
    EXPECT_DOUBLE_EQ(points.back().first, 100.0);
    EXPECT_DOUBLE_EQ(points.front().second, 52.0);
    EXPECT_NEAR(points.back().second, 2.0, 1e-6);
    EXPECT_DOUBLE_EQ(points[50].second, 27.0);
}

TEST(WaveDrawTest, TableIsReadAsTheLFOReadsIt)
{
    double table[8];
    for (int i = 0; i < 8; ++i)
        table[i] = (i - 4) / 4.0;
    WaveDraw wave(nullptr, IRECT(0, 0, 80, 40), &kRed);
    wave.SetTable(table, 8);
    const std::tuple<double, bool, bool, double, double> cases[] = {
        {0.0, false, false, 0.0, -1.0},
        {0.0, false, false, 0.99, 0.75},
        {0.0, false, false, 0.5, 0.0},
        // Phase 0.5: the offset is the truncation of 7 x 0.5 = 3 points; (6 + 3) % 8 = 1.
        {0.5, false, false, 0.0, -0.25},
        {0.5, false, false, 0.75, -0.75},
        {0.0, true, false, 0.0, 0.75},
        {0.0, true, false, 0.99, -1.0},
        {0.0, false, true, 0.0, 1.0},
        {0.0, false, true, 0.99, -0.75},
    };
    for (const auto& [phase, reverse, swap, at, value] : cases)
    {
        wave.SetPhase(phase);
        wave.SetReverse(reverse);
        wave.SetSwap(swap);
        EXPECT_DOUBLE_EQ(wave.ValueAt(at), value) << phase << " " << reverse << " " << swap << " " << at;
    }
    wave.SetTable(nullptr, 0);
    EXPECT_FALSE(wave.HasWave());
}
