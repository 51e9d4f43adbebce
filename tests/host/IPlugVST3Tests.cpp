// The VST 3 binding driven in-process through a probe plug-in that records what reaches the engine
// side. What the real bundle shows a host is in load/; here are the laws the real plug-in cannot
// show: what reaches the engine, engines that throw, a transport read back field by field. Below
// them, the plug-in base without a host binding (the order of a GUI change, parameter values read
// from a chunk) and the text between our UTF-8 and the host's UTF-16 fields.

#include "common/HostDoubles.h"

#include "host/HostText.h"
#include "host/IPlugVST3.h"
#include "host/UncheckedScope.h"
#include "params/IParamRecord.h"
#include "state/ByteChunk.h"

#include <gtest/gtest.h>

#include <cmath>
#include <future>
#include <mutex>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

using namespace hostdoubles;

namespace
{
enum ProbeParam
{
    kGain,   // double 0..100 %, step 0.1
    kAmount, // double 0..1
    kNumProbeParams
};

// Records what the binding hands to the engine side.
class ProbePlug : public IPlugVST3
{
  public:
    ProbePlug()
        : IPlugVST3({.nParams = kNumProbeParams,
                     .channelIOStr = "2-2 3-2 4-2",
                     .nPresets = 1,
                     .latency = 44,
                     .plugDoesChunks = true,
                     .plugScChans = 2})
    {
        GetParam(kGain)->InitDouble("Gain", 50.0, 0.0, 100.0, 0.1, "%");
        GetParam(kAmount)->InitDouble("Amount", 0.25, 0.0, 1.0, 0.01);
    }
    void ProcessDoubleReplacing(double** inputs, double** outputs, int nFrames) override
    {
        UncheckedScope unchecked;
        ++mProcessCalls;
        for (int ch = 0; ch < 4; ++ch)
        {
            mConnected[ch] = IsInChannelConnected(ch);
            mSeen[ch].insert(mSeen[ch].end(), inputs[ch], inputs[ch] + nFrames);
        }
        // Main plus ten times the sidechain: the host can tell both apart in the output.
        for (int i = 0; i < nFrames; ++i)
        {
            outputs[0][i] = inputs[0][i] + 10.0 * inputs[2][i];
            outputs[1][i] = inputs[1][i] + 10.0 * inputs[3][i];
        }
        if (mLatencyFromProcess >= 0) SetLatency(mLatencyFromProcess);
        GetTime(mTimeSeen);
    }
    void OnParamChange(int id) override
    {
        UncheckedScope unchecked;
        mChanged.push_back(id);
    }
    void OnActivate(bool) override
    {
        if (mThrowOnActivate) throw std::runtime_error("activation failed");
    }
    int UnserializeState(const ByteChunk& chunk, int startPos) override
    {
        if (mThrowOnState) throw std::bad_alloc();
        return IPlugBase::UnserializeState(chunk, startPos);
    }

    std::vector<double> mSeen[4];
    std::vector<int> mChanged;
    int mProcessCalls = 0, mLatencyFromProcess = -1;
    TransportInfo mTimeSeen;
    bool mConnected[4] = {}, mThrowOnActivate = false, mThrowOnState = false;
};

class PlugVST3Test : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        ASSERT_EQ(mPlug->initialize(&mHost), kResultOk);
        mPlug->setComponentHandler(&mHandler);
        for (const auto& [dir, bus] : {std::pair{kInput, 0}, {kInput, 1}, {kOutput, 0}})
            mPlug->activateBus(kAudio, dir, bus, true);
        ProcessSetup setup{kRealtime, kSample64, 512, 48000.0};
        ASSERT_EQ(mPlug->setupProcessing(setup), kResultOk);
        mPlug->setActive(true);
        mPlug->setProcessing(true);
    }
    void TearDown() override
    {
        mPlug->setProcessing(false);
        mPlug->setActive(false);
        mPlug->terminate();
        mPlug->release();
    }
    IEditController* Controller() { return static_cast<IEditController*>(mPlug); }
    // One block of `frames` silent 64-bit frames carrying `changes`.
    void Process(ParameterChanges* changes, int frames = 32)
    {
        AudioRig<double> rig(frames, {2, 2}, {2});
        rig.data.inputParameterChanges = changes;
        ASSERT_EQ(mPlug->process(rig.data), kResultOk);
    }

    HostApplication mHost;
    ComponentHandler mHandler;
    ProbePlug* mPlug = new ProbePlug;
};

