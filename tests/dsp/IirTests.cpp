#include "dsp/Iir.h"
#include "dsp/Vec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

// The recursive filters are checked by what they do to signals: gains at chosen frequencies
// against the closed-form responses of Butterworth and Chebyshev filters under the bilinear map,
// decay of impulse responses, levels of sines that went through IirRun, and the handling of the
// filter memory that lets a module redesign at block rate.
namespace
{
constexpr long double kPi = 3.141592653589793238462643383279502884L;
constexpr int kBlock = 32;
const double kRates[] = {32000.0, 44100.0, 48000.0, 96000.0};

// A filter as the modules hold one: working memory sized once, taps, memory between blocks.
struct Filter
{
    Filter()
    {
        int bytes = 0;
        IirStateSize(kIirMaxOrder, &bytes);
        work = VecAllocBytes(bytes);
    }
    ~Filter() { VecFree(work); }
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;

    // The modules' sequence: design into the taps with this working memory, then init from it.
    void Design(bool highpass, double relFreq, double ripple, int n, int kind)
    {
        order = n;
        if (highpass)
            IirDesignHighpass(relFreq, ripple, n, taps, kind, work);
        else
            IirDesignLowpass(relFreq, ripple, n, taps, kind, work);
        IirInit(&state, taps, n, delay, work);
    }
    // Taps that this working memory has not seen: the filter comes from the taps alone.
    void InitFromTaps(const double* t, int n)
    {
        order = n;
        std::copy(t, t + 2 * (n + 1), taps);
        unsigned char* fresh = VecAllocBytes(bytesFor());
        VecFree(work);
        work = fresh;
        IirInit(&state, taps, n, delay, work);
    }
    // One block the way the modules run it: load the memory, run, store it back.
    void Block(const double* src, double* dst, int n)
    {
        IirSetDelay(state, delay);
        IirRun(src, dst, n, state);
        IirGetDelay(state, delay);
    }
    std::vector<double> Run(const std::vector<double>& x)
    {
        std::vector<double> y(x.size());
        for (size_t i = 0; i < x.size(); i += kBlock)
            Block(x.data() + i, y.data() + i, static_cast<int>(std::min<size_t>(kBlock, x.size() - i)));
        return y;
    }
    static int bytesFor()
    {
        int bytes = 0;
        IirStateSize(kIirMaxOrder, &bytes);
        return bytes;
    }

