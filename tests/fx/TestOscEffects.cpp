#include "fx/Comb.h"
#include "fx/FxRig.h"
#include "fx/HilbertShifter.h"
#include "fx/PhaserC.h"
#include "fx/RingMod.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <vector>

// The oscillator effects, checked by their spectra, notch positions, echo positions and loop gains.
// The ring modulator's carrier is scaled by 1 - s^2 (unit peak), which the sideband levels check.
using namespace fxrig;

namespace
{
// Steady output of a 1 kHz-ish tone: the last half second of 0.75 s.
struct ToneRun
{
    ToneRun(DSPShell& m, double hz) : y(RunBlocks(m, Sine(hz, Blocks(0.75)))), from(Blocks(0.25)) {}
    double Level(double hz) const { return ToneLevel(y, from, y.size() - from, hz); }
    std::vector<double> y;
    size_t from;
};
} // namespace

TEST(HilbertShifter, ShiftsByItsHertzAndSpreadsTheChannelsApartRejectingTheImage)
{
    // {shift knob, spread knob, right channel, output frequency} for a 1 kHz input: no shift of its
    // own and the spread alone, which moves the channels in opposite senses by 100 Hz times its
    // signed square (the shift knob's own law is heard through the engine).
    const std::tuple<double, double, bool, double> rows[] = {{0.5, 1.0, false, 1100.0},
                                                             {0.5, 1.0, true, 900.0},
                                                             {0.5, 0.75, false, 1025.0},
                                                             {0.5, 0.75, true, 975.0}};
    RateGuard guard;
    SetTimeBase(48000.0);
    for (const auto& [shift, spread, right, hz] : rows)
    {
        HilbertShifter m(right);
        SetParams(m, {shift, 2.0, 0.0, spread, 1.0});
        const ToneRun run(m, 1000.0);
        const double wanted = run.Level(hz);
        EXPECT_NEAR(wanted, 1.0, 0.01) << shift << " " << spread << " " << right;
        EXPECT_LT(testmeasure::Db(run.Level(2000.0 - hz) / wanted), -40.0) << hz; // the image
        EXPECT_LT(testmeasure::Db(run.Level(1000.0) / wanted), -40.0) << hz;      // the input
    }
}

TEST(RingMod, SidebandsShapeHarmonicsAndTheRightChannelsLock)
{
    RateGuard guard;
    SetTimeBase(48000.0);
    const double fc = std::pow(0.5, 4) * 4999.9 + 0.1; // full frequency knob, halved by the module
    for (const double shape : {0.0, 1.0})
    {
        RingMod m(false);
        SetParams(m, {1.0, shape, 0.0, 0.5, 1.0});
        ASSERT_NEAR(m.CarrierHz(), fc, 1e-9);
        const ToneRun run(m, 1000.0);
        const double s = 0.9 * shape;
        const double first = run.Level(1000.0 + fc);
        EXPECT_NEAR(first, 0.5 * (1.0 - s * s), 0.005) << "shape " << shape;
        EXPECT_NEAR(run.Level(1000.0 - fc), first, 0.005);
        EXPECT_LT(run.Level(1000.0), 1e-4); // a ring modulator removes the input
        // The shape adds harmonics of the carrier in the ratio s; a sine carrier has none (-80 dB).
        EXPECT_NEAR(run.Level(1000.0 + 2.0 * fc) / first, s, 0.01 * s + 1e-4);
        EXPECT_NEAR(run.Level(1000.0 + 3.0 * fc) / first, s * s, 0.01 * s + 1e-4);
    }

    // Detuned apart by the spread, the right carrier takes its partner's phase once the spread is
    // back at the centre: both channels then give the same output.
    RingMod left(false), right(true, &left);
    const std::vector<double> x = Sine(440.0, Blocks(0.2));
    std::vector<double> yl(x.size()), yr(x.size());
    for (const double spread : {0.9, 0.5})
    {
        for (RingMod* m : {&left, &right})
            SetParams(*m, {0.7, 0.3, 0.0, spread, 1.0});
        for (size_t b = 0; b < x.size() / gBlockLen; ++b)
        {
            left.mIn1 = right.mIn1 = x.data() + b * gBlockLen;
            left.mOut1 = yl.data() + b * gBlockLen;
            right.mOut1 = yr.data() + b * gBlockLen;
            left.Process();
            right.Process();
        }
    }
    EXPECT_NEAR(left.Phase(), right.Phase(), 1e-9);
    double worst = 0.0;
    for (size_t n = gBlockLen; n < x.size(); ++n)
        worst = std::max(worst, std::fabs(yl[n] - yr[n]));
    EXPECT_LT(worst, 1e-9);
}

