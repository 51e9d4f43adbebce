#include <gtest/gtest.h>

#include "EngineRig.h"
#include "delay/DelayMode.h"
#include "state/ByteChunk.h"

// The frame around the slots: host block framing, the dry path's timing and gains and the silent
// states. Most tests look at the dry path alone. (The fade-in's law is played after a preset load,
// in QuorvexPresetTests; the input copy's 15 kHz band limit is measured through the envelope that
// follows it, in InputRestTests.)

using namespace engine_rig;

namespace
{
// Slot 1, on by default, switched off: only the dry path sounds.
class DryOnly : public Engine
{
  public:
    explicit DryOnly(double rate) : Engine(rate) { Set(kSlotOn1, 0.0); }
};

// 1 ms in whole samples at the internal rate, which stops at 96 kHz.
int MsSamples(double hostRate)
{
    return static_cast<int>(std::min(hostRate, 96000.0) / 1000.0);
}

constexpr double kDefaultDry = 0.75; // Dry Level 75 %, Output Level 0 dB, no attenuation

// With the dry path and ringing echoes the output does not depend on how the host cuts its blocks,
// calls of zero frames included.
TEST(EngineFrame, OutputDoesNotDependOnHostBlockSize)
{
    const Stereo in = Noise(8000, 1.0, 11, 12000);
    Stereo expected; // in calls of one frame
    for (int chunk : {1, 7, 32, 1000, 4096})
    {
        Engine e(48000.0);
        e.Set({{kDirectIn1, 50.0}, {kTimebase1, 0.0}, {kDelayTimeL1, 30.0}, {kDelayTimeR1, 41.0}});
        e.Set({{kFeedback1, 70.0}, {kDelayRoute1, DelayPingPongLR}});
        const Stereo out = Stream(e.Plug(), in, chunk, chunk == 7);
        if (chunk == 1) expected = out;
        EXPECT_TRUE(out == expected) << "host block " << chunk;
    }
    EXPECT_GT(Peak(expected, 10000), 0.01) << "the echoes ring on after the input";
}

// After the fade-in an impulse leaves the dry path 64 samples plus 1 ms later, with the gain of the
// dry level, in both limiter states; the reported latency is 32 samples plus 1 ms. Above 96 kHz the
// engine runs at 96 kHz.
TEST(EngineFrame, ImpulseTimingAndReportedLatency)
{
    for (double rate : {44100.0, 48000.0, 96000.0, 192000.0})
        for (int limiter : {0, 3})
        {
            DryOnly e(rate);
            e.Set(kLimiterOn, limiter);
            const int at = static_cast<int>(0.15 * std::min(rate, 96000.0)) + 5; // fade is over
            Stereo in(static_cast<std::size_t>(at + 400));
            in.l[at] = 1.0;
            in.r[at] = -0.5;
            Stereo expected(in.l.size());
            expected.l[at + 64 + MsSamples(rate)] = kDefaultDry;
            expected.r[at + 64 + MsSamples(rate)] = -0.5 * kDefaultDry;
            EXPECT_EQ(e.Run(in, 256), expected) << rate << " Hz, limiter " << limiter;
            EXPECT_EQ(e.Plug().GetLatency(), 32 + MsSamples(rate)) << rate;
        }
}

// The dry gain is dry level x output level x input attenuation; dry kill leaves nothing.
TEST(EngineFrame, DryGainAndDryKill)
{
    DryOnly e(44100.0);
    e.Plug().SetParameterFromGUI(kDryLevel, 0.4);
    e.Set(kOutputLevel, 6.0);
    e.Plug().Fields().mAttenuation = std::pow(10.0, -12.0 / 20.0);
    const int at = 8000;
    Stereo in(9000);
    in.l[at] = 1.0;
    EXPECT_NEAR(e.Run(in, 512).l[at + 108], 0.4 * std::pow(10.0, -6.0 / 20.0), 1e-12);

    e.Plug().Fields().mDryLevel = 0.0; // what dry-kill leaves in the dry gain
    EXPECT_EQ(e.Run(in, 512), Stereo(in.l.size()));
}

// Silence rules: while the plug-in is being built, restoring a state or loading a preset the output
// is exact zero and nothing advances, so that afterwards the output goes on as if those calls had
// never been made.
TEST(EngineFrame, SilentStatesOutputZerosAndFreezeTheEngine)
{
    const Stereo before = Noise(2000 + 13, 1.0, 3); // ends inside the fade, off a block border
    const Stereo during = Noise(777, 1.0, 4), after = Noise(3000, 1.0, 5);
    DryOnly reference(44100.0);
    reference.Run(before, 100);
    const Stereo expected = reference.Run(after, 100);

    for (int which = 0; which < 3; ++which)
    {
        DryOnly e(44100.0);
        Quorvex& plug = e.Plug();
        e.Run(before, 100);
        const auto set = [&](bool on)
        {
            if (which == 0) QuorvexProbe::SetConstructing(plug, on);
            if (which == 1) plug.Fields().mRestoringState = on;
            if (which == 2) plug.SetPresetLoading(on);
        };
        set(true);
        EXPECT_EQ(e.Run(during, 50), Stereo(during.l.size()));
        set(false);
        EXPECT_EQ(e.Run(after, 100), expected) << "silent state " << which;
    }
}

// Calls made while the host's state chunk is applied find the output silent; the engine starts the
// restored state from silence, with no tail of the old one.
class RestoreWatch : public Quorvex
{
  public:
    void OnParamChange(int id) override
    {
        Quorvex::OnParamChange(id);
        if (id == kDryLevel && watching) heard = Stream(*this, Noise(64, 1.0, 9), 64);
    }
    bool watching = false;
    Stereo heard;
};

TEST(EngineFrame, StateRestoreIsSilentAndClearsTheEngine)
{
    std::unique_ptr<RestoreWatch, Releaser> plug(new RestoreWatch());
    plug->SetSampleRate(44100.0);
    ByteChunk chunk;
    ASSERT_TRUE(plug->SerializeState(chunk));
    Stream(*plug, Noise(5000, 1.0, 1), 100);

    plug->watching = true;
    plug->UnserializeState(chunk, 0);
    ASSERT_EQ(plug->heard.Size(), 64);
    EXPECT_EQ(plug->heard, Stereo(64));
    // The 108 samples of dry signal that were on their way are gone; the restored slot 1 passes
    // only the wet path's denormal guard.
    EXPECT_LT(Peak(Stream(*plug, Stereo(200), 50)), 1e-12);
}

} // namespace
