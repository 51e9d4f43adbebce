#include "dsp/MasterLimitFollower.h"
#include "dsp/MasterLimiter.h"
#include "dsp/TimeBase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <vector>

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

// Runs whole blocks of a stereo signal through the limiter.
Stereo RunBlocks(MasterLimiter& lim, const Stereo& in)
{
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

double Peak(const Stereo& s)
{
    double m = 0.0;
    for (double x : s.l)
        m = std::max(m, std::fabs(x));
    for (double x : s.r)
        m = std::max(m, std::fabs(x));
    return m;
}

std::unique_ptr<MasterLimiter> MakeLimiter(int mode, double boostDb = 0.0)
{
    auto lim = std::make_unique<MasterLimiter>();
    lim->SetMode(mode, false);
    lim->SetBoost(boostDb);
    lim->Reset();
    return lim;
}

double Square(int i, int period)
{
    return (i % period) < period / 2 ? 1.0 : -1.0;
}
} // namespace

TEST(MasterLimitFollower, HoldRiseAndFallLaws)
{
    MasterLimitFollower f;
    // Rising step to 2 with rise c: env = 2 - (2 - 1) c^k; the hold follows the input at once.
    const double c = 0.5;
    double block[kN];
    std::fill(block, block + kN, 2.0);
    f.Run(block, c, 0.0, 0.9);
    for (int i = 0; i < kN; ++i)
        EXPECT_NEAR(block[i], 2.0 - std::pow(c, i + 1), 1e-15) << i;
    EXPECT_EQ(f.mHold, 2.0);

    // After a peak of 3 a level of 1 is held up: held = 1 + 2 h^k; with fall 0 the envelope drops
    // at once to the held value.
    f.Reset();
    const double h = 0.9;
    block[0] = 3.0;
    std::fill(block + 1, block + kN, 1.0);
    f.Run(block, 0.0, 0.0, h);
    EXPECT_EQ(block[0], 3.0);
    for (int k = 1; k < kN; ++k)
        EXPECT_NEAR(block[k], 1.0 + 2.0 * std::pow(h, k), 1e-13) << k;

    // Elements at or below 1e-15 pass untouched and move no state.
    const double env = f.mEnv, held = f.mHold;
    double quiet[kN];
    for (int i = 0; i < kN; ++i)
        quiet[i] = (i % 2 ? 1e-15 : -1e-15) * (i % 3 ? 1.0 : 0.0);
    double copy[kN];
    std::copy(quiet, quiet + kN, copy);
    f.Run(quiet, 0.3, 0.3, 0.3);
    for (int i = 0; i < kN; ++i)
        EXPECT_EQ(quiet[i], copy[i]);
    EXPECT_EQ(f.mEnv, env);
    EXPECT_EQ(f.mHold, held);
}

TEST(MasterLimiter, LowLevelsPassDelayedByTheLookAhead)
{
    GlobalsGuard guard;
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        const int la = gLookAhead;
        // Modes 1 and 2 lift quiet material by the trim (40 % and 5 %), mode 3 leaves it alone.
        const double trims[] = {0.0, 1.4, 1.05, 1.0};
        for (int mode : {kLimiterSlowI, kLimiterSlowII, kLimiterFast})
        {
            auto lim = MakeLimiter(mode);
            const Stereo in = Make(
                kN * 400, [](int i) { return 0.02 * std::sin(0.01 * i); },
                [](int i) { return 0.015 * std::cos(0.037 * i); });
            const Stereo out = RunBlocks(*lim, in);
            for (std::size_t i = 0; i < in.l.size(); ++i)
            {
                const double l = i >= std::size_t(la) ? in.l[i - la] : 0.0;
                const double r = i >= std::size_t(la) ? in.r[i - la] : 0.0;
                ASSERT_NEAR(out.l[i], trims[mode] * l, 1e-14) << rate << " mode " << mode << " i " << i;
                ASSERT_NEAR(out.r[i], trims[mode] * r, 1e-14) << rate << " mode " << mode << " i " << i;
            }
        }
    }
}

