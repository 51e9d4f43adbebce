#include "dsp/BlockSmoother.h"
#include "dsp/DSPShell.h"
#include "dsp/Vec.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{
struct RateGuard
{
    ~RateGuard() { SetTimeBase(44100.0); }
};
} // namespace

TEST(TimeBase, ClampsRateButNotRatio)
{
    RateGuard guard;
    SetTimeBase(192000.0);
    EXPECT_EQ(double(gSampleRate), 96000.0);
    EXPECT_DOUBLE_EQ(double(gSampleRateRatio), 192000.0 / 44100.0);
    EXPECT_EQ(int(gLookAhead), 96);
    EXPECT_EQ(int(gMaxDelay), 96000 * 8 + 1000);
    SetTimeBase(22050.0);
    EXPECT_EQ(double(gSampleRate), 32000.0);
    EXPECT_DOUBLE_EQ(double(gSampleRateRatio), 0.5);
    SetTimeBase(44100.0);
    EXPECT_EQ(int(gLookAhead), 44);
    EXPECT_DOUBLE_EQ(double(gSamplesPerMs), 44.1);
}

// Reference: the per-sample one-pole with the smoother's own coefficient.
static std::vector<double> OnePole(double a, double y, double target, int n)
{
    std::vector<double> out(n);
    for (int i = 0; i < n; ++i)
    {
        y = a * y + (1.0 - a) * target;
        out[i] = y;
    }
    return out;
}

TEST(BlockSmoother, RunDAgreesWithPerSampleOnePole)
{
    for (double ms : {0.5, 1.0, 10.0, 50.0, 400.0})
    {
        BlockSmoother s(ms);
        double y = 0.0;
        const double targets[] = {1.0, -0.3, 0.75, 0.75, 2.0};
        for (double target : targets)
        {
            const double* out = s.RunD(target, 32);
            const std::vector<double> ref = OnePole(s.mCoef, y, target, 32);
            for (int i = 0; i < 32; ++i)
                // The power tables are rounded to single precision on purpose.
                EXPECT_NEAR(out[i], ref[i], 2e-7 * (1.0 + std::fabs(target) + std::fabs(y)))
                    << ms << " ms, i " << i;
            y = out[31];
        }
    }
}

TEST(BlockSmoother, SettlesOnConstantWithoutDrift)
{
    BlockSmoother s(10.0);
    double last = 0.0;
    for (int block = 0; block < 2000; ++block)
        last = s.RunD(0.5, 32)[31];
    // The fixed point sits within the single-precision rounding of the tables.
    EXPECT_NEAR(last, 0.5, 0.5 * 1e-7);
    const double settled = last;
    // Convergence as a^n: after one block the gap is a^32 of the start gap (within single rounding).
    BlockSmoother t(10.0);
    const double first = t.RunD(1.0, 32)[31];
    EXPECT_NEAR(1.0 - first, std::pow(t.mCoef, 32), 1e-6);
    // No creeping away from a settled value over a long run.
    for (int block = 0; block < 100000; ++block)
        last = s.RunD(0.5, 32)[31];
    EXPECT_NEAR(last, settled, 1e-15);
}

TEST(BlockSmoother, UnderflowingTimeReachesTargetAtOnce)
{
    BlockSmoother s(1e-9);
    EXPECT_EQ(s.mCoef, 0.0);
    EXPECT_EQ(s.mGain, 1.0);
    const double* out = s.RunD(0.8, 32);
    EXPECT_DOUBLE_EQ(out[0], 0.8);
    EXPECT_DOUBLE_EQ(out[31], 0.8);
}

TEST(BlockSmoother, RunFTracksRunD)
{
    BlockSmoother s(5.0);
    for (int block = 0; block < 10; ++block)
    {
        const double* d = s.RunD(0.25 * block, 32);
        const float* f = s.RunF(0.25f * block, 32);
        for (int i = 0; i < 32; ++i)
            EXPECT_NEAR(f[i], d[i], 1e-5);
    }
}

TEST(BlockSmoother, ApplyModScalarAndBlock)
{
    const double mod[4] = {1.0, -1.0, 0.5, 0.0};
    double v = 0.5;
    BlockSmoother::ApplyMod(mod, 0.8, &v, nullptr, 1, 0.0, 1.0);
    EXPECT_DOUBLE_EQ(v, 1.0); // 1.3 takes the upper bound

    double base = 0.2, dest = 0.0;
    BlockSmoother::ApplyMod(mod + 2, 0.2, &base, &dest, 1, 0.0, 1.0);
    EXPECT_DOUBLE_EQ(base, 0.2);
    EXPECT_DOUBLE_EQ(dest, 0.3);

    double block[4];
    double start = 0.5;
    BlockSmoother::ApplyMod(mod, 1.0, &start, block, 4, 0.0, 1.2);
    EXPECT_DOUBLE_EQ(block[0], 1.2);
    EXPECT_DOUBLE_EQ(block[1], 0.0);
    EXPECT_DOUBLE_EQ(block[2], 1.0);
    EXPECT_DOUBLE_EQ(block[3], 0.5);
}

namespace
{
class ScratchSpy : public DSPShell
{
  public:
    int resets = 0;
    void Reset() override
    {
        DSPShell::Reset();
        ++resets;
    }
};
} // namespace

TEST(DSPShell, ProcessCopiesExactlyOneBlock)
{
    DSPShell shell;
    double in[40], out[40];
    for (int i = 0; i < 40; ++i)
    {
        in[i] = i + 1;
        out[i] = -7.0;
    }
    shell.mIn1 = in;
    shell.mOut1 = out;
    shell.Process();
    for (int i = 0; i < 32; ++i)
        EXPECT_EQ(out[i], in[i]);
    for (int i = 32; i < 40; ++i)
        EXPECT_EQ(out[i], -7.0);
}

TEST(DSPShell, ConstructionWiringAndBypass)
{
    DSPShell left(false), right(true);
    EXPECT_EQ(left.mChannelSign, 1.0);
    EXPECT_EQ(right.mChannelSign, -1.0);
    EXPECT_EQ(left.mMix, 1.0);
    EXPECT_TRUE(left.mDirty);
    EXPECT_EQ(left.ModValue(0), 0.0);

    ScratchSpy spy;
    spy.mScratch[5] = 3.0;
    spy.SetBypass(true);
    EXPECT_EQ(spy.mScratch[5], 0.0);
    spy.mScratch[5] = 3.0;
    spy.SetBypass(false);
    EXPECT_EQ(spy.mScratch[5], 0.0);
    EXPECT_EQ(spy.resets, 2);

    const double src = 0.5, depth = 0.4;
    spy.SetModSource(3, &src);
    spy.SetModDepth(3, &depth);
    EXPECT_DOUBLE_EQ(spy.ModValue(3), 0.2);
    spy.Init();
    EXPECT_FALSE(spy.ModWired(3));
    EXPECT_EQ(spy.ModValue(3), 0.0);
}

TEST(SimpleOSC, RateGivesHalfIncrement)
{
    struct Probe : QLM_DSPFunctions::SimpleOSC
    {
        double seenRate = 0, seenHalf = 0;
        void OnRate(double hz) override { seenRate = hz; }
        void OnPhase(double half) override { seenHalf = half; }
    } osc;
    osc.SetRate(441.0);
    EXPECT_DOUBLE_EQ(osc.mPhaseInc, 0.01);
    EXPECT_DOUBLE_EQ(osc.seenRate, 441.0);
    EXPECT_DOUBLE_EQ(osc.seenHalf, 0.005);
}
