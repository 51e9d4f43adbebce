#include "modulators/WaveMenu.h"
#include "params/IParamRecord.h"
#include "params/ParamCatalogue.h"
#include "params/ParamDispatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

// The catalogue is stored data that presets and hosts depend on: its structure is checked by
// invariants, and every field of every record (names and so the numbering of the families
// included) by one golden digest. Then the laws of one record (the normalised power curve,
// quantising) and of the dispatch of changes to their owners; the records' texts are checked as
// hosts read and type them, through the bundle.

namespace
{
class Catalogue : public ::testing::Test
{
  protected:
    void SetUp() override { InitParams(mParams, kWaveMenuNames); }
    std::vector<std::unique_ptr<IParamRecord>> mParams;
};

// FNV-1a over a canonical text of every record: name, type, range, step, shape, default, unit,
// group, flags, precision and display texts, doubles to 17 digits.
std::uint64_t Digest(const std::vector<std::unique_ptr<IParamRecord>>& params)
{
    std::uint64_t h = 1469598103934665603ull;
    const auto add = [&h](const std::string& s)
    {
        for (unsigned char c : s)
            h = (h ^ c) * 1099511628211ull;
    };
    char line[512];
    for (const auto& p : params)
    {
        std::snprintf(line, sizeof line, "%s|%d|%.17g|%.17g|%.17g|%.17g|%.17g|%s|%s|%d%d%d%d|%d|", p->name,
                      int(p->type), p->min, p->max, p->step, p->shape, p->defaultValue, p->label, p->group,
                      p->linkedFlag, p->canAutomate, p->negateDisplay, p->mapping.has_value(),
                      p->displayPrecision);
        add(line);
        for (const auto& t : p->displayTexts)
            add(std::to_string(t.value) + "=" + t.text + ";");
        add("\n");
    }
    return h;
}

// Changes to the catalogue must be on purpose: when one is, check the changed records against the
// intended table and replace the digest by the one the failure prints.
constexpr std::uint64_t kCatalogueDigest = 0x48c38a92e16c5bfcull;

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

TEST_F(Catalogue, EveryRecordIsConsistentAndMatchesTheGoldenDigest)
{
    ASSERT_EQ(mParams.size(), std::size_t(kNumParams));
    std::map<std::string, std::vector<int>> byName;
    for (int id = 0; id < kNumParams; ++id)
    {
        const IParamRecord& p = *mParams[id];
        SCOPED_TRACE(p.name);
        EXPECT_TRUE(p.min < p.max && p.defaultValue >= p.min && p.defaultValue <= p.max);
        EXPECT_EQ(double(p.value), p.defaultValue);
        if (p.type == IParamRecord::kTypeEnum)
        {
            EXPECT_EQ(p.max, double(p.displayTexts.size()) - 1.0);
            for (std::size_t k = 0; k < p.displayTexts.size(); ++k)
                EXPECT_EQ(p.displayTexts[k].value, int(k));
        }
        byName[p.name].push_back(id);
    }
    // Preset keys are the names without blanks (the preset files' own texts pin them); no key
    // outside the catalogue.
    EXPECT_EQ(ParamKeys().size(), std::size_t(kNumParams));
    EXPECT_EQ(std::string(ParamKey(-1)) + std::string(ParamKey(kNumParams)), "");
    // The five pairs of logic doubles that carry module three's names are the only repeats.
    std::vector<int> lowerOfPairs;
    for (const auto& [name, ids] : byName)
    {
        ASSERT_LE(ids.size(), 2u) << name;
        if (ids.size() == 2) lowerOfPairs.push_back(ids[0]);
    }
    std::sort(lowerOfPairs.begin(), lowerOfPairs.end());
    EXPECT_EQ(lowerOfPairs, (std::vector<int>{1021, 1029, 1037, 1041, 1045}));
    char digest[32];
    std::snprintf(digest, sizeof digest, "0x%016llxull", static_cast<unsigned long long>(Digest(mParams)));
    EXPECT_EQ(Digest(mParams), kCatalogueDigest) << "catalogue changed; digest now " << digest;
}

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
