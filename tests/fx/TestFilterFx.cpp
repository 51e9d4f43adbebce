#include "dsp/FreqMapping.h"
#include "dsp/IppBiquad.h"
#include "fx/FilterFx.h"
#include "fx/FxRig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

using namespace filtertest;

namespace
{
// Gain at the corner of one low- or high-pass section at resonance 0: alpha = sin(w) / 1.45 is
// sin(w) / (2 Q) with Q = 0.725, the gain there.
constexpr double kQ0 = 0.725;

// A slot filter with the given knobs (fractions; P4 a list index where the type has a list).
std::unique_ptr<FilterFx> Make(int type, double p1, double p2, double p4, double p5 = 1.0)
{
    auto fx = std::make_unique<FilterFx>(type, false);
    fxrig::SetParams(*fx, {p1, p2, 0.5, p4, p5}); // P3 0.5: no spread
    SettleControls(*fx, 0.3);
    return fx;
}

double Corner(double x)
{
    return MapFreqHz(float(x));
}

// dB lost per octave between hz and 2 hz (positive = falling towards 2 hz).
double OctaveDrop(FilterFx& fx, double hz)
{
    return MeasureTone(fx, hz).dB() - MeasureTone(fx, 2.0 * hz).dB();
}

} // namespace

// Gains at and around the corner against the section laws: a low- or high-pass section at
// resonance 0 has gain Q = 0.725 at its corner and 12 dB per octave; the slope list stacks 1 to 3
// sections; Chebyshev order 4 with 1 dB ripple is -1 dB at the corner and 24 dB per octave; the
// linear state-variable low-pass has Q = 1; the peak at P4 0.75 is +12 dB, and DIM brings its
// centre back to 0 dB. "Drop" is the level at f less the level at 2 f (negative for a rise).
TEST(FilterFx, ModesHaveTheirCornerGainsAndSlopes)
{
    struct Row
    {
        const char* name;
        int type;
        double x, p2, p4, p5;
        double probe, dB;    // probe frequency over the corner, expected level there
        double dropAt, drop; // octave drop from dropAt x corner (0: none)
        double tolerance;
    };
    const double q = testmeasure::Db(kQ0);
    const Row rows[] = {
        {"multi 12 low-pass", kFxMulti12, 0.2, 0.0, 0, 1.0, 1.0, q, 8.0, 12.0, 0.5},
        {"multi 12 high-pass", kFxMulti12, 0.8, 0.0, 1, 1.0, 1.0, q, 1.0 / 16.0, -12.0, 0.5},
        {"multi 12 band-pass", kFxMulti12, 0.5, 0.0, 2, 1.0, 1.0, 0.0, 0.0, 0.0, 0.1},
        {"one section", kFxMulti12Fb, 0.2, 0.0, 0, 1.0, 1.0, q, 8.0, 12.0, 0.6},
        {"two sections", kFxMulti12Fb, 0.2, 0.4, 0, 1.0, 1.0, 2 * q, 8.0, 24.0, 1.2},
        {"three sections", kFxMulti12Fb, 0.2, 0.9, 0, 1.0, 1.0, 3 * q, 8.0, 36.0, 1.8},
        {"Chebyshev low-pass", kFxLowHigh24, 0.2, 0.0, 0, 1.0, 1.0, -1.0, 8.0, 24.0, 1.0},
        {"Chebyshev high-pass", kFxLowHigh24, 0.8, 0.0, 1, 1.0, 1.0, -1.0, 1.0 / 16.0, -24.0, 1.0},
        {"linear SVF low-pass", kFxMultiSvf, 0.2, 0.0, 2, 0.7, 1.0, 0.0, 8.0, 12.0, 0.5},
        {"peak +12 dB", kFxPeak, 0.5, 0.0, 0.75, 0.0, 1.0, 12.0, 0.0, 0.0, 0.2},
        {"peak skirt", kFxPeak, 0.5, 0.0, 0.75, 0.0, 1.0 / 30.0, 0.0, 0.0, 0.0, 0.2},
        {"peak with DIM", kFxPeak, 0.5, 0.0, 0.75, 1.0, 1.0, 0.0, 0.0, 0.0, 0.2},
        {"peak skirt with DIM", kFxPeak, 0.5, 0.0, 0.75, 1.0, 1.0 / 30.0, -12.0, 0.0, 0.0, 0.2},
    };
    for (const Row& r : rows)
    {
        auto fx = Make(r.type, r.x, r.p2, r.p4, r.p5);
        EXPECT_NEAR(MeasureTone(*fx, r.probe * Corner(r.x)).dB(), r.dB, std::min(r.tolerance, 0.12))
            << r.name;
        const double drop = r.dropAt > 0.0 ? OctaveDrop(*fx, r.dropAt * Corner(r.x)) : 0.0;
        EXPECT_NEAR(drop, r.drop, r.tolerance) << r.name;
    }
    // "NOTCH" is an all-pass that cancels at the corner when mixed half and half (P5 is the mix
    // there, and no mix for the peak).
    auto notch = Make(kFxMulti12, 0.5, 0.0, 3, 0.5);
    EXPECT_DOUBLE_EQ(double(notch->mMix), 0.5);
    for (double hz : {Corner(0.5), Corner(0.5) / 8.0})
    {
        const Tone t = MeasureTone(*notch, hz);
        EXPECT_NEAR(t.gain, 1.0, 0.01) << hz;
        const double blended = std::abs(0.5 + 0.5 * std::polar(t.gain, t.phase));
        EXPECT_TRUE(hz == Corner(0.5) ? blended < 0.02 : blended > 0.9) << hz << ": " << blended;
    }
    EXPECT_LT(MeasureTone(*Make(kFxMulti12, 0.5, 0.0, 2), Corner(0.5) / 8.0).dB(), -12.0); // band-pass skirt
    EXPECT_DOUBLE_EQ(double(Make(kFxPeak, 0.5, 0.0, 0.75, 1.0)->mMix), 1.0);
}

