#include "common/FilterMeasure.h"
#include "fx/DCRemover.h"
#include "fx/FxRig.h"
#include "fx/PhaseFilter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <tuple>

using namespace filtertest;
using fxrig::SetParams;

namespace
{
using cd = std::complex<double>;

// N first-order all-passes of coefficient a = 1 - f^4 with feedback b * 0.8 round the chain and
// the output scaled by 1 - 0.52 b.
cd ExpectedPhase(double f, int stages, double b, double hz)
{
    const double a = 1.0 - std::pow(f, 4.0);
    const cd z1 = std::polar(1.0, -2.0 * M_PI * hz / gSampleRate);
    const cd h = std::pow((a - z1) / (1.0 - a * z1), stages);
    return h / (1.0 - 0.8 * b * z1 * h) * (1.0 - 0.8 * b * 0.65);
}
} // namespace

// The stage knob gives min(truncate(4x + 3), 7) stages: 3, 5 and 7 for 0, 0.5 and 1. The response
// is that of the all-pass chain with a = 1 - f^4, with and without feedback. Spread moves the two
// channels apart: 2x - 1 added to the left's frequency, taken off the right's.
TEST(PhaseFilter, StagesCoefficientFeedbackAndSpread)
{
    // {right, frequency, feedback, spread, stage knobs, the channel's frequency after the spread,
    // stages}
    const std::tuple<bool, double, double, double, double, double, int> rows[] = {
        {false, 0.45, 0.0, 0.5, 1.0, 0.45, 7}, {false, 0.45, 0.0, 0.5, 0.0, 0.45, 3},
        {false, 0.45, 0.0, 0.5, 0.5, 0.45, 5}, {false, 0.45, 0.5, 0.5, 0.5, 0.45, 5},
        {false, 0.3, 0.0, 0.6, 0.0, 0.5, 3},   {true, 0.3, 0.0, 0.6, 0.0, 0.1, 3},
    };
    for (const auto& [right, p1, p2, p3, p4, f, stages] : rows)
    {
        PhaseFilter pf(right);
        SetParams(pf, {p1, p2, p3, p4});
        pf.Reset();
        EXPECT_EQ(int(pf.mStages), stages);
        for (double hz : {100.0, 700.0, 3000.0, 12000.0})
        {
            const Tone t = MeasureTone(pf, hz, 1.0, 0.3);
            const cd want = ExpectedPhase(f, stages, p2, hz);
            EXPECT_NEAR(std::abs(std::polar(t.gain, t.phase) - want), 0.0, 2e-3)
                << (right ? "right" : "left") << " stages " << stages << " feedback " << p2 << " at " << hz
                << " Hz";
        }
    }
}

// y = 0.9999 y[-1] + x - x[-1]: a step passes at once, then decays with a time constant of 1 / (1 -
// 0.9999) = 10,000 samples; Reset forgets the past.
TEST(DCRemover, ConstantSettlesToZero)
{
    DCRemover dc;
    double block[gBlockLen];
    std::vector<double> y;
    for (int b = 0; b < 2000; ++b)
    {
        std::fill(block, block + gBlockLen, 0.5);
        dc.RemoveDC(block);
        y.insert(y.end(), block, block + gBlockLen);
    }
    EXPECT_DOUBLE_EQ(y[0], 0.5);
    EXPECT_NEAR(y[10000] / 0.5, std::exp(-1.0), 1e-3);
    dc.Reset();
    std::fill(block, block + gBlockLen, 0.5);
    dc.RemoveDC(block);
    EXPECT_DOUBLE_EQ(block[0], 0.5);
}
