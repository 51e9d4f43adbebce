// The state chunk (bytes and strings, fields, version gates, migration) and the preset files (round
// trip, layout, bad input, the format history's rows), the preset menu, saving and the folders.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "PresetFixtures.h"
#include "params/ParamCatalogue.h"
#include "params/ParamIds.h"
#include "state/InputAttenuator.h"
#include "state/Messages.h"
#include "state/PresetBrowser.h"
#include "state/PresetSaving.h"

using preset_test::Head;
using preset_test::Load;
using preset_test::TempFolder;

namespace
{
// Values follow each other little-endian without padding, and each read returns where the next one
// starts. A read past the end or from a negative position fails with -1 and leaves its target; so
// does every read from the -1 a failed one returns.
TEST(ByteChunk, ValuesFollowEachOtherAndAFailedReadLeavesItsTarget)
{
    ByteChunk chunk;
    EXPECT_EQ(chunk.Put(std::int32_t{0x10200}), 4);
    EXPECT_EQ(chunk.Put(std::uint8_t{0xAB}), 5);
    EXPECT_EQ(chunk.Put(1.0), 13);
    const std::uint8_t expected[] = {0x00, 0x02, 0x01, 0x00, 0xAB, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F};
    ASSERT_EQ(chunk.Size(), 13);
    EXPECT_EQ(std::memcmp(chunk.Data(), expected, 13), 0);
    std::int32_t word = 0;
    std::uint8_t byte = 0;
    double number = 0.0;
    EXPECT_EQ(chunk.Get(number, chunk.Get(byte, chunk.Get(word, 0))), 13);
    EXPECT_EQ(std::tuple(word, byte, number), std::tuple(0x10200, 0xAB, 1.0));
    EXPECT_EQ(chunk.Resize(5), 5);
    EXPECT_EQ(chunk.Get(word, 2), -1) << "4 bytes from 2 pass the end of 5";
    EXPECT_EQ(chunk.Get(word, -1), -1);
    EXPECT_EQ(word, 0x10200);
    EXPECT_EQ(chunk.Get(byte, chunk.Get(number, 0)), -1);
    EXPECT_EQ(number, 1.0);
    EXPECT_EQ(chunk.Get(word, 1), 5) << "the last whole word ends exactly at the end";
}

// A string is its length word and its bytes without terminator. A length of 0 or one that passes
// the end leaves the target and moves by the stored length (back, if negative); no room for the
// word, or a length that overflows the position, fails with -1.
TEST(StringField, IsALengthWordAndTheBytesWithoutTerminator)
{
    ByteChunk chunk;
    EXPECT_EQ(PutStr(chunk, "Echo"), 8);
    EXPECT_EQ(PutStr(chunk, ""), 12);
    chunk.Put(std::int32_t{-2});
    chunk.Put(std::int32_t{0x7FFFFFFF});
    ByteChunk longer;
    longer.Put(std::int32_t{10});
    longer.PutBytes("abc", 3);
    // {chunk, read from, next position, text read}
    const std::tuple<const ByteChunk*, int, int, const char*> rows[] = {
        {&chunk, 0, 8, "Echo"},   {&chunk, 8, 12, "kept"},  {&chunk, 12, 14, "kept"},
        {&chunk, 16, -1, "kept"}, {&chunk, 18, -1, "kept"}, {&chunk, -1, -1, "kept"},
        {&longer, 0, 14, "kept"}};
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(chunk.Data()) + 4, 4), "Echo");
    for (const auto& [from, at, next, read] : rows)
    {
        std::string target = "kept";
        EXPECT_EQ(GetStr(*from, target, at), next) << "from " << at;
        EXPECT_EQ(target, read) << "from " << at;
    }
}

