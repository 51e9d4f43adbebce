#include "common/Noise.h"
#include "dsp/OnePoleBlock.h"
#include "dsp/ScaledSum.h"
#include "dsp/TimeBase.h"
#include "dsp/Vec.h"
#include "dsp/WideLanes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

// The vector helpers whose argument order or edge handling is easy to get wrong. (The clamps are
// read through the smoother's modulation bounds.)
TEST(Vec, OperandOrderSignsOverlapAndEmptyLengths)
{
    const double a[3] = {1.0, 2.0, 3.0}, b[3] = {10.0, 20.0, 30.0};
    double d[3];
    VecSub(a, b, d, 3); // b - a
    EXPECT_EQ(d[2], 27.0);
    VecRevSub(a, 1.0, d, 3); // 1 - a
    EXPECT_EQ(d[2], -2.0);
    double src[3] = {-1.25, 2.75, -0.5}, whole[3];
    VecModf(src, whole, src, 3); // the fraction keeps the sign and may overwrite the source
    EXPECT_TRUE(whole[0] == -1.0 && src[0] == -0.25 && src[1] == 0.75);
    // The usual sign function: below zero to -1, above to 1; zero stays zero.
    double x[5] = {-3.0, -0.5, 0.0, 0.5, 3.0};
    VecBelowSetI(x, 5, 0.0, -1.0);
    VecAboveSetI(x, 5, 0.0, 1.0);
    EXPECT_EQ(std::vector<double>(x, x + 5), (std::vector<double>{-1.0, -1.0, 0.0, 1.0, 1.0}));
    // Zero and negative lengths do nothing; the maximum of nothing is 0. (Overlapping moves run in
    // the dry path's delay, which the golden renders and the engine's timing tests pin.)
    double y[6] = {0, 1, 2, 3, 4, 5};
    VecSet(5.0, y, -3);
    double r = 42.0;
    VecMaxAbs(y, 0, &r);
    EXPECT_TRUE(y[0] == 0.0 && r == 0.0);
    double* aligned = VecAlloc(33);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(aligned) % 32, 0u);
    VecFree(aligned);
}

// Two one-pole smoothers run as the lanes of one vector give, bit for bit, what each gives on its
// own: different poles (a fast one, a slow one, one that passes straight through), noise and a
// step, with the denormal guard.
TEST(OnePoleBlock, PairedRunMatchesSingleRuns)
{
    const std::vector<double> noise = testnoise::Noise(32 * 400, 0.7);
    for (const auto& [p0, p1] : {std::pair{0.3, 0.9995}, {0.999, 0.0}, {0.0, 0.6}})
    {
        double single0 = 0.0, single1 = 0.25, paired0 = 0.0, paired1 = 0.25;
        std::size_t differing = 0;
        for (std::size_t b = 0; b + 32 <= noise.size(); b += 32)
        {
            double x0[32], x1[32], q0[32], q1[32];
            for (int i = 0; i < 32; ++i)
            {
                x0[i] = q0[i] = noise[b + std::size_t(i)];
                x1[i] = q1[i] = b < 32 * 200 ? 1.0 : 0.0;
            }
            single0 = OnePoleBlock(x0, 32, p0, 1.0 - p0, 1e-15, single0);
            single1 = OnePoleBlock(x1, 32, p1, 1.0 - p1, 1e-15, single1);
            OnePoleBlockPair(q0, q1, 32, p0, 1.0 - p0, p1, 1.0 - p1, 1e-15, paired0, paired1);
            for (int i = 0; i < 32; ++i)
                differing += (x0[i] != q0[i]) + (x1[i] != q1[i]);
        }
        EXPECT_TRUE(differing == 0 && single0 == paired0 && single1 == paired1) << p0 << " " << p1;
    }
}

// The sum of scaled blocks, two lanes wide and four, for every count of sources: the bits of the
// plain sum, term by term in order.
TEST(ScaledSum, BothFormsAddEverySourceInOrder)
{
    const std::vector<double> noise = testnoise::Noise(17 * gBlockLen);
    const double* src[16];
    double gain[16];
    for (int k = 0; k < 16; ++k)
    {
        src[k] = noise.data() + (k + 1) * gBlockLen;
        gain[k] = 0.45 - 0.028125 * k;
    }
    for (int count = 0; count <= 16; ++count)
    {
        double expected[gBlockLen], out[gBlockLen];
        for (int i = 0; i < gBlockLen; ++i)
        {
            expected[i] = noise[i];
            for (int k = 0; k < count; ++k)
                expected[i] += src[k][i] * gain[k];
        }
        for (bool wide : {false, true})
        {
            SetWideLanes(wide);
            SumScaledBlocks(noise.data(), src, gain, count, out);
            EXPECT_EQ(std::vector<double>(out, out + gBlockLen),
                      std::vector<double>(expected, expected + gBlockLen))
                << count << " sources";
        }
    }
}
