#include "common/Measure.h"
#include "common/Noise.h"
#include "dsp/Iir.h"
#include "dsp/Vec.h"
#include "dsp/WideLanes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>
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
constexpr int kDelays = 2 * kIirMaxOrder;

// A filter as the modules hold one: working memory sized once, taps, memory between blocks.
struct Filter
{
    Filter() { work = Fresh(); }
    ~Filter() { VecFree(work); }
    static unsigned char* Fresh()
    {
        int bytes = 0;
        IirStateSize(kIirMaxOrder, &bytes);
        return VecAllocBytes(bytes);
    }

    // The modules' sequence: design into the taps with this working memory, then init from it.
    void Design(bool highpass, double relFreq, double ripple, int n, int kind)
    {
        (highpass ? IirDesignHighpass : IirDesignLowpass)(relFreq, ripple, n, taps, kind, work);
        IirInit(&state, taps, n, delay, work);
    }
    // Taps that this working memory has not seen: the filter comes from the taps alone.
    void InitFromTaps(const double* t, int n)
    {
        std::copy(t, t + 2 * (n + 1), taps);
        VecFree(work);
        work = Fresh();
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
    double delay[kDelays] = {};
};

// Butterworth (kind 0) or Chebyshev type I with its ripple peaks at 0 dB (kind 1):
// 1 / (1 + e^2 T(W)^2) at the pre-warped analogue frequency W; a high-pass sees the inverted axis.
double ClosedFormDb(int kind, long double f, long double fc, int order, double ripple, bool highpass)
{
    long double x = std::tan(kPi * f) / std::tan(kPi * fc);
    if (highpass) x = 1.0L / x;
    const long double t = kind == 0              ? std::pow(x, order)
                          : std::fabs(x) <= 1.0L ? std::cos(order * std::acos(x))
                                                 : std::cosh(order * std::acosh(std::fabs(x)));
    const long double e2 = kind == 0 ? 1.0L : std::pow(10.0L, ripple / 10.0L) - 1.0L;
    return static_cast<double>(-10.0L * std::log10(1.0L + e2 * t * t));
}

// Runs an impulse until 4096 samples in a row stay below 1e-9 of the peak. Returns the samples it
// took, or -1 if the response blows up or does not die within `limit`.
long ImpulseDecay(Filter& flt, long limit, std::vector<double>* keep = nullptr)
{
    double x[kBlock] = {1.0}, y[kBlock], peak = 0.0;
    long loud = 0;
    for (long n = 0; n < limit; n += kBlock)
    {
        flt.Block(x, y, kBlock);
        x[0] = 0.0;
        for (int i = 0; i < kBlock; ++i)
        {
            if (!std::isfinite(y[i])) return -1;
            peak = std::max(peak, std::fabs(y[i]));
            if (std::fabs(y[i]) >= 1e-9 * peak) loud = n + i;
        }
        if (keep != nullptr) keep->insert(keep->end(), y, y + kBlock);
        if (n + kBlock - loud > 4096) return n + kBlock;
    }
    return -1;
}

const auto ResponseDb = [](const std::vector<double>& h, double f)
{ return 20.0 * std::log10(std::abs(testmeasure::ResponseAt(h, f, 1.0))); };
} // namespace

TEST(IirDesign, RunPathFollowsTheClosedForms)
{
    // The sections IirRun executes, built from the design's own roots (the modules' sequence) and
    // by factoring the taps. Butterworth: -3.01 dB at the corner, the 2n-th power law around it.
    // Chebyshev: the last rows are the slowest design the modules use (rings for a few hundred
    // thousand samples) and odd orders, whose low-pass has 0 dB at DC.
    std::vector<std::tuple<int, double, double, double, int>> cases = {
        {1, 44100, 200, 3, 2},   {1, 44100, 200, 15, 4},  {1, 96000, 50, 1, 4},
        {1, 32000, 15000, 3, 4}, {1, 48000, 5000, 15, 2}, {1, 44100, 20000, 1, 4},
        {1, 96000, 50, 15, 4},   {1, 44100, 2205, 2, 3},  {1, 44100, 2205, 2, 5}};
    for (const double rate : {32000.0, 44100.0, 96000.0})
        for (const int order : {1, 2, 3, 5, 8, 12})
            cases.emplace_back(0, rate, 8000.0, 0.0, order);
    for (const auto& [kind, rate, hz, ripple, order] : cases)
        for (const bool highpass : {false, true})
            for (const bool fromTaps : {false, true})
            {
                SCOPED_TRACE(testing::Message()
                             << kind << " " << rate << " " << hz << " " << order << highpass << fromTaps);
                const double fc = hz / rate;
                Filter flt;
                flt.Design(highpass, fc, ripple, order, kind);
                if (fromTaps) flt.InitFromTaps(flt.taps, order);
                std::vector<double> h;
                ASSERT_GT(ImpulseDecay(flt, 1 << 22, &h), 0);
                for (const double f : {0.1 * fc, 0.3 * fc, 0.8 * fc, fc, 1.2 * fc, 2.0 * fc, 3.0 * fc, 0.45})
                {
                    const double expect = ClosedFormDb(kind, f, fc, order, ripple, highpass);
                    if (f >= 0.5 || expect < -100.0) continue;
                    EXPECT_NEAR(ResponseDb(h, f), expect, kind == 0 ? 1e-3 : 0.02) << "at " << f * rate;
                }
            }
    // Corners beyond the usable range (0.0002 .. 0.49) take its ends, and stay stable filters.
    for (const double edge : {0.0002, 0.49})
    {
        Filter a, b;
        a.Design(false, edge, 3.0, 4, 1);
        b.Design(false, edge < 0.1 ? 1e-6 : 0.62, 3.0, 4, 1);
        EXPECT_TRUE(std::equal(a.taps, a.taps + 10, b.taps) && ImpulseDecay(b, 1 << 22) > 0) << edge;
    }
}

