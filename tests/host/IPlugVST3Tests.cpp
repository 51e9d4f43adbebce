// The VST 3 binding driven in-process through a probe plug-in that records what reaches the engine
// side: which channels are connected and what they carry, which parameters changed, what the host
// was told. The host-side view of the real bundle is in load/HostLoadTests.cpp.

#include "common/HostDoubles.h"

#include "host/IEditorWindow.h"
#include "host/IPlugVST3.h"
#include "host/UncheckedScope.h"
#include "params/IParamRecord.h"
#include "state/ByteChunk.h"

#include "pluginterfaces/vst/ivstunits.h"
#include "pluginterfaces/vst/vstspeaker.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>

using namespace hostdoubles;

namespace
{
enum ProbeParam
{
    kGain,   // double 0..100 %, step 0.1
    kMode,   // enum of three, with texts
    kRate,   // double 0.01..20 Hz, shape 2, group "lfo_rate"
    kDepth,  // double -24..0 dB, shown negated, not automatable, group "lfo_rate"
    kAmount, // double 0..1, group "mix"
    kNumProbeParams
};

std::u16string Text(const char16* s)
{
    return std::u16string(reinterpret_cast<const char16_t*>(s));
}

IPlugConfig ProbeConfig()
{
    IPlugConfig config;
    config.nParams = kNumProbeParams;
    config.channelIOStr = "2-2 3-2 4-2";
    config.nPresets = 1;
    config.effectName = "Probe";
    config.mfrName = "qelmar-audio";
    config.latency = 44;
    config.plugDoesChunks = true;
    config.plugScChans = 2;
    return config;
}

// Records what the binding hands to the engine side. Its state carries a text of variable length
// in front of the parameter values, like the real chunk's preset names.
class ProbePlug : public IPlugVST3
{
  public:
    ProbePlug() : IPlugVST3(ProbeConfig())
    {
        GetParam(kGain)->InitDouble("Gain", 50.0, 0.0, 100.0, 0.1, "%");
        GetParam(kMode)->InitEnum("Mode", 1, 3);
        GetParam(kMode)->SetDisplayText(0, "Low");
        GetParam(kMode)->SetDisplayText(1, "Mid");
        GetParam(kMode)->SetDisplayText(2, "High");
        GetParam(kRate)->InitDouble("Rate", 5.0, 0.01, 20.0, 0.01, "Hz", "lfo_rate", 2.0);
        GetParam(kDepth)->InitDouble("Depth", -6.0, -24.0, 0.0, 0.1, "dB", "lfo_rate");
        GetParam(kDepth)->negateDisplay = true;
        GetParam(kDepth)->canAutomate = false;
        GetParam(kAmount)->InitDouble("Amount", 0.25, 0.0, 1.0, 0.01, "", "mix");
    }

    void ProcessDoubleReplacing(double** inputs, double** outputs, int nFrames) override
    {
        UncheckedScope unchecked;
        ++mProcessCalls;
        for (int ch = 0; ch < 4; ++ch)
        {
            mConnected[ch] = IsInChannelConnected(ch);
            for (int i = 0; i < nFrames; ++i)
                mSeen[ch].push_back(inputs[ch][i]);
        }
        // Main plus ten times the sidechain: the host can tell both apart in the output.
        for (int i = 0; i < nFrames; ++i)
        {
            outputs[0][i] = inputs[0][i] + 10.0 * inputs[2][i];
            outputs[1][i] = inputs[1][i] + 10.0 * inputs[3][i];
        }
        if (mLatencyFromProcess >= 0) SetLatency(mLatencyFromProcess);
        if (mReadTime) GetTime(mTimeSeen);
    }
    void OnParamChange(int id) override
    {
        UncheckedScope unchecked;
        mChanged.push_back(id);
    }
    void Reset() override { ++mResets; }
    void OnActivate(bool) override
    {
        if (mThrowOnActivate) throw std::runtime_error("activation failed");
    }
    bool SerializeState(ByteChunk& chunk) override
    {
        PutStr(chunk, mName);
        return IPlugBase::SerializeState(chunk);
    }
    int UnserializeState(const ByteChunk& chunk, int startPos) override
    {
        if (mThrowOnState) throw std::bad_alloc();
        return UnserializeParams(chunk, GetStr(chunk, mName, startPos));
    }
    void ClearSeen()
    {
        for (auto& seen : mSeen)
            seen.clear();
    }

