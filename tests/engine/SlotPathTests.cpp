#include <gtest/gtest.h>

#include "EngineRig.h"
#include "delay/DelayMode.h"

// Echo measurements through the whole plug-in: an impulse goes in after the fade-in and the delay
// lines' time glide have settled, and the peaks of the wet output are located. The direct part of
// a slot passes the same 15 kHz band limit as its echoes, so echo minus direct is the delay itself.

using namespace engine_rig;

namespace
{
class EchoRig : public Engine
{
  public:
    // No dry, no wobble, the lines' own filters open, free times: echoes are pure delays.
    EchoRig(double rate, double leftMs, double rightMs) : Engine(rate), mFs(std::min(rate, 96000.0))
    {
        Set(kDryLevel, 0.0);
        for (int s = 0; s < 4; ++s)
        {
            Set({{kModulation1 + s, 0.0}, {kDelayLopass1 + s, 20000.0}, {kDelayHipass1 + s, 20.0}});
            Set({{kTimebase1 + s, 0.0}, {kDelayTimeL1 + s, leftMs}, {kDelayTimeR1 + s, rightMs}});
        }
    }

    // An impulse of `left` and `right` at ImpulseAt(), followed by `seconds` of silence.
    Stereo Impulse(double left, double right, double seconds)
    {
        Stereo in(static_cast<std::size_t>(ImpulseAt() + seconds * mFs));
        in.l[static_cast<std::size_t>(ImpulseAt())] = left;
        in.r[static_cast<std::size_t>(ImpulseAt())] = right;
        return Run(in, 512);
    }

    // Late enough for the fade-in and the delay time glide to be over.
    int ImpulseAt() const { return static_cast<int>(0.4 * mFs); }
    // Where the impulse leaves the plug-in on the dry path.
    int DryAt() const { return ImpulseAt() + 64 + static_cast<int>(mFs / 1000.0); }
    int Samples(double ms) const { return static_cast<int>(std::lround(ms * 0.001 * mFs)); }

  private:
    double mFs; // the engine's rate, which stops at 96 kHz
};

// Index of the largest magnitude within center +- half.
int PeakNearIndex(const std::vector<double>& x, int center, int half)
{
    return PeakIndex(x, center - half, center + half + 1);
}

// The signed peak near `center`.
double PeakNear(const std::vector<double>& x, int center, int half = 24)
{
    return x[static_cast<std::size_t>(PeakNearIndex(x, center, half))];
}
} // namespace

// Synced note values follow the tempo, free times are milliseconds, at every rate; the echo lies
// the delay time after the direct sound to the sample.
TEST(SlotPath, SyncedAndFreeTimesAtSeveralRates)
{
    // 1/16 x 4 = one beat, 1/16t x 3 = half a beat, 1/8d x 2 = one and a half beats, free 300 ms.
    for (double rate : {44100.0, 48000.0, 96000.0})
        for (const auto& [timebase, count, expectedMs] :
             {std::tuple{2, 4, 500.0}, {9, 3, 250.0}, {5, 2, 750.0}, {0, 4, 300.0}})
        {
            EchoRig rig(rate, timebase == 0 ? expectedMs : 500.0, timebase == 0 ? expectedMs : 500.0);
            rig.Set({{kDirectIn1, 50.0},
                     {kTimebase1, timebase},
                     {kDelayFactorL1, count},
                     {kDelayFactorR1, count}});
            const Stereo out = rig.Impulse(1.0, 1.0, expectedMs * 0.001 + 0.1);
            const int direct = PeakNearIndex(out.l, rig.DryAt(), 24);
            const int echo = PeakNearIndex(out.l, direct + rig.Samples(expectedMs), 64);
            EXPECT_EQ(echo - direct, rig.Samples(expectedMs)) << rate << " Hz, timebase " << timebase;
        }
}

