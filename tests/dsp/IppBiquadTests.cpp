#include "FilterMeasure.h"

#include "dsp/FreqMapping.h"
#include "dsp/IppBiquad.h"
#include "dsp/IppFixBiquad.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <memory>
#include <vector>
#if defined(__SSE__) || defined(__x86_64__)
#include <xmmintrin.h>
#endif

using namespace filtertest;

namespace
{
using cd = std::complex<double>;

// Analogue second-order prototypes at s = jW (quality q): the responses the sections realise.
cd Lowpass(double W, double q)
{
    return 1.0 / cd(1.0 - W * W, W / q);
}
cd Highpass(double W, double q)
{
    return -W * W / cd(1.0 - W * W, W / q);
}
cd Bandpass(double W, double q)
{
    return cd(0.0, W / q) / cd(1.0 - W * W, W / q);
}
cd Allpass(double W, double q)
{
    return cd(1.0 - W * W, -W / q) / cd(1.0 - W * W, W / q);
}
// Peak with amplitude A (centre gain A^2).
cd Peak(double W, double q, double A)
{
    return cd(1.0 - W * W, W * A / q) / cd(1.0 - W * W, W / (A * q));
}
// Shelves with amplitude A: gain A^2 on the shelf, A at the corner.
cd LowShelf(double W, double q, double A)
{
    const cd s(0.0, W);
    return A * (s * s + std::sqrt(A) / q * s + A) / (A * s * s + std::sqrt(A) / q * s + 1.0);
}
cd HighShelf(double W, double q, double A)
{
    const cd s(0.0, W);
    return A * (A * s * s + std::sqrt(A) / q * s + 1.0) / (s * s + std::sqrt(A) / q * s + A);
}

// The sections' alpha is sin(w0) / (8 * res + 1.45), i.e. a quality of half that divisor.
double QualityOf(double res)
{
    return (8.0 * res + 1.45) * 0.5;
}

std::unique_ptr<IppBiquad> Make(int type, int sections, double freq, double res = 0.0, bool right = false)
{
    auto f = std::make_unique<IppBiquad>(right, type, sections, 24.0f);
    f->SetParam(0, freq);
    f->SetResonance(float(res));
    return f;
}

void ExpectTone(IppBiquad& f, double hz, cd expected, const char* what, double relTol = 2e-3,
                bool phase = true)
{
    SettleControls(f, 0.2);
    const Tone t = MeasureTone(f, hz);
    EXPECT_NEAR(t.gain, std::abs(expected), relTol * std::abs(expected) + 1e-6)
        << what << " at " << hz << " Hz, rate " << double(gSampleRate);
    if (phase && std::abs(expected) > 1e-3)
    {
        EXPECT_NEAR(WrapPhase(t.phase - std::arg(expected)), 0.0, 0.01)
            << what << " phase at " << hz << " Hz, rate " << double(gSampleRate);
    }
}

const double kRates[] = {32000.0, 44100.0, 48000.0, 96000.0};

// Turns flush-to-zero and denormals-are-zero off for its lifetime.
class ScopedDenormalsOn
{
  public:
#if defined(__SSE__) || defined(__x86_64__)
    ScopedDenormalsOn() : mSaved(_mm_getcsr())
    {
        _mm_setcsr(mSaved & ~0x8040u);
    }
    ~ScopedDenormalsOn()
    {
        _mm_setcsr(mSaved);
    }

  private:
    unsigned mSaved;
#endif
};
} // namespace