// A chunk of any version as the format lays it out, from a host's fields and values: the ColorSet
// word after 0x1015B, the attenuator from 0x10101, the step rows of a slot interleaved; a menu
// index is written only with its folder.
ByteChunk ChunkOf(std::int32_t version, FakeStateHost& host)
{
    const StateFields& f = host.mFields;
    ByteChunk chunk;
    chunk.Put(version);
    if (version > 0x1015B) chunk.Put(static_cast<std::int32_t>(f.mColorSet));
    chunk.Put(static_cast<std::int32_t>(f.mLastPage));
    if (version >= 0x10101) chunk.Put(f.mInputAttenuator);
    PutStr(chunk, f.mPresetName);
    PutStr(chunk, f.mPresetFolderLabel);
    chunk.Put(static_cast<std::int32_t>(f.mPresetMenuFolder.empty() ? -1 : f.mPresetMenuIndex));
    PutStr(chunk, f.mPresetMenuFolder);
    chunk.Put(static_cast<std::int32_t>(f.mFocusedParam));
    for (std::int32_t m : f.mTapOnMask)
        chunk.Put(m);
    for (std::int32_t m : f.mStepFxMask)
        chunk.Put(m);
    for (int k = 0; k < 8; ++k) // a slot's two rows side by side
        chunk.Put(static_cast<std::int32_t>(f.mStepModMask[k % 2][k / 2]));
    chunk.Put(static_cast<std::uint8_t>(f.mDryKill ? 1 : 0));
    for (int id = 0; id < kNumParams; ++id)
        chunk.Put(host.Value(id));
    return chunk;
}

// Every parameter away from its default, within its range, not on a round number.
void Scramble(FakeStateHost& host)
{
    for (int id = 0; id < kNumParams; ++id)
        host.Set(id, host.Param(id)->min +
                         (host.Param(id)->max - host.Param(id)->min) * ((id * 37) % 101 + 0.5) / 101.5);
}

void FillFields(StateFields& f)
{
    std::tie(f.mColorSet, f.mLastPage, f.mInputAttenuator, f.mPresetName, f.mPresetFolderLabel,
             f.mPresetMenuFolder, f.mPresetMenuIndex, f.mFocusedParam) =
        std::tuple(5, 12, 0.37, "Tape Wobble", "U:Dub", "/User Presets/Dub/", 3, 123);
    for (int i = 0; i < 8; ++i)
        f.mTapOnMask[i] = 0x1234 + 0x1111 * i;
    for (int s = 0; s < 4; ++s)
        std::tie(f.mStepFxMask[s], f.mStepModMask[0][s], f.mStepModMask[1][s]) =
            std::tuple(0xF00F ^ (s << 4), 0x0101 << s, 0x8000 >> s);
    f.mDryKill = true;
}

// The writer lays the fields out as ChunkOf does for the present version, and every parameter and
// field comes back bit for bit: what the reader's host writes again is the same chunk.
TEST(StateChunkRoundTrip, FieldsInOrderComeBackBitForBit)
{
    FakeStateHost source;
    Scramble(source);
    FillFields(source.mFields);
    ByteChunk first;
    EXPECT_TRUE(WriteStateChunk(source, first));
    EXPECT_TRUE(first == ChunkOf(0x10200, source));

    FakeStateHost target;
    EXPECT_EQ(ReadStateChunk(target, first, 0), first.Size());
    ByteChunk second, withoutFolder;
    WriteStateChunk(target, second);
    EXPECT_TRUE(first == second);
    // A menu index without its folder is written as no selection.
    source.mFields.mPresetMenuFolder = "";
    WriteStateChunk(source, withoutFolder);
    EXPECT_TRUE(withoutFolder == ChunkOf(0x10200, source));
}

