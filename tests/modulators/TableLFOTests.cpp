#include "dsp/TimeBase.h"
#include "modulators/TableLFO.h"
#include "modulators/WaveStore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <set>
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

TEST(TableLFO, StepIsLimitedToFortySixPointsPerSampleAtAnySampleRate)
{
    TableLFO lfo;
    lfo.setRate(500.0);
    EXPECT_EQ(lfo.getIncrement(), 46.0); // not 46.44
    lfo.setRate(0.001);
    EXPECT_NEAR(lfo.getIncrement(), 4.096 / 44100.0, 1e-15); // very low rates are not raised

    // Measured: 46 points between neighbouring reads of the ramp.
    RampLfo ramp(TableLFO::kLoop);
    ramp.lfo.setRate(500.0);
    const std::vector<int> idx = ramp.Block();
    for (int i = 1; i < gBlockLen; ++i)
        EXPECT_EQ(idx[i] - idx[i - 1], 46);
}

TEST(TableLFO, LoopWrapsAndRestartsOnTrigger)
{
    RampLfo r(TableLFO::kLoop);
    for (int b = 0; b < 6; ++b)
    {
        const std::vector<int> idx = r.Block();
        for (int i = 0; i < gBlockLen; ++i)
            ASSERT_EQ(idx[i], ((b * gBlockLen + i + 1) * 32) % 4096) << b << " " << i;
    }
    const std::vector<int> idx = r.Block(true);
    for (int i = 0; i < gBlockLen; ++i)
        EXPECT_EQ(idx[i], i * 32);
    EXPECT_EQ(r.Block()[0], 32 * 32); // one reset per pulse
}

TEST(TableLFO, OneShotHoldsTheLastPointAndRestartsAnyTime)
{
    RampLfo r(TableLFO::kOneShot);
    for (int b = 0; b < 3; ++b)
        r.Block();
    std::vector<int> idx = r.Block(); // reaches 4096 at sample 127
    EXPECT_EQ(idx[30], 4064);
    EXPECT_EQ(idx[31], 4095);
    for (int b = 0; b < 20; ++b)
        for (int v : r.Block())
            ASSERT_EQ(v, 4095);

    idx = r.Block(true); // after the end
    EXPECT_EQ(idx[0], 0);
    EXPECT_EQ(idx[31], 31 * 32);
    idx = r.Block(true); // before the end: restarts too
    EXPECT_EQ(idx[0], 0);
}

TEST(TableLFO, LatchIgnoresAnEarlyTriggerAndRestartsAtTheEnd)
{
    RampLfo r(TableLFO::kLatch);
    r.Block();
    std::vector<int> idx = r.Block(true); // early: phase unaffected
    for (int i = 0; i < gBlockLen; ++i)
        EXPECT_EQ(idx[i], (gBlockLen + i + 1) * 32);
    r.Block();
    idx = r.Block();
    EXPECT_EQ(idx[31], 4095);
    EXPECT_EQ(r.Block()[5], 4095); // held without a trigger
    idx = r.Block(true);
    EXPECT_EQ(idx[0], 0);
    EXPECT_EQ(idx[1], 32);
}

TEST(TableLFO, ReverseAndPhaseOffsetReadTheRightPoints)
{
    RampLfo rev(TableLFO::kLoop);
    rev.lfo.setReverse(true);
    std::uint8_t on = 1;
    rev.lfo.setTrigger(&on);
    rev.lfo.processBlock();
    EXPECT_EQ(RampIndex(rev.lfo.output()[0]), 4095); // index 0 reads the last point
    EXPECT_EQ(RampIndex(rev.lfo.output()[3]), 4095 - 3 * 32);

    RampLfo off(TableLFO::kLoop);
    off.lfo.setPhase(0.5); // 2047 points
    const std::vector<int> idx = off.Block();
    for (int i = 0; i < gBlockLen; ++i)
        EXPECT_EQ(idx[i], ((i + 1) * 32 + 2047) & 4095);
}