TEST(FreqMapping, PolynomialFollowsFiftyHzTimes400PowX)
{
    EXPECT_EQ(MapFreqHz(0.0f), 50.0);
    EXPECT_NEAR(MapFreqHz(0.5f), 1000.0, 0.01);
    // The polynomial's own error at the top is about 3e-6 relative.
    EXPECT_NEAR(MapFreqHz(1.0f), 20000.0, 0.2);
    EXPECT_NE(MapFreqHz(1.0f), 20000.0);
    double last = 0.0;
    for (int k = 0; k <= 2000; ++k)
    {
        const float x = float(k) / 2000.0f;
        const double exact = 50.0 * std::pow(400.0, double(x));
        EXPECT_NEAR(MapFreqHz(x) / exact, 1.0, 1e-5) << x;
        EXPECT_GT(MapFreqHz(x), last) << x;
        last = MapFreqHz(x);
    }
    // No step where a whole octave begins.
    for (int octave = 1; octave <= 8; ++octave)
    {
        const float edge = float(octave) / kFreqOctaves;
        EXPECT_NEAR(MapFreqHz(std::nextafter(edge, 0.0f)) / MapFreqHz(edge), 1.0, 1e-5) << octave;
    }
    EXPECT_DOUBLE_EQ(MapFreqRel(0.5f, 1.0 / 48000.0), MapFreqHz(0.5f) / 48000.0);
}

TEST(IppBiquad, CornerIsMappedFrequencyAtEveryRate)
{
    RateGuard guard;
    for (double rate : {32000.0, 44100.0, 48000.0, 88200.0, 96000.0})
    {
        SetTimeBase(rate);
        IppBiquad f(false, kBqBandpass, 1, 24.0f);
        for (float x : {0.0f, 1.0f})
        {
            f.SetParam(0, x);
            SettleControls(f, 1.0);
            f.mDirty = true; // the next block maps and redesigns even though nothing moves
            SettleControls(f, 0.0);
            const double hz = f.mFreq * rate;
            if (x == 0.0f)
                EXPECT_NEAR(hz, 50.0, 1e-6) << rate;
            else
                EXPECT_NEAR(hz, 20000.0, 0.2) << rate;
        }
        // A band-pass is in phase with its input exactly at the centre.
        f.SetParam(0, 0.0);
        ExpectTone(f, 50.0, 1.0, "band-pass centre");
        if (rate > 40000.0)
        {
            f.SetParam(0, 1.0);
            ExpectTone(f, 20000.0, 1.0, "band-pass centre", 1e-3);
        }
    }
}

TEST(IppBiquad, SecondOrderTypesMatchTheirPrototypes)
{
    RateGuard guard;
    for (double rate : kRates)
    {
        SetTimeBase(rate);
        const double x = 0.5, fc = MapFreqHz(float(x));
        for (double res : {0.0, 1.0})
        {
            const double q = QualityOf(res);
            for (double hz : {fc / 4.0, fc, fc * 1.5})
            {
                const double W = Warp(hz, fc);
                auto lp = Make(kBqLowpass, 1, x, res);
                ExpectTone(*lp, hz, Lowpass(W, q), "low-pass");
                auto other = Make(7, 1, x, res); // unlisted types are low-pass
                ExpectTone(*other, hz, Lowpass(W, q), "type 7");
                auto hp = Make(kBqHighpass, 1, x, res);
                ExpectTone(*hp, hz, Highpass(W, q), "high-pass");
                auto bp = Make(kBqBandpass, 1, x, res);
                ExpectTone(*bp, hz, Bandpass(W, q), "band-pass");
                auto ap = Make(kBqAllpass, 1, x, res);
                ExpectTone(*ap, hz, Allpass(W, q), "all-pass");
            }
        }
        // Cascades of identical sections multiply the response.
        const double q = QualityOf(0.0);
        auto lp3 = Make(kBqLowpass, 3, x);
        ExpectTone(*lp3, fc, std::pow(Lowpass(1.0, q), 3), "3-section low-pass");
        auto hp12 = Make(kBqHighpass, 12, x);
        ExpectTone(*hp12, fc * 2.0, std::pow(Highpass(Warp(fc * 2.0, fc), q), 12), "12-section high-pass");
    }
}

TEST(IppBiquad, LowHighSplitFollowsTheChannel)
{
    RateGuard guard;
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        const double x = 0.45, fc = MapFreqHz(float(x)), q = QualityOf(0.0);
        for (double hz : {fc / 8.0, fc, fc * 4.0})
        {
            const double W = Warp(hz, fc);
            auto left = Make(kBqLowHighSplit, 2, x, 0.0, false);
            ExpectTone(*left, hz, std::pow(Lowpass(W, q), 2), "split, left");
            auto right = Make(kBqLowHighSplit, 2, x, 0.0, true);
            ExpectTone(*right, hz, std::pow(Highpass(W, q), 2), "split, right");
        }
    }
}

