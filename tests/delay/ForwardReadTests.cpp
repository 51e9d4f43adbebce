#include "DelayMeasure.h"
#include "dsp/WideLanes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numeric>

// The forward head: echo positions at whole and fractional delays, its limits, the ring after a
// rate change, the glide of the delay time and the paired read. The loop filters' sections are
// measured as biquad modules; where the slot sets them, the golden renders pin them.
using namespace delaytest;

TEST(MultiDelay, EchoesLandAtTheSetDelayTheRingEndAndTheModulatedDelay)
{
    // 100 ms and a delay that is no multiple of the block length.
    auto d = std::make_unique<QLMMultiDelay>();
    for (float delay : {4410.0f, 12345.0f})
    {
        d->Reset();
        d->SnapTime();
        std::vector<double> x(size_t(delay) + 3000, 0.0);
        x[777] = 1.0;
        ExpectSingleEcho(Drive(*d, x, delay), 777 + size_t(delay));
    }
    // After a rate change the ring is resized and empty: only a new impulse comes back, and a
    // delay beyond the ring reads its oldest sample.
    std::vector<double> x(8192, 0.0);
    x[100] = 1.0;
    Drive(*d, x, 2000.0f);
    RateGuard guard(96000.0);
    d->SetMaxDelay(gMaxDelay);
    EXPECT_EQ(d->mSize, 96000 * 8 + 1000);
    d->SnapTime();
    std::vector<double> z(size_t(d->mSize) + 3200, 0.0);
    z[500] = 1.0;
    ExpectSingleEcho(Drive(*d, z, 1e9f), 500 + size_t(d->mSize) - 1);
    // Input 0 adds to the delay on the left and takes off on the right.
    const double shift = 1000.0, depth = 1.0;
    for (bool right : {false, true})
    {
        QLMMultiDelay m(right);
        m.SetModSource(0, &shift);
        m.SetModDepth(0, &depth);
        m.SnapTime();
        EXPECT_EQ(ArgMaxAbs(Drive(m, x, 3000.0f)), 100u + (right ? 2000u : 4000u)) << right;
    }
}

TEST(MultiDelay, DelayGlidesOverAHundredMilliseconds)
{
    // On a ramp the all-pass head is exact, so the output tells the delay sample by sample, a
    // fractional one too; the distance left shrinks by exp(-2 pi t / 100 ms). Below 1 ms the head
    // reads at 1 ms. (A snapped time is there at once: the echo tests snap between runs.)
    const size_t n = 32 * 4096, jump = 32 * 2048;
    std::vector<double> ramp(n), y(n);
    std::iota(ramp.begin(), ramp.end(), 0.0);
    const float from = 4410.25f, asked = 3.0f;
    const double to = gSampleRate / 1000.0, a = std::exp(-2.0 * M_PI / (0.1 * gSampleRate));
    auto d = std::make_unique<QLMMultiDelay>();
    d->SnapTime();
    for (size_t b = 0; b < n; b += gBlockLen)
    {
        const double* out = d->ReadTap(b < jump ? from : asked, 0);
        std::copy(out, out + gBlockLen, y.begin() + long(b));
        d->WriteBlock(ramp.data() + b);
    }
    EXPECT_NEAR(double(jump - 1) - y[jump - 1], from, 0.01);
    for (double ms : {3.0, 25.0, 100.0, 300.0})
    {
        const size_t k = size_t(ms * 0.001 * gSampleRate);
        const double expected = to + (from - to) * std::pow(a, double(k + 1));
        EXPECT_NEAR(double(jump + k) - y[jump + k], expected, 0.5 + 0.002 * std::fabs(expected - to)) << ms;
    }
}

