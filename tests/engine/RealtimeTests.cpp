// The audio thread under full automation: a plug-in made by the engine's creation function is driven
// through IPlugVST3::process at every supported rate and host block size while the parameter queues
// move every record of the table at random each block. Built with -fsanitize=realtime, any
// allocation, lock or system call inside `process` aborts the run; in every build the test checks
// that `process` never calls the host, that each queue's last point lands in its record, and that
// what the engine writes to linked parameters reaches the host, through the output changes where
// the host offers them, else from the UI thread.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "common/HostDoubles.h"
#include "host/IPlugVST3.h"
#include "host/PlugInstance.h"
#include "params/IParamRecord.h"
#include "pluginterfaces/vst/ivstprocesscontext.h"

#ifdef QUORVEX_RTSAN
// A finding ends the run however the binary is started, so a report can't go unnoticed.
extern "C" const char* __rtsan_default_options()
{
    return "halt_on_error=1";
}
#endif

namespace
{
using namespace hostdoubles;

// Queues made once for every parameter: a block rewrites their points, nothing is allocated, so the
// host side stays cheap even at one frame per block.
class FixedQueue final : public StackUnknown<IParamValueQueue>
{
  public:
    static constexpr int kMaxPoints = 4;
    explicit FixedQueue(ParamID id) : mId(id) {}
    ParamID PLUGIN_API getParameterId() override { return mId; }
    int32 PLUGIN_API getPointCount() override { return mCount; }
    tresult PLUGIN_API getPoint(int32 index, int32& offset, ParamValue& value) override
    {
        if (index < 0 || index >= mCount) return kResultFalse;
        offset = mOffsets[index];
        value = mValues[index];
        return kResultTrue;
    }
    tresult PLUGIN_API addPoint(int32 offset, ParamValue value, int32& index) override
    {
        if (mCount == kMaxPoints) return kResultFalse;
        index = mCount++;
        mOffsets[index] = offset;
        mValues[index] = value;
        return kResultTrue;
    }
    void Clear() { mCount = 0; }
    int32 Count() const { return mCount; }
    ParamValue Last() const { return mValues[mCount - 1]; }

  private:
    ParamID mId;
    int32 mCount = 0;
    int32 mOffsets[kMaxPoints] = {};
    ParamValue mValues[kMaxPoints] = {};
};

class FixedChanges final : public StackUnknown<IParameterChanges>
{
  public:
    explicit FixedChanges(const std::vector<ParamID>& ids) : mQueues(ids.begin(), ids.end()) {}
    int32 PLUGIN_API getParameterCount() override { return static_cast<int32>(mQueues.size()); }
    IParamValueQueue* PLUGIN_API getParameterData(int32 index) override
    {
        return index >= 0 && index < getParameterCount() ? &mQueues[static_cast<size_t>(index)] : nullptr;
    }
    // As output changes: the queue of a record id (made up front, ids count from 0).
    IParamValueQueue* PLUGIN_API addParameterData(const ParamID& id, int32& index) override
    {
        if (id >= mQueues.size()) return nullptr;
        index = static_cast<int32>(id);
        return &mQueues[id];
    }
    FixedQueue& Queue(size_t i) { return mQueues[i]; }
    size_t Size() const { return mQueues.size(); }