TEST(IppBiquad, PeakSharesItsGainAmongSectionsAndAppliesMakeup)
{
    RateGuard guard;
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        const double x = 0.5, fc = MapFreqHz(float(x)), q = QualityOf(0.0);
        // Parameter 3 is 2v - 1 of the range: 0.75 is +12 dB, 0.25 is -12 dB.
        for (int sections : {1, 2})
            for (double v : {0.75, 0.25, 1.0})
            {
                const double dB = 24.0 * (2.0 * v - 1.0);
                const double A = std::pow(10.0, dB / (40.0 * sections));
                for (double hz : {fc / 3.0, fc, fc * 2.0})
                {
                    auto f = Make(kBqPeak, sections, x);
                    f->SetParam(3, v);
                    ExpectTone(*f, hz, std::pow(Peak(Warp(hz, fc), q, A), sections), "peak");
                }
            }

        // +24 dB with full makeup: the boost is taken back after the filter.
        auto boost = Make(kBqPeak, 1, x);
        boost->SetParam(3, 1.0);
        boost->SetParam(4, 1.0);
        SettleControls(*boost, 0.2);
        EXPECT_NEAR(boost->mOutGain, 1.0 / 15.8489, 1e-4);
        const double A24 = std::pow(10.0, 24.0 / 40.0);
        ExpectTone(*boost, fc, 1.0, "peak +24 dB with makeup");
        ExpectTone(*boost, fc / 40.0, Peak(Warp(fc / 40.0, fc), q, A24) / 15.8489, "peak skirt with makeup");
        // A cut is not made up.
        auto cut = Make(kBqPeak, 1, x);
        cut->SetParam(3, 0.0);
        cut->SetParam(4, 1.0);
        ExpectTone(*cut, fc, 1.0 / 15.8489, "peak -24 dB with makeup");
        // Half makeup: 0.5 / 15.85 + 0.5.
        auto half = Make(kBqPeak, 1, x);
        half->SetParam(3, 1.0);
        half->SetParam(4, 0.5);
        ExpectTone(*half, fc, 15.8489 * (0.5 / 15.8489 + 0.5), "peak +24 dB with half makeup");
    }
}

TEST(IppBiquad, ShelvesTakeALinearAmplitude)
{
    RateGuard guard;
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        const double x = 0.5, fc = MapFreqHz(float(x)), q = QualityOf(0.0);
        for (double A : {2.0, 0.5})
        {
            for (double hz : {fc / 20.0, fc, fc * 5.0})
            {
                const double W = Warp(hz, fc);
                auto low = Make(kBqLowShelf, 1, x);
                low->mGainParam = A;
                ExpectTone(*low, hz, LowShelf(W, q, A), "low shelf");
                auto high = Make(kBqHighShelf, 1, x);
                high->mGainParam = A;
                ExpectTone(*high, hz, HighShelf(W, q, A), "high shelf");
            }
            // Shelf gain A^2, corner gain A.
            EXPECT_NEAR(std::abs(LowShelf(1e-4, q, A)), A * A, 1e-3);
            EXPECT_NEAR(std::abs(LowShelf(1.0, q, A)), A, 1e-9);
        }
    }
}

// Chebyshev type I magnitude: 1 / sqrt(1 + eps^2 T_n(W)^2), ripple peaks at 0 dB, -ripple dB at
// the corner; W is the prewarped frequency relative to the corner (inverted for a high-pass).
double Chebyshev(int order, double rippleDb, double W)
{
    const double eps2 = std::pow(10.0, rippleDb / 10.0) - 1.0;
    const double t =
        std::fabs(W) <= 1.0 ? std::cos(order * std::acos(W)) : std::cosh(order * std::acosh(std::fabs(W)));
    return 1.0 / std::sqrt(1.0 + eps2 * t * t);
}

