#include "dsp/ModDelayBuffer.h"
#include "dsp/TimeBase.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

// The power-of-two ring with its plain and all-pass-interpolated reads, checked by the exact sample
// that comes out, by the centroid shift of a smooth pulse and by ramps that read their own delay.
namespace
{
constexpr int kN = 32;

// Runs the 10 ms time glide onto `delay` with silence in the ring.
void SettleDelay(ModDelayBuffer& buf, double delay)
{
    const double zeros[kN] = {};
    for (int b = 0; b < 400; ++b)
    {
        buf.Write(zeros, kN);
        buf.ReadModulated(delay, kN);
    }
}

std::vector<double> RunModulated(ModDelayBuffer& buf, const std::vector<double>& in, double delay)
{
    std::vector<double> out(in.size());
    for (std::size_t pos = 0; pos + kN <= in.size(); pos += kN)
    {
        buf.Write(in.data() + pos, kN);
        const double* y = buf.ReadModulated(delay, kN);
        std::copy(y, y + kN, out.begin() + long(pos));
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
} // namespace

TEST(ModDelayBuffer, ReadGivesWholeSampleDelaysAcrossTheWrap)
{
    // The ring is the request rounded up to a power of two (256 here): 32-sample writes of odd
    // lengths cross its end; sample t holds t + 1, so a read is checked against its exact source.
    ModDelayBuffer buf;
    buf.Allocate(200);
    EXPECT_EQ(buf.mSize, 256);
    long t = 0;
    for (int b = 0; b < 40; ++b)
    {
        const int len = b % 3 == 0 ? 20 : kN;
        double block[kN];
        for (int i = 0; i < len; ++i)
            block[i] = static_cast<double>(t + i + 1);
        buf.Write(block, len);
        t += len;
        for (int delay : {0, 1, 13, 100, 223})
        {
            const double* y = buf.Read(delay + 0.9, len); // the fraction is dropped
            for (int i = 0; i < len; ++i)
            {
                const long src = t - len + i - delay;
                ASSERT_EQ(y[i], src >= 0 ? static_cast<double>(src + 1) : 0.0) << b << " delay " << delay;
            }
        }
        // Longer delays than the ring read the oldest sample it holds.
        EXPECT_EQ(*buf.Read(1e9, 1), t > 255 ? static_cast<double>(t - 255) : 0.0);
    }
}

TEST(ModDelayBuffer, ModulatedReadDelaysByWholePlusFraction)
{
    // The all-pass with e = (1 - f) / (1 + f) has a low-frequency delay of k + f samples and unit
    // gain there; below a tenth of a millisecond the delay is held at that floor.
    std::vector<double> pulse(1024);
    for (int i = 0; i < 1024; ++i)
        pulse[i] = std::exp(-0.5 * std::pow((i - 300.0) / 12.0, 2.0));
    const double c0 = Centroid(pulse);
    struct Row
    {
        double rate, delay, expected;
    };
    const Row rows[] = {{44100, 5.0, 5.0},       {44100, 7.25, 7.25},   {44100, 12.5, 12.5},
                        {44100, 100.75, 100.75}, {44100, 250.9, 250.9}, {44100, 0.0, 4.41},
                        {44100, 2.0, 4.41},      {96000, 2.0, 9.6},     {96000, 33.1, 33.1}};
    for (const Row& r : rows)
    {
        SetTimeBase(r.rate);
        ModDelayBuffer buf;
        buf.Allocate(512);
        SettleDelay(buf, r.delay);
        const std::vector<double> out = RunModulated(buf, pulse, r.delay);
        EXPECT_NEAR(Centroid(out) - c0, r.expected, 1e-4) << r.rate << " " << r.delay;
        double area = 0.0, areaIn = 0.0;
        for (int i = 0; i < 1024; ++i)
            area += out[i], areaIn += pulse[i];
        EXPECT_NEAR(area / areaIn, 1.0, 1e-6) << r.delay;
    }
    SetTimeBase(44100.0);
}

TEST(ModDelayBuffer, RampReadsItsDelayAcrossWrapsAndGlidesOverTenMilliseconds)
{
    // A linear ramp passes a first-order all-pass as the ramp delayed by exactly its DC delay, so
    // every output sample is checked while the ring wraps fifty times. A jump of the delay then
    // moves through the 10 ms one-pole: after 448 samples the gap is exp(-2 pi 448 / 441) of it.
    ModDelayBuffer buf;
    buf.Allocate(1024);
    SettleDelay(buf, 37.3);
    long t = 0;
    auto runBlock = [&](double delay)
    {
        double block[kN];
        for (int i = 0; i < kN; ++i)
            block[i] = static_cast<double>(t + i);
        buf.Write(block, kN);
        const double* y = buf.ReadModulated(delay, kN);
        t += kN;
        return std::vector<double>(y, y + kN);
    };
    for (int b = 0; b < 1600; ++b)
    {
        const std::vector<double> y = runBlock(37.3);
        for (int i = 0; b >= 20 && i < kN; ++i)
            ASSERT_NEAR(y[i], static_cast<double>(t - kN + i) - 37.3, 1e-4) << "block " << b << " i " << i;
    }
    double measured = 0.0;
    for (int b = 0; b < 14; ++b)
    {
        const double last = runBlock(137.3)[kN - 1];
        measured = static_cast<double>(t - 1) - last;
    }
    const double expected = 137.3 - 100.0 * std::exp(-2.0 * M_PI * 448.0 / 441.0);
    // The delay moves by a fraction of a sample per sample, so the all-pass lags a little.
    EXPECT_NEAR(measured, expected, 0.05);
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
    const double zeros[kN] = {};
    buf.Write(zeros, kN);
    for (double delay : {3.0, 40.0, 200.0})
    {
        const double* y = buf.Read(delay, kN);
        for (int i = 0; i < kN; ++i)
            ASSERT_EQ(y[i], 0.0) << delay;
    }
    const double* m = buf.ReadModulated(7.5, kN);
    for (int i = 0; i < kN; ++i)
        EXPECT_EQ(m[i], 0.0);
}
