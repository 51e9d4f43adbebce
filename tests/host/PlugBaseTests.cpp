// The plug-in base below any host binding: the order of a GUI change and parameter values read
// from a chunk. How the engine's buffers are fed (pieces, float hosts, unconnected channels) is
// checked through the binding, in IPlugVST3Tests.cpp, and the bypass delay through the bundle.

#include <gtest/gtest.h>

#include <cmath>
#include <future>
#include <mutex>
#include <tuple>
#include <vector>

#include "host/IPlugBase.h"
#include "host/UncheckedScope.h"
#include "params/IParamRecord.h"

namespace
{
// A plug-in on the bare base that records what the base asks of it.
class TestPlug : public IPlugBase
{
  public:
    explicit TestPlug(const IPlugConfig& config) : IPlugBase(config) {}

    void OnParamChange(int id) override
    {
        UncheckedScope unchecked;
        mChanges.push_back(id);
        // Another thread must not get the mutex while the base holds it.
        auto other = std::async(std::launch::async, [this]
                                { return std::unique_lock(ParamsMutex(), std::try_to_lock).owns_lock(); });
        mLockedDuringChange = mLockedDuringChange && !other.get();
    }
    // What the host was told, the record's value then, and how many engine changes came before.
    void InformHostOfParamChange(int id, double normalized) override
    {
        mInformed.emplace_back(normalized, GetParam(id)->value, mChanges.size());
    }
    std::vector<int> mChanges;
    std::vector<std::tuple<double, double, std::size_t>> mInformed;
    bool mLockedDuringChange = true;
};

TEST(PlugBase, GuiChangeSetsTheRecordThenTellsTheHostThenTheEngine)
{
    TestPlug plug({.nParams = 4, .channelIOStr = "2-2"});
    plug.GetParam(1)->InitInt("Steps", 0, 0, 10);
    plug.SetParameterFromGUI(1, 0.44);
    plug.SetParameterFromGUI(7, 0.5); // no such parameter: nobody hears of it
    // The record is set (and quantised) before the host hears, and the engine hears after the host.
    EXPECT_EQ(plug.mInformed, (std::vector<std::tuple<double, double, std::size_t>>{{0.44, 4.0, 0}}));
    EXPECT_EQ(plug.mChanges, std::vector<int>{1});
}

// Values are 64-bit floats in id order, each cut to its record's range; NaN counts as missing (0)
// and so do the values a short chunk lacks. Every record is announced, inside the mutex, even when
// nothing is left to read.
TEST(PlugBase, ChunkValuesAreCutToRangeAndMissingOnesAreZero)
{
    TestPlug plug({.nParams = 5, .channelIOStr = "2-2"});
    // {min, max, stored, read}: a value below, inside, NaN, above (nothing in range is 0), missing.
    const double rows[5][4] = {{0, 100, 30, 30},
                               {-50, 50, -70, -50},
                               {10, 20, std::nan(""), 10},
                               {-8, -2, 1e300, -2},
                               {-1, 9, 0, 0}};
    ByteChunk chunk;
    for (int id = 0; id < 5; ++id)
    {
        plug.GetParam(id)->InitDouble("P", (rows[id][0] + rows[id][1]) / 2, rows[id][0], rows[id][1], 0.1);
        if (id < 4) chunk.Put(rows[id][2]);
    }
    chunk.Put(std::int32_t{0}); // half a value
    EXPECT_EQ(plug.UnserializeParams(chunk, 0), -1);
    for (int id = 0; id < 5; ++id)
        EXPECT_EQ(plug.GetParam(id)->value, rows[id][3]) << id;
    EXPECT_EQ(plug.mChanges, (std::vector<int>{0, 1, 2, 3, 4}));
    EXPECT_TRUE(plug.mLockedDuringChange) << "notifications run inside the mutex";
    plug.mChanges.clear();
    EXPECT_EQ(plug.UnserializeParams(chunk, -1), -1);
    EXPECT_EQ(std::tuple(plug.GetParam(0)->value, plug.mChanges.size()), std::tuple(30.0, 5u));
    ByteChunk written;
    EXPECT_TRUE(plug.SerializeParams(written) && written.Size() == 5 * 8);
}
} // namespace
