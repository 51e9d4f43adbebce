#include "DelayMeasure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>

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
    const auto x = Noise(n);
    const auto y = Drive(*d, x, delay);

    // Locate every output sample in the input (noise values are unique).
    std::map<double, long> where;
    for (size_t i = 0; i < n; ++i)
        where[x[i]] = long(i);
    std::vector<long> restarts;
    long prev = -1;
    // The first two segments still reach back before the input began.
    for (size_t t = 3 * size_t(delay); t < n; ++t)
    {
        const auto it = where.find(y[t]);
        ASSERT_NE(it, where.end()) << t;
        const long j = it->second;
        // Always in the past, by at least the offset.
        EXPECT_GE(long(t) - j, long(offset) - 1) << t;
        if (prev >= 0 && j != prev - 1)
        {
            restarts.push_back(long(t));
            // A new segment starts at the write position of the block in which the old one ended
            // (the sample before t), not at the exact sample; the whole-sample all-pass reads one
            // sample later than the offset.
            const long blockStart = (long(t) - 1) / gBlockLen * gBlockLen;
            EXPECT_EQ(j, blockStart - (long(offset) - 1)) << t;
        }
        prev = j;
    }
    ASSERT_GE(restarts.size(), 10u);
    for (size_t r = 1; r < restarts.size(); ++r)
        EXPECT_EQ(restarts[r] - restarts[r - 1], long(delay)) << r;
}

TEST(MultiDelay, BackwardRestartWaitsForTheFade)
{
    auto d = std::make_unique<QLMMultiDelay>();
    d->SetMode(DelayBackward);
    const double fadeMs = 10.0;
    d->SetReverseFade(fadeMs);
    const auto noise = Noise(32 * 1000);
    // Segments of 100 ms, and a restart asked for in every block: each is honoured at the first
    // sample after a fade has run out, never inside one.
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
    const long fadeLen = long(std::ceil(gSampleRate * fadeMs * 0.001));
    for (size_t k = 1; k < restarts.size(); ++k)
        EXPECT_EQ(restarts[k] - restarts[k - 1], fadeLen + 1) << k;
}

TEST(MultiDelay, GrainSpeedShiftsPitchByOctaves)
{
    const double hz = 1000.0;
    const size_t n = 32 * 2048;
    // -1..1 covers two octaves down to two up: 0.5 is one octave up.
    for (auto [speed, expected] : {std::pair{0.5, 2000.0}, std::pair{0.0, 1000.0}, std::pair{-0.5, 500.0}})
    {
        auto d = std::make_unique<QLMMultiDelay>();
        d->SetMode(DelayGrain);
        d->SetGrainSpeed(speed);
        d->SnapTime();
        const auto y = Drive(*d, Sine(hz, n), float(0.1 * gSampleRate));
        const auto w = Windowed(y, n - 32768, n);
        const double peak = PeakHz(w, 250.0, 4000.0, 2.0);
        EXPECT_NEAR(peak, expected, 10.0) << speed;
        // The input tone itself is gone when the pitch moved.
        if (speed != 0.0)
        {
            EXPECT_LT(Level(w, hz), 0.05 * Level(w, peak)) << speed;
        }
    }
}

TEST(MultiDelay, TappedHeadsLandAtTheirTimes)
{
    auto d = std::make_unique<QLMMultiDelay>();
    d->SetMode(DelayTapped);
    auto tapDelay = [](int tap) { return float(300 + 1237 * tap); };
    // Input 6 adds a time in seconds to every head; input 0 is ignored in this mode.
    const double tapShift = 0.01, delayShift = 5000.0, one = 1.0;
    d->SetModSource(6, &tapShift);
    d->SetModDepth(6, &one);
    d->SetModSource(0, &delayShift);
    d->SetModDepth(0, &one);

    const size_t n = 32 * 1024, settle = 32 * 100, impulse = settle + 5;
    std::vector<std::vector<double>> out(kMaxDelayTaps, std::vector<double>(n, 0.0));
    std::vector<double> x(n, 0.0);
    x[impulse] = 1.0;
    // Every head snaps to its time in the first block; later blocks hold it.
    for (size_t b = 0; b < n; b += gBlockLen)
    {
        for (int tap = 0; tap < kMaxDelayTaps; ++tap)
        {
            if (b == 0) d->SnapTime();
            const double* y = d->ReadTap(tapDelay(tap), tap);
            std::copy(y, y + gBlockLen, out[tap].begin() + b);
        }
        d->WriteBlock(x.data() + b);
    }
    for (int tap = 0; tap < kMaxDelayTaps; ++tap)
    {
        const size_t at = impulse + size_t(tapDelay(tap)) + size_t(tapShift * gSampleRate);
        EXPECT_EQ(ArgMaxAbs(out[tap]), at) << tap;
        EXPECT_NEAR(out[tap][at], 1.0, 1e-3) << tap;
    }
}

class GrainTiming : public ::testing::TestWithParam<double>
{
};

TEST_P(GrainTiming, UnitSpeedGrainsKeepTheirDelay)
{
    RateGuard rate(GetParam());
    // On a ramp the cubic head is exact, so the output tells the delay sample by sample.
    const size_t n = 32 * size_t(gSampleRate / 32.0 * 0.5);
    std::vector<double> ramp(n);
    for (size_t i = 0; i < n; ++i)
        ramp[i] = double(i);
    // About 50 ms, chosen so that a grain (99.5 % of the size) is a whole number and a half of
    // samples long.
    const double grainLen = std::round(0.05 * gSampleRate * 0.995) + 0.5;
    const double sizeMs = grainLen / (gSampleRate * 0.001 * 0.995);
    const float delay = float(std::round(0.1 * gSampleRate));
    // Position 0: grains start a whole delay back. Position 1: only one grain back.
    for (auto [position, expected] : {std::pair{0.0, double(delay)}, std::pair{1.0, grainLen}})
    {
        auto d = std::make_unique<QLMMultiDelay>();
        d->SetMode(DelayGrain);
        d->SetGrainSize(sizeMs);
        d->SetGrainPosition(position);
        const auto y = Drive(*d, ramp, delay);
        // From the third grain on. During a fade the old head reads without interpolation, which
        // on a ramp costs at most the fraction of the delay (a half), and the fade weights are
        // rounded to single precision, which costs a few parts in 1e8 of the signal.
        // Outside the fades (the last 80 % of each grain) the cubic head is exact.
        const double fraction = expected - std::floor(expected);
        size_t exact = 0, total = 0;
        for (size_t t = size_t(delay) + 3 * size_t(grainLen); t < n; ++t, ++total)
        {
            const double error = std::fabs(double(t) - y[t] - expected), rounding = 1e-6 + 1e-7 * double(t);
            ASSERT_LE(error, rounding + fraction) << position << " " << t;
            if (error <= rounding) ++exact;
        }
        EXPECT_GT(double(exact), 0.79 * double(total)) << position;
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, GrainTiming, ::testing::Values(44100.0, 96000.0));
