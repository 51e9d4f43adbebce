#include "modulators/WaveMenu.h"
#include "params/ParamCatalogue.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

// Preset keys and the wave menu: stored data, so every key and every store id matters.

TEST(ParamKeys, AreTheNamesWithoutBlanks)
{
    EXPECT_EQ(ParamKey(kDelayMode1), "DelayMode1");
    EXPECT_EQ(ParamKey(kFX1PR), "FX1PR");
    EXPECT_EQ(ParamKey(kLogic1DepthModSource), "Logic1DepthModSource");
    EXPECT_EQ(ParamKey(kLROffset2), "L/ROffset2");
    EXPECT_EQ(ParamKey(kFXParam3FB2), "FXParam32FB");
    EXPECT_EQ(ParamKey(kTapDelay2Step11FXP1), "TapDelay2Step11FXP1");
    EXPECT_EQ(ParamKey(kBP), "BP");
    EXPECT_EQ(ParamKey(-1), "");
    EXPECT_EQ(ParamKey(kNumParams), "");

    std::vector<std::unique_ptr<IParamRecord>> params;
    InitParams(params, kWaveMenuNames);
    ASSERT_EQ(ParamKeys().size(), std::size_t(kNumParams));
    for (int id = 0; id < kNumParams; ++id)
    {
        std::string expected;
        for (char c : std::string(params[id]->name))
            if (c != ' ') expected += c;
        ASSERT_FALSE(expected.empty());
        EXPECT_EQ(ParamKey(id), expected) << id;
        EXPECT_EQ(ParamName(id), params[id]->name) << id;
    }
}

TEST(WaveMenu, ListsTheOfferedStoreRecordsInMenuOrder)
{
    ASSERT_EQ(kWaveMenu.size(), 27u);
    const int ids[] = {0,  1,  2,  3,  4,  5,  6,  7,  9,  10, 11, 12, 13, 14,
                       15, 33, 32, 16, 17, 34, 35, 36, 37, 18, 19, 20, 38};
    for (std::size_t i = 0; i < kWaveMenu.size(); ++i)
    {
        EXPECT_EQ(kWaveMenu[i].storeId, ids[i]) << i;
        EXPECT_STREQ(kWaveMenuNames[i], kWaveMenu[i].name);
    }
    EXPECT_STREQ(kWaveMenu[8].name, "SAWSIN");
    EXPECT_STREQ(kWaveMenu[15].name, "SLIDE");
    EXPECT_STREQ(kWaveMenu[16].name, "THE RIDE");
    EXPECT_STREQ(kWaveMenu[22].name, "1/16 PULSE");
    EXPECT_EQ(kWaveMenu[26].storeId, kRandomWaveId);
    EXPECT_STREQ(kWaveMenu[26].name, "S&H");
}