    std::string mName = "init";
    std::vector<double> mSeen[4];
    bool mConnected[4] = {};
    std::vector<int> mChanged;
    int mProcessCalls = 0;
    int mResets = 0;
    int mLatencyFromProcess = -1;
    bool mReadTime = false;
    TransportInfo mTimeSeen;
    bool mThrowOnActivate = false;
    bool mThrowOnState = false;
};

// An editor with a window, as the editor layer will provide it.
class FakeEditor : public IEditorLink, public IEditorWindow
{
  public:
    void SetParameterFromPlug(int id, double value, bool) override
    {
        mLastId = id;
        mLastValue = value;
    }
    void PrepDraw() override {}
    bool IsPlatformTypeSupported(const char* type) const override
    {
        return std::string(type) == "X11EmbedWindowID";
    }
    bool OpenWindow(void* parent, void*) override
    {
        mParent = parent;
        return true;
    }
    void CloseWindow() override { mParent = nullptr; }
    int Width() const override { return 800; }
    int Height() const override { return 500; }

    int mLastId = -1;
    double mLastValue = -1.0;
    void* mParent = nullptr;
};

class PlugVST3Test : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        mPlug = new ProbePlug;
        ASSERT_EQ(mPlug->initialize(&mHost), kResultOk);
        mPlug->setComponentHandler(&mHandler);
        for (int b = 0; b < 2; ++b)
            mPlug->activateBus(kAudio, kInput, b, true);
        mPlug->activateBus(kAudio, kOutput, 0, true);
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
    IComponent* Component() { return static_cast<IComponent*>(mPlug); }
    IEditController* Controller() { return static_cast<IEditController*>(mPlug); }

    std::vector<std::uint8_t> ComponentState()
    {
        MemoryStream stream;
        EXPECT_EQ(Component()->getState(&stream), kResultOk);
        return stream.Bytes();
    }
    std::vector<std::uint8_t> ControllerState()
    {
        MemoryStream stream;
        EXPECT_EQ(Controller()->getState(&stream), kResultOk);
        return stream.Bytes();
    }

    HostApplication mHost;
    ComponentHandler mHandler;
    ProbePlug* mPlug = nullptr;
};

TEST_F(PlugVST3Test, LastPointOfAQueueIsAppliedThroughTheEngineHandler)
{
    AudioRig<double> rig(64, {2, 2}, {2});
    ParameterChanges changes;
    changes.Add(kGain, 0, 0.9);
    changes.Add(kGain, 20, 0.1);
    changes.Add(kGain, 63, 0.3);
    changes.Add(kMode, 5, 0.0);
    changes.Add(kMode, 40, 1.0);
    rig.data.inputParameterChanges = &changes;
    mPlug->mChanged.clear();
    ASSERT_EQ(mPlug->process(rig.data), kResultOk);

    EXPECT_NEAR(mPlug->GetParam(kGain)->value, 30.0, 1e-9);
    EXPECT_EQ(mPlug->GetParam(kMode)->value, 2.0);
    EXPECT_NEAR(Controller()->getParamNormalized(kGain), 0.3, 1e-12);
    EXPECT_EQ(mPlug->mChanged, (std::vector<int>{kGain, kMode}));

    // The controller's own setter changes what the host reads back, but the engine never hears of it.
    mPlug->mChanged.clear();
    EXPECT_EQ(Controller()->setParamNormalized(kGain, 0.75), kResultOk);
    EXPECT_NEAR(Controller()->getParamNormalized(kGain), 0.75, 1e-12);
    EXPECT_TRUE(mPlug->mChanged.empty());
    EXPECT_NE(Controller()->setParamNormalized(kNumProbeParams, 0.5), kResultOk);
    EXPECT_EQ(Controller()->setParamNormalized(IPlugVST3::kBypassParamId, 1.0), kResultOk);
    EXPECT_FALSE(mPlug->IsBypassed());
}

