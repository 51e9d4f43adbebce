// The wave the LFO page draws: one cycle of a function or a table, turned by polarity, phase,
// reverse and swap as the LFO turns it, and laid across its rectangle. (That each display follows
// its LFO's wave and polarity is the engine suite's EditorOnEngine.LfoWaveDisplayFollowsTheWaveAndItsPolarity
// test.)
#include <gtest/gtest.h>

#include <tuple>

#include "editor/WaveDraw.h"

namespace
{
constexpr IColor kRed(255, 255, 0, 0);
// {polarity, phase, reverse, swap, where in the cycle, value there}
using Case = std::tuple<int, double, bool, bool, double, double>;

void ExpectTurns(WaveDraw& wave, std::initializer_list<Case> cases)
{
    for (const auto& [polarity, phase, reverse, swap, at, value] : cases)
    {
        wave.SetPolarity(polarity);
        wave.SetPhase(phase);
        wave.SetReverse(reverse);
        wave.SetSwap(swap);
        EXPECT_NEAR(wave.ValueAt(at), value, 1e-12)
            << polarity << " phase " << phase << " rev " << reverse << " swap " << swap << " at " << at;
    }
}
} // namespace

TEST(WaveDrawTest, PolarityPhaseReverseAndSwapOfOneCycle)
{
    WaveDraw wave(nullptr, IRECT(0, 0, 100, 54), &kRed);
    EXPECT_FALSE(wave.HasWave());
    EXPECT_TRUE(wave.Points().empty());
    wave.SetFunction([](double p) { return 2.0 * p - 1.0; }); // a rising ramp
    // NEG turns the wave over into the lower half, so the ramp falls; the phase moves the start of
    // the cycle, wrapping.
    const int bi = WaveDraw::kBi, pos = WaveDraw::kPos;
    ExpectTurns(wave, {{bi, 0.0, false, false, 0.75, 0.5},
                       {pos, 0.0, false, false, 0.0, 0.0},
                       {pos, 0.0, false, false, 0.75, 0.75},
                       {WaveDraw::kNeg, 0.0, false, false, 0.75, -0.75},
                       {bi, 0.25, false, false, 0.875, -0.75},
                       {bi, 0.0, true, false, 0.25, 0.5},
                       {pos, 0.0, false, true, 0.25, 0.75},
                       {bi, 0.0, false, false, 0.0, -1.0}});
    // One cycle across the rectangle: a point per column, +1 at the top and -1 at the bottom,
    // kept 2 pixels off the edges.
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
    // Phase 0.5: the offset is the truncation of 7 x 0.5 = 3 points; (6 + 3) % 8 = 1.
    const int bi = WaveDraw::kBi;
    ExpectTurns(wave, {{bi, 0.0, false, false, 0.0, -1.0},
                       {bi, 0.0, false, false, 0.99, 0.75},
                       {bi, 0.5, false, false, 0.75, -0.75},
                       {bi, 0.0, true, false, 0.0, 0.75},
                       {bi, 0.0, true, false, 0.99, -1.0},
                       {bi, 0.0, false, true, 0.0, 1.0},
                       {bi, 0.0, false, true, 0.99, -0.75}});
    wave.SetTable(nullptr, 0);
    EXPECT_FALSE(wave.HasWave());
}
