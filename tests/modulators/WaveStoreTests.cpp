#include "modulators/WaveMenu.h"
#include "modulators/WaveStore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <set>
#include <string>

namespace
{
constexpr int kN = kWaveTableSize;

const double* Wave(int id)
{
    const WaveRecord* r = FindWave(id);
    EXPECT_NE(r, nullptr) << "id " << id;
    return r ? r->samples : nullptr;
}

double Min(const double* t)
{
    return *std::min_element(t, t + kN);
}
double Max(const double* t)
{
    return *std::max_element(t, t + kN);
}
double Mean(const double* t)
{
    double s = 0.0;
    for (int n = 0; n < kN; ++n)
        s += t[n];
    return s / kN;
}

// Steps between neighbouring points larger than the threshold (the wrap-around is not counted).
int Jumps(const double* t, double threshold)
{
    int count = 0;
    for (int n = 0; n + 1 < kN; ++n)
        count += std::abs(t[n + 1] - t[n]) > threshold;
    return count;
}

// Amplitude of harmonic k over the cycle.
double Harmonic(const double* t, int k)
{
    std::complex<double> s = 0.0;
    for (int n = 0; n < kN; ++n)
        s += t[n] * std::polar(1.0, -2.0 * std::numbers::pi * k * n / kN);
    return 2.0 * std::abs(s) / kN;
}

int ArgMax(const double* t)
{
    return int(std::max_element(t, t + kN) - t);
}
int ArgMin(const double* t)
{
    return int(std::min_element(t, t + kN) - t);
}
} // namespace

TEST(WaveStore, HoldsThirtyThreeZeroPaddedRecordsInIdOrder)
{
    const auto& store = WaveStore();
    std::set<int> expected = {0,  1,  2,  3,  4,  5,  6,  7,  9,  10, 11, 12, 13, 14, 15, 16, 17,
                              18, 19, 20, 21, 22, 23, 27, 30, 31, 32, 33, 34, 35, 36, 37, 38};
    ASSERT_EQ(expected.size(), store.size());
    for (std::size_t i = 0; i < store.size(); ++i)
    {
        const WaveRecord& r = store[i];
        EXPECT_EQ(expected.count(r.id), 1u) << r.id;
        if (i > 0)
        {
            EXPECT_LT(store[i - 1].id, r.id);
        }
        const std::size_t len = strnlen(r.name, kWaveNameLen);
        EXPECT_GT(len, 0u);
        EXPECT_LT(len, std::size_t(kWaveNameLen));
        for (std::size_t c = len; c < std::size_t(kWaveNameLen); ++c)
            EXPECT_EQ(r.name[c], 0) << r.name;
        for (int n = 0; n < kN; ++n)
            ASSERT_TRUE(r.samples[n] >= -1.0 && r.samples[n] <= 1.0) << r.name << " at " << n;
    }
}

TEST(WaveStore, MenuListsTwentySevenWavesInMenuOrderWithoutTheUnusedSix)
{
    const WaveList list = BuildWaveList();
    std::set<int> listed;
    for (std::size_t i = 0; i < list.size(); ++i)
    {
        ASSERT_NE(list[i], nullptr) << i;
        EXPECT_EQ(list[i]->id, kWaveMenu[i].storeId);
        EXPECT_STREQ(list[i]->name, kWaveMenu[i].name);
        listed.insert(list[i]->id);
    }
    EXPECT_EQ(listed.size(), 27u);
    EXPECT_STREQ(list[15]->name, "SLIDE");
    EXPECT_STREQ(list[16]->name, "THE RIDE");
    EXPECT_STREQ(list[26]->name, "S&H");
    for (int unused : {21, 22, 23, 27, 30, 31})
    {
        EXPECT_EQ(listed.count(unused), 0u) << unused;
        EXPECT_NE(FindWave(unused), nullptr) << unused;
    }
    EXPECT_STREQ(FindWave(21)->name, "TRAPEZOID");
    EXPECT_STREQ(FindWave(31)->name, "WAVE10");
}

