#include "common/FilterMeasure.h"
#include "dsp/FreqMapping.h"
#include "dsp/IppBiquad.h"
#include "fx/FilterFx.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>
#include <vector>

using namespace filtertest;

namespace
{
// Gain at the corner of one low- or high-pass section at resonance 0: alpha = sin(w) / 1.45 is
// sin(w) / (2 Q) with Q = 0.725, the gain there.
constexpr double kQ0 = 0.725;

double Db(double g)
{
    return 20.0 * std::log10(g);
}

// A slot filter with the given knobs (fractions; P4 a list index where the type has a list).
std::unique_ptr<FilterFx> Make(int type, double p1, double p2, double p4, double p5 = 1.0)
{
    auto fx = std::make_unique<FilterFx>(type, false);
    fx->SetParam(0, p1);
    fx->SetParam(1, p2);
    fx->SetParam(2, 0.5); // no spread
    fx->SetParam(3, p4);
    fx->SetParam(4, p5);
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

// Complex response by the impulse response after the controls have settled.
std::vector<double> Impulse(FilterFx& fx, int length)
{
    std::vector<double> x(length, 0.0);
    x[0] = 1.0;
    return RunBlocks(fx, x);
}

double Magnitude(const std::vector<double>& h, double hz)
{
    std::complex<double> sum = 0.0;
    const double w = 2.0 * M_PI * hz / gSampleRate;
    for (size_t n = 0; n < h.size(); ++n)
        sum += h[n] * std::polar(1.0, -w * double(n));
    return std::abs(sum);
}
} // namespace

// One section: low-pass and high-pass have gain Q at the corner and fall 12 dB per octave;
// band-pass peaks at 0 dB; "NOTCH" is an all-pass that cancels at the corner when mixed half and half.
TEST(FilterFx, MultiTwelveModesGainAndSlope)
{
    const double lowX = 0.2, highX = 0.8;
    auto lp = Make(kFxMulti12, lowX, 0.0, 0);
    EXPECT_NEAR(MeasureTone(*lp, Corner(lowX)).gain, kQ0, 0.01);
    EXPECT_NEAR(OctaveDrop(*lp, 8.0 * Corner(lowX)), 12.0, 0.5);

    auto hp = Make(kFxMulti12, highX, 0.0, 1);
    EXPECT_NEAR(MeasureTone(*hp, Corner(highX)).gain, kQ0, 0.01);
    EXPECT_NEAR(-OctaveDrop(*hp, Corner(highX) / 16.0), 12.0, 0.5);

    auto bp = Make(kFxMulti12, 0.5, 0.0, 2);
    EXPECT_NEAR(MeasureTone(*bp, Corner(0.5)).gain, 1.0, 0.01);
    EXPECT_LT(MeasureTone(*bp, Corner(0.5) / 8.0).dB(), -12.0);

    auto notch = Make(kFxMulti12, 0.5, 0.0, 3, 0.5);
    EXPECT_DOUBLE_EQ(double(notch->mMix), 0.5);
    for (double hz : {Corner(0.5), Corner(0.5) / 8.0})
    {
        const Tone t = MeasureTone(*notch, hz);
        EXPECT_NEAR(t.gain, 1.0, 0.01) << hz;
        const double blended = std::abs(0.5 + 0.5 * std::polar(t.gain, t.phase));
        if (hz == Corner(0.5))
            EXPECT_LT(blended, 0.02);
        else
            EXPECT_GT(blended, 0.9);
    }
}

// The feedback-list variant: "FILTER SLOPE" picks 1, 2 or 3 sections.
TEST(FilterFx, SlopeListStacksSections)
{
    const double x = 0.2;
    const double slopes[3] = {0.0, 0.4, 0.9};
    for (int n = 1; n <= 3; ++n)
    {
        auto fx = Make(kFxMulti12Fb, x, slopes[n - 1], 0);
        EXPECT_NEAR(MeasureTone(*fx, Corner(x)).dB(), n * Db(kQ0), 0.1) << n;
        EXPECT_NEAR(OctaveDrop(*fx, 8.0 * Corner(x)), 12.0 * n, 0.6 * n) << n;
    }
}

// Chebyshev order 4 with 1 dB ripple at resonance 0: -1 dB at the corner, 24 dB per octave.
TEST(FilterFx, ChebyshevOrderFourBothModes)
{
    auto lp = Make(kFxLowHigh24, 0.2, 0.0, 0);
    EXPECT_NEAR(MeasureTone(*lp, Corner(0.2)).dB(), -1.0, 0.1);
    EXPECT_NEAR(OctaveDrop(*lp, 8.0 * Corner(0.2)), 24.0, 1.0);

    auto hp = Make(kFxLowHigh24, 0.8, 0.0, 1);
    EXPECT_NEAR(MeasureTone(*hp, Corner(0.8)).dB(), -1.0, 0.1);
    EXPECT_NEAR(-OctaveDrop(*hp, Corner(0.8) / 16.0), 24.0, 1.0);
}

// Linear state-variable low-pass (mode 2): 0 dB at the corner (Q = 1), 12 dB per octave.
TEST(FilterFx, StateVariableLinearLowpass)
{
    auto fx = Make(kFxMultiSvf, 0.2, 0.0, 2, 0.7);
    EXPECT_NEAR(MeasureTone(*fx, Corner(0.2)).dB(), 0.0, 0.1);
    EXPECT_NEAR(OctaveDrop(*fx, 8.0 * Corner(0.2)), 12.0, 0.5);
    EXPECT_DOUBLE_EQ(double(fx->mMix), 0.7);
}

// Peak: P4 at 0.75 is +12 dB at the centre; "DIM" 1 brings the centre back to 0 dB, so the
// rest of the spectrum drops by 12 dB. P5 is no mix here.
TEST(FilterFx, PeakGainAndDim)
{
    auto boost = Make(kFxPeak, 0.5, 0.0, 0.75, 1.0);
    EXPECT_NEAR(MeasureTone(*boost, Corner(0.5)).dB(), 0.0, 0.1);
    EXPECT_NEAR(MeasureTone(*boost, Corner(0.5) / 30.0).dB(), -12.0, 0.2);
    EXPECT_DOUBLE_EQ(double(boost->mMix), 1.0);

    auto plain = Make(kFxPeak, 0.5, 0.0, 0.75, 0.0);
    EXPECT_NEAR(MeasureTone(*plain, Corner(0.5)).dB(), 12.0, 0.1);
    EXPECT_NEAR(MeasureTone(*plain, Corner(0.5) / 30.0).dB(), 0.0, 0.2);
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
        const std::vector<double> h = Impulse(*fx, 4096);
        for (double f : c.formants)
        {
            double best = 0.0, bestHz = 0.0;
            for (double hz = 0.85 * f; hz <= 1.15 * f; hz *= 1.004)
                if (const double m = Magnitude(h, hz); m > best) best = m, bestHz = hz;
            EXPECT_NEAR(bestHz / f, 1.0, 0.03) << c.pos << " " << c.set << " " << f;
            EXPECT_GT(Db(best), 15.0) << f; // a clear formant, +24 dB at the setting
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

// No NaN or infinity for any type at the extremes of every knob, at the lowest and highest rates.