    unsigned char* work = nullptr;
    IirState* state = nullptr;
    int order = 0;
    double taps[6 * kIirMaxOrder] = {};
    double delay[2 * kIirMaxOrder] = {};
};

// Gain in dB of direct taps at a relative frequency, evaluated in long double.
long double TapsDb(const double* taps, int order, long double f)
{
    const std::complex<long double> w = std::polar(1.0L, -2.0L * kPi * f);
    std::complex<long double> b = 0.0L, a = 0.0L, wk = 1.0L;
    for (int i = 0; i <= order; ++i)
    {
        b += static_cast<long double>(taps[i]) * wk;
        a += static_cast<long double>(taps[order + 1 + i]) * wk;
        wk *= w;
    }
    return 20.0L * std::log10(std::abs(b / a));
}

// Normalised analogue frequency of a digital one under the pre-warped bilinear map; a high-pass
// sees the inverted axis.
long double Omega(long double f, long double fc, bool highpass)
{
    const long double r = std::tan(kPi * f) / std::tan(kPi * fc);
    return highpass ? 1.0L / r : r;
}

long double ButterworthDb(long double f, long double fc, int order, bool highpass)
{
    return -10.0L * std::log10(1.0L + std::pow(Omega(f, fc, highpass), 2.0L * order));
}

long double ChebyshevT(int order, long double x)
{
    return std::fabs(x) <= 1.0L ? std::cos(order * std::acos(x))
                                : std::cosh(order * std::acosh(std::fabs(x)));
}

// Chebyshev type I with its ripple peaks at 0 dB: 1 / (1 + e^2 T(W)^2).
long double ChebyshevDb(long double f, long double fc, int order, double ripple, bool highpass)
{
    const long double e2 = std::pow(10.0L, ripple / 10.0L) - 1.0L;
    const long double t = ChebyshevT(order, Omega(f, fc, highpass));
    return -10.0L * std::log10(1.0L + e2 * t * t);
}

// Digital frequency of a normalised analogue one (inverse of Omega).
long double DigitalOf(long double omega, long double fc, bool highpass)
{
    const long double k = std::tan(kPi * fc);
    if (highpass) return omega == 0.0L ? 0.5L : std::atan(k / omega) / kPi;
    return std::atan(omega * k) / kPi;
}

// Level of a sine that went through the filter: least-squares fit of sin and cos over a window
// after the filter has settled (exact for a pure tone, whatever the number of cycles).
double SineLevelDb(Filter& flt, double f, int settle, int window)
{
    std::vector<double> x(static_cast<size_t>(settle + window));
    for (size_t n = 0; n < x.size(); ++n)
        x[n] = std::sin(2.0 * static_cast<double>(kPi) * f * static_cast<double>(n));
    const std::vector<double> y = flt.Run(x);
    long double ss = 0, cc = 0, sc = 0, ys = 0, yc = 0;
    for (size_t n = static_cast<size_t>(settle); n < y.size(); ++n)
    {
        const long double ph = 2.0L * kPi * f * static_cast<long double>(n);
        const long double s = std::sin(ph), c = std::cos(ph);
        ss += s * s;
        cc += c * c;
        sc += s * c;
        ys += y[n] * s;
        yc += y[n] * c;
    }
    const long double det = ss * cc - sc * sc;
    const long double a = (ys * cc - yc * sc) / det;
    const long double b = (yc * ss - ys * sc) / det;
    return static_cast<double>(10.0L * std::log10(a * a + b * b));
}

// Runs an impulse through the filter until a stretch of `quiet` samples stays below `floor` times
// the peak. Returns the samples it took, or -1 if the response does not die within `limit`.
long ImpulseDecay(Filter& flt, long limit, std::vector<double>* keep = nullptr, double floor = 1e-9,
                  long quiet = 4096)
{
    double x[kBlock] = {1.0}, y[kBlock];
    double peak = 0.0, stretch = 0.0;
    long stretchStart = 0;
    for (long n = 0; n < limit; n += kBlock)
    {
        flt.Block(x, y, kBlock);
        x[0] = 0.0;
        for (int i = 0; i < kBlock; ++i)
        {
            if (!std::isfinite(y[i])) return -1;
            peak = std::max(peak, std::fabs(y[i]));
            stretch = std::max(stretch, std::fabs(y[i]));
        }
        if (keep != nullptr) keep->insert(keep->end(), y, y + kBlock);
        if (n + kBlock - stretchStart >= quiet)
        {
            if (stretch < floor * peak) return n + kBlock;
            stretch = 0.0;
            stretchStart = n + kBlock;
        }
    }
    return -1;
}

// Gain in dB at relative frequency f of a (decayed) impulse response.
double ResponseDb(const std::vector<double>& h, double f)
{
    double re = 0.0, im = 0.0;
    for (size_t start = 0; start < h.size(); start += 256)
    {
        // The rotation restarts from an exact phase every 256 samples, so it cannot drift.
        const long double ph0 = -2.0L * kPi * f * static_cast<long double>(start);
        double wr = static_cast<double>(std::cos(ph0)), wi = static_cast<double>(std::sin(ph0));
        const double sr = std::cos(-2.0 * static_cast<double>(kPi) * f),
                     si = std::sin(-2.0 * static_cast<double>(kPi) * f);
        const size_t end = std::min(h.size(), start + 256);
        for (size_t n = start; n < end; ++n)
        {
            re += h[n] * wr;
            im += h[n] * wi;
            const double t = wr * sr - wi * si;
            wi = wr * si + wi * sr;
            wr = t;
        }
    }
    return 10.0 * std::log10(re * re + im * im);
}

// Reference: y[n] = (sum b_k x[n-k] - sum_{k>0} a_k y[n-k]) / a0 in long double.
std::vector<double> DirectReference(const double* taps, int order, const std::vector<double>& x)
{
    std::vector<long double> y(x.size(), 0.0L);
    for (size_t n = 0; n < x.size(); ++n)
    {
        long double acc = 0.0L;
        for (int k = 0; k <= order && static_cast<size_t>(k) <= n; ++k)
        {
            acc += static_cast<long double>(taps[k]) * x[n - k];
            if (k > 0) acc -= static_cast<long double>(taps[order + 1 + k]) * y[n - k];
        }
        y[n] = acc / taps[order + 1];
    }
    return std::vector<double>(y.begin(), y.end());
}

std::vector<double> Noise(size_t n, unsigned seed)
{
    std::vector<double> x(n);
    unsigned s = seed;
    for (double& v : x)
    {
        s = s * 1664525u + 1013904223u;
        v = static_cast<double>(s >> 8) / static_cast<double>(1u << 24) - 0.5;
    }
    return x;
}

// Taps of prod(1 - q/z) / prod(1 - p/z), scaled by `scale` top and bottom.
void TapsFromRoots(const std::vector<std::complex<double>>& zeros,
                   const std::vector<std::complex<double>>& poles, double gain, double scale, double* taps)
{
    const int order = static_cast<int>(poles.size());
    auto expand = [order](const std::vector<std::complex<double>>& roots, double* out)
    {
        std::vector<std::complex<long double>> p(1, 1.0L);
        for (const auto& r : roots)
        {
            p.push_back(0.0L);
            for (size_t i = p.size() - 1; i > 0; --i)
                p[i] -= std::complex<long double>(r) * p[i - 1];
        }
        for (int i = 0; i <= order; ++i)
            out[i] = i < static_cast<int>(p.size()) ? static_cast<double>(p[i].real()) : 0.0;
    };
    expand(zeros, taps);
    expand(poles, taps + order + 1);
    for (int i = 0; i <= order; ++i)
    {
        taps[i] *= gain * scale;
        taps[order + 1 + i] *= scale;
    }
}
} // namespace

