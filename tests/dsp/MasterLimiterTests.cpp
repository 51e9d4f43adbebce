#include "common/Measure.h"
#include "common/Noise.h"
#include "dsp/MasterLimitFollower.h"
#include "dsp/MasterLimiter.h"
#include "dsp/TimeBase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>
#include <vector>

// The master limiter: its follower laws, the pass-through at low level (trim, boost, look-ahead),
// the ceiling on any material, the levels its stages settle on, and the mode-change fade.
namespace
{
constexpr int kN = 32;

// Restores the process-wide rate and limiter curve that a test may have changed.
struct GlobalsGuard
{
    ~GlobalsGuard()
    {
        SetTimeBase(44100.0);
        SetLimiterCurve(kLimiterSlowI);
        gPendingLimiterMode = kLimiterSlowI;
    }
};

struct Stereo
{
    std::vector<double> l, r;
};

Stereo Make(int len, const std::function<double(int)>& left, const std::function<double(int)>& right)
{
    Stereo s{std::vector<double>(len), std::vector<double>(len)};
    for (int i = 0; i < len; ++i)
    {
        s.l[i] = left(i);
        s.r[i] = right(i);
    }
    return s;
}

// Runs whole blocks of a stereo signal through a fresh limiter of the given mode and boost.
Stereo Limit(int mode, const Stereo& in, double boostDb = 0.0)
{
    MasterLimiter lim;
    lim.SetMode(mode, false);
    lim.SetBoost(boostDb);
    lim.Reset();
    Stereo out{std::vector<double>(in.l.size()), std::vector<double>(in.r.size())};
    for (std::size_t pos = 0; pos + kN <= in.l.size(); pos += kN)
    {
        lim.mIn1 = in.l.data() + pos;
        lim.mIn2 = in.r.data() + pos;
        lim.mOut1 = out.l.data() + pos;
        lim.mOut2 = out.r.data() + pos;
        lim.Process();
    }
    return out;
}

const auto Peak = [](const Stereo& s) { return std::max(testmeasure::Peak(s.l), testmeasure::Peak(s.r)); };
} // namespace

TEST(MasterLimitFollower, HoldRiseAndFallLaws)
{
    MasterLimitFollower f;
    // Rising step to 2 with rise c: env = 2 - (2 - 1) c^k.
    double block[kN];
    std::fill(block, block + kN, 2.0);
    f.Run(block, 0.5, 0.0, 0.9);
    for (int i = 0; i < kN; ++i)
        EXPECT_NEAR(block[i], 2.0 - std::pow(0.5, i + 1), 1e-15) << i;
    // After a peak of 3 a level of 1 is held up: 1 + 2 h^k; with fall 0 the envelope drops at once
    // to the held value.
    f.Reset();
    block[0] = 3.0;
    std::fill(block + 1, block + kN, 1.0);
    f.Run(block, 0.0, 0.0, 0.9);
    for (int k = 0; k < kN; ++k)
        EXPECT_NEAR(block[k], 1.0 + 2.0 * std::pow(0.9, k), 1e-13) << k;
    // Elements at or below 1e-15 pass untouched and move no state.
    double quiet[kN], copy[kN];
    for (int i = 0; i < kN; ++i)
        quiet[i] = copy[i] = (i % 2 ? 1e-15 : -1e-15) * (i % 3 ? 1.0 : 0.0);
    f.Run(quiet, 0.3, 0.3, 0.3);
    std::fill(block, block + kN, 1.0);
    f.Run(block, 0.0, 0.0, 0.9);
    // The hold went on where it was.
    EXPECT_TRUE(std::equal(quiet, quiet + kN, copy) &&
                std::fabs(block[0] - 1.0 - 2.0 * std::pow(0.9, kN)) < 1e-13);
}

TEST(MasterLimiter, LowLevelsPassDelayedByTheLookAheadWithTrimAndBoost)
{
    GlobalsGuard guard;
    // Modes 1 and 2 lift quiet material by their trim (40 % and 5 %), mode 3 leaves it alone; the
    // boost is in decibels. At 96 kHz, so that the look-ahead is seen to scale with the rate.
    SetTimeBase(96000.0);
    const std::size_t la = std::size_t(gLookAhead);
    const Stereo in = Make(
        kN * 400, [](int i) { return 0.02 * std::sin(0.01 * i); },
        [](int i) { return 0.015 * std::cos(0.037 * i); });
    for (const auto& [mode, boostDb, gain] : {std::tuple{kLimiterSlowI, 0.0, 1.4},
                                              {kLimiterSlowII, 0.0, 1.05},
                                              {kLimiterFast, 0.0, 1.0},
                                              {kLimiterFast, 6.0, 1.9952623149688795},
                                              {kLimiterFast, -12.0, 0.251188643150958}})
    {
        const Stereo out = Limit(mode, in, boostDb);
        for (std::size_t i = 0; i < in.l.size(); ++i)
            ASSERT_TRUE(std::fabs(out.l[i] - (i >= la ? gain * in.l[i - la] : 0.0)) < 1e-14 &&
                        std::fabs(out.r[i] - (i >= la ? gain * in.r[i - la] : 0.0)) < 1e-14)
                << "mode " << mode << " boost " << boostDb << " sample " << i;
    }
}