TEST_F(PlugVST3Test, BypassAndPresetQueuesUseTheirLastPoint)
{
    AudioRig<double> rig(32, {2, 2}, {2});
    ParameterChanges changes;
    changes.Add(IPlugVST3::kBypassParamId, 0, 1.0);
    changes.Add(IPlugVST3::kBypassParamId, 16, 0.2);
    rig.data.inputParameterChanges = &changes;
    mPlug->process(rig.data);
    EXPECT_FALSE(mPlug->IsBypassed());
    EXPECT_EQ(Controller()->getParamNormalized(IPlugVST3::kBypassParamId), 0.0);

    changes.Clear();
    changes.Add(IPlugVST3::kBypassParamId, 0, 0.0);
    changes.Add(IPlugVST3::kBypassParamId, 31, 0.51);
    mPlug->process(rig.data);
    EXPECT_TRUE(mPlug->IsBypassed());
    EXPECT_EQ(Controller()->getParamNormalized(IPlugVST3::kBypassParamId), 1.0);

    // Value 1 with one preset asks for index 1, which doesn't exist: preset 0 stays as recorded.
    const std::string nameBefore = mPlug->GetPreset(0)->name;
    changes.Clear();
    changes.Add(IPlugVST3::kPresetParamId, 0, 1.0);
    mPlug->process(rig.data);
    EXPECT_EQ(mPlug->GetCurrentPresetIdx(), 0);
    EXPECT_EQ(mPlug->GetPreset(0)->name, nameBefore);
    EXPECT_EQ(nameBefore, "user preset 1");
}

TEST_F(PlugVST3Test, SidechainChannelsFollowTheMainInputsAndLeaveNoStaleData)
{
    AudioRig<double> rig(32, {2, 2}, {2});
    for (int i = 0; i < 32; ++i)
    {
        rig.In(0, 0)[i] = 0.001 * i;
        rig.In(0, 1)[i] = -0.001 * i;
        rig.In(1, 0)[i] = 0.5;
        rig.In(1, 1)[i] = -0.25;
    }
    ASSERT_EQ(mPlug->process(rig.data), kResultOk);
    EXPECT_TRUE(mPlug->mConnected[0] && mPlug->mConnected[1] && mPlug->mConnected[2] && mPlug->mConnected[3]);
    EXPECT_EQ(mPlug->mSeen[2].back(), 0.5);
    EXPECT_EQ(mPlug->mSeen[3].back(), -0.25);
    EXPECT_DOUBLE_EQ(rig.Out(0, 0)[31], 0.031 + 5.0);
    EXPECT_DOUBLE_EQ(rig.Out(0, 1)[31], -0.031 - 2.5);

    // The host switches the aux bus off but keeps handing over its (stale) buffers.
    mPlug->activateBus(kAudio, kInput, 1, false);
    mPlug->ClearSeen();
    mPlug->process(rig.data);
    EXPECT_FALSE(mPlug->mConnected[2]);
    EXPECT_FALSE(mPlug->mConnected[3]);
    for (int ch : {2, 3})
        for (double v : mPlug->mSeen[ch])
            ASSERT_EQ(v, 0.0);
    EXPECT_DOUBLE_EQ(rig.Out(0, 0)[31], 0.031);

    // Back on: the sidechain is heard again.
    mPlug->activateBus(kAudio, kInput, 1, true);
    mPlug->process(rig.data);
    EXPECT_TRUE(mPlug->mConnected[2]);
    EXPECT_DOUBLE_EQ(rig.Out(0, 1)[31], -0.031 - 2.5);
}

TEST_F(PlugVST3Test, MainWidthIsLimitedByTheHostOutputAndTheSidechainKeepsItsPlace)
{
    // A host running the plug-in mono: one main channel, one output channel, a stereo sidechain.
    AudioRig<double> rig(16, {1, 2}, {1});
    std::fill(rig.In(0, 0).begin(), rig.In(0, 0).end(), 0.125);
    std::fill(rig.In(1, 0).begin(), rig.In(1, 0).end(), 0.5);
    std::fill(rig.In(1, 1).begin(), rig.In(1, 1).end(), 0.75);
    ASSERT_EQ(mPlug->process(rig.data), kResultOk);
    EXPECT_TRUE(mPlug->mConnected[0]);
    EXPECT_FALSE(mPlug->mConnected[1]);
    EXPECT_TRUE(mPlug->mConnected[2]);
    EXPECT_TRUE(mPlug->mConnected[3]);
    EXPECT_EQ(mPlug->mSeen[1].back(), 0.0);
    EXPECT_EQ(mPlug->mSeen[2].back(), 0.5);
    EXPECT_EQ(mPlug->mSeen[3].back(), 0.75);
    EXPECT_DOUBLE_EQ(rig.Out(0, 0)[15], 0.125 + 5.0);

    // Stereo main but a mono output: only the first main channel counts.
    AudioRig<double> narrow(16, {2, 2}, {1});
    mPlug->process(narrow.data);
    EXPECT_TRUE(mPlug->mConnected[0]);
    EXPECT_FALSE(mPlug->mConnected[1]);
}

