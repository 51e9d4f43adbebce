// Drive filters: gains at the corners and slopes per mode against the section formula, the serial
// and parallel topologies, the free slopes of VARILPHP and the stereo holder's bypass.

#include "common/FilterMeasure.h"
#include "dsp/FreqMapping.h"
#include "dsp/TimeBase.h"
#include "fx/LPHP.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

namespace
{
constexpr double kRate = 48000.0;
constexpr double kAmp = 0.01; // low enough for the drive's tanh to be linear

struct LPHPTest : ::testing::Test
{
    void SetUp() override { SetTimeBase(kRate); }
    filtertest::RateGuard guard;
};

// One section of the cascade, Q 0.725 (alpha = sin w / 1.45), at the control x.
std::complex<double> Section(bool high, double x, double hz)
{
    const double w0 = 2.0 * M_PI * MapFreqHz(float(x)) / kRate;
    const double c = std::cos(w0), a = std::sin(w0) / 1.45;
    const double lp[6] = {(1 - c) / 2, 1 - c, (1 - c) / 2, 1 + a, -2 * c, 1 - a};
    const double hp[6] = {(1 + c) / 2, -(1 + c), (1 + c) / 2, 1 + a, -2 * c, 1 - a};
    return filtertest::SectionResponse(high ? hp : lp, 2.0 * M_PI * hz / kRate);
}

// The drive's antialiased tanh averages two samples at small level.
std::complex<double> Drive(double hz)
{
    return 0.5 * (1.0 + std::polar(1.0, -2.0 * M_PI * hz / kRate));
}

double Db(std::complex<double> h)
{
    return 20.0 * std::log10(std::abs(h));
}

std::complex<double> Serial(int lowN, double lowX, int highN, double highX, double hz)
{
    return Drive(hz) * std::pow(Section(false, lowX, hz), lowN) * std::pow(Section(true, highX, hz), highN);
}

double Measure(DSPShell& f, double hz)
{
    return filtertest::MeasureTone(f, hz, kAmp, 0.3).dB();
}

LPHP& Configure(LPHP& f, double hp, double lp, int mode)
{
    f.SetParam(0, hp);
    f.SetParam(1, lp);
    f.SetParam(2, 0.0);
    f.SetParam(3, mode);
    f.Reset();
    return f;
}
} // namespace

TEST_F(LPHPTest, CornersAndSlopesPerMode)
{
    const double corner = MapFreqHz(0.5f); // about 1 kHz
    for (int mode = 0; mode < 3; ++mode)
    {
        SCOPED_TRACE(kLphpModeLabels[size_t(mode)]);
        const int n = 2 * (mode + 1);
        // A section at Q 0.725 is 20 log10(0.725) = -2.79 dB at its corner.
        LPHP low(false);
        Configure(low, 0.0, 0.5, mode);
        EXPECT_NEAR(Measure(low, corner), n * 20.0 * std::log10(0.725) + Db(Drive(corner)), 0.05);
        for (double k : {2.0, 4.0})
            EXPECT_NEAR(Measure(low, k * corner), Db(Serial(n, 0.5, n, 0.0, k * corner)), 0.1);

        LPHP high(false);
        Configure(high, 0.5, 0.9, mode);
        EXPECT_NEAR(Measure(high, corner), n * 20.0 * std::log10(0.725) + Db(Drive(corner)), 0.05);
        const double half = Measure(high, corner / 2), quarter = Measure(high, corner / 4);
        EXPECT_NEAR(half, Db(Serial(n, 0.9, n, 0.5, corner / 2)), 0.1);
        EXPECT_NEAR(quarter, Db(Serial(n, 0.9, n, 0.5, corner / 4)), 0.1);
        // 6 dB per octave per pole, two poles a section: 24, 48, 72 dB per octave.
        EXPECT_NEAR(half - quarter, 12.0 * n, 0.03 * 12.0 * n);
    }
}

TEST_F(LPHPTest, ParallelModeSumsWithoutReset)
{
    // Low-pass at about 300 Hz, high-pass at about 3.3 kHz: in series nothing passes, in parallel
    // both bands do. DC settles to 0 in series; the switch to parallel keeps the memories, so the
    // DC of the low-pass is there from the first sample on, with no transient.
    LPHP f(false);
    Configure(f, 0.7, 0.3, 0);
    std::vector<double> dc(gBlockLen, kAmp), out(gBlockLen);
    f.mIn1 = dc.data();
    f.mOut1 = out.data();
    for (int b = 0; b < 3000; ++b)
        f.Process();
    for (double v : out)
        EXPECT_NEAR(v, 0.0, 1e-9);
    f.SetMode(3);
    for (int b = 0; b < 2; ++b)
    {
        f.Process();
        for (double v : out)
            EXPECT_NEAR(v, std::tanh(kAmp), 1e-8);
    }

    // Tones: series against parallel, both by the section formula.
    const double hz = 10000.0;
    LPHP serial(false), parallel(false);
    Configure(serial, 0.7, 0.3, 0);
    Configure(parallel, 0.7, 0.3, 3);
    EXPECT_NEAR(Measure(serial, hz), Db(Serial(2, 0.3, 2, 0.7, hz)), 0.5);
    const std::complex<double> sum =
        Drive(hz) * (std::pow(Section(false, 0.3, hz), 2) + std::pow(Section(true, 0.7, hz), 2));
    EXPECT_NEAR(Measure(parallel, hz), Db(sum), 0.05);
    EXPECT_NEAR(
        Measure(parallel, 50.0),
        Db(Drive(50.0) * (std::pow(Section(false, 0.3, 50.0), 2) + std::pow(Section(true, 0.7, 50.0), 2))),
        0.05);
}

TEST_F(LPHPTest, VariableSlopesCountSections)
{
    const double corner = MapFreqHz(0.5f);
    for (int index = 0; index < 4; ++index)
    {
        SCOPED_TRACE(kVariLphpSlopeLabels[size_t(index)]);
        VARILPHP f(false);
        f.SetParam(0, 0.5);
        f.SetParam(1, index);
        f.SetParam(2, 0.9);
        f.SetParam(3, 3 - index);
        f.Reset();
        const int n = index + 1;
        const double half = Measure(f, corner / 2), quarter = Measure(f, corner / 4);
        EXPECT_NEAR(half, Db(Serial(4 - index, 0.9, n, 0.5, corner / 2)), 0.1);
        EXPECT_NEAR(half - quarter, 12.0 * n, 0.03 * 12.0 * n);
    }
}
