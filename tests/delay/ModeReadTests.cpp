#include "DelayMeasure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <numeric>

// The other read modes: reversed segments, grain timing and the tapped heads. The grains' pitch law
// is pinned by the golden renders.
using namespace delaytest;

TEST(MultiDelay, BackwardPlaysSegmentsReversed)
{
    auto d = std::make_unique<QLMMultiDelay>();
    d->SetMode(DelayBackward);
    d->SetReverseFade(0.0);
    d->mLowPass.SetBypass(true); // compare the bare heads with the input
    // A settled whole-sample offset: the all-pass then reads one sample exactly.
    const double offset = 64.0;
    d->mReverseOffset = offset;
    d->mReverseOffsetSmoother.SetLastD(offset + 1e-15);
    const float delay = 2205.0f; // 50 ms; with the position at 0 a segment lasts as long
    const size_t n = 32 * 1400;
    const auto x = UniqueNoise(n);
    const auto y = Drive(*d, x, delay);
    std::map<double, long> where; // every output sample located in the input
    for (size_t i = 0; i < n; ++i)
        where[x[i]] = long(i);
    std::vector<long> restarts;
    long prev = -1;
    for (size_t t = 3 * size_t(delay); t < n; ++t) // the first segments reach before the input
    {
        const auto it = where.find(y[t]);
        ASSERT_NE(it, where.end()) << t;
        const long j = it->second;
        if (prev >= 0 && j != prev - 1)
        {
            // A new segment starts at the write position of the block in which the old one ended,
            // one sample later than the offset (the whole-sample all-pass).
            restarts.push_back(long(t));
            EXPECT_EQ(j, (long(t) - 1) / gBlockLen * gBlockLen - (long(offset) - 1)) << t;
        }
        prev = j;
    }
    ASSERT_GE(restarts.size(), 10u);
    for (size_t r = 1; r < restarts.size(); ++r)
        EXPECT_EQ(restarts[r] - restarts[r - 1], long(delay)) << r;
}

TEST(MultiDelay, BackwardRestartWaitsForTheFade)
{
    // Segments of 100 ms and a restart asked for in every block: each is honoured at the first
    // sample after a fade has run out, never inside one.
    auto d = std::make_unique<QLMMultiDelay>();
    d->SetMode(DelayBackward);
    d->SetReverseFade(10.0);
    const auto noise = UniqueNoise(32 * 1000);
    std::vector<long> restarts;
    int lastElapsed = 0;
    for (size_t b = 0; b < noise.size(); b += gBlockLen)
    {
        d->mRestart = true;
        d->ReadTap(float(0.1 * gSampleRate), 0);
        // A restart at sample i leaves 31 - i samples played at the end of the block.
        if (d->mSegElapsed < lastElapsed + gBlockLen) restarts.push_back(long(b) + 31 - d->mSegElapsed);
        lastElapsed = d->mSegElapsed;
        d->WriteBlock(noise.data() + b);
    }
    ASSERT_GE(restarts.size(), 50u);
    for (size_t k = 1; k < restarts.size(); ++k)
        EXPECT_EQ(restarts[k] - restarts[k - 1], long(std::ceil(gSampleRate * 0.010)) + 1) << k;
}

TEST(MultiDelay, UnitSpeedGrainsKeepTheirDelay)
{
    // On a ramp the cubic head is exact, so the output tells the delay sample by sample. A grain
    // (99.5 % of the size) is a whole number and a half of samples long. Position 0 starts grains
    // a whole delay back, position 1 only one grain back. During a fade the old head reads without
    // interpolation (an error of at most the delay's fraction); outside the fades (the last 80 %
    // of each grain) the head is exact.
    const size_t n = 32 * size_t(gSampleRate / 32.0 * 0.5);
    std::vector<double> ramp(n);
    std::iota(ramp.begin(), ramp.end(), 0.0);
    const double grainLen = std::round(0.05 * gSampleRate * 0.995) + 0.5;
    const float delay = float(std::round(0.1 * gSampleRate));
    for (auto [position, expected] : {std::pair{0.0, double(delay)}, std::pair{1.0, grainLen}})
    {
        auto d = std::make_unique<QLMMultiDelay>();
        d->SetMode(DelayGrain);
        d->SetGrainPosition(position);
        d->SetGrainSize(grainLen / (gSampleRate * 0.001 * 0.995));
        const auto y = Drive(*d, ramp, delay);
        const double fraction = expected - std::floor(expected);
        size_t exact = 0, total = 0;
        for (size_t t = size_t(delay) + 3 * size_t(grainLen); t < n; ++t, ++total)
        {
            const double error = std::fabs(double(t) - y[t] - expected), rounding = 1e-6 + 1e-7 * double(t);
            ASSERT_LE(error, rounding + fraction) << position << " " << t;
            exact += error <= rounding;
        }
        EXPECT_GT(double(exact), 0.79 * double(total)) << position;
    }
}

TEST(MultiDelay, TappedHeadsLandAtTheirTimes)
{
    auto d = std::make_unique<QLMMultiDelay>();
    d->SetMode(DelayTapped);
    // Input 6 adds a time in seconds to every head; input 0 is ignored in this mode.
    const double tapShift = 0.01, delayShift = 5000.0, one = 1.0;
    for (const auto& [input, source] : {std::pair{6, &tapShift}, {0, &delayShift}})
    {
        d->SetModSource(input, source);
        d->SetModDepth(input, &one);
    }
    const auto tapDelay = [](int tap) { return float(300 + 1237 * tap); };
    const size_t n = 32 * 1024, impulse = 32 * 100 + 5;
    std::vector<std::vector<double>> out(kMaxDelayTaps, std::vector<double>(n, 0.0));
    std::vector<double> x(n, 0.0);
    x[impulse] = 1.0;
    for (size_t b = 0; b < n; b += gBlockLen)
    {
        for (int tap = 0; tap < kMaxDelayTaps; ++tap)
        {
            if (b == 0) d->SnapTime(); // every head snaps in the first block, later blocks hold it
            const double* y = d->ReadTap(tapDelay(tap), tap);
            std::copy(y, y + gBlockLen, out[tap].begin() + long(b));
        }
        d->WriteBlock(x.data() + b);
    }
    for (int tap = 0; tap < kMaxDelayTaps; ++tap)
        ExpectSingleEcho(out[tap], impulse + size_t(tapDelay(tap)) + size_t(tapShift * gSampleRate));
}
