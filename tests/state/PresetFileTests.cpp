// The preset files: round trip, layout, bad input, cut files, and the names shown for them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "PresetFixtures.h"
#include "params/ParamCatalogue.h"
#include "params/ParamIds.h"
#include "state/PresetBrowser.h"

using preset_test::Head;
using preset_test::Load;

namespace
{
// A value the file format carries exactly: four significant digits, or a whole step of a list.
double RandomValue(const IParamRecord& p, std::mt19937& rng)
{
    std::uniform_real_distribution<double> u(p.min, p.max);
    if (p.type != IParamRecord::kTypeDouble) return std::round(u(rng));
    const double v = u(rng);
    if (v == 0.0) return 0.0;
    const double scale = std::pow(10.0, 3.0 - std::floor(std::log10(std::abs(v))));
    return std::clamp(std::round(v * scale) / scale, p.min, p.max);
}

TEST(PresetFile, RandomPatchesComeBackAsThirtyTwoBitFloatsWithTheirMasks)
{
    for (std::uint32_t seed = 1; seed <= 12; ++seed)
    {
        std::mt19937 rng(seed);
        FakeStateHost source;
        std::vector<int> ids(kNumParams);
        std::iota(ids.begin(), ids.end(), 0);
        std::shuffle(ids.begin(), ids.end(), rng);
        ids.resize(300);
        for (int id : ids)
            source.Set(id, RandomValue(*source.Param(id), rng));
        // Logic module 2's doubles share their keys with module 3's, and a file's first such key goes
        // to module 2: a module 3 value comes back only when module 2's is written before it.
        for (int lower :
             {kLogic2Source1Depth, kLogic2Source2Depth, kLogic2Smooth, kLogic2Depth, kLogic2DepthMod})
            if (source.Value(lower) == source.Param(lower)->defaultValue &&
                source.Value(lower + 1) != source.Param(lower + 1)->defaultValue)
                source.Set(lower, source.Param(lower)->defaultValue == 0.0 ? 1.0 : 0.0);
        StateFields& f = source.Fields();
        // Random tap, step FX and step mod masks (both rows).
        for (std::int32_t* m : {f.mTapOnMask, f.mStepFxMask, &f.mStepModMask[0][0], &f.mStepModMask[1][0]})
            for (int i = 0; i < (m == f.mTapOnMask ? 8 : 4); ++i)
                m[i] = static_cast<std::int32_t>(rng() & 0xFFFF);
        f.mLastPage = 10 + static_cast<int>(rng() % 5);

        FakeStateHost target;
        target.Set(kFeedback3, 99.0); // a leftover of an earlier sound, not in every patch
        Load(target, PresetFileText(source));
        for (int id = 0; id < kNumParams; ++id)
            ASSERT_EQ(float(target.Value(id)), float(source.Value(id))) << ParamKey(id) << " seed " << seed;
        const StateFields& g = target.Fields();
        EXPECT_TRUE(std::memcmp(g.mTapOnMask, f.mTapOnMask, sizeof f.mTapOnMask) == 0 &&
                    std::memcmp(g.mStepFxMask, f.mStepFxMask, sizeof f.mStepFxMask) == 0 &&
                    std::memcmp(g.mStepModMask, f.mStepModMask, sizeof f.mStepModMask) == 0);
        EXPECT_EQ(g.mPageMemory, f.mLastPage);
    }
}

// The sections in their order, step mod row 1 after all of row 0; then in id order the values that
// differ from their defaults as floats, with six significant digits.
TEST(PresetFile, LayoutAndValuesThatDifferFromTheirDefaults)
{
    FakeStateHost host;
    host.Fields().mTapOnMask[3] = 5;
    host.Fields().mStepModMask[1][0] = 7;
    host.Set(kLevel2, 1.0 / 3.0);      // 0.333333
    host.Set(kFeedback1, 50.000001);   // the default 50 as a float: not written
    host.Set(kDelayTimeL1, 1234.5678); // 1234.57
    host.Set(kSlotOn1, 0.0);           // default 1
    host.Set(kDelayMode2, 3.0);
    EXPECT_EQ(PresetFileText(host), "Quorvex V. 1.2.0r14 PresetFile!\n"
                                    "PresetVersion: 14\n"
                                    "\n"
                                    "ADDPARAMS:\n"
                                    "\n"
                                    "DelayTaps\n"
                                    "65535 65535 65535 5 65535 65535 65535 65535 \n"
                                    "LastPage\n"
                                    "2\n"
                                    "StepFX\n"
                                    "0 0 0 0 \n"
                                    "StepMod\n"
                                    "0 0 0 0 7 0 0 0 \n"
                                    "\n"
                                    "EParams:\n"
                                    "SlotOn1 0\nLevel2 0.333333\nDelayMode2 3\nDelayTimeL1 1234.57\n");
}

// Reading ends at the first value that is no number (the values before it stand); a last key
// without a value ends the file quietly. Values beyond the range are cut and unknown keys dropped;
// a file whose first word isn't the product's is refused before anything is read.
TEST(PresetFile, BadValuesKeysAndHeadsAreAnsweredAsTheyMust)
{
    for (const char* bad : {"abc", "1.5x", "nan", "inf", "-", "1e999", ""})
    {
        FakeStateHost host;
        const std::string rest = *bad ? std::string(" ") + bad + "\nFeedback2 30\nLevel2 -9\n" : "";
        const PresetData data = Load(host, Head(14) + "Feedback1 20\nLevel1" + rest);
        EXPECT_EQ(data.stoppedEarly, *bad != 0) << bad;
        EXPECT_EQ(host.Value(kFeedback1), 20.0) << bad;
        for (int id : {kLevel1, kFeedback2, kLevel2})
            EXPECT_EQ(host.Value(id), host.Param(id)->defaultValue) << bad << ", " << ParamKey(id);
    }
    FakeStateHost host;
    PresetData data = Load(host, Head(14) + "Feedback1 500\nLevel1 -100\nNoSuchKey 5\nDelayMode1 7\n");
    EXPECT_EQ(std::tuple(host.Value(kFeedback1), host.Value(kLevel1), host.Value(kDelayMode1)),
              std::tuple(160.0, -60.0, 3.0));
    EXPECT_EQ(data.keys, std::vector<std::string>{"NoSuchKey"});
    // The next file starts from empty lists.
    ASSERT_EQ(ParsePresetText(Head(14), data), PresetReadResult::kOk);
    EXPECT_TRUE(data.keys.empty());
    for (const char* text : {"", "quorvex V. 1 PresetFile!", "QuorvexV. 1", "Other V. 1.2.0r14 PresetFile!"})
        EXPECT_EQ(ParsePresetText(text, data), PresetReadResult::kWrongFile) << text;
    EXPECT_EQ(ReadPresetText("/nonexistent/quorvex/preset.txt", data), PresetReadResult::kNoFile);
}

// The ADDPARAMS sections come in any order and unknown ones are skipped; the taps reach the tap
// engine too, and a last page of 9 or below remembers the overview. A file without the sections
// clears the step masks but keeps the tap masks, and gives every parameter it lacks its default,
// announcing every id once, in order.
TEST(PresetFile, AddParamsSectionsInAnyOrderUnknownOnesSkippedMissingOnesCleared)
{
    FakeStateHost host;
    Load(host, "Quorvex V. x PresetFile! PresetVersion: 14 ADDPARAMS: StepFX 1 2 3 4 Colours LastPage 12 "
               "DelayTaps 9 8 7 6 5 4 3 2 StepMod 10 11 12 13 14 15 16 17 EParams: Feedback4 7.25");
    const StateFields& f = host.Fields();
    const std::int32_t taps[] = {9, 8, 7, 6, 5, 4, 3, 2};
    EXPECT_EQ(0, std::memcmp(f.mTapOnMask, taps, sizeof taps));
    EXPECT_EQ(std::tuple(f.mStepFxMask[3], f.mStepModMask[0][0], f.mStepModMask[1][3], f.mPageMemory),
              std::tuple(4, 10, 17, 12));
    EXPECT_EQ(host.Value(kFeedback4), 7.25);
    EXPECT_EQ(host.mAppliedTapMasks, std::vector<std::int32_t>(taps, taps + 8));
    host.mChanges.clear();
    Load(host, "Quorvex V. x PresetFile! PresetVersion: 14 ADDPARAMS: LastPage 9 EParams:");
    EXPECT_EQ(0, std::memcmp(f.mTapOnMask, taps, sizeof taps));
    EXPECT_EQ(std::tuple(f.mStepFxMask[3], f.mStepModMask[1][3], f.mPageMemory), std::tuple(0, 0, 2));
    for (int id = 0; id < kNumParams; ++id)
        ASSERT_EQ(host.Value(id), host.Param(id)->defaultValue) << ParamKey(id);
    ASSERT_EQ(host.mChanges.size(), std::size_t(kNumParams));
    EXPECT_TRUE(std::is_sorted(host.mChanges.begin(), host.mChanges.end()));
}

TEST(PresetFile, EveryCutOfAFileLoadsWhatItHoldsAndNothingElse)
{
    FakeStateHost source;
    source.Set(
        {{kFeedback1, 62.5}, {kDelayMode3, 2.0}, {kLevel4, -7.25}, {kLogic2Source1Depth, -40.0}, {kBP, 1.0}});
    for (auto& m : source.Fields().mTapOnMask)
        m = 0x0F0F;
    source.Fields().mStepFxMask[2] = 0x00FF;
    const std::string text = PresetFileText(source);

    for (std::size_t cut = 0; cut <= text.size(); ++cut)
    {
        const std::string part = text.substr(0, cut);
        FakeStateHost host;
        PresetData data;
        const PresetReadResult result = ParsePresetText(part, data);
        // Until the product word is whole, the file isn't ours.
        ASSERT_EQ(result == PresetReadResult::kOk, cut >= 7) << cut;
        if (result != PresetReadResult::kOk) continue;
        ApplyPresetMasks(host, data);
        ApplyPresetParams(host, data);
        for (int id = 0; id < kNumParams; ++id)
        {
            const double v = host.Value(id);
            const IParamRecord& p = *host.Param(id);
            ASSERT_TRUE(std::isfinite(v) && v >= p.min && v <= p.max) << cut << " " << ParamKey(id);
            // A parameter line that lies whole in the part, its line end included, was applied.
            const std::string line = "\n" + std::string(ParamKey(id)) + " ";
            const std::size_t at = part.find(line);
            const bool whole =
                at != std::string::npos && part.find('\n', at + line.size()) != std::string::npos;
            ASSERT_TRUE(!whole || float(v) == float(source.Value(id))) << cut << " " << ParamKey(id);
        }
    }
}

TEST(PresetNames, NameAndFolderLabelFollowTheirCuttingRules)
{
    // {path, name, folder label}
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"/Factory Presets/Ambient/Long Tail.txt", "Long Tail", "F:Ambient"},
        {"/User Presets/Long Tail.txt", "Long Tail", "U:"},
        {"/Factory Presets/Long Tail.txt", "Long Tail", "U:"}, // directly in the factory tree
        {"/User Presets/a.b.txt", "a", "U:"},
        {"/User Presets/Mine/Deep/Dub.txt", "Dub", "U:Mine/Deep"},
        {"/factory Presets/Ambient/x.txt", "x", "U:Ambient"}, // the label's test is exact
        {"/User Presets/Sub/" + std::string(40, 'n') + ".txt", std::string(38, 'n'), "U:Sub"},
        {"/User Presets/" + std::string(36, 'n') + "..b.txt", std::string(36, 'n') + ".", "U:"},
        {"/User Presets/" + std::string(35, 'f') + "/x.txt", "x", "U:" + std::string(30, 'f')},
        {"/User Presets/NoExtension", "NoExtension", "U:"},
    };
    for (const auto& [path, name, label] : cases)
        EXPECT_EQ(PresetNameOf(path) + "|" + PresetFolderLabelOf(path), name + "|" + label) << path;
}
} // namespace
