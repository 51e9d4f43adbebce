// One hand-written file per row of the format history, newest row first. Expected values are
// worked out by hand from the rows: a file passes every row of a version above its own, each row
// on the value the row before left.

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "PresetFixtures.h"
#include "params/ParamIds.h"

using preset_test::Head;
using preset_test::Load;

namespace
{
struct Expect
{
    int id;
    double value;
};

void LoadAndCheck(int version, const std::string& body, std::initializer_list<Expect> expected)
{
    FakeStateHost host;
    Load(host, Head(version) + body);
    for (const Expect& e : expected)
        EXPECT_NEAR(host.Value(e.id), e.value, 1e-5) << "version " << version << ", id " << e.id;
}

TEST(PresetMigration, BelowFourteenTappedMixSlotsLoseThirtyPercentFeedback)
{
    const std::string body = "DelayMode1 3\nDelayRoute1 6\nFeedback1 50\n" // tapped + MIX: 35
                             "DelayMode2 3\nDelayRoute2 0\nFeedback2 50\n" // tapped, DUAL: kept
                             "DelayMode3 0\nDelayRoute3 6\nFeedback3 50\n" // forward, MIX: kept
                             "DelayMode4 3\nDelayRoute4 6\n";              // default feedback 50: 35
    LoadAndCheck(13, body, {{kFeedback1, 35}, {kFeedback2, 50}, {kFeedback3, 50}, {kFeedback4, 35}});
    // Every slot, not only the first: unlike old state chunks.
    LoadAndCheck(13,
                 "DelayMode1 3\nDelayRoute1 6\nFeedback1 100\nDelayMode2 3\nDelayRoute2 6\nFeedback2 20\n",
                 {{kFeedback1, 70}, {kFeedback2, 14}});
    LoadAndCheck(14, body, {{kFeedback1, 50}, {kFeedback4, 50}});
}

TEST(PresetMigration, BelowThirteenFeedbackEffectsAboveTwelveMoveUpOne)
{
    LoadAndCheck(12, "FX1FB 13\nFX2FB 12\nFX3FB 20\nFX4FB 5\nFX1PR 18\nFX1PO 18\n",
                 {{kFX1FB, 14}, {kFX2FB, 12}, {kFX3FB, 21}, {kFX4FB, 5}, {kFX1PR, 18}, {kFX1PO, 18}});
    LoadAndCheck(13, "FX1FB 13\n", {{kFX1FB, 13}});
}

TEST(PresetMigration, BelowTwelvePreAndPostEffectsAboveSeventeenMoveUpOne)
{
    // FB keys also pass the row below 13.
    LoadAndCheck(11, "FX1PR 18\nFX2PR 17\nFX3PO 20\nFX4PO 11\nFX1FB 13\n",
                 {{kFX1PR, 19}, {kFX2PR, 17}, {kFX3PO, 21}, {kFX4PO, 11}, {kFX1FB, 14}});
}

TEST(PresetMigration, BelowNineTheEffectListsGrewEarlierOnTheRaisedValues)
{
    // FX1PR 18: 19 (below 12), then 21 (below 9). FX2PR 16: untouched below 12, 18 below 9.
    // FX1FB 13: 14 (below 13), then 15 (below 9). FX2FB 10: 11 below 9 only. FX3PO 10: nothing.
    // Timebase3 sits in the file too and keeps its index: the time base row is for version 4.
    LoadAndCheck(8, "FX1PR 18\nFX2PR 16\nFX1FB 13\nFX2FB 10\nFX3PO 10\nFX4PO 11\nTimebase3 4\n",
                 {{kFX1PR, 21},
                  {kFX2PR, 18},
                  {kFX1FB, 15},
                  {kFX2FB, 11},
                  {kFX3PO, 10},
                  {kFX4PO, 13},
                  {kTimebase3, 4}});
}

TEST(PresetMigration, BelowEightStepModHoldsSixteenHalvesAndEveryTapEffectIsOn)
{
    FakeStateHost host;
    Load(host, "Quorvex V. 1.0.0r7 PresetFile!\nPresetVersion: 7\n\nADDPARAMS:\n\nStepFX\n1 2 3 4 \nStepMod\n"
               "1 2 4 8 16 32 64 128 256 512 1024 2048 4096 8192 3 12 \n\nEParams:\n");
    const StateFields& f = host.Fields();
    EXPECT_EQ(f.mStepModMask[0][0], 3);
    EXPECT_EQ(f.mStepModMask[0][1], 12);
    EXPECT_EQ(f.mStepModMask[0][2], 48);
    EXPECT_EQ(f.mStepModMask[0][3], 192);
    EXPECT_EQ(f.mStepModMask[1][0], 768);
    EXPECT_EQ(f.mStepModMask[1][1], 3072);
    EXPECT_EQ(f.mStepModMask[1][2], 12288);
    EXPECT_EQ(f.mStepModMask[1][3], 15);
    for (int slot = 0; slot < 4; ++slot)
        EXPECT_EQ(f.mStepFxMask[slot], 0xFFFF) << slot;

    // Version 8 reads eight words and keeps StepFX as written.
    FakeStateHost eight;
    Load(eight, "Quorvex V. x PresetFile! PresetVersion: 8 ADDPARAMS: StepFX 1 2 3 4 StepMod 1 2 3 4 5 6 7 8 "
                "EParams: Feedback1 12");
    EXPECT_EQ(eight.Fields().mStepFxMask[2], 3);
    EXPECT_EQ(eight.Fields().mStepModMask[1][3], 8);
    EXPECT_EQ(eight.Value(kFeedback1), 12);
}

TEST(PresetMigration, BelowSixWavesAboveEighteenMoveUpFour)
{
    LoadAndCheck(5, "LFOWave1 19\nLFOWave2 18\nLFOWave3 22\nLFOWave4 3\n",
                 {{kLFOWave1, 23}, {kLFOWave2, 18}, {kLFOWave3, 26}, {kLFOWave4, 3}});
    LoadAndCheck(6, "LFOWave1 19\n", {{kLFOWave1, 19}});
}

TEST(PresetMigration, BelowFiveTimeBasesAreMappedByIndexButSlotThreeKeepsItsOwn)
{
    // Delay time bases 0 2 3 4 8 9 10, tap time bases 0 1 2 3 4 8 9 10.
    LoadAndCheck(4,
                 "Timebase1 1\nTimebase2 4\nTimebase3 4\nTimebase4 6\n"
                 "TapTimebase1 5\nTapTimebase2 7\nTapTimebase3 2\nTapTimebase4 0\nLFOWave1 20\n",
                 {{kTimebase1, 2},
                  {kTimebase2, 8},
                  {kTimebase3, 4},
                  {kTimebase4, 10},
                  {kTapTimebase1, 8},
                  {kTapTimebase2, 10},
                  {kTapTimebase3, 2},
                  {kTapTimebase4, 0},
                  {kLFOWave1, 24}});
    // A slot without a key takes the default, which is never mapped.
    FakeStateHost host;
    Load(host, Head(4));
    EXPECT_EQ(host.Value(kTimebase1), host.Param(kTimebase1)->defaultValue);
}

TEST(PresetMigration, BelowFourLevelsWereLinearGains)
{
    // 20 log10(g): 0.5 gives -6.0206 dB, 2 gives +6.0206, 1 gives 0; 0 is silence, cut to -60.
    LoadAndCheck(
        3, "Level1 0.5\nLevel2 2\nLevel3 1\nLevel4 0\nTimebase1 1\n",
        {{kLevel1, -6.0205999}, {kLevel2, 6.0205999}, {kLevel3, 0}, {kLevel4, -60}, {kTimebase1, 2}});
    LoadAndCheck(4, "Level1 -6\n", {{kLevel1, -6}});
}

TEST(PresetMigration, BelowThreeFrequencyModulationDepthsShrinkWhileTheFileIsRead)
{
    // 50 x 0.27820796 = 13.910398; 100 x 0.27820796 = 27.820796; -20 x 0.27820796 = -5.5641592.
    LoadAndCheck(2, "LFOFreqModDepth1 50\nLFOFreqModDepth2 100\nLFOFreqModDepth4 -20\nLevel1 0.5\n",
                 {{kLFOFreqModDepth1, 13.910398},
                  {kLFOFreqModDepth2, 27.820796},
                  {kLFOFreqModDepth3, 0},
                  {kLFOFreqModDepth4, -5.5641592},
                  {kLevel1, -6.0205999}});
    LoadAndCheck(3, "LFOFreqModDepth1 50\n", {{kLFOFreqModDepth1, 50}});
}
} // namespace
