#include <gtest/gtest.h>

#include "EngineRig.h"
#include "common/Measure.h"
#include "modulators/TableLFO.h"
#include "params/ModRouting.h"

// The modulators as the engine feeds and reads them: the sidechain reaches an envelope, a synced
// gate follows the engine's song position, and an LFO's rate follows a switch between free and
// synced.

using namespace engine_rig;

// ENV 1 follows the sidechain; with depth -100 % on the level the echo ducks while the sidechain
// plays and comes back after it.
TEST(ModulatorEngine, SidechainEnvelopeWithNegativeDepthDucksTheEcho)
{
    Rig rig; // slot 1 as a pure 10 ms echo, nothing direct
    rig.Set({{kDelayOn1, 1.0}, {kTimebase1, 0.0}, {kDirectIn1, 100.0}, {kDelayTimeL1, 10.0}});
    rig.Set({{kDelayTimeR1, 10.0}, {kFeedback1, 0.0}});
    rig.Set({{kENV1On, 1.0}, {kENV1Source, kEnvSrcSidechain}, {kENV1Attack, 1.0}, {kENV1Decay, 50.0}});
    rig.Set({{kLevelModSource1, kModSourceEnv1}, {kLevelModDepth1, -100.0}});
    rig.Plug().SetInputChannelConnections(0, 4, true);
    const int n = 60000;
    std::vector<double> side(n, 0.0);
    for (int i = 14400; i < 24000; ++i) // 300 ms to 500 ms
        side[i] = 0.5 * std::sin(2.0 * std::numbers::pi * 200.0 * i / kRate);
    const Stereo out = Stream(rig.Plug(), Sine(n, 500.0, 0.5), kBlock, false, &side);
    const auto power = [&](std::size_t from, std::size_t to)
    { return std::pow(testmeasure::Rms(out.l, from, to), 2.0); };
    const double before = power(10000, 14400);
    EXPECT_GT(before, 0.1);
    EXPECT_LT(power(19000, 24000), 0.1 * before);
    EXPECT_GT(power(50000, 60000), 0.5 * before);
}

// A synced gate of two steps (shut, open) at 1/8 switches every 12000 samples at 120 bpm and
// 48 kHz (375 blocks), on the beat grid: in the ticks that end blocks 375 k - 1. (That its output
// reaches a destination one block later is heard in the golden summaries.)
TEST(ModulatorEngine, ASyncedGateSwitchesOnTheBeatGrid)
{
    Rig rig;
    rig.Set({{kGate1On, 1.0}, {kGate1Sync, 1.0}, {kGate1Timebase, 1.0}, {kGate1Length, 2.0}});
    rig.Set({{kGate1Step1, 0.0}, {kGate1Step1 + 1, 100.0}});
    const double* gate = rig.Source(kModSourceGate1);
    std::vector<int> edges; // the blocks whose tick switched the gate
    for (int b = 0; b < 1700; ++b)
    {
        const double before = gate[0];
        rig.Run(Stereo(kBlock));
        if (gate[0] != before) edges.push_back(b);
    }
    EXPECT_EQ(edges, (std::vector<int>{374, 749, 1124, 1499}));
}

// Switching an LFO between free and synced rewrites "LFO Rate" in the other unit, and its text
// follows: free 2 Hz at 120 bpm becomes the note index below it (log2(960 * 2 / 120) = 4: "1/4"),
// and back the rate heard (120 bpm x 2^0 / 60 = 2 Hz, x 1.5 as a triplet).
TEST(ModulatorEngine, LfoSyncSwitchingWritesTheRateInTheOtherUnit)
{
    Rig rig;
    rig.Set({{kLFORate1, 2.0}, {kLFOSync1, TableLFO::kSyncStraight}});
    const IParamRecord& rate = *rig.Plug().GetParam(kLFORate1);
    EXPECT_NEAR(rate.value, 4 * TableLFO::kSyncStepSpacing, 1e-9);
    EXPECT_EQ(rate.GetDisplayForHost(rate.value, false), "1/4"); // the knob shows note values
    double parsed = 0.0;
    ASSERT_TRUE(rate.GetValueFromDisplayText("1 BAR", parsed));
    EXPECT_NEAR(parsed, 2 * TableLFO::kSyncStepSpacing, 1e-9);
    rig.Set(kLFOSync1, TableLFO::kSyncTriplet);
    EXPECT_NEAR(rate.value, 4 * TableLFO::kSyncStepSpacing, 1e-9);
    rig.Set(kLFOSync1, TableLFO::kSyncHz);
    EXPECT_NEAR(rate.value, 3.0, 1e-9); // the triplet rate, 1.5 x 2 Hz
    EXPECT_EQ(rate.GetDisplayForHost(rate.value, false), "3.00");
}