TEST(MasterLimiter, ModesTwoAndThreeNeverExceedFullScale)
{
    GlobalsGuard guard;
    const double ceiling = 1.0 + 1e-9;
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> uni(-1.0, 1.0);
    std::vector<double> noiseL(44100), noiseR(44100);
    for (std::size_t i = 0; i < noiseL.size(); ++i)
    {
        noiseL[i] = uni(rng);
        noiseR[i] = uni(rng);
    }
    struct Case
    {
        const char* name;
        double boostDb;
        std::function<double(int)> left, right;
    };
    const double a24 = std::pow(10.0, 24.0 / 20.0);
    const std::vector<Case> cases = {
        {"impulses", 0.0, [](int i) { return i % 997 == 100 ? 1.0 : 0.0; },
         [](int i) { return i % 1291 == 50 ? -1.0 : (i % 1291 == 51 ? 0.99 : 0.0); }},
        {"single impulse", 0.0, [](int i) { return i == 77 ? 1.0 : 0.0; }, [](int) { return 0.0; }},
        {"squares", 0.0, [](int i) { return Square(i, 100); },
         [](int i) { return 0.9 * Square(i + 13, 37); }},
        {"slow squares", 0.0, [](int i) { return Square(i, 4410); }, [](int i) { return -Square(i, 2000); }},
        {"+24 dB sines", 0.0, [a24](int i) { return a24 * std::sin(2.0 * M_PI * 100.0 * i / 44100.0); },
         [a24](int i) { return a24 * std::sin(2.0 * M_PI * 1234.5 * i / 44100.0); }},
        {"+24 dB burst", 0.0,
         [a24](int i)
         { return i > 20000 && i < 24000 ? a24 * std::sin(0.05 * i) : 0.01 * std::sin(0.05 * i); },
         [](int) { return 0.0; }},
        {"36 dB boost on noise", 36.0, [&noiseL](int i) { return noiseL[i]; },
         [&noiseR](int i) { return 0.5 * noiseR[i]; }},
        {"36 dB boost on a quiet sine", 36.0, [](int i) { return 0.05 * std::sin(0.02 * i); },
         [](int i) { return 0.03 * std::sin(0.3 * i); }},
    };
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        for (int mode : {kLimiterSlowII, kLimiterFast})
        {
            for (const Case& c : cases)
            {
                auto lim = MakeLimiter(mode, c.boostDb);
                const Stereo out = RunBlocks(*lim, Make(kN * 1300, c.left, c.right));
                EXPECT_LE(Peak(out), ceiling) << c.name << " mode " << mode << " rate " << rate;
                // The limiter does limit, not mute: loud material comes out near full scale.
                EXPECT_GT(Peak(out), 0.5) << c.name << " mode " << mode << " rate " << rate;
            }
        }
    }
}

TEST(MasterLimiter, FastModeBringsAnIsolatedPeakToTheDetectorHeadroom)
{
    // The second pass divides the delayed detector (1.09 x the louder channel) down to 1, so an
    // isolated peak of any height above that comes out at exactly 1 / 1.09, gLookAhead late.
    for (double height : {1.0, 3.0, 20.0})
    {
        auto lim = MakeLimiter(kLimiterFast);
        const int at = 500;
        const Stereo out = RunBlocks(
            *lim, Make(
                      kN * 40, [&](int i) { return i == at ? height : 0.0; }, [](int) { return 0.0; }));
        EXPECT_NEAR(out.l[at + gLookAhead], 1.0 / 1.09, 1e-12) << height;
        EXPECT_NEAR(Peak(out), 1.0 / 1.09, 1e-12) << height;
    }
}

TEST(MasterLimiter, SlowStageLimitsSustainedLevel)
{
    // A steady +12 dB sine in SLOW II settles well below its input level; the slow stage does the
    // work, so the output keeps the sine's shape (crest factor close to sqrt 2).
    auto lim = MakeLimiter(kLimiterSlowII);
    const double a = 4.0;
    const Stereo out = RunBlocks(*lim, Make(
                                           kN * 6000, [a](int i) { return a * std::sin(0.031 * i); },
                                           [a](int i) { return a * std::sin(0.031 * i); }));
    double peak = 0.0, sum = 0.0;
    const std::size_t from = out.l.size() - 44100 / 4;
    for (std::size_t i = from; i < out.l.size(); ++i)
    {
        peak = std::max(peak, std::fabs(out.l[i]));
        sum += out.l[i] * out.l[i];
    }
    const double rms = std::sqrt(sum / double(out.l.size() - from));
    EXPECT_LT(peak, 1.0);
    EXPECT_GT(peak, 0.3);
    EXPECT_NEAR(peak / rms, std::sqrt(2.0), 0.05);
}

