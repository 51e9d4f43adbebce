#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "core/FeedbackSoftLimit.h"
#include "dsp/TimeBase.h"

// One sample over 1 in an otherwise quiet block, at every position and on both signs, bends by
// the law 1 + 0.5 (v - 1) / v, however little it is over; everything else passes bit for bit.
TEST(FeedbackSoftLimit, BendsExactlyTheSamplesAboveOne)
{
    for (const double over : {1.0 + 1e-12, 1.05, 1.2, 1.5, 3.0, 1e9})
        for (const double sign : {1.0, -1.0})
            for (int at = 0; at < gBlockLen; ++at)
            {
                std::vector<double> x(gBlockLen);
                for (int i = 0; i < gBlockLen; ++i)
                    x[static_cast<std::size_t>(i)] = std::sin(0.7 * i) * (i % 3 == 0 ? 1.0 : 0.5);
                const std::vector<double> before = x;
                x[static_cast<std::size_t>(at)] = sign * over;
                FeedbackSoftLimit(x.data());
                for (int i = 0; i < gBlockLen; ++i)
                {
                    const double want = i == at ? sign * (1.0 + 0.5 * (over - 1.0) / over)
                                                : before[static_cast<std::size_t>(i)];
                    ASSERT_EQ(x[static_cast<std::size_t>(i)], want) << over * sign << " at " << at;
                }
            }
}

// A NaN neither bends nor stops its neighbours from bending.
TEST(FeedbackSoftLimit, NaNPassesAndItsNeighboursStillBend)
{
    std::vector<double> x(gBlockLen, 0.25);
    x[4] = std::numeric_limits<double>::quiet_NaN();
    x[5] = 2.0;
    FeedbackSoftLimit(x.data());
    EXPECT_TRUE(std::isnan(x[4]));
    EXPECT_EQ(x[5], 1.25);
    EXPECT_EQ(x[6], 0.25);
}