// The sidechain reaches the engine behind the two main channels whatever the main width; a bus the
// host switched off reads silence though the host keeps handing over its stale buffers, and an
// output bus switched off is silenced while the engine still runs. Float hosts get the same.
TEST_F(PlugVST3Test, SidechainAndInactiveBusesInBothSampleSizes)
{
    AudioRig<double> rig(32, {2, 2}, {2});
    for (int i = 0; i < 32; ++i)
        std::tie(rig.In(0, 0)[i], rig.In(0, 1)[i], rig.In(1, 0)[i], rig.In(1, 1)[i]) =
            std::tuple(0.001 * i, -0.001 * i, 0.5, -0.25);
    const auto last = [&] { return std::tuple(rig.Out(0, 0)[31], rig.Out(0, 1)[31]); };
    const double x = 0.001 * 31;
    ASSERT_EQ(mPlug->process(rig.data), kResultOk);
    EXPECT_TRUE(mPlug->mConnected[0] && mPlug->mConnected[1] && mPlug->mConnected[2] && mPlug->mConnected[3]);
    EXPECT_EQ(last(), std::tuple(x + 5.0, -x - 2.5));
    mPlug->activateBus(kAudio, kInput, 1, false);
    for (auto& seen : mPlug->mSeen)
        seen.clear();
    mPlug->process(rig.data);
    EXPECT_FALSE(mPlug->mConnected[2] || mPlug->mConnected[3]);
    for (int ch : {2, 3})
        EXPECT_EQ(mPlug->mSeen[ch], std::vector<double>(32, 0.0)) << ch;
    EXPECT_EQ(last(), std::tuple(x, -x));
    mPlug->activateBus(kAudio, kInput, 1, true);
    mPlug->process(rig.data);
    EXPECT_EQ(last(), std::tuple(x + 5.0, -x - 2.5));
    // Mono main with a stereo sidechain; then stereo main into a mono output.
    AudioRig<double> mono(16, {1, 2}, {1});
    std::fill(mono.In(0, 0).begin(), mono.In(0, 0).end(), 0.125);
    std::fill(mono.In(1, 0).begin(), mono.In(1, 0).end(), 0.5);
    ASSERT_EQ(mPlug->process(mono.data), kResultOk);
    EXPECT_TRUE(mPlug->mConnected[0] && !mPlug->mConnected[1] && mPlug->mConnected[2]);
    EXPECT_EQ(mPlug->mSeen[1].back(), 0.0);
    EXPECT_DOUBLE_EQ(mono.Out(0, 0)[15], 0.125 + 5.0);
    AudioRig<double> narrow(16, {2, 2}, {1});
    mPlug->process(narrow.data);
    EXPECT_TRUE(mPlug->mConnected[0] && !mPlug->mConnected[1]);

    AudioRig<float> floats(40, {2, 2}, {2});
    std::fill(floats.In(0, 0).begin(), floats.In(0, 0).end(), 0.25f);
    std::fill(floats.In(1, 1).begin(), floats.In(1, 1).end(), 0.125f);
    ASSERT_EQ(mPlug->process(floats.data), kResultOk);
    EXPECT_EQ(std::tuple(floats.Out(0, 0)[39], floats.Out(0, 1)[39]), std::tuple(0.25f, 1.25f));
    mPlug->activateBus(kAudio, kOutput, 0, false);
    floats.PoisonOutputs(99.0f);
    const int callsBefore = mPlug->mProcessCalls;
    ASSERT_EQ(mPlug->process(floats.data), kResultOk);
    EXPECT_EQ(mPlug->mProcessCalls, callsBefore + 1);
    for (int ch = 0; ch < 2; ++ch)
        EXPECT_EQ(floats.Out(0, ch), std::vector<float>(40, 0.0f)) << ch;
}

// Every field of the host's transport is copied; stopped, and without tempo or metre, the last
// good ones stay. Offline rendering is the set-up's mode.
TEST_F(PlugVST3Test, TransportIsCopiedFromTheProcessContext)
{
    AudioRig<double> rig(32, {2, 2}, {2});
    ProcessContext context{};
    context.state = ProcessContext::kPlaying | ProcessContext::kCycleActive | ProcessContext::kTempoValid |
                    ProcessContext::kTimeSigValid;
    std::tie(context.projectTimeSamples, context.projectTimeMusic, context.barPositionMusic,
             context.cycleStartMusic, context.cycleEndMusic, context.tempo, context.timeSigNumerator,
             context.timeSigDenominator) = std::tuple(96000, 8.5, 7.0, 4.0, 12.0, 133.0, 7, 8);
    rig.data.processContext = &context;
    mPlug->process(rig.data);
    const TransportInfo& t = mPlug->mTimeSeen;
    EXPECT_EQ(std::tuple(t.mSamplePos, t.mQuarterPos, t.mLastBarStart, t.mCycleStart, t.mCycleEnd),
              std::tuple(96000.0, 8.5, 7.0, 4.0, 12.0));
    EXPECT_TRUE(t.mPlaying && t.mCycleActive);
    context = ProcessContext{};
    mPlug->process(rig.data);
    EXPECT_FALSE(t.mPlaying || t.mCycleActive);
    EXPECT_EQ(std::tuple(t.mTempo, t.mNumerator, t.mDenominator), std::tuple(133.0, 7, 8));
    EXPECT_FALSE(mPlug->IsRenderingOffline());
    ProcessSetup offline{kOffline, kSample32, 256, 44100.0};
    mPlug->setupProcessing(offline);
    EXPECT_TRUE(mPlug->IsRenderingOffline());
}