TEST(IirDesign, ButterworthIsHalfPowerAtTheCornerAndMonotonic)
{
    const double corners[] = {3000.0, 8000.0, 15000.0};
    for (const double rate : kRates)
        for (const double hz : corners)
            for (const bool highpass : {false, true})
                for (int order = 2; order <= kIirMaxOrder; ++order)
                {
                    SCOPED_TRACE(testing::Message() << rate << " Hz, corner " << hz << ", order " << order
                                                    << (highpass ? " high-pass" : " low-pass"));
                    const double fc = hz / rate;
                    Filter flt;
                    flt.Design(highpass, fc, 0.0, order, 0);
                    // The taps handed out hold the design...
                    EXPECT_NEAR(static_cast<double>(TapsDb(flt.taps, order, fc)), -3.0103, 0.05);
                    EXPECT_NEAR(static_cast<double>(TapsDb(flt.taps, order, highpass ? 0.5L : 0.0L)), 0.0,
                                1e-3);

                    // ...and so does the filter IirRun executes: half power at the corner, unit gain
                    // at DC (low-pass) or Nyquist (high-pass), monotonic over a log grid from 10 Hz to
                    // just below Nyquist, down to -140 dB.
                    std::vector<double> h;
                    ASSERT_GT(ImpulseDecay(flt, 1 << 18, &h, 1e-14, 512), 0);
                    EXPECT_NEAR(ResponseDb(h, fc), -3.0103, 0.05);
                    EXPECT_NEAR(ResponseDb(h, highpass ? 0.5 : 0.0), 0.0, 1e-9);
                    double last = ResponseDb(h, 10.0 / rate);
                    int rises = 0;
                    for (int i = 1; i <= 200; ++i)
                    {
                        const double f = 10.0 / rate * std::pow(0.499 * rate / 10.0, i / 200.0);
                        const double g = ResponseDb(h, f);
                        if (g < -140.0 && last < -140.0) continue;
                        if (highpass ? g < last - 1e-9 : g > last + 1e-9) ++rises;
                        last = g;
                    }
                    EXPECT_EQ(rises, 0);
                }
}

TEST(IirDesign, ButterworthRunPathFollowsTheClosedForm)
{
    // The sections IirRun executes, through both ways of building them: from the design's own
    // roots (the modules' sequence) and by factoring the taps.
    for (const double rate : kRates)
        for (const bool highpass : {false, true})
            for (const int order : {1, 2, 3, 4, 5, 8, 11, 12})
                for (const bool fromTaps : {false, true})
                {
                    const double fc = 8000.0 / rate;
                    SCOPED_TRACE(testing::Message()
                                 << rate << " Hz, order " << order << (highpass ? " HP" : " LP")
                                 << (fromTaps ? ", factored taps" : ", design roots"));
                    Filter flt;
                    flt.Design(highpass, fc, 0.0, order, 0);
                    if (fromTaps) flt.InitFromTaps(flt.taps, order);
                    std::vector<double> h;
                    ASSERT_GT(ImpulseDecay(flt, 1 << 16, &h), 0);
                    for (const double f : {0.1 * fc, 0.5 * fc, fc, 1.3 * fc, 2.0 * fc, 0.45})
                    {
                        if (f >= 0.5) continue;
                        const double expect = static_cast<double>(ButterworthDb(f, fc, order, highpass));
                        if (expect < -150.0) continue;
                        EXPECT_NEAR(ResponseDb(h, f), expect, 1e-3) << "at " << f * rate << " Hz";
                    }
                }
}

