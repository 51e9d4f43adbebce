#include "dsp/TimeBase.h"
#include "modulators/TableLFO.h"
#include "modulators/WaveStore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <set>
#include <tuple>
#include <vector>

namespace
{
constexpr int kRampId = 12;
constexpr int kSineId = 0;
constexpr int kHalfPulseId = 17;
constexpr int kRandomId = 38;

// Rate giving exactly `points` table points per sample at 44.1 kHz.
double RateForStep(double points)
{
    return points * 44100.0 / kWaveTableSize;
}

// The RAMP wave maps table index k to -1 + 2k / 4095, so in BI polarity with depth 1 and no glide
// the output names the point that was read.
int RampIndex(double v)
{
    return int(std::lround((v + 1.0) * 4095.0 / 2.0));
}

struct RampLfo
{
    TableLFO lfo;
    std::uint8_t trig = 0;

    explicit RampLfo(int mode, double step = 32.0)
    {
        lfo.setWave(FindWave(kRampId));
        lfo.setPolarity(TableLFO::kBi);
        lfo.setDepth(1.0);
        lfo.setMode(mode);
        lfo.setTrigger(&trig);
        lfo.setRate(RateForStep(step));
    }
    // Runs one block with the trigger flag as given; returns the indices read.
    std::vector<int> Block(bool trigger = false)
    {
        trig = trigger;
        lfo.processBlock();
        std::vector<int> idx(gBlockLen);
        for (int i = 0; i < gBlockLen; ++i)
            idx[i] = RampIndex(lfo.output()[i]);
        return idx;
    }
};
} // namespace

TEST(TableLFO, StepIsLimitedAndRateModulationIsReadOncePerBlock)
{
    RampLfo ramp(TableLFO::kLoop);
    ramp.lfo.setRate(500.0); // would be 46.44
    const std::vector<int> idx = ramp.Block();
    for (int i = 1; i < gBlockLen; ++i)
        EXPECT_EQ(idx[i] - idx[i - 1], 46);
    ramp.lfo.setRate(0.001);
    EXPECT_NEAR(ramp.lfo.getIncrement(), 4.096 / 44100.0, 1e-15); // very low rates are not raised

    // Rate modulation: step = 4096 x (0 + 1 x 0.092 x 500) / 44100 = 4.272 points per sample; only
    // the first value of the source block counts.
    RampLfo r(TableLFO::kLoop, 0.0);
    r.lfo.setRate(0.0);
    double mod[gBlockLen] = {0.092};
    std::fill(mod + 1, mod + gBlockLen, 1.0);
    r.lfo.setRateModSource(mod);
    r.lfo.setRateModDepth(1.0);
    const std::vector<int> modulated = r.Block();
    for (int i = 0; i < gBlockLen; ++i)
        EXPECT_EQ(modulated[i], int((i + 1) * 4096.0 * 0.092 * 500.0 / 44100.0)) << i;
}

// 32 points a sample: a cycle is four blocks. Loop wraps and restarts on every trigger; one-shot
// holds the last point and restarts on any trigger; latch ignores a trigger before its end.
TEST(TableLFO, TriggerModesReverseAndPhaseReadTheRightPoints)
{
    // {case, mode, triggers (bit b: a trigger in block b), reverse, phase, block, sample, index}
    using Row = std::tuple<const char*, int, std::uint64_t, bool, double, int, int, int>;
    const int loop = TableLFO::kLoop, once = TableLFO::kOneShot, latch = TableLFO::kLatch;
    const Row rows[] = {
        {"loop start", loop, 0, false, 0.0, 0, 0, 32},
        {"loop wraps", loop, 0, false, 0.0, 3, 31, 0},
        {"loop trigger", loop, 1 << 6, false, 0.0, 6, 0, 0},
        {"loop after trigger", loop, 1 << 6, false, 0.0, 6, 31, 992},
        {"loop one reset a pulse", loop, 1 << 6, false, 0.0, 7, 0, 1024},
        {"one-shot end", once, 0, false, 0.0, 3, 31, 4095},
        {"one-shot holds", once, 0, false, 0.0, 23, 17, 4095},
        {"one-shot restarts after end", once, 1 << 24, false, 0.0, 24, 31, 992},
        {"one-shot restarts before end", once, 1 << 2, false, 0.0, 2, 0, 0},
        {"latch ignores early", latch, 1 << 1, false, 0.0, 1, 0, 1056},
        {"latch holds", latch, 1 << 1, false, 0.0, 4, 5, 4095},
        {"latch restarts at end", latch, 1 << 5, false, 0.0, 5, 1, 32},
        {"reverse", loop, 1, true, 0.0, 0, 3, 4095 - 3 * 32},
        {"phase offset wraps", loop, 0, false, 0.5, 0, 31, (1024 + 2047) & 4095},
    };
    for (const auto& [what, mode, triggers, reverse, phase, block, sample, index] : rows)
    {
        RampLfo lfo(mode);
        lfo.lfo.setReverse(reverse);
        lfo.lfo.setPhase(phase);
        std::vector<int> idx;
        for (int b = 0; b <= block; ++b)
            idx = lfo.Block((triggers >> b) & 1);
        EXPECT_EQ(idx[sample], index) << what;
    }
}

