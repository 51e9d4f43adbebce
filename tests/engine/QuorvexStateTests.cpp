#include <gtest/gtest.h>

#include <cstring>

#include "EngineRig.h"
#include "state/ByteChunk.h"

// The state chunk as the whole plug-in reads it: old chunks pass the plug-in's own migration, newer
// ones are refused, damaged values are cut to their ranges (dry kill's hold on a restored state is
// checked where the user sets it, on the options page). The chunk's layout,
// version gates and round trip are tested in the state suite, the plug-in's bytes with the loaded
// bundle.

using namespace engine_rig;

namespace
{
// An old chunk (version 0x10150: no ColorSet word) passes the plug-in's parameter handler with the
// migration on: effect indices above the lists' growth move up, the first TAPPED + MIX slot loses
// 30 % feedback. The present version is taken as it stands; a newer one is refused with message 7
// and leaves everything as it was.
TEST(Quorvex, ChunksOfOtherVersionsMigrateOrAreRefused)
{
    Engine source;
    for (int id = 0; id < kNumParams; ++id) // a fresh instance holds every default
        ASSERT_EQ(source.Get(id), source.Plug().GetParam(id)->defaultValue) << id;
    // Each row: id, stored, migrated.
    const std::tuple<int, double, double> rows[] = {
        {kFX2FB, 13, 14},    {kFX1PR, 18, 19},     {kFX3PR, 17, 17},
        {kDelayMode1, 3, 3}, {kDelayRoute1, 6, 6}, {kFeedback1, 50, 35},
        {kDelayMode2, 3, 3}, {kDelayRoute2, 6, 6}, {kFeedback2, 50, 50}};
    for (const auto& [id, stored, migrated] : rows)
        source.Plug().GetParam(id)->value = stored;
    ByteChunk present;
    ASSERT_TRUE(source.Plug().SerializeState(present));
    ByteChunk old;
    old.Put(std::int32_t{0x10150});
    old.PutBytes(present.Data() + 8, present.Size() - 8); // without the ColorSet word

    Engine migrated, current;
    EXPECT_EQ(migrated.Plug().UnserializeState(old, 0), old.Size());
    current.Plug().UnserializeState(present, 0);
    for (const auto& [id, stored, after] : rows)
    {
        EXPECT_NEAR(migrated.Get(id), after, 1e-12) << id;
        EXPECT_EQ(current.Get(id), stored) << id;
    }
    EXPECT_EQ(migrated.Plug().Fields().mMigrationMarker, 0);
    // After an old chunk, later changes are not migrated.
    migrated.Set(kFX4FB, 13);
    EXPECT_EQ(migrated.Get(kFX4FB), 13);

    ByteChunk newer = present;
    const std::int32_t version = 0x10300;
    std::memcpy(newer.Data(), &version, sizeof version);
    Engine refusing;
    refusing.Plug().GetParam(kFeedback2)->value = 12;
    refusing.Plug().UnserializeState(newer, 0);
    EXPECT_TRUE(refusing.Plug().Message().IsPending());
    EXPECT_EQ(refusing.Plug().Message().Code(), 7);
    EXPECT_EQ(refusing.Get(kFeedback1), refusing.Plug().GetParam(kFeedback1)->defaultValue);
    EXPECT_EQ(refusing.Get(kFeedback2), 12);
}

// An infinity in a chunk still says which end of the range was meant: it is cut to the range like
// a finite value. A NaN says nothing and counts as 0, cut to the range.
TEST(Quorvex, InfinitiesInAChunkAreCutToTheRange)
{
    Engine source;
    ByteChunk chunk;
    ASSERT_TRUE(source.Plug().SerializeState(chunk));
    const double inf = INFINITY, nan = NAN;
    // Each row: id, stored, read.
    const std::tuple<int, double, double> rows[] = {
        {kDelayLopass1, inf, 20000.0}, {kDelayLopass2, -inf, 200.0}, {kFeedback1, inf, 160.0},
        {kDelayTimeL1, -inf, 1.0},     {kDelayLopass3, nan, 200.0},  {kLevel1, nan, 0.0}};
    for (const auto& [id, stored, read] : rows)
        std::memcpy(chunk.Data() + chunk.Size() - (kNumParams - id) * static_cast<int>(sizeof(double)),
                    &stored, sizeof stored);
    Engine target;
    target.Plug().UnserializeState(chunk, 0);
    for (const auto& [id, stored, read] : rows)
        EXPECT_EQ(target.Get(id), read) << id;
}

} // namespace
