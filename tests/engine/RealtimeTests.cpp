// The audio thread under automation: a plug-in made by the engine's creation function is driven
// through IPlugVST3::process at every supported rate and host block size, both sample sizes, while
// the parameter queues move records at random every block and the transport's tempo jumps. Built
// with -fsanitize=realtime, any allocation, lock or system call inside `process` aborts the run; in
// every build the test checks that `process` never calls the host and that the output stays finite
// and sounds. (That each queue's last point lands in its record, and that values the engine writes
// reach the host, is checked with the loaded bundle.)

#include <gtest/gtest.h>

#include <random>

#include "common/HostDoubles.h"
#include "host/IPlugVST3.h"
#include "host/PlugInstance.h"
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

// A plug-in set up for `block` frames of `Sample` at `rate`, buses `inputs` active, processing.
template <typename Sample>
IPlugVST3* Started(IPlugVST3* plug, HostApplication& host, double rate, int block, int inputs)
{
    EXPECT_EQ(plug->initialize(&host), kResultOk);
    for (int bus = 0; bus < inputs; ++bus)
        plug->activateBus(kAudio, kInput, bus, true);
    plug->activateBus(kAudio, kOutput, 0, true);
    ProcessSetup setup{kRealtime, sizeof(Sample) == 8 ? kSample64 : kSample32, block, rate};
    EXPECT_EQ(plug->setupProcessing(setup), kResultOk);
    plug->setActive(true);
    plug->setProcessing(true);
    return plug;
}

template <typename Sample> void RunAutomated(double rate, int block, std::uint32_t seed)
{
    SCOPED_TRACE(::testing::Message()
                 << rate << " Hz, " << block << " frames, " << sizeof(Sample) * 8 << "-bit");
    HostApplication host;
    ComponentHandler handler;
    const auto release = [](IPlugVST3* p)
    {
        p->setProcessing(false);
        p->setActive(false);
        p->terminate();
        p->release();
    };
    std::unique_ptr<IPlugVST3, decltype(release)> plug(
        Started<Sample>(CreatePlugInstance(), host, rate, block, 2), release);
    plug->setComponentHandler(&handler);
    const int nParams = plug->NParams();

    AudioRig<Sample> rig(block, {2, 2}, {2});
    ProcessContext context{};
    context.sampleRate = rate;
    context.timeSigNumerator = 4;
    context.timeSigDenominator = 4;
    rig.data.processContext = &context;
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    // Enough host blocks for several 32-sample engine blocks even at one frame per call.
    const int nBlocks = std::max(6, 2048 / block);
    bool heard = false;
    for (int b = 0; b < nBlocks; ++b)
    {
        // Made before the call: the plug-in reads and writes them without allocating. Values the
        // plug-in writes itself come back through the output changes on every other run.
        ParameterChanges changes, written;
        if (seed % 2 == 0) written.Prepare(static_cast<ParamID>(nParams));
        for (int k = 0; k < 48; ++k)
            for (int p = 1 + static_cast<int>(rng() % 4); p > 0; --p)
                changes.Add(static_cast<ParamID>(rng() % static_cast<unsigned>(nParams)),
                            static_cast<int32>(rng() % static_cast<unsigned>(block)), unit(rng));
        // Bypass on for one block in eight, so the pass-through path runs too; the preset, whose
        // recording must wait for the UI thread.
        changes.Add(IPlugVST3::kBypassParamId, 0, b % 8 == 7 ? 1.0 : 0.0);
        changes.Add(IPlugVST3::kPresetParamId, 0, unit(rng));
        rig.data.inputParameterChanges = &changes;
        rig.data.outputParameterChanges = seed % 2 == 0 ? &written : nullptr;
        const uint32 playing = b % 16 == 15 ? 0u : static_cast<uint32>(ProcessContext::kPlaying);
        context.state = playing | ProcessContext::kTempoValid | ProcessContext::kTimeSigValid |
                        ProcessContext::kProjectTimeMusicValid | ProcessContext::kBarPositionValid;
        context.tempo = 40.0 + 200.0 * unit(rng);
        context.projectTimeSamples = static_cast<TSamples>(b) * block;
        context.projectTimeMusic = static_cast<double>(b) * block / rate * context.tempo / 60.0;
        context.barPositionMusic = std::floor(context.projectTimeMusic / 4.0) * 4.0;
        for (int bus = 0; bus < 2; ++bus)
            for (int ch = 0; ch < 2; ++ch)
                for (Sample& x : rig.In(bus, ch))
                    x = static_cast<Sample>(unit(rng) - 0.5);

        plug->FlushPendingHostNotices();
        handler.Clear();
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
    }
    EXPECT_TRUE(heard) << "the engine never produced a sample";
}

class RealtimeProcess : public ::testing::TestWithParam<double>
{
};

TEST_P(RealtimeProcess, FullAutomationAtEveryHostBlockSize)
{
    const double rate = GetParam();
    // Both sample sizes, alternating over the grid of rates and block sizes.
    bool useDouble = rate == 44100.0 || rate == 96000.0;
    std::uint32_t seed = static_cast<std::uint32_t>(rate);
    for (int block : {1, 32, 512, 4096})
    {
        (useDouble ? RunAutomated<double> : RunAutomated<float>)(rate, block, ++seed);
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
        IPlugVST3* plug = Started<double>(new AllocatingPlug, host, 48000.0, 32, 1);
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