// The read derives the dry gain (0 under dry kill) and the attenuation, announces every id in order
// and the focused one last, hands the tap masks to the tap engine, and ends every load flag. Empty
// texts and no menu selection leave what is shown.
TEST(StateChunkRead, AppliesDerivedValuesAndCallsEveryIdInOrder)
{
    for (bool dryKill : {false, true})
    {
        SCOPED_TRACE(dryKill);
        FakeStateHost source, target;
        source.Set(kDryLevel, 40.0);
        std::tie(source.mFields.mDryKill, source.mFields.mInputAttenuator, source.mFields.mFocusedParam) =
            std::tuple(dryKill, 0.5, kFeedback3);
        for (int i = 0; i < 8; ++i)
            source.mFields.mTapOnMask[i] = 1 << i;
        FillFields(target.mFields);
        target.mFields.mDryLevel = 0.9;
        ReadStateChunk(target, ChunkOf(0x10200, source), 0);
        const StateFields& f = target.mFields;
        EXPECT_TRUE(std::abs(f.mDryLevel - (dryKill ? 0.0 : 0.4)) < 1e-12 && target.Value(kDryLevel) == 40.0)
            << f.mDryLevel;
        EXPECT_NEAR(f.mAttenuation, std::pow(10.0, -4.0 / 20.0), 1e-12);
        std::vector<int> order(kNumParams);
        std::iota(order.begin(), order.end(), 0);
        order.push_back(kFeedback3); // the focused parameter is refreshed last
        EXPECT_EQ(target.mChanges, order);
        EXPECT_EQ(target.mAppliedTapMasks, (std::vector<std::int32_t>{1, 2, 4, 8, 16, 32, 64, 128}));
        EXPECT_FALSE(f.mLoadingState || f.mRestoringState || f.mMigrationMarker != 0);
        EXPECT_EQ(f.mPresetName + f.mPresetFolderLabel + f.mPresetMenuFolder +
                      std::to_string(f.mPresetMenuIndex),
                  "Tape WobbleU:Dub/User Presets/Dub/3");
    }
}

// The read page becomes current, but only the large delay views (10 and up) are remembered. The
// attenuator position is cut to 0..1 (a NaN is the top) and its gain is whole decibels on an
// exponential curve from -12 dB at the bottom to 0 dB at the top, cut towards 0 dB.
TEST(StateChunkRead, PageMemoryAndAttenuatorFollowTheirLaws)
{
    // {page, remembered page, attenuator stored, position read, its whole dB}
    const std::tuple<std::int32_t, int, double, double, int> rows[] = {
        {0, 2, std::numeric_limits<double>::quiet_NaN(), 1.0, 0},
        {9, 2, -0.25, 0.0, -12},
        {10, 10, 0.0, 0.0, -12},
        {13, 13, 0.5, 0.5, -4},
        {17, 17, 0.25, 0.25, -7},
        {12, 12, 0.999, 0.999, -1},
        {11, 11, 1.5, 1.0, 0}};
    for (const auto& [page, memory, stored, position, db] : rows)
    {
        SCOPED_TRACE(::testing::Message() << "page " << page << ", attenuator " << stored);
        FakeStateHost source, host;
        std::tie(source.mFields.mLastPage, source.mFields.mInputAttenuator) = std::tuple(page, stored);
        std::tie(host.mFields.mPageMemory, host.mFields.mInputAttenuator) = std::tuple(15, 0.2);
        ReadStateChunk(host, ChunkOf(0x10200, source), 0);
        EXPECT_EQ(std::tuple(host.mFields.mPageMemory, host.mFields.mLastPage, host.mFields.mInputAttenuator,
                             InputAttenuatorDb(position)),
                  std::tuple(memory, page, position, db));
        EXPECT_NEAR(host.mFields.mAttenuation, std::pow(10.0, db / 20.0), 1e-12);
    }
}

// Versions below 0x833 are not read at all (the parameters go to their defaults, nothing else
// changes); newer ones than the present are refused with message 7 and change nothing. The ColorSet
// word exists after 0x1015B, the attenuator from 0x10101 (before, the position is the top); the
// rest is read from every version.
TEST(StateChunkRead, EachVersionReadsTheFieldsItHas)
{
    FakeStateHost source;
    source.Set(kFeedback1, 12.0);
    std::tie(source.mFields.mPresetName, source.mFields.mColorSet, source.mFields.mLastPage,
             source.mFields.mInputAttenuator) = std::tuple("Old", 7, 11, 0.5);
    for (std::int32_t version : {0x100, 0x832, 0x833, 0x10100, 0x10101, 0x1015B, 0x1015C, 0x10200, 0x10201})
    {
        SCOPED_TRACE(::testing::Message() << std::hex << version);
        FakeStateHost host;
        host.Set(kFeedback1, 77.0);
        StateFields& f = host.mFields;
        std::tie(f.mColorSet, f.mLastPage, f.mPresetName, f.mInputAttenuator) = std::tuple(3, 6, "Kept", 0.1);
        const ByteChunk chunk = ChunkOf(version, source);
        const int end = ReadStateChunk(host, chunk, 0);
        EXPECT_EQ(f.mMigrationMarker, 0);
        if (version < 0x833 || version > 0x10200)
        {
            const double old = version < 0x833 ? host.Param(kFeedback1)->defaultValue : 77.0;
            EXPECT_EQ(std::tuple(host.Value(kFeedback1), f.mLastPage, f.mPresetName),
                      std::tuple(old, 6, "Kept"));
            EXPECT_EQ(host.mMessages, std::vector<int>(version > 0x10200 ? 1 : 0, kMsgStateTooNew));
            EXPECT_TRUE(version < 0x833 || host.mChanges.empty()) << "a refused chunk announces nothing";
            continue;
        }
        EXPECT_EQ(std::tuple(end, host.Value(kFeedback1), f.mColorSet, f.mLastPage, f.mInputAttenuator,
                             f.mPresetName, host.mMessages.size()),
                  std::tuple(chunk.Size(), 12.0, version > 0x1015B ? 7 : 3, 11,
                             version >= 0x10101 ? 0.5 : 1.0, "Old", 0u));
    }
}

