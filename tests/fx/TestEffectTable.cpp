#include "dsp/TimeBase.h"
#include "fx/EffectTable.h"
#include "fx/FxParamLaw.h"
#include "fx/MasterFxLaws.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace
{
const std::set<int> kTypeIds{0,  1,  2,  3,  4,  5,  6,  14, 15, 16, 17, 18, 19, 20, 21,
                             22, 23, 24, 29, 30, 31, 32, 33, 34, 35, 36, 37, 56, 57};

struct RateGuard
{
    ~RateGuard() { SetTimeBase(44100.0); }
};
} // namespace

TEST(EffectTable, HoldsExactlyTheTypeIds)
{
    for (int id = -2; id < 70; ++id)
    {
        const FxTypeInfo* info = FindFxType(id);
        ASSERT_EQ(info != nullptr, kTypeIds.count(id) == 1) << id;
        if (info != nullptr)
        {
            EXPECT_EQ(info->id, id);
        }
    }
    EXPECT_EQ(FxTypeTable().size(), kTypeIds.size());
    // Stored words with their trailing blanks and misspellings.
    EXPECT_STREQ(FindFxType(5)->names[0], "PITCH1 COARSE ");
    EXPECT_STREQ(FindFxType(34)->names[4], "FRQ SHIFT SPREAD");
    EXPECT_STREQ(FindFxType(57)->label, "VARAIBLE LPHP");
}

TEST(EffectTable, MenusLeadToTheirIds)
{
    for (int kind : {kFxMenuPre, kFxMenuFeedback, kFxMenuPost})
        for (int id : FxMenuIds(kind))
            EXPECT_EQ(kTypeIds.count(id), 1u) << id;

    EXPECT_EQ(FxTypeFromMenu(kFxMenuFeedback, 0), 0);
    EXPECT_EQ(FxTypeFromMenu(kFxMenuFeedback, 5), 15);  // "SATURATE" with its mode list
    EXPECT_EQ(FxTypeFromMenu(kFxMenuFeedback, 11), 32); // "MULTI 12dB" of the feedback path
    // The feedback menu's last label leads to the variable filter; the compressor is out of reach.
    EXPECT_STREQ(FxMenuLabels(kFxMenuFeedback)[13], "COMPRESSOR");
    EXPECT_EQ(FxTypeFromMenu(kFxMenuFeedback, 13), 57);
    for (int i = -1; i < 25; ++i)
        EXPECT_NE(FxTypeFromMenu(kFxMenuFeedback, i), 37) << i;
    EXPECT_EQ(FxTypeFromMenu(kFxMenuFeedback, 14), 0);

    EXPECT_EQ(FxTypeFromMenu(kFxMenuPost, 12), 6);
    EXPECT_EQ(FxTypeFromMenu(kFxMenuPost, 22), 37);
    EXPECT_EQ(FxTypeFromMenu(kFxMenuPre, 23), 0);
    EXPECT_EQ(FxTypeFromMenu(7, 1), 0);
}

TEST(EffectTable, P5IsMixForAllButFourTypes)
{
    for (int id : kTypeIds)
        EXPECT_EQ(FxP5IsMix(id), id != 0 && id != 6 && id != 35 && id != 36 && id != 37) << id;
    EXPECT_FALSE(FxP5IsMix(99));
}

TEST(FxParamLaw, ListsTakeTheIndexAtTheirSteps)
{
    // Variable filter slopes: 4 entries, steps at thirds of the knob.
    EXPECT_EQ(FxModuleValue(57, 1, 0.0), 0.0);
    EXPECT_EQ(FxModuleValue(57, 1, 33.0), 0.0);
    EXPECT_EQ(FxModuleValue(57, 1, 100.0 / 3.0), 1.0);
    EXPECT_EQ(FxModuleValue(57, 3, 100.0), 3.0);
    // Wave shape: 8 modes, index = trunc(7x).
    for (int k = 0; k <= 7; ++k)
    {
        EXPECT_EQ(FxModuleValue(6, 0, 100.0 * k / 7.0), k);
        if (k > 0)
        {
            EXPECT_EQ(FxModuleValue(6, 0, 100.0 * k / 7.0 - 0.1), k - 1);
        }
    }
    EXPECT_EQ(FxModuleValue(29, 3, 100.0), 10.0);
    EXPECT_EQ(FxModuleValue(56, 3, 100.0), 5.0);
    // A knob stays a fraction, clamped.
    EXPECT_DOUBLE_EQ(FxModuleValue(29, 0, 37.5), 0.375);
    EXPECT_EQ(FxModuleValue(29, 0, -5.0), 0.0);

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
    EXPECT_EQ(FxModuleValue(56, 3, FindFxType(56)->defaults[3] * 100.0), 1.0);
}

