#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "FakeStateHost.h"
#include "params/ParamIds.h"
#include "state/InputAttenuator.h"
#include "state/Messages.h"

namespace
{
// Fields 5 to 14 of a chunk, which no version gate touches.
struct Tail
{
    std::string name;
    std::string label;
    std::int32_t menuIndex = -1;
    std::string menuFolder;
    std::int32_t focused = -1;
    std::int32_t tap[8] = {};
    std::int32_t stepFx[4] = {};
    std::int32_t stepMod[2][4] = {};
    std::uint8_t dryKill = 0;
    std::vector<double> values;
};

void PutTail(ByteChunk& chunk, const Tail& t)
{
    PutStr(chunk, t.name);
    PutStr(chunk, t.label);
    chunk.Put(t.menuIndex);
    PutStr(chunk, t.menuFolder);
    chunk.Put(t.focused);
    for (auto m : t.tap)
        chunk.Put(m);
    for (auto m : t.stepFx)
        chunk.Put(m);
    for (int s = 0; s < 4; ++s)
    {
        chunk.Put(t.stepMod[0][s]);
        chunk.Put(t.stepMod[1][s]);
    }
    chunk.Put(t.dryKill);
    for (double v : t.values)
        chunk.Put(v);
}

std::vector<double> Defaults()
{
    FakeStateHost host;
    std::vector<double> values;
    for (int id = 0; id < kNumParams; ++id)
        values.push_back(host.Param(id)->defaultValue);
    return values;
}

Tail MakeTail(const std::string& name = "")
{
    Tail tail;
    tail.name = name;
    tail.values = Defaults();
    return tail;
}

// A chunk of any version with the fields that version has: ColorSet after 0x1015B, the
// attenuator from 0x10101.
ByteChunk OldChunk(std::int32_t version, const Tail& t, std::int32_t colorSet = 0, std::int32_t lastPage = 2,
                   double attenuator = 1.0)
{
    ByteChunk chunk;
    chunk.Put(version);
    if (version > 0x1015B) chunk.Put(colorSet);
    chunk.Put(lastPage);
    if (version >= 0x10101) chunk.Put(attenuator);
    PutTail(chunk, t);
    return chunk;
}

// Every parameter away from its default, within its range, not on a round number.
void Scramble(FakeStateHost& host)
{
    for (int id = 0; id < kNumParams; ++id)
    {
        IParamRecord* p = host.Param(id);
        const double frac = ((id * 37) % 101 + 0.5) / 101.5;
        p->value = p->min + (p->max - p->min) * frac;
    }
}

void FillFields(StateFields& f)
{
    f.mColorSet = 5;
    f.mLastPage = 12;
    f.mInputAttenuator = 0.37;
    f.mPresetName = "Tape Wobble";
    f.mPresetFolderLabel = "U:Dub";
    f.mPresetMenuFolder = "/User Presets/Dub/";
    f.mPresetMenuIndex = 3;
    f.mFocusedParam = 123;
    for (int i = 0; i < 8; ++i)
        f.mTapOnMask[i] = 0x1234 + 0x1111 * i;
    for (int s = 0; s < 4; ++s)
    {
        f.mStepFxMask[s] = 0xF00F ^ (s << 4);
        f.mStepModMask[0][s] = 0x0101 << s;
        f.mStepModMask[1][s] = 0x8000 >> s;
    }
    f.mDryKill = true;
}

template <typename T> T At(const ByteChunk& chunk, int pos)
{
    T value{};
    EXPECT_GE(chunk.Get(value, pos), 0) << "no value at " << pos;
    return value;
}

// ---- Writing -----------------------------------------------------------------------------------

TEST(StateChunkWrite, FieldsInOrderWithTheStepRowsOfASlotInterleaved)
{
    FakeStateHost host;
    FillFields(host.mFields);
    host.Set(0, 0.0);
    host.Set(kBP, 0.25);
    ByteChunk chunk;
    EXPECT_TRUE(WriteStateChunk(host, chunk));

    EXPECT_EQ(At<std::int32_t>(chunk, 0), 0x10200);
    EXPECT_EQ(At<std::int32_t>(chunk, 4), 5);
    EXPECT_EQ(At<std::int32_t>(chunk, 8), 12);
    EXPECT_EQ(At<double>(chunk, 12), 0.37);
    int pos = 20;
    EXPECT_EQ(At<std::int32_t>(chunk, pos), 11);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(chunk.Data()) + pos + 4, 11), "Tape Wobble");
    pos += 4 + 11;
    EXPECT_EQ(At<std::int32_t>(chunk, pos), 5); // "U:Dub"
    pos += 4 + 5;
    EXPECT_EQ(At<std::int32_t>(chunk, pos), 3);
    pos += 4;
    EXPECT_EQ(At<std::int32_t>(chunk, pos), 18); // "/User Presets/Dub/"
    pos += 4 + 18;
    EXPECT_EQ(At<std::int32_t>(chunk, pos), 123);
    pos += 4;
    for (int i = 0; i < 8; ++i, pos += 4)
        EXPECT_EQ(At<std::int32_t>(chunk, pos), 0x1234 + 0x1111 * i);
    for (int s = 0; s < 4; ++s, pos += 4)
        EXPECT_EQ(At<std::int32_t>(chunk, pos), 0xF00F ^ (s << 4));
    for (int s = 0; s < 4; ++s)
    {
        EXPECT_EQ(At<std::int32_t>(chunk, pos), 0x0101 << s) << "row 0 of slot " << s;
        EXPECT_EQ(At<std::int32_t>(chunk, pos + 4), 0x8000 >> s) << "row 1 of slot " << s;
        pos += 8;
    }
    EXPECT_EQ(At<std::uint8_t>(chunk, pos), 1);
    pos += 1;
    EXPECT_EQ(At<double>(chunk, pos), 0.0) << "id 0 follows the dry-kill byte";
    EXPECT_EQ(At<double>(chunk, pos + 8 * kBP), 0.25);
    EXPECT_EQ(chunk.Size(), pos + 8 * kNumParams);
}

