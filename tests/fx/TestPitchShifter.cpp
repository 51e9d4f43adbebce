#include "common/Fft.h"
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
struct RateGuard
{
    ~RateGuard() { SetTimeBase(44100.0); }
};

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
    {
        const double p = 2.0 * M_PI * i / kFftSize;
        const double w =
            0.35875 - 0.48829 * std::cos(p) + 0.14128 * std::cos(2 * p) - 0.01168 * std::cos(3 * p);
        bins[size_t(i)] = w * out[size_t(settle + i)];
    }
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

double Cents(double hz, double refHz)
{
    return 1200.0 * std::log2(hz / refHz);
}

double CoarseKnob(int semitones)
{
    return (semitones + 24) / 48.0;
}

const double kRates[] = {44100.0, 48000.0};
} // namespace

TEST(PitchShifter, CoarseShiftLandsOnTheEqualTemperedRatioWithoutBeating)
{
    // The strongest line sits on 2^(n / 12) within a cent; the splices must not beat (two heads
    // that always jump by the window length leave sidebands only about 20 dB down).
    RateGuard guard;
    for (double rate : kRates)
    {
        SetTimeBase(rate);
        for (int semis : {7, -12})
        {
            MVPitchShifter fx(false, false);
            fx.SetParam(0, CoarseKnob(semis));
            fx.SetParam(2, MVPitchShifter::kDefaultSize);
            fx.Reset();
            const Line line = Analyse(fx, 440.0);
            EXPECT_NEAR(Cents(line.hz, 440.0 * std::exp2(semis / 12.0)), 0.0, 1.0)
                << rate << " Hz, " << semis;
            EXPECT_LT(line.spuriousDb, -30.0) << rate << " Hz, " << semis;
        }
    }
}

TEST(PitchShifter, FineDetuneAndStereoCoarseMoveEachChannel)
{
    RateGuard guard;
    for (double rate : kRates)
    {
        SetTimeBase(rate);
        // Stereo: independent coarse per channel, detune +50 cents left and -50 cents right.
        MVPitchShifter left(true, false), right(true, true);
        for (MVPitchShifter* fx : {&left, &right})
        {
            fx->SetParam(0, CoarseKnob(5));
            fx->SetParam(1, CoarseKnob(-3));
            fx->SetParam(3, 1.0);
            fx->Reset();
        }
        EXPECT_NEAR(Cents(Analyse(left, 440.0).hz, 440.0), 550.0, 1.0) << rate;
        EXPECT_NEAR(Cents(Analyse(right, 440.0).hz, 440.0), -350.0, 1.0) << rate;

        // Mono: fine +50 cents with a spread of -20 cents for the right channel.
        MVPitchShifter mono(false, true);
        mono.SetParam(1, 0.75);
        mono.SetParam(3, 0.7);
        mono.Reset();
        EXPECT_NEAR(Cents(Analyse(mono, 440.0).hz, 440.0), 30.0, 1.0) << rate;
    }
}