TEST(MasterFxLaws, ReverbKnobs)
{
    RateGuard guard;
    SetTimeBase(48000.0);
    const MasterFxSetting hallSize = MasterFxParam(40, 0, 100.0);
    EXPECT_EQ(hallSize.id, 0);
    EXPECT_DOUBLE_EQ(hallSize.value, 30.0);
    // Room pre-delay: 50 % is 100 ms, 4800 samples at 48 kHz.
    const MasterFxSetting roomPre = MasterFxParam(41, 1, 50.0);
    EXPECT_EQ(roomPre.id, 1);
    EXPECT_NEAR(roomPre.value, 4800.0, 1e-9);
    EXPECT_NEAR(MasterFxParam(40, 1, 100.0).value, 24000.0, 1e-9);
    EXPECT_NEAR(MasterFxParam(40, 2, 100.0).value, 0.61568910657988, 1e-12);
    EXPECT_NEAR(MasterFxParam(41, 3, 100.0).value, 0.9, 1e-12);
    // Ambience: size 1.2 .. 5.2, decay with its small floor, damp falling from the top.
    EXPECT_NEAR(MasterFxParam(39, 0, 0.0).value, 1.2, 1e-12);
    EXPECT_NEAR(MasterFxParam(39, 0, 100.0).value, 5.2, 1e-12);
    EXPECT_NEAR(MasterFxParam(39, 1, 100.0).value, std::sqrt(0.999) + 0.0005, 1e-12);
    EXPECT_NEAR(MasterFxParam(39, 3, 100.0).value, 1.0 - 0.768621786840241, 1e-12);
    EXPECT_EQ(MasterFxDisplay(40, 0, 100.0), "30.0 s");
    EXPECT_EQ(MasterFxDisplay(41, 1, 50.0), "100 ms");
}

TEST(MasterFxLaws, EqualiserAndDriveKnobs)
{
    // Shelves take amplitude 10^(dB / 40), peaks the knob fraction (18 dB at 1).
    const MasterFxSetting low = MasterFxParam(42, 0, 100.0);
    EXPECT_EQ(low.id, 0);
    EXPECT_NEAR(low.value, std::pow(10.0, 18.0 / 40.0), 1e-12);
    EXPECT_NEAR(MasterFxParam(42, 3, 0.0).value, std::pow(10.0, -18.0 / 40.0), 1e-12);
    EXPECT_DOUBLE_EQ(MasterFxParam(42, 2, 100.0).value, 1.0);
    EXPECT_DOUBLE_EQ(MasterFxParam(42, 1, 100.0).value, 5000.0);
    EXPECT_DOUBLE_EQ(MasterFxParam(43, 0, 25.0).value, 0.25);
    EXPECT_DOUBLE_EQ(MasterFxParam(43, 3, 100.0).value, 20000.0);
    EXPECT_DOUBLE_EQ(MasterFxParam(44, 1, 100.0).value, 1000.0);
    EXPECT_DOUBLE_EQ(MasterFxParam(44, 3, 100.0).value, 7500.0);
    EXPECT_NEAR(MasterFxParam(44, 2, 75.0).value, std::pow(10.0, 9.0 / 40.0), 1e-12);
    EXPECT_EQ(MasterFxDisplay(42, 0, 100.0), "+18.0 dB");

    // Drive: mode = trunc(v / 20).
    EXPECT_EQ(MasterFxParam(45, 3, 100.0).value, 5.0);
    EXPECT_EQ(MasterFxParam(45, 3, 99.9).value, 4.0);
    EXPECT_DOUBLE_EQ(MasterFxParam(45, 1, 40.0).value, 0.4);
    EXPECT_EQ(MasterFxDisplay(45, 3, 100.0), "36db-P");

    // OFF, unknown types and knobs beyond the fourth set nothing.
    EXPECT_EQ(MasterFxParam(38, 0, 50.0).id, -1);
    EXPECT_EQ(MasterFxParam(46, 0, 50.0).id, -1);
    EXPECT_EQ(MasterFxParam(40, 4, 50.0).id, -1);
}