TEST(StateChunkWrite, NoMenuSelectionIsWrittenAsMinusOne)
{
    FakeStateHost host;
    host.mFields.mPresetMenuIndex = 6; // stale index without a folder
    ByteChunk chunk;
    WriteStateChunk(host, chunk);
    // version, colour, page, attenuator, two empty strings, then the menu index.
    EXPECT_EQ(At<std::int32_t>(chunk, 4 + 4 + 4 + 8 + 4 + 4), -1);
}

// ---- Round trip --------------------------------------------------------------------------------

TEST(StateChunkRoundTrip, EverythingComesBackBitForBit)
{
    FakeStateHost source;
    Scramble(source);
    FillFields(source.mFields);
    ByteChunk first;
    WriteStateChunk(source, first);

    FakeStateHost target;
    const int end = ReadStateChunk(target, first, 0);
    EXPECT_EQ(end, first.Size());

    for (int id = 0; id < kNumParams; ++id)
    {
        const double a = source.Value(id);
        const double b = target.Value(id);
        EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0) << "parameter " << id;
    }
    const StateFields& s = source.mFields;
    const StateFields& t = target.mFields;
    EXPECT_EQ(t.mColorSet, s.mColorSet);
    EXPECT_EQ(t.mLastPage, s.mLastPage);
    EXPECT_EQ(t.mInputAttenuator, s.mInputAttenuator);
    EXPECT_EQ(t.mPresetName, s.mPresetName);
    EXPECT_EQ(t.mPresetFolderLabel, s.mPresetFolderLabel);
    EXPECT_EQ(t.mPresetMenuFolder, s.mPresetMenuFolder);
    EXPECT_EQ(t.mPresetMenuIndex, s.mPresetMenuIndex);
    EXPECT_EQ(t.mFocusedParam, s.mFocusedParam);
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(t.mTapOnMask[i], s.mTapOnMask[i]) << i;
    for (int slot = 0; slot < 4; ++slot)
    {
        EXPECT_EQ(t.mStepFxMask[slot], s.mStepFxMask[slot]) << slot;
        EXPECT_EQ(t.mStepModMask[0][slot], s.mStepModMask[0][slot]) << slot;
        EXPECT_EQ(t.mStepModMask[1][slot], s.mStepModMask[1][slot]) << slot;
    }
    EXPECT_EQ(t.mDryKill, true);

    ByteChunk second;
    WriteStateChunk(target, second);
    EXPECT_TRUE(first == second);
}

