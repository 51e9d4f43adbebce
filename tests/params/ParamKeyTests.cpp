#include "modulators/WaveMenu.h"
#include "params/ParamCatalogue.h"

#include <gtest/gtest.h>

#include <string>

// Preset keys are stored data: every key must be its record's name without blanks, so a renamed
// record or a lost key breaks old presets here first.
TEST(ParamKeys, AreTheNamesWithoutBlanks)
{
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