// Delay Time Scale doubles the times at +100 %; Delay Spread lengthens the left and shortens the
// right and is not scaled; L/R Offset delays one side before the delay. Each row: scale, spread,
// offset, then each side's echo after its own direct sound and its direct sound's shift (ms).
TEST(SlotPath, TimeScaleSpreadAndOffsetShiftEchoes)
{
    for (const auto& [scale, spread, offset, leftMs, rightMs, leftShift, rightShift] :
         {std::tuple{100.0, 0.0, 0.0, 400.0, 400.0, 0.0, 0.0},
          {0.0, 10.0, 0.0, 210.0, 190.0, 0.0, 0.0},
          {100.0, 10.0, 0.0, 410.0, 390.0, 0.0, 0.0},
          {0.0, 0.0, -10.0, 200.0, 200.0, 10.0, 0.0},
          {0.0, 0.0, 20.0, 200.0, 200.0, 0.0, 20.0}})
    {
        SCOPED_TRACE(::testing::Message()
                     << "scale " << scale << " spread " << spread << " offset " << offset);
        EchoRig rig(44100.0, 200.0, 200.0);
        rig.Set(
            {{kDirectIn1, 50.0}, {kDelayTimeScale, scale}, {kDelaySpread1, spread}, {kLROffset1, offset}});
        const Stereo out = rig.Impulse(1.0, 1.0, 0.6);
        const int directL = PeakNearIndex(out.l, rig.DryAt() + rig.Samples(leftShift), 24);
        const int directR = PeakNearIndex(out.r, rig.DryAt() + rig.Samples(rightShift), 24);
        EXPECT_EQ(directL - directR, rig.Samples(leftShift) - rig.Samples(rightShift));
        EXPECT_EQ(PeakNearIndex(out.l, directL + rig.Samples(leftMs), 64) - directL, rig.Samples(leftMs));
        EXPECT_EQ(PeakNearIndex(out.r, directR + rig.Samples(rightMs), 64) - directR, rig.Samples(rightMs));
    }
}

// Left 100 ms, right 150 ms, feedback 50 %, impulse 1 on the left and 0.5 on the right, echoes
// only. A is the first left echo of DUAL; every route's echoes are listed as (side, ms, level/A),
// a level of 0 meaning nothing arrives there.
TEST(SlotPath, EachRouteDoesWhatItSays)
{
    using Echoes = std::vector<std::tuple<int, double, double>>; // side, ms, level / A
    const std::pair<int, Echoes> routes[] = {
        {DelayDual, {{0, 100, 1.0}, {1, 150, 0.5}, {0, 200, 0.5}, {1, 300, 0.25}, {1, 250, 0.0}}},
        {DelayPingPongL, {{0, 100, 1.0}, {1, 150, 0.0}, {1, 250, 0.5}, {0, 350, 0.25}, {0, 200, 0.0}}},
        {DelayPingPongML, {{0, 100, 0.99}, {1, 150, 0.0}, {1, 250, 0.495}, {0, 350, 0.2475}}},
        {DelayPingPongR, {{1, 150, 0.5}, {0, 100, 0.0}, {0, 250, 0.25}, {1, 400, 0.125}, {1, 300, 0.0}}},
        {DelayPingPongMR, {{1, 150, 0.99}, {0, 100, 0.0}, {0, 250, 0.495}, {1, 400, 0.2475}}},
        {DelayPingPongLR, {{0, 100, 1.0}, {1, 150, 0.5}, {1, 250, 0.5}, {0, 250, 0.25}, {0, 200, 0.0}}},
        // fb x 0.7: L-R into the left line, L+R into the right one.
        {DelayMix,
         {{0, 100, 1.0}, {1, 150, 0.5}, {0, 200, 0.35}, {1, 250, 0.35}, {0, 250, -0.175}, {1, 300, 0.175}}},
        {DelayMixL, {{0, 100, 1.0}, {1, 100, 1.0}, {1, 150, 0.0}, {0, 200, 0.5}, {1, 200, 0.5}}},
        {DelayMixR, {{0, 150, 0.5}, {1, 150, 0.5}, {0, 100, 0.0}, {1, 300, 0.25}, {0, 300, 0.25}}},
    };
    double a = 0.0;
    for (const auto& [route, echoes] : routes)
    {
        EchoRig rig(44100.0, 100.0, 150.0);
        rig.Set({{kDirectIn1, 100.0}, {kInput1, 3.0}, {kDelayRoute1, route}}); // STEREO input
        const Stereo out = rig.Impulse(1.0, 0.5, 0.45);
        const int at = rig.DryAt();
        if (route == DelayDual) a = PeakNear(out.l, at + rig.Samples(100));
        ASSERT_GT(a, 0.1);
        for (const auto& [side, ms, level] : echoes)
            EXPECT_NEAR(PeakNear(out.Side(side), at + rig.Samples(ms)) / a, level, 0.01)
                << kDelayStereoModeLabels[route] << " side " << side << " at " << ms << " ms";
    }
}