TEST(IirState, DelayIsTheWholeStateAndBlocksMaySplit)
{
    const double sectionTaps[18] = {1, 0.5, 0.25, 1, -0.5, 0.2, 0.3, 0.3, 0.0,
                                    2, 0.1, 0.0,  1, -1,   1,   1,   0.9, 0.4};
    for (const auto& [order, count] : {std::pair{5, 5}, {12, 12}, {0, 6}}) // order 0: three biquad sections
    {
        SCOPED_TRACE(testing::Message() << count << " delay doubles");
        Filter a, b;
        for (Filter* f : {&a, &b})
            if (order == 0)
                IirInitBiquad(&f->state, sectionTaps, 3, f->delay, f->work);
            else
                f->Design(order == 12, 0.1, 0.0, order, 0);
        // Exactly `count` doubles go in and come back out; a length of 0 or less touches neither
        // the output nor the memory.
        double set[kDelays + 1], got[kDelays + 1], y[kBlock];
        for (int i = 0; i <= kDelays; ++i)
        {
            set[i] = 0.1 * (i + 1) * (i % 2 ? -1.0 : 1.0);
            got[i] = 99.0;
        }
        std::fill(y, y + kBlock, 5.0);
        IirSetDelay(a.state, set);
        IirRun(set, y, 0, a.state);
        IirRunI(y, -3, a.state);
        IirGetDelay(a.state, got);
        EXPECT_TRUE(y[0] == 5.0 && std::equal(got, got + count, set) && got[count] == 99.0);
        // From warm memory, a block run in two pieces equals the block run whole.
        std::fill(a.delay, a.delay + kDelays, 0.0);
        a.Run(Noise(256, 0.5, 11));
        std::copy(a.delay, a.delay + kDelays, b.delay);
        const std::vector<double> x = Noise(kBlock, 0.5, 3);
        double y2[kBlock];
        a.Block(x.data(), y, kBlock);
        b.Block(x.data(), y2, 7);
        b.Block(x.data() + 7, y2 + 7, 25);
        EXPECT_TRUE(std::equal(y, y + kBlock, y2) && std::equal(a.delay, a.delay + kDelays, b.delay));
    }
}

TEST(IirBiquad, SectionsKeepTheirOwnMemory)
{
    // The section law itself is measured through the biquad modules, one to twelve sections deep.
    // Section 0 rings from its memory; section 1 has no numerator and mutes whatever reaches it.
    const double mute[12] = {1.0, 0.0, 0.0, 1.0, -0.5, 0.0, 0.0, 0.0, 0.0, 1.0, -0.5, 0.0};
    Filter f;
    IirInitBiquad(&f.state, mute, 2, f.delay, f.work);
    const double zeros[kBlock] = {}, inFirst[4] = {1.0, 0.0, 0.0, 0.0}, inSecond[4] = {0.0, 0.0, 1.0, 0.0};
    double y[kBlock];
    IirSetDelay(f.state, inFirst);
    IirRun(zeros, y, kBlock, f.state);
    EXPECT_TRUE(std::all_of(y, y + kBlock, [](double v) { return v == 0.0; }));
    IirSetDelay(f.state, inSecond);
    IirRun(zeros, y, kBlock, f.state);
    EXPECT_TRUE(y[0] == 1.0 && y[1] == 0.5) << y[0] << " " << y[1];
}

