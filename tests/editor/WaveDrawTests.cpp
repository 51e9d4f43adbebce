// The wave the LFO page draws: one cycle of a function or a table, turned by polarity, phase,
// reverse and swap as the LFO turns it, and drawn in the half its polarity gives.
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "EditorDoubles.h"
#include "editor/WaveDraw.h"

using namespace editortest;

namespace
{
constexpr IColor kRed(255, 255, 0, 0);

struct Screen : Window<300, 200>
{
    // Rows of column x in y0..y1 whose red is above half.
    std::vector<int> RedRows(int x, int y0, int y1)
    {
        std::vector<int> rows;
        for (int y = y0; y < y1; ++y)
            if (Red(x, y) > 128) rows.push_back(y);
        return rows;
    }
};
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

TEST_F(Screen, WaveIsDrawnInTheHalfItsPolarityGives)
{
    auto* wave = Attach(new WaveDraw(&plug, IRECT(0, 0, 100, 54), &kRed));
    wave->SetFunction([](double p) { return std::sin(2.0 * M_PI * p); });
    wave->SetPolarity(WaveDraw::kNeg);
    graphics.OnTimerTick();
    EXPECT_FALSE(RedRows(25, 45, 54).empty()); // the peak turned down to the bottom
    EXPECT_FALSE(RedRows(75, 25, 30).empty()); // and the trough to the middle
    EXPECT_TRUE(RedRows(25, 0, 10).empty());
    // Nothing to draw without a wave, and no crash.
    wave->SetFunction({});
    graphics.OnTimerTick();
    EXPECT_EQ(RedPixels(IRECT(0, 0, 100, 54)), 0);
}
