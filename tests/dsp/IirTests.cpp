#include "common/Measure.h"
#include "common/Noise.h"
#include "dsp/Iir.h"
#include "dsp/Vec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

// The recursive filters are checked by what they do to signals: responses against the closed
// forms of Butterworth and Chebyshev filters under the bilinear map, decay of impulse responses,
// the difference equation of biquad cascades, and the filter memory that lets a module redesign at
// block rate.
namespace
{
using testnoise::Noise;
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
        if (highpass)
            IirDesignHighpass(relFreq, ripple, n, taps, kind, work);
        else
            IirDesignLowpass(relFreq, ripple, n, taps, kind, work);
        IirInit(&state, taps, n, delay, work);
    }
    // Taps that this working memory has not seen: the filter comes from the taps alone.
    void InitFromTaps(const double* t, int n)
    {
        std::copy(t, t + 2 * (n + 1), taps);
        int bytes = 0;
        IirStateSize(kIirMaxOrder, &bytes);
        unsigned char* fresh = VecAllocBytes(bytes);
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

    unsigned char* work = nullptr;
    IirState* state = nullptr;
    double taps[6 * kIirMaxOrder] = {};
    double delay[2 * kIirMaxOrder] = {};
};

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

// Chebyshev type I with its ripple peaks at 0 dB: 1 / (1 + e^2 T(W)^2).
long double ChebyshevDb(long double f, long double fc, int order, double ripple, bool highpass)
{
    const long double x = Omega(f, fc, highpass);
    const long double t =
        std::fabs(x) <= 1.0L ? std::cos(order * std::acos(x)) : std::cosh(order * std::acosh(std::fabs(x)));
    return -10.0L * std::log10(1.0L + (std::pow(10.0L, ripple / 10.0L) - 1.0L) * t * t);
}

// Runs an impulse until a stretch of `quiet` samples stays below 1e-9 of the peak. Returns the
// samples it took, or -1 if the response blows up or does not die within `limit`.
long ImpulseDecay(Filter& flt, long limit, std::vector<double>* keep = nullptr, long quiet = 4096)
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
            if (stretch < 1e-9 * peak) return n + kBlock;
            stretch = 0.0;
            stretchStart = n + kBlock;
        }
    }
    return -1;
}

// Gain in dB at relative frequency f of a decayed impulse response.
double ResponseDb(const std::vector<double>& h, double f)
{
    return 20.0 * std::log10(std::abs(testmeasure::ResponseAt(h, f, 1.0)));
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

// Largest difference relative to the reference's peak.
double RelativeError(const std::vector<double>& y, const std::vector<double>& ref)
{
    double worst = 0.0, size = 0.0;
    for (size_t n = 0; n < y.size(); ++n)
    {
        worst = std::max(worst, std::fabs(y[n] - ref[n]));
        size = std::max(size, std::fabs(ref[n]));
    }
    return worst / size;
}

} // namespace

TEST(IirDesign, ButterworthRunPathFollowsTheClosedForm)
{
    // The sections IirRun executes, built from the design's own roots (the modules' sequence) and
    // by factoring the taps: -3.01 dB at the corner, the 2n-th power law around it, unit gain in
    // the pass band.
    for (const double rate : kRates)
        for (const bool highpass : {false, true})
            for (const int order : {1, 2, 3, 5, 8, 12})
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
                        const double expect = static_cast<double>(ButterworthDb(f, fc, order, highpass));
                        if (f >= 0.5 || expect < -150.0) continue;
                        EXPECT_NEAR(ResponseDb(h, f), expect, 1e-3) << "at " << f * rate << " Hz";
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
    // The last rows: the slowest design the modules use (rings for a few hundred thousand samples)
    // and odd orders, whose low-pass has 0 dB at DC.
    const Case cases[] = {{44100.0, 200.0, 3.0, 2},   {44100.0, 200.0, 15.0, 4},  {96000.0, 50.0, 1.0, 4},
                          {32000.0, 15000.0, 3.0, 4}, {48000.0, 5000.0, 15.0, 2}, {44100.0, 20000.0, 1.0, 4},
                          {96000.0, 50.0, 15.0, 4},   {44100.0, 2205.0, 2.0, 3},  {44100.0, 2205.0, 2.0, 5}};
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
                ASSERT_GT(ImpulseDecay(flt, 1 << 22, &h), 0);
                for (const double f : {0.3 * fc, 0.8 * fc, fc, 1.2 * fc, 3.0 * fc})
                {
                    if (f >= 0.5) continue;
                    const double expect =
                        static_cast<double>(ChebyshevDb(f, fc, c.order, c.ripple, highpass));
                    EXPECT_NEAR(ResponseDb(h, f), expect, 0.02) << "at " << f * c.rate << " Hz";
                }
            }
}

