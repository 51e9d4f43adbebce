#include "dsp/ModDelayBuffer.h"
#include "dsp/TimeBase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

// The power-of-two ring with its plain and all-pass-interpolated reads, checked by the exact sample
// that comes out and by ramps that read their own delay.
constexpr int kN = 32;

TEST(ModDelayBuffer, ReadGivesWholeSampleDelaysAcrossTheWrapAndClearEmptiesIt)
{
    // The ring is the request rounded up to a power of two (256 here): writes of 20 and 32 samples
    // cross its end; sample t holds t + 1, so a read is checked against its exact source. The
    // fraction of a delay is dropped; longer delays than the ring read the oldest sample it holds.
    ModDelayBuffer buf;
    buf.Allocate(200);
    long t = 0;
    double block[kN];
    for (int b = 0; b < 40; ++b)
    {
        const int len = b % 3 == 0 ? 20 : kN;
        for (int i = 0; i < len; ++i)
            block[i] = double(++t);
        buf.Write(block, len);
        for (const int delay : {0, 13, 223})
        {
            const double* y = buf.Read(delay + 0.9, len);
            for (int i = 0; i < len; ++i)
                ASSERT_EQ(y[i], double(std::max(t - len + i - delay + 1, 0L))) << b << " delay " << delay;
        }
        EXPECT_EQ(*buf.Read(1e9, 1), double(std::max(t - 255, 0L)));
    }
    // Clear empties the ring and the all-pass.
    buf.Clear();
    std::fill(block, block + kN, 0.0);
    buf.Write(block, kN);
    for (const double* y : {buf.Read(3.0, kN), buf.Read(200.0, kN), buf.ReadModulated(7.5, kN)})
        ASSERT_TRUE(std::all_of(y, y + kN, [](double v) { return v == 0.0; }));
}

TEST(ModDelayBuffer, RampReadsItsDelayAcrossWrapsAndGlidesOverTenMilliseconds)
{
    // The all-pass with e = (1 - f) / (1 + f) has a low-frequency delay of k + f samples and unit
    // gain there, so a linear ramp comes out as the ramp delayed by exactly that, every sample,
    // while the ring wraps fifty times; below a tenth of a millisecond the delay is held at that
    // floor. A jump of the delay then moves through the 10 ms one-pole: after 448 samples the gap
    // is exp(-2 pi 448 / 441) of it.
    for (const auto& [rate, delay, expected] : {std::tuple{44100.0, 37.3, 37.3},
                                                {44100.0, 250.9, 250.9},
                                                {44100.0, 2.0, 4.41},
                                                {96000.0, 0.0, 9.6}})
    {
        SetTimeBase(rate);
        ModDelayBuffer buf;
        buf.Allocate(1024);
        long t = 0;
        auto runBlock = [&](double d)
        {
            double block[kN];
            for (int i = 0; i < kN; ++i)
                block[i] = double(t++);
            buf.Write(block, kN);
            return buf.ReadModulated(d, kN);
        };
        for (int b = 0; b < 2000; ++b) // the glide from 0 settles in the first 400 blocks
        {
            const double* y = runBlock(delay);
            for (int i = 0; i < kN && b >= 400; ++i)
                ASSERT_NEAR(y[i], double(t - kN + i) - expected, 1e-4) << rate << " " << delay;
        }
        if (delay != 37.3) continue;
        for (int b = 0; b < 13; ++b)
            runBlock(137.3);
        const double last = runBlock(137.3)[kN - 1];
        // The delay moves by a fraction of a sample per sample, so the all-pass lags a little.
        EXPECT_NEAR(double(t - 1) - last, 137.3 - 100.0 * std::exp(-2.0 * M_PI * 448.0 / 441.0), 0.05);
    }
    SetTimeBase(44100.0);
}
