#include <gtest/gtest.h>

#include <vector>

#include "params/ParamDispatch.h"

namespace
{
struct Target
{
    std::vector<ParamChange> seen;
};
using Dispatch = ParamDispatch<Target>;
void Record(Target& t, const ParamChange& c)
{
    t.seen.push_back(c);
}
} // namespace

// Overlapping rows leave their common ids without an owner instead of letting the order decide;
// ids a row owns without a handler are accepted and do nothing.
TEST(ParamDispatch, OverlapsAreRefusedAndStoredOnlyRowsAreQuiet)
{
    const Dispatch::Row first[] = {{"a", 10, 4, Record}, {"stored", 20, 2, nullptr}};
    const Dispatch::Row second[] = {{"b", 13, 3, Record}};
    const std::span<const Dispatch::Row> tables[] = {first, second};
    const Dispatch dispatch{tables};
    Target t;
    EXPECT_TRUE(dispatch.Apply(t, 12, 5.0));
    ASSERT_EQ(t.seen.size(), 1u);
    EXPECT_EQ(t.seen[0].member, 2);
    EXPECT_EQ(t.seen[0].value, 5.0);
    EXPECT_EQ(dispatch.OwnerCount(13), 2);
    EXPECT_FALSE(dispatch.Apply(t, 13, 1.0));
    EXPECT_TRUE(dispatch.Apply(t, 15, 1.0));
    EXPECT_EQ(t.seen.back().member, 2);
    EXPECT_TRUE(dispatch.Apply(t, 21, 1.0));
    EXPECT_FALSE(dispatch.Apply(t, 9, 1.0));
    EXPECT_EQ(t.seen.size(), 2u);
}