TEST(StateChunkRead, AppliesDerivedValuesAndCallsEveryIdInOrder)
{
    FakeStateHost source;
    source.Set(kDryLevel, 40.0);
    source.mFields.mInputAttenuator = 0.5;
    source.mFields.mFocusedParam = kFeedback3;
    for (int i = 0; i < 8; ++i)
        source.mFields.mTapOnMask[i] = 1 << i;
    ByteChunk chunk;
    WriteStateChunk(source, chunk);

    FakeStateHost target;
    target.mFields.mDryLevel = 0.9;
    ReadStateChunk(target, chunk, 0);
    EXPECT_NEAR(target.mFields.mDryLevel, 0.4, 1e-12);
    EXPECT_NEAR(target.mFields.mAttenuation, std::pow(10.0, -4.0 / 20.0), 1e-12);

    ASSERT_EQ(target.mChanges.size(), static_cast<std::size_t>(kNumParams + 1));
    for (int id = 0; id < kNumParams; ++id)
        ASSERT_EQ(target.mChanges[id], id);
    EXPECT_EQ(target.mChanges.back(), kFeedback3) << "the focused parameter is refreshed last";

    ASSERT_EQ(target.mAppliedTapMasks.size(), 8u);
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(target.mAppliedTapMasks[i], 1 << i);
    EXPECT_FALSE(target.mFields.mLoadingState);
    EXPECT_FALSE(target.mFields.mRestoringState);
    EXPECT_EQ(target.mFields.mMigrationMarker, 0);
}

TEST(StateChunkRead, DryKillSilencesTheDryPathWhateverDryLevelSays)
{
    FakeStateHost source;
    source.Set(kDryLevel, 80.0);
    source.mFields.mDryKill = true;
    ByteChunk chunk;
    WriteStateChunk(source, chunk);

    FakeStateHost target;
    target.mFields.mDryLevel = 0.5;
    ReadStateChunk(target, chunk, 0);
    EXPECT_TRUE(target.mFields.mDryKill);
    EXPECT_EQ(target.mFields.mDryLevel, 0.0);
    EXPECT_EQ(target.Value(kDryLevel), 80.0);
}

TEST(StateChunkRead, EmptyTextsAndNoMenuLeaveWhatIsShown)
{
    FakeStateHost source;
    ByteChunk chunk;
    WriteStateChunk(source, chunk);

    FakeStateHost target;
    target.mFields.mPresetName = "Current";
    target.mFields.mPresetFolderLabel = "F:Rhythmic";
    target.mFields.mPresetMenuFolder = "/Factory Presets/Rhythmic/";
    target.mFields.mPresetMenuIndex = 4;
    ReadStateChunk(target, chunk, 0);
    EXPECT_EQ(target.mFields.mPresetName, "Current");
    EXPECT_EQ(target.mFields.mPresetFolderLabel, "F:Rhythmic");
    EXPECT_EQ(target.mFields.mPresetMenuFolder, "/Factory Presets/Rhythmic/");
    EXPECT_EQ(target.mFields.mPresetMenuIndex, 4);
}

// ---- Page memory and attenuator ----------------------------------------------------------------

TEST(StateChunkRead, PageMemoryKeepsOnlyTheLargeDelayViews)
{
    const Tail tail = MakeTail();
    const struct
    {
        std::int32_t stored;
        int memory;
    } cases[] = {{0, 2}, {2, 2}, {9, 2}, {10, 10}, {13, 13}, {17, 17}};
    for (const auto& c : cases)
    {
        FakeStateHost host;
        host.mFields.mPageMemory = 15;
        ReadStateChunk(host, OldChunk(0x10200, tail, 0, c.stored), 0);
        EXPECT_EQ(host.mFields.mPageMemory, c.memory) << "stored page " << c.stored;
        EXPECT_EQ(host.mFields.mLastPage, c.stored) << "the read page becomes current";
    }
}