TEST(IirDesign, CornersBeyondTheRangeTakeItsEnds)
{
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

TEST(IirState, DelayIsTheWholeStateAndBlocksMaySplit)
{
    const double sectionTaps[18] = {1, 0.5, 0.25, 1, -0.5, 0.2, 0.3, 0.3, 0.0,
                                    2, 0.1, 0.0,  1, -1,   1,   1,   0.9, 0.4};
    struct Item
    {
        int order; // 0: three biquad sections
        int count; // delay doubles it keeps
    };
    for (const Item it : {Item{5, 5}, Item{12, 12}, Item{0, 6}})
    {
        SCOPED_TRACE(testing::Message() << it.count << " delay doubles");
        Filter a, b;
        for (Filter* f : {&a, &b})
        {
            if (it.order == 0)
                IirInitBiquad(&f->state, sectionTaps, 3, f->delay, f->work);
            else
                f->Design(it.order == 12, 0.1, 0.0, it.order, 0);
        }
        // Exactly `count` doubles go in and come back out.
        double set[2 * kIirMaxOrder + 1], got[2 * kIirMaxOrder + 1];
        for (int i = 0; i <= 2 * kIirMaxOrder; ++i)
        {
            set[i] = 0.1 * (i + 1) * (i % 2 ? -1.0 : 1.0);
            got[i] = 99.0;
        }
        IirSetDelay(a.state, set);
        IirGetDelay(a.state, got);
        for (int i = 0; i < it.count; ++i)
            EXPECT_EQ(got[i], set[i]) << "element " << i;
        EXPECT_EQ(got[it.count], 99.0);
        // A length of 0 or less touches neither the output nor the memory.
        double y[kBlock];
        std::fill(y, y + kBlock, 5.0);
        IirRun(set, y, 0, a.state);
        IirRunI(y, -3, a.state);
        IirGetDelay(a.state, got);
        EXPECT_EQ(y[0], 5.0);
        for (int i = 0; i < it.count; ++i)
            EXPECT_EQ(got[i], set[i]);
        // From warm memory, a block run in two pieces equals the block run whole.
        std::fill(a.delay, a.delay + 2 * kIirMaxOrder, 0.0);
        a.Run(Noise(256, 0.5, 11));
        std::copy(a.delay, a.delay + 2 * kIirMaxOrder, b.delay);
        const std::vector<double> x = Noise(kBlock, 0.5, 3);
        double y1[kBlock], y2[kBlock];
        a.Block(x.data(), y1, kBlock);
        b.Block(x.data(), y2, 7);
        b.Block(x.data() + 7, y2 + 7, 25);
        for (int i = 0; i < kBlock; ++i)
            EXPECT_EQ(y1[i], y2[i]) << "sample " << i;
        for (int i = 0; i < 2 * kIirMaxOrder; ++i)
            EXPECT_EQ(a.delay[i], b.delay[i]);
    }
}

TEST(IirBiquad, CascadesFollowTheSectionLawInArrayOrder)
{
    // One to five sections with a0 of 0.5, 2, 3, 1 and 4 against
    // y = (b0 x + b1 x1 + b2 x2 - a1 y1 - a2 y2) / a0, section after section.
    const double taps[30] = {0.5, -0.2, 0.1, 0.5, -0.3, 0.1, 1.0, 2.0, 1.0, 2.0, -1.0, 0.4,  3.0, 0.0,  -3.0,
                             3.0, 0.6,  0.9, 0.2, 0.0,  0.0, 1.0, 0.5, 0.1, 1.0, 0.0,  -1.0, 4.0, -3.2, 2.4};
    const std::vector<double> x = Noise(512, 0.5, 7);
    for (int sections = 1; sections <= 5; ++sections)
    {
        Filter f;
        IirInitBiquad(&f.state, taps, sections, f.delay, f.work);
        std::vector<double> ref = x;
        for (int s = 0; s < sections; ++s)
            ref = DirectReference(taps + 6 * s, 2, ref);
        EXPECT_LT(RelativeError(f.Run(x), ref), 1e-12) << sections << " sections";
    }
    // Section 0 rings from its memory; section 1 has no numerator and mutes whatever reaches it.
    const double mute[12] = {1.0, 0.0, 0.0, 1.0, -0.5, 0.0, 0.0, 0.0, 0.0, 1.0, -0.5, 0.0};
    Filter f;
    IirInitBiquad(&f.state, mute, 2, f.delay, f.work);
    const double zeros[kBlock] = {};
    double y[kBlock];
    const double inFirst[4] = {1.0, 0.0, 0.0, 0.0}, inSecond[4] = {0.0, 0.0, 1.0, 0.0};
    IirSetDelay(f.state, inFirst);
    IirRun(zeros, y, kBlock, f.state);
    for (const double v : y)
        EXPECT_EQ(v, 0.0);
    IirSetDelay(f.state, inSecond);
    IirRun(zeros, y, kBlock, f.state);
    EXPECT_EQ(y[0], 1.0);
    EXPECT_EQ(y[1], 0.5);
}

TEST(IirInit, RedesignGoesOnFromTheOldMemory)
{
    // A filter built afresh from the delay array at every block, in new working memory, continues
    // bit for bit (odd orders keep one state less than their sections).
    for (const int order : {1, 4, 5, 12})
    {
        const std::vector<double> x = Noise(1024, 0.5, 5);
        Filter a;
        a.Design(false, 0.05, 3.0, order, 1);
        const std::vector<double> ya = a.Run(x);
        double delay[2 * kIirMaxOrder] = {};
        std::vector<double> yb(x.size());
        for (size_t i = 0; i < x.size(); i += kBlock)
        {
            Filter b;
            b.Design(false, 0.05, 3.0, order, 1);
            std::copy(delay, delay + 2 * kIirMaxOrder, b.delay);
            IirInit(&b.state, a.taps, order, b.delay, b.work);
            b.Block(x.data() + i, yb.data() + i, kBlock);
            std::copy(b.delay, b.delay + 2 * kIirMaxOrder, delay);
        }
        EXPECT_EQ(ya, yb) << "order " << order;
    }
    // A Chebyshev low-pass on DC, retuned every second block from 200 Hz to 8 kHz and back: with
    // the memory kept the output stays near the DC gain (-3 dB); memory cleared at each redesign
    // (or handed to the wrong section) throws it far off.
    for (const int order : {2, 4})
        for (const bool clear : {false, true})
        {
            SCOPED_TRACE(testing::Message() << "order " << order << (clear ? ", memory cleared" : ""));
            Filter f;
            const double rate = 48000.0;
            f.Design(false, 200.0 / rate, 3.0, order, 1);
            f.Run(std::vector<double>(48000, 1.0));
            const double level = std::pow(10.0, -3.0 / 20.0);
            double worst = 0.0;
            double x[kBlock], y[2 * kBlock];
            std::fill(x, x + kBlock, 1.0);
            const int steps = 400;
            for (int b = 0; b < 2 * steps; ++b)
            {
                const int k = b < steps ? b : 2 * steps - b;
                if (clear) std::fill(f.delay, f.delay + 2 * kIirMaxOrder, 0.0);
                f.Design(false, 200.0 * std::pow(40.0, k / static_cast<double>(steps)) / rate, 3.0, order, 1);
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

TEST(IirInit, StaleDesignIsNotReusedAndUnusableTapsAreSilent)
{
    // A design leaves its roots in the working memory; other taps must not pick them up.
    Filter f;
    f.Design(false, 1000.0 / 48000.0, 3.0, 4, 1);
    double high[10];
    IirDesignHighpass(5000.0 / 48000.0, 0.0, 4, high, 0, nullptr);
    IirInit(&f.state, high, 4, f.delay, f.work);
    std::fill(f.delay, f.delay + 2 * kIirMaxOrder, 0.0);
    std::vector<double> h;
    ASSERT_GT(ImpulseDecay(f, 1 << 16, &h), 0);
    EXPECT_LT(ResponseDb(h, 100.0 / 48000.0), -80.0);
    EXPECT_NEAR(ResponseDb(h, 20000.0 / 48000.0), 0.0, 0.01);

    // a0 = 0, a NaN tap or too high an order give silence; order 0 is a plain gain b0 / a0.
    const std::vector<double> x = Noise(256, 0.5, 1);
    Filter g;
    const double zeroA0[4] = {1.0, 0.5, 0.0, -0.3}, nanTaps[4] = {1.0, std::nan(""), 1.0, -0.5};
    for (const double* t : {zeroA0, nanTaps})
    {
        g.InitFromTaps(t, 1);
        for (const double v : g.Run(x))
            ASSERT_EQ(v, 0.0);
    }
    double wide[2 * (kIirMaxOrder + 2)] = {1.0, 0.5, 1.0};
    IirInit(&g.state, wide, kIirMaxOrder + 1, g.delay, g.work);
    for (const double v : g.Run(x))
        ASSERT_EQ(v, 0.0);
    const double gainTaps[2] = {3.0, 2.0};
    g.InitFromTaps(gainTaps, 0);
    const std::vector<double> y = g.Run(x);
    for (size_t n = 0; n < x.size(); ++n)
        EXPECT_EQ(y[n], 1.5 * x[n]);
}

// A left and a right filter run as a pair give each side bit for bit what its own run gives, for
// every order (odd ones start with a first-order section) and for filters of different order,
// which run one after the other.
TEST(IirState, PairedRunMatchesSingleRuns)
{
    const std::vector<double> xl = Noise(40 * kBlock, 0.5, 3u), xr = Noise(40 * kBlock, 0.5, 4u);
    for (int orderL = 1; orderL <= kIirMaxOrder; ++orderL)
        for (int orderR : {orderL, orderL % kIirMaxOrder + 1})
        {
            SCOPED_TRACE(testing::Message() << "orders " << orderL << " and " << orderR);
            Filter singleL, singleR, pairL, pairR;
            singleL.Design(false, 0.3, 0.0, orderL, 0);
            pairL.Design(false, 0.3, 0.0, orderL, 0);
            singleR.Design(true, 0.05, 0.5, orderR, 1);
            pairR.Design(true, 0.05, 0.5, orderR, 1);
            const std::vector<double> yl = singleL.Run(xl), yr = singleR.Run(xr);
            std::vector<double> pl = xl, pr = xr;
            for (size_t i = 0; i < pl.size(); i += kBlock)
            {
                IirSetDelay(pairL.state, pairL.delay);
                IirSetDelay(pairR.state, pairR.delay);
                IirRunPairI(pl.data() + i, pr.data() + i, kBlock, pairL.state, pairR.state);
                IirGetDelay(pairL.state, pairL.delay);
                IirGetDelay(pairR.state, pairR.delay);
            }
            EXPECT_TRUE(pl == yl);
            EXPECT_TRUE(pr == yr);
            EXPECT_GT(testmeasure::Rms(yr), 1e-3);
        }
}