namespace
{
// Frequencies of the notches deeper than -25 dB of a module's impulse response, 20 Hz to 20 kHz.
std::vector<double> Notches(DSPShell& m)
{
    const std::vector<double> h = ImpulseResponse(m, 4096);
    const int points = 1600;
    std::vector<double> hz(points), mag(points);
    for (int i = 0; i < points; ++i)
    {
        hz[i] = 20.0 * std::pow(1000.0, double(i) / (points - 1));
        mag[i] = std::abs(testmeasure::ResponseAt(h, hz[i], gSampleRate));
    }
    std::vector<double> found;
    for (int i = 1; i + 1 < points; ++i)
        if (mag[i] < mag[i - 1] && mag[i] <= mag[i + 1] && testmeasure::Db(mag[i]) < -25.0)
            found.push_back(hz[i]);
    return found;
}
} // namespace

// One section at depth 1 is (1 + allpass) x 0.75: a null exactly where the section's phase is -180
// degrees, at its centre, w x table[0] x 22050 Hz with w = (x^2 + 0.1) x 6. N sections turn the
// phase through N x 360 degrees: N notches, the first one lower as more sections add their lag.
TEST(PhaserC, NotchCountAndPlaceFollowStagesAndBase)
{
    RateGuard guard;
    double previousLowest = 1e9;
    for (const auto& [rate, base, stages] : {std::tuple{44100.0, 0.5, 1},
                                             {96000.0, 1.0, 1},
                                             {48000.0, 0.0, 1},
                                             {48000.0, 0.0, 2},
                                             {48000.0, 0.0, 4},
                                             {48000.0, 0.0, 8}})
    {
        SCOPED_TRACE(testing::Message() << rate << " Hz, base " << base << ", " << stages << " stages");
        SetTimeBase(rate);
        PhaserC m(false);
        SetParams(m, {base, 1.0, (stages - 1) / 7.0, 0.0, 0.0});
        ASSERT_EQ(m.Stages(), stages);
        const std::vector<double> notches = Notches(m);
        ASSERT_EQ(int(notches.size()), stages);
        const double centre = (base * base + 0.1) * 6.0 * PhaserC::kSectionTable[0] * 22050.0;
        EXPECT_TRUE(stages > 1 || std::fabs(notches[0] / centre - 1.0) < 0.01) << notches[0];
        EXPECT_TRUE(rate != 48000.0 || notches[0] < previousLowest) << notches[0];
        if (rate == 48000.0) previousLowest = notches[0];
    }
}

// A feed-forward comb at 100 Hz (480 samples at 48 kHz): peaks of 2 at multiples of 100 Hz, nulls
// halfway. Full feedback (-0.5 x 1.66 = -0.83 for small signals) gives (1 + z^-D) / (1 + 0.83 z^-D):
// the peaks drop to 2 / 1.83, the nulls stay.
TEST(Comb, PeaksAtMultiplesOfItsFrequency)
{
    RateGuard guard;
    SetTimeBase(48000.0);
    for (const double feedback : {0.0, 1.0})
    {
        Comb m(false);
        SetParams(m, {0.5, feedback, 0.0, 0.0, 0.0});
        ASSERT_NEAR(m.CombHz(), 100.0, 1e-9);
        const std::vector<double> h = ImpulseResponse(m, 65536, 1e-3);
        EXPECT_NEAR(h[0], 1.0, 1e-12);
        EXPECT_NEAR(h[480], 1.0 - 0.83 * feedback, 1e-6);
        const double peak = 2.0 / (1.0 + 0.83 * feedback);
        for (const double hz : {100.0, 200.0, 300.0, 1000.0})
            EXPECT_NEAR(std::abs(testmeasure::ResponseAt(h, hz, gSampleRate)), peak, 0.01 * peak)
                << hz << " Hz, feedback " << feedback;
        for (const double hz : {150.0, 250.0, 1050.0})
            EXPECT_LT(std::abs(testmeasure::ResponseAt(h, hz, gSampleRate)), 0.01)
                << hz << " Hz, feedback " << feedback;
    }
}