TEST(IppBiquad, ChebyshevTypesTakeTheirRippleFromTheResonance)
{
    RateGuard guard;
    for (double rate : {32000.0, 48000.0, 96000.0})
    {
        SetTimeBase(rate);
        for (double x : {0.1, 0.85})
        {
            const double fc = MapFreqHz(float(x));
            for (double res : {0.0, 1.0})
            {
                const double ripple = res * 14.0 + 1.0;
                struct Case
                {
                    int type, order;
                    bool high;
                } cases[] = {{kBqChebyLow2, 2, false},
                             {kBqChebyLow4, 4, false},
                             {kBqChebyHigh2, 2, true},
                             {kBqChebyHigh4, 4, true}};
                for (const Case& c : cases)
                    for (double ratio : {0.5, 1.0, 2.0})
                    {
                        const double hz = fc * ratio;
                        if (hz > 0.45 * rate) continue;
                        const double W = c.high ? 1.0 / Warp(hz, fc) : Warp(hz, fc);
                        auto f = Make(c.type, 1, x, res);
                        EXPECT_EQ(int(f->mSections), c.order);
                        ExpectTone(*f, hz, Chebyshev(c.order, ripple, W), "Chebyshev", 3e-3, false);
                    }
            }
        }
    }
}

TEST(IppBiquad, TypeChangeContinuesAsTheNewType)
{
    // After a change of type at a block boundary the filter goes on as a filter of the new type that
    // ran all along: no click, for single sections and cascades, whether the poles move or not.
    // Clearing the memory at the same boundary makes a step the test would see.
    RateGuard guard;
    SetTimeBase(44100.0);
    const int total = 96 * gBlockLen, boundary = 40 * gBlockLen;
    std::vector<double> x(total);
    for (int n = 0; n < total; ++n)
        x[n] =
            std::sin(2.0 * M_PI * 1000.0 / 44100.0 * n) + 0.5 * std::sin(2.0 * M_PI * 3100.0 / 44100.0 * n);
    const int targets[] = {kBqHighpass, kBqBandpass, kBqAllpass, kBqLowHighSplit, 7, kBqPeak};
    for (int sections : {1, 2})
        for (int to : targets)
        {
            auto moved = Make(kBqLowpass, sections, 0.45, 0.3);
            auto reference = Make(to, sections, 0.45, 0.3);
            auto cleared = Make(kBqLowpass, sections, 0.45, 0.3);
            for (IppBiquad* f : {moved.get(), reference.get(), cleared.get()})
                SettleControls(*f, 0.3);
            std::vector<double> a(total), b(total), c(total);
            for (int blk = 0; blk < total / gBlockLen; ++blk)
            {
                if (blk * gBlockLen == boundary)
                {
                    moved->SetType(to);
                    cleared->SetType(to);
                    cleared->Reset();
                }
                moved->mIn1 = reference->mIn1 = cleared->mIn1 = x.data() + blk * gBlockLen;
                moved->mOut1 = a.data() + blk * gBlockLen;
                reference->mOut1 = b.data() + blk * gBlockLen;
                cleared->mOut1 = c.data() + blk * gBlockLen;
                moved->Process();
                reference->Process();
                cleared->Process();
            }
            double worst = 0.0, worstCleared = 0.0;
            for (int n = boundary; n < total; ++n)
            {
                worst = std::max(worst, std::fabs(a[n] - b[n]));
                worstCleared = std::max(worstCleared, std::fabs(c[n] - b[n]));
            }
            if (to == kBqPeak)
            {
                // A +24 dB peak rings longer than the input history reaches: a faint remainder.
                EXPECT_LT(worst, 0.01 * worstCleared) << sections << " sections";
            }
            else
            {
                EXPECT_LT(worst, 1e-9) << sections << " sections to " << to;
            }
            if (to != kBqLowHighSplit && to != 7)
            {
                EXPECT_GT(worstCleared, 0.1) << sections << " sections to " << to;
            }
        }
}

