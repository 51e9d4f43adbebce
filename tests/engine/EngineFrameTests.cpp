#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <numbers>
#include <vector>

#include "QuorvexProbe.h"
#include "common/Noise.h"
#include "dsp/TimeBase.h"
#include "engine/Quorvex.h"
#include "params/IParamRecord.h"
#include "params/ParamIds.h"
#include "state/ByteChunk.h"

namespace
{
struct Releaser
{
    void operator()(Quorvex* plug) const { plug->release(); }
};
using QuorvexPtr = std::unique_ptr<Quorvex, Releaser>;

// The frame tests look at the dry path alone: slot 1, on by default, is switched off.
QuorvexPtr MakeQuorvex(double rate)
{
    QuorvexPtr plug(new Quorvex());
    plug->SetSampleRate(rate);
    plug->GetParam(kSlotOn1)->value = 0.0;
    plug->OnParamChange(kSlotOn1);
    return plug;
}

struct Stereo
{
    std::vector<double> l, r;
    explicit Stereo(std::size_t n = 0) : l(n, 0.0), r(n, 0.0) {}
    std::size_t Size() const { return l.size(); }
};

Stereo Noise(std::size_t n, std::uint32_t seed)
{
    Stereo s(n);
    testnoise::NoiseSource noise{seed};
    for (std::size_t i = 0; i < n; ++i)
    {
        s.l[i] = noise.Next();
        s.r[i] = noise.Next();
    }
    return s;
}

// Runs `in` through the plug in host calls of `chunk` frames (the last one may be shorter); with
// `zeroCalls` a call of zero frames goes before every call.
Stereo Stream(Quorvex& plug, const Stereo& in, int chunk, bool zeroCalls = false)
{
    Stereo out(in.Size());
    std::vector<double> silence(static_cast<std::size_t>(chunk), 0.0);
    const int total = static_cast<int>(in.Size());
    for (int done = 0; done < total; done += chunk)
    {
        const int n = std::min(chunk, total - done);
        double* inputs[4] = {const_cast<double*>(in.l.data()) + done, const_cast<double*>(in.r.data()) + done,
                             silence.data(), silence.data()};
        double* outputs[2] = {out.l.data() + done, out.r.data() + done};
        if (zeroCalls) plug.ProcessDoubleReplacing(inputs, outputs, 0);
        plug.ProcessDoubleReplacing(inputs, outputs, n);
    }
    return out;
}

Stereo Concat(const Stereo& a, const Stereo& b)
{
    Stereo s = a;
    s.l.insert(s.l.end(), b.l.begin(), b.l.end());
    s.r.insert(s.r.end(), b.r.begin(), b.r.end());
    return s;
}

void ExpectSilent(const Stereo& s)
{
    for (std::size_t i = 0; i < s.Size(); ++i)
    {
        ASSERT_EQ(s.l[i], 0.0) << i;
        ASSERT_EQ(s.r[i], 0.0) << i;
    }
}

// 1 ms in whole samples at the internal rate, which stops at 96 kHz.
int MsSamples(double hostRate)
{
    return static_cast<int>(std::min(hostRate, 96000.0) / 1000.0);
}

constexpr double kDefaultDry = 0.75; // Dry Level 75 %, Output Level 0 dB, no attenuation

TEST(EngineFrame, OutputDoesNotDependOnHostBlockSize)
{
    const Stereo in = Noise(9000, 7);
    auto reference = MakeQuorvex(48000.0);
    const Stereo expected = Stream(*reference, in, 1);
    for (int chunk : {7, 32, 1000, 4096})
    {
        auto plug = MakeQuorvex(48000.0);
        const Stereo out = Stream(*plug, in, chunk, chunk == 7);
        EXPECT_TRUE(out.l == expected.l && out.r == expected.r) << "host block " << chunk;
    }
    // The signal did get through: the frame is not trivially silent.
    EXPECT_NE(*std::max_element(expected.l.begin(), expected.l.end()), 0.0);
}

// After the fade-in an impulse leaves the dry path 64 samples plus 1 ms later, with the gain of the
// dry level, output level and input attenuation, in both limiter states; the reported latency is
// 32 samples plus 1 ms.
TEST(EngineFrame, ImpulseTimingAndReportedLatency)
{
    for (double rate : {44100.0, 48000.0, 96000.0, 192000.0})
        for (int limiter : {0, 3})
        {
            auto plug = MakeQuorvex(rate);
            plug->GetParam(kLimiterOn)->value = limiter;
            plug->OnParamChange(kLimiterOn);
            const int at = static_cast<int>(0.15 * std::min(rate, 96000.0)) + 5; // fade is over
            Stereo in(static_cast<std::size_t>(at + 400));
            in.l[at] = 1.0;
            in.r[at] = -0.5;
            const Stereo out = Stream(*plug, in, 256);
            const int expectedAt = at + 64 + MsSamples(rate);
            for (int i = 0; i < static_cast<int>(out.Size()); ++i)
            {
                const double wantL = i == expectedAt ? kDefaultDry : 0.0;
                ASSERT_EQ(out.l[i], wantL) << rate << " Hz, limiter " << limiter << ", sample " << i;
                ASSERT_EQ(out.r[i], -0.5 * wantL) << rate << " Hz, sample " << i;
            }
            EXPECT_EQ(plug->GetLatency(), 32 + MsSamples(rate)) << rate;
        }
}

TEST(EngineFrame, DryGainAndDryKill)
{
    auto plug = MakeQuorvex(44100.0);
    plug->SetParameterFromGUI(kDryLevel, 0.4);
    plug->GetParam(kOutputLevel)->value = 6.0;
    plug->OnParamChange(kOutputLevel);
    plug->Fields().mAttenuation = std::pow(10.0, -12.0 / 20.0);
    const int at = 8000;
    Stereo in(9000);
    in.l[at] = 1.0;
    Stereo out = Stream(*plug, in, 512);
    EXPECT_NEAR(out.l[at + 108], 0.4 * std::pow(10.0, -6.0 / 20.0), 1e-12);

    plug->Fields().mDryLevel = 0.0; // what dry-kill leaves in the dry gain
    out = Stream(*plug, in, 512);
    ExpectSilent(out);
}

// Above 96 kHz everything runs at 96 kHz: the process-wide values and the fade length show it.
TEST(EngineFrame, HostRateAbove96kRunsAt96k)
{
    auto plug = MakeQuorvex(192000.0);
    Stream(*plug, Stereo(64), 64);
    EXPECT_EQ(gSampleRate, 96000.0);
    EXPECT_EQ(gMaxDelay, 769000);
    EXPECT_DOUBLE_EQ(gSampleRateRatio, 192000.0 / 44100.0);
    EXPECT_EQ(plug->GetLatency(), 128);
}

// Right after a reset the input block, and with it the dry and wet paths, rises as the square of a
// linear ramp over 100 ms: the first block of input takes ramp step = 32 / (0.1 fs), block b takes
// b x step, until the ramp reaches 1.
TEST(EngineFrame, FadeInIsASquaredHundredMillisecondRamp)
{
    for (double rate : {44100.0, 192000.0})
    {
        const double fs = std::min(rate, 96000.0);
        const int ms = MsSamples(rate);
        const double step = 32.0 / (0.1 * fs);
        auto plug = MakeQuorvex(rate);
        Stereo in(static_cast<std::size_t>(0.1 * fs + 300));
        std::fill(in.l.begin(), in.l.end(), 1.0);
        const Stereo out = Stream(*plug, in, 100);

        for (int s = 0; s < 64 + ms; ++s)
            ASSERT_EQ(out.l[s], 0.0) << s;
        for (int s = 0; s + 64 + ms < static_cast<int>(out.Size()); s += 13)
        {
            const int block = s / 32 + 1;
            const double gain = out.l[s + 64 + ms] / kDefaultDry;
            if (block * step < 1.0 - 1e-9)
            {
                ASSERT_NEAR(gain, block * step * block * step, 1e-9) << rate << " Hz, input sample " << s;
            }
            else if ((block - 1) * step > 1.0 + 1e-9)
            {
                ASSERT_EQ(gain, 1.0) << rate << " Hz, input sample " << s;
            }
        }
        // A quarter of the way the gain is a sixteenth, not a quarter.
        const int quarter = static_cast<int>(0.025 * fs);
        EXPECT_NEAR(out.l[quarter + 64 + ms] / kDefaultDry, 1.0 / 16.0, 0.01) << rate;
    }
}

// Silence rules: while the plug-in is being built, restoring a state or loading a preset the output
// is exact zero and nothing advances, so that afterwards the output goes on as if those calls had
// never been made.
TEST(EngineFrame, SilentStatesOutputZerosAndFreezeTheEngine)
{
    const Stereo before = Noise(2000 + 13, 3); // ends inside the fade, off a block border
    const Stereo during = Noise(777, 4);
    const Stereo after = Noise(3000, 5);

    auto reference = MakeQuorvex(44100.0);
    const Stereo expected = Stream(*reference, Concat(before, after), 100);
    const Stereo expectedAfter = [&]
    {
        Stereo s;
        s.l.assign(expected.l.begin() + static_cast<long>(before.Size()), expected.l.end());
        s.r.assign(expected.r.begin() + static_cast<long>(before.Size()), expected.r.end());
        return s;
    }();

    for (int which = 0; which < 3; ++which)
    {
        auto plug = MakeQuorvex(44100.0);
        Stream(*plug, before, 100);
        const auto set = [&](bool on)
        {
            if (which == 0) QuorvexProbe::SetConstructing(*plug, on);
            if (which == 1) plug->Fields().mRestoringState = on;
            if (which == 2) plug->SetPresetLoading(on);
        };
        set(true);
        ExpectSilent(Stream(*plug, during, 50));
        set(false);
        const Stereo out = Stream(*plug, after, 100);
        EXPECT_TRUE(out.l == expectedAfter.l && out.r == expectedAfter.r) << "silent state " << which;
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
        if (id != kDryLevel || !watching) return;
        Stereo in = Noise(64, 9);
        heard = Stream(*this, in, 64);
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
    Stream(*plug, Noise(5000, 1), 100);

    plug->watching = true;
    plug->UnserializeState(chunk, 0);
    ASSERT_EQ(plug->heard.Size(), 64u);
    ExpectSilent(plug->heard);
    // The 108 samples of dry signal that were on their way are gone; the restored slot 1 passes
    // only the wet path's denormal guard.
    const Stereo after = Stream(*plug, Stereo(200), 50);
    for (std::size_t i = 0; i < after.Size(); ++i)
    {
        ASSERT_LT(std::abs(after.l[i]), 1e-12) << i;
        ASSERT_LT(std::abs(after.r[i]), 1e-12) << i;
    }
}

// The wet copy is band-limited at 15 kHz by a 12th-order low-pass designed for the running rate:
// 5 kHz passes, 20 kHz (a third of an octave above the corner) is some 30 dB down.
TEST(EngineFrame, WetCopyIsLowPassedAt15kHz)
{
    for (double rate : {44100.0, 96000.0})
        for (double hz : {5000.0, 20000.0})
        {
            // The copy is made while a slot listens.
            auto plug = MakeQuorvex(rate);
            plug->GetParam(kSlotOn1)->value = 1.0;
            plug->OnParamChange(kSlotOn1);
            const int n = static_cast<int>(0.3 * rate) / 32 * 32;
            Stereo in(static_cast<std::size_t>(n));
            for (int i = 0; i < n; ++i)
                in.l[i] = std::sin(2.0 * std::numbers::pi * hz * i / rate);
            double peak = 0.0;
            for (int done = 0; done < n; done += 32)
            {
                Stereo piece(32);
                std::copy_n(in.l.begin() + done, 32, piece.l.begin());
                Stream(*plug, piece, 32);
                if (done > n / 2)
                    for (int k = 0; k < 32; ++k)
                        peak = std::max(peak, std::abs(QuorvexProbe::WetBlockL(*plug)[k]));
            }
            if (hz < 15000.0)
            {
                EXPECT_NEAR(peak, 1.0, 0.01) << rate << " Hz rate";
            }
            else
            {
                EXPECT_LT(peak, 0.04) << rate << " Hz rate";
            }
        }
}
} // namespace