TEST(TableLFO, PolaritySwapAndDepthSetTheRange)
{
    // The first read is sin(2 pi 8 / 4096), rising; swap turns its sign before the polarity maps
    // it into the range.
    // {polarity, range low, high, scale, offset}
    const std::tuple<int, double, double, double, double> cases[] = {{TableLFO::kPos, 0.0, 1.0, 0.5, 0.5},
                                                                     {TableLFO::kNeg, -1.0, 0.0, -0.5, -0.5},
                                                                     {TableLFO::kBi, -1.0, 1.0, 1.0, 0.0}};
    for (const auto& [pol, lo, hi, scale, offset] : cases)
        for (bool swap : {false, true})
            for (double depth : {1.0, 0.5})
            {
                SCOPED_TRACE(testing::Message() << pol << " swap " << swap << " depth " << depth);
                TableLFO lfo;
                lfo.setWave(FindWave(kSineId));
                lfo.setPolarity(pol);
                lfo.setSwap(swap);
                lfo.setDepth(depth);
                lfo.setRate(RateForStep(8.0)); // 512 samples a cycle
                std::vector<double> y;
                for (int b = 0; b < 16; ++b)
                {
                    lfo.processBlock();
                    y.insert(y.end(), lfo.output(), lfo.output() + gBlockLen);
                }
                EXPECT_NEAR(*std::min_element(y.begin(), y.end()), lo * depth, 1e-6);
                EXPECT_NEAR(*std::max_element(y.begin(), y.end()), hi * depth, 1e-6);
                const double v = (swap ? -1.0 : 1.0) * std::sin(2.0 * std::numbers::pi * 8.0 / 4096.0);
                EXPECT_NEAR(y[0], (v * scale + offset) * depth, 1e-12);
            }
}

TEST(TableLFO, GlideRisesWithItsTimeConstantAndOffClearsTheBlock)
{
    TableLFO lfo;
    lfo.setWave(FindWave(kHalfPulseId)); // +1 for thousands of blocks at this rate
    lfo.setRate(0.001);
    lfo.setDepth(1.0);
    lfo.setGlide(10.0);
    // Time constant in samples: 1.5 x 10 ms x 44.1 kHz / (2 pi) = 105.3.
    const double tau = 1.5 * 10.0 * 0.001 * 44100.0 / (2.0 * std::numbers::pi);
    for (int b = 0; b < 10; ++b)
    {
        lfo.processBlock();
        for (int i = 0; i < gBlockLen; ++i)
            ASSERT_NEAR(lfo.output()[i], 1.0 - std::exp(-(b * gBlockLen + i + 1.0) / tau), 1e-9)
                << b << " " << i;
    }
    lfo.setOn(false);
    for (int i = 0; i < gBlockLen; ++i)
        EXPECT_EQ(lfo.output()[i], 0.0);
}

TEST(TableLFO, SampleAndHoldDrawsAgainAfterANewCycle)
{
    TableLFO lfo;
    lfo.setWave(FindWave(kRandomId));
    lfo.setPolarity(TableLFO::kBi);
    lfo.setDepth(1.0);
    lfo.setPhase(0.3);              // no effect on S&H
    lfo.setRate(RateForStep(40.0)); // wraps after sample 102 (block 3, sample 6) and 204
    const double held = 2.0 * lfo.getHoldValue() - 1.0;
    std::vector<double> all;
    for (int b = 0; b < 6; ++b)
    {
        lfo.processBlock();
        all.insert(all.end(), lfo.output(), lfo.output() + gBlockLen);
    }
    for (int n = 0; n < 102; ++n)
        ASSERT_EQ(all[n], held) << n;
    std::set<double> drawn(all.begin() + 102, all.begin() + 128);
    EXPECT_GE(drawn.size(), 20u); // every sample after the wrap in that block draws again
    for (int n = 128; n < 192; ++n)
        ASSERT_EQ(all[n], all[127]) << n; // next block: held
    const auto [lo, hi] = std::minmax_element(all.begin(), all.end());
    EXPECT_GE(*lo, -1.0);
    EXPECT_LE(*hi, 1.0);
    EXPECT_GT(*hi - *lo, 1.0); // spread over the range
}

TEST(TableLFO, SyncedRatesFollowTempoAndSwitching)
{
    TableLFO lfo;
    for (int i = 0; i < TableLFO::kNumSyncSteps; ++i)
    {
        // One cycle per 2^(4 - i) beats: at 120 bpm "4 BARS" lasts 8 s, "1/32" 1/16 s.
        const double straight = 1.0 / (0.5 * std::exp2(4 - i));
        lfo.setSyncMode(TableLFO::kSyncStraight, 120.0);
        lfo.setSyncStep(i, 120.0);
        EXPECT_DOUBLE_EQ(lfo.getRate(), straight) << i;
        EXPECT_EQ(TableLFO::SyncIndexForRate(straight, 120.0), i);
        lfo.setSyncMode(TableLFO::kSyncDotted, 120.0);
        EXPECT_DOUBLE_EQ(lfo.getRate(), straight / 1.5) << i;
        lfo.setSyncMode(TableLFO::kSyncTriplet, 120.0);
        EXPECT_DOUBLE_EQ(lfo.getRate(), straight * 1.5) << i;
        lfo.tempoChanged(90.0);
        EXPECT_DOUBLE_EQ(lfo.getRate(), straight * 1.5 * 0.75) << i;
        EXPECT_DOUBLE_EQ(lfo.getIncrement(), std::min(46.0, 4096.0 * straight * 1.125 / 44100.0)) << i;
    }
    // Sync to free hands back the present rate; free LFOs ignore tempo changes.
    EXPECT_DOUBLE_EQ(lfo.setSyncMode(TableLFO::kSyncHz, 90.0), lfo.getRate());
    const double free = lfo.getRate();
    lfo.tempoChanged(200.0);
    EXPECT_EQ(lfo.getRate(), free);
    EXPECT_EQ(TableLFO::SyncIndexForRate(0.001, 120.0), 0);
    EXPECT_EQ(TableLFO::SyncIndexForRate(500.0, 60.0), 7);
}