// Reading a left and a right line together gives each side bit for bit what its own read gives,
// in either lane form: a gliding and a steady delay, a read across the ring's end, both loop
// filters on, then the high-pass on one side only, then the low-pass alone on both.
TEST(MultiDelay, PairedForwardReadMatchesSingleReads)
{
    RateGuard guard(48000.0);
    QLMMultiDelay singleL{false}, singleR{true}, pairL{false}, pairR{true};
    // A short ring, so that the run wraps it many times.
    for (QLMMultiDelay* d : {&singleL, &singleR, &pairL, &pairR})
    {
        d->SetMaxDelay(4000.0);
        d->SetLowPass(3000.0 / gSampleRate);
        d->SetHighPass(150.0 / gSampleRate);
    }
    const std::vector<double> l = Sine(431.0, 32 * 900), r = Sine(97.0, 32 * 900);
    std::size_t differing = 0, nonzero = 0;
    const auto right = [&](const QLMMultiDelay* d) { return d == &singleR || d == &pairR; };
    for (std::size_t b = 0; b + gBlockLen <= l.size(); b += gBlockLen)
    {
        for (QLMMultiDelay* d : {&singleR, &pairR, &singleL, &pairL})
            if (b == 32 * (right(d) ? 600 : 750)) d->SetHighPass(20.0 / gSampleRate);
        // The left delay glides between two times, the right one holds still.
        const float delayL = (b / gBlockLen) % 200 < 100 ? 1234.25f : 3100.5f, delayR = 2500.75f;
        // The single reads in the two-lane form, the paired one four lanes wide where AVX2 is.
        SetWideLanes(false);
        const double* yl = singleL.ReadTap(delayL, 0);
        const double* yr = singleR.ReadTap(delayR, 0);
        SetWideLanes(true);
        double pl[gBlockLen], pr[gBlockLen];
        QLMMultiDelay::ReadForwardPair(pairL, pairR, delayL, delayR, pl, pr);
        for (int i = 0; i < gBlockLen; ++i)
        {
            differing += (yl[i] != pl[i]) + (yr[i] != pr[i]);
            nonzero += (yl[i] != 0.0) + (yr[i] != 0.0);
        }
        for (QLMMultiDelay* d : {&singleL, &pairL, &singleR, &pairR})
            d->WriteBlock((right(d) ? r : l).data() + b);
    }
    EXPECT_TRUE(differing == 0 && nonzero > l.size()) << differing << " " << nonzero;
}

// Two pairs read together give each line bit for bit what its own read gives, in either lane
// form and across blocks that change form: while their loop filters match, after one line of the
// second pair drops its high-pass (its sides differ), then the other line (the pairs' stages
// differ: each pair reads alone), and once the first pair drops it too (one stage each).
TEST(MultiDelay, TwoPairsReadTogetherMatchSingleReads)
{
    RateGuard guard(48000.0);
    std::vector<std::unique_ptr<QLMMultiDelay>> single, together;
    for (int k = 0; k < 4; ++k)
        for (auto* group : {&single, &together})
        {
            group->push_back(std::make_unique<QLMMultiDelay>(k % 2 == 1));
            QLMMultiDelay& d = *group->back();
            d.SetMaxDelay(5000.0);
            d.SetLowPass((k < 2 ? 3000.0 : 7000.0) / gSampleRate);
            d.SetHighPass((k < 2 ? 150.0 : 400.0) / gSampleRate);
        }
    const std::vector<double> input[4] = {Sine(431.0, 32 * 900), Sine(97.0, 32 * 900), Sine(1210.0, 32 * 900),
                                          Sine(55.0, 32 * 900)};
    std::size_t differing = 0, nonzero = 0;
    for (std::size_t b = 0; b + gBlockLen <= input[0].size(); b += gBlockLen)
    {
        const std::size_t block = b / gBlockLen;
        for (int k = 0; k < 4; ++k)
            if (block == (k < 2 ? 600u : k == 2 ? 300u : 450u))
                for (auto* group : {&single, &together})
                    (*group)[std::size_t(k)]->SetHighPass(20.0 / gSampleRate);
        // The first left line glides back and forth, the others hold still.
        const float delays[4] = {block % 200 < 100 ? 1234.25f : 3100.5f, 2500.75f, 777.5f, 4100.0f};
        SetWideLanes(false);
        const double* own[4];
        double ownCopy[4][gBlockLen];
        for (int k = 0; k < 4; ++k)
        {
            own[k] = single[std::size_t(k)]->ReadTap(delays[k], 0);
            std::copy(own[k], own[k] + gBlockLen, ownCopy[k]);
        }
        SetWideLanes(block % 3 != 0);
        double out[4][gBlockLen];
        QLMMultiDelay::ReadForwardTwoPairs(
            {together[0].get(), together[1].get(), together[2].get(), together[3].get()}, delays,
            {out[0], out[1], out[2], out[3]});
        for (int k = 0; k < 4; ++k)
            for (int i = 0; i < gBlockLen; ++i)
            {
                differing += ownCopy[k][i] != out[k][i];
                nonzero += ownCopy[k][i] != 0.0;
            }
        for (int k = 0; k < 4; ++k)
            for (auto* group : {&single, &together})
                (*group)[std::size_t(k)]->WriteBlock(input[k].data() + b);
    }
    SetWideLanes(true);
    EXPECT_TRUE(differing == 0 && nonzero > 3 * input[0].size()) << differing << " " << nonzero;
}
