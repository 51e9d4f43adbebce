#include "modulators/WaveMenu.h"
#include "params/IParamRecord.h"
#include "params/ModRouting.h"
#include "params/ParamCatalogue.h"
#include "params/ParamDispatch.h"
#include "params/ParamIds.h"
#include "params/ValueLists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

// The catalogue is stored data that presets and hosts depend on: its structure is checked by
// invariants, and every field of every record (names and so the numbering of the families
// included) by one golden digest. Then the laws of one record (the normalised power curve,
// quantising), of the dispatch of changes to their owners and of the modulation routing; the
// records' texts are checked as hosts read and type them, through the bundle.

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

// Modulation routing over a bank of sources.
struct Rig
{
    ModSourceBank bank;
    ModRouting routing{bank};
    // Routes a source index and a depth percent to one member of a family.
    void Wire(ModFamilyId family, int member, int source, double percent)
    {
        const ModFamily& fam = GetModFamily(family);
        routing.OnParamChange(fam.sourceId + member, source);
        routing.OnParamChange(fam.depthId + member, percent);
    }
};
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
    EXPECT_EQ(Digest(mParams), kCatalogueDigest)
        << "catalogue changed; digest now 0x" << std::hex << Digest(mParams);
}

// x = min + (max - min) n^shape (the way back, and the shapes in use, are checked as hosts read
// them, through the bundle); values outside the range give its ends, and an empty range is widened
// by a step, so neither gives a NaN.
TEST(ParamRecord, NormalisationFollowsThePowerCurveAndStaysFinite)
{
    const IParamRecord p = MakeDouble(1, 1, 4000, 0.01, 3);
    EXPECT_NEAR(p.GetNonNormalized(0.5), 1.0 + 3999.0 / 8.0, 1e-12);
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

// Each family turns its depth percent into a depth by its own law: feedback and effect parameters
// by the cube, pan linearly, the taps' time by half the cube.
TEST(ModRouting, EachFamilyHasItsDepthLaw)
{
    Rig rig;
    const std::tuple<int, double, ModFamilyId, int, double> rows[] = {
        {kFeedbackModDepth2, -50.0, kModFeedback, 1, -0.125},
        {kPanningModDepth3, -50.0, kModPanning, 2, -0.5},
        {kDelayTapsTimeModDepth1, 50.0, kModTapsTime, 0, 0.0625},
        {kFXParam4ModDepthPO3, 20.0, kModFxParam4, 2 * 4 + 2, 0.008}};
    for (const auto& [id, percent, family, member, depth] : rows)
    {
        rig.routing.OnParamChange(id, percent);
        EXPECT_NEAR(rig.routing.Route(family, member).Depth(), depth, 1e-15) << id;
    }
}

TEST(ModRouting, SourceTableAndParameterValues)
{
    Rig rig;
    // Index 0 and anything outside 1..14 is no source; the 14 others are distinct buffers.
    for (int i : {int(kModSourceOff), -1, int(kNumModSources)})
        EXPECT_EQ(rig.bank.SourceBuffer(i), nullptr) << i;
    std::set<const double*> seen;
    for (int i = 1; i < kNumModSources; ++i)
        seen.insert(rig.bank.SourceBuffer(i));
    EXPECT_EQ(seen.size() - seen.count(nullptr), 14u);

    // "GATE3" (value 7) on slot 2's input gain, full depth: base 1 + 1 x 0.75.
    rig.Wire(kModInputGain, 1, kModSourceGate1 + 2, 100.0);
    rig.bank.Buffer(kModSourceGate1 + 2)[0] = 0.75;
    EXPECT_DOUBLE_EQ(rig.routing.InputGainTarget(1, 1.0), 1.75);
    EXPECT_DOUBLE_EQ(rig.routing.InputGainTarget(0, 1.0), 1.0); // slot 1 has nothing routed

    // "OFF" with depth 100 leaves the base; the depth is kept for when a source returns.
    for (const auto& [source, gain] : {std::pair{int(kModSourceOff), 1.0}, {kModSourceGate1 + 2, 1.75}})
    {
        rig.routing.OnParamChange(kInputGainModSource2, source);
        EXPECT_DOUBLE_EQ(rig.routing.InputGainTarget(1, 1.0), gain) << source;
    }
}

TEST(ModRouting, BlockRateDestinationsKeepTheirLimits)
{
    // A full-depth source at +1 or -1 on each destination: feedback within 0..160 %, pan within
    // -1..1, send within 0..1, level within 0..4.
    Rig rig;
    for (int slot = 0; slot < 4; ++slot)
        for (ModFamilyId family : {kModFeedback, kModPanning, kModSend, kModLevel})
            rig.Wire(family, slot, kModSourceLogic1, 100.0);
    double* logic = rig.bank.Buffer(kModSourceLogic1);
    struct Row
    {
        double source, feedback, pan, send, level;
    };
    for (const Row r : {Row{1.0, 1.6, 1.0, 1.0, 4.0}, Row{-1.0, 0.0, -1.0, 0.0, 0.0}})
    {
        logic[0] = r.source;
        EXPECT_EQ(rig.routing.FeedbackAmount(0, 1.0), r.feedback) << r.source;
        EXPECT_EQ(rig.routing.PanTarget(1, 0.5 * r.source), r.pan) << r.source;
        EXPECT_EQ(rig.routing.SendLevel(2, 0.5), r.send) << r.source;
        EXPECT_EQ(rig.routing.LevelTarget(3, r.source > 0 ? 3.5 : 0.5), r.level) << r.source;
    }
    logic[0] = 1.0;
    EXPECT_DOUBLE_EQ(rig.routing.FeedbackAmount(0, 0.5), 1.5); // inside the range: the plain sum

    // Feedback stays in range even with nothing routed (the master scale can push the base to 2.1
    // or below 0).
    Rig bare;
    EXPECT_EQ(std::tuple(bare.routing.FeedbackAmount(0, 2.1), bare.routing.FeedbackAmount(0, -0.5)),
              std::tuple(1.6, 0.0));
    // A spread never shortens a delay below the shortest one (the spread's law and its depth at
    // each rate are heard in the engine suite's ModWiring).
    rig.Wire(kModDelaySpread, 2, kModSourceLogic1, 100.0);
    EXPECT_EQ(rig.routing.DelayTimes(2, 10.0, 10.0).right, ModRouting::kShortestDelay);
}

// Every ModSource parameter of the catalogue pairs with its depth and the parameter it drives,
// checked by name; the families whose names don't match keep their pairing by id.
TEST(ModRouting, FamilyPairingByCatalogueNames)
{
    int sources = 0;
    for (int id = 0; id < kNumParams; ++id)
    {
        const std::string name = ParamName(id);
        const ModParamRef ref = FindModParam(id);
        const bool isSourceName = name.find("ModSource") != std::string::npos ||
                                  (name.starts_with("Logic") && name.find(" Source") != std::string::npos &&
                                   name.find("Depth") == std::string::npos);
        EXPECT_EQ(ref.Found() && ref.isSource, isSourceName) << name;
        EXPECT_TRUE(!ref.Found() || ref.isSource || name.find("Depth") != std::string::npos) << name;
        sources += isSourceName;
    }
    EXPECT_EQ(sources, 13 * 4 + 5 * 12 + 3 * 4);

    // The per-slot and effect families pair by id offsets, which the routing table asserts at compile
    // time; the logic families don't: their depth drives the module's depth, their sources none.
    const ModParamRef depthSource = FindModParam(kLogic4DepthModSource);
    const ModFamily& fam = GetModFamily(depthSource.family);
    EXPECT_EQ(ParamName(fam.valueId + depthSource.member) + "|" + ParamName(fam.depthId + depthSource.member),
              "Logic4 Depth|Logic4 Depth Mod");
    EXPECT_EQ(std::tuple(FindModParam(kLogic2Source2).family, FindModParam(kLogic2Source2).member),
              std::tuple(kModLogicSource2, 1));
}
