// Drive filters: gains at the corners and slopes per mode against the section formula, the serial
// and parallel topologies, the free slopes of VARILPHP and the stereo holder's bypass.

#include "common/FilterMeasure.h"
#include "dsp/FreqMapping.h"
#include "dsp/TimeBase.h"
#include "fx/FxRig.h"
#include "fx/LPHP.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <tuple>
#include <vector>

namespace
{
using fxrig::SetParams;
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

std::complex<double> Serial(int lowN, double lowX, int highN, double highX, double hz)
{
    return Drive(hz) * std::pow(Section(false, lowX, hz), lowN) * std::pow(Section(true, highX, hz), highN);
}

double Measure(DSPShell& f, double hz)
{
    return filtertest::MeasureTone(f, hz, kAmp, 0.3).dB();
}

} // namespace

// The modes stack 2, 4 or 6 sections on both sides (24, 48, 72 dB per octave): at the corner n
// sections at Q 0.725 give n x 20 log10(0.725) dB, and below the high-pass corner the slope is
// 12 dB per octave per section. VARILPHP's slope lists count 1 to 4 sections on each side.
TEST_F(LPHPTest, CornersAndSlopesPerModeAndVariableSlope)
{
    const double corner = MapFreqHz(0.5f); // about 1 kHz
    // {VARILPHP, high-pass, low-pass, mode or slope, low-pass sections, high-pass sections, probe
    // frequency over the corner}
    const std::tuple<bool, double, double, int, int, int, double> rows[] = {
        {false, 0.0, 0.5, 0, 2, 2, 1.0}, {false, 0.0, 0.5, 1, 4, 4, 2.0}, {false, 0.0, 0.5, 2, 6, 6, 4.0},
        {false, 0.5, 0.9, 0, 2, 2, 1.0}, {false, 0.5, 0.9, 1, 4, 4, 0.5}, {false, 0.5, 0.9, 2, 6, 6, 0.5},
        {true, 0.5, 0.9, 0, 4, 1, 0.5},  {true, 0.5, 0.9, 1, 3, 2, 0.5},  {true, 0.5, 0.9, 2, 2, 3, 0.5},
        {true, 0.5, 0.9, 3, 1, 4, 0.5},
    };
    for (const auto& [variable, hp, lp, mode, lowN, highN, probe] : rows)
    {
        SCOPED_TRACE(testing::Message()
                     << (variable ? "VARILPHP slope " : "LPHP mode ") << mode << " at " << probe);
        std::unique_ptr<DSPShell> f(variable ? static_cast<DSPShell*>(new VARILPHP(false)) : new LPHP(false));
        if (variable)
            SetParams(*f, {hp, double(mode), lp, double(3 - mode)});
        else
            SetParams(*f, {hp, lp, 0.0, double(mode)});
        f->Reset();
        const double hz = probe * corner;
        EXPECT_NEAR(Measure(*f, hz), testmeasure::Db(std::abs(Serial(lowN, lp, highN, hp, hz))), 0.1);
        if (probe == 0.5)
        {
            const double slope = Measure(*f, hz) - Measure(*f, hz / 2);
            EXPECT_NEAR(slope, 12.0 * highN, 0.03 * 12.0 * highN);
        }
    }
}

TEST_F(LPHPTest, ParallelModeSumsWithoutReset)
{
    // Low-pass at about 300 Hz, high-pass at about 3.3 kHz: in series nothing passes, in parallel
    // both bands do. DC settles to 0 in series; the switch to parallel keeps the memories, so the
    // DC of the low-pass is there from the first sample on, with no transient.
    LPHP f(false);
    SetParams(f, {0.7, 0.3, 0.0, 0.0});
    f.Reset();
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
    // Tones against the sum of the two chains by the section formula.
    for (const double hz : {50.0, 10000.0})
    {
        const std::complex<double> sum =
            Drive(hz) * (std::pow(Section(false, 0.3, hz), 2) + std::pow(Section(true, 0.7, hz), 2));
        EXPECT_NEAR(Measure(f, hz), testmeasure::Db(std::abs(sum)), 0.05) << hz;
    }
}
