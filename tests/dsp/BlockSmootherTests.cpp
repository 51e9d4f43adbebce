#include "dsp/BlockSmoother.h"

#include <gtest/gtest.h>

#include <vector>

// A smoother gives the same block for the same target and state however it got there: a settled
// one that skips the work, one whose state was set from outside, one that was retimed, and a
// fresh one in the same state all agree bit for bit.
namespace
{
std::vector<double> Block(const double* y)
{
    return std::vector<double>(y, y + gBlockLen);
}

std::vector<float> BlockF(const float* y)
{
    return std::vector<float>(y, y + gBlockLen);
}
} // namespace

TEST(BlockSmoother, RepeatedRunsMatchAFreshSmootherInTheSameState)
{
    BlockSmoother s(5.0);
    for (int block = 0; block < 4000; ++block)
        s.RunD(0.7, gBlockLen);
    const double settled = s.LastD();
    BlockSmoother fresh(5.0);
    fresh.SetLastD(settled);
    EXPECT_EQ(Block(s.RunD(0.7, gBlockLen)), Block(fresh.RunD(0.7, gBlockLen)));
    EXPECT_EQ(s.LastD(), fresh.LastD());

    // The state set from outside to where the last block started from: the block follows it.
    s.SetLastD(0.1);
    fresh.SetLastD(0.1);
    const std::vector<double> moved = Block(s.RunD(0.7, gBlockLen));
    EXPECT_EQ(moved, Block(fresh.RunD(0.7, gBlockLen)));
    EXPECT_LT(moved[0], 0.7);
    EXPECT_EQ(s.LastD(), fresh.LastD());

    // A new time refills the tables: the same target and state give the new law's block.
    s.SetLastD(0.1);
    s.SetTime(50.0);
    BlockSmoother slow(50.0);
    slow.SetLastD(0.1);
    EXPECT_EQ(Block(s.RunD(0.7, gBlockLen)), Block(slow.RunD(0.7, gBlockLen)));

    // A shorter block after a full one is computed for its own length.
    s.SetLastD(0.2);
    slow.SetLastD(0.2);
    s.RunD(0.7, gBlockLen);
    slow.RunD(0.7, gBlockLen);
    s.SetLastD(0.2);
    slow.SetLastD(0.2);
    EXPECT_EQ(s.RunD(0.7, 8)[7], slow.RunD(0.7, 8)[7]);
    EXPECT_EQ(s.LastD(), slow.LastD());
}

TEST(BlockSmoother, RepeatedSinglePrecisionRunsFollowTheirState)
{
    BlockSmoother s(100.0), fresh(100.0);
    for (int block = 0; block < 10; ++block)
        s.RunF(2000.0f, gBlockLen);
    for (int pass = 0; pass < 2; ++pass)
    {
        s.SetLastF(1000.0);
        fresh.SetLastF(1000.0);
        const std::vector<float> y = BlockF(s.RunF(2000.0f, gBlockLen));
        EXPECT_EQ(y, BlockF(fresh.RunF(2000.0f, gBlockLen))) << pass;
        EXPECT_GT(y[0], 1000.0f);
        EXPECT_LT(y[gBlockLen - 1], 2000.0f);
    }
}