TEST(WaveStore, SineFamilyHasTheStatedHarmonicsAndPeaks)
{
    const double* s1 = Wave(0);
    EXPECT_EQ(s1[0], 0.0);
    EXPECT_GT(s1[1], 0.0);
    EXPECT_DOUBLE_EQ(s1[1024], 1.0);
    EXPECT_NEAR(s1[3072], -1.0, 1e-12);

    const double* s2 = Wave(1);
    EXPECT_NEAR(Max(s2), 1.0, 1e-12);
    EXPECT_NEAR(Harmonic(s2, 1), 0.568, 0.003);
    EXPECT_NEAR(Harmonic(s2, 2), 0.568, 0.003);

    const double* s3 = Wave(2);
    EXPECT_NEAR(std::max(Max(s3), -Min(s3)), 1.0, 1e-12);
    EXPECT_NEAR(Harmonic(s3, 1) / Harmonic(s3, 4), 0.412 / 0.314, 1e-6);

    // SIN4: windowed carrier on the 6th, neighbours at about 0.2, peak 0.94.
    const double* s4 = Wave(3);
    EXPECT_NEAR(std::max(Max(s4), -Min(s4)), 0.94, 1e-9);
    EXPECT_NEAR(s4[0], 0.0, 1e-12);
    EXPECT_NEAR(Harmonic(s4, 6), 0.494, 0.03);
    EXPECT_NEAR(Harmonic(s4, 5), 0.197, 0.05);
    EXPECT_NEAR(Harmonic(s4, 7), 0.201, 0.05);
    EXPECT_LT(Harmonic(s4, 3), 0.01);

    // SIN5: one spike in the first eighth, then only a small tail back to 0.
    const double* s5 = Wave(4);
    EXPECT_NEAR(s5[0], 0.0, 1e-12);
    EXPECT_LT(ArgMax(s5), kN / 8);
    EXPECT_NEAR(Max(s5), 1.0, 1e-6);
    for (int n = kN / 8 + 1; n < kN; ++n)
        ASSERT_LT(std::abs(s5[n]), 0.1) << n;
    EXPECT_NEAR(s5[kN - 1], 0.0, 1e-3);

    // SIN6: burst with most of its energy above the 8th harmonic's neighbourhood start.
    const double* s6 = Wave(5);
    double low = 0.0, high = 0.0;
    for (int k = 1; k < 40; ++k)
        (k > 8 ? high : low) += Harmonic(s6, k) * Harmonic(s6, k);
    EXPECT_NEAR(s6[0], 0.0, 1e-12);
    EXPECT_GT(high, 0.3 * (low + high));

    const double* s7 = Wave(6);
    EXPECT_NEAR(Min(s7), -0.71, 1e-12);
    EXPECT_NEAR(Max(s7), 0.91, 1e-12);
    EXPECT_NEAR(s7[0], 0.0, 1e-12);

    // SIN8: a chirp spreading over many harmonics, three small jumps.
    const double* s8 = Wave(7);
    EXPECT_NEAR(s8[0], 0.0, 1e-12);
    EXPECT_EQ(Jumps(s8, 0.04), 3);
    EXPECT_LT(Jumps(s8, 0.1), 1);
    for (int k = 2; k <= 12; ++k)
        EXPECT_GT(Harmonic(s8, k), 0.05) << k;
}

TEST(WaveStore, SawsAndRampsRunTheirWay)
{
    // SAWSIN: rounded start at 0, +1 early, -1 late, harmonics as 1/k.
    const double* ss = Wave(9);
    EXPECT_NEAR(ss[0], 0.0, 1e-12);
    EXPECT_LT(ArgMax(ss), kN / 16);
    EXPECT_GT(ArgMin(ss), kN - kN / 16);
    EXPECT_NEAR(Max(ss), 1.0, 1e-12);
    EXPECT_NEAR(Harmonic(ss, 2) / Harmonic(ss, 1), 0.5, 1e-6);
    EXPECT_NEAR(Harmonic(ss, 5) / Harmonic(ss, 1), 0.2, 1e-6);

    const double* saw2 = Wave(10);
    EXPECT_EQ(Jumps(saw2, 0.025), 15);
    EXPECT_GT(Harmonic(saw2, 2) / Harmonic(saw2, 1), 0.5);

    const double* stepsin = Wave(11);
    EXPECT_EQ(Jumps(stepsin, 1e-9), 47);
    EXPECT_EQ(stepsin[0], 0.0);

    const double* ramp = Wave(12);
    EXPECT_EQ(ramp[0], -1.0);
    EXPECT_DOUBLE_EQ(ramp[kN - 1], 1.0);
    for (int n = 0; n + 1 < kN; ++n)
        ASSERT_NEAR(ramp[n + 1] - ramp[n], 2.0 / 4095.0, 1e-12);

    const double* tri = Wave(13);
    EXPECT_EQ(tri[0], -1.0);
    EXPECT_EQ(tri[kN / 2], 1.0);
    for (int n = 0; n + 1 < kN; ++n)
        ASSERT_TRUE(n < kN / 2 ? tri[n + 1] > tri[n] : tri[n + 1] < tri[n]) << n;

    // RAMPPULSE: rises everywhere except at its 15 pulse steps.
    const double* rp = Wave(14);
    EXPECT_EQ(Jumps(rp, 0.1), 15);
    int falls = 0;
    for (int n = 0; n + 1 < kN; ++n)
        falls += rp[n + 1] < rp[n];
    EXPECT_EQ(falls, 8);
    EXPECT_NEAR(Mean(rp), 0.0, 0.01);

    const double* ef = Wave(15);
    EXPECT_DOUBLE_EQ(ef[0], 0.97);
    EXPECT_NEAR(Mean(ef), -0.6, 0.002);
    EXPECT_GT(Min(ef), -1.0);
    for (int n = 0; n + 1 < kN; ++n)
        ASSERT_LT(ef[n + 1], ef[n]) << n;
}

