// The plug-in base below any host binding: the order of a GUI change, parameter values read from a
// chunk, and the bypass delay when the latency changes. How the engine's buffers
// are fed (pieces, float hosts, unconnected channels) is checked through the binding, in
// IPlugVST3Tests.cpp.

#include <gtest/gtest.h>

#include <cmath>
#include <future>
#include <string>
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

std::vector<double> Signal(int n, int channel)
{
    std::vector<double> x(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        x[static_cast<std::size_t>(i)] = std::sin(0.05 * (i + 1) * (channel + 1)) * (0.3 + 0.1 * channel);
    return x;
}

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

// Bypassed, the output is the input delayed by the latency: a copy at zero, and a new latency is
// taken up from the next call on (the bundle's bypass test holds the latency it reports fixed).
TEST(PlugBase, BypassAtLatencyZeroCopiesAndANewLatencyIsAdopted)
{
    constexpr int kFrames = 200;
    TestPlug plug(Config());
    plug.SetInputChannelConnections(0, 2, true);
    plug.SetOutputChannelConnections(0, 2, true);
    std::vector<std::vector<double>> in = {Signal(kFrames, 0), Signal(kFrames, 1)};
    const auto bypass = [&](const std::vector<int>& blocks)
    {
        std::vector<std::vector<double>> out(2, std::vector<double>(kFrames, 9.0));
        for (std::size_t pos = 0, b = 0; pos < kFrames;
             pos += static_cast<std::size_t>(blocks[b++ % blocks.size()]))
        {
            const int n = std::min(blocks[b % blocks.size()], kFrames - static_cast<int>(pos));
            double* inPtr[2] = {in[0].data() + pos, in[1].data() + pos};
            double* outPtr[2] = {out[0].data() + pos, out[1].data() + pos};
            plug.AttachInputBuffers(0, 2, inPtr, n);
            plug.AttachOutputBuffers(0, 2, outPtr, n);
            plug.PassThroughBuffers(0.0, n);
        }
        return out;
    };
    EXPECT_EQ(bypass({17, 31}), in);
    plug.SetLatency(10);
    const auto out = bypass({7, 3, 64});
    for (int ch = 0; ch < 2; ++ch)
        for (int i = 0; i < kFrames; ++i)
            ASSERT_EQ(out[ch][i], i < 10 ? 0.0 : in[ch][i - 10]) << ch << " " << i;
}
} // namespace
