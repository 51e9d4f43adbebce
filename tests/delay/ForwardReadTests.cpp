#include "DelayMeasure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using namespace delaytest;

namespace
{
class ForwardRead : public ::testing::TestWithParam<double>
{
};

// Impulse response of a forward read: one unit echo at `delay`, nothing else of weight.
void ExpectSingleEcho(const std::vector<double>& y, size_t at)
{
    EXPECT_EQ(ArgMaxAbs(y), at);
    EXPECT_NEAR(y[at], 1.0, 1e-3);
    double rest = 0.0;
    for (size_t i = 0; i < y.size(); ++i)
        if (i != at) rest += y[i] * y[i];
    // The smoother runs in single precision, so a long delay jitters by a few thousandths of a
    // sample; a head one sample off would leave a residue near 1.
    EXPECT_LT(rest, 1e-4);
}
} // namespace

TEST_P(ForwardRead, EchoesLandAtTheSetDelay)
{
    RateGuard rate(GetParam());
    auto d = std::make_unique<QLMMultiDelay>();
    // 100 ms and a delay that is no multiple of the block length.
    for (float delay : {float(0.1 * gSampleRate), 12345.0f})
    {
        d->Reset();
        d->SnapTime();
        std::vector<double> x(size_t(delay) + 3000, 0.0);
        x[777] = 1.0;
        ExpectSingleEcho(Drive(*d, x, delay), 777 + size_t(delay));
    }

    // A fractional delay, read as the phase delay of a low sine (the all-pass is exact there),
    // at unit level.
    const double frac = 0.1 * gSampleRate + 0.25;
    d->Reset();
    d->SnapTime();
    const double hz = 150.0;
    const size_t n = (size_t(frac) / gBlockLen + 512) * gBlockLen;
    const auto y = Drive(*d, Sine(hz, n), float(frac));
    const Fit f = FitSine(y, hz, n - 8192, n);
    EXPECT_NEAR(f.gain, 1.0, 1e-6);
    EXPECT_NEAR(SineDelay(f, hz, frac), frac, 0.01);
}

TEST_P(ForwardRead, DelayIsHeldBetweenOneMillisecondAndTheRingEnd)
{
    RateGuard rate(GetParam());
    auto d = std::make_unique<QLMMultiDelay>();
    EXPECT_EQ(d->mSize, gMaxDelay);

    // Below 1 ms the head reads at 1 ms: gSamplesPerMs samples, a fractional delay at 44.1 kHz.
    d->SnapTime();
    const double hz = 100.0;
    const auto y = Drive(*d, Sine(hz, 8192), 3.0f);
    const Fit f = FitSine(y, hz, 2048, 8192);
    EXPECT_NEAR(f.gain, 1.0, 1e-6);
    EXPECT_NEAR(SineDelay(f, hz, gSamplesPerMs), double(gSamplesPerMs), 0.01);

    // Beyond the ring the head reads the oldest sample: an echo at mSize - 1.
    d->Reset();
    d->SnapTime();
    std::vector<double> x(size_t(d->mSize) + 3200, 0.0);
    x[1000] = 1.0;
    ExpectSingleEcho(Drive(*d, x, 1e9f), 1000 + size_t(d->mSize) - 1);
}

INSTANTIATE_TEST_SUITE_P(Rates, ForwardRead, ::testing::Values(44100.0, 48000.0, 96000.0));

TEST(MultiDelay, RateChangeResizesAndClearsTheRing)
{
    auto d = std::make_unique<QLMMultiDelay>();
    ASSERT_EQ(d->mSize, 353800);
    // Something in the ring that a resize must forget.
    std::vector<double> x(4096, 0.0);
    x[100] = 1.0;
    Drive(*d, x, 2000.0f);

    // Room reserved for the highest rate: the rate change reuses the memory it has.
    d->Reserve(96000 * 8 + 1000);
    const double* memory = d->mBuf.get();
    RateGuard rate(96000.0);
    d->SetMaxDelay(gMaxDelay);
    EXPECT_EQ(d->mBuf.get(), memory);
    EXPECT_EQ(d->mSize, 96000 * 8 + 1000);
    EXPECT_TRUE(d->mBufferReady);
    EXPECT_EQ(d->mMaxFade, 4800);

    // Only the new impulse comes back, at the new ring end.
    d->SnapTime();
    std::vector<double> z(size_t(d->mSize) + 3200, 0.0);
    z[500] = 1.0;
    ExpectSingleEcho(Drive(*d, z, 1e9f), 500 + size_t(d->mSize) - 1);
}