// A chunk cut inside the fourth tap mask: the fields before the cut are read, the later ones keep
// what they held, and the parameters go to their defaults.
TEST(StateChunkRead, ShortChunkKeepsLaterFieldsAndDefaultParameters)
{
    FakeStateHost source;
    FillFields(source.mFields);
    ByteChunk chunk;
    WriteStateChunk(source, chunk);
    chunk.Resize(4 + 4 + 4 + 8 + (4 + 11) + (4 + 5) + 4 + (4 + 18) + 4 + 3 * 4 + 2);

    FakeStateHost host;
    Scramble(host);
    host.mFields.mTapOnMask[3] = 0x66;
    host.mFields.mStepFxMask[0] = 0x77;
    EXPECT_EQ(ReadStateChunk(host, chunk, 0), -1);
    const StateFields& f = host.mFields;
    // The cut mask and the later fields keep what they held.
    EXPECT_EQ(std::tuple(f.mPresetName, f.mFocusedParam, f.mTapOnMask[2], f.mTapOnMask[3], f.mStepFxMask[0],
                         f.mDryKill),
              std::tuple("Tape Wobble", 123, source.mFields.mTapOnMask[2], 0x66, 0x77, false));
    for (int id = 0; id < kNumParams; ++id)
        ASSERT_EQ(host.Value(id), host.Param(id)->defaultValue) << "parameter " << id;
    EXPECT_EQ(host.mChanges.size(), static_cast<std::size_t>(kNumParams + 1));
}

// Effect indices above where a list grew move up one, cut to the list's range: the feedback list
// grew in 0x10161 (above 12), the PRE and POST lists in 0x10151 (above 17).
TEST(StateChunkMigration, EffectIndicesShiftWhereTheListsGrew)
{
    const double top = FakeStateHost().Param(kFX1FB)->max;
    const int ids[] = {kFX2FB, kFX3FB, kFX1PR, kFX3PR, kFX4PO, kFX2PO, kFX1FB};
    const std::vector<double> stored = {13, 12, 18, 17, 20, 3, top};
    const std::pair<std::int32_t, std::vector<double>> rows[] = {{0x10150, {14, 12, 19, 17, 21, 3, top}},
                                                                 {0x10160, {14, 12, 18, 17, 20, 3, top}},
                                                                 {0x10161, stored},
                                                                 {0x10200, stored}};
    for (const auto& [version, read] : rows)
    {
        FakeStateHost source, host;
        for (std::size_t k = 0; k < stored.size(); ++k)
            source.Set(ids[k], stored[k]);
        ReadStateChunk(host, ChunkOf(version, source), 0);
        for (std::size_t k = 0; k < stored.size(); ++k)
            EXPECT_EQ(host.Value(ids[k]), read[k]) << std::hex << version << std::dec << ", id " << ids[k];
    }
}

