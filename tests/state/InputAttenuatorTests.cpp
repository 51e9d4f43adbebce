#include <gtest/gtest.h>

#include <cmath>

#include "state/InputAttenuator.h"

namespace
{
TEST(InputAttenuator, WholeDecibelsOnAnExponentialCurve)
{
    EXPECT_EQ(InputAttenuatorDb(0.0), -12);
    EXPECT_EQ(InputAttenuatorDb(0.5), -4); // 2^0.5 * -3 = -4.24
    EXPECT_EQ(InputAttenuatorDb(1.0), 0);
    EXPECT_EQ(InputAttenuatorDb(0.999), -1); // just below the top the curve gives -1.5, cut to -1
    EXPECT_EQ(InputAttenuatorDb(0.25), -7);  // 2^1.25 * -3 = -7.13
}

TEST(InputAttenuator, FallsMonotonicallyFromZeroToMinusTwelve)
{
    int previous = InputAttenuatorDb(0.0);
    for (int i = 1; i <= 1000; ++i)
    {
        const int db = InputAttenuatorDb(i / 1000.0);
        EXPECT_GE(db, previous) << i;
        EXPECT_LE(db, 0);
        previous = db;
    }
}

TEST(InputAttenuator, GainIsTheDecibelsAsAmplitude)
{
    EXPECT_DOUBLE_EQ(InputAttenuatorGain(1.0), 1.0);
    EXPECT_NEAR(InputAttenuatorGain(0.0), std::pow(10.0, -12.0 / 20.0), 1e-12);
    EXPECT_NEAR(InputAttenuatorGain(0.5), std::pow(10.0, -4.0 / 20.0), 1e-12);
}
} // namespace