// A latency change reaches the host once, from the UI thread only: set there, at once; set while
// processing, at the host's next UI-thread call.
TEST_F(PlugVST3Test, LatencyChangesReachTheHostOnTheUiThreadOnly)
{
    EXPECT_EQ(mPlug->getLatencySamples(), 44u);
    mPlug->SetLatency(44);
    EXPECT_EQ(mHandler.mLatencyRestarts, 0);
    mPlug->SetLatency(80);
    EXPECT_EQ(std::tuple(mHandler.mLatencyRestarts.load(), mPlug->getLatencySamples()), std::tuple(1, 80u));
    mPlug->mLatencyFromProcess = 128;
    Process(nullptr);
    EXPECT_EQ(std::tuple(mHandler.mLatencyRestarts.load(), mPlug->getLatencySamples()), std::tuple(1, 128u));
    for (int call = 0; call < 2; ++call)
    {
        Controller()->getParamNormalized(kGain);
        EXPECT_EQ(mHandler.mLatencyRestarts, 2);
    }
}

// The controller's own setter changes what the host reads back, but the engine never hears of it:
// its values arrive through the process call's queues. Unknown ids are refused, and the bypass set
// there does not bypass. Failing streams and engines that throw are answered, not thrown through.
TEST_F(PlugVST3Test, TheControllersSetterDoesNotReachTheEngineAndFailuresStayInside)
{
    mPlug->mChanged.clear();
    EXPECT_EQ(Controller()->setParamNormalized(kGain, 0.75), kResultOk);
    EXPECT_NEAR(Controller()->getParamNormalized(kGain), 0.75, 1e-12);
    EXPECT_TRUE(mPlug->mChanged.empty());
    EXPECT_NE(Controller()->setParamNormalized(kNumProbeParams, 0.5), kResultOk);
    EXPECT_EQ(Controller()->setParamNormalized(IPlugVST3::kBypassParamId, 1.0), kResultOk);
    EXPECT_FALSE(mPlug->IsBypassed());

    MemoryStream broken, stream;
    broken.mFailWrites = mPlug->mThrowOnState = true;
    EXPECT_EQ(static_cast<IComponent*>(mPlug)->getState(&broken), kResultFalse);
    EXPECT_EQ(Controller()->getState(&broken), kResultFalse);
    EXPECT_NE(static_cast<IComponent*>(mPlug)->getState(nullptr), kResultOk);
    EXPECT_EQ(static_cast<IComponent*>(mPlug)->setState(&stream), kOutOfMemory);
    mPlug->mThrowOnActivate = true;
    EXPECT_EQ(mPlug->setActive(true), kInternalError);
    mPlug->mThrowOnActivate = false;
}

struct FakeEditor : IEditorLink
{
    void SetParameterFromPlug(int id, double value, bool) override
    {
        std::tie(mLastId, mLastValue) = std::tuple(id, value);
    }
    void PrepDraw() override {}
    int mLastId = -1;
    double mLastValue = -1.0;
};

// Host changes reach the editor's controls at its next tick, never from the audio thread.
TEST_F(PlugVST3Test, TheEditorHearsTheHostOnItsTick)
{
    FakeEditor editor;
    mPlug->AttachGraphics(&editor);
    ParameterChanges changes;
    changes.Add(kAmount, 0, 0.6);
    Process(&changes, 8);
    EXPECT_DOUBLE_EQ(editor.mLastValue, 0.25);
    mPlug->FlushPendingHostNotices();
    EXPECT_EQ(std::tuple(editor.mLastId, editor.mLastValue), std::tuple(int(kAmount), 0.6));
    mPlug->AttachGraphics(nullptr);
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
}

TEST(HostText, WhatFitsWholeWhatIsCutAndWhatIsMalformed)
{
    // {UTF-8, units of room, what the host's field holds}
    const std::tuple<const char*, int, std::u16string> rows[] = {
        {"a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z", 32, u"a\u00E4\u20AC\U0001F600z"}, // a ä € 😀 z
        {"abcdef", 4, u"abc"},
        // Two units left, the emoji needs two plus the terminator: it is left out whole.
        {"ab\xF0\x9F\x98\x80", 4, u"ab"},
        {"x\xC3", 16, u"x\uFFFD"}, // lead byte without its continuation
        {"\xFFy", 16, u"\uFFFDy"},
    };
    Steinberg::char16 out[32];
    for (const auto& [utf8, capacity, wide] : rows)
    {
        WidenText(utf8, out, capacity);
        EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(out)), wide) << utf8;
    }
    // Back to UTF-8, stopping at the unit limit and replacing lone surrogates.
    WidenText(std::get<0>(rows[0]), out, 32);
    EXPECT_EQ(NarrowText(out, 32), std::get<0>(rows[0]));
    EXPECT_EQ(NarrowText(out, 3), "a\xC3\xA4\xE2\x82\xAC");
    Steinberg::char16 lone[] = {0xD800, u'q', 0};
    EXPECT_EQ(NarrowText(lone, 8), "\xEF\xBF\xBDq");
}
} // namespace
