#include "params/IParamRecord.h"
#include "params/ParamCatalogue.h"
#include "params/ParamDispatch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <utility>
#include <vector>

// The laws of one record (the normalised power curve, quantising) and of the dispatch of changes to
// their owners. The records the catalogue builds are pinned by its digest, and their texts checked
// as hosts read and type them, through the bundle.

namespace
{
IParamRecord MakeDouble(double def, double min, double max, double step, double shape)
{
    IParamRecord p;
    p.InitDouble("D", def, min, max, step, "u", "", shape);
    return p;
}

IParamRecord MakeInt(int def, int min, int max)
{
    IParamRecord p;
    p.InitInt("I", def, min, max);
    return p;
}

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

// x = min + (max - min) n^shape both ways (the shapes in use are checked as hosts read them, through
// the bundle); values outside the range give its ends, and an empty range is widened by a step, so
// neither gives a NaN.
TEST(ParamRecord, NormalisationFollowsThePowerCurveAndStaysFinite)
{
    const IParamRecord p = MakeDouble(1, 1, 4000, 0.01, 3);
    EXPECT_NEAR(p.GetNonNormalized(0.5), 1.0 + 3999.0 / 8.0, 1e-12);
    EXPECT_NEAR(p.GetNormalized(1.0 + 3999.0 / 8.0), 0.5, 1e-14);
    EXPECT_EQ(std::tuple(p.GetNormalized(-4.0), p.GetNormalized(4005.0)), std::tuple(0.0, 1.0));
    const IParamRecord empty = MakeDouble(5, 5, 5, 0.1, 1);
    EXPECT_DOUBLE_EQ(empty.max, 5.1);
    EXPECT_EQ(empty.GetNormalized(5.0), 0.0);
    EXPECT_EQ(MakeInt(3, 3, 2).max, 4.0);
}

TEST(ParamRecord, IntegersRoundHalfUpAndAreCutAboveOnly)
{
    // {min, max, normalised, value}: half rounds up; above the top the value is cut, below the
    // bottom it is not. Doubles (max 0) are not snapped to their step, only clamped.
    const std::tuple<int, int, double, double> rows[] = {
        {0, 1, 0.5, 1},    {0, 1, 0.4999, 0}, {0, 4, 0.375, 2},           {0, 4, 0.625, 3}, {0, 4, 0.6, 2},
        {1, 16, 1.04, 16}, {0, 1, -0.75, -1}, {0, 0, 0.123456, 19.75296}, {0, 0, 1.1, 160}};
    for (const auto& [min, max, n, value] : rows)
    {
        IParamRecord p = max > 0 ? MakeInt(min, min, max) : MakeDouble(50, 0, 160, 0.1, 1);
        p.SetNormalized(n);
        EXPECT_NEAR(double(p.value), value, 1e-12) << min << ".." << max << " at " << n;
    }
    // A switch shows "on", and off as a number: its empty off text doesn't count.
    IParamRecord b;
    b.InitBool("B", true);
    EXPECT_EQ(b.GetDisplayForHost(0, false) + "|" + b.GetDisplayForHost(1, false), "0|on");
}

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
