// The state chunk: bytes and strings, the fields in order, version gates and migration.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

#include "FakeStateHost.h"
#include "params/ParamCatalogue.h"
#include "params/ParamIds.h"
#include "state/InputAttenuator.h"
#include "state/Messages.h"

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

// The read derives the dry gain (0 under dry kill), announces every id in order
// and the focused one last, hands the tap masks to the tap engine, and ends every load flag. Empty
// texts and no menu selection leave what is shown.
TEST(StateChunkRead, AppliesDerivedValuesAndCallsEveryIdInOrder)
{
    for (bool dryKill : {false, true})
    {
        SCOPED_TRACE(dryKill);
        FakeStateHost source, target;
        source.Set(kDryLevel, 40.0);
        std::tie(source.mFields.mDryKill, source.mFields.mFocusedParam) = std::tuple(dryKill, kFeedback3);
        for (int i = 0; i < 8; ++i)
            source.mFields.mTapOnMask[i] = 1 << i;
        FillFields(target.mFields);
        target.mFields.mDryLevel = 0.9;
        ReadStateChunk(target, ChunkOf(0x10200, source), 0);
        const StateFields& f = target.mFields;
        EXPECT_TRUE(std::abs(f.mDryLevel - (dryKill ? 0.0 : 0.4)) < 1e-12 && target.Value(kDryLevel) == 40.0)
            << f.mDryLevel;
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
    const std::pair<std::int32_t, std::vector<double>> rows[] = {
        {0x10150, {14, 12, 19, 17, 21, 3, top}}, {0x10160, {14, 12, 18, 17, 20, 3, top}}, {0x10161, stored}};
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
} // namespace