// Before 0x10151 the first slot that is TAPPED with the MIX route, and only that one, loses 30 % of
// its feedback; the scaled feedback is announced once more, from within the route's change.
TEST(StateChunkMigration, TappedMixLosesThirtyPercentFeedbackInTheFirstSuchSlotOnly)
{
    constexpr double kTapped = 3.0, kMix = 6.0, kDual = 0.0;
    using Three = std::array<double, 3>;
    // {version, the three slots' modes, routes, and feedback read}
    const std::tuple<std::int32_t, Three, Three, Three> rows[] = {
        {0x10150, {kTapped, kTapped, 0}, {kMix, kMix, kMix}, {35, 50, 50}},
        {0x10150, {kTapped, kTapped, kTapped}, {kDual, kMix, kDual}, {50, 35, 50}},
        {0x10200, {kTapped, kTapped, 0}, {kMix, kMix, kMix}, {50, 50, 50}}};
    for (const auto& [version, mode, route, read] : rows)
    {
        FakeStateHost source, host;
        for (int s = 0; s < 3; ++s)
            source.Set({{kDelayMode1 + s, mode[s]}, {kDelayRoute1 + s, route[s]}, {kFeedback1 + s, 50.0}});
        ReadStateChunk(host, ChunkOf(version, source), 0);
        for (int s = 0; s < 3; ++s)
        {
            SCOPED_TRACE(::testing::Message() << std::hex << version << std::dec << ", slot " << s + 1);
            EXPECT_NEAR(host.Value(kFeedback1 + s), read[s], 1e-12);
            const auto told = std::count(host.mChanges.begin(), host.mChanges.end(), kFeedback1 + s);
            EXPECT_EQ(told, read[s] == 35 ? 2 : 1);
            const auto routeTold = std::find(host.mChanges.begin(), host.mChanges.end(), kDelayRoute1 + s);
            EXPECT_TRUE(told == 1 || *(routeTold - 1) == kFeedback1 + s)
                << "announced from within the route's";
        }
        EXPECT_EQ(host.mFields.mMigrationMarker, 0);
    }
}

// The preset files, their migration, the preset menu, the save checks and the folders.
float AsFloat(double v)
{
    return static_cast<float>(v);
}

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
            ASSERT_EQ(AsFloat(target.Value(id)), AsFloat(source.Value(id)))
                << ParamKey(id) << " seed " << seed;
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
            ASSERT_TRUE(!whole || AsFloat(v) == AsFloat(source.Value(id))) << cut << " " << ParamKey(id);
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

// The preset menu, the save checks and the folders.
// A folder holding the given preset files, and a menu built from it.
struct Tree
{
    explicit Tree(std::initializer_list<std::string> paths)
    {
        for (const std::string& path : paths)
            dir.Write(path, "x");
        menu.Rebuild(dir.Path());
    }
    TempFolder dir;
    IPresetMenu menu;
};

// Items of a menu as "text" for files, "[text]" for sub-menus and the header texts as they are.
std::vector<std::string> Items(const IPresetMenu& menu, int index)
{
    std::vector<std::string> items;
    for (const PresetMenuItem& item : menu.Menus()[static_cast<std::size_t>(index)].items)
        items.push_back(item.subMenu >= 0 ? "[" + item.text + "]" : item.text);
    return items;
}

// Both sections, folders and files sorted regardless of case; an empty or missing tree gives the two
// headers and no step.
TEST(PresetBrowser, MenuHoldsBothSectionsSortedRegardlessOfCase)
{
    Tree tree{"/User Presets/beta.txt",           "/User Presets/Alpha.txt",
              "/User Presets/zed/b.txt",          "/User Presets/Mine/c.txt",
              "/Factory Presets/Spaces/Hall.txt", "/Factory Presets/Basics/echo.txt",
              "/Factory Presets/Basics/Dub.txt",  "/Elsewhere/ignored.txt"};
    IPresetMenu& menu = tree.menu;
    EXPECT_EQ(Items(menu, 0),
              (std::vector<std::string>{"--  User  Presets  --", "Alpha", "beta", "[Mine]", "[zed]",
                                        "--  Factory  Presets  --", "[Basics]", "[Spaces]"}));
    EXPECT_EQ(Items(menu, menu.MenuOfFolder("/Factory Presets/Basics/")),
              (std::vector<std::string>{"Dub", "echo"}));
    EXPECT_EQ(menu.FlatList(),
              (std::vector<std::string>{"/User Presets/Alpha", "/User Presets/beta", "/User Presets/Mine/c",
                                        "/User Presets/zed/b", "/Factory Presets/Basics/Dub",
                                        "/Factory Presets/Basics/echo", "/Factory Presets/Spaces/Hall"}));
    EXPECT_EQ(std::tuple(menu.MenuOfFolder("/User Presets/"), menu.MenuOfFolder("/Factory Presets/"),
                         menu.MenuOfFolder("/Elsewhere/")),
              std::tuple(0, 0, -1));

    tree.menu.Rebuild(tree.dir.Path() + "/missing");
    EXPECT_EQ(Items(tree.menu, 0),
              (std::vector<std::string>{"--  User  Presets  --", "--  Factory  Presets  --"}));
    EXPECT_FALSE(tree.menu.Step(true).has_value());
    EXPECT_TRUE(tree.menu.SelectedPath().empty());
}

