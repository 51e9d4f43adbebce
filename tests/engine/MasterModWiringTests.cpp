#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <numbers>
#include <vector>

#include "EngineRig.h"
#include "QuorvexProbe.h"
#include "dsp/MasterLimiter.h"
#include "engine/Quorvex.h"
#include "params/IParamRecord.h"
#include "params/ModRouting.h"
#include "params/ParamIds.h"

// The master section and the modulation routing as the whole plug-in runs them. Host calls of 32
// samples each end with exactly one internal block, so a test can look at a slot's stages or write
// a modulator's buffer between blocks. With one slot sounding, the wet sum is that slot's output
// stage, and it leaves the plug-in 32 samples (the output ring) plus 1 ms later.

using namespace engine_rig;

namespace
{
// Past the 100 ms fade-in and the slot smoothers' settling.
constexpr int kSettled = 9600;

TEST(MasterWiring, GlobalWidthZeroIsHalfTheSumAndHundredLeavesTheWetAlone)
{
    const Stereo in = Noise(16000, 0.3, 21);
    for (const double width : {100.0, 0.0})
    {
        Rig rig;
        rig.Set(kGlobalWidth, width);
        Stereo stage;
        const Stereo out = rig.Run(in, &stage);
        double spread = 0.0; // how far apart the slot's two sides are: the check must bite
        for (int g = kSettled; g + kBlock + kMs < in.Size(); ++g)
        {
            const int h = g + kBlock + kMs;
            spread = std::max(spread, std::abs(stage.l[g] - stage.r[g]));
            if (width == 100.0)
            {
                ASSERT_NEAR(out.l[h], stage.l[g], 1e-12) << g;
                ASSERT_NEAR(out.r[h], stage.r[g], 1e-12) << g;
            }
            else
            {
                const double mid = 0.5 * (stage.l[g] + stage.r[g]);
                ASSERT_NEAR(out.l[h], mid, 1e-12) << g;
                ASSERT_NEAR(out.r[h], mid, 1e-12) << g;
            }
        }
        EXPECT_GT(spread, 0.1);
    }
}

// A hot wet (noise at full scale, +12 dB of input gain) leaves the limiter at full scale or below;
// without it the same wet goes far over.
TEST(MasterWiring, LimiterHoldsTheWetOutputAtFullScale)
{
    Stereo in = Noise(24000, 1.0, 5);
    for (int i = 0; i < in.Size(); ++i)
        in.l[i] += 0.8 * std::sin(2.0 * std::numbers::pi * 150.0 * i / kRate);
    for (const int mode : {kLimiterOff, kLimiterFast, kLimiterSlowII})
    {
        Rig rig;
        rig.Set(kInputGain1, 12.0);
        rig.Set(kLimiterOn, mode);
        const double peak = Peak(rig.Run(in), kSettled);
        if (mode == kLimiterOff)
        {
            EXPECT_GT(peak, 3.0);
        }
        else
        {
            EXPECT_LE(peak, 1.0 + 1e-12) << "mode " << mode;
            EXPECT_GT(peak, 0.8) << "mode " << mode;
        }
    }
}

// An impulse leaves the dry path 64 samples (the two rings) plus 1 ms after it came in, and the
// wet sum 32 samples plus 1 ms after its block: the same place, with the limiter off and running.
TEST(MasterWiring, DryAndWetStayAlignedInBothLimiterStates)
{
    const int at = 12000 + 7;
    Stereo in(16000);
    in.l[at] = 0.5;
    in.r[at] = -0.25;
    for (const int mode : {kLimiterOff, kLimiterFast})
    {
        Rig dry;
        dry.Set(kLimiterOn, mode);
        dry.Set(kWetLevel, 0.0);
        dry.Set(kDryLevel, 100.0);
        const Stereo dryOut = dry.Run(in);
        for (int i = kSettled; i < in.Size(); ++i)
        {
            const bool impulse = i == at + 2 * kBlock + kMs;
            ASSERT_EQ(dryOut.l[i], impulse ? 0.5 : 0.0) << "mode " << mode << " at " << i;
            ASSERT_EQ(dryOut.r[i], impulse ? -0.25 : 0.0) << "mode " << mode << " at " << i;
        }

        Rig wet;
        wet.Set(kLimiterOn, mode);
        Stereo stage;
        const Stereo wetOut = wet.Run(in, &stage);
        // The wet copy's band limit spreads the impulse but keeps its first sample in place.
        EXPECT_LT(std::abs(stage.l[at + kBlock - 1]), 1e-9);
        EXPECT_GT(std::abs(stage.l[at + kBlock]), 1e-4);
        for (int g = kSettled; g + kBlock + kMs < in.Size(); ++g)
        {
            ASSERT_NEAR(wetOut.l[g + kBlock + kMs], stage.l[g], 1e-12) << "mode " << mode << " at " << g;
            ASSERT_NEAR(wetOut.r[g + kBlock + kMs], stage.r[g], 1e-12) << "mode " << mode << " at " << g;
        }
    }
}

// Slot 1 sends half of its output to the master effect bus; the effect, bypassed, returns the bus
// unchanged, which joins the wet at MasterFX Level and feeds slot 2 (input MASTER-FX) a block later:
// wet = 1.5 x out1[g] + 0.5 x out1[g - 32].
TEST(MasterWiring, MasterEffectBusAndReturnReachWetAndSlots)
{
    Rig rig;
    rig.Set(kMFXSend1, 50.0);
    rig.Set(kMasterFX, 1.0);
    rig.Set(kMasterFXBypass, 1.0);
    rig.Set(kMasterFXLevel, 100.0);
    rig.Set(kSlotOn2, 1.0);
    rig.Set(kInput2, 4.0); // MASTER-FX
    rig.Set(kDelayOn2, 0.0);
    rig.Set(kInputGain2, 0.0);
    rig.Set(kLevel2, 0.0);
    const Stereo in = Noise(12800, 0.3, 9);
    Stereo stage;
    const Stereo out = rig.Run(in, &stage);
    for (int g = kSettled; g + kBlock + kMs < in.Size(); ++g)
    {
        ASSERT_NEAR(out.l[g + kBlock + kMs], 1.5 * stage.l[g] + 0.5 * stage.l[g - kBlock], 1e-6) << g;
        ASSERT_NEAR(out.r[g + kBlock + kMs], 1.5 * stage.r[g] + 0.5 * stage.r[g - kBlock], 1e-6) << g;
    }
}

// A source buffer rewritten at the end of block k moves the slot's level and pan targets in block
// k + 1. Level: 1 + 1 x (-0.5) = 0.5; pan: 0 + 1 x 0.5. Both pass the block smoother, whose
// coefficient is exp(-2 pi / 40) at any rate, so sample i of block k + 1 carries c^(i+1) of the old
// value. With pan p the left gain is 1 - p, the right stays 1.
TEST(ModWiring, SourceWrittenAtBlockEndMovesLevelAndPanInTheNextBlock)
{
    Rig rig;
    rig.Set(kLevelModSource1, kModSourceLFO1);
    rig.Set(kLevelModDepth1, 100.0);
    rig.Set(kPanningModSource1, kModSourceLFO1 + 1);
    rig.Set(kPanningModDepth1, 100.0);
    Stereo dc(kSettled + kBlock);
    std::fill(dc.l.begin(), dc.l.end(), 0.5);
    std::fill(dc.r.begin(), dc.r.end(), 0.5);
    Stereo stage;
    rig.Run(dc, &stage);
    for (int i = kSettled; i < dc.Size(); ++i)
    {
        ASSERT_NEAR(stage.l[i], 0.5, 1e-6) << i;
        ASSERT_NEAR(stage.r[i], 0.5, 1e-6) << i;
    }

    std::fill_n(rig.Source(kModSourceLFO1), kBlock, -0.5);
    std::fill_n(rig.Source(kModSourceLFO1 + 1), kBlock, 0.5);
    Stereo next(kBlock);
    std::fill(next.l.begin(), next.l.end(), 0.5);
    std::fill(next.r.begin(), next.r.end(), 0.5);
    rig.Run(next, &stage);

    const double c = std::exp(-2.0 * std::numbers::pi / 40.0);
    for (int i = 0; i < kBlock; ++i)
    {
        const double old = std::pow(c, i + 1);
        const double level = 0.5 + 0.5 * old;
        const double pan = 0.5 * (1.0 - old);
        EXPECT_NEAR(stage.l[i], 0.5 * level * (1.0 - pan), 1e-6) << i;
        EXPECT_NEAR(stage.r[i], 0.5 * level, 1e-6) << i;
    }
}

// Delay times: a source on "Delay TimeL/R" lengthens both sides by depth x source (full depth is
// 25 ms), one on the spread ("Delay ModDepth", also 25 ms at full depth) lengthens the left and
// shortens the right. 0.4 on the first and 0.2 on the second (two LFOs held at those values):
// left +15 ms, right +5 ms.
TEST(ModWiring, RoutedSourcesMoveTheEchoes)
{
    const int at = 19200 + 3;
    Stereo in(at + 9600);
    in.l[at] = 1.0;
    in.r[at] = 1.0;
    int peaks[2][2] = {};
    for (int routed = 0; routed < 2; ++routed)
    {
        Rig rig;
        rig.Set(kDelayOn1, 1.0);
        rig.Set(kDirectIn1, 100.0); // echoes only
        rig.Set(kFeedback1, 0.0);
        rig.Set(kModulation1, 0.0);
        rig.Set(kDelayLopass1, 20000.0);
        rig.Set(kDelayHipass1, 20.0);
        rig.Set(kTimebase1, 0.0);
        rig.Set(kDelayTimeL1, 100.0);
        rig.Set(kDelayTimeR1, 100.0);
        if (routed == 1)
        {
            rig.Set(kDelayTimeLModSource1, kModSourceLFO1);
            rig.Set(kDelayTimeLModDepth1, 100.0);
            rig.Set(kDelayTimeRModSource1, kModSourceLFO1);
            rig.Set(kDelayTimeRModDepth1, 100.0);
            rig.Set(kDelaySpreadModSource1, kModSourceLFO1 + 1);
            rig.Set(kDelayModDepth1, 100.0);
            // Two LFOs that hold still: the first half of a square at the slowest rate.
            HoldLfo(rig, 0, 40.0);
            HoldLfo(rig, 1, 20.0);
        }
        const Stereo out = rig.Run(in);
        peaks[routed][0] = PeakIndex(out.l, at, out.Size());
        peaks[routed][1] = PeakIndex(out.r, at, out.Size());
    }
    // Unrouted, both echoes sit 100 ms behind the impulse's way through the plug-in.
    EXPECT_NEAR(peaks[0][0] - at, 4800 + 2 * kBlock + kMs, 3);
    EXPECT_NEAR(peaks[0][1] - at, 4800 + 2 * kBlock + kMs, 3);
    EXPECT_NEAR(peaks[1][0] - peaks[0][0], 720, 1); // 15 ms
    EXPECT_NEAR(peaks[1][1] - peaks[0][1], 240, 1); // 5 ms
}
} // namespace
