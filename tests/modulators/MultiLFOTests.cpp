#include "dsp/TimeBase.h"
#include "modulators/MultiLFO.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace
{

// Wobble frequency the step law aims at: the attractor turns about once per 2 pi units of time
// and advances 2.9 x freq / 32 units a second.
double NominalWobbleHz(double percent)
{
    return 2.9 * MultiLFO::RateFromPercent(percent) / gBlockLen / (2.0 * std::numbers::pi);
}

// Sign changes of L+ per second over the given span, halved: cycles per second.
double MeasureWobbleHz(double percent, double seconds)
{
    MultiLFO lfo;
    lfo.SetModRate(percent);
    lfo.Reset();
    const long ticks = static_cast<long>(seconds * gSampleRate / gBlockLen);
    long crossings = 0;
    bool positive = false;
    for (long i = 0; i < ticks; ++i)
    {
        lfo.Tick();
        const bool now = lfo.Out(MultiLFO::kLPlus) >= 0.0;
        if (i > 0 && now != positive) ++crossings;
        positive = now;
    }
    return crossings / 2.0 / seconds;
}
} // namespace

// An hour of blocks at 44.1 kHz for every rate: the integration must not run away. L+ stays inside
// -1 .. 1; R+ follows y, whose attractor reaches about -16.5, so it dips to about -1.17 by design.
// From 10 % on, an hour covers the whole attractor: a wide swing, not a stuck value. The negative
// pair mirrors the positive one.
TEST(MultiLFO, RoesslerStaysBoundedForEveryRateOverAnHour)
{
    SetTimeBase(44100.0);
    const long ticks = static_cast<long>(3600.0 * 44100.0 / gBlockLen);
    for (int percent = 0; percent <= 100; percent += 10)
    {
        SCOPED_TRACE(percent);
        MultiLFO lfo;
        lfo.SetModRate(percent);
        lfo.Reset();
        double lo[2] = {0.0, 0.0}, hi[2] = {0.0, 0.0};
        for (long i = 0; i < ticks; ++i)
        {
            lfo.Tick();
            for (int k = 0; k < 2; ++k)
                lo[k] = std::min(lo[k], lfo.Out(k)), hi[k] = std::max(hi[k], lfo.Out(k));
        }
        const bool swings = percent >= 10;
        EXPECT_TRUE(std::isfinite(lfo.Out(0)) && std::isfinite(lfo.Out(1)));
        EXPECT_TRUE(lo[0] > -1.0 && hi[0] < 1.0 && lo[1] > -1.2 && hi[1] < 1.0)
            << lo[0] << " " << hi[0] << " " << lo[1] << " " << hi[1];
        EXPECT_TRUE(!swings || (lo[0] < -0.7 && hi[0] > 0.85 && lo[1] < -1.05 && hi[1] > 0.85))
            << lo[0] << " " << hi[0] << " " << lo[1] << " " << hi[1];
        EXPECT_EQ(lfo.Out(MultiLFO::kLMinus), -lfo.Out(MultiLFO::kLPlus));
        EXPECT_EQ(lfo.Out(MultiLFO::kRMinus), -lfo.Out(MultiLFO::kRPlus));
    }
}

// The wobble follows the step law at both ends of the knob, and the default rate is about 1 Hz,
// alike at every sample rate.
TEST(MultiLFO, WobbleRateFollowsTheRateKnob)
{
    for (double rate : {44100.0, 96000.0})
        for (double percent : {5.0, 30.0, 100.0})
        {
            SetTimeBase(rate);
            const double hz = MeasureWobbleHz(percent, 120.0);
            EXPECT_GT(hz, 0.97 * NominalWobbleHz(percent)) << rate << " " << percent;
            EXPECT_LT(hz, 1.10 * NominalWobbleHz(percent)) << rate << " " << percent;
            EXPECT_TRUE(percent != 30.0 || std::fabs(hz - 1.0) < 0.05) << hz;
        }
    SetTimeBase(44100.0);
}

// With a phase step of 0.25 the phase runs 0.25, 0.5, 0.75, 1, then wraps to -1 on its own tick:
// nine ticks a cycle. Expected values are those of each wave at these phases.
TEST(MultiLFO, PlainShapesFollowThePhase)
{
    SetTimeBase(44100.0);
    constexpr double r = 0.70710678118654752;
    constexpr int kTicks = 18;
    const std::array<std::array<double, kTicks>, 5> expected{{
        {r, 1, r, 0, 0, -r, -1, -r, 0, r, 1, r, 0, 0, -r, -1, -r, 0},
        {0.25, 0.5, 0.75, 1, -1, -0.75, -0.5, -0.25, 0, 0.25, 0.5, 0.75, 1, -1, -0.75, -0.5, -0.25, 0},
        {-0.25, -0.5, -0.75, -1, 1, 0.75, 0.5, 0.25, 0, -0.25, -0.5, -0.75, -1, 1, 0.75, 0.5, 0.25, 0},
        {1, 1, 1, 1, -1, -1, -1, -1, 1, 1, 1, 1, 1, -1, -1, -1, -1, 1},
        {0.5, 0, -0.5, -1, -1, -0.5, 0, 0.5, 1, 0.5, 0, -0.5, -1, -1, -0.5, 0, 0.5, 1},
    }};
    for (int shape = MultiLFO::kSine; shape <= MultiLFO::kTriangle; ++shape)
    {
        SCOPED_TRACE(shape);
        MultiLFO lfo;
        lfo.SetShape(shape);
        lfo.SetRate(0.25 * 44100.0);
        lfo.Reset();
        for (int i = 0; i < kTicks; ++i)
        {
            lfo.Tick();
            EXPECT_NEAR(lfo.Out(MultiLFO::kLPlus), expected[shape - 1][i], 1e-12) << "tick " << i;
            EXPECT_EQ(lfo.Out(MultiLFO::kRPlus), lfo.Out(MultiLFO::kLPlus));
            // The plain waves leave the negative pair alone.
            EXPECT_EQ(lfo.Out(MultiLFO::kLMinus), 0.0);
            EXPECT_EQ(lfo.Out(MultiLFO::kRMinus), 0.0);
        }
    }
}