TEST(PresetBrowser, StepWrapsBothWaysAndStartsAtAnEndWithoutSelection)
{
    Tree tree{"/User Presets/a.txt", "/User Presets/B.txt", "/Factory Presets/F/c.txt"};
    IPresetMenu& menu = tree.menu;
    EXPECT_EQ(menu.Step(false), "/Factory Presets/F/c"); // nothing selected: backward is the last
    EXPECT_EQ(menu.Step(true), "/User Presets/a");       // past the last: the first
    EXPECT_EQ(menu.Step(true), "/User Presets/B");
    EXPECT_EQ(menu.Step(false), "/User Presets/a");
    EXPECT_EQ(menu.Step(false), "/Factory Presets/F/c"); // before the first: the last
    EXPECT_EQ(menu.SelectedPath(), "/Factory Presets/F/c");
    EXPECT_EQ(menu.SelectedMenuFolder(), "/Factory Presets/F/");
    EXPECT_EQ(menu.SelectedIndex(), 0);

    menu.ClearSelection();
    EXPECT_EQ(menu.Step(true), "/User Presets/a");
    EXPECT_EQ(menu.SelectedMenuFolder(), "/User Presets/"); // the root menu's own name
    EXPECT_EQ(menu.SelectedIndex(), 1);                     // behind the header
}

// Hidden files and folders are never listed, nor a file whose full path reaches 260 characters.
TEST(PresetBrowser, HiddenEntriesAndOverlongPathsAreNeverListed)
{
    const std::string prefix = "/User Presets/";
    TempFolder dir;
    const std::string longName = std::string(260 - dir.Path().size() - prefix.size() - 4, 'L') + ".txt";
    for (const std::string& path :
         {std::string(".DS_Store"), std::string(".hidden/Secret.txt"), std::string("Deep/.git/x.txt"),
          std::string("Seen.txt"), longName, longName.substr(1)})
        dir.Write(prefix + path, "x");
    std::vector<PresetEntry> folders, files;
    ScanFolder(dir.Path(), "/", folders, files);
    std::vector<std::string> names;
    for (const PresetEntry& f : files)
        names.push_back(f.folder + f.name);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names,
              (std::vector<std::string>{prefix + longName.substr(1, longName.size() - 5), prefix + "Seen"}));
    for (const PresetEntry& f : folders)
        EXPECT_EQ(f.folder.find("/."), std::string::npos) << f.folder;
}

TEST(PresetBrowser, SelectionChecksExactlyOneFileAndSurvivesARebuild)
{
    Tree tree{"/User Presets/a.txt", "/Factory Presets/F/b.txt"};
    IPresetMenu& menu = tree.menu;
    EXPECT_FALSE(menu.SelectItem(0, 0)); // a header
    EXPECT_FALSE(menu.SelectPath("/User Presets/none.txt"));
    ASSERT_TRUE(menu.SelectPath("/Factory Presets/F/b.txt"));
    ASSERT_TRUE(menu.SelectPath("/User Presets/a"));
    int checked = 0;
    for (const PresetMenuData& m : menu.Menus())
        checked += std::count_if(m.items.begin(), m.items.end(), [](const auto& i) { return i.checked; });
    EXPECT_EQ(checked, 1);
    tree.dir.Write("/User Presets/0 first.txt", "x");
    menu.Rebuild(tree.dir.Path());
    EXPECT_EQ(menu.SelectedPath() + std::to_string(menu.SelectedIndex()), "/User Presets/a2");
}