  private:
    std::vector<FixedQueue> mQueues;
};

struct Releaser
{
    void operator()(IPlugVST3* plug) const
    {
        plug->setProcessing(false);
        plug->setActive(false);
        plug->terminate();
        plug->release();
    }
};
using PlugPtr = std::unique_ptr<IPlugVST3, Releaser>;

PlugPtr StartPlug(HostApplication& host, ComponentHandler& handler, double rate, int block, int32 sampleSize)
{
    PlugPtr plug(CreatePlugInstance());
    EXPECT_EQ(plug->initialize(&host), kResultOk);
    plug->setComponentHandler(&handler);
    plug->activateBus(kAudio, kInput, 0, true);
    plug->activateBus(kAudio, kInput, 1, true);
    plug->activateBus(kAudio, kOutput, 0, true);
    ProcessSetup setup{kRealtime, sampleSize, block, rate};
    EXPECT_EQ(plug->setupProcessing(setup), kResultOk);
    plug->setActive(true);
    plug->setProcessing(true);
    return plug;
}

template <typename Sample> void RunAutomated(double rate, int block, std::uint32_t seed)
{
    SCOPED_TRACE(::testing::Message()
                 << rate << " Hz, " << block << " frames, " << (sizeof(Sample) * 8) << "-bit");
    HostApplication host;
    ComponentHandler handler;
    PlugPtr plug = StartPlug(host, handler, rate, block, sizeof(Sample) == 8 ? kSample64 : kSample32);
    const int nParams = plug->NParams();
    ASSERT_GT(nParams, 0);

    // Every record, then bypass (on one block in eight, so the pass-through path runs too) and the
    // preset, whose recording must wait for the UI thread.
    std::vector<ParamID> ids;
    for (int id = 0; id < nParams; ++id)
        ids.push_back(static_cast<ParamID>(id));
    ids.push_back(IPlugVST3::kBypassParamId);
    ids.push_back(IPlugVST3::kPresetParamId);
    FixedChanges changes(ids);

    // What the plug-in writes itself comes back through the output changes on every other run.
    FixedChanges written(std::vector<ParamID>(ids.begin(), ids.end() - 2));
    const bool withOutput = seed % 2 == 0;

    AudioRig<Sample> rig(block, {2, 2}, {2});
    rig.data.inputParameterChanges = &changes;
    rig.data.outputParameterChanges = withOutput ? &written : nullptr;
    // A transport whose tempo jumps every block keeps the tempo-synced paths busy as well.
    ProcessContext context{};
    context.sampleRate = rate;
    context.timeSigNumerator = 4;
    context.timeSigDenominator = 4;
    rig.data.processContext = &context;
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::uniform_int_distribution<int> points(1, FixedQueue::kMaxPoints);
    std::uniform_int_distribution<int> offset(0, block - 1);
    std::uniform_real_distribution<double> tempo(40.0, 240.0);

    // Enough host blocks for several 32-sample engine blocks even at one frame per call (each
    // one-frame block rewrites every record, so more of them only costs time).
    const int nBlocks = std::max(6, 2048 / block);
    bool heard = false;
    for (int b = 0; b < nBlocks; ++b)
    {
        for (size_t q = 0; q < changes.Size(); ++q)
        {
            FixedQueue& queue = changes.Queue(q);
            queue.Clear();
            int32 index = 0;
            for (int p = points(rng); p > 0; --p)
                queue.addPoint(offset(rng), unit(rng), index);
        }
        // Bypass on for one block in eight.
        FixedQueue& bypass = changes.Queue(static_cast<size_t>(nParams));
        bypass.Clear();
        int32 index = 0;
        bypass.addPoint(0, b % 8 == 7 ? 1.0 : 0.0, index);
        const uint32 playing = b % 16 == 15 ? 0u : static_cast<uint32>(ProcessContext::kPlaying);
        context.state = playing | ProcessContext::kTempoValid | ProcessContext::kTimeSigValid |
                        ProcessContext::kProjectTimeMusicValid | ProcessContext::kBarPositionValid;
        context.tempo = tempo(rng);
        context.projectTimeSamples = static_cast<TSamples>(b) * block;
        context.projectTimeMusic = static_cast<double>(b) * block / rate * context.tempo / 60.0;
        context.barPositionMusic = std::floor(context.projectTimeMusic / 4.0) * 4.0;
        for (int ch = 0; ch < 2; ++ch)
            for (int i = 0; i < block; ++i)
            {
                rig.In(0, ch)[static_cast<size_t>(i)] = static_cast<Sample>(unit(rng) - 0.5);
                rig.In(1, ch)[static_cast<size_t>(i)] = static_cast<Sample>(unit(rng) - 0.5);
            }

        plug->FlushPendingHostNotices();
        handler.Clear();
        for (size_t q = 0; q < written.Size(); ++q)
            written.Queue(q).Clear();
        ASSERT_EQ(plug->process(rig.data), kResultOk);
        // The host hears nothing from the audio thread.
        ASSERT_TRUE(handler.Edits().empty()) << "block " << b;
        ASSERT_EQ(handler.mRestarts.load(), 0) << "block " << b;
        for (int ch = 0; ch < 2; ++ch)
            for (Sample x : rig.Out(0, ch))
            {
                ASSERT_TRUE(std::isfinite(static_cast<double>(x))) << "block " << b;
                heard = heard || x != Sample(0);
            }

        // Each record holds its queue's last point, unless the engine wrote it as a linked
        // parameter, in which case the host learns the value on its next UI-thread call.
        std::vector<int> moved;
        for (int id = 0; id < nParams; ++id)
        {
            const IParamRecord& record = *plug->GetParam(id);
            const double last = changes.Queue(static_cast<size_t>(id)).Last();
            // A value within single precision of the record's is an echo and leaves it alone.
            const bool echo = static_cast<float>(last) == static_cast<float>(record.GetNormalized());
            if (record.value != record.QuantizedFromNormalized(last) && !echo) moved.push_back(id);
        }
        plug->FlushPendingHostNotices();
        const auto edits = handler.Edits();
        std::set<int> told;
        for (size_t e = 0; e < edits.size(); ++e)
        {
            ASSERT_LT(edits[e].id, static_cast<ParamID>(nParams));
            if (edits[e].kind != 'p') continue;
            told.insert(static_cast<int>(edits[e].id));
            EXPECT_DOUBLE_EQ(edits[e].value, plug->GetParam(static_cast<int>(edits[e].id))->GetNormalized());
        }
        EXPECT_EQ(edits.size(), 3 * told.size()) << "begin, perform, end per edit";
        for (int id = 0; id < nParams; ++id)
            if (written.Queue(static_cast<size_t>(id)).Count() > 0)
            {
                ASSERT_EQ(told.count(id), 0u) << "parameter " << id << " told twice, block " << b;
                EXPECT_EQ(written.Queue(static_cast<size_t>(id)).Last(), plug->GetParam(id)->GetNormalized());
                told.insert(id);
            }
        for (int id : moved)
            ASSERT_TRUE(told.count(id)) << "parameter " << id << " lost its automation, block " << b;
    }
    EXPECT_TRUE(heard) << "the engine never produced a sample";
}

class RealtimeProcess : public ::testing::TestWithParam<double>
{
};

TEST_P(RealtimeProcess, FullAutomationAtEveryHostBlockSize)
{
    const double rate = GetParam();
    const int blocks[] = {1, 32, 512, 4096};
    // Both sample sizes, alternating over the grid of rates and block sizes.
    bool useDouble = rate == 44100.0 || rate == 96000.0;
    std::uint32_t seed = static_cast<std::uint32_t>(rate);
    for (int block : blocks)
    {
        if (useDouble)
            RunAutomated<double>(rate, block, ++seed);
        else
            RunAutomated<float>(rate, block, ++seed);
        if (HasFatalFailure()) return;
        useDouble = !useDouble;
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, RealtimeProcess, ::testing::Values(44100.0, 48000.0, 96000.0, 192000.0),
                         [](const ::testing::TestParamInfo<double>& info)
                         { return std::to_string(static_cast<int>(info.param)) + "Hz"; });

#ifdef QUORVEX_RTSAN
// The sanitizer watches `process` itself: a parameter handler that allocates is caught there.
class AllocatingPlug : public IPlugVST3
{
  public:
    AllocatingPlug() : IPlugVST3(IPlugConfig{.nParams = 1, .channelIOStr = "2-2"}) {}
    void OnParamChange(int) override { mLog.push_back(std::vector<double>(64, 1.0)); }
    std::vector<std::vector<double>> mLog;
};

TEST(RealtimeProcessDeathTest, AnAllocationInsideProcessIsReported)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto run = []
    {
        HostApplication host;
        auto* plug = new AllocatingPlug;
        plug->initialize(&host);
        plug->activateBus(kAudio, kInput, 0, true);
        plug->activateBus(kAudio, kOutput, 0, true);
        ProcessSetup setup{kRealtime, kSample64, 32, 48000.0};
        plug->setupProcessing(setup);
        plug->setActive(true);
        AudioRig<double> rig(32, {2}, {2});
        ParameterChanges changes;
        changes.Add(0, 0, 0.5);
        rig.data.inputParameterChanges = &changes;
        plug->process(rig.data);
    };
    EXPECT_DEATH(run(), "RealtimeSanitizer");
}
#endif
} // namespace
