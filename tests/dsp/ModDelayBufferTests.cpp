#include "dsp/ModDelayBuffer.h"
#include "dsp/TimeBase.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{
constexpr int kN = 32;

struct RateGuard
{
    ~RateGuard() { SetTimeBase(44100.0); }
};

// Runs the 10 ms time glide onto `delay` with silence in the ring, so that a measurement starts
// from a settled delay and an empty all-pass.
void SettleDelay(ModDelayBuffer& buf, double delay)
{
    const double zeros[kN] = {};
    for (int b = 0; b < 400; ++b)
    {
        buf.Write(zeros, kN);
        buf.ReadModulated(delay, kN);
    }
}

// Pushes a signal through ReadModulated at a fixed delay and returns the output.
std::vector<double> RunModulated(ModDelayBuffer& buf, const std::vector<double>& in, double delay)
{
    std::vector<double> out(in.size());
    for (std::size_t pos = 0; pos + kN <= in.size(); pos += kN)
    {
        buf.Write(in.data() + pos, kN);
        const double* y = buf.ReadModulated(delay, kN);
        for (int i = 0; i < kN; ++i)
            out[pos + i] = y[i];
    }
    return out;
}

double Centroid(const std::vector<double>& x)
{
    double s = 0.0, m = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i)
    {
        s += x[i];
        m += static_cast<double>(i) * x[i];
    }
    return m / s;
}

std::vector<double> GaussPulse(int len, double centre, double width)
{
    std::vector<double> x(len);
    for (int i = 0; i < len; ++i)
        x[i] = std::exp(-0.5 * std::pow((i - centre) / width, 2.0));
    return x;
}
} // namespace

TEST(ModDelayBuffer, SizesArePowersOfTwoOfAtLeastTheRequest)
{
    ModDelayBuffer buf;
    EXPECT_EQ(buf.mSize, 16384);
    EXPECT_EQ(buf.mMask, 16383);
    const int requests[][2] = {{1, 1},     {200, 256},   {256, 256},    {257, 512},
                               {441, 512}, {8192, 8192}, {8193, 16384}, {16384, 16384}};
    for (const auto& r : requests)
    {
        buf.Allocate(r[0]);
        EXPECT_EQ(buf.mSize, r[1]) << r[0];
        EXPECT_EQ(buf.mMask, r[1] - 1) << r[0];
        EXPECT_EQ(buf.mWrite, 0);
    }
}

TEST(ModDelayBuffer, WriteWrapsExactlyAtTheEnd)
{
    ModDelayBuffer buf;
    buf.Allocate(256);
    const double block[256] = {};
    for (int b = 0; b < 7; ++b)
        buf.Write(block, kN);
    EXPECT_EQ(buf.mWrite, 224);
    buf.Write(block, kN); // ends exactly on the last sample of the ring
    EXPECT_EQ(buf.mWrite, 0);
    buf.Write(block, 20);
    for (int b = 0; b < 7; ++b)
        buf.Write(block, kN);
    EXPECT_EQ(buf.mWrite, 244);
    buf.Write(block, 12);
    EXPECT_EQ(buf.mWrite, 0);
    buf.Write(block, 10);
    buf.Write(block, 250); // 10 + 250 crosses the end by 4
    EXPECT_EQ(buf.mWrite, 4);
}

TEST(ModDelayBuffer, ReadGivesWholeSampleDelaysAcrossTheWrap)
{
    ModDelayBuffer buf;
    buf.Allocate(200); // 256 samples: the 32-sample writes cross the end every 8 blocks
    // Sample t holds t + 1, so a read can be checked against its exact source position.
    long t = 0;
    int gathered = 0, direct = 0;
    for (int b = 0; b < 40; ++b)
    {
        double block[kN];
        for (int i = 0; i < kN; ++i)
            block[i] = static_cast<double>(t + i + 1);
        buf.Write(block, kN);
        t += kN;
        for (int delay : {0, 1, 13, 44, 100, 223})
        {
            const double* y = buf.Read(delay + 0.9, kN); // the fraction is dropped
            for (int i = 0; i < kN; ++i)
            {
                const long src = t - kN + i - delay; // index of the sample that must come out
                const double expected = src >= 0 ? static_cast<double>(src + 1) : 0.0;
                ASSERT_EQ(y[i], expected) << "block " << b << " delay " << delay << " i " << i;
            }
            if (y == buf.mOut)
                ++gathered;
            else
                ++direct;
        }
    }
    EXPECT_GT(gathered, 0);
    EXPECT_GT(direct, 0);
}

