// Shaping effects on a sine: which harmonics each curve makes, and the level laws of the amounts.

#include "common/SineFit.h"
#include "dsp/TimeBase.h"
#include "fx/FxRig.h"
#include "fx/Shaper.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <vector>

namespace
{
constexpr double kRate = 48000.0;
constexpr double kTone = 750.0;  // 64 samples per cycle
constexpr size_t kWindow = 4800; // 75 whole cycles
constexpr size_t kSettle = 4800;

struct Spectrum
{
    double dc;
    double h[6]; // amplitude of harmonic k (h[0] unused)
};

// Runs a sine of amplitude amp through the module and reads DC and harmonics 1..5 over a window of
// whole cycles after the filter and smoothers have settled (there the harmonics are orthogonal, so
// each fit is exact).
Spectrum Analyse(Shaper& s, double amp)
{
    const std::vector<double> y = fxrig::RunBlocks(s, fxrig::Sine(kTone, kSettle + kWindow, amp));
    Spectrum sp{};
    for (size_t n = kSettle; n < y.size(); ++n)
        sp.dc += y[n] / kWindow;
    for (int k = 1; k <= 5; ++k)
        sp.h[k] = testfit::FitSine(y, 2.0 * M_PI * k * kTone / kRate, kSettle, kWindow).amplitude;
    return sp;
}

struct ShaperTest : ::testing::Test
{
    void SetUp() override { SetTimeBase(kRate); }
    filtertest::RateGuard guard;
};

// A WAVE SHAPE with the peak filter flat (GAIN 0) and no spread, on the curve of list entry mode.
Spectrum WaveShape(int mode, double amp)
{
    Shaper s(6, false);
    fxrig::SetParams(s, {double(mode), 0.0, 0.5, 0.0, 0.5});
    s.Reset();
    return Analyse(s, amp);
}

// A slot type with its low-pass open, no resonance and no spread.
Shaper& Open(Shaper& s, double amount)
{
    fxrig::SetParams(s, {amount, 1.0, 0.0, 0.5});
    s.Reset();
    return s;
}
} // namespace

TEST_F(ShaperTest, WaveShapeModesHaveTheHarmonicsOfTheirSymmetry)
{
    // List order: SATURATE, TUBE, RECT, SIN1, SIN2, SIN3, ASYM1, ASYM2.
    const bool symmetric[8] = {true, false, false, true, true, true, false, false};
    for (int mode = 0; mode < 8; ++mode)
    {
        SCOPED_TRACE(kShapeModeLabels[size_t(mode)]);
        const Spectrum sp = WaveShape(mode, 0.8);
        if (mode == 2)
        {
            // Full-wave rectified sine: no fundamental, second harmonic 4/(3 pi) of the peak.
            EXPECT_LT(sp.h[1], 1e-9);
            EXPECT_NEAR(sp.h[2], 0.8 * 4.0 / (3.0 * M_PI), 2e-3);
            EXPECT_NEAR(sp.dc, 0.8 * 2.0 / M_PI, 2e-3);
            continue;
        }
        EXPECT_GT(sp.h[3], 1e-3 * sp.h[1]); // the curve bends
        if (symmetric[mode])
        {
            EXPECT_LT(sp.h[2], 1e-9 * sp.h[1]);
            EXPECT_LT(sp.h[4], 1e-9 * sp.h[1]);
            EXPECT_LT(std::fabs(sp.dc), 1e-9);
        }
        else
        {
            EXPECT_GT(sp.h[2], 0.01 * sp.h[1]);
        }
    }
    // More sine partials move the curve towards a square: the third harmonic grows SIN1 -> SIN3.
    EXPECT_LT(WaveShape(3, 0.3).h[3], WaveShape(5, 0.3).h[3]);
}

TEST_F(ShaperTest, SlotShapersFollowTheirLaws)
{
    // Half-sample averaging of the antialiased tanh at small level, and the open low-pass.
    const double avg = std::cos(M_PI * kTone / kRate);
    {
        // SATURATE: small-signal gain (16 a + 1) / (3 a + 1), odd harmonics only when driven.
        Shaper s(14, false);
        const Spectrum small = Analyse(Open(s, 1.0), 1e-3);
        EXPECT_NEAR(small.h[1] / 1e-3, 17.0 / 4.0 * avg, 0.01);
        const Spectrum loud = Analyse(s, 0.5);
        EXPECT_GT(loud.h[3], 0.05 * loud.h[1]);
        EXPECT_LT(loud.h[2], 1e-9 * loud.h[1]);
    }
    {
        // RECTIFY doubles the frequency; the amount scales it by 2 a - 1 (a = 0.75: half).
        Shaper full(16, false), half(16, false);
        const Spectrum f = Analyse(Open(full, 1.0), 0.5), h = Analyse(Open(half, 0.75), 0.5);
        EXPECT_LT(f.h[1], 1e-6);
        EXPECT_NEAR(f.h[2], 0.5 * 4.0 / (3.0 * M_PI), 2e-3);
        EXPECT_NEAR(h.h[2] / f.h[2], 0.5, 1e-3);
    }
    // DESTROY folds (1 + min(15 a, 3)) x, NOISE (1 + min(7.5 a^2, 3)) x at half output: small-signal
    // gains, and odd partials only once the fold is reached.
    for (const auto& [type, amount, gain] :
         {std::tuple{18, 0.1, 2.5}, {18, 1.0, 4.0}, {20, 0.5, 0.5 * 2.875}, {20, 1.0, 2.0}})
    {
        SCOPED_TRACE(type);
        Shaper s(type, false);
        EXPECT_NEAR(Analyse(Open(s, amount), 0.01).h[1] / 0.01, gain, 0.01);
        const Spectrum loud = Analyse(s, 0.8);
        EXPECT_GT(loud.h[3], 0.05 * loud.h[1]);
        EXPECT_LT(loud.h[2], 1e-9 * loud.h[1]);
    }
}

TEST_F(ShaperTest, LofiOneHoldsAtItsStepAndFiltersByList)
{
    // Step 1 - a^0.125 * 0.99 = 0.25: the held value changes every fourth sample.
    Shaper s(24, false);
    Open(s, std::pow(0.75 / 0.99, 8.0));
    const std::vector<double> y = fxrig::RunBlocks(s, fxrig::Sine(382.0, 3200, 0.1));
    int changes = 0;
    for (size_t i = 1; i < y.size(); ++i)
        changes += y[i] != y[i - 1];
    EXPECT_NEAR(changes, int(y.size() / 4), 2);

    // FILTER MODE of the FB variant: LP passes a tone a decade below the corner, HP takes it
    // down by about 40 dB (a section's (f/fc)^2).
    auto gainAt100 = [](double mode)
    {
        Shaper f(15, false);
        fxrig::SetParams(f, {0.0, std::log(1000.0 / 50.0) / std::log(400.0), mode, 0.5});
        f.Reset();
        return filtertest::MeasureTone(f, 100.0, 0.01, 0.3).dB();
    };
    EXPECT_NEAR(gainAt100(0.0), 0.0, 0.2);
    EXPECT_NEAR(gainAt100(1.0), -40.0, 1.5);
}
