#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/TapEngine.h"
#include "delay/DelayMode.h"
#include "delay/QLMMultiDelay.h"
#include "dsp/TimeBase.h"
#include "dsp/Vec.h"
#include "params/ParamIds.h"

namespace
{
constexpr int kWarmBlocks = 500; // lets the 100 ms tap-time glides settle before the impulse
// The glides settle in single precision, so an echo's gain is good to about 1e-4 of itself.
constexpr double kTol = 1e-3;

struct Capture
{
    std::vector<double> postL, postR, dlyL, dlyR, fbL, fbR;
};

// Two tapped delay lines, a tap engine and the slot's buffers around them. Each block: the taps
// are read, then the input plus the feedback tap times the feedback gain is written, as the slot's
// feedback mix does. The recorded part starts with an impulse of `ampL` on the left and, `rightLag`
// samples later, one of `ampR` on the right.
class TapRig
{
  public:
    TapRig() : mRate(44100.0)
    {
        left.SetMode(DelayTapped);
        right.SetMode(DelayTapped);
        double** ends[] = {&io.postL,  &io.postR,  &io.dlyL, &io.dlyR,
                           &io.fbOutL, &io.fbOutR, &io.tapL, &io.tapR};
        for (int k = 0; k < 8; ++k)
            *ends[k] = mBuf[k];
    }

    Capture Run(int blocks, double ampL = 1.0, double ampR = 0.0, int rightLag = 0)
    {
        Capture c;
        std::vector<double>* rec[] = {&c.postL, &c.postR, &c.dlyL, &c.dlyR, &c.fbL, &c.fbR};
        double in[2][gBlockLen];
        for (int b = -kWarmBlocks; b < blocks; ++b)
        {
            lastFxActive = taps.Process(left, right, io);
            for (int i = 0; i < gBlockLen; ++i)
            {
                const int n = b * gBlockLen + i;
                in[0][i] = (n == 0 ? ampL : 0.0) + io.fbOutL[i] * io.fbL;
                in[1][i] = (n == rightLag ? ampR : 0.0) + io.fbOutR[i] * io.fbL;
            }
            left.WriteBlock(in[0]);
            right.WriteBlock(in[1]);
            for (int k = 0; k < 6 && b >= 0; ++k)
                rec[k]->insert(rec[k]->end(), mBuf[k], mBuf[k] + gBlockLen);
        }
        return c;
    }

    struct RateSetter
    {
        explicit RateSetter(double rate) { SetTimeBase(rate); }
    } mRate; // first member: the lines size themselves from the time base
    QLMMultiDelay left{false};
    QLMMultiDelay right{true};
    TapEngine taps;
    TapBlockIO io;
    bool lastFxActive = false;
    double mBuf[8][gBlockLen] = {};
};

// An echo of the all-pass read spreads over a few samples around its delay; their sum is its gain.
double EchoAt(const std::vector<double>& x, double delay)
{
    const int centre = static_cast<int>(std::lround(delay));
    double sum = 0.0;
    for (int n = centre - 2; n <= centre + 3; ++n)
        sum += x[n];
    return sum;
}

struct Echo
{
    double at, gain;
};

// x holds exactly these echoes: each window sums to its gain, and nothing sounds outside them.
void ExpectEchoes(const std::vector<double>& x, const std::vector<Echo>& echoes, const char* what)
{
    std::vector<double> rest = x;
    for (const Echo& e : echoes)
    {
        EXPECT_NEAR(EchoAt(x, e.at), e.gain, kTol) << what << " at " << e.at;
        std::fill_n(rest.begin() + std::lround(e.at) - 2, 6, 0.0);
    }
    double energy = 0.0;
    for (double v : rest)
        energy += v * v;
    EXPECT_LT(energy, 1e-6) << what;
}

// Scales a tap by (index + 2) and the feedback pair by -1, counting the calls.
class ScalingFx : public ITapFx
{
  public:
    void RunTapFx(double* buffer, int index) override
    {
        ++tapCalls;
        VecScaleI(index + 2.0, buffer, gBlockLen);
    }
    void RunFeedbackFx(double* left, double* right) override
    {
        ++fbCalls;
        VecScaleI(-1.0, left, gBlockLen);
        VecScaleI(-1.0, right, gBlockLen);
    }
    int tapCalls = 0;
    int fbCalls = 0;
};
} // namespace