TEST(MasterLimiter, ModeChangeFadesOutAndInWithSquaredGain)
{
    GlobalsGuard guard;
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        auto lim = MakeLimiter(kLimiterFast);
        // Steady low level: mode 3 passes 0.1, mode 2 passes 0.1 x 1.05 once its RMS state has
        // come down, so the output level divided by the mode's own gain is the fade gain.
        const double in = 0.1;
        double l[kN], r[kN], outL[kN], outR[kN];
        std::fill(l, l + kN, in);
        std::fill(r, r + kN, in);
        lim->mIn1 = l;
        lim->mIn2 = r;
        lim->mOut1 = outL;
        lim->mOut2 = outR;
        for (int b = 0; b < 10; ++b)
            lim->Process();
        EXPECT_DOUBLE_EQ(outL[kN - 1], in);

        lim->SetMode(kLimiterSlowII, true);
        EXPECT_EQ(int(gPendingLimiterMode), kLimiterSlowII);
        EXPECT_EQ(int(lim->mMode), kLimiterFast); // nothing switches before the fade is out

        // 32 / (50 ms at 44.1 kHz) per block, whatever the rate: 69 blocks to reach zero.
        const double step = 32.0 / 2205.0;
        const int outBlocks = static_cast<int>(std::ceil(1.0 / step));
        ASSERT_EQ(outBlocks, 69);
        for (int k = 1; k <= outBlocks; ++k)
        {
            lim->Process();
            const double g = 1.0 - k * step;
            for (int i = 0; i < kN; ++i)
                ASSERT_NEAR(outL[i], in * g * g, 1e-12) << rate << " block " << k;
            EXPECT_EQ(lim->mFade.mSwitchNow, k == outBlocks) << k;
        }
        // The switch block does no audio work: what the caller left is only scaled by the fade.
        const double gIn0 = 1.0 - outBlocks * step;
        std::fill(outL, outL + kN, 0.5);
        std::fill(outR, outR + kN, 0.5);
        lim->Process();
        EXPECT_EQ(int(lim->mMode), kLimiterSlowII);
        EXPECT_EQ(double(gLimitKnee), 1.5);
        EXPECT_DOUBLE_EQ(double(gLimitTrim), 1.05);
        EXPECT_NEAR(outL[0], 0.5 * std::pow(gIn0 + step, 2.0), 1e-12);
        EXPECT_NEAR(outR[kN - 1], 0.5 * std::pow(gIn0 + step, 2.0), 1e-12);

        // Fade in: the gain climbs by the same step, squared, until it reaches 1.
        int inBlocks = 1;
        double g = gIn0 + step;
        while (lim->mFade.mFadeIn)
        {
            lim->Process();
            g += step;
            ++inBlocks;
            const double modeGain = outL[kN - 1] / (g * g) / in;
            // SLOW II's RMS state starts at 1 and comes down over half a second; until then the
            // slow stage works a little. It never lifts by more than the trim.
            ASSERT_LE(modeGain, 1.05 + 1e-12) << inBlocks;
            ASSERT_GT(modeGain, 0.5) << inBlocks;
        }
        EXPECT_NEAR(inBlocks, 69, 1) << rate;
        const double fadeMs = (outBlocks + inBlocks) * 32.0 / 44.1;
        EXPECT_NEAR(fadeMs, 100.0, 1.5);
    }
}

TEST(MasterLimiter, BoostIsAppliedInDecibels)
{
    // Mode 3 at low level is a pure delay, so the boost shows as the output level.
    for (double dB : {6.0, -12.0, 20.0})
    {
        auto lim = MakeLimiter(kLimiterFast, dB);
        const double a = 0.001;
        const Stereo out = RunBlocks(*lim, Make(
                                               kN * 20, [a](int) { return a; }, [a](int) { return -a; }));
        EXPECT_NEAR(out.l.back(), a * std::pow(10.0, dB / 20.0), 1e-15) << dB;
        EXPECT_NEAR(out.r.back(), -a * std::pow(10.0, dB / 20.0), 1e-15) << dB;
    }
}

TEST(MasterLimiter, ResetClearsTheAudioDelays)
{
    auto lim = MakeLimiter(kLimiterFast);
    RunBlocks(*lim, Make(
                        kN * 10, [](int) { return 0.5; }, [](int) { return 0.5; }));
    lim->Reset();
    const Stereo out = RunBlocks(*lim, Stereo{std::vector<double>(kN, 0.0), std::vector<double>(kN, 0.0)});
    EXPECT_EQ(Peak(out), 0.0);
    for (const MasterLimitFollower& f : lim->mFollower)
        EXPECT_EQ(f.mEnv, 1.0);
    EXPECT_EQ(lim->mRmsState, 1.0);
}