TEST(StateChunkRead, AttenuatorIsCutAndItsGainFollowsTheLaw)
{
    const Tail tail = MakeTail();
    const struct
    {
        double stored;
        double position;
        int db;
    } cases[] = {{std::numeric_limits<double>::quiet_NaN(), 1.0, 0},
                 {1.5, 1.0, 0},
                 {-0.25, 0.0, -12},
                 {0.0, 0.0, -12},
                 {0.5, 0.5, -4},
                 {1.0, 1.0, 0}};
    for (const auto& c : cases)
    {
        FakeStateHost host;
        host.mFields.mInputAttenuator = 0.2;
        ReadStateChunk(host, OldChunk(0x10200, tail, 0, 2, c.stored), 0);
        EXPECT_EQ(host.mFields.mInputAttenuator, c.position) << c.stored;
        EXPECT_NEAR(host.mFields.mAttenuation, std::pow(10.0, c.db / 20.0), 1e-12) << c.stored;
    }
}

// ---- Versions ----------------------------------------------------------------------------------

TEST(StateChunkRead, NewerVersionIsRefusedWithMessageSevenAndChangesNothing)
{
    FakeStateHost source;
    Scramble(source);
    FillFields(source.mFields);
    ByteChunk chunk;
    WriteStateChunk(source, chunk);
    const std::int32_t newer = 0x10201;
    std::memcpy(chunk.Data(), &newer, sizeof newer);

    FakeStateHost target;
    target.Set(kFeedback2, 33.0);
    target.mFields.mLastPage = 5;
    target.mFields.mColorSet = 1;
    target.mFields.mTapOnMask[3] = 0x77;
    ReadStateChunk(target, chunk, 0);

    ASSERT_EQ(target.mMessages.size(), 1u);
    EXPECT_EQ(target.mMessages[0], kMsgStateTooNew);
    EXPECT_EQ(target.Value(kFeedback2), 33.0);
    EXPECT_EQ(target.Value(kFeedback1), target.Param(kFeedback1)->defaultValue);
    EXPECT_EQ(target.mFields.mLastPage, 5);
    EXPECT_EQ(target.mFields.mColorSet, 1);
    EXPECT_EQ(target.mFields.mTapOnMask[3], 0x77);
    EXPECT_TRUE(target.mChanges.empty());
}

TEST(StateChunkRead, VersionBelowTheOldestKeepsAllDefaultsAndReadsNoFurther)
{
    Tail tail = MakeTail("Old");
    tail.values[kFeedback1] = 12.0;
    for (std::int32_t version : {0x100, 0x832})
    {
        FakeStateHost host;
        host.Set(kFeedback1, 77.0);
        host.mFields.mLastPage = 6;
        host.mFields.mPresetName = "Kept";
        ReadStateChunk(host, OldChunk(version, tail, 0, 11, 0.0), 0);
        EXPECT_EQ(host.Value(kFeedback1), host.Param(kFeedback1)->defaultValue) << version;
        EXPECT_EQ(host.mFields.mLastPage, 6) << version;
        EXPECT_EQ(host.mFields.mPresetName, "Kept") << version;
        EXPECT_EQ(host.mFields.mMigrationMarker, 0) << version;
    }
    // The oldest readable version is read.
    FakeStateHost host;
    ReadStateChunk(host, OldChunk(0x833, tail, 0, 11, 0.0), 0);
    EXPECT_EQ(host.mFields.mPresetName, "Old");
    EXPECT_EQ(host.Value(kFeedback1), 12.0);
}

TEST(StateChunkRead, WithoutColorSetTheNextWordIsTheLastPage)
{
    Tail tail = MakeTail("NoColour");
    ByteChunk chunk;
    chunk.Put(std::int32_t{0x1015B});
    chunk.Put(std::int32_t{12}); // LastPage
    chunk.Put(0.5);              // InputAttenuator
    PutTail(chunk, tail);

    FakeStateHost host;
    host.mFields.mColorSet = 3;
    EXPECT_EQ(ReadStateChunk(host, chunk, 0), chunk.Size());
    EXPECT_EQ(host.mFields.mColorSet, 3);
    EXPECT_EQ(host.mFields.mLastPage, 12);
    EXPECT_EQ(host.mFields.mPageMemory, 12);
    EXPECT_EQ(host.mFields.mInputAttenuator, 0.5);
    EXPECT_EQ(host.mFields.mPresetName, "NoColour");

    // One step newer has the word.
    ByteChunk withColour;
    withColour.Put(std::int32_t{0x1015C});
    withColour.Put(std::int32_t{7});
    withColour.Put(std::int32_t{12});
    withColour.Put(0.5);
    PutTail(withColour, tail);
    FakeStateHost newer;
    EXPECT_EQ(ReadStateChunk(newer, withColour, 0), withColour.Size());
    EXPECT_EQ(newer.mFields.mColorSet, 7);
    EXPECT_EQ(newer.mFields.mLastPage, 12);
}

