#include "FilterMeasure.h"

#include "dsp/FreqMapping.h"
#include "dsp/QLMSVF.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <memory>
#include <vector>

using namespace filtertest;

namespace
{
using cd = std::complex<double>;

// Trapezoidal integrators with g = tan(pi fc / rate) realise the analogue state-variable filter
// at the prewarped frequency W; damping 1 - k gives the quality 1 / (1 - k).
cd Den(double W, double q)
{
    return cd(1.0 - W * W, W / q);
}
cd Low(double W, double q)
{
    return 1.0 / Den(W, q);
}
cd Band(double W, double q)
{
    return cd(0.0, W) / Den(W, q);
}
cd High(double W, double q)
{
    return -W * W / Den(W, q);
}

// Quality of the saturating pass at small signals: k = (1.1 - 0.1 f^3) * resonance.
double SaturatingQ(double f, double res)
{
    return 1.0 / (1.0 - (1.1 - 0.1 * f * f * f) * res);
}

std::unique_ptr<QLMSVF> Make(int type, double freq, double res)
{
    auto f = std::make_unique<QLMSVF>(false, type);
    f->SetParam(0, freq);
    f->SetParam(1, res);
    SettleControls(*f, 0.3);
    return f;
}

// Small signals keep the saturating stage in its linear range.
constexpr double kSmall = 1e-4;

void ExpectTone(QLMSVF& f, double hz, cd expected, const char* what)
{
    const Tone t = MeasureTone(f, hz, kSmall);
    EXPECT_NEAR(t.gain, std::abs(expected), 2e-3 * std::abs(expected) + 1e-5)
        << what << " type " << int(f.mType) << " at " << hz << " Hz, rate " << double(gSampleRate);
    if (std::abs(expected) > 1e-2)
    {
        EXPECT_NEAR(WrapPhase(t.phase - std::arg(expected)), 0.0, 0.01)
            << what << " phase, type " << int(f.mType) << " at " << hz << " Hz";
    }
}
} // namespace

TEST(QLMSVF, OutputsAtAndAroundTheCorner)
{
    RateGuard guard;
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        for (double x : {0.2, 0.5, 0.8})
        {
            const double fc = MapFreqHz(float(x));
            for (double hz : {fc / 4.0, fc, fc * 3.0})
            {
                const double W = Warp(hz, fc);
                // Linear types give the low output, whatever the resonance.
                for (int type : {2, 5, 8})
                {
                    auto f = Make(type, x, 0.7);
                    ExpectTone(*f, hz, Low(W, 1.0), "linear low");
                }
                auto high = Make(4, x, 0.0);
                ExpectTone(*high, hz, High(W, 1.0), "high");
                auto band = Make(6, x, 0.0);
                ExpectTone(*band, hz, Band(W, 1.0), "band");
                auto low = Make(1, x, 0.0);
                ExpectTone(*low, hz, Low(W, 1.0), "low");
                // Input plus band: twice the input at the corner.
                auto plus = Make(10, x, 0.0);
                ExpectTone(*plus, hz, 1.0 + Band(W, 1.0), "input + band");
            }
        }
    }
}

TEST(QLMSVF, TwoPassTypesFilterTwice)
{
    RateGuard guard;
    SetTimeBase(48000.0);
    const double x = 0.5, fc = MapFreqHz(float(x)), res = 0.5, q = SaturatingQ(x, res);
    for (double hz : {fc / 3.0, fc, fc * 2.0})
    {
        const double W = Warp(hz, fc);
        auto low = Make(0, x, res);
        ExpectTone(*low, hz, Low(W, q) * Low(W, 1.0), "two-pass low");
        auto high = Make(3, x, res);
        ExpectTone(*high, hz, High(W, q) * High(W, 1.0), "two-pass high");
        auto band = Make(7, x, res);
        ExpectTone(*band, hz, Band(W, q) * Band(W, 1.0), "two-pass band");
        auto notch = Make(9, x, res);
        ExpectTone(*notch, hz, (Low(W, q) + High(W, q)) * (Low(W, 1.0) + High(W, 1.0)),
                   "two-pass low + high");
    }
    // Low plus high cancels at the corner.
    auto notch = Make(9, x, 0.0);
    EXPECT_LT(MeasureTone(*notch, fc, kSmall).gain, 1e-3);
}

