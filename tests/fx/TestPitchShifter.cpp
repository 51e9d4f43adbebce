#include "common/Fft.h"
#include "fx/FxRig.h"
#include "fx/MVPitchShifter.h"

#include "dsp/TimeBase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

// The shifter is judged by the spectrum of its output for a steady sine: the frequency of the
// strongest line (Blackman-Harris window, parabola on the log magnitude) and the level of the
// strongest other line relative to it.
namespace
{
using fxrig::RateGuard;

constexpr int kFftSize = 1 << 17;

struct Line
{
    double hz;         // frequency of the strongest line
    double spuriousDb; // strongest other line relative to it
};

// Runs a sine through the shifter, lets it settle, and analyses kFftSize samples of the output.
Line Analyse(MVPitchShifter& fx, double inHz)
{
    const double rate = gSampleRate;
    const int settle = int(0.5 * rate) / gBlockLen * gBlockLen;
    std::vector<double> out(size_t(settle + kFftSize));
    double block[gBlockLen];
    for (size_t b = 0; b < out.size(); b += gBlockLen)
    {
        for (int i = 0; i < gBlockLen; ++i)
            block[i] = 0.5 * std::sin(2.0 * M_PI * inHz * double(b + i) / rate);
        fx.mIn1 = block;
        fx.mOut1 = block; // in place
        fx.Process();
        std::copy(block, block + gBlockLen, out.begin() + long(b));
    }
    std::vector<std::complex<double>> bins(kFftSize);
    for (int i = 0; i < kFftSize; ++i)
        bins[size_t(i)] = fxrig::BlackmanHarris(size_t(i), kFftSize) * out[size_t(settle + i)];
    Fft(bins);
    std::vector<double> db(kFftSize / 2);
    for (int k = 0; k < kFftSize / 2; ++k)
        db[size_t(k)] = 20.0 * std::log10(std::abs(bins[size_t(k)]) + 1e-30);
    const int peak = int(std::max_element(db.begin() + 1, db.end() - 1) - db.begin());
    const double l = db[size_t(peak - 1)], c = db[size_t(peak)], r = db[size_t(peak + 1)];
    const double frac = 0.5 * (l - r) / (l - 2.0 * c + r);
    Line line{(peak + frac) * rate / kFftSize, -400.0};
    // Outside the window's main lobe (4 bins) and above 10 Hz.
    const int guard = 6, low = int(10.0 * kFftSize / rate);
    for (int k = low; k < kFftSize / 2; ++k)
        if (std::abs(k - peak) > guard) line.spuriousDb = std::max(line.spuriousDb, db[size_t(k)] - c);
    return line;
}

double CoarseKnob(int semitones)
{
    return (semitones + 24) / 48.0;
}
} // namespace

// The strongest line sits on the shift within a cent, at both rates, and nothing else comes near it. Coarse
// runs -24..24 semitones over the knob; fine +-100 cents. In stereo the second knob sets the right channel's
// coarse shift and fine detunes the channels apart; in mono the second knob is fine and the fourth spreads
// the right channel by up to -100 cents. The splices must not beat (two heads that always jump by the window
// length leave sidebands only about 20 dB down).
TEST(PitchShifter, ShiftsLandOnTheirRatiosWithoutBeating)
{
    struct Row
    {
        bool stereo, right;
        double p1, p2, p4, cents;
    };
    const Row rows[] = {
        {false, false, CoarseKnob(7), 0.5, 0.5, 700.0},
        {false, false, CoarseKnob(-12), 0.5, 0.5, -1200.0},
        {true, false, CoarseKnob(5), CoarseKnob(-3), 1.0, 550.0},
        {true, true, CoarseKnob(5), CoarseKnob(-3), 1.0, -350.0},
        {false, true, 0.5, 0.75, 0.7, 30.0},
    };
    RateGuard guard;
    for (double rate : {44100.0, 48000.0})
        for (const Row& r : rows)
        {
            SCOPED_TRACE(testing::Message() << rate << " Hz, " << r.cents << " cents");
            SetTimeBase(rate);
            MVPitchShifter fx(r.stereo, r.right);
            fx.SetParam(0, r.p1);
            fx.SetParam(1, r.p2);
            fx.SetParam(2, MVPitchShifter::kDefaultSize);
            fx.SetParam(3, r.p4);
            fx.Reset();
            const Line line = Analyse(fx, 440.0);
            EXPECT_NEAR(1200.0 * std::log2(line.hz / 440.0), r.cents, 1.0);
            EXPECT_LT(line.spuriousDb, -30.0);
        }
}