TEST(IppBiquad, SlowSweepsStayContinuous)
{
    // Redesigns at block boundaries go on from the kept memory: while the corner glides, the output
    // of a sine moves no faster from sample to sample than the sine itself allows.
    RateGuard guard;
    SetTimeBase(44100.0);
    for (int type : {kBqLowpass, kBqBandpass, kBqAllpass, kBqChebyLow4})
        for (double hz : {100.0, 1000.0})
        {
            auto f = Make(type, 2, 0.3, 0.5);
            SettleControls(*f, 0.3);
            const double w = 2.0 * M_PI * hz / 44100.0;
            const int total = 44100 / gBlockLen * gBlockLen;
            std::vector<double> x(total), y(total);
            for (int n = 0; n < total; ++n)
                x[n] = std::sin(w * n);
            for (int blk = 0; blk < total / gBlockLen; ++blk)
            {
                const double ph = double(blk % 400) / 200.0; // 0.3 to 0.8 and back in 400 blocks
                f->SetParam(0, 0.3 + 0.5 * (ph < 1.0 ? ph : 2.0 - ph));
                f->mIn1 = x.data() + blk * gBlockLen;
                f->mOut1 = y.data() + blk * gBlockLen;
                f->Process();
            }
            double maxY = 0.0, maxStep = 0.0;
            for (int n = 4410; n < total; ++n)
            {
                maxY = std::max(maxY, std::fabs(y[n]));
                maxStep = std::max(maxStep, std::fabs(y[n] - y[n - 1]));
            }
            // A sine of amplitude A changes by at most 2 A sin(w / 2) per sample.
            EXPECT_LT(maxStep, 1.25 * 2.0 * maxY * std::sin(w / 2.0) + 0.005)
                << type << " at " << hz << " Hz";
        }
}

TEST(IppBiquad, OffTypeLeavesTheOutputBlockAlone)
{
    std::vector<double> in(gBlockLen), out(gBlockLen);
    for (int i = 0; i < gBlockLen; ++i)
    {
        in[i] = std::sin(0.3 * i);
        out[i] = 0.125 * i - 1.0;
    }
    const std::vector<double> before = out;
    IppBiquad off(false, kBqOff, 2, 24.0f);
    off.mIn1 = in.data();
    off.mOut1 = out.data();
    for (int b = 0; b < 4; ++b)
        off.Process();
    EXPECT_EQ(out, before);

    // A running filter switched off stops writing too.
    IppBiquad f(false, kBqLowpass, 2, 24.0f);
    f.SetParam(0, 0.3);
    f.mIn1 = in.data();
    f.mOut1 = out.data();
    f.Process();
    EXPECT_NE(out, before);
    std::vector<double> again = before;
    f.mOut1 = again.data();
    f.SetParam(3, double(kBqOff));
    f.Process();
    EXPECT_EQ(again, before);
}

TEST(IppBiquad, SectionCountsFromOrderAndParameter)
{
    const double x = 0.5, fc = MapFreqHz(float(x)), q = QualityOf(0.0);
    // SetOrder: 2x + 2 sections.
    auto f = Make(kBqLowpass, 1, x);
    f->SetOrder(1.0);
    ExpectTone(*f, fc, std::pow(Lowpass(1.0, q), 4), "order 1");
    f->SetOrder(2.0);
    ExpectTone(*f, fc, std::pow(Lowpass(1.0, q), 6), "order 2");
    // Type 25: parameter 1 picks floor(3v) + 1 sections and leaves the resonance alone.
    auto g = Make(kBqOrderFromParam, 1, x);
    g->SetParam(1, 0.7);
    ExpectTone(*g, fc, std::pow(Lowpass(1.0, q), 3), "type 25, v 0.7");
    g->SetParam(1, 1.0);
    ExpectTone(*g, fc, std::pow(Lowpass(1.0, q), 4), "type 25, v 1");
    g->SetParam(1, 0.1);
    ExpectTone(*g, fc, Lowpass(1.0, q), "type 25, v 0.1");
    // Elsewhere parameter 1 is the resonance.
    auto h = Make(kBqLowpass, 1, x);
    h->SetParam(1, 0.5);
    ExpectTone(*h, fc, Lowpass(1.0, QualityOf(0.5)), "resonance 0.5");
}

