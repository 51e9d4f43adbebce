#include <gtest/gtest.h>

#include "EngineRig.h"
#include "common/Measure.h"
#include "modulators/TableLFO.h"
#include "params/ModRouting.h"

// The modulators as the engine ticks them: sources reach the slot parameters they are routed to,
// on the beat grid where synced.

using namespace engine_rig;

namespace
{
constexpr int kSettled = 9600;

// Mean square of one channel over [from, to).
double Power(const std::vector<double>& x, int from, int to)
{
    return std::pow(testmeasure::Rms(x, std::size_t(from), std::size_t(to)), 2.0);
}

// Slot 1 as a pure echo: everything goes into its 10 ms delay, nothing passes direct.
void MakeEcho(Rig& rig)
{
    rig.Set({{kDelayOn1, 1.0},
             {kTimebase1, 0.0},
             {kDirectIn1, 100.0},
             {kDelayTimeL1, 10.0},
             {kDelayTimeR1, 10.0}});
    rig.Set(kFeedback1, 0.0);
}
} // namespace

// LFO 1 (sine, +-1) on the pan of an echo: the balance between the channels swings at the LFO rate
// and from side to side.
TEST(ModulatorEngine, LfoOnPanningSwingsTheEchoAtItsRate)
{
    constexpr double kLfoHz = 4.0;
    Rig rig;
    MakeEcho(rig);
    rig.Set({{kLFOOn1, 1.0},
             {kLFOWave1, 0.0}, // SIN1
             {kLFOPol1, TableLFO::kBi},
             {kLFORate1, kLfoHz},
             {kLFODepth1, 100.0},
             {kPanningModSource1, kModSourceLFO1},
             {kPanningModDepth1, 100.0}});
    const int n = 2 * 48000;
    const Stereo out = rig.Run(Sine(n, 500.0, 0.5));

    // Balance per 480-sample window (10 ms, five periods of the tone).
    const int window = 480;
    std::vector<double> balance;
    for (int from = kSettled; from + window <= n; from += window)
    {
        const double l = Power(out.l, from, from + window);
        const double r = Power(out.r, from, from + window);
        balance.push_back((l - r) / (l + r + 1e-30));
    }
    int crossings = 0;
    for (std::size_t k = 1; k < balance.size(); ++k)
        crossings += (balance[k - 1] < 0.0) != (balance[k] < 0.0);
    const double seconds = static_cast<double>(balance.size() * window) / kRate;
    EXPECT_NEAR(crossings / (2.0 * seconds), kLfoHz, 0.3);
    EXPECT_GT(*std::max_element(balance.begin(), balance.end()), 0.9);
    EXPECT_LT(*std::min_element(balance.begin(), balance.end()), -0.9);
}

// ENV 1 follows the sidechain; with depth -100 % on the level the echo ducks while the sidechain
// plays and comes back after it.
TEST(ModulatorEngine, SidechainEnvelopeWithNegativeDepthDucksTheEcho)
{
    Rig rig;
    MakeEcho(rig);
    rig.Set({{kENV1On, 1.0},
             {kENV1Source, kEnvSrcSidechain},
             {kENV1Attack, 1.0},
             {kENV1Decay, 50.0},
             {kLevelModSource1, kModSourceEnv1},
             {kLevelModDepth1, -100.0}});
    rig.Plug().SetInputChannelConnections(0, 4, true);
    const int n = 60000;
    std::vector<double> side(n, 0.0);
    for (int i = 14400; i < 24000; ++i) // 300 ms to 500 ms
        side[i] = 0.5 * std::sin(2.0 * std::numbers::pi * 200.0 * i / kRate);
    const Stereo out = Stream(rig.Plug(), Sine(n, 500.0, 0.5), kBlock, false, &side);
    const double before = Power(out.l, 10000, 14400);
    EXPECT_GT(before, 0.1);
    EXPECT_LT(Power(out.l, 19000, 24000), 0.1 * before);
    EXPECT_GT(Power(out.l, 50000, 60000), 0.5 * before);
}

// A synced gate of two steps (shut, open) at 1/8 on the level: at 120 bpm and 48 kHz it switches
// every 12000 samples (375 blocks), on the host's grid. It opens in the tick that ends block n:
// block n's output stage is still silent, block n+1 already sounds. Modulators run after the audio
// of a block, so a source reaches its destination one block late, never in the block that made it.
TEST(ModulatorEngine, ASyncedGateSwitchesOnTheBeatGridAndReachesTheLevelOneBlockLate)
{
    Rig rig;
    rig.Set(
        {{kLevel1, -60.0}, {kLevelModSource1, kModSourceGate1}, {kLevelModDepth1, 100.0}, {kGate1On, 1.0}});
    rig.Set({{kGate1Sync, 1.0},
             {kGate1Timebase, 1.0},
             {kGate1Length, 2.0},
             {kGate1Step1, 0.0},
             {kGate1Step1 + 1, 100.0}});
    Stereo level(kBlock);
    level.l.assign(kBlock, 0.5);
    level.r = level.l;
    const double* gate = rig.Source(kModSourceGate1);
    const double* stage = QuorvexProbe::SlotAt(rig.Plug(), 0).StageL(Slot::kStageOut);
    std::vector<int> edges; // the blocks whose tick switched the gate
    for (int b = 0; b < 1700; ++b)
    {
        const double before = gate[0];
        rig.Run(level);
        if (gate[0] == before) continue;
        edges.push_back(b);
        if (before != 0.0) continue;
        EXPECT_EQ(std::vector<double>(stage, stage + kBlock), std::vector<double>(kBlock, 0.0))
            << "block " << b;
        rig.Run(level);
        ++b;
        EXPECT_GT(stage[kBlock - 1], 0.0) << "block " << b;
    }
    ASSERT_EQ(edges.size(), 4u);
    for (std::size_t k = 0; k < edges.size(); ++k)
        EXPECT_EQ(edges[k], 375 * static_cast<int>(k + 1) - 1) << "edge " << k;
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