TEST(IirInit, RedesignGoesOnFromTheOldMemory)
{
    // A filter built afresh from the delay array at every block, in new working memory, continues
    // bit for bit (odd orders keep one state less than their sections).
    const std::vector<double> x = Noise(1024, 0.5, 5);
    for (const int order : {1, 4, 5, 12})
    {
        Filter a;
        a.Design(false, 0.05, 3.0, order, 1);
        const std::vector<double> ya = a.Run(x);
        double delay[kDelays] = {};
        std::vector<double> yb(x.size());
        for (size_t i = 0; i < x.size(); i += kBlock)
        {
            Filter b;
            b.Design(false, 0.05, 3.0, order, 1);
            std::copy(delay, delay + kDelays, b.delay);
            IirInit(&b.state, a.taps, order, b.delay, b.work);
            b.Block(x.data() + i, yb.data() + i, kBlock);
            std::copy(b.delay, b.delay + kDelays, delay);
        }
        EXPECT_EQ(ya, yb) << "order " << order;
    }
    // A Chebyshev low-pass on DC, retuned every second block from 200 Hz to 8 kHz and back: with
    // the memory kept the output stays near the DC gain (-3 dB); memory cleared at each redesign
    // (or handed to the wrong section) throws it far off (more than 0.3).
    for (const int order : {2, 4})
    {
        Filter f;
        f.Design(false, 200.0 / 48000.0, 3.0, order, 1);
        f.Run(std::vector<double>(48000, 1.0));
        double worst = 0.0, x[kBlock], y[2 * kBlock];
        std::fill(x, x + kBlock, 1.0);
        for (int b = 0; b < 800; ++b)
        {
            f.Design(false, 200.0 * std::pow(40.0, std::min(b, 800 - b) / 400.0) / 48000.0, 3.0, order, 1);
            f.Block(x, y, kBlock);
            f.Block(x, y + kBlock, kBlock);
            for (const double v : y)
                worst = std::max(worst, std::fabs(v - std::pow(10.0, -3.0 / 20.0)));
        }
        EXPECT_LT(worst, 0.02) << "order " << order;
    }
}

TEST(IirInit, UnusableTapsAreSilent)
{
    // a0 = 0, a NaN tap or too high an order give silence; order 0 is a plain gain b0 / a0.
    const std::vector<double> x = Noise(256, 0.5, 1);
    Filter g;
    const double zeroA0[4] = {1.0, 0.5, 0.0, -0.3}, nanTaps[4] = {1.0, std::nan(""), 1.0, -0.5},
                 gain[2] = {3.0, 2.0};
    double wide[2 * (kIirMaxOrder + 2)] = {1.0, 0.5, 1.0};
    for (const auto& [t, order, expected] :
         {std::tuple{zeroA0, 1, 0.0}, {nanTaps, 1, 0.0}, {wide, kIirMaxOrder + 1, 0.0}, {gain, 0, 1.5}})
    {
        IirInit(&g.state, t, order, g.delay, g.work);
        const std::vector<double> y = g.Run(x);
        for (size_t n = 0; n < x.size(); ++n)
            ASSERT_EQ(y[n], expected * x[n]) << "order " << order;
    }
}

// A left and a right cascade run as the lanes of one vector, in the two-lane form and the
// four-lane one, and split into two filters chained in one run, give the bits of each run alone,
// block after block and for short blocks too.
// Every section and side has its own taps, so a section or side mixed up shows.
TEST(IirPair, BothLaneFormsGiveTheBitsOfSingleRuns)
{
    const std::vector<double> noise = Noise(2 * 3 * kBlock);
    for (int sections = 1; sections <= 6; ++sections)
        for (int n : {5, kBlock})
        {
            double taps[2][6 * 6];
            for (int side = 0; side < 2; ++side)
                for (int k = 0; k < sections; ++k)
                {
                    const double v = 0.01 * (k + 7 * side);
                    const double t[6] = {0.2 + v, 0.1 - v, 0.05, 1.0, -0.5 + v, 0.2 - v};
                    std::copy(t, t + 6, taps[side] + 6 * k);
                }
            std::vector<double> out[4][2];
            // Alone, two lanes, four lanes, and split into two filters run as one chain.
            for (int form = 0; form < 4; ++form)
            {
                SetWideLanes(form >= 2);
                const int head = form == 3 ? sections / 2 : sections;
                Filter f[2], then[2];
                for (int side = 0; side < 2; ++side)
                {
                    IirInitBiquad(&f[side].state, taps[side], head, f[side].delay, f[side].work);
                    IirInitBiquad(&then[side].state, taps[side] + 6 * head, sections - head, then[side].delay,
                                  then[side].work);
                }
                for (int b = 0; b < 3; ++b)
                {
                    double x[2][kBlock];
                    for (int side = 0; side < 2; ++side)
                        std::copy_n(noise.begin() + (2 * b + side) * kBlock, n, x[side]);
                    if (form == 0)
                        for (int side = 0; side < 2; ++side)
                            IirRunI(x[side], n, f[side].state);
                    else if (form == 3)
                        IirRunPairChainI(x[0], x[1], n, f[0].state, f[1].state, then[0].state, then[1].state);
                    else
                        IirRunPairI(x[0], x[1], n, f[0].state, f[1].state);
                    for (int side = 0; side < 2; ++side)
                        out[form][side].insert(out[form][side].end(), x[side], x[side] + n);
                }
            }
            for (int form = 1; form < 4; ++form)
                for (int side = 0; side < 2; ++side)
                    EXPECT_EQ(out[form][side], out[0][side])
                        << sections << " sections, " << n << " samples, form " << form;
        }
}
