// The preset format history: each row applied to files of the versions below it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <tuple>

#include "PresetFixtures.h"
#include "params/ParamCatalogue.h"
#include "params/ParamIds.h"

using preset_test::Head;
using preset_test::Load;

namespace
{
// Preset migration: one hand-written file per row of the format history. Expected values are
// worked out by hand from the rows: a file passes every row of a version above its own, each row on
// the value the row before left. Each row below: a file of the version with the body, and the
// values that must come of it, both as "key value" pairs.
TEST(PresetMigration, EachRowOfTheHistoryAppliesBelowItsVersion)
{
    const std::tuple<int, const char*, const char*> rows[] = {
        // Below 14 TAPPED + MIX slots lose 30 % feedback, every slot (unlike old state chunks); slot
        // 4 from its default 50.
        {13,
         "DelayMode1 3 DelayRoute1 6 Feedback1 50 DelayMode2 3 DelayRoute2 0 Feedback2 50 DelayMode3 0 "
         "DelayRoute3 6 Feedback3 20 DelayMode4 3 DelayRoute4 6",
         "Feedback1 35 Feedback2 50 Feedback3 20 Feedback4 35"},
        {14, "DelayMode1 3 DelayRoute1 6 Feedback1 50", "Feedback1 50"},
        // Below 13 feedback effects above 12 move up one.
        {12, "FX1FB 13 FX2FB 12 FX3FB 20 FX1PR 18", "FX1FB 14 FX2FB 12 FX3FB 21 FX1PR 18"},
        {13, "FX1FB 13", "FX1FB 13"},
        // Below 12 PRE and POST effects above 17 move up one; FB keys pass the row below 13 too.
        {11, "FX1PR 18 FX2PR 17 FX3PO 20 FX4PO 11 FX1FB 13", "FX1PR 19 FX2PR 17 FX3PO 21 FX4PO 11 FX1FB 14"},
        // Below 9 the lists grew earlier, on the raised values: FX1PR 18 -> 19 -> 21, FX2PR 16 -> 18,
        // FX1FB 13 -> 14 -> 15, FX2FB 10 -> 11. Timebase3 keeps its index: that row is for 4.
        {8, "FX1PR 18 FX2PR 16 FX1FB 13 FX2FB 10 FX3PO 10 FX4PO 11 Timebase3 4",
         "FX1PR 21 FX2PR 18 FX1FB 15 FX2FB 11 FX3PO 10 FX4PO 13 Timebase3 4"},
        // Below 6 waves above 18 move up four.
        {5, "LFOWave1 19 LFOWave2 18 LFOWave3 22", "LFOWave1 23 LFOWave2 18 LFOWave3 26"},
        {6, "LFOWave1 19", "LFOWave1 19"},
        // Below 5 time bases are mapped by index (delay 0 2 3 4 8 9 10, taps 0 1 2 3 4 8 9 10), but
        // slot 3's delay time base keeps its own; a slot without the key keeps the default.
        {4,
         "Timebase1 1 Timebase2 4 Timebase3 4 Timebase4 6 TapTimebase1 5 TapTimebase2 7 TapTimebase3 2 "
         "LFOWave1 20",
         "Timebase1 2 Timebase2 8 Timebase3 4 Timebase4 10 TapTimebase1 8 TapTimebase2 10 TapTimebase3 2 "
         "LFOWave1 24"},
        {4, "", "Timebase1 2"},
        // Below 4 levels were linear gains: 20 log10(g), silence cut to -60.
        {3, "Level1 0.5 Level2 2 Level3 1 Level4 0",
         "Level1 -6.0205999 Level2 6.0205999 Level3 0 Level4 -60"},
        {4, "Level1 -6", "Level1 -6"},
        // Below 3 frequency modulation depths shrink by 0.27820796 while the file is read.
        {2, "LFOFreqModDepth1 50 LFOFreqModDepth2 100 LFOFreqModDepth4 -20 Level1 0.5",
         "LFOFreqModDepth1 13.910398 LFOFreqModDepth2 27.820796 LFOFreqModDepth3 0 LFOFreqModDepth4 "
         "-5.5641592 "
         "Level1 -6.0205999"},
        {3, "LFOFreqModDepth1 50", "LFOFreqModDepth1 50"},
    };
    const auto& keys = ParamKeys();
    for (const auto& [version, body, after] : rows)
    {
        SCOPED_TRACE(::testing::Message() << version << ": " << body);
        FakeStateHost host;
        Load(host, Head(version) + body);
        std::istringstream expected(after);
        std::string key;
        double value = 0.0;
        while (expected >> key >> value)
        {
            const auto id = static_cast<int>(std::find(keys.begin(), keys.end(), key) - keys.begin());
            ASSERT_LT(id, kNumParams) << key;
            EXPECT_NEAR(host.Value(id), value, 1e-5) << key;
        }
    }
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
        EXPECT_EQ(std::tuple(f.mStepModMask[0][s], f.mStepModMask[1][s], f.mStepFxMask[s]),
                  std::tuple(rows[0][s], rows[1][s], 0xFFFF))
            << s;
    // Version 8 reads eight words and keeps StepFX as written.
    FakeStateHost eight;
    Load(eight, "Quorvex V. x PresetFile! PresetVersion: 8 ADDPARAMS: StepFX 1 2 3 4 StepMod 1 2 3 4 5 6 7 8 "
                "EParams: Feedback1 12");
    EXPECT_EQ(
        std::tuple(eight.Fields().mStepFxMask[2], eight.Fields().mStepModMask[1][3], eight.Value(kFeedback1)),
        std::tuple(3, 8, 12.0));
}
} // namespace
