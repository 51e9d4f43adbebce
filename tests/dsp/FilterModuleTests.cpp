#include "common/FilterMeasure.h"
#include "common/Measure.h"
#include "dsp/FreqMapping.h"
#include "dsp/IppBiquad.h"
#include "dsp/QLMSVF.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// The biquad and state-variable filter modules are measured by steady tones against the analogue
// prototypes they realise under the prewarped bilinear map, at several rates.
using namespace filtertest;

namespace
{
using cd = std::complex<double>;
using Response = std::function<cd(double W, double q)>;

// Second-order prototypes at the analogue frequency W and quality q.
const Response kLow = [](double W, double q) { return 1.0 / cd(1.0 - W * W, W / q); };
const Response kHigh = [](double W, double q) { return -W * W / cd(1.0 - W * W, W / q); };
const Response kBand = [](double W, double q) { return cd(0.0, W / q) / cd(1.0 - W * W, W / q); };
const Response kAll = [](double W, double q) { return cd(1.0 - W * W, -W / q) / cd(1.0 - W * W, W / q); };
// Peak with amplitude A = 10^(dB / 40) per section (centre gain A^2), times a makeup scale.
Response PeakOf(double dB, int sections, double scale = 1.0)
{
    const double A = std::pow(10.0, dB / (40.0 * sections));
    return [=](double W, double q)
    { return scale * cd(1.0 - W * W, W * A / q) / cd(1.0 - W * W, W / (A * q)); };
}
// Shelves with amplitude A: gain A^2 on the shelf, A at the corner.
Response ShelfOf(double A, bool high)
{
    return [=](double W, double q)
    {
        const cd s(0.0, W), k = std::sqrt(A) / q * s;
        return high ? A * (A * s * s + k + 1.0) / (s * s + k + A)
                    : A * (s * s + k + A) / (A * s * s + k + 1.0);
    };
}
// Chebyshev type I magnitude, ripple peaks at 0 dB, -ripple dB at the corner; a high-pass sees 1 / W.
Response ChebyOf(int order, double rippleDb, bool high)
{
    return [=](double W, double)
    {
        const double x = high ? 1.0 / W : W, eps2 = std::pow(10.0, rippleDb / 10.0) - 1.0;
        const double t = x <= 1.0 ? std::cos(order * std::acos(x)) : std::cosh(order * std::acosh(x));
        return cd(1.0 / std::sqrt(1.0 + eps2 * t * t));
    };
}
const auto Gain = [](double g) { return [g](IppBiquad& f) { f.mGainParam = g; }; };
std::function<void(IppBiquad&)> Params(std::vector<std::pair<int, double>> p)
{
    return [p](IppBiquad& f)
    {
        for (const auto& [i, v] : p)
            f.SetParam(i, v);
    };
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

// Gain (and phase, where there is enough of the tone to tell it) of a steady tone of amplitude amp.
void ExpectTone(DSPShell& f, double hz, cd expected, const std::string& what, double relTol = 2e-3,
                bool phase = true, double amp = 1.0, double floor = 1e-6)
{
    SettleControls(f, 0.2);
    const Tone t = MeasureTone(f, hz, amp);
    EXPECT_NEAR(t.gain, std::abs(expected), relTol * std::abs(expected) + floor)
        << what << " at " << hz << " Hz, rate " << double(gSampleRate);
    const double phaseError =
        phase && std::abs(expected) > 10.0 * floor ? WrapPhase(t.phase - std::arg(expected)) : 0.0;
    EXPECT_NEAR(phaseError, 0.0, 0.01) << what << " phase at " << hz << " Hz";
}

// The state-variable filter: trapezoidal integrators with g = tan(pi fc / rate) realise the
// analogue filter at the prewarped W; damping 1 - k gives the quality 1 / (1 - k). Its band-pass
// peaks at q.
const auto SvfBand = [](double W, double q) { return cd(0.0, W) * kLow(W, q); };
// Quality of the saturating pass at small signals: k = (1.1 - 0.1 f^3) * resonance.
const auto SaturatingQ = [](double f, double res) { return 1.0 / (1.0 - (1.1 - 0.1 * f * f * f) * res); };

std::unique_ptr<QLMSVF> MakeSvf(int type, double freq, double res)
{
    auto f = std::make_unique<QLMSVF>(false, type);
    f->SetParam(0, freq);
    f->SetParam(1, res);
    SettleControls(*f, 0.3);
    return f;
}
} // namespace

TEST(FreqMapping, PolynomialFollowsFiftyHzTimes400PowX)
{
    // On a fine grid, and on both sides of where each whole octave begins (no step there).
    const auto expectLaw = [](float x)
    { EXPECT_NEAR(MapFreqHz(x) / (50.0 * std::pow(400.0, double(x))), 1.0, 1e-5) << x; };
    EXPECT_EQ(MapFreqHz(0.0f), 50.0);
    for (int k = 0; k <= 2000; ++k)
        expectLaw(float(k) / 2000.0f);
    for (int octave = 1; octave <= 8; ++octave)
        expectLaw(float(octave) / kFreqOctaves),
            expectLaw(std::nextafter(float(octave) / kFreqOctaves, 0.0f));
}

TEST(IppBiquad, TypesMatchTheirPrototypesAtEveryRate)
{
    // One row per type and set-up: the expected response of one section at the prewarped W, to the
    // power of the section count the row should produce.
    struct Row
    {
        const char* name;
        int type, sections;
        double res;
        bool right;
        int power;
        Response h;
        std::function<void(IppBiquad&)> setUp = nullptr;
        bool magnitudeOnly = false;
    };
    const std::vector<Row> rows = {
        {"low-pass", kBqLowpass, 1, 0.0, false, 1, kLow},
        {"unlisted type 7 is a low-pass", 7, 1, 1.0, false, 1, kLow},
        {"high-pass", kBqHighpass, 1, 1.0, false, 1, kHigh},
        {"band-pass", kBqBandpass, 1, 0.0, false, 1, kBand},
        {"all-pass", kBqAllpass, 1, 1.0, false, 1, kAll},
        {"12-section high-pass", kBqHighpass, 12, 0.0, false, 12, kHigh},
        {"split, left low", kBqLowHighSplit, 2, 0.0, false, 2, kLow},
        {"split, right high", kBqLowHighSplit, 2, 0.0, true, 2, kHigh},
        {"order 1: four sections", kBqLowpass, 1, 0.0, false, 4, kLow, [](IppBiquad& f) { f.SetOrder(1.0); }},
        {"type 25, v 0.7: three sections", kBqOrderFromParam, 1, 0.0, false, 3, kLow, Params({{1, 0.7}})},
        {"param 1: resonance", kBqLowpass, 1, 0.0, false, 1,
         [](double W, double) { return kLow(W, QualityOf(0.5)); }, Params({{1, 0.5}})},
        {"peak -12 dB shared by 2", kBqPeak, 2, 0.0, false, 2, PeakOf(-12, 2), Params({{3, 0.25}})},
        // Makeup gain brings a boost back down (full: by 24 dB), never a cut up.
        {"+24 full makeup", kBqPeak, 1, 0.0, false, 1, PeakOf(24, 1, 1 / 15.8489), Params({{3, 1}, {4, 1}})},
        {"-24 no makeup", kBqPeak, 1, 0.0, false, 1, PeakOf(-24, 1), Params({{3, 0}, {4, 1}})},
        {"+24 half", kBqPeak, 1, 0.0, false, 1, PeakOf(24, 1, 0.5 / 15.8489 + 0.5),
         Params({{3, 1}, {4, 0.5}})},
        {"low shelf x2", kBqLowShelf, 1, 0.0, false, 1, ShelfOf(2.0, false), Gain(2.0)},
        {"high shelf x0.5", kBqHighShelf, 1, 0.0, false, 1, ShelfOf(0.5, true), Gain(0.5)},
        // The Chebyshev types take their ripple from the resonance: 1 + 14 res dB.
        {"Chebyshev low 2", kBqChebyLow2, 1, 0.0, false, 1, ChebyOf(2, 1, false), nullptr, true},
        {"Chebyshev low 4", kBqChebyLow4, 1, 1.0, false, 1, ChebyOf(4, 15, false), nullptr, true},
        {"Chebyshev high 2", kBqChebyHigh2, 1, 1.0, false, 1, ChebyOf(2, 15, true), nullptr, true},
    };
    RateGuard guard;
    for (double rate : {32000.0, 44100.0, 96000.0})
    {
        SetTimeBase(rate);
        const double x = 0.5, fc = MapFreqHz(float(x));
        for (const Row& r : rows)
            for (double hz : {fc / 5.0, fc, fc * 2.0})
            {
                auto f = Make(r.type, r.sections, x, r.res, r.right);
                if (r.setUp) r.setUp(*f);
                ExpectTone(*f, hz, std::pow(r.h(Warp(hz, fc), QualityOf(r.res)), r.power), r.name, 2e-3,
                           !r.magnitudeOnly);
            }
        // The ends of the control range: a band-pass is in phase at its centre exactly there.
        for (float end : {0.0f, 1.0f})
        {
            auto f = Make(kBqBandpass, 1, end);
            if (MapFreqHz(end) < 0.45 * rate) ExpectTone(*f, MapFreqHz(end), 1.0, "band-pass centre", 1e-3);
        }
    }
}

TEST(IppBiquad, TypeChangeContinuesAsTheNewTypeAndOffStopsWriting)
{
    // After a change of type at a block boundary the filter goes on as a filter of the new type that
    // ran all along (no click); clearing the memory at the same boundary makes a step the test sees.
    // A change that forces another section count starts from silence.
    std::vector<double> head(40 * gBlockLen), tail(56 * gBlockLen);
    for (size_t n = 0; n < head.size() + tail.size(); ++n)
        (n < head.size() ? head[n] : tail[n - head.size()]) =
            std::sin(2.0 * M_PI * 1000.0 / 44100.0 * n) + 0.5 * std::sin(2.0 * M_PI * 3100.0 / 44100.0 * n);
    for (int sections : {1, 2})
        for (int to : {kBqHighpass, kBqBandpass, kBqAllpass, kBqPeak})
        {
            auto moved = Make(kBqLowpass, sections, 0.45, 0.3),
                 cleared = Make(kBqLowpass, sections, 0.45, 0.3), reference = Make(to, sections, 0.45, 0.3);
            for (IppBiquad* f : {moved.get(), reference.get(), cleared.get()})
            {
                SettleControls(*f, 0.3);
                RunBlocks(*f, head);
            }
            moved->SetType(to);
            cleared->SetType(to);
            cleared->Reset();
            const std::vector<double> a = RunBlocks(*moved, tail), b = RunBlocks(*reference, tail),
                                      c = RunBlocks(*cleared, tail);
            double worst = 0.0, worstCleared = 0.0;
            for (size_t n = 0; n < a.size(); ++n)
                worst = std::max(worst, std::fabs(a[n] - b[n])),
                worstCleared = std::max(worstCleared, std::fabs(c[n] - b[n]));
            // A +24 dB peak rings longer than the input history reaches: a faint remainder.
            EXPECT_TRUE(worst < (to == kBqPeak ? 0.01 * worstCleared : 1e-9) && worstCleared > 0.1)
                << sections << " sections to " << to << ": " << worst << " " << worstCleared;
        }
    std::vector<double> zeros(gBlockLen, 0.0);
    for (int forcing : {kBqChebyLow4, kBqChebyHigh4, kBqVowel})
    {
        auto lost = Make(kBqLowpass, 2, 0.4);
        RunBlocks(*lost, head);
        lost->SetType(forcing);
        EXPECT_EQ(testmeasure::Rms(RunBlocks(*lost, zeros)), 0.0) << forcing;
    }
    // A reset forgets the signal, with or without a redesign before the next block.
    for (const bool retyped : {false, true})
    {
        auto reset = Make(kBqLowpass, 2, 0.4);
        RunBlocks(*reset, head);
        if (retyped) reset->SetType(kBqHighpass);
        reset->Reset();
        EXPECT_EQ(testmeasure::Rms(RunBlocks(*reset, zeros)), 0.0) << retyped;
    }
    // Switched off, a running filter stops writing: the output block keeps what the caller left.
    auto off = Make(kBqLowpass, 2, 0.3);
    RunBlocks(*off, head);
    off->SetParam(3, double(kBqOff));
    std::vector<double> out(gBlockLen, -1.0);
    off->mIn1 = head.data();
    off->mOut1 = out.data();
    off->Process();
    EXPECT_EQ(out, std::vector<double>(gBlockLen, -1.0));
}

TEST(IppBiquad, FrequencyGlidesOncePerTwoBlocksOverTenMilliseconds)
{
    auto f = Make(kBqLowpass, 1, 0.2);
    SettleControls(*f, 1.0);
    f->SetParam(0, 0.8);
    // The control one-pole runs once per update with the coefficient of 1 ms at the sample rate;
    // its time constant in updates of two blocks is about ten milliseconds.
    const double a = std::exp(-2.0 * M_PI / (0.001 * 44100.0));
    double y = 0.2f, lastRel = f->mFreq;
    int updates = 0, lastUpdateBlock = -1;
    for (int block = 0; block < 60; ++block)
    {
        RunBlocks(*f, std::vector<double>(gBlockLen, 0.0));
        if (f->mFreq == lastRel) continue;
        EXPECT_TRUE(lastUpdateBlock < 0 || block - lastUpdateBlock == 2) << block;
        lastUpdateBlock = block, lastRel = f->mFreq, ++updates;
        y = 0.8f + (y - 0.8f) * a;
        EXPECT_NEAR(f->mFreq * 44100.0 / MapFreqHz(float(y)), 1.0, 2e-6) << "update " << updates;
    }
    EXPECT_GE(updates, 25);
}

TEST(IppBiquad, ModulationMovesTheCorner)
{
    RateGuard guard;
    SetTimeBase(48000.0);
    // Input 0 adds source * depth, input 2 adds it with the channel's sign, the sum is clamped.
    // (The spread's square law and channel sign are pinned by the golden renders.)
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
}

TEST(QLMSVF, OutputsFollowTheirPrototypes)
{
    // One row per type: resonance, and the response as a function of W and the saturating Q.
    struct Row
    {
        int type;
        double res;
        Response h;
    };
    const std::vector<Row> rows = {
        {2, 0.7, [](double W, double) { return kLow(W, 1.0); }}, // linear types ignore the resonance
        {5, 0.7, [](double W, double) { return kLow(W, 1.0); }},
        {8, 0.7, [](double W, double) { return kLow(W, 1.0); }},
        {1, 0.0, [](double W, double) { return kLow(W, 1.0); }},
        {4, 0.0, [](double W, double) { return kHigh(W, 1.0); }},
        {6, 0.0, [](double W, double) { return SvfBand(W, 1.0); }},
        {10, 0.0, [](double W, double) { return 1.0 + SvfBand(W, 1.0); }},
        {1, 0.8, [](double W, double q) { return kLow(W, q); }}, // the saturating pass's Q
        {4, 0.4, [](double W, double q) { return kHigh(W, q); }},
        // Two-pass types: the saturating pass, then a linear one.
        {0, 0.5, [](double W, double q) { return kLow(W, q) * kLow(W, 1.0); }},
        {3, 0.5, [](double W, double q) { return kHigh(W, q) * kHigh(W, 1.0); }},
        {7, 0.5, [](double W, double q) { return SvfBand(W, q) * SvfBand(W, 1.0); }},
        {9, 0.5,
         [](double W, double q) { return (kLow(W, q) + kHigh(W, q)) * (kLow(W, 1.0) + kHigh(W, 1.0)); }},
    };
    RateGuard guard;
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        for (double x : {0.2, 0.5, 0.95})
        {
            const double fc = MapFreqHz(float(x));
            for (const Row& r : rows)
                for (double hz : {fc / 4.0, fc, fc * 2.0})
                {
                    if (hz > 0.45 * rate) continue;
                    // Small signals keep the saturating stage in its linear range.
                    ExpectTone(*MakeSvf(r.type, x, r.res), hz, r.h(Warp(hz, fc), SaturatingQ(x, r.res)),
                               "SVF type " + std::to_string(r.type), 3e-3, true, 1e-4, 1e-5);
                }
        }
    }
}

