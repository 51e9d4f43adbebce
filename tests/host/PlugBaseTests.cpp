#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <future>
#include <string>
#include <vector>

#include "host/IPlugBase.h"
#include "host/UncheckedScope.h"
#include "params/IParamRecord.h"

namespace
{
IPlugConfig Config(const char* channels, int nParams = 4, int nPresets = 1, int latency = 0)
{
    IPlugConfig config;
    config.nParams = nParams;
    config.channelIOStr = channels;
    config.nPresets = nPresets;
    config.effectName = "Test";
    config.latency = latency;
    config.plugScChans = 2;
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
        if (mCheckLock)
        {
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
    }
    void InformHostOfParamChange(int id, double normalized) override
    {
        mInformed.push_back({id, normalized, GetParam(id)->value, mChanges.size()});
    }

    struct Inform
    {
        int id;
        double normalized;
        double valueAtInform;
        std::size_t changesBefore;
    };
    std::vector<int> mChanges;
    std::vector<Inform> mInformed;
    bool mCheckLock = false;
    bool mLockedDuringChange = true;
};

// Out ch = a mix that tells the channels apart: out0 = 0.5 in0 + in2, out1 = in1 - 0.25 in3.
class MixPlug : public TestPlug
{
  public:
    using TestPlug::TestPlug;
    void ProcessDoubleReplacing(double** in, double** out, int nFrames) override
    {
        UncheckedScope unchecked;
        mCalls.push_back(nFrames);
        for (int i = 0; i < nFrames; ++i)
        {
            const double a = 0.5 * in[0][i] + in[2][i];
            const double b = in[1][i] - 0.25 * in[3][i];
            out[0][i] = a;
            out[1][i] = b;
        }
    }
    std::vector<int> mCalls;
};

std::vector<double> Signal(int n, int channel)
{
    std::vector<double> x(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        x[static_cast<std::size_t>(i)] = std::sin(0.05 * (i + 1) * (channel + 1)) * (0.3 + 0.1 * channel);
    return x;
}

// ---- Configuration ----------------------------------------------------------------------------

TEST(PlugBase, LegalIOMatchesThePairsOfTheChannelText)
{
    TestPlug plug(Config("2-2 3-2 4-2"));
    EXPECT_TRUE(plug.LegalIO(4, 2));
    EXPECT_TRUE(plug.LegalIO(3, 2));
    EXPECT_TRUE(plug.LegalIO(2, 2));
    EXPECT_FALSE(plug.LegalIO(1, 2));
    EXPECT_FALSE(plug.LegalIO(2, 1));
    EXPECT_FALSE(plug.LegalIO(5, 2));
    EXPECT_FALSE(plug.LegalIO(4, 4));
    // -1 stands for any count.
    EXPECT_TRUE(plug.LegalIO(-1, 2));
    EXPECT_TRUE(plug.LegalIO(3, -1));
    EXPECT_TRUE(plug.LegalIO(-1, -1));
    EXPECT_FALSE(plug.LegalIO(-1, 3));
    EXPECT_FALSE(plug.LegalIO(1, -1));
    // The largest counts size the channel tables.
    EXPECT_EQ(plug.NInChannels(), 4);
    EXPECT_EQ(plug.NOutChannels(), 2);
    EXPECT_EQ(plug.ChannelIO().size(), 3u);
}

TEST(PlugBase, FreshInstanceAnswersWithoutHost)
{
    TestPlug plug(Config("2-2 3-2 4-2", 1095));
    EXPECT_EQ(plug.GetSampleRate(), 44100.0);
    EXPECT_EQ(plug.NParams(), 1095);
    EXPECT_NE(plug.GetParam(0), nullptr);
    EXPECT_NE(plug.GetParam(1094), nullptr);
    EXPECT_EQ(plug.GetParam(1095), nullptr);
    EXPECT_EQ(plug.GetParam(-1), nullptr);
    EXPECT_EQ(plug.GetHost(), "");
    EXPECT_EQ(plug.GetGUI(), nullptr);
    EXPECT_EQ(plug.GetPreset(0)->name, "empty");
    EXPECT_FALSE(plug.GetPreset(0)->initialized);
}

// ---- Parameters -------------------------------------------------------------------------------

TEST(PlugBase, GuiChangeSetsTheRecordThenTellsTheHostThenTheEngine)
{
    TestPlug plug(Config("2-2"));
    plug.GetParam(1)->InitInt("Steps", 0, 0, 10);
    plug.SetParameterFromGUI(1, 0.44);
    ASSERT_EQ(plug.mInformed.size(), 1u);
    EXPECT_EQ(plug.mInformed[0].id, 1);
    EXPECT_EQ(plug.mInformed[0].normalized, 0.44);
    EXPECT_EQ(plug.mInformed[0].valueAtInform, 4.0) << "record set (and quantised) before the host hears";
    EXPECT_EQ(plug.mInformed[0].changesBefore, 0u) << "the engine hears after the host";
    EXPECT_EQ(plug.mChanges, std::vector<int>{1});

    plug.SetParameterFromGUI(7, 0.5);
    EXPECT_EQ(plug.mInformed.size(), 1u);
    EXPECT_EQ(plug.mChanges.size(), 1u);
}

TEST(PlugBase, ParamsRoundTripAsFloat64InIdOrder)
{
    TestPlug source(Config("2-2", 3));
    source.GetParam(0)->InitDouble("A", 1.5, 0, 10, 0.1);
    source.GetParam(1)->InitDouble("B", -2.25, -5, 5, 0.01);
    source.GetParam(2)->InitDouble("C", 7.125, 0, 10, 0.001);
    ByteChunk chunk;
    EXPECT_TRUE(source.SerializeParams(chunk));
    ASSERT_EQ(chunk.Size(), 24);
    double second = 0.0;
    chunk.Get(second, 8);
    EXPECT_EQ(second, -2.25);

    TestPlug target(Config("2-2", 3));
    for (int id = 0; id < 3; ++id)
        target.GetParam(id)->InitDouble("X", 0, -10, 10, 0.1);
    EXPECT_EQ(target.UnserializeParams(chunk, 0), 24);
    EXPECT_EQ(target.GetParam(0)->value, 1.5);
    EXPECT_EQ(target.GetParam(1)->value, -2.25);
    EXPECT_EQ(target.GetParam(2)->value, 7.125);
    EXPECT_EQ(target.mChanges, (std::vector<int>{0, 1, 2}));
}

TEST(PlugBase, ChunkEndingMidValuesLeavesTheRestAtZeroCutToRange)
{
    TestPlug plug(Config("2-2", 5));
    plug.GetParam(0)->InitDouble("A", 50, 0, 100, 0.1);
    plug.GetParam(1)->InitDouble("B", 0, -50, 50, 0.1);
    plug.GetParam(2)->InitDouble("C", 15, 10, 20, 0.1);
    plug.GetParam(3)->InitDouble("D", -3, -8, -2, 0.1);
    plug.GetParam(4)->InitDouble("E", 4, -1, 9, 0.1);
    ByteChunk chunk;
    chunk.Put(30.0);
    chunk.Put(-70.0);           // cut to -50
    chunk.Put(std::int32_t{0}); // half a value
    plug.mCheckLock = true;

    EXPECT_EQ(plug.UnserializeParams(chunk, 0), -1);
    EXPECT_EQ(plug.GetParam(0)->value, 30.0);
    EXPECT_EQ(plug.GetParam(1)->value, -50.0);
    EXPECT_EQ(plug.GetParam(2)->value, 10.0);
    EXPECT_EQ(plug.GetParam(3)->value, -2.0);
    EXPECT_EQ(plug.GetParam(4)->value, 0.0);
    EXPECT_EQ(plug.mChanges, (std::vector<int>{0, 1, 2, 3, 4}));
    EXPECT_TRUE(plug.mLockedDuringChange) << "notifications run inside the mutex";

    // Nothing left to read at all: values stay, the notifications still come.
    plug.mChanges.clear();
    plug.mCheckLock = false;
    EXPECT_EQ(plug.UnserializeParams(chunk, -1), -1);
    EXPECT_EQ(plug.GetParam(2)->value, 10.0);
    EXPECT_EQ(plug.GetParam(0)->value, 30.0);
    EXPECT_EQ(plug.mChanges.size(), 5u);
}

// ---- Presets ----------------------------------------------------------------------------------

TEST(PlugBase, RestorePresetRecordsTheStateOnceAndNamesItByCount)
{
    TestPlug plug(Config("2-2", 2, 3));
    plug.GetParam(0)->InitDouble("A", 12.5, 0, 100, 0.1);
    plug.GetParam(1)->InitDouble("B", 3.0, 0, 100, 0.1);

    EXPECT_TRUE(plug.RestorePreset(0));
    EXPECT_EQ(plug.GetPreset(0)->name, "user preset 1");
    EXPECT_TRUE(plug.GetPreset(0)->initialized);
    ByteChunk expected;
    plug.SerializeState(expected);
    EXPECT_TRUE(plug.GetPreset(0)->chunk == expected);
    EXPECT_EQ(plug.GetCurrentPresetIdx(), 0);

    plug.GetParam(0)->value = 99.0;
    EXPECT_FALSE(plug.RestorePreset(0)) << "an initialized preset is left alone";
    EXPECT_TRUE(plug.GetPreset(0)->chunk == expected);

    EXPECT_TRUE(plug.RestorePreset(2));
    EXPECT_EQ(plug.GetPreset(2)->name, "user preset 2");
    EXPECT_EQ(plug.GetCurrentPresetIdx(), 2);
    EXPECT_FALSE(plug.RestorePreset(3));
    EXPECT_FALSE(plug.RestorePreset(-1));
    EXPECT_EQ(plug.GetPreset(1)->name, "empty");
}

// ---- Buffers ----------------------------------------------------------------------------------

struct Run
{
    std::vector<std::vector<double>> in;
    std::vector<std::vector<double>> out;
};

TEST(PlugBase, BaseCopiesInputsAndZeroesOutputsWithoutInput)
{
    TestPlug plug(Config("1-2"));
    double in0[4] = {1, 2, 3, 4};
    double out0[4] = {9, 9, 9, 9};
    double out1[4] = {9, 9, 9, 9};
    double* ins[] = {in0};
    double* outs[] = {out0, out1};
    plug.ProcessDoubleReplacing(ins, outs, 4);
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_EQ(out0[i], in0[i]);
        EXPECT_EQ(out1[i], 0.0);
    }
}

TEST(PlugBase, FloatPathMatchesDoublePathAndUnconnectedInputsAreSilent)
{
    constexpr int kFrames = 300;
    MixPlug dbl(Config("2-2 3-2 4-2"));
    MixPlug flt(Config("2-2 3-2 4-2"));
    for (MixPlug* plug : {&dbl, &flt})
    {
        plug->SetBlockSize(128); // 300 frames run as 128 + 128 + 44
        plug->SetInputChannelConnections(0, 3, true);
        plug->SetInputChannelConnections(3, 1, false);
        plug->SetOutputChannelConnections(0, 2, true);
    }

    std::vector<std::vector<double>> inD(4), outD(2, std::vector<double>(kFrames, 7.0));
    std::vector<std::vector<float>> inF(4), outF(2, std::vector<float>(kFrames, 7.0f));
    double* inPtrD[4];
    float* inPtrF[4];
    for (int ch = 0; ch < 4; ++ch)
    {
        inD[ch] = Signal(kFrames, ch);
        inF[ch].assign(inD[ch].begin(), inD[ch].end());
        inPtrD[ch] = inD[ch].data();
        inPtrF[ch] = inF[ch].data();
    }
    double* outPtrD[2] = {outD[0].data(), outD[1].data()};
    float* outPtrF[2] = {outF[0].data(), outF[1].data()};

    dbl.AttachInputBuffers(0, 4, inPtrD, kFrames);
    dbl.AttachOutputBuffers(0, 2, outPtrD, kFrames);
    dbl.ProcessBuffers(0.0, kFrames);
    flt.AttachInputBuffers(0, 4, inPtrF, kFrames);
    flt.AttachOutputBuffers(0, 2, outPtrF, kFrames);
    flt.ProcessBuffers(0.0f, kFrames);

    EXPECT_EQ(dbl.mCalls, (std::vector<int>{128, 128, 44}));
    EXPECT_EQ(flt.mCalls, (std::vector<int>{128, 128, 44}));
    for (int i = 0; i < kFrames; ++i)
    {
        // Channel 3 is not connected: its data never reach the engine.
        EXPECT_EQ(outD[0][i], 0.5 * inD[0][i] + inD[2][i]) << i;
        EXPECT_EQ(outD[1][i], inD[1][i]) << i;
        EXPECT_NEAR(outF[0][i], outD[0][i], 2e-7) << i;
        EXPECT_NEAR(outF[1][i], outD[1][i], 2e-7) << i;
    }
}

TEST(PlugBase, SidechainSilentAgainAfterItsChannelsGoAway)
{
    constexpr int kFrames = 32;
    MixPlug plug(Config("2-2 3-2 4-2"));
    plug.SetInputChannelConnections(0, 4, true);
    plug.SetOutputChannelConnections(0, 2, true);
    std::vector<std::vector<float>> in(4, std::vector<float>(kFrames, 1.0f));
    std::vector<std::vector<float>> out(2, std::vector<float>(kFrames));
    float* inPtr[4] = {in[0].data(), in[1].data(), in[2].data(), in[3].data()};
    float* outPtr[2] = {out[0].data(), out[1].data()};
    plug.AttachInputBuffers(0, 4, inPtr, kFrames);
    plug.AttachOutputBuffers(0, 2, outPtr, kFrames);
    plug.ProcessBuffers(0.0f, kFrames);
    EXPECT_EQ(out[0][5], 1.5f);

    plug.SetInputChannelConnections(2, 2, false);
    plug.AttachInputBuffers(0, 4, inPtr, kFrames);
    plug.ProcessBuffers(0.0f, kFrames);
    EXPECT_EQ(out[0][5], 0.5f);
    EXPECT_EQ(out[1][5], 1.0f);
}

// Feeds a signal through the bypass in blocks of the given sizes and returns the outputs.
template <typename Sample>
std::vector<std::vector<Sample>> Bypass(IPlugBase& plug, const std::vector<std::vector<Sample>>& in,
                                        const std::vector<int>& blocks)
{
    const int total = static_cast<int>(in[0].size());
    std::vector<std::vector<Sample>> out(2, std::vector<Sample>(static_cast<std::size_t>(total), Sample(9)));
    int pos = 0;
    for (std::size_t b = 0; pos < total; ++b)
    {
        const int n = std::min(blocks[b % blocks.size()], total - pos);
        Sample* inPtr[4];
        for (int ch = 0; ch < 4; ++ch)
            inPtr[ch] = const_cast<Sample*>(in[static_cast<std::size_t>(ch)].data()) + pos;
        Sample* outPtr[2] = {out[0].data() + pos, out[1].data() + pos};
        plug.AttachInputBuffers(0, 4, inPtr, n);
        plug.AttachOutputBuffers(0, 2, outPtr, n);
        plug.PassThroughBuffers(Sample(0), n);
        pos += n;
    }
    return out;
}

TEST(PlugBase, BypassDelaysByTheLatencyAcrossBlocksOfAnySize)
{
    constexpr int kFrames = 700;
    constexpr int kLatency = 44;
    const std::vector<int> blocks = {1, 13, 64, 5, 100, 3, 44, 45, 43, 256};
    for (bool useFloat : {false, true})
    {
        TestPlug plug(Config("2-2 3-2 4-2", 4, 1, kLatency));
        plug.SetInputChannelConnections(0, 4, true);
        plug.SetOutputChannelConnections(0, 2, true);
        std::vector<std::vector<double>> in(4);
        for (int ch = 0; ch < 4; ++ch)
            in[ch] = Signal(kFrames, ch);

        std::vector<std::vector<double>> out(2);
        if (useFloat)
        {
            std::vector<std::vector<float>> inF(4);
            for (int ch = 0; ch < 4; ++ch)
                inF[ch].assign(in[ch].begin(), in[ch].end());
            const auto outF = Bypass(plug, inF, blocks);
            for (int ch = 0; ch < 2; ++ch)
                out[ch].assign(outF[ch].begin(), outF[ch].end());
        }
        else
        {
            out = Bypass(plug, in, blocks);
        }
        const double tolerance = useFloat ? 1e-7 : 0.0;
        for (int ch = 0; ch < 2; ++ch)
            for (int i = 0; i < kFrames; ++i)
            {
                const double expected = i < kLatency ? 0.0 : in[ch][i - kLatency];
                ASSERT_NEAR(out[ch][i], expected, tolerance)
                    << "channel " << ch << " sample " << i << (useFloat ? " float" : " double");
            }
    }
}

TEST(PlugBase, BypassAtLatencyZeroCopiesAndANewLatencyIsAdopted)
{
    constexpr int kFrames = 200;
    TestPlug plug(Config("2-2 3-2 4-2", 4, 1, 0));
    plug.SetInputChannelConnections(0, 2, true);
    plug.SetOutputChannelConnections(0, 2, true);
    std::vector<std::vector<double>> in(4, std::vector<double>(kFrames, 0.0));
    for (int ch = 0; ch < 2; ++ch)
        in[ch] = Signal(kFrames, ch);
    auto out = Bypass(plug, in, {17, 31});
    for (int i = 0; i < kFrames; ++i)
        ASSERT_EQ(out[1][i], in[1][i]) << i;

    plug.SetLatency(10);
    EXPECT_EQ(plug.GetLatency(), 10);
    out = Bypass(plug, in, {7, 64});
    for (int i = 0; i < kFrames; ++i)
        ASSERT_EQ(out[0][i], i < 10 ? 0.0 : in[0][i - 10]) << i;
}
} // namespace
