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
// invariants, and every field of every record (names and so the numbering of the families
// included) by one golden digest. The laws that turn a record's fields into normalised values
// and back are the record tests'.
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