TEST(ModDelayBuffer, ReadPointsIntoTheRingWhenContiguous)
{
    ModDelayBuffer buf;
    buf.Allocate(256);
    const double block[kN] = {1.0};
    for (int b = 0; b < 3; ++b)
        buf.Write(block, kN);             // mWrite = 96
    const double* p = buf.Read(10.0, kN); // samples 54..85: contiguous
    EXPECT_EQ(p, buf.mBuf + 54);
    p = buf.Read(64.0, kN); // samples 0..31
    EXPECT_EQ(p, buf.mBuf);
    p = buf.Read(65.0, kN); // samples 255 and 0..30: wraps, so it is gathered
    EXPECT_EQ(p, buf.mOut);
    p = buf.Read(96.0, kN); // samples 224..255: contiguous at the end of the ring
    EXPECT_EQ(p, buf.mBuf + 224);
}

TEST(ModDelayBuffer, DelayBeyondTheRingReadsAtMaskSamplesBack)
{
    ModDelayBuffer buf;
    buf.Allocate(256);
    long t = 0;
    for (int b = 0; b < 20; ++b)
    {
        double block[kN];
        for (int i = 0; i < kN; ++i)
            block[i] = static_cast<double>(++t);
        buf.Write(block, kN);
    }
    const std::vector<double> atMask(buf.Read(255.0, kN), buf.Read(255.0, kN) + kN);
    for (double delay : {256.0, 1000.0, 1e9})
    {
        const double* y = buf.Read(delay, kN);
        for (int i = 0; i < kN; ++i)
            EXPECT_EQ(y[i], atMask[i]) << delay;
        // The last sample read is the oldest one the ring still holds, written 255 samples before
        // the newest (t holds the newest sample's value).
        EXPECT_EQ(y[kN - 1], static_cast<double>(t - 255)) << delay;
        EXPECT_EQ(*buf.Read(delay, 1), static_cast<double>(t - 255)) << delay;
    }
}

TEST(ModDelayBuffer, ModulatedReadDelaysByWholePlusFraction)
{
    // The all-pass with e = (1 - f) / (1 + f) has a low-frequency delay of k + f samples: the
    // centroid of a smooth pulse moves by exactly that much.
    const int len = 1024;
    const double centre = 300.0;
    const std::vector<double> pulse = GaussPulse(len, centre, 12.0);
    const double c0 = Centroid(pulse);
    for (double delay : {5.0, 7.25, 12.5, 33.1, 100.75, 250.9})
    {
        ModDelayBuffer buf;
        buf.Allocate(512);
        SettleDelay(buf, delay);
        const std::vector<double> out = RunModulated(buf, pulse, delay);
        EXPECT_NEAR(Centroid(out) - c0, delay, 1e-4) << delay;
        // Unit gain at low frequencies: the area is kept.
        double area = 0.0, areaIn = 0.0;
        for (int i = 0; i < len; ++i)
        {
            area += out[i];
            areaIn += pulse[i];
        }
        EXPECT_NEAR(area / areaIn, 1.0, 1e-6) << delay;
    }
}

TEST(ModDelayBuffer, ModulatedReadAtIntegerDelayIsAPlainDelay)
{
    const std::vector<double> pulse = GaussPulse(512, 200.0, 3.0);
    ModDelayBuffer buf;
    buf.Allocate(512);
    SettleDelay(buf, 20.0);
    const std::vector<double> out = RunModulated(buf, pulse, 20.0);
    for (int i = 20; i < 512; ++i)
        EXPECT_NEAR(out[i], pulse[i - 20], 1e-5) << i;
}

