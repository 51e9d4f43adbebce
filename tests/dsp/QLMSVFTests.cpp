#include "common/FilterMeasure.h"
#include "common/Measure.h"
#include "dsp/FreqMapping.h"
#include "dsp/QLMSVF.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <memory>
#include <vector>

// The state-variable filter: trapezoidal integrators with g = tan(pi fc / rate) realise the
// analogue filter at the prewarped W; damping 1 - k gives the quality 1 / (1 - k).
using namespace filtertest;

namespace
{
using cd = std::complex<double>;

const auto Low = [](double W, double q) { return 1.0 / cd(1.0 - W * W, W / q); };
const auto Band = [](double W, double q) { return cd(0.0, W) * Low(W, q); };
const auto High = [](double W, double q) { return -W * W * Low(W, q); };
// Quality of the saturating pass at small signals: k = (1.1 - 0.1 f^3) * resonance.
const auto SaturatingQ = [](double f, double res) { return 1.0 / (1.0 - (1.1 - 0.1 * f * f * f) * res); };

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
} // namespace

TEST(QLMSVF, OutputsFollowTheirPrototypes)
{
    // One row per type: resonance, and the response as a function of W and the saturating Q.
    struct Row
    {
        int type;
        double res;
        std::function<cd(double W, double q)> h;
    };
    const std::vector<Row> rows = {
        {2, 0.7, [](double W, double) { return Low(W, 1.0); }}, // linear types ignore the resonance
        {5, 0.7, [](double W, double) { return Low(W, 1.0); }},
        {8, 0.7, [](double W, double) { return Low(W, 1.0); }},
        {1, 0.0, [](double W, double) { return Low(W, 1.0); }},
        {4, 0.0, [](double W, double) { return High(W, 1.0); }},
        {6, 0.0, [](double W, double) { return Band(W, 1.0); }},
        {10, 0.0, [](double W, double) { return 1.0 + Band(W, 1.0); }},
        {1, 0.8, [](double W, double q) { return Low(W, q); }}, // the saturating pass's Q
        {4, 0.4, [](double W, double q) { return High(W, q); }},
        // Two-pass types: the saturating pass, then a linear one.
        {0, 0.5, [](double W, double q) { return Low(W, q) * Low(W, 1.0); }},
        {3, 0.5, [](double W, double q) { return High(W, q) * High(W, 1.0); }},
        {7, 0.5, [](double W, double q) { return Band(W, q) * Band(W, 1.0); }},
        {9, 0.5, [](double W, double q) { return (Low(W, q) + High(W, q)) * (Low(W, 1.0) + High(W, 1.0)); }},
    };
    RateGuard guard;
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        for (double x : {0.2, 0.5, 0.95})
        {
            const double fc = MapFreqHz(float(x));
            for (const Row& r : rows)
                for (double hz : {fc / 4.0, fc, fc * 2.0})
                {
                    if (hz > 0.45 * rate) continue;
                    const cd expected = r.h(Warp(hz, fc), SaturatingQ(x, r.res));
                    auto f = Make(r.type, x, r.res);
                    const Tone t = MeasureTone(*f, hz, kSmall);
                    EXPECT_NEAR(t.gain, std::abs(expected), 3e-3 * std::abs(expected) + 1e-5)
                        << "type " << r.type << " at " << hz << " Hz, rate " << rate;
                    const double phaseError =
                        std::abs(expected) > 1e-2 ? WrapPhase(t.phase - std::arg(expected)) : 0.0;
                    EXPECT_NEAR(phaseError, 0.0, 0.01) << "type " << r.type;
                }
        }
    }
}

TEST(QLMSVF, FullResonanceIsHeldByTheSaturationAndResetClearsIt)
{
    // At full resonance the saturating pass has negative damping: a loud sine must not grow, a kick
    // rings on by itself within bounds, and just below the edge the same kick dies away. Reset
    // silences the ringing at once.
    const double fc = MapFreqHz(0.5f);
    const int total = 2 * 44100 / gBlockLen * gBlockLen;
    for (int type : {1, 4, 6, 0, 10})
        for (double hz : {fc / 4.0, fc, fc * 2.0})
        {
            auto f = Make(type, 0.5, 1.0);
            std::vector<double> in(total);
            for (int n = 0; n < total; ++n)
                in[n] = 10.0 * std::sin(2.0 * M_PI * hz / 44100.0 * n);
            const std::vector<double> y = RunBlocks(*f, in);
            const double first = testmeasure::Peak(y, 0, total / 2), second = testmeasure::Peak(y, total / 2);
            EXPECT_TRUE(std::isfinite(testmeasure::Rms(y))) << type << " at " << hz;
            EXPECT_LT(second, std::min(15.0, 1.05 * first)) << type << " at " << hz;
            EXPECT_GT(second, 0.1) << type << " at " << hz;
            f->Reset();
            EXPECT_EQ(testmeasure::Rms(RunBlocks(*f, std::vector<double>(256, 0.0))), 0.0) << type;
        }
    std::vector<double> kick(total / 2, 0.0);
    kick[0] = 1.0;
    auto ringing = Make(1, 0.5, 1.0), damped = Make(1, 0.5, 0.85);
    const double late = testmeasure::Peak(RunBlocks(*ringing, kick), kick.size() / 2);
    EXPECT_TRUE(late > 0.01 && late < 2.0) << late;
    EXPECT_LT(std::fabs(RunBlocks(*damped, kick).back()), 1e-6);
}