// The formant peaks sit where the vowel table puts them, for the position and the set chosen.
TEST(FilterFx, VowelFormantPeaks)
{
    struct Case
    {
        double pos, set;
        double formants[3];
    };
    const Case cases[] = {{0.0, 0.0, {270, 2290, 3010}},
                          {1.0, 0.0, {300, 870, 2240}},
                          {0.5, 0.5, {660, 1720, 2410}},
                          {0.25, 0.0, {400, 2065, 2745}}}; // halfway between vowels 0 and 1
    for (const Case& c : cases)
    {
        auto fx = Make(kFxVowel, c.pos, c.set, 1.0, 0.0);
        const std::vector<double> h = fxrig::ImpulseResponse(*fx, 4096);
        for (double f : c.formants)
        {
            double best = 0.0, bestHz = 0.0;
            for (double hz = 0.85 * f; hz <= 1.15 * f; hz *= 1.004)
                if (const double m = std::abs(testmeasure::ResponseAt(h, hz, gSampleRate)); m > best)
                {
                    best = m;
                    bestHz = hz;
                }
            EXPECT_NEAR(bestHz / f, 1.0, 0.03) << c.pos << " " << c.set << " " << f;
            EXPECT_GT(testmeasure::Db(best), 15.0) << f; // a clear formant, +24 dB at the setting
        }
    }
}

// Modulation of P1 reaches the frequency: a source of +0.1 moves the corner to 50 * 400^(x + 0.1).
TEST(FilterFx, FrequencyModulationMovesCorner)
{
    auto fx = Make(kFxMulti12, 0.3, 0.0, 0);
    const double source[gBlockLen] = {0.1};
    const double depth = 1.0;
    fx->SetModSource(0, source);
    fx->SetModDepth(0, &depth);
    SettleControls(*fx, 0.3);
    EXPECT_NEAR(MeasureTone(*fx, Corner(0.4)).gain, kQ0, 0.01);
}