TEST(QLMSVF, FullResonanceIsHeldByTheSaturationAndResetClearsIt)
{
    // At full resonance the saturating pass has negative damping: a loud sine must not grow, a kick
    // rings on by itself within bounds, and just below the edge the same kick dies away. Reset
    // silences the ringing at once.
    const double fc = MapFreqHz(0.5f);
    const int total = 2 * 44100 / gBlockLen * gBlockLen;
    for (int type : {1, 4, 6, 0, 10})
        for (double hz : {fc / 4.0, fc, fc * 2.0})
        {
            auto f = MakeSvf(type, 0.5, 1.0);
            std::vector<double> in(total);
            for (int n = 0; n < total; ++n)
                in[n] = 10.0 * std::sin(2.0 * M_PI * hz / 44100.0 * n);
            const std::vector<double> y = RunBlocks(*f, in);
            const double first = testmeasure::Peak(y, 0, total / 2), second = testmeasure::Peak(y, total / 2);
            EXPECT_TRUE(std::isfinite(testmeasure::Rms(y)) && second < std::min(15.0, 1.05 * first) &&
                        second > 0.1)
                << type << " at " << hz << ": " << second;
            f->Reset();
            EXPECT_EQ(testmeasure::Rms(RunBlocks(*f, std::vector<double>(256, 0.0))), 0.0) << type;
        }
    std::vector<double> kick(total / 2, 0.0);
    kick[0] = 1.0;
    auto ringing = MakeSvf(1, 0.5, 1.0), damped = MakeSvf(1, 0.5, 0.85);
    const double late = testmeasure::Peak(RunBlocks(*ringing, kick), kick.size() / 2);
    EXPECT_TRUE(late > 0.01 && late < 2.0 && std::fabs(RunBlocks(*damped, kick).back()) < 1e-6) << late;
}