TEST(MasterLimiter, ModesTwoAndThreeNeverExceedFullScale)
{
    GlobalsGuard guard;
    // Full-scale impulses of both signs, a +24 dB burst out of quiet, and noise with a 36 dB boost.
    const double a24 = std::pow(10.0, 24.0 / 20.0);
    const std::vector<double> noiseL = testnoise::Noise(44100, 1.0, 7),
                              noiseR = testnoise::Noise(44100, 0.5, 8);
    const Stereo cases[] = {
        Make(
            kN * 1300, [](int i) { return i % 997 == 100 ? 1.0 : 0.0; },
            [](int i) { return i % 1291 == 50 ? -1.0 : (i % 1291 == 51 ? 0.99 : 0.0); }),
        Make(
            kN * 1300, [a24](int i) { return (i > 20000 && i < 24000 ? a24 : 0.01) * std::sin(0.05 * i); },
            [](int) { return 0.0; }),
        Make(
            kN * 1300, [&](int i) { return noiseL[i]; }, [&](int i) { return noiseR[i]; })};
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        for (int mode : {kLimiterSlowII, kLimiterFast})
            for (int c = 0; c < 3; ++c)
            {
                const double peak = Peak(Limit(mode, cases[c], c == 2 ? 36.0 : 0.0));
                // Limits, but does not mute.
                EXPECT_TRUE(peak <= 1.0 + 1e-9 && peak > 0.5)
                    << "case " << c << " mode " << mode << " rate " << rate;
            }
    }
}

TEST(MasterLimiter, StagesSettleWhereTheirLawsPutThem)
{
    // The fast second pass divides the delayed detector (1.09 x the louder channel) down to 1: an
    // isolated peak of any height above that comes out at 1 / 1.09, gLookAhead late.
    for (double height : {1.0, 3.0, 20.0})
    {
        const auto impulse = [&](int i) { return i == 500 ? height : 0.0; };
        const Stereo out = Limit(kLimiterFast, Make(kN * 40, impulse, [](int) { return 0.0; }));
        EXPECT_TRUE(std::fabs(out.l[500 + gLookAhead] - 1.0 / 1.09) < 1e-12 &&
                    std::fabs(Peak(out) - 1.0 / 1.09) < 1e-12)
            << height;
    }
    // A steady +12 dB sine in SLOW II: the slow stage brings it well down and keeps its shape
    // (crest factor close to sqrt 2).
    const auto sine = [](int i) { return 4.0 * std::sin(0.031 * i); };
    const Stereo out = Limit(kLimiterSlowII, Make(kN * 6000, sine, sine));
    const std::size_t from = out.l.size() - 44100 / 4;
    const double peak = testmeasure::Peak(out.l, from), rms = testmeasure::Rms(out.l, from);
    EXPECT_TRUE(peak < 1.0 && peak > 0.3) << peak;
    EXPECT_NEAR(peak / rms, std::sqrt(2.0), 0.05);
}

TEST(MasterLimiter, ModeChangeFadesOutAndInWithSquaredGain)
{
    GlobalsGuard guard;
    // At 96 kHz: the fade runs in steps of 50 ms at 44.1 kHz whatever the rate.
    SetTimeBase(96000.0);
    MasterLimiter lim;
    lim.SetMode(kLimiterFast, false);
    lim.Reset();
    // Steady low level: mode 3 passes 0.1, so the output over 0.1 is the fade gain.
    const double in = 0.1;
    double l[kN], outL[kN], outR[kN];
    std::fill(l, l + kN, in);
    lim.mIn1 = lim.mIn2 = l;
    lim.mOut1 = outL;
    lim.mOut2 = outR;
    for (int b = 0; b < 10; ++b)
        lim.Process();
    lim.SetMode(kLimiterSlowII, true);
    // 32 / (50 ms at 44.1 kHz) per block, whatever the rate: 69 blocks down, then the switch,
    // then as many up; the gain is squared.
    const double step = 32.0 / 2205.0;
    for (int k = 1; k <= 69; ++k)
    {
        lim.Process();
        EXPECT_EQ(int(lim.mMode), kLimiterFast) << k; // nothing switches before the fade is out
        ASSERT_NEAR(outL[kN - 1], in * std::pow(1.0 - k * step, 2), 1e-12) << "block " << k;
    }
    // The switch block does no audio work: what the caller left is only scaled by the fade.
    double g = 1.0 - 69 * step + step;
    std::fill(outL, outL + kN, 0.5);
    lim.Process();
    EXPECT_TRUE(int(lim.mMode) == kLimiterSlowII && std::fabs(outL[0] - 0.5 * g * g) < 1e-12) << outL[0];
    int inBlocks = 1;
    while (lim.mFade.mFadeIn)
    {
        lim.Process();
        g += step;
        ++inBlocks;
        // SLOW II's RMS state comes down over half a second; it never lifts by more than the trim.
        const double modeGain = outL[kN - 1] / (g * g) / in;
        ASSERT_TRUE(modeGain <= 1.05 + 1e-12 && modeGain > 0.5) << inBlocks << " " << modeGain;
    }
    EXPECT_NEAR(inBlocks, 69, 1);
}