TEST_F(PlugVST3Test, FloatPathCarriesTheSidechainAndInactiveOutputsAreSilenced)
{
    AudioRig<float> rig(40, {2, 2}, {2});
    std::fill(rig.In(0, 0).begin(), rig.In(0, 0).end(), 0.25f);
    std::fill(rig.In(1, 1).begin(), rig.In(1, 1).end(), 0.125f);
    rig.PoisonOutputs(99.0f);
    ASSERT_EQ(mPlug->process(rig.data), kResultOk);
    EXPECT_FLOAT_EQ(rig.Out(0, 0)[39], 0.25f);
    EXPECT_FLOAT_EQ(rig.Out(0, 1)[39], 1.25f);

    mPlug->activateBus(kAudio, kOutput, 0, false);
    rig.PoisonOutputs(99.0f);
    const int callsBefore = mPlug->mProcessCalls;
    ASSERT_EQ(mPlug->process(rig.data), kResultOk);
    EXPECT_EQ(mPlug->mProcessCalls, callsBefore + 1);
    for (int ch = 0; ch < 2; ++ch)
        for (float v : rig.Out(0, ch))
            ASSERT_EQ(v, 0.0f);
}

TEST_F(PlugVST3Test, EmptyAndMalformedProcessCallsAreHarmless)
{
    ProcessData empty;
    empty.symbolicSampleSize = kSample32;
    EXPECT_EQ(mPlug->process(empty), kResultOk);

    // Parameters only, no audio: the flush call hosts make while stopped.
    ParameterChanges changes;
    changes.Add(kAmount, 0, 0.5);
    empty.inputParameterChanges = &changes;
    EXPECT_EQ(mPlug->process(empty), kResultOk);
    EXPECT_NEAR(mPlug->GetParam(kAmount)->value, 0.5, 1e-12);

    // Buses with zero channels and null arrays, with samples to do.
    AudioBusBuffers in[2];
    AudioBusBuffers out[1];
    ProcessData data;
    data.symbolicSampleSize = kSample64;
    data.numSamples = 128;
    data.numInputs = 2;
    data.numOutputs = 1;
    data.inputs = in;
    data.outputs = out;
    EXPECT_EQ(mPlug->process(data), kResultOk);

    // Points out of range or not numbers leave the parameter alone or cut it to the range.
    changes.Clear();
    changes.Add(kAmount, 0, std::nan(""));
    changes.Add(kGain, 0, 7.0);
    changes.Add(kRate, 0, -3.0);
    EXPECT_EQ(mPlug->process(empty), kResultOk);
    EXPECT_NEAR(mPlug->GetParam(kAmount)->value, 0.5, 1e-12);
    EXPECT_EQ(mPlug->GetParam(kGain)->value, 100.0);
    EXPECT_NEAR(mPlug->GetParam(kRate)->value, 0.01, 1e-12);

    AudioRig<double> rig(8, {2, 2}, {2});
    rig.data.symbolicSampleSize = 7;
    const int calls = mPlug->mProcessCalls;
    EXPECT_NE(mPlug->process(rig.data), kResultOk);
    EXPECT_EQ(mPlug->mProcessCalls, calls);
}

