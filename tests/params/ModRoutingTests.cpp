#include "params/ModRouting.h"
#include "params/ParamCatalogue.h"
#include "params/ParamIds.h"
#include "params/ValueLists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <tuple>

namespace
{

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