TEST(QLMSVF, ResonanceRaisesThePeak)
{
    RateGuard guard;
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        for (double x : {0.3, 0.6, 0.95})
        {
            const double fc = MapFreqHz(float(x));
            double last = 0.0;
            for (double res : {0.0, 0.4, 0.8})
            {
                const double q = SaturatingQ(x, res);
                auto f = Make(1, x, res);
                const double peak = MeasureTone(*f, fc, kSmall).gain;
                EXPECT_NEAR(peak, q, 3e-3 * q) << "x " << x << " res " << res;
                EXPECT_GT(peak, last * 1.5);
                last = peak;
                auto high = Make(4, x, res);
                EXPECT_NEAR(MeasureTone(*high, fc, kSmall).gain, q, 3e-3 * q);
            }
        }
    }
}

TEST(QLMSVF, SaturatingPassStaysBoundedAtPlus20dB)
{
    // At full resonance the loop of the saturating pass has negative damping: it would grow
    // without bound if the band state were not saturated.
    RateGuard guard;
    SetTimeBase(44100.0);
    const double x = 0.5, fc = MapFreqHz(float(x));
    EXPECT_GT((1.1 - 0.1 * x * x * x) * 1.0, 1.0);
    for (int type : {1, 4, 6, 0, 10})
        for (double hz : {fc / 4.0, fc, fc * 2.0})
        {
            auto f = Make(type, x, 1.0);
            const int total = 2 * 44100 / gBlockLen * gBlockLen;
            std::vector<double> in(total);
            for (int n = 0; n < total; ++n)
                in[n] = 10.0 * std::sin(2.0 * M_PI * hz / 44100.0 * n);
            const std::vector<double> y = RunBlocks(*f, in);
            double firstHalf = 0.0, secondHalf = 0.0;
            for (int n = 0; n < total; ++n)
            {
                ASSERT_TRUE(std::isfinite(y[n])) << n;
                (n < total / 2 ? firstHalf : secondHalf) =
                    std::max(n < total / 2 ? firstHalf : secondHalf, std::fabs(y[n]));
            }
            // The band state is held near 1 by the saturation: the output stays within the input's order.
            EXPECT_LT(secondHalf, 15.0) << type << " at " << hz;
            EXPECT_LT(secondHalf, 1.05 * firstHalf) << type << " at " << hz;
            EXPECT_GT(secondHalf, 0.1) << type << " at " << hz;
        }
}

TEST(QLMSVF, FullResonanceOscillatesWithinBounds)
{
    // A kick makes the undamped loop ring on by itself; the saturation holds the level.
    auto f = Make(1, 0.5, 1.0);
    std::vector<double> in(44100 / gBlockLen * gBlockLen, 0.0);
    in[0] = 1.0;
    const std::vector<double> y = RunBlocks(*f, in);
    double late = 0.0;
    for (size_t n = y.size() / 2; n < y.size(); ++n)
        late = std::max(late, std::fabs(y[n]));
    EXPECT_GT(late, 0.01);
    EXPECT_LT(late, 2.0);
    // Just below the edge the same kick dies away.
    auto damped = Make(1, 0.5, 0.85);
    const std::vector<double> z = RunBlocks(*damped, in);
    EXPECT_LT(std::fabs(z.back()), 1e-6);
}

TEST(QLMSVF, ResetClearsTheStates)
{
    for (int type : {0, 2, 6, 9})
    {
        auto f = Make(type, 0.4, 0.6);
        std::vector<double> tone(2048), zeros(256, 0.0);
        for (size_t n = 0; n < tone.size(); ++n)
            tone[n] = std::sin(0.07 * double(n));
        RunBlocks(*f, tone);
        double ring = 0.0;
        auto copy = Make(type, 0.4, 0.6);
        RunBlocks(*copy, tone);
        for (double v : RunBlocks(*copy, zeros))
            ring = std::max(ring, std::fabs(v));
        EXPECT_GT(ring, 1e-3) << type;
        f->Reset();
        for (double v : RunBlocks(*f, zeros))
            ASSERT_EQ(v, 0.0) << type;
    }
}