// Each row: the path chosen (below /p/Presets unless it starts elsewhere), whether the write works,
// the answer, the path written and the path relative to the presets folder afterwards.
TEST(PresetSaving, ChosenPathsAreCheckedBeforeAndAfterWriting)
{
    using R = PresetSaveResult;
    const std::string base = "/p/Presets";
    const std::tuple<std::string, bool, R, std::string, std::string> cases[] = {
        {"/User Presets/Mine/Dub.txt", true, R::kSaved, "/User Presets/Mine/Dub.txt",
         "/User Presets/Mine/Dub.txt"},
        {"/User Presets/Dub", true, R::kSaved, "/User Presets/Dub.txt", "/User Presets/Dub.txt"},
        {"/user presets/Dub.txt", true, R::kSaved, "/user presets/Dub.txt", "/user presets/Dub.txt"},
        {"/Factory Presets/Basics/Dub.txt", true, R::kFactoryTree, "", ""},
        {"/FACTORY PRESETS/Dub.txt", true, R::kFactoryTree, "", ""},
        {"/User Presets/Dub.txt", false, R::kWriteFailed, "/User Presets/Dub.txt", ""},
        {"!/home/me/Dub.txt", true, R::kOutsideUserTree, "!/home/me/Dub.txt", ""},
        {"/User Presets/.txt", true, R::kNoName, "", ""},
        {"/User Presets/   ", true, R::kNoName, "", ""},
        {"!", true, R::kNoName, "", ""},
    };
    const auto full = [&](const std::string& path) {
        return path.empty() ? path : path[0] == '!' ? path.substr(1) : base + path;
    };
    for (const auto& [chosen, writes, answer, written, relative] : cases)
    {
        std::string wrote;
        PresetSaveTarget target;
        const R result = SavePresetFile(
            PresetFolders::FromBase(base), full(chosen),
            [&, writes = writes](const std::string& path)
            {
                wrote = path;
                return writes;
            },
            target);
        EXPECT_EQ(std::tuple(result, wrote, result == R::kSaved ? target.relativePath : ""),
                  std::tuple(answer, full(written), relative))
            << chosen;
    }
}

TEST(PresetFolders, EnvironmentPicksTheBaseFolder)
{
    const auto with = [](const char* own, const char* xdg, const char* home)
    {
        own ? setenv("QUORVEX_PRESET_DIR", own, 1) : unsetenv("QUORVEX_PRESET_DIR");
        setenv("XDG_DATA_HOME", xdg, 1);
        setenv("HOME", home, 1);
        return PresetFolders::FromEnvironment();
    };
    const std::string home = std::getenv("HOME") ? std::getenv("HOME") : "";
    const PresetFolders own = with("/tmp/qp/", "/x", "/h");
    EXPECT_EQ(own.base + "|" + own.user + "|" + own.factory,
              "/tmp/qp|/tmp/qp/User Presets|/tmp/qp/factory Presets");
    EXPECT_EQ(with(nullptr, "/x", "/h").base, "/x/qelmar-audio/Quorvex/Presets");
    EXPECT_EQ(with("", "", "/h").base, "/h/.local/share/qelmar-audio/Quorvex/Presets");
    unsetenv("QUORVEX_PRESET_DIR");
    unsetenv("XDG_DATA_HOME");
    setenv("HOME", home.c_str(), 1);
}
} // namespace

// The last message shown waits until dismissed; a code outside the table gives the lookup's
// failure text, as the user has always seen it.
TEST(PendingMessage, KeepsTheLastMessageUntilDismissed)
{
    PendingMessage message;
    message.Show(kMsgNoPresetFolder);
    message.Show(kMsgStateTooNew);
    EXPECT_TRUE(message.IsPending());
    EXPECT_EQ(message.Text(),
              "Saved data is newer than the actual QUORVEX version!\nCan't restore saved state!");
    message.Dismiss();
    EXPECT_FALSE(message.IsPending());
    for (int code : {2, -1, 1000})
    {
        message.Show(code);
        EXPECT_EQ(message.Text(), "invalid map<K, T> key") << code;
    }
}
