#include "common/FilterMeasure.h"
#include "fx/DCRemover.h"
#include "fx/EQ_M.h"
#include "fx/FxRig.h"
#include "fx/PhaseFilter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

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

double EqDb(DSPShell& eq, double hz)
{
    return MeasureTone(eq, hz, 1.0, 0.4).dB();
}

double ShelfAmp(double dB)
{
    return std::pow(10.0, dB / 40.0);
}
} // namespace

// The stage knob gives min(truncate(4x + 3), 7) stages: 3, 5 and 7 for 0, 0.5 and 1. The response
// is that of the all-pass chain with a = 1 - f^4, with and without feedback. Spread moves the two
// channels apart: 2x - 1 added to the left's frequency, taken off the right's.
TEST(PhaseFilter, StagesCoefficientFeedbackAndSpread)
{
    struct Row
    {
        bool right;
        double p1, p2, p3, p4; // frequency, feedback, spread, stages
        double f;              // the channel's frequency after the spread
        int stages;
    };
    const Row rows[] = {
        {false, 0.45, 0.0, 0.5, 1.0, 0.45, 7}, {false, 0.45, 0.0, 0.5, 0.0, 0.45, 3},
        {false, 0.45, 0.0, 0.5, 0.5, 0.45, 5}, {false, 0.45, 0.5, 0.5, 0.5, 0.45, 5},
        {false, 0.3, 0.0, 0.6, 0.0, 0.5, 3},   {true, 0.3, 0.0, 0.6, 0.0, 0.1, 3},
    };
    for (const Row& r : rows)
    {
        PhaseFilter pf(r.right);
        SetParams(pf, {r.p1, r.p2, r.p3, r.p4});
        pf.Reset();
        EXPECT_EQ(int(pf.mStages), r.stages);
        for (double hz : {100.0, 700.0, 3000.0, 12000.0})
        {
            const Tone t = MeasureTone(pf, hz, 1.0, 0.3);
            const cd want = ExpectedPhase(r.f, r.stages, r.p2, hz);
            EXPECT_NEAR(std::abs(std::polar(t.gain, t.phase) - want), 0.0, 2e-3)
                << (r.right ? "right" : "left") << " stages " << r.stages << " feedback " << r.p2 << " at "
                << hz << " Hz";
        }
    }
}

// Each layout with its four knobs (gain knobs as amplitudes 10^(dB / 40) for shelves, as 0..1
// fractions of +-18 dB for peaks): a shelf of D dB has D at its far end and D / 2 at its corner,
// a peak 18 (2v - 1) dB at its centre.
TEST(EqM, LayoutsGiveTheirBandGains)
{
    struct Row
    {
        int layout;
        double knobs[4];
        double hz, dB, tolerance;
    };
    const Row rows[] = {
        {kEqFix, {ShelfAmp(12.0), 1000.0, 0.5, 1.0}, 500.0, 6.0, 0.05},
        {kEqFix, {ShelfAmp(12.0), 1000.0, 0.5, 1.0}, 20.0, 12.0, 0.2},
        {kEqFix, {ShelfAmp(12.0), 1000.0, 0.5, 1.0}, 15000.0, 0.0, 0.1},
        {kEqFix, {1.0, 1000.0, 0.5, ShelfAmp(-8.0)}, 3000.0, -4.0, 0.05},
        {kEqFix, {1.0, 1000.0, 0.5, ShelfAmp(-8.0)}, 21000.0, -8.0, 0.2},
        {kEqFix, {1.0, 2000.0, 0.25, 1.0}, 2000.0, -9.0, 0.05},
        {kEqFix, {1.0, 2000.0, 0.25, 1.0}, 60.0, 0.0, 0.1},
        {kEqTwoBand, {1.0, 200.0, 0.0, 8000.0}, 200.0, 18.0, 0.1},
        {kEqTwoBand, {1.0, 200.0, 0.0, 8000.0}, 8000.0, -18.0, 0.1},
        {kEqShelves, {ShelfAmp(-10.0), 200.0, ShelfAmp(6.0), 5000.0}, 200.0, -5.0, 0.1},
        {kEqShelves, {ShelfAmp(-10.0), 200.0, ShelfAmp(6.0), 5000.0}, 5000.0, 3.0, 0.1},
        {kEqShelves, {ShelfAmp(-10.0), 200.0, ShelfAmp(6.0), 5000.0}, 1000.0, 0.0, 0.3},
    };
    for (const Row& r : rows)
    {
        EQ_M eq(r.layout, r.layout == kEqShelves);
        for (int p = 0; p < 4; ++p)
            eq.SetParam(p, r.knobs[p]);
        EXPECT_NEAR(EqDb(eq, r.hz), r.dB, r.tolerance) << "layout " << r.layout << " at " << r.hz << " Hz";
    }
}

// A constant input steps the output to 1, which then decays as 0.9999^n: 1/e after 10000 samples.
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
    EXPECT_LT(std::fabs(y[60000]), 0.5 * 0.003);
    dc.Reset();
    std::fill(block, block + gBlockLen, 0.5);
    dc.RemoveDC(block);
    EXPECT_DOUBLE_EQ(block[0], 0.5);
}