TEST(WaveStore, SmoothCurvesHaveTheirEndsAndJumps)
{
    const double* slide = Wave(33);
    EXPECT_DOUBLE_EQ(slide[0], -1.0);
    EXPECT_EQ(ArgMax(slide), kN / 2);
    EXPECT_NEAR(Max(slide), 0.98, 1e-12);
    for (int n = 0; n + 1 < kN; ++n)
        ASSERT_TRUE(n < kN / 2 ? slide[n + 1] > slide[n] : slide[n + 1] < slide[n]) << n;

    const double* ride = Wave(32);
    EXPECT_DOUBLE_EQ(ride[0], 1.0);
    EXPECT_NEAR(ride[kN - 1], -1.0, 1e-12);
    EXPECT_EQ(Jumps(ride, 0.01), 0);
    int rises = 0;
    for (int n = 0; n + 1 < kN; ++n)
        rises += ride[n + 1] > ride[n];
    EXPECT_GT(rises, 100); // irregular, not a plain fall

    const double* pool = Wave(16);
    EXPECT_EQ(Jumps(pool, 0.05), 4);
    EXPECT_NEAR(std::max(Max(pool), -Min(pool)), 1.0, 1e-12);
}

TEST(WaveStore, PulsesAndStepsHaveTheirDutiesAndLevels)
{
    const struct
    {
        int id;
        int highPoints;
    } pulses[] = {{17, 2048}, {34, 1366}, {35, 1024}, {36, 512}, {37, 256}};
    for (const auto& p : pulses)
    {
        const double* t = Wave(p.id);
        EXPECT_EQ(t[0], 1.0);
        EXPECT_EQ(t[kN - 1], -1.0);
        EXPECT_EQ(Jumps(t, 1.0), 1) << p.id;
        EXPECT_EQ(t[p.highPoints - 1], 1.0) << p.id;
        EXPECT_EQ(t[p.highPoints], -1.0) << p.id;
        EXPECT_NEAR(Mean(t), 2.0 * p.highPoints / kN - 1.0, 1e-12) << p.id;
    }

    const double* sp = Wave(18);
    EXPECT_NEAR(sp[0], 0.5, 1e-9);
    EXPECT_EQ(sp[kN / 4], 1.0);
    EXPECT_EQ(sp[3 * kN / 4], -1.0);
    EXPECT_NEAR(Mean(sp), 0.0, 1e-3);
    EXPECT_EQ(Jumps(sp, 0.1), 0);

    const double* stair = Wave(19);
    std::set<double> levels(stair, stair + kN);
    EXPECT_EQ(levels.size(), 8u);
    EXPECT_EQ(stair[0], 1.0);
    EXPECT_EQ(stair[kN - 1], -1.0);
    EXPECT_EQ(Jumps(stair, 0.2), 7);
    EXPECT_EQ(stair[511], 1.0);
    EXPECT_LT(stair[512], 1.0);

    const double* step8 = Wave(20);
    std::set<double> steps(step8, step8 + kN);
    EXPECT_EQ(steps.size(), 118u);
    for (int n = 0; n < kN; ++n)
        ASSERT_EQ(step8[kN - 1 - n], -step8[n]) << n;
}
