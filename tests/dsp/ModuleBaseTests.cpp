#include "dsp/BlockSmoother.h"
#include "dsp/DSPShell.h"
#include "dsp/Vec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

TEST(TimeBase, ClampsRateButNotRatio)
{
    for (const auto& [set, rate, ratio, lookAhead] : {std::tuple{192000.0, 96000.0, 192000.0 / 44100.0, 96},
                                                      {22050.0, 32000.0, 0.5, 32},
                                                      {44100.0, 44100.0, 1.0, 44}})
    {
        SetTimeBase(set);
        EXPECT_TRUE(gSampleRate == rate && std::fabs(gSampleRateRatio - ratio) < 1e-15 &&
                    gLookAhead == lookAhead && gMaxDelay == int(rate) * 8 + 1000)
            << set;
    }
}

TEST(BlockSmoother, FollowsTheOnePoleOfItsTimeAndSettlesWithoutDrift)
{
    // A 1 ms one-pole has a = exp(-2 pi / (0.001 rate)); each sample closes the gap to the target
    // by that factor (tables rounded to single precision on purpose).
    for (double ms : {0.5, 10.0, 400.0})
    {
        BlockSmoother s(ms);
        const double a = std::exp(-2.0 * M_PI / (ms * 44.1));
        double y = 0.0;
        for (double target : {1.0, -0.3, 0.75, 2.0})
        {
            const double* out = s.RunD(target, 32);
            for (int i = 0; i < 32; ++i)
            {
                y = a * y + (1.0 - a) * target;
                ASSERT_NEAR(out[i], y, 2e-7 * (1.0 + std::fabs(target) + std::fabs(y))) << ms << " " << i;
            }
            y = out[31];
        }
    }
    // Settled, it stays put; a time too short to represent reaches the target at once.
    BlockSmoother s(10.0), at(1e-9);
    double last[2] = {};
    for (int block = 0; block < 102000; ++block)
        last[block >= 2000] = s.RunD(0.5, 32)[31];
    EXPECT_TRUE(std::fabs(last[0] - 0.5) < 0.5e-7 && std::fabs(last[1] - last[0]) < 1e-15) << last[0];
    EXPECT_DOUBLE_EQ(at.RunD(0.8, 32)[0], 0.8);
}

TEST(BlockSmoother, RepeatedRunsMatchAFreshSmootherInTheSameState)
{
    // The last block is handed out again for the same inputs (the glides of the delay lines see
    // that for a new target or start); after a retime, and for a shorter block, it is not.
    BlockSmoother s(5.0);
    s.SetLastD(0.1);
    s.RunD(0.7, 32);
    s.SetTime(50.0);
    for (const int n : {32, 8})
    {
        BlockSmoother fresh(50.0);
        fresh.SetLastD(0.1);
        s.SetLastD(0.1);
        const double* a = s.RunD(0.7, n);
        EXPECT_TRUE(std::equal(a, a + n, fresh.RunD(0.7, n)) && s.LastD() == fresh.LastD()) << n;
    }
}

// HeldD tells a repeat of the block before from a new block: a settled smoother with a steady
// target holds; a new target, the block after it and a retime do not.
TEST(BlockSmoother, HeldOnlyWhileTheBlockRepeats)
{
    BlockSmoother s(5.0);
    for (int b = 0; b < 2000; ++b)
        s.RunD(0.3, 32);
    EXPECT_TRUE(s.HeldD());
    const double* block = s.RunD(0.3, 32);
    const std::vector<double> settled(block, block + 32);
    EXPECT_TRUE(s.HeldD());
    s.RunD(0.31, 32);
    EXPECT_FALSE(s.HeldD());
    s.RunD(0.31, 32);
    EXPECT_FALSE(s.HeldD()) << "the block after a step starts elsewhere";
    for (int b = 0; b < 2000; ++b)
        s.RunD(0.3, 32);
    EXPECT_TRUE(s.HeldD() && std::equal(settled.begin(), settled.end(), s.RunD(0.3, 32)));
    s.SetTime(7.0);
    s.RunD(0.3, 32);
    EXPECT_FALSE(s.HeldD()) << "after a retime";
}

TEST(BlockSmoother, ApplyModAddsSourceTimesDepthWithinBounds)
{
    const double mod[4] = {1.0, -1.0, 0.5, 0.0};
    double v = 0.5;
    BlockSmoother::ApplyMod(mod, 0.8, &v, nullptr, 1, 0.0, 1.0);
    EXPECT_DOUBLE_EQ(v, 1.0); // 1.3 takes the upper bound
    double base = 0.2, dest = 0.0;
    BlockSmoother::ApplyMod(mod + 2, 0.2, &base, &dest, 1, 0.0, 1.0);
    EXPECT_TRUE(base == 0.2 && std::fabs(dest - 0.3) < 1e-15) << dest;
    std::vector<double> block(4);
    double start = 0.5;
    BlockSmoother::ApplyMod(mod, 1.0, &start, block.data(), 4, 0.0, 1.2);
    EXPECT_EQ(block, (std::vector<double>{1.2, 0.0, 1.0, 0.5}));
}

TEST(DSPShell, ProcessCopiesExactlyOneBlockAndBypassClearsScratch)
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
    EXPECT_TRUE(std::equal(in, in + 32, out) && out[32] == -7.0 && out[39] == -7.0);
    for (bool bypass : {true, false})
    {
        shell.mScratch[5] = 3.0;
        shell.SetBypass(bypass);
        EXPECT_EQ(shell.mScratch[5], 0.0) << bypass;
    }
    // A modulation input gives source x depth until Init unwires it.
    const double src = 0.5, depth = 0.4;
    shell.SetModSource(3, &src);
    shell.SetModDepth(3, &depth);
    const double wired = shell.ModValue(3);
    shell.Init();
    EXPECT_TRUE(std::fabs(wired - 0.2) < 1e-15 && shell.ModValue(3) == 0.0) << wired;
}