TEST_F(PlugVST3Test, TransportIsCopiedFromTheProcessContext)
{
    AudioRig<double> rig(32, {2, 2}, {2});
    ProcessContext context{};
    context.state = ProcessContext::kPlaying | ProcessContext::kCycleActive | ProcessContext::kTempoValid |
                    ProcessContext::kTimeSigValid;
    context.sampleRate = 48000.0;
    context.projectTimeSamples = 96000;
    context.projectTimeMusic = 8.5;
    context.barPositionMusic = 7.0;
    context.cycleStartMusic = 4.0;
    context.cycleEndMusic = 12.0;
    context.tempo = 133.0;
    context.timeSigNumerator = 7;
    context.timeSigDenominator = 8;
    rig.data.processContext = &context;
    mPlug->mReadTime = true;
    mPlug->process(rig.data);

    const TransportInfo& t = mPlug->mTimeSeen;
    EXPECT_EQ(t.mSamplePos, 96000.0);
    EXPECT_EQ(t.mTempo, 133.0);
    EXPECT_EQ(t.mQuarterPos, 8.5);
    EXPECT_EQ(t.mLastBarStart, 7.0);
    EXPECT_EQ(t.mCycleStart, 4.0);
    EXPECT_EQ(t.mCycleEnd, 12.0);
    EXPECT_EQ(t.mNumerator, 7);
    EXPECT_EQ(t.mDenominator, 8);
    EXPECT_TRUE(t.mPlaying);
    EXPECT_TRUE(t.mCycleActive);
    EXPECT_EQ(mPlug->GetTempo(), 133.0);
    EXPECT_EQ(mPlug->GetSamplePos(), 96000.0);

    // Stopped, and a host that sends no tempo: the last good tempo and metre stay.
    context.state = 0;
    context.tempo = 0.0;
    context.timeSigNumerator = 0;
    mPlug->process(rig.data);
    EXPECT_FALSE(mPlug->mTimeSeen.mPlaying);
    EXPECT_FALSE(mPlug->mTimeSeen.mCycleActive);
    EXPECT_EQ(mPlug->GetTempo(), 133.0);
    int num = 0;
    int den = 0;
    mPlug->GetTimeSig(num, den);
    EXPECT_EQ(num, 7);
    EXPECT_EQ(den, 8);

    EXPECT_FALSE(mPlug->IsRenderingOffline());
    ProcessSetup offline{kOffline, kSample32, 256, 44100.0};
    mPlug->setupProcessing(offline);
    EXPECT_TRUE(mPlug->IsRenderingOffline());
}

TEST_F(PlugVST3Test, LatencyChangesReachTheHostOnTheUiThreadOnly)
{
    EXPECT_EQ(mPlug->getLatencySamples(), 44u);
    mPlug->SetLatency(44);
    EXPECT_EQ(mHandler.mLatencyRestarts, 0);
    mPlug->SetLatency(80);
    EXPECT_EQ(mHandler.mLatencyRestarts, 1);
    EXPECT_EQ(mPlug->getLatencySamples(), 80u);

    // The engine changes it while processing: the host learns of it at its next UI-thread call.
    AudioRig<double> rig(32, {2, 2}, {2});
    mPlug->mLatencyFromProcess = 128;
    mPlug->process(rig.data);
    EXPECT_EQ(mHandler.mLatencyRestarts, 1);
    EXPECT_EQ(mPlug->getLatencySamples(), 128u);
    Controller()->getParamNormalized(kGain);
    EXPECT_EQ(mHandler.mLatencyRestarts, 2);
    Controller()->getParamNormalized(kGain);
    EXPECT_EQ(mHandler.mLatencyRestarts, 2);
}

TEST_F(PlugVST3Test, EditorChangesAreToldToTheHostInOrder)
{
    mPlug->BeginInformHostOfParamChange(kAmount);
    mPlug->SetParameterFromGUI(kAmount, 0.4);
    mPlug->EndInformHostOfParamChange(kAmount);
    const auto edits = mHandler.Edits();
    ASSERT_EQ(edits.size(), 3u);
    EXPECT_EQ(edits[0].kind, 'b');
    EXPECT_EQ(edits[1].kind, 'p');
    EXPECT_EQ(edits[1].id, static_cast<ParamID>(kAmount));
    EXPECT_DOUBLE_EQ(edits[1].value, 0.4);
    EXPECT_EQ(edits[2].kind, 'e');
    EXPECT_NEAR(mPlug->GetParam(kAmount)->value, 0.4, 1e-12);
}