TEST(IppBiquad, MemoryKeptAcrossTypesLostOnSectionChange)
{
    // After a sine, a type change of equal section count keeps ringing on silence; a change that
    // forces another section count starts from silence.
    const double x = 0.4;
    std::vector<double> tone(4096), zeros(gBlockLen, 0.0);
    for (size_t n = 0; n < tone.size(); ++n)
        tone[n] = std::sin(0.05 * double(n));

    auto kept = Make(kBqLowpass, 2, x);
    RunBlocks(*kept, tone);
    kept->SetType(kBqBandpass);
    const std::vector<double> ring = RunBlocks(*kept, zeros);
    double level = 0.0;
    for (double v : ring)
        level = std::max(level, std::fabs(v));
    EXPECT_GT(level, 1e-3);

    for (int forcing : {kBqChebyLow4, kBqChebyHigh4, kBqVowel})
    {
        auto lost = Make(kBqLowpass, 2, x);
        RunBlocks(*lost, tone);
        lost->SetType(forcing);
        for (double v : RunBlocks(*lost, zeros))
            ASSERT_EQ(v, 0.0) << forcing;
    }
    // Chebyshev order 2 already has two sections: nothing is cleared.
    auto cheb = Make(kBqLowpass, 2, x);
    RunBlocks(*cheb, tone);
    cheb->SetType(kBqChebyLow2);
    level = 0.0;
    for (double v : RunBlocks(*cheb, zeros))
        level = std::max(level, std::fabs(v));
    EXPECT_GT(level, 1e-3);
}

TEST(IppBiquad, FrequencyGlidesOncePerTwoBlocks)
{
    RateGuard guard;
    SetTimeBase(44100.0);
    auto f = Make(kBqLowpass, 1, 0.2);
    SettleControls(*f, 1.0);
    f->SetParam(0, 0.8);
    // The control one-pole runs once per update with the sample-rate coefficient of 1 ms.
    const double a = std::exp(-2.0 * M_PI / (0.001 * 44100.0));
    std::vector<double> zeros(gBlockLen, 0.0), out(gBlockLen);
    f->mIn1 = zeros.data();
    f->mOut1 = out.data();
    double y = 0.2f, lastRel = f->mFreq;
    int updates = 0, lastUpdateBlock = -1;
    for (int block = 0; block < 60; ++block)
    {
        f->Process();
        if (f->mFreq == lastRel) continue;
        if (lastUpdateBlock >= 0)
        {
            EXPECT_EQ(block - lastUpdateBlock, 2) << block;
        }
        lastUpdateBlock = block;
        lastRel = f->mFreq;
        y = 0.8f + (y - 0.8f) * a;
        ++updates;
        EXPECT_NEAR(f->mFreq * 44100.0 / MapFreqHz(float(y)), 1.0, 2e-6) << "update " << updates;
        if (updates == 1)
        {
            // The first step is a fast move: the Chebyshev ripple is scaled down by it.
            const double d = (0.2f - y) * 5.0;
            EXPECT_NEAR(f->mRippleScale, 0.01 / (d * d), 1e-6);
        }
    }
    EXPECT_GE(updates, 25);
    // The sweep's time constant is -1 / ln(a) updates of two blocks: about ten milliseconds.
    EXPECT_NEAR(-1.0 / std::log(a) * 2 * gBlockLen / 44.1, 10.0, 1.0);
}

TEST(IppBiquad, FirstDelayElementNeverSubnormal)
{
    // Subnormals must be able to appear for this to mean anything: flush-to-zero off meanwhile.
    const ScopedDenormalsOn denormalsOn;
    auto f = Make(kBqLowpass, 1, 0.9);
    std::vector<double> in(gBlockLen, 0.0), out(gBlockLen);
    in[0] = 1.0;
    f->mIn1 = in.data();
    f->mOut1 = out.data();
    f->Process();
    in[0] = 0.0;
    for (int block = 0; block < 20000; ++block)
    {
        f->Process();
        ASSERT_NE(std::fpclassify(f->mDelay[0]), FP_SUBNORMAL) << block;
    }
    EXPECT_EQ(f->mDelay[0], 0.0);
}