TEST(ModDelayBuffer, ModulatedReadIsFlooredAtATenthOfAMillisecond)
{
    RateGuard guard;
    const std::vector<double> pulse = GaussPulse(1024, 300.0, 12.0);
    const double c0 = Centroid(pulse);
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        ModDelayBuffer buf;
        buf.Allocate(512);
        for (double delay : {0.0, 2.0})
        {
            SettleDelay(buf, delay);
            const std::vector<double> out = RunModulated(buf, pulse, delay);
            EXPECT_NEAR(Centroid(out) - c0, rate * 0.0001, 1e-4) << rate << " " << delay;
        }
    }
}

TEST(ModDelayBuffer, ModulatedReadFollowsARampAcrossManyWraps)
{
    // A linear ramp passes a first-order all-pass as the ramp delayed by exactly its DC delay,
    // so every output sample can be checked while the ring wraps fifty times.
    ModDelayBuffer buf;
    buf.Allocate(256);
    const double delay = 37.3;
    SettleDelay(buf, delay);
    long t = 0;
    for (int b = 0; b < 400; ++b)
    {
        double block[kN];
        for (int i = 0; i < kN; ++i)
            block[i] = 0.001 * static_cast<double>(t + i);
        buf.Write(block, kN);
        const double* y = buf.ReadModulated(delay, kN);
        if (b >= 20)
        {
            for (int i = 0; i < kN; ++i)
                ASSERT_NEAR(y[i], 0.001 * (static_cast<double>(t + i) - delay), 1e-8)
                    << "block " << b << " i " << i;
        }
        t += kN;
    }
}

TEST(ModDelayBuffer, DelayTimeGlidesOverTenMilliseconds)
{
    // A jump of the delay time moves through the 10 ms one-pole: after 10 ms the remaining gap is
    // exp(-2 pi) of the jump, measured on a ramp where the output reads the delay directly.
    ModDelayBuffer buf;
    buf.Allocate(1024);
    SettleDelay(buf, 10.0);
    long t = 0;
    auto runBlock = [&](double delay)
    {
        double block[kN];
        for (int i = 0; i < kN; ++i)
            block[i] = static_cast<double>(t + i);
        buf.Write(block, kN);
        const double* y = buf.ReadModulated(delay, kN);
        t += kN;
        return static_cast<double>(t - 1) - y[kN - 1]; // the delay of the block's last sample
    };
    for (int b = 0; b < 20; ++b)
        runBlock(10.0);
    // 441 samples at 44.1 kHz is not a whole number of blocks: check the gap at 14 blocks (448).
    double measured = 0.0;
    for (int b = 0; b < 14; ++b)
        measured = runBlock(110.0);
    const double a = std::exp(-2.0 * M_PI / 441.0);
    const double expected = 110.0 - 100.0 * std::pow(a, 448.0);
    // The delay moves by a fraction of a sample per sample, so the all-pass lags a little.
    EXPECT_NEAR(measured, expected, 0.05);
    EXPECT_GT(110.0 - measured, 50.0 * std::pow(a, 448.0));
}

TEST(ModDelayBuffer, ClearEmptiesRingAndAllPass)
{
    ModDelayBuffer buf;
    buf.Allocate(256);
    double block[kN];
    for (int i = 0; i < kN; ++i)
        block[i] = 1.0 + i;
    for (int b = 0; b < 5; ++b)
    {
        buf.Write(block, kN);
        buf.ReadModulated(7.5, kN);
    }
    buf.Clear();
    EXPECT_EQ(buf.mWrite, 0);
    EXPECT_EQ(buf.mAllPassState, 0.0);
    for (int i = 0; i < buf.mSize; ++i)
        ASSERT_EQ(buf.mBuf[i], 0.0);
    const double* y = buf.Read(3.0, kN);
    for (int i = 0; i < kN; ++i)
        EXPECT_EQ(y[i], 0.0);
}