TEST_F(PlugVST3Test, ParameterInfoComesFromTheRecords)
{
    ASSERT_EQ(Controller()->getParameterCount(), 2 + kNumProbeParams);
    ParameterInfo info{};
    ASSERT_EQ(Controller()->getParameterInfo(0, info), kResultTrue);
    EXPECT_EQ(info.id, IPlugVST3::kPresetParamId);
    EXPECT_EQ(info.flags, ParameterInfo::kIsProgramChange);
    EXPECT_EQ(info.stepCount, 1);
    ASSERT_EQ(Controller()->getParameterInfo(1, info), kResultTrue);
    EXPECT_EQ(info.id, IPlugVST3::kBypassParamId);
    EXPECT_EQ(info.flags, ParameterInfo::kCanAutomate | ParameterInfo::kIsBypass | ParameterInfo::kIsList);
    EXPECT_EQ(info.stepCount, 1);

    ASSERT_EQ(Controller()->getParameterInfo(2 + kRate, info), kResultTrue);
    EXPECT_EQ(info.id, static_cast<ParamID>(kRate));
    EXPECT_EQ(Text(info.title), u"Rate");
    EXPECT_EQ(Text(info.units), u"Hz");
    EXPECT_EQ(info.stepCount, 0);
    // Default 5 Hz in 0.01..20 with shape 2: ((5 - 0.01) / 19.99)^(1/2).
    EXPECT_NEAR(info.defaultNormalizedValue, std::sqrt(4.99 / 19.99), 1e-12);
    EXPECT_EQ(info.flags, ParameterInfo::kCanAutomate);
    EXPECT_EQ(info.unitId, 1);

    ASSERT_EQ(Controller()->getParameterInfo(2 + kMode, info), kResultTrue);
    EXPECT_EQ(info.stepCount, 2);
    EXPECT_NEAR(info.defaultNormalizedValue, 0.5, 1e-12);
    EXPECT_EQ(info.unitId, kRootUnitId);

    ASSERT_EQ(Controller()->getParameterInfo(2 + kDepth, info), kResultTrue);
    EXPECT_EQ(info.flags, 0);
    EXPECT_EQ(info.unitId, 1);
    ASSERT_EQ(Controller()->getParameterInfo(2 + kAmount, info), kResultTrue);
    EXPECT_EQ(info.unitId, 2);
}

TEST_F(PlugVST3Test, StringsAndPlainValuesGoThroughTheRecords)
{
    String128 text{};
    ASSERT_EQ(Controller()->getParamStringByValue(kMode, 1.0, text), kResultTrue);
    EXPECT_EQ(Text(text), u"High");
    ASSERT_EQ(Controller()->getParamStringByValue(kGain, 0.5, text), kResultTrue);
    EXPECT_EQ(Text(text), u"50.0");
    ASSERT_EQ(Controller()->getParamStringByValue(kDepth, 0.75, text), kResultTrue);
    EXPECT_EQ(Text(text), u"6.0");
    ASSERT_EQ(Controller()->getParamStringByValue(IPlugVST3::kBypassParamId, 1.0, text), kResultTrue);
    EXPECT_EQ(Text(text), u"on");
    EXPECT_NE(Controller()->getParamStringByValue(999, 0.5, text), kResultTrue);

    ParamValue normalized = -1.0;
    char16 mid[] = u"Mid";
    ASSERT_EQ(Controller()->getParamValueByString(kMode, mid, normalized), kResultTrue);
    EXPECT_NEAR(normalized, 0.5, 1e-12);
    char16 number[] = u"25.0";
    ASSERT_EQ(Controller()->getParamValueByString(kGain, number, normalized), kResultTrue);
    EXPECT_NEAR(normalized, 0.25, 1e-12);
    // A negated display reads back to the stored sign: "12.0" shown for -12 dB.
    char16 shown[] = u"12.0";
    ASSERT_EQ(Controller()->getParamValueByString(kDepth, shown, normalized), kResultTrue);
    EXPECT_NEAR(normalized, 0.5, 1e-12);
    char16 junk[] = u"loud";
    EXPECT_NE(Controller()->getParamValueByString(kGain, junk, normalized), kResultTrue);

    EXPECT_NEAR(Controller()->normalizedParamToPlain(kRate, 0.5), 0.01 + 19.99 * 0.25, 1e-12);
    EXPECT_NEAR(Controller()->plainParamToNormalized(kRate, 0.01 + 19.99 * 0.25), 0.5, 1e-12);
    EXPECT_EQ(Controller()->normalizedParamToPlain(kMode, 0.74), 1.0);
    EXPECT_EQ(Controller()->normalizedParamToPlain(12345, 0.3), 0.3);
    EXPECT_EQ(Controller()->plainParamToNormalized(12345, 7.0), 7.0);
}