TEST(IirDesign, ChebyshevKeepsTheAskedRipple)
{
    const double corners[] = {50.0, 200.0, 1000.0, 5000.0, 15000.0, 20000.0};
    for (const double rate : kRates)
        for (const double hz : corners)
        {
            const double fc = hz / rate;
            if (fc > 0.49) continue;
            for (const double ripple : {1.0, 3.0, 15.0})
                for (const int order : {2, 4})
                    for (const bool highpass : {false, true})
                    {
                        SCOPED_TRACE(testing::Message()
                                     << rate << " Hz, corner " << hz << ", ripple " << ripple << ", order "
                                     << order << (highpass ? " HP" : " LP"));
                        Filter flt;
                        flt.Design(highpass, fc, ripple, order, 1);
                        // Passband edge at -ripple; ripple peaks (T = 0) at 0 dB; troughs (|T| = 1,
                        // DC or Nyquist among them for even orders) at -ripple.
                        EXPECT_NEAR(static_cast<double>(TapsDb(flt.taps, order, fc)), -ripple, 0.1);
                        for (int k = 0; k < order / 2; ++k)
                        {
                            const long double peak =
                                DigitalOf(std::cos((2 * k + 1) * kPi / (2 * order)), fc, highpass);
                            EXPECT_NEAR(static_cast<double>(TapsDb(flt.taps, order, peak)), 0.0, 0.1);
                        }
                        for (int k = 1; k <= order / 2; ++k)
                        {
                            const long double trough = DigitalOf(std::cos(k * kPi / order), fc, highpass);
                            EXPECT_NEAR(static_cast<double>(TapsDb(flt.taps, order, trough)), -ripple, 0.1);
                        }
                        // Nowhere above 0 dB, nowhere in the passband below -ripple.
                        long double maxDb = -1e9L, minPass = 1e9L;
                        for (int i = 0; i <= 2000; ++i)
                        {
                            const long double f = 0.4999L * i / 2000.0L;
                            const long double g = TapsDb(flt.taps, order, f);
                            maxDb = std::max(maxDb, g);
                            if (highpass ? f > fc : f < fc) minPass = std::min(minPass, g);
                        }
                        EXPECT_LE(static_cast<double>(maxDb), 0.1);
                        EXPECT_GE(static_cast<double>(minPass), -ripple - 0.1);
                        // Beyond the edge the response keeps falling below the ripple band.
                        const double beyond = highpass ? fc / 1.5 : std::min(fc * 1.5, 0.499);
                        if (beyond != fc && beyond < 0.499)
                        {
                            EXPECT_LT(static_cast<double>(TapsDb(flt.taps, order, beyond)), -ripple - 0.1);
                        }
                    }
        }
}

TEST(IirDesign, ChebyshevRunPathFollowsTheClosedForm)
{
    struct Case
    {
        double rate, hz, ripple;
        int order;
    };
    const Case cases[] = {{44100.0, 200.0, 3.0, 2},   {44100.0, 200.0, 15.0, 4},  {96000.0, 50.0, 1.0, 4},
                          {32000.0, 15000.0, 3.0, 4}, {48000.0, 5000.0, 15.0, 2}, {44100.0, 20000.0, 1.0, 4}};
    for (const Case& c : cases)
        for (const bool highpass : {false, true})
            for (const bool fromTaps : {false, true})
            {
                SCOPED_TRACE(testing::Message() << c.rate << " Hz, corner " << c.hz << ", ripple " << c.ripple
                                                << ", order " << c.order << (highpass ? " HP" : " LP")
                                                << (fromTaps ? ", factored taps" : ", design roots"));
                const double fc = c.hz / c.rate;
                Filter flt;
                flt.Design(highpass, fc, c.ripple, c.order, 1);
                if (fromTaps) flt.InitFromTaps(flt.taps, c.order);
                std::vector<double> h;
                ASSERT_GT(ImpulseDecay(flt, 1 << 21, &h), 0);
                for (const double f : {0.3 * fc, 0.8 * fc, fc, 1.2 * fc, 3.0 * fc})
                {
                    if (f >= 0.5) continue;
                    const double expect =
                        static_cast<double>(ChebyshevDb(f, fc, c.order, c.ripple, highpass));
                    EXPECT_NEAR(ResponseDb(h, f), expect, 0.02) << "at " << f * c.rate << " Hz";
                }
            }
}

TEST(IirDesign, OddChebyshevAndClampedCorners)
{
    // Odd orders have 0 dB at DC (low-pass); the corner is still the -ripple edge.
    for (const int order : {3, 5})
    {
        Filter flt;
        flt.Design(false, 0.05, 2.0, order, 1);
        EXPECT_NEAR(static_cast<double>(TapsDb(flt.taps, order, 0.0L)), 0.0, 1e-6);
        EXPECT_NEAR(static_cast<double>(TapsDb(flt.taps, order, 0.05L)), -2.0, 0.01);
    }
    // Corners beyond the usable range (0.0002 .. 0.49) take its ends, and stay stable filters.
    for (const double edge : {0.0002, 0.49})
    {
        Filter a, b;
        a.Design(false, edge, 3.0, 4, 1);
        b.Design(false, edge < 0.1 ? 1e-6 : 0.62, 3.0, 4, 1);
        for (int i = 0; i < 10; ++i)
            EXPECT_EQ(a.taps[i], b.taps[i]);
        EXPECT_GT(ImpulseDecay(b, 1 << 22), 0);
    }
}