TEST(StateChunkRead, WithoutAttenuatorFieldThePositionIsTheTop)
{
    Tail tail = MakeTail("NoTrim");
    ByteChunk chunk;
    chunk.Put(std::int32_t{0x10100});
    chunk.Put(std::int32_t{3}); // LastPage
    PutTail(chunk, tail);

    FakeStateHost host;
    host.mFields.mColorSet = 4;
    host.mFields.mInputAttenuator = 0.1;
    host.mFields.mAttenuation = 0.3;
    EXPECT_EQ(ReadStateChunk(host, chunk, 0), chunk.Size());
    EXPECT_EQ(host.mFields.mInputAttenuator, 1.0);
    EXPECT_EQ(host.mFields.mAttenuation, 1.0);
    EXPECT_EQ(host.mFields.mPresetName, "NoTrim");
    EXPECT_EQ(host.mFields.mColorSet, 4);
    EXPECT_EQ(host.mFields.mLastPage, 3);

    // One step newer has it.
    ByteChunk withTrim;
    withTrim.Put(std::int32_t{0x10101});
    withTrim.Put(std::int32_t{3});
    withTrim.Put(0.0);
    PutTail(withTrim, tail);
    FakeStateHost newer;
    EXPECT_EQ(ReadStateChunk(newer, withTrim, 0), withTrim.Size());
    EXPECT_EQ(newer.mFields.mInputAttenuator, 0.0);
    EXPECT_EQ(newer.mFields.mPresetName, "NoTrim");
}

TEST(StateChunkRead, ShortChunkKeepsLaterFieldsAndDefaultParameters)
{
    FakeStateHost source;
    Scramble(source);
    FillFields(source.mFields);
    ByteChunk full;
    WriteStateChunk(source, full);
    // Cut inside the fourth tap mask: the header up to the focused parameter and three masks survive.
    const int cut = 4 + 4 + 4 + 8 + (4 + 11) + (4 + 5) + 4 + (4 + 18) + 4 + 3 * 4 + 2;
    ByteChunk chunk = full;
    chunk.Resize(cut);

    FakeStateHost host;
    Scramble(host);
    host.mFields.mTapOnMask[2] = 0x55;
    host.mFields.mTapOnMask[3] = 0x66;
    host.mFields.mStepFxMask[0] = 0x77;
    host.mFields.mStepModMask[1][3] = 0x88;
    host.mFields.mDryKill = false;
    EXPECT_EQ(ReadStateChunk(host, chunk, 0), -1);

    EXPECT_EQ(host.mFields.mPresetName, "Tape Wobble");
    EXPECT_EQ(host.mFields.mFocusedParam, 123);
    EXPECT_EQ(host.mFields.mTapOnMask[0], source.mFields.mTapOnMask[0]);
    EXPECT_EQ(host.mFields.mTapOnMask[1], source.mFields.mTapOnMask[1]);
    EXPECT_EQ(host.mFields.mTapOnMask[2], source.mFields.mTapOnMask[2]);
    EXPECT_EQ(host.mFields.mTapOnMask[3], 0x66) << "the cut mask keeps what it held";
    EXPECT_EQ(host.mFields.mStepFxMask[0], 0x77);
    EXPECT_EQ(host.mFields.mStepModMask[1][3], 0x88);
    EXPECT_FALSE(host.mFields.mDryKill);
    for (int id = 0; id < kNumParams; ++id)
        ASSERT_EQ(host.Value(id), host.Param(id)->defaultValue) << "parameter " << id;
    EXPECT_EQ(host.mChanges.size(), static_cast<std::size_t>(kNumParams + 1));
}

// ---- Migration ---------------------------------------------------------------------------------

