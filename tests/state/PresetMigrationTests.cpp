// One hand-written file per row of the format history. Expected values are worked out by hand from
// the rows: a file passes every row of a version above its own, each row on the value the row
// before left.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "PresetFixtures.h"
#include "params/ParamIds.h"

using preset_test::Head;
using preset_test::Load;

namespace
{
TEST(PresetMigration, EachRowOfTheHistoryAppliesBelowItsVersion)
{
    struct Expect
    {
        int id;
        double value;
    };
    const struct
    {
        const char* what;
        int version;
        std::string body;
        std::vector<Expect> expected;
    } rows[] = {
        // Below 14 TAPPED + MIX slots lose 30 % feedback, every slot (unlike old state chunks);
        // slot 4 from its default 50.
        {"tapped mix",
         13,
         "DelayMode1 3\nDelayRoute1 6\nFeedback1 50\nDelayMode2 3\nDelayRoute2 0\nFeedback2 50\n"
         "DelayMode3 0\nDelayRoute3 6\nFeedback3 20\nDelayMode4 3\nDelayRoute4 6\n",
         {{kFeedback1, 35}, {kFeedback2, 50}, {kFeedback3, 20}, {kFeedback4, 35}}},
        {"tapped mix, current", 14, "DelayMode1 3\nDelayRoute1 6\nFeedback1 50\n", {{kFeedback1, 50}}},
        // Below 13 feedback effects above 12 move up one.
        {"FB list",
         12,
         "FX1FB 13\nFX2FB 12\nFX3FB 20\nFX1PR 18\n",
         {{kFX1FB, 14}, {kFX2FB, 12}, {kFX3FB, 21}, {kFX1PR, 18}}},
        {"FB list, current", 13, "FX1FB 13\n", {{kFX1FB, 13}}},
        // Below 12 PRE and POST effects above 17 move up one; FB keys pass the row below 13 too.
        {"PRE and POST lists",
         11,
         "FX1PR 18\nFX2PR 17\nFX3PO 20\nFX4PO 11\nFX1FB 13\n",
         {{kFX1PR, 19}, {kFX2PR, 17}, {kFX3PO, 21}, {kFX4PO, 11}, {kFX1FB, 14}}},
        // Below 9 the lists grew earlier, on the raised values: FX1PR 18 -> 19 -> 21, FX2PR 16 -> 18,
        // FX1FB 13 -> 14 -> 15, FX2FB 10 -> 11. Timebase3 keeps its index: that row is for 4.
        {"earlier lists",
         8,
         "FX1PR 18\nFX2PR 16\nFX1FB 13\nFX2FB 10\nFX3PO 10\nFX4PO 11\nTimebase3 4\n",
         {{kFX1PR, 21},
          {kFX2PR, 18},
          {kFX1FB, 15},
          {kFX2FB, 11},
          {kFX3PO, 10},
          {kFX4PO, 13},
          {kTimebase3, 4}}},
        // Below 6 waves above 18 move up four.
        {"waves",
         5,
         "LFOWave1 19\nLFOWave2 18\nLFOWave3 22\n",
         {{kLFOWave1, 23}, {kLFOWave2, 18}, {kLFOWave3, 26}}},
        {"waves, current", 6, "LFOWave1 19\n", {{kLFOWave1, 19}}},
        // Below 5 time bases are mapped by index (delay 0 2 3 4 8 9 10, taps 0 1 2 3 4 8 9 10), but
        // slot 3's delay time base keeps its own.
        {"time bases",
         4,
         "Timebase1 1\nTimebase2 4\nTimebase3 4\nTimebase4 6\nTapTimebase1 5\nTapTimebase2 7\n"
         "TapTimebase3 2\nLFOWave1 20\n",
         {{kTimebase1, 2},
          {kTimebase2, 8},
          {kTimebase3, 4},
          {kTimebase4, 10},
          {kTapTimebase1, 8},
          {kTapTimebase2, 10},
          {kTapTimebase3, 2},
          {kLFOWave1, 24}}},
        // Below 4 levels were linear gains: 20 log10(g), silence cut to -60.
        {"levels",
         3,
         "Level1 0.5\nLevel2 2\nLevel3 1\nLevel4 0\n",
         {{kLevel1, -6.0205999}, {kLevel2, 6.0205999}, {kLevel3, 0}, {kLevel4, -60}}},
        {"levels, current", 4, "Level1 -6\n", {{kLevel1, -6}}},
        // Below 3 frequency modulation depths shrink by 0.27820796 while the file is read.
        {"FM depths",
         2,
         "LFOFreqModDepth1 50\nLFOFreqModDepth2 100\nLFOFreqModDepth4 -20\nLevel1 0.5\n",
         {{kLFOFreqModDepth1, 13.910398},
          {kLFOFreqModDepth2, 27.820796},
          {kLFOFreqModDepth3, 0},
          {kLFOFreqModDepth4, -5.5641592},
          {kLevel1, -6.0205999}}},
        {"FM depths, current", 3, "LFOFreqModDepth1 50\n", {{kLFOFreqModDepth1, 50}}},
    };
    for (const auto& r : rows)
    {
        SCOPED_TRACE(r.what);
        FakeStateHost host;
        Load(host, Head(r.version) + r.body);
        for (const Expect& e : r.expected)
            EXPECT_NEAR(host.Value(e.id), e.value, 1e-5) << "id " << e.id;
    }
    // A slot without a time base key takes the default, which is never mapped.
    FakeStateHost host;
    Load(host, Head(4));
    EXPECT_EQ(host.Value(kTimebase1), host.Param(kTimebase1)->defaultValue);
}

TEST(PresetMigration, BelowEightStepModHoldsSixteenHalvesAndEveryTapEffectIsOn)
{
    FakeStateHost host;
    Load(host, "Quorvex V. 1.0.0r7 PresetFile!\nPresetVersion: 7\n\nADDPARAMS:\n\nStepFX\n1 2 3 4 \nStepMod\n"
               "1 2 4 8 16 32 64 128 256 512 1024 2048 4096 8192 3 12 \n\nEParams:\n");
    const StateFields& f = host.Fields();
    // Each pair of old halves makes one row word: 1 | 2 = 3, 4 | 8 = 12, ...
    const std::int32_t rows[2][4] = {{3, 12, 48, 192}, {768, 3072, 12288, 15}};
    for (int s = 0; s < 4; ++s)
    {
        EXPECT_EQ(f.mStepModMask[0][s], rows[0][s]) << s;
        EXPECT_EQ(f.mStepModMask[1][s], rows[1][s]) << s;
        EXPECT_EQ(f.mStepFxMask[s], 0xFFFF) << s;
    }
    // Version 8 reads eight words and keeps StepFX as written.
    FakeStateHost eight;
    Load(eight, "Quorvex V. x PresetFile! PresetVersion: 8 ADDPARAMS: StepFX 1 2 3 4 StepMod 1 2 3 4 5 6 7 8 "
                "EParams: Feedback1 12");
    EXPECT_EQ(eight.Fields().mStepFxMask[2], 3);
    EXPECT_EQ(eight.Fields().mStepModMask[1][3], 8);
    EXPECT_EQ(eight.Value(kFeedback1), 12);
}
} // namespace