TEST(IirDesign, EveryDesignIsStable)
{
    // Impulse responses through IirRun, both ways of building the sections, over the whole range of
    // corners the modules use.
    const double corners[] = {50.0, 200.0, 1000.0, 5000.0, 15000.0, 20000.0};
    long longest = 0;
    for (const double rate : kRates)
        for (const double hz : corners)
        {
            const double fc = std::min(hz / rate, 0.49);
            for (const bool highpass : {false, true})
                for (const bool fromTaps : {false, true})
                {
                    for (const double ripple : {1.0, 3.0, 15.0})
                        for (const int order : {2, 4})
                        {
                            SCOPED_TRACE(testing::Message()
                                         << "Chebyshev " << rate << " Hz, corner " << hz << ", ripple "
                                         << ripple << ", order " << order << (highpass ? " HP" : " LP")
                                         << (fromTaps ? ", factored taps" : ""));
                            Filter flt;
                            flt.Design(highpass, fc, ripple, order, 1);
                            if (fromTaps) flt.InitFromTaps(flt.taps, order);
                            const long n = ImpulseDecay(flt, 1 << 22);
                            EXPECT_GT(n, 0);
                            longest = std::max(longest, n);
                        }
                    // Taps of high orders cannot hold corners near DC or Nyquist (the poles crowd closer
                    // than double rounding can separate): the taps-only path is checked where they can.
                    if (hz < 1000.0 || (fromTaps && (fc < 0.03 || fc > 0.47))) continue;
                    for (int order = 1; order <= kIirMaxOrder; ++order)
                    {
                        SCOPED_TRACE(testing::Message()
                                     << "Butterworth " << rate << " Hz, corner " << hz << ", order " << order
                                     << (highpass ? " HP" : " LP") << (fromTaps ? ", factored taps" : ""));
                        Filter flt;
                        flt.Design(highpass, fc, 0.0, order, 0);
                        if (fromTaps) flt.InitFromTaps(flt.taps, order);
                        EXPECT_GT(ImpulseDecay(flt, 1 << 20), 0);
                    }
                }
        }
    // The sharpest Chebyshev (15 dB, order 4, 50 Hz at 96 kHz) rings for a few hundred thousand
    // samples: the check above did wait for it.
    EXPECT_GT(longest, 100000);
}

TEST(IirRun, TwelfthOrderBandLimitRejectsTwentyKilohertz)
{
    // The master band limit: Butterworth order 12 at 15 kHz. A 20 kHz sine through IirRun, level
    // measured after settling, against the closed form (-137.3 dB at 44.1 kHz, -95.2 dB at 48 kHz).
    struct Case
    {
        double rate, floorDb;
    };
    for (const Case c : {Case{44100.0, -130.0}, Case{48000.0, -90.0}})
        for (const bool fromTaps : {false, true})
        {
            SCOPED_TRACE(testing::Message()
                         << c.rate << (fromTaps ? " Hz, factored taps" : " Hz, design roots"));
            Filter flt;
            flt.Design(false, 15000.0 / c.rate, 0.0, 12, 0);
            if (fromTaps) flt.InitFromTaps(flt.taps, 12);
            const double level = SineLevelDb(flt, 20000.0 / c.rate, 4096, 8192);
            EXPECT_LT(level, c.floorDb);
            EXPECT_NEAR(level,
                        static_cast<double>(ButterworthDb(20000.0 / c.rate, 15000.0 / c.rate, 12, false)),
                        0.5);
            Filter pass;
            pass.Design(false, 15000.0 / c.rate, 0.0, 12, 0);
            EXPECT_NEAR(SineLevelDb(pass, 1000.0 / c.rate, 4096, 4096), 0.0, 1e-6);
        }
}