struct FxCase
{
    int id;
    double stored;
};

std::vector<double> ReadFx(std::int32_t version, const std::vector<FxCase>& cases)
{
    Tail tail = MakeTail();
    for (const auto& c : cases)
        tail.values[c.id] = c.stored;
    FakeStateHost host;
    ReadStateChunk(host, OldChunk(version, tail), 0);
    std::vector<double> result;
    for (const auto& c : cases)
        result.push_back(host.Value(c.id));
    return result;
}

TEST(StateChunkMigration, EffectIndicesShiftWhereTheListsGrew)
{
    const std::vector<FxCase> cases = {{kFX2FB, 13}, {kFX3FB, 12}, {kFX1PR, 18},
                                       {kFX3PR, 17}, {kFX4PO, 20}, {kFX2PO, 3}};
    EXPECT_EQ(ReadFx(0x10150, cases), (std::vector<double>{14, 12, 19, 17, 21, 3}));
    // Between the two growths only the feedback list moves.
    EXPECT_EQ(ReadFx(0x10160, cases), (std::vector<double>{14, 12, 18, 17, 20, 3}));
    // From then on nothing moves, the present version included.
    EXPECT_EQ(ReadFx(0x10161, cases), (std::vector<double>{13, 12, 18, 17, 20, 3}));
    EXPECT_EQ(ReadFx(0x10200, cases), (std::vector<double>{13, 12, 18, 17, 20, 3}));
}

TEST(StateChunkMigration, ShiftedIndexIsCutToTheListRange)
{
    FakeStateHost probe;
    const double top = probe.Param(kFX1FB)->max;
    EXPECT_EQ(ReadFx(0x10150, {{kFX1FB, top}}), (std::vector<double>{top}));
}

TEST(StateChunkMigration, TappedMixLosesThirtyPercentFeedbackInTheFirstSuchSlotOnly)
{
    constexpr double kTapped = 3.0;
    constexpr double kMix = 6.0;
    Tail tail = MakeTail();
    for (int slot : {0, 1})
    {
        tail.values[kDelayMode1 + slot] = kTapped;
        tail.values[kDelayRoute1 + slot] = kMix;
        tail.values[kFeedback1 + slot] = 50.0;
    }
    // Slot 3 is MIX but not TAPPED.
    tail.values[kDelayRoute3] = kMix;
    tail.values[kFeedback3] = 50.0;

    FakeStateHost host;
    ReadStateChunk(host, OldChunk(0x10150, tail), 0);
    EXPECT_NEAR(host.Value(kFeedback1), 35.0, 1e-12);
    EXPECT_EQ(host.Value(kFeedback2), 50.0);
    EXPECT_EQ(host.Value(kFeedback3), 50.0);
    EXPECT_EQ(host.mFields.mMigrationMarker, 0);

    // The scaled feedback is announced once more, from within the route's change.
    EXPECT_EQ(std::count(host.mChanges.begin(), host.mChanges.end(), kFeedback1), 2);
    EXPECT_EQ(std::count(host.mChanges.begin(), host.mChanges.end(), kFeedback2), 1);
    const auto route = std::find(host.mChanges.begin(), host.mChanges.end(), kDelayRoute1);
    ASSERT_NE(route, host.mChanges.begin());
    EXPECT_EQ(*(route - 1), kFeedback1);

    // The present version is not migrated.
    FakeStateHost current;
    ReadStateChunk(current, OldChunk(0x10200, tail), 0);
    EXPECT_EQ(current.Value(kFeedback1), 50.0);
}

TEST(StateChunkMigration, TappedMixInSlotTwoAloneIsScaled)
{
    Tail tail = MakeTail();
    tail.values[kDelayMode2] = 3.0;
    tail.values[kDelayRoute2] = 6.0;
    tail.values[kFeedback2] = 40.0;
    tail.values[kDelayMode3] = 3.0; // tapped, not MIX
    tail.values[kFeedback3] = 40.0;
    FakeStateHost host;
    ReadStateChunk(host, OldChunk(0x10150, tail), 0);
    EXPECT_NEAR(host.Value(kFeedback2), 28.0, 1e-12);
    EXPECT_EQ(host.Value(kFeedback3), 40.0);
}
} // namespace