TEST_F(PlugVST3Test, ControllerStateCarriesTheBypassWordBehindAChunkOfAnyLength)
{
    AudioRig<double> rig(16, {2, 2}, {2});
    ParameterChanges changes;
    changes.Add(IPlugVST3::kBypassParamId, 0, 1.0);
    changes.Add(kGain, 0, 0.8);
    rig.data.inputParameterChanges = &changes;
    mPlug->process(rig.data);
    mPlug->mName = "a much longer preset name than the one of the receiving instance";

    const auto component = ComponentState();
    const auto controller = ControllerState();
    ASSERT_EQ(controller.size(), component.size() + 4);
    EXPECT_TRUE(std::equal(component.begin(), component.end(), controller.begin()));
    EXPECT_EQ(controller.back() | controller[controller.size() - 2] | controller[controller.size() - 3], 0);
    EXPECT_EQ(controller[controller.size() - 4], 1);

    // A second instance with a short name takes all of it, bypass included.
    ProbePlug* other = new ProbePlug;
    ASSERT_EQ(other->initialize(&mHost), kResultOk);
    other->mName = "x";
    MemoryStream stream(controller);
    ASSERT_EQ(static_cast<IEditController*>(other)->setState(&stream), kResultOk);
    EXPECT_TRUE(other->IsBypassed());
    EXPECT_EQ(other->mName, mPlug->mName);
    EXPECT_NEAR(other->GetParam(kGain)->value, 80.0, 1e-9);
    EXPECT_NEAR(other->GetParam(kAmount)->value, 0.25, 1e-12);
    MemoryStream again;
    static_cast<IComponent*>(other)->getState(&again);
    EXPECT_EQ(again.Bytes(), component);

    // The component's state has no bypass word: reading it leaves the bypass flag alone.
    other->SetBypassed(false);
    MemoryStream plain(component);
    ASSERT_EQ(static_cast<IComponent*>(other)->setState(&plain), kResultOk);
    EXPECT_FALSE(other->IsBypassed());
    other->terminate();
    other->release();
}

TEST_F(PlugVST3Test, StreamFailuresAndThrowingEnginesStayInside)
{
    MemoryStream broken;
    broken.mFailWrites = true;
    EXPECT_EQ(Component()->getState(&broken), kResultFalse);
    EXPECT_EQ(Controller()->getState(&broken), kResultFalse);
    EXPECT_NE(Component()->getState(nullptr), kResultOk);

    mPlug->mThrowOnState = true;
    MemoryStream stream(ComponentState());
    EXPECT_EQ(Component()->setState(&stream), kOutOfMemory);
    mPlug->mThrowOnState = false;

    mPlug->mThrowOnActivate = true;
    EXPECT_EQ(mPlug->setActive(true), kInternalError);
    mPlug->mThrowOnActivate = false;
}

TEST_F(PlugVST3Test, ArrangementsFollowTheChannelTable)
{
    SpeakerArrangement in[2] = {SpeakerArr::kStereo, SpeakerArr::kStereo};
    SpeakerArrangement out[1] = {SpeakerArr::kStereo};
    EXPECT_EQ(mPlug->setBusArrangements(in, 2, out, 1), kResultTrue);

    // Three main channels and a mono sidechain: both buses are rebuilt under their new names.
    SpeakerArrangement wide[2] = {0x103, SpeakerArr::kMono};
    EXPECT_EQ(mPlug->setBusArrangements(wide, 2, out, 1), kResultTrue);
    BusInfo info{};
    ASSERT_EQ(Component()->getBusInfo(kAudio, kInput, 0, info), kResultTrue);
    EXPECT_EQ(info.channelCount, 3);
    EXPECT_EQ(Text(info.name), u"Input");
    EXPECT_EQ(info.busType, kMain);
    ASSERT_EQ(Component()->getBusInfo(kAudio, kInput, 1, info), kResultTrue);
    EXPECT_EQ(info.channelCount, 1);
    EXPECT_EQ(Text(info.name), u"Sidechain Input");
    EXPECT_EQ(info.busType, kAux);
    SpeakerArrangement arr = 0;
    ASSERT_EQ(mPlug->getBusArrangement(kInput, 1, arr), kResultTrue);
    EXPECT_EQ(arr, static_cast<SpeakerArrangement>(0x80000));

    // Pairs outside "2-2 3-2 4-2" change nothing and are not agreed to.
    SpeakerArrangement mono[1] = {SpeakerArr::kMono};
    EXPECT_EQ(mPlug->setBusArrangements(wide, 2, mono, 1), kResultFalse);
    ASSERT_EQ(mPlug->getBusArrangement(kOutput, 0, arr), kResultTrue);
    EXPECT_EQ(arr, SpeakerArr::kStereo);
    // Four main channels take the table's four-channel arrangement, which differs from L R C S.
    SpeakerArrangement quad[1] = {SpeakerArr::k40Music};
    EXPECT_EQ(mPlug->setBusArrangements(quad, 1, out, 1), kResultFalse);
    ASSERT_EQ(mPlug->getBusArrangement(kInput, 0, arr), kResultTrue);
    EXPECT_EQ(arr, static_cast<SpeakerArrangement>(0xF00000));
    EXPECT_EQ(mPlug->setBusArrangements(nullptr, 1, out, 1), kInvalidArgument);
}