TEST(TableLFO, PolaritySwapAndDepthSetTheRange)
{
    const struct
    {
        int pol;
        bool swap;
        double lo, hi;
    } cases[] = {{TableLFO::kPos, false, 0.0, 1.0},  {TableLFO::kPos, true, 0.0, 1.0},
                 {TableLFO::kNeg, false, -1.0, 0.0}, {TableLFO::kNeg, true, -1.0, 0.0},
                 {TableLFO::kBi, false, -1.0, 1.0},  {TableLFO::kBi, true, -1.0, 1.0}};
    for (const auto& c : cases)
    {
        for (double depth : {1.0, 0.5})
        {
            TableLFO lfo;
            lfo.setWave(FindWave(kSineId));
            lfo.setPolarity(c.pol);
            lfo.setSwap(c.swap);
            lfo.setDepth(depth);
            lfo.setRate(RateForStep(8.0)); // 512 samples a cycle
            double lo = 1e9, hi = -1e9, first = 0.0;
            for (int b = 0; b < 16; ++b)
            {
                lfo.processBlock();
                if (b == 0) first = lfo.output()[0];
                lo = std::min(lo, *std::min_element(lfo.output(), lfo.output() + gBlockLen));
                hi = std::max(hi, *std::max_element(lfo.output(), lfo.output() + gBlockLen));
            }
            EXPECT_NEAR(lo, c.lo * depth, 1e-6) << c.pol << c.swap;
            EXPECT_NEAR(hi, c.hi * depth, 1e-6) << c.pol << c.swap;
            // The first read is sin(2 pi 8 / 4096), rising; swap turns its sign before polarity.
            const double v = (c.swap ? -1.0 : 1.0) * std::sin(2.0 * std::numbers::pi * 8.0 / 4096.0);
            const double scale = c.pol == TableLFO::kBi ? 1.0 : (c.pol == TableLFO::kPos ? 0.5 : -0.5);
            const double offset = c.pol == TableLFO::kBi ? 0.0 : scale;
            EXPECT_NEAR(first, (v * scale + offset) * depth, 1e-12);
        }
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
    int crossed = -1;
    double at200 = 0.0;
    for (int b = 0; b < 10; ++b)
    {
        lfo.processBlock();
        for (int i = 0; i < gBlockLen; ++i)
        {
            const int n = b * gBlockLen + i;
            if (crossed < 0 && lfo.output()[i] >= 1.0 - std::exp(-1.0)) crossed = n;
            if (n == 200) at200 = lfo.output()[i];
        }
    }
    EXPECT_NEAR(crossed + 1, tau, 1.0);
    EXPECT_NEAR(at200, 1.0 - std::exp(-201.0 / tau), 1e-9);
    EXPECT_NEAR(lfo.getLastOut(), 1.0 - std::exp(-(9.0 * gBlockLen + 1.0) / tau), 1e-9);

    lfo.setOn(false);
    for (int i = 0; i < gBlockLen; ++i)
        EXPECT_EQ(lfo.output()[i], 0.0);
}

TEST(TableLFO, RateModulationIsReadOncePerBlock)
{
    // Step = 4096 x (0 + 1 x 0.092 x 500) / 44100 = 4.272 points per sample; only the first value
    // of the source block counts.
    RampLfo r(TableLFO::kLoop, 0.0);
    r.lfo.setRate(0.0);
    double mod[gBlockLen] = {0.092};
    std::fill(mod + 1, mod + gBlockLen, 1.0);
    r.lfo.setRateModSource(mod);
    r.lfo.setRateModDepth(1.0);
    const std::vector<int> idx = r.Block();
    for (int i = 0; i < gBlockLen; ++i)
        EXPECT_EQ(idx[i], int((i + 1) * 4096.0 * 0.092 * 500.0 / 44100.0)) << i;
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
    double lo = 1.0, hi = -1.0;
    for (double v : all)
        lo = std::min(lo, v), hi = std::max(hi, v);
    EXPECT_GE(lo, -1.0);
    EXPECT_LE(hi, 1.0);
    EXPECT_GT(hi - lo, 1.0); // spread over the range
}

TEST(TableLFO, SyncedRatesFollowLabelsTempoAndSwitching)
{
    ASSERT_EQ(TableLFO::kSyncLabels[0], std::string("4 BARS"));
    ASSERT_EQ(TableLFO::kSyncLabels[4], std::string("1/4"));
    TableLFO lfo;
    lfo.setRate(3.0);
    // Free to sync at 120 bpm: log2(960 x 3 / 120) = 4.58 -> step 4, "1/4" = 2 Hz.
    EXPECT_EQ(lfo.setSyncMode(TableLFO::kSyncStraight, 120.0), 4.0);
    EXPECT_DOUBLE_EQ(lfo.getRate(), 2.0);
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