TEST(IppBiquad, VowelFormantsPeakWhereTheTableSaysAndInterpolate)
{
    RateGuard guard;
    for (double rate : {44100.0, 48000.0})
    {
        SetTimeBase(rate);
        const double A = std::pow(10.0, 12.0 / 40.0);
        // Three peaks of quality 5 (alpha = 0.1 sin w0), one per formant, each +12 dB at gain 0.5.
        auto expected = [&](const double(&formants)[3], double hz)
        {
            cd h = 1.0;
            for (double fk : formants)
                h *= Peak(Warp(hz, fk), 5.0, A);
            return h;
        };
        auto vowel = [&](double control)
        {
            auto f = Make(kBqVowel, 1, control);
            f->SetParam(3, 0.5); // gain 0.5 of the 24 dB range
            return f;
        };
        const double vowel0[3] = {270.0, 2290.0, 3010.0};
        for (double hz : {270.0, 2290.0, 3010.0, 600.0})
        {
            auto f = vowel(0.0);
            ExpectTone(*f, hz, expected(vowel0, hz), "vowel 0");
        }
        for (double fk : vowel0)
        {
            auto f = vowel(0.0);
            const double atPeak = (SettleControls(*f, 0.1), MeasureTone(*f, fk).gain);
            EXPECT_GT(atPeak, MeasureTone(*f, fk * 0.92).gain) << fk;
            EXPECT_GT(atPeak, MeasureTone(*f, fk * 1.08).gain) << fk;
        }
        // Control 0.25: half way from vowel 0 to vowel 1; control 1: vowel 2.
        const double between[3] = {400.0, 2065.0, 2745.0};
        for (double hz : between)
        {
            auto f = vowel(0.25);
            ExpectTone(*f, hz, expected(between, hz), "vowel 0.5");
        }
        const double vowel2[3] = {300.0, 870.0, 2240.0};
        for (double hz : vowel2)
        {
            auto f = vowel(1.0);
            ExpectTone(*f, hz, expected(vowel2, hz), "vowel 2");
        }
        // Full makeup divides by the boost of one formant, without limit.
        auto made = vowel(0.0);
        made->SetParam(4, 1.0);
        ExpectTone(*made, 270.0, expected(vowel0, 270.0) / (A * A), "vowel with makeup");
    }
}

TEST(IppBiquad, VowelGroupIsSharedByAllVowelFilters)
{
    auto first = Make(kBqVowel, 1, 0.0);
    first->SetParam(3, 0.5);
    auto second = Make(kBqVowel, 1, 0.0);
    second->SetParam(3, 0.5);
    // Group 2 (floor(3 * 0.7)) picked on the second filter moves the first one at its next design.
    second->SetParam(1, 0.7);
    first->SetParam(4, 0.0);
    SettleControls(*first, 0.1);
    const double at520 = MeasureTone(*first, 520.0).gain;
    const double at270 = MeasureTone(*first, 270.0).gain;
    EXPECT_NEAR(20.0 * std::log10(at520), 12.0, 0.5);
    EXPECT_LT(20.0 * std::log10(at270), 6.0);
    // Group 3 by the top of the range: vowel 0 is 660, 1720, 2410 Hz.
    first->SetParam(1, 1.0);
    SettleControls(*first, 0.1);
    EXPECT_NEAR(20.0 * std::log10(MeasureTone(*first, 660.0).gain), 12.0, 0.5);
}

