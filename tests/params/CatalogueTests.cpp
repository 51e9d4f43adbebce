#include "modulators/WaveMenu.h"
#include "params/ParamCatalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

// The catalogue is stored data that presets and hosts depend on: its structure is checked by
// invariants and the numbering of its families, and every field of every record by one golden
// digest.
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

// Changes to the catalogue must be on purpose: when one is, run this suite, check the family rows
// below against the intended table, and replace the digest by the one the failure prints.
constexpr std::uint64_t kCatalogueDigest = 0x48c38a92e16c5bfcull;
} // namespace

TEST_F(Catalogue, EveryRecordIsConsistentAndMatchesTheGoldenDigest)
{
    ASSERT_EQ(mParams.size(), std::size_t(kNumParams));
    ASSERT_EQ(kNumParams, 1095);
    std::map<std::string, std::vector<int>> byName;
    for (int id = 0; id < kNumParams; ++id)
    {
        const IParamRecord& p = *mParams[id];
        SCOPED_TRACE(p.name);
        EXPECT_LT(p.min, p.max);
        EXPECT_GE(p.defaultValue, p.min);
        EXPECT_LE(p.defaultValue, p.max);
        EXPECT_EQ(double(p.value), p.defaultValue);
        EXPECT_EQ(p.displayPrecision, IParamRecord::PrecisionOfStep(p.step));
        if (p.type == IParamRecord::kTypeEnum)
        {
            EXPECT_EQ(p.max, double(p.displayTexts.size()) - 1.0);
            for (std::size_t k = 0; k < p.displayTexts.size(); ++k)
                EXPECT_EQ(p.displayTexts[k].value, int(k));
        }
        byName[p.name].push_back(id);
    }
    // The five pairs of logic doubles that carry module three's names are the only repeats.
    std::vector<int> lowerOfPairs;
    for (const auto& [name, ids] : byName)
    {
        ASSERT_LE(ids.size(), 2u) << name;
        if (ids.size() == 2)
        {
            EXPECT_EQ(ids[1], ids[0] + 1) << name;
            EXPECT_EQ(name.substr(0, 6), "Logic3") << name;
            lowerOfPairs.push_back(ids[0]);
        }
    }
    std::sort(lowerOfPairs.begin(), lowerOfPairs.end());
    EXPECT_EQ(lowerOfPairs, (std::vector<int>{1021, 1029, 1037, 1041, 1045}));
    char digest[32];
    std::snprintf(digest, sizeof digest, "0x%016llxull", static_cast<unsigned long long>(Digest(mParams)));
    EXPECT_EQ(Digest(mParams), kCatalogueDigest) << "catalogue changed; digest now " << digest;
}

// Every field of every record is pinned by the digest; what the numbering must follow is stated
// here: members of a family sit at first id + member, effect rows twelve wide and position-major,
// step rows gate-major, and only the first slot starts on.
TEST_F(Catalogue, FamiliesAreNumberedByPlace)
{
    const std::map<int, std::string> names = {{0, "SlotOn 1"},
                                              {3, "SlotOn 4"},
                                              {116 + 4 * 1 + 1, "FXParam1 2 FB"},
                                              {212 + 4 * 2 + 3, "FXParam3 ModSource4 PO"},
                                              {384 + 16 * 3 + 15, "TapDelay4 Step16 Time"},
                                              {512 + 16 * 2 + 6, "TapDelay3 Step7 Pan"},
                                              {924 + 16 * 2, "Gate3 Step1"},
                                              {1017, "Logic2 Type"},
                                              {1049, "Logic2 Depth ModSource"},
                                              {1074, "Slot1 FB 2"},
                                              {1094, "BP"}};
    for (const auto& [id, name] : names)
        EXPECT_EQ(mParams[id]->name, name) << id;
    EXPECT_EQ(mParams[0]->defaultValue, 1.0);
    for (int id = 1; id < 4; ++id)
        EXPECT_EQ(mParams[id]->defaultValue, 0.0) << id;
}

TEST_F(Catalogue, ListDefaultsShowTheirTextsAlsoFromNormalisedValues)
{
    struct Row
    {
        int id;
        const char* text;
    };
    for (int i = 0; i < 4; ++i)
        for (const Row r :
             {Row{kTimebase1 + i, "1/16"}, Row{kTapTimebase1 + i, "MS"}, Row{kDelayTaps1 + i, "8"},
              Row{kDirectOut1 + i, "OUT"}, Row{kMasterFXSource1 + i, "OUT"}})
        {
            const IParamRecord& p = *mParams[r.id];
            EXPECT_EQ(p.GetDisplayForHost(p.value, false), r.text) << p.name;
            EXPECT_EQ(p.GetDisplayForHost(p.GetNormalized(), true), r.text) << p.name;
        }
    // The wave menu's names come from the caller.
    const char* waves[] = {"A", "B", "C"};
    std::vector<std::unique_ptr<IParamRecord>> params;
    InitParams(params, waves);
    double v = -1;
    EXPECT_EQ(params[kLFOWave3]->max, 2.0);
    ASSERT_TRUE(params[kLFOWave3]->GetValueFromDisplayText("B", v));
    EXPECT_EQ(v, 1.0);
}

TEST_F(Catalogue, EveryParameterSurvivesTheNormalisedRoundTrip)
{
    for (int id = 0; id < kNumParams; ++id)
    {
        IParamRecord& p = *mParams[id];
        SCOPED_TRACE(p.name);
        const double range = p.max - p.min;
        const int steps = int(std::lround(range / p.step));
        EXPECT_EQ(p.GetNormalized(p.min), 0.0);
        EXPECT_EQ(p.GetNormalized(p.max), 1.0);
        double lastNorm = -1.0;
        for (int k = 0; k <= 16; ++k)
        {
            const double x = std::min(p.min + std::floor(steps * (k / 16.0)) * p.step, p.max);
            const double n = p.GetNormalized(x);
            ASSERT_GE(n, lastNorm) << x;
            lastNorm = n;
            p.SetNormalized(n);
            if (p.type == IParamRecord::kTypeDouble)
                EXPECT_NEAR(double(p.value), x, 1e-9 * range) << x;
            else
                EXPECT_EQ(double(p.value), x);
        }
    }
}
