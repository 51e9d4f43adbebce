#include "dsp/Vec.h"

#include <gtest/gtest.h>

TEST(Vec, SubtractsFirstOperandFromSecond)
{
    const double a[3] = {1.0, 2.0, 3.0};
    const double b[3] = {10.0, 20.0, 30.0};
    double d[3];
    VecSub(a, b, d, 3);
    EXPECT_EQ(d[0], 9.0);
    EXPECT_EQ(d[2], 27.0);
    double e[3] = {10.0, 20.0, 30.0};
    VecSubI(a, e, 3);
    EXPECT_EQ(e[1], 18.0);
}

TEST(Vec, ModfKeepsSignOfFraction)
{
    double src[3] = {-1.25, 2.75, -0.5};
    double whole[3];
    VecModf(src, whole, src, 3); // the fraction may overwrite the source
    EXPECT_EQ(whole[0], -1.0);
    EXPECT_EQ(src[0], -0.25);
    EXPECT_EQ(whole[1], 2.0);
    EXPECT_EQ(src[1], 0.75);
    EXPECT_EQ(whole[2], -0.0);
    EXPECT_EQ(src[2], -0.5);
}

TEST(Vec, ClampAndSignIdioms)
{
    double x[5] = {-3.0, -0.5, 0.0, 0.5, 3.0};
    VecFloorI(x, 5, -1.0);
    VecCeilI(x, 5, 1.0);
    EXPECT_EQ(x[0], -1.0);
    EXPECT_EQ(x[1], -0.5);
    EXPECT_EQ(x[4], 1.0);
    VecBelowSetI(x, 5, 0.0, -1.0);
    VecAboveSetI(x, 5, 0.0, 1.0);
    EXPECT_EQ(x[1], -1.0);
    EXPECT_EQ(x[2], 0.0); // zero stays zero
    EXPECT_EQ(x[3], 1.0);
    double y[4] = {-5.0, 0.1, 0.9, 5.0};
    VecBandSetI(y, 4, 0.0, -2.0, 1.0, 2.0);
    EXPECT_EQ(y[0], -2.0);
    EXPECT_EQ(y[1], 0.1);
    EXPECT_EQ(y[3], 2.0);
}

TEST(Vec, ZeroAndNegativeLengthsDoNothing)
{
    double x[2] = {1.0, 2.0};
    VecZero(x, 0);
    VecSet(5.0, x, -3);
    VecScaleI(0.0, x, 0);
    EXPECT_EQ(x[0], 1.0);
    double r = 42.0;
    VecMaxAbs(x, 0, &r);
    EXPECT_EQ(r, 0.0);
}

TEST(Vec, MoveHandlesOverlapBothWays)
{
    double x[6] = {0, 1, 2, 3, 4, 5};
    VecMove(x, x + 1, 5);
    EXPECT_EQ(x[1], 0.0);
    EXPECT_EQ(x[5], 4.0);
    double y[6] = {0, 1, 2, 3, 4, 5};
    VecMove(y + 1, y, 5);
    EXPECT_EQ(y[0], 1.0);
    EXPECT_EQ(y[4], 5.0);
}

TEST(Vec, ReductionsAndConstants)
{
    const double x[4] = {-4.0, 1.0, 2.0, 3.0};
    double m = 0.0;
    VecMaxAbs(x, 4, &m);
    EXPECT_EQ(m, 4.0);
    VecMean(x, 4, &m);
    EXPECT_EQ(m, 0.5);
    double y[4];
    VecRevSub(x, 1.0, y, 4);
    EXPECT_EQ(y[0], 5.0);
    VecDivConstI(4.0, y, 4);
    EXPECT_EQ(y[0], 1.25);
    float f[3] = {1.5f, 2.5f, -1.0f};
    float s = 0.0f;
    VecSumF(f, 3, &s);
    EXPECT_EQ(s, 3.0f);
    double* aligned = VecAlloc(33);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(aligned) % 32, 0u);
    VecFree(aligned);
}