TEST(IirState, DelayRoundTripsAndZerosAreSilence)
{
    Filter direct5, direct12, cascade;
    direct5.Design(false, 0.1, 0.0, 5, 0);
    direct12.Design(true, 0.2, 0.0, 12, 0);
    double sectionTaps[18] = {1, 0.5, 0.25, 1, -0.5, 0.2, 0.3, 0.3, 0.0, 2, 0.1, 0.0, 1, -1, 1, 1, 0.9, 0.4};
    IirInitBiquad(&cascade.state, sectionTaps, 3, cascade.delay, cascade.work);

    struct Item
    {
        Filter* f;
        int count;
    };
    for (const Item it : {Item{&direct5, 5}, Item{&direct12, 12}, Item{&cascade, 6}})
    {
        SCOPED_TRACE(testing::Message() << it.count << " delay doubles");
        double set[2 * kIirMaxOrder + 1], got[2 * kIirMaxOrder + 1];
        for (int i = 0; i <= 2 * kIirMaxOrder; ++i)
        {
            set[i] = 0.1 * (i + 1) * (i % 2 ? -1.0 : 1.0);
            got[i] = 99.0;
        }
        IirSetDelay(it.f->state, set);
        IirGetDelay(it.f->state, got);
        for (int i = 0; i < it.count; ++i)
            EXPECT_EQ(got[i], set[i]) << "element " << i;
        EXPECT_EQ(got[it.count], 99.0); // exactly count doubles, no more

        // The memory is the only state: zeros in, zeros out, from a zero memory.
        double zero[2 * kIirMaxOrder] = {};
        IirSetDelay(it.f->state, zero);
        double x[kBlock] = {}, y[kBlock];
        std::fill(y, y + kBlock, 5.0);
        IirRun(x, y, kBlock, it.f->state);
        for (const double v : y)
            EXPECT_EQ(v, 0.0);

        // A length of 0 or less touches neither the output nor the memory.
        IirSetDelay(it.f->state, set);
        std::fill(y, y + kBlock, 5.0);
        x[0] = 1.0;
        IirRun(x, y, 0, it.f->state);
        IirRunI(y, -3, it.f->state);
        IirGetDelay(it.f->state, got);
        EXPECT_EQ(y[0], 5.0);
        for (int i = 0; i < it.count; ++i)
            EXPECT_EQ(got[i], set[i]);
    }
}

TEST(IirBiquad, SectionLawAndNormalisationByA0)
{
    // One section with a0 = 1 and the same section with a0 = 2 and every tap doubled.
    const double one[6] = {0.2, 0.4, 0.2, 1.0, -0.6, 0.3};
    double two[6];
    for (int i = 0; i < 6; ++i)
        two[i] = 2.0 * one[i];
    Filter f1, f2;
    IirInitBiquad(&f1.state, one, 1, f1.delay, f1.work);
    IirInitBiquad(&f2.state, two, 1, f2.delay, f2.work);
    const std::vector<double> x = Noise(512, 7);
    const std::vector<double> y1 = f1.Run(x), y2 = f2.Run(x);
    for (size_t n = 0; n < x.size(); ++n)
        ASSERT_EQ(y1[n], y2[n]) << "sample " << n;

    // Cascades of one to five sections with a0 of 0.5, 2, 3, 1 and 4 against
    // y = (b0 x + b1 x1 + b2 x2 - a1 y1 - a2 y2) / a0, section after section.
    const double taps[30] = {0.5, -0.2, 0.1, 0.5, -0.3, 0.1, 1.0, 2.0, 1.0, 2.0, -1.0, 0.4,  3.0, 0.0,  -3.0,
                             3.0, 0.6,  0.9, 0.2, 0.0,  0.0, 1.0, 0.5, 0.1, 1.0, 0.0,  -1.0, 4.0, -3.2, 2.4};
    for (int sections = 1; sections <= 5; ++sections)
    {
        SCOPED_TRACE(testing::Message() << sections << " sections");
        Filter f3;
        IirInitBiquad(&f3.state, taps, sections, f3.delay, f3.work);
        const std::vector<double> y3 = f3.Run(x);
        std::vector<double> ref = x;
        for (int s = 0; s < sections; ++s)
            ref = DirectReference(taps + 6 * s, 2, ref);
        double worst = 0.0, size = 0.0;
        for (size_t n = 0; n < x.size(); ++n)
        {
            worst = std::max(worst, std::fabs(y3[n] - ref[n]));
            size = std::max(size, std::fabs(ref[n]));
        }
        EXPECT_LT(worst, 1e-12 * size);
        EXPECT_GT(size, 0.1); // the reference is not trivially silent
    }
}

TEST(IirBiquad, SectionsRunInArrayOrder)
{
    // Section 0 rings from its memory; section 1 has no numerator and mutes whatever reaches it.
    // Memory in section 0 must therefore stay silent, memory in section 1 must not.
    const double taps[12] = {1.0, 0.0, 0.0, 1.0, -0.5, 0.0, 0.0, 0.0, 0.0, 1.0, -0.5, 0.0};
    Filter f;
    IirInitBiquad(&f.state, taps, 2, f.delay, f.work);
    const double x[kBlock] = {};
    double y[kBlock];
    const double inFirst[4] = {1.0, 0.0, 0.0, 0.0};
    IirSetDelay(f.state, inFirst);
    IirRun(x, y, kBlock, f.state);
    for (const double v : y)
        EXPECT_EQ(v, 0.0);
    const double inSecond[4] = {0.0, 0.0, 1.0, 0.0};
    IirSetDelay(f.state, inSecond);
    IirRun(x, y, kBlock, f.state);
    EXPECT_EQ(y[0], 1.0);
    EXPECT_EQ(y[1], 0.5);
}