TEST_F(PlugVST3Test, SetupProcessingKeepsRateAndBlockAndRefusesOtherSampleSizes)
{
    const int resets = mPlug->mResets;
    ProcessSetup setup{kRealtime, kSample32, 20000, 1234.5678};
    ASSERT_EQ(mPlug->setupProcessing(setup), kResultOk);
    EXPECT_EQ(mPlug->GetSampleRate(), 1234.5678);
    EXPECT_EQ(mPlug->GetBlockSize(), 8192);
    EXPECT_EQ(mPlug->mResets, resets + 1);

    ProcessSetup odd{kRealtime, 2, 512, 44100.0};
    EXPECT_EQ(mPlug->setupProcessing(odd), kResultFalse);
    EXPECT_EQ(mPlug->GetSampleRate(), 1234.5678);
    ProcessSetup bad{kRealtime, kSample64, 512, 0.0};
    EXPECT_NE(mPlug->setupProcessing(bad), kResultOk);

    // Host blocks longer than the agreed maximum still reach the engine whole, in pieces.
    AudioRig<double> rig(20000, {2, 2}, {2});
    for (int i = 0; i < 20000; ++i)
        rig.In(0, 0)[i] = i;
    mPlug->ClearSeen();
    ASSERT_EQ(mPlug->process(rig.data), kResultOk);
    ASSERT_EQ(mPlug->mSeen[0].size(), 20000u);
    EXPECT_EQ(mPlug->mSeen[0][19999], 19999.0);
    EXPECT_EQ(rig.Out(0, 0)[12345], 12345.0);
}

TEST_F(PlugVST3Test, ViewsExistOnlyWithAnEditor)
{
    EXPECT_EQ(Controller()->createView("editor"), nullptr);
    FakeEditor editor;
    mPlug->AttachGraphics(&editor);
    EXPECT_EQ(Controller()->createView("Editor"), nullptr);
    EXPECT_EQ(Controller()->createView(nullptr), nullptr);
    IPlugView* view = Controller()->createView("editor");
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->isPlatformTypeSupported("X11EmbedWindowID"), kResultTrue);
    EXPECT_NE(view->isPlatformTypeSupported("HWND"), kResultTrue);

    PlugFrame frame;
    view->setFrame(&frame);
    int parent = 0;
    ASSERT_EQ(view->attached(&parent, "X11EmbedWindowID"), kResultOk);
    EXPECT_EQ(editor.mParent, &parent);
    ViewRect rect;
    ASSERT_EQ(view->getSize(&rect), kResultTrue);
    EXPECT_EQ(rect.getWidth(), 800);
    EXPECT_EQ(rect.getHeight(), 500);
    mPlug->ResizeGraphics(640, 480);
    EXPECT_EQ(frame.mResizes, 1);
    EXPECT_EQ(frame.mLast.getWidth(), 640);
    EXPECT_EQ(frame.mLast.getHeight(), 480);

    // Parameter changes from the host reach the editor's controls at its next tick, never from
    // the audio thread.
    AudioRig<double> rig(8, {2, 2}, {2});
    ParameterChanges changes;
    changes.Add(kAmount, 0, 0.6);
    rig.data.inputParameterChanges = &changes;
    mPlug->process(rig.data);
    EXPECT_DOUBLE_EQ(editor.mLastValue, 0.25);
    mPlug->FlushPendingHostNotices();
    EXPECT_EQ(editor.mLastId, kAmount);
    EXPECT_DOUBLE_EQ(editor.mLastValue, 0.6);

    EXPECT_EQ(view->removed(), kResultOk);
    EXPECT_EQ(editor.mParent, nullptr);
    view->release();
    mPlug->ResizeGraphics(320, 200);
    EXPECT_EQ(frame.mResizes, 1);
    mPlug->AttachGraphics(nullptr);
}

} // namespace