TEST(TapEngine, TapsLandAtAccumulatedStepTimesWithSwing)
{
    // Four taps, 1500 samples a step; swing 100 % makes the spacing 4/3 and 2/3 of a step; tap 2
    // has a half step, which counts half (0.75 of a step) with the depth at 50 %. The last tap is
    // the delay stage.
    for (const double timeDepth : {100.0, 50.0})
    {
        TapRig rig;
        rig.taps.SetTapCount(3);
        rig.taps.SetSwing(100.0);
        rig.taps.SetTimeStep(2, 50.0);
        rig.taps.SetTimeStepDepth(timeDepth);
        rig.io.stepSamples = 1500.0;
        const Capture c = rig.Run(200);
        const double third = timeDepth == 100.0 ? 1000.0 : 1500.0;
        ExpectEchoes(c.postL, {{2000.0, 1.0}, {3000.0, 1.0}, {3000.0 + third, 1.0}, {4000.0 + third, 1.0}},
                     timeDepth == 100.0 ? "full depth" : "half depth");
        ExpectEchoes(c.dlyL, {{4000.0 + third, 1.0}}, "delay stage");
    }
}

// One tap at 4000.5 samples, full swell: 16 pre-echoes k with d = k x 0.45 / 16, gain 0.45 - d, at
// (8 d)^2 x 500 samples in front of the tap, read as a raw block that ends there, which puts it 32
// samples later. Only k = 1..12 lie after time 0.
TEST(TapEngine, SwellPutsPreEchoesOnASquareLawGrid)
{
    const auto run = [](double swellPercent)
    {
        TapRig rig;
        rig.taps.SetTapCount(0);
        rig.io.stepSamples = 4000.5;
        // A grid laid out for an earlier swell gives way to the new one.
        rig.taps.SetSwell(30.0);
        rig.Run(0);
        rig.taps.SetSwell(swellPercent);
        return rig.Run(140).postL;
    };
    const std::vector<double> dry = run(0.0), swelled = run(100.0);
    std::vector<double> expected(dry.size(), 0.0);
    for (int k = 1; k <= 12; ++k) // 500 x (8 x 0.45 / 16)^2 x k^2 in front
        expected[static_cast<int>(std::floor(4000.5 - 25.3125 * k * k)) + gBlockLen] = 0.45 - 0.028125 * k;
    int echoes = 0;
    for (std::size_t n = 0; n < dry.size(); ++n)
    {
        EXPECT_NEAR(swelled[n] - dry[n], expected[n], 1e-12) << "sample " << n;
        echoes += swelled[n] != dry[n];
    }
    EXPECT_EQ(echoes, 12);
}

TEST(TapEngine, LevelsAndPansInEachPanMode)
{
    // Two taps at 2000 and 4000 samples. Tap 0: level 80 %, pan +50 %; tap 1: level 50 %, pan
    // -100 %; pan width 50 %, "Direct In" wet side 0.8. So tap 0 has gains 0.64 (A, left) and 0.48
    // (B, right), tap 1 has 0.2 and 0.4. The right input comes 37 samples after the left. Left taps
    // send A to the left output, right taps B to the right one; all but STEREO cross the other gain
    // over, and LEFT and RIGHT mute the other side's taps. (DUAL MONO, both sides' taps on both
    // outputs, plays with stepped pans in the golden renders.)
    const std::vector<Echo> leftA{{2000, 0.64}, {4000, 0.2}}, leftB{{2000, 0.48}, {4000, 0.4}};
    const std::vector<Echo> rightA{{2037, 0.64}, {4037, 0.2}}, rightB{{2037, 0.48}, {4037, 0.4}};
    struct Mode
    {
        int mode;
        std::vector<Echo> left, right;
    };
    const Mode modes[] = {
        {kTapPanStereo, leftA, rightB}, {kTapPanLeft, leftA, leftB}, {kTapPanRight, rightA, rightB}};
    for (const Mode& m : modes)
    {
        SCOPED_TRACE(m.mode);
        TapRig rig;
        rig.taps.SetTapCount(1);
        rig.taps.SetLevelStep(0, 80.0);
        rig.taps.SetLevelStep(1, 50.0);
        rig.taps.SetPanStep(0, 50.0);
        rig.taps.SetPanStep(1, -100.0);
        rig.taps.SetPanWidth(50.0);
        rig.taps.SetPanMode(m.mode);
        rig.io.stepSamples = 2000.0;
        rig.io.wet = 0.8;
        rig.io.fbL = 0.5;
        const Capture c = rig.Run(160, 1.0, 1.0, 37);
        ExpectEchoes(c.postL, m.left, "left output");
        ExpectEchoes(c.postR, m.right, "right output");
        // The last tap feeds back on both sides whatever the pan mode mutes, with the left gain.
        ExpectEchoes(c.fbL, {{4000, 0.5}}, "left feedback");
        ExpectEchoes(c.fbR, {{4037, 0.5}}, "right feedback");
    }
}