TEST(IirRun, BlockInPiecesEqualsBlockWhole)
{
    const std::vector<double> x = Noise(kBlock, 3);
    const double sectionTaps[12] = {0.3, 0.2, 0.1, 1.0, -1.2, 0.5, 1.0, -2.0, 1.0, 1.0, -1.8, 0.85};
    for (const int kind : {0, 1, 2})
    {
        SCOPED_TRACE(kind == 0 ? "order 12" : (kind == 1 ? "order 5" : "cascade"));
        Filter whole, pieces;
        for (Filter* f : {&whole, &pieces})
        {
            if (kind == 2)
                IirInitBiquad(&f->state, sectionTaps, 2, f->delay, f->work);
            else
                f->Design(false, 0.2, 0.0, kind == 0 ? 12 : 5, 0);
            // Warm memory first, so the pieces have something to carry across.
            f->Run(Noise(256, 11));
        }
        double y1[kBlock], y2[kBlock];
        whole.Block(x.data(), y1, kBlock);
        pieces.Block(x.data(), y2, 7);
        pieces.Block(x.data() + 7, y2 + 7, 25);
        for (int i = 0; i < kBlock; ++i)
            EXPECT_EQ(y1[i], y2[i]) << "sample " << i;
        for (int i = 0; i < 2 * kIirMaxOrder; ++i)
            EXPECT_EQ(whole.delay[i], pieces.delay[i]);
    }
}

TEST(IirInit, RedesignGoesOnFromTheOldMemory)
{
    // The delay array is the whole memory: a filter built afresh from it at every block, in new
    // working memory, continues bit for bit (odd orders keep one state less than their sections).
    for (const int order : {1, 4, 5, 12})
    {
        SCOPED_TRACE(testing::Message() << "order " << order);
        const std::vector<double> x = Noise(1024, 5);
        Filter a;
        a.Design(false, 0.05, 3.0, order, 1);
        const std::vector<double> ya = a.Run(x);
        double taps[2 * (kIirMaxOrder + 1)];
        std::copy(a.taps, a.taps + 2 * (order + 1), taps);
        double delay[2 * kIirMaxOrder] = {};
        std::vector<double> yb(x.size());
        for (size_t i = 0; i < x.size(); i += kBlock)
        {
            Filter b;
            b.Design(false, 0.05, 3.0, order, 1);
            std::copy(delay, delay + 2 * kIirMaxOrder, b.delay);
            IirInit(&b.state, taps, order, b.delay, b.work);
            b.Block(x.data() + i, yb.data() + i, kBlock);
            std::copy(b.delay, b.delay + 2 * kIirMaxOrder, delay);
        }
        EXPECT_EQ(ya, yb);
    }
    // A Chebyshev low-pass on a settled DC input, retuned every second block along a sweep from
    // 200 Hz to 8 kHz in half a second and back: with the memory kept, the output stays near the DC gain
    // (-3 dB), the small excursions shrinking with the step of each redesign; sections handed the
    // memory of another section, or memory cleared at each redesign, would throw it far off.
    for (const int order : {2, 4})
        for (const bool clear : {false, true})
        {
            SCOPED_TRACE(testing::Message() << "order " << order << (clear ? ", memory cleared" : ""));
            Filter f;
            const double rate = 48000.0;
            f.Design(false, 200.0 / rate, 3.0, order, 1);
            std::vector<double> dc(48000, 1.0);
            f.Run(dc);
            const double level = std::pow(10.0, -3.0 / 20.0);
            double worst = 0.0;
            double x[kBlock], y[2 * kBlock];
            std::fill(x, x + kBlock, 1.0);
            const int steps = 400;
            for (int b = 0; b < 2 * steps; ++b)
            {
                const int k = b < steps ? b : 2 * steps - b;
                const double hz = 200.0 * std::pow(40.0, k / static_cast<double>(steps));
                if (clear) std::fill(f.delay, f.delay + 2 * kIirMaxOrder, 0.0);
                f.Design(false, hz / rate, 3.0, order, 1);
                f.Block(x, y, kBlock);
                f.Block(x, y + kBlock, kBlock);
                for (const double v : y)
                    worst = std::max(worst, std::fabs(v - level));
            }
            if (clear)
                EXPECT_GT(worst, 0.3);
            else
                EXPECT_LT(worst, 0.02);
        }
}

