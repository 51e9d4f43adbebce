// LOFI II: drive gain, bit-crush levels and sample-and-hold rate, by their effect on the signal.

#include "common/FilterMeasure.h"
#include "dsp/TimeBase.h"
#include "fx/Lofi.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <vector>

namespace
{
struct LofiTest : ::testing::Test
{
    void SetUp() override { SetTimeBase(48000.0); }
    filtertest::RateGuard guard;
};

std::vector<double> Sine(size_t n, double amp, double w, double phase = 0.0)
{
    std::vector<double> x(n);
    for (size_t i = 0; i < n; ++i)
        x[i] = amp * std::sin(w * double(i) + phase);
    return x;
}

void Configure(Lofi& l, double drive, double noise, double down, double crush)
{
    l.SetParam(0, drive);
    l.SetParam(1, noise);
    l.SetParam(2, down);
    l.SetParam(3, crush);
    l.Reset();
}
} // namespace

TEST_F(LofiTest, DriveGainIsSevenTimesDrivePlusOne)
{
    for (double d : {0.0, 0.5, 1.0})
    {
        Lofi l(false);
        Configure(l, d, 0.0, 0.0, 0.0);
        EXPECT_NEAR(filtertest::MeasureTone(l, 1000.0, 1e-4, 0.1).gain, 7.0 * d + 1.0,
                    1e-3 * (7.0 * d + 1.0));
    }
    // Full drive into a loud signal stays inside the soft clip's bounds.
    Lofi l(false);
    Configure(l, 1.0, 0.0, 0.0, 0.0);
    for (double v : filtertest::RunBlocks(l, Sine(3200, 2.0, 0.01)))
        ASSERT_LE(std::fabs(v), 1.0);
}

TEST_F(LofiTest, BitCrushQuantisesToItsLevels)
{
    EXPECT_EQ(Lofi::CrushLevels(0.0), 16777216.0);
    EXPECT_DOUBLE_EQ(Lofi::CrushLevels(1.0), 4.0);

    // At 0 nothing is quantised: a signal far below 2^-24 comes through as the soft clip of itself.
    const std::vector<double> tiny = Sine(640, 1e-9, 0.1);
    Lofi clean(false);
    Configure(clean, 0.0, 0.0, 0.0, 0.0);
    const std::vector<double> y = filtertest::RunBlocks(clean, tiny);
    for (size_t i = 0; i < tiny.size(); ++i)
        ASSERT_NEAR(y[i], std::tanh(tiny[i]), 1e-15);

    // (1 - x^0.2) * 22 + 2 = 4: 16 levels. A ramp soft-clipped to +-0.46 lands on k / 16, k = -7..7.
    Lofi crushed(false);
    Configure(crushed, 0.0, 0.0, 0.0, std::pow(10.0 / 11.0, 5.0));
    std::vector<double> ramp(3200);
    for (size_t i = 0; i < ramp.size(); ++i)
        ramp[i] = -0.5 + double(i) / double(ramp.size());
    std::set<double> seen;
    for (double v : filtertest::RunBlocks(crushed, ramp))
    {
        ASSERT_NEAR(v * 16.0, std::round(v * 16.0), 1e-9);
        seen.insert(v);
    }
    EXPECT_EQ(seen.size(), 15u);
}

TEST_F(LofiTest, DownsampleHoldsAtItsRate)
{
    const std::vector<double> x = Sine(3200, 0.3, 0.05, 1.0);
    // At 0 every sample is taken at once: the output is the soft clip, sample for sample.
    Lofi none(false);
    Configure(none, 0.0, 0.0, 0.0, 0.0);
    const std::vector<double> y = filtertest::RunBlocks(none, x);
    for (size_t i = 0; i < x.size(); ++i)
        ASSERT_NEAR(y[i], std::tanh(x[i]), 1e-12);

    // 1 - x^0.125 * 0.99 = 0.25: a new value every fourth sample.
    Lofi held(false);
    Configure(held, 0.0, 0.0, std::pow(0.75 / 0.99, 8.0), 0.0);
    EXPECT_NEAR(Lofi::HoldStep(std::pow(0.75 / 0.99, 8.0)), 0.25, 1e-12);
    const std::vector<double> h = filtertest::RunBlocks(held, x);
    int changes = 0;
    for (size_t i = 1; i < h.size(); ++i)
        changes += h[i] != h[i - 1];
    EXPECT_NEAR(changes, int(x.size() / 4), 2);
}
