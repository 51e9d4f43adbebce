// The audio thread under automation: a plug-in made by the engine's creation function is driven
// through IPlugVST3::process at every supported rate and host block size, both sample sizes, while
// the parameter queues move records at random every block and the transport's tempo jumps. Built
// with -fsanitize=realtime, any allocation, lock or system call inside `process` aborts the run; in
// every build the test checks that `process` never calls the host and that the output stays finite
// and sounds. (That each queue's last point lands in its record, and that values the engine writes
// reach the host through the output changes, is checked with the loaded bundle, whose suite runs
// under the same sanitizer.)

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
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

// Enough host blocks for several 32-sample engine blocks even at one frame per call.
template <typename Sample> bool RunAutomated(double rate, int block, std::uint32_t seed)
{
    SCOPED_TRACE(::testing::Message()
                 << rate << " Hz, " << block << " frames, " << sizeof(Sample) * 8 << "-bit");
    HostApplication host;
    ComponentHandler handler;
    IPlugVST3* plug = Started<Sample>(CreatePlugInstance(), host, rate, block, 2);
    plug->setComponentHandler(&handler);
    const auto nParams = static_cast<unsigned>(plug->NParams());
    AudioRig<Sample> rig(block, {2, 2}, {2});
    ProcessContext context{};
    context.sampleRate = rate;
    context.timeSigNumerator = context.timeSigDenominator = 4;
    rig.data.processContext = &context;
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    bool heard = false, clean = true;
    for (int b = 0; clean && b < std::max(6, 2048 / block); ++b)
    {
        // Made before the call: the plug-in reads them without allocating. Bypass is on
        // one block in eight, so the pass-through runs too; the preset's recording waits for the UI.
        ParameterChanges changes;
        for (int k = 0; k < 48; ++k)
            for (int p = 1 + static_cast<int>(rng() % 4); p > 0; --p)
                changes.Add(static_cast<ParamID>(rng() % nParams), static_cast<int32>(rng() % block),
                            unit(rng));
        changes.Add(IPlugVST3::kBypassParamId, 0, b % 8 == 7 ? 1.0 : 0.0);
        changes.Add(IPlugVST3::kPresetParamId, 0, unit(rng));
        rig.data.inputParameterChanges = &changes;
        context.state = (b % 16 == 15 ? 0u : static_cast<uint32>(ProcessContext::kPlaying)) |
                        ProcessContext::kTempoValid | ProcessContext::kTimeSigValid |
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
        EXPECT_EQ(plug->process(rig.data), kResultOk);
        // The host hears nothing from the audio thread.
        clean = handler.Edits().empty() && handler.mRestarts.load() == 0;
        for (int ch = 0; ch < 2; ++ch)
            for (Sample x : rig.Out(0, ch))
            {
                clean = clean && std::isfinite(static_cast<double>(x));
                heard = heard || x != Sample(0);
            }
        EXPECT_TRUE(clean) << "block " << b << ": a call to the host or a non-finite sample";
    }
    EXPECT_TRUE(heard) << "the engine never produced a sample";
    plug->setProcessing(false);
    plug->setActive(false);
    plug->terminate();
    plug->release();
    return clean;
}

// Both sample sizes, alternating over the grid of rates and block sizes.
TEST(RealtimeProcess, FullAutomationAtEveryRateAndHostBlockSize)
{
    const double rates[] = {44100.0, 48000.0, 96000.0, 192000.0};
    const int blocks[] = {1, 32, 512, 4096};
    for (int r = 0; r < 4; ++r)
        for (int b = 0; b < 4; ++b)
            if (!((r + b) % 2 == 0 ? RunAutomated<double> : RunAutomated<float>)(rates[r], blocks[b],
                                                                                 4 * r + b + 1))
                return;
}

#ifdef QUORVEX_RTSAN
// The sanitizer watches `process` itself: a parameter handler that allocates is caught there. Without
// this, a build that lost the realtime marks would pass every run above.
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
