#include "dsp/TimeBase.h"
#include "fx/EffectTable.h"
#include "fx/FxFactory.h"
#include "fx/FxParamLaw.h"
#include "fx/MasterFxLaws.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <tuple>

namespace
{
const std::set<int> kTypeIds{0,  1,  2,  3,  4,  5,  6,  14, 15, 16, 17, 18, 19, 20, 21,
                             22, 23, 24, 29, 30, 31, 32, 33, 34, 35, 36, 37, 56, 57};

} // namespace

// The table holds exactly the stored type ids, and the factory builds a left and a right module for
// each of them but OFF, and a master module for the master types alone.
TEST(EffectTable, HoldsExactlyTheTypeIdsAndTheFactoryBuildsThem)
{
    for (int id = -2; id < 70; ++id)
    {
        const FxTypeInfo* info = FindFxType(id);
        ASSERT_EQ(info != nullptr, kTypeIds.count(id) == 1) << id;
        EXPECT_TRUE(info == nullptr || info->id == id) << id;
        for (bool isRight : {false, true})
        {
            const std::unique_ptr<DSPShell> m = CreateFxModule(id, isRight);
            ASSERT_EQ(m != nullptr, info != nullptr && id != 0) << id;
            EXPECT_TRUE(m == nullptr || m->mChannelSign == (isRight ? -1.0 : 1.0)) << id;
        }
        EXPECT_EQ(CreateMasterFxModule(id) != nullptr, id >= 39 && id <= 45) << id;
    }
    EXPECT_EQ(FxTypeTable().size(), kTypeIds.size());
    // Stored words with their trailing blanks and misspellings.
    EXPECT_STREQ(FindFxType(5)->names[0], "PITCH1 COARSE ");
    EXPECT_STREQ(FindFxType(34)->names[4], "FRQ SHIFT SPREAD");
    EXPECT_STREQ(FindFxType(57)->label, "VARAIBLE LPHP");
}

TEST(EffectTable, MenusLeadToTheirIds)
{
    // {menu, index, id}: the feedback menu's last label leads to the variable filter, and its
    // hidden extra id (the compressor) is out of reach; indices past the labels give OFF.
    const std::tuple<int, int, int> rows[] = {
        {kFxMenuFeedback, 0, 0},   {kFxMenuFeedback, 5, 15}, {kFxMenuFeedback, 11, 32},
        {kFxMenuFeedback, 13, 57}, {kFxMenuFeedback, 14, 0}, {kFxMenuPost, 12, 6},
        {kFxMenuPost, 22, 37},     {kFxMenuPre, 23, 0},      {7, 1, 0}};
    for (const auto& [kind, index, id] : rows)
        EXPECT_EQ(FxTypeFromMenu(kind, index), id) << kind << " " << index;
    for (int i = -1; i < 25; ++i)
        EXPECT_NE(FxTypeFromMenu(kFxMenuFeedback, i), 37) << i;
}

// Which types route a modulation of P5 to the slot's mix: all but OFF, WAVE SHAPE, COMB, VOWEL and
// the compressor, whose P5 is a parameter of their own.
TEST(EffectTable, P5IsMixForAllButFourTypes)
{
    for (int id : kTypeIds)
        EXPECT_EQ(FxP5IsMix(id), id != 0 && id != 6 && id != 35 && id != 36 && id != 37) << id;
    EXPECT_FALSE(FxP5IsMix(99));
}

TEST(FxParamLaw, ListsTakeTheIndexAtTheirSteps)
{
    // {type, knob, percent, value}: a list of n + 1 entries takes entry trunc(n x) (variable
    // filter slopes: 4 entries; wave shape: 8); a knob stays a fraction, clamped.
    const std::tuple<int, int, double, double> rows[] = {
        {57, 1, 0.0, 0.0},  {57, 1, 33.0, 0.0},   {57, 1, 100.0 / 3.0, 1.0}, {57, 3, 100.0, 3.0},
        {6, 0, 0.0, 0.0},   {6, 0, 14.2, 0.0},    {6, 0, 100.0 / 7.0, 1.0},  {6, 0, 600.0 / 7.0 - 0.1, 5.0},
        {6, 0, 100.0, 7.0}, {29, 3, 100.0, 10.0}, {56, 3, 100.0, 5.0},       {29, 0, 37.5, 0.375},
        {29, 0, -5.0, 0.0},
    };
    for (const auto& [type, knob, percent, value] : rows)
        EXPECT_DOUBLE_EQ(FxModuleValue(type, knob, percent), value) << type << " " << percent;

    // Every list default lands inside its list, on the entry its fraction names.
    for (const FxTypeInfo& info : FxTypeTable())
        for (int p = 0; p < kFxParams; ++p)
        {
            if (!info.isList[p]) continue;
            const double index = FxModuleValue(info.id, p, info.defaults[p] * 100.0);
            EXPECT_NEAR(index, std::round(info.defaults[p] * info.listCount[p]), 1e-12)
                << info.id << " " << p;
            EXPECT_EQ(info.listLabels[p].size(), static_cast<std::size_t>(info.listCount[p] + 1));
        }
}

TEST(MasterFxLaws, KnobsMapToTheirModuleValues)
{
    // {type, knob, percent, module parameter, value} at 48 kHz; the equalisers' gains and
    // frequencies are measured through their modules with the factory.
    const std::tuple<int, int, double, int, double> rows[] = {
        {41, 1, 50.0, 1, 4800.0},                     // room pre-delay: 100 ms
        {40, 1, 100.0, 1, 24000.0},                   // hall pre-delay: 500 ms
        {40, 2, 100.0, 2, 0.61568910657988},          // high-pass knob at the top
        {41, 3, 100.0, 3, 0.9},                       // room damping
        {39, 0, 0.0, 0, 1.2},                         // ambience size, from 1.2
        {39, 1, 100.0, 1, std::sqrt(0.999) + 0.0005}, // decay with its small floor
        {45, 3, 100.0, 3, 5.0},                       // drive mode = trunc(v / 20)
        {45, 3, 99.9, 3, 4.0},                        //
        {38, 0, 50.0, -1, 0.0},                       // OFF, unknown types and knobs beyond the
        {46, 0, 50.0, -1, 0.0},                       // fourth set nothing
        {40, 4, 50.0, -1, 0.0},                       //
    };
    SetTimeBase(48000.0);
    for (const auto& [type, knob, percent, id, value] : rows)
    {
        const MasterFxSetting s = MasterFxParam(type, knob, percent);
        EXPECT_EQ(s.id, id) << type << " knob " << knob;
        EXPECT_NEAR(id >= 0 ? s.value : 0.0, value, 1e-9 * std::max(1.0, value)) << type << " knob " << knob;
    }
    SetTimeBase(44100.0);
    EXPECT_EQ(MasterFxDisplay(40, 0, 100.0), "30.0 s");
    EXPECT_EQ(MasterFxDisplay(41, 1, 50.0), "100 ms");
    EXPECT_EQ(MasterFxDisplay(42, 0, 100.0), "+18.0 dB");
    EXPECT_EQ(MasterFxDisplay(45, 3, 100.0), "36db-P");
}