// Proportional feedback in DUAL: the short side's echoes come twice as often but lose level at the
// same rate per second as the long side's.
TEST(SlotPath, ProportionalFeedbackGivesBothSidesTheSameDecay)
{
    for (bool proportional : {false, true})
    {
        EchoRig rig(44100.0, 100.0, 50.0);
        rig.Set({{kDirectIn1, 100.0}, {kInput1, 3.0}, {kFBProportional1, proportional ? 1.0 : 0.0}});
        const Stereo out = rig.Impulse(1.0, 1.0, 0.5);
        const auto decay = [&](const std::vector<double>& x)
        { return PeakNear(x, rig.DryAt() + rig.Samples(400)) / PeakNear(x, rig.DryAt() + rig.Samples(200)); };
        EXPECT_NEAR(decay(out.l), 0.25, 0.003);
        EXPECT_NEAR(decay(out.r), proportional ? 0.25 : 0.0625, 0.003) << proportional;
    }
}

// At 160 % feedback (and in MIX, 160 % x 0.7) the soft limit keeps a 10 ms loop bounded, and the
// loop does not die out either.
TEST(SlotPath, FeedbackAt160PercentStaysBounded)
{
    for (int route : {DelayDual, DelayMix, DelayPingPongLR})
    {
        EchoRig rig(44100.0, 10.0, 13.0);
        rig.Set({{kDirectIn1, 100.0}, {kInput1, 3.0}, {kFeedback1, 160.0}, {kDelayRoute1, route}});
        Stereo in =
            Noise(22050, 1.0, 3, 44100); // half a second of noise, opposite on the sides, then silence
        std::transform(in.l.begin(), in.l.end(), in.r.begin(), std::negate<>());
        const Stereo out = rig.Run(in, 512);
        EXPECT_LT(Peak(out), 3.0) << kDelayStereoModeLabels[route];
        // Long after the input stopped the loop still rings.
        EXPECT_GT(Peak(out, out.Size() - 2000), 0.05) << kDelayStereoModeLabels[route];
    }
}

// The L/R link copies an edited time to the other side; leaving sync hands the synced times over
// to the free-time controls as milliseconds at the present tempo (1/16 x 4 and x 3 at 120 BPM).
TEST(SlotPath, LinkAndTimebaseSwitchWriteTheTwinControls)
{
    Engine rig(44100.0);
    rig.Set({{kDelayLRLink1, 1.0}, {kDelayTimeL1, 123.0}});
    EXPECT_EQ(rig.Get(kDelayTimeR1), 123.0);
    rig.Set(kDelayFactorR1, 3.0);
    EXPECT_EQ(rig.Get(kDelayFactorL1), 3.0);
    rig.Set({{kDelayLRLink1, 0.0}, {kDelayFactorR1, 4.0}});
    EXPECT_EQ(rig.Get(kDelayFactorL1), 3.0);
    rig.Set(kTimebase1, 0.0);
    EXPECT_NEAR(rig.Get(kDelayTimeL1), 375.0, 1e-9);
    EXPECT_NEAR(rig.Get(kDelayTimeR1), 500.0, 1e-9);
}