TEST(IirInit, FactorsGeneralTaps)
{
    // Direct filters that are no bilinear design: complex zeros off the unit circle, a zero at
    // Nyquist, a repeated pole, a pure delay, a pole at the origin, a0 != 1. IirRun must follow the
    // difference equation.
    using C = std::complex<double>;
    struct Case
    {
        std::vector<C> zeros, poles;
        double gain;
    };
    const C j(0.0, 1.0);
    const std::vector<Case> cases = {
        {{0.9 * std::exp(j * 1.0), 0.9 * std::exp(-j * 1.0), -1.0},
         {0.5, 0.8 * std::exp(j * 0.3), 0.8 * std::exp(-j * 0.3)},
         0.7},
        {{0.3, -0.4, 1.2 * std::exp(j * 2.0), 1.2 * std::exp(-j * 2.0), 0.0},
         {0.6, 0.6, 0.95 * std::exp(j * 0.05), 0.95 * std::exp(-j * 0.05), -0.7},
         1.5},
        {{0.5, 0.5, -0.2, 0.99 * std::exp(j * 2.5), 0.99 * std::exp(-j * 2.5), 0.1, -0.9},
         {0.0, 0.2, -0.3, 0.9 * std::exp(j * 1.2), 0.9 * std::exp(-j * 1.2), 0.7 * std::exp(j * 2.8),
          0.7 * std::exp(-j * 2.8)},
         0.25},
    };
    const std::vector<double> x = Noise(2048, 9);
    for (size_t c = 0; c < cases.size(); ++c)
        for (const bool delayed : {false, true})
        {
            SCOPED_TRACE(testing::Message() << "case " << c << (delayed ? ", one sample late" : ""));
            const int order = static_cast<int>(cases[c].poles.size());
            double taps[2 * (kIirMaxOrder + 1)];
            TapsFromRoots(cases[c].zeros, cases[c].poles, cases[c].gain, 2.0, taps);
            if (delayed)
            {
                // The last zero becomes a delay: the other zeros' numerator moves one tap right.
                std::vector<C> zs(cases[c].zeros.begin(), cases[c].zeros.end() - 1);
                double t2[2 * (kIirMaxOrder + 1)];
                TapsFromRoots(zs, std::vector<C>(cases[c].poles.begin(), cases[c].poles.end() - 1), 1.0, 1.0,
                              t2);
                for (int i = order; i > 0; --i)
                    taps[i] = t2[i - 1] * cases[c].gain * 2.0;
                taps[0] = 0.0;
            }
            Filter f;
            f.InitFromTaps(taps, order);
            const std::vector<double> y = f.Run(x);
            const std::vector<double> ref = DirectReference(taps, order, x);
            double worst = 0.0, size = 0.0;
            for (size_t n = 0; n < x.size(); ++n)
            {
                worst = std::max(worst, std::fabs(y[n] - ref[n]));
                size = std::max(size, std::fabs(ref[n]));
            }
            EXPECT_LT(worst, 1e-10 * size);
            if (delayed)
            {
                EXPECT_EQ(y[0], 0.0); // nothing comes out before the delay
            }
        }
}

TEST(IirInit, StaleDesignIsNotReused)
{
    // A design leaves its roots in the working memory; other taps must not pick them up.
    Filter f;
    f.Design(false, 1000.0 / 48000.0, 3.0, 4, 1);
    double high[10];
    IirDesignHighpass(5000.0 / 48000.0, 0.0, 4, high, 0, nullptr);
    IirInit(&f.state, high, 4, f.delay, f.work);
    std::fill(f.delay, f.delay + 2 * kIirMaxOrder, 0.0);
    EXPECT_LT(SineLevelDb(f, 100.0 / 48000.0, 4096, 4096), -80.0);
    EXPECT_NEAR(SineLevelDb(f, 20000.0 / 48000.0, 4096, 4096), 0.0, 0.01);
}

TEST(IirInit, UnusableTapsAreSilentAndOrderZeroIsAGain)
{
    const std::vector<double> x = Noise(256, 1);
    auto peak = [](const std::vector<double>& y)
    {
        double m = 0.0;
        for (const double v : y)
            m = std::max(m, std::fabs(v));
        return m;
    };
    Filter f;
    double taps[26] = {1.0, 0.5, 0.0, -0.3}; // order 1 with a0 = 0
    f.InitFromTaps(taps, 1);
    EXPECT_EQ(peak(f.Run(x)), 0.0);
    const double nanTaps[4] = {1.0, std::nan(""), 1.0, -0.5};
    f.InitFromTaps(nanTaps, 1);
    EXPECT_EQ(peak(f.Run(x)), 0.0);
    IirInit(&f.state, taps, kIirMaxOrder + 1, f.delay, f.work);
    EXPECT_EQ(peak(f.Run(x)), 0.0);
    const double gainTaps[2] = {3.0, 2.0};
    f.InitFromTaps(gainTaps, 0);
    const std::vector<double> y = f.Run(x);
    for (size_t n = 0; n < x.size(); ++n)
        EXPECT_EQ(y[n], 1.5 * x[n]);
}
