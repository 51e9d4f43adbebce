// The plug-in base below any host binding: the order of a GUI change and parameter values read
// from a chunk. How the engine's buffers are fed (pieces, float hosts, unconnected channels) is
// checked through the binding, in IPlugVST3Tests.cpp, and the bypass delay through the bundle.

#include <gtest/gtest.h>

#include <cmath>
#include <future>
#include <vector>

#include "host/IPlugBase.h"
#include "host/UncheckedScope.h"
#include "params/IParamRecord.h"

namespace
{
IPlugConfig Config(int nParams = 4)
{
    IPlugConfig config;
    config.nParams = nParams;
    config.channelIOStr = "2-2";
    return config;
}

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
        auto other = std::async(std::launch::async,
                                [this]
                                {
                                    const bool got = ParamsMutex().try_lock();
                                    if (got) ParamsMutex().unlock();
                                    return got;
                                });
        mLockedDuringChange = mLockedDuringChange && !other.get();
    }
    void InformHostOfParamChange(int id, double normalized) override
    {
        mInformed.push_back({normalized, GetParam(id)->value, mChanges.size()});
    }
    struct Inform
    {
        double normalized;
        double valueAtInform;
        std::size_t changesBefore;
    };
    std::vector<int> mChanges;
    std::vector<Inform> mInformed;
    bool mLockedDuringChange = true;
};

TEST(PlugBase, GuiChangeSetsTheRecordThenTellsTheHostThenTheEngine)
{
    TestPlug plug(Config());
    plug.GetParam(1)->InitInt("Steps", 0, 0, 10);
    plug.SetParameterFromGUI(1, 0.44);
    ASSERT_EQ(plug.mInformed.size(), 1u);
    EXPECT_EQ(plug.mInformed[0].normalized, 0.44);
    EXPECT_EQ(plug.mInformed[0].valueAtInform, 4.0) << "record set (and quantised) before the host hears";
    EXPECT_EQ(plug.mInformed[0].changesBefore, 0u) << "the engine hears after the host";
    EXPECT_EQ(plug.mChanges, std::vector<int>{1});
    plug.SetParameterFromGUI(7, 0.5);
    EXPECT_EQ(plug.mInformed.size(), 1u);
    EXPECT_EQ(plug.mChanges.size(), 1u);
}

// Values are 64-bit floats in id order, each cut to its record's range; NaN counts as missing (0)
// and so do the values a short chunk lacks. Every record is announced, inside the mutex, even when
// nothing is left to read.
TEST(PlugBase, ChunkValuesAreCutToRangeAndMissingOnesAreZero)
{
    TestPlug plug(Config(5));
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
    EXPECT_EQ(plug.GetParam(0)->value, 30.0);
    EXPECT_EQ(plug.mChanges.size(), 5u);
    ByteChunk written;
    EXPECT_TRUE(plug.SerializeParams(written));
    EXPECT_EQ(written.Size(), 5 * 8);
}
} // namespace