TEST(IppBiquad, SpreadAndModulationMoveTheCorner)
{
    RateGuard guard;
    SetTimeBase(48000.0);
    // Spread 0.2 moves the two channels by 0.2 * |0.2| in opposite directions.
    for (bool right : {false, true})
    {
        auto f = Make(kBqBandpass, 1, 0.5, 0.0, right);
        f->SetParam(2, 0.2);
        ExpectTone(*f, MapFreqHz(float(right ? 0.46 : 0.54)), 1.0, "spread centre");
    }
    // Input 0 adds source * depth; input 2 adds it with the channel's sign; the sum is clamped.
    const double source = 0.5, depth = 0.2, big = 4.0;
    for (bool right : {false, true})
    {
        auto f = Make(kBqBandpass, 1, 0.5, 0.0, right);
        f->SetModSource(0, &source);
        f->SetModDepth(0, &depth);
        ExpectTone(*f, MapFreqHz(0.6f), 1.0, "input 0");
        f->SetModSource(2, &source);
        f->SetModDepth(2, &depth);
        ExpectTone(*f, MapFreqHz(right ? 0.5f : 0.7f), 1.0, "inputs 0 and 2");
        f->SetModDepth(0, &big);
        ExpectTone(*f, MapFreqHz(1.0f), 1.0, "clamped at the top", 2e-3);
    }
    // Input 1 adds to the resonance, input 3 to the peak gain (bounded to -1..1).
    const double fc = MapFreqHz(0.5f);
    auto r = Make(kBqLowpass, 1, 0.5, 0.2);
    r->SetModSource(1, &source);
    r->SetModDepth(1, &depth);
    ExpectTone(*r, fc, Lowpass(1.0, QualityOf(0.3)), "resonance input");
    auto p = Make(kBqPeak, 1, 0.5);
    p->SetParam(3, 0.75);
    p->SetModSource(3, &source);
    p->SetModDepth(3, &big);
    ExpectTone(*p, fc, std::pow(10.0, 24.0 / 20.0), "gain input, bounded");
}

TEST(QLMFilter, ChangeTestReportsOneChangeAtATime)
{
    // Frequency and resonance moved in the same update: two redesigns in successive updates.
    IppBiquad f(false, kBqLowpass, 1, 24.0f);
    f.mFreq = 0.25;
    f.mRes = 0.5;
    f.mGain = f.mGainLast;
    EXPECT_TRUE(f.HasChanged());
    EXPECT_EQ(f.mFreqLast, 0.25);
    EXPECT_NE(f.mResLast, 0.5);
    EXPECT_TRUE(f.HasChanged());
    EXPECT_EQ(f.mResLast, 0.5);
    EXPECT_FALSE(f.HasChanged());
    f.mGain = f.mGainLast + 0.1;
    EXPECT_TRUE(f.HasChanged());
    EXPECT_FALSE(f.HasChanged());
}

TEST(IppFixBiquad, BandLimitRedesignedForTheRate)
{
    RateGuard guard;
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        IppFixBiquad f;
        auto gainAt = [&](double hz)
        {
            const int total = int(0.3 * rate) / gBlockLen * gBlockLen;
            std::vector<double> y(total);
            const double w = 2.0 * M_PI * hz / rate;
            for (int n = 0; n < total; ++n)
                y[n] = std::sin(w * n);
            for (int blk = 0; blk < total / gBlockLen; ++blk)
                f.RunI(y.data() + blk * gBlockLen, gBlockLen);
            return FitTone(y, w, size_t(total / 2), size_t(total / 2), 1.0).gain;
        };
        // Built as Butterworth order 4 at 0.49 of the rate: flat in the audio band.
        EXPECT_NEAR(gainAt(1000.0), 1.0, 1e-6);
        EXPECT_NEAR(20.0 * std::log10(gainAt(0.49 * rate)), -3.0103, 0.05);
        // The master band limit: order 12 at 15 kHz.
        f.Design(12, 15000.0 / rate);
        EXPECT_NEAR(20.0 * std::log10(gainAt(15000.0)), -3.0103, 0.05);
        EXPECT_NEAR(gainAt(1000.0), 1.0, 1e-6);
        // Butterworth: 12 * 20 log10 of the prewarped frequency ratio, one octave up.
        if (rate > 60000.0)
        {
            const double W = std::tan(M_PI * 30000.0 / rate) / std::tan(M_PI * 15000.0 / rate);
            EXPECT_NEAR(20.0 * std::log10(gainAt(30000.0)), -10.0 * std::log10(1.0 + std::pow(W, 24.0)), 0.1);
        }
    }
}