TEST(TapEngine, FeedbackTapBeyondTheLastIsSilentButFeedsBack)
{
    // One tap at 2000 samples; "DelayTap FB" 3 makes tap index 2, at 6000, the feedback tap. It is
    // read and scaled by the feedback gain, silent in the output; after the mix applies the gain
    // again the recirculated signal comes out of tap 0: 0.6^2 at 6000 + 2000.
    TapRig rig;
    rig.taps.SetTapCount(0);
    rig.taps.SetFeedbackTap(3);
    rig.io.stepSamples = 2000.0;
    rig.io.fbL = 0.6;
    const Capture c = rig.Run(300);
    EXPECT_EQ(rig.taps.FeedbackTap(), 2);
    ExpectEchoes(c.fbL, {{6000.0, 0.6}}, "feedback");
    ExpectEchoes(c.postL, {{2000.0, 1.0}, {8000.0, 0.36}}, "output");
    ExpectEchoes(c.dlyL, {{2000.0, 1.0}, {8000.0, 0.36}}, "delay stage");
}

TEST(TapEngine, TapMasksSwitchTapsPerChannel)
{
    // Four taps, 1000 samples apart, the same impulse on both inputs; the left plays taps 0 and 2,
    // the right taps 1 and 3. The last tap is read for the delay stage even where its channel is
    // off; with "DelayTap DI Out" ALL the delay stage carries the whole tapped mix.
    for (const int diOut : {0, 1})
    {
        TapRig rig;
        rig.taps.SetTapCount(3);
        rig.taps.SetTapMask(0, 0b0101u);
        rig.taps.SetTapMask(1, 0b1010u);
        rig.taps.SetDiOut(diOut);
        rig.io.stepSamples = 1000.0;
        const Capture c = rig.Run(160, 1.0, 1.0);
        ExpectEchoes(c.postL, {{1000.0, 1.0}, {3000.0, 1.0}}, "left");
        ExpectEchoes(c.postR, {{2000.0, 1.0}, {4000.0, 1.0}}, "right");
        if (diOut == 0) ExpectEchoes(c.dlyL, {{4000.0, 1.0}}, "delay stage, last tap");
        EXPECT_TRUE(diOut == 0 || (c.dlyL == c.postL && c.dlyR == c.postR)) << "delay stage, all taps";
    }
}

TEST(TapEngine, PostEffectRunsPerTapWithItsModuleIndex)
{
    // Two taps at 1000 and 2000; the effect is on tap 1 only: module 2 on the left (x4), module 3
    // on the right (x5). The feedback pair goes through the FB effect (x-1).
    ScalingFx fx;
    TapRig rig;
    rig.taps.SetTapCount(1);
    rig.taps.SetFxMask(0b10u);
    rig.io.stepSamples = 1000.0;
    rig.io.fbL = 0.3;
    rig.io.postFxOn = true;
    rig.io.fbFxOn = true;
    rig.io.fx = &fx;
    const Capture c = rig.Run(100, 1.0, 1.0);

    EXPECT_TRUE(rig.lastFxActive);
    // The feedback written back at 2000 (-0.3 x 0.3) comes out of tap 0, without the effect.
    ExpectEchoes(c.postL, {{1000.0, 1.0}, {2000.0, 4.0}, {3000.0, -0.09}}, "left");
    ExpectEchoes(c.postR, {{1000.0, 1.0}, {2000.0, 5.0}, {3000.0, -0.09}}, "right");
    EXPECT_NEAR(EchoAt(c.fbL, 2000.0), -0.3, kTol);
    EXPECT_EQ(fx.tapCalls, 2 * (kWarmBlocks + 100));
    EXPECT_EQ(fx.fbCalls, kWarmBlocks + 100);

    // While the POST position is replaced both effects are skipped and the taps pass dry; with no
    // tap parameter chosen the per-tap effect is off and the slot runs its own POST effect.
    rig.io.postSwapping = true;
    const Capture swapping = rig.Run(100, 1.0, 1.0);
    ExpectEchoes(swapping.postL, {{1000.0, 1.0}, {2000.0, 1.0}, {3000.0, 0.09}}, "left, while swapping");
    EXPECT_NEAR(EchoAt(swapping.fbL, 2000.0), 0.3, kTol);
    EXPECT_TRUE(rig.lastFxActive);

    rig.io.postSwapping = false;
    rig.taps.SetFxParam(0, 0);
    rig.taps.SetFxParam(1, 0);
    const int callsBefore = fx.tapCalls;
    rig.Run(1);
    EXPECT_FALSE(rig.lastFxActive);
    EXPECT_EQ(fx.tapCalls, callsBefore);
}
