// LOFI II: drive gain, bit-crush levels and sample-and-hold rate, by their effect on the signal.

#include "dsp/TimeBase.h"
#include "fx/FxRig.h"
#include "fx/Lofi.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <set>
#include <vector>

namespace
{
using fxrig::RunBlocks;

struct LofiTest : ::testing::Test
{
    void SetUp() override { SetTimeBase(48000.0); }
    fxrig::RateGuard guard;
};

// A LOFI II with drive, noise, downsample and crush knobs, cleared.
std::unique_ptr<Lofi> Make(double drive, double down, double crush)
{
    auto l = std::make_unique<Lofi>(false);
    fxrig::SetParams(*l, {drive, 0.0, down, crush});
    l->Reset();
    return l;
}
} // namespace

TEST_F(LofiTest, DriveGainIsSevenTimesDrivePlusOneAndZeroKnobsPassTheSoftClip)
{
    for (double d : {0.0, 0.5, 1.0})
        EXPECT_NEAR(filtertest::MeasureTone(*Make(d, 0.0, 0.0), 1000.0, 1e-4, 0.1).gain, 7.0 * d + 1.0,
                    1e-3 * (7.0 * d + 1.0));
    // Full drive into a loud signal stays inside the soft clip's bounds.
    for (double v : RunBlocks(*Make(1.0, 0.0, 0.0), fxrig::Sine(76.4, 3200, 2.0)))
        ASSERT_LE(std::fabs(v), 1.0);
    // At 0 every sample is taken at once and nothing is quantised, not even a signal far below
    // 2^-24: the output is the soft clip, sample for sample.
    for (const double amp : {0.3, 1e-9})
    {
        const std::vector<double> x = fxrig::Sine(382.0, 3200, amp, 1.0);
        const std::vector<double> y = RunBlocks(*Make(0.0, 0.0, 0.0), x);
        for (size_t i = 0; i < x.size(); ++i)
            ASSERT_NEAR(y[i], std::tanh(x[i]), 1e-12 * amp) << amp;
    }
}

TEST_F(LofiTest, BitCrushQuantisesToItsLevels)
{
    EXPECT_EQ(Lofi::CrushLevels(0.0), 16777216.0);
    EXPECT_DOUBLE_EQ(Lofi::CrushLevels(1.0), 4.0);
    // (1 - x^0.2) * 22 + 2 = 4: 16 levels. A ramp soft-clipped to +-0.46 lands on k / 16, k = -7..7.
    std::vector<double> ramp(3200);
    for (size_t i = 0; i < ramp.size(); ++i)
        ramp[i] = -0.5 + double(i) / double(ramp.size());
    std::set<double> seen;
    for (double v : RunBlocks(*Make(0.0, 0.0, std::pow(10.0 / 11.0, 5.0)), ramp))
    {
        ASSERT_NEAR(v * 16.0, std::round(v * 16.0), 1e-9);
        seen.insert(v);
    }
    EXPECT_EQ(seen.size(), 15u);
}