TEST(MultiDelay, ChannelSignSteersDelayModulation)
{
    const double shift = 1000.0, depth = 1.0;
    for (bool right : {false, true})
    {
        auto d = std::make_unique<QLMMultiDelay>(right);
        d->SetModSource(0, &shift);
        d->SetModDepth(0, &depth);
        d->SnapTime();
        std::vector<double> x(8000, 0.0);
        x[64] = 1.0;
        const auto y = Drive(*d, x, 3000.0f);
        EXPECT_EQ(ArgMaxAbs(y), 64u + (right ? 2000u : 4000u));
    }
}

namespace
{
// Gain of the one-section high- and low-pass at hz, given their corner: the analogue prototypes
// with quality 1.45 / 2, at the prewarped frequency of the bilinear transform.
double SectionGain(double hz, double cornerHz, bool highpass)
{
    const double q = 1.45 / 2.0;
    const double W = std::tan(M_PI * hz / gSampleRate) / std::tan(M_PI * cornerHz / gSampleRate);
    const double num = highpass ? W * W : 1.0;
    return num / std::hypot(1.0 - W * W, W / q);
}

double MeasuredGain(QLMMultiDelay& d, double hz)
{
    d.Reset();
    d.SnapTime();
    const auto y = Drive(d, Sine(hz, 32768), 441.0f);
    return FitSine(y, hz, 16384, 32768).gain;
}
} // namespace

TEST(MultiDelay, ForwardFiltersCutWhereSet)
{
    auto d = std::make_unique<QLMMultiDelay>();
    // Open by default: a 15 kHz tone passes untouched.
    EXPECT_NEAR(MeasuredGain(*d, 15000.0), 1.0, 1e-4);

    const double lowHz = 1500.0;
    d->SetLowPass(lowHz / gSampleRate);
    EXPECT_TRUE(d->mLowOn);
    for (double hz : {375.0, 750.0, 1500.0, 3000.0, 6000.0})
        EXPECT_NEAR(20.0 * std::log10(MeasuredGain(*d, hz)), 20.0 * std::log10(SectionGain(hz, lowHz, false)),
                    0.05)
            << hz;
    d->SetLowPass(0.5);
    EXPECT_FALSE(d->mLowOn);

    const double highHz = 300.0;
    d->SetHighPass(highHz / gSampleRate);
    EXPECT_TRUE(d->mHighOn);
    for (double hz : {75.0, 150.0, 300.0, 600.0, 2400.0})
        EXPECT_NEAR(20.0 * std::log10(MeasuredGain(*d, hz)), 20.0 * std::log10(SectionGain(hz, highHz, true)),
                    0.05)
            << hz;

    // GRAIN pins the corner but still takes the switch from the value asked for.
    d->SetMode(DelayGrain);
    d->SetLowPass(0.1);
    EXPECT_TRUE(d->mLowOn);
    EXPECT_DOUBLE_EQ(d->mLowPass.mFreqParam, 0.25);
}

TEST(MultiDelay, DelayGlidesUnlessSnapped)
{
    // On a ramp the all-pass head is exact, so the output tells the delay sample by sample.
    const size_t n = 32 * 4096;
    std::vector<double> ramp(n);
    for (size_t i = 0; i < n; ++i)
        ramp[i] = double(i);
    const float from = 1000.0f, to = 3000.0f;
    const size_t jump = 32 * 2048;
    for (bool snap : {false, true})
    {
        auto d = std::make_unique<QLMMultiDelay>();
        d->SnapTime();
        std::vector<double> y(n);
        for (size_t b = 0; b < n; b += gBlockLen)
        {
            if (b == jump && snap) d->SnapTime();
            const double* out = d->ReadTap(b < jump ? from : to, 0);
            std::copy(out, out + gBlockLen, y.begin() + long(b));
            d->WriteBlock(ramp.data() + b);
        }
        EXPECT_NEAR(double(jump - 1) - y[jump - 1], from, 0.01);
        // A 100 ms one-pole: the distance left shrinks by exp(-2 pi t / 100 ms).
        const double a = std::exp(-2.0 * M_PI / (0.1 * gSampleRate));
        for (double ms : {1.0, 25.0, 100.0, 300.0})
        {
            const size_t k = size_t(ms * 0.001 * gSampleRate);
            const double expected = snap ? to : to + (from - to) * std::pow(a, double(k + 1));
            EXPECT_NEAR(double(jump + k) - y[jump + k], expected, 0.5 + 0.002 * std::fabs(expected - to))
                << snap << " " << ms;
        }
    }
}
