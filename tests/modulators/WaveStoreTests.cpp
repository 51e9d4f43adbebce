#include "modulators/WaveMenu.h"
#include "modulators/WaveStore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <tuple>

// The wave tables are measured like signals: start, extremes, mean, jumps, monotonic runs,
// harmonics.
namespace
{
constexpr int kN = kWaveTableSize;
constexpr double kAny = std::numeric_limits<double>::quiet_NaN();

const double* Wave(int id)
{
    const WaveRecord* r = FindWave(id);
    EXPECT_NE(r, nullptr) << "id " << id;
    return r ? r->samples : nullptr;
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

void ExpectNear(double got, double want, double tolerance, const char* what, int id)
{
    EXPECT_TRUE(std::isnan(want) || std::fabs(got - want) <= tolerance)
        << what << " of wave " << id << ": " << got;
}
} // namespace

TEST(WaveStore, BoundedRecordsInIdOrderAndTheMenuOfTwentySeven)
{
    const auto& store = WaveStore();
    ASSERT_EQ(store.size(), 33u);
    for (std::size_t i = 0; i < store.size(); ++i)
    {
        EXPECT_TRUE(i == 0 || store[i - 1].id < store[i].id) << store[i].id;
        for (int n = 0; n < kN; ++n)
            ASSERT_TRUE(std::fabs(store[i].samples[n]) <= 1.0) << store[i].name << " at " << n;
    }
    // The menu lists 27 of them in this order (stored in presets by index); six stay unused.
    const int menuIds[] = {0,  1,  2,  3,  4,  5,  6,  7,  9,  10, 11, 12, 13,           14,
                           15, 33, 32, 16, 17, 34, 35, 36, 37, 18, 19, 20, kRandomWaveId};
    const WaveList list = BuildWaveList();
    ASSERT_EQ(list.size(), std::size(menuIds));
    for (std::size_t i = 0; i < list.size(); ++i)
    {
        ASSERT_NE(list[i], nullptr) << i;
        EXPECT_EQ(list[i]->id, menuIds[i]) << i;
        EXPECT_STREQ(list[i]->name, kWaveMenuNames[i]);
    }
}

TEST(WaveStore, ShapesHaveTheirStartExtremesMeanAndJumps)
{
    // {id, first point, min, max, mean, jump threshold, jumps}; kAny where the shape leaves it free.
    const std::tuple<int, double, double, double, double, double, int> rows[] = {
        {0, 0.0, -1.0, 1.0, 0.0, 0.01, 0},       // SIN1
        {6, 0.0, -0.71, 0.91, kAny, 0.1, 0},     // SIN7
        {7, 0.0, kAny, kAny, kAny, 0.04, 3},     // SIN8: a chirp with three small jumps
        {10, kAny, kAny, kAny, kAny, 0.025, 15}, // SAW2
        {11, 0.0, kAny, kAny, kAny, 1e-9, 47},   // STEPSIN
        {12, -1.0, -1.0, 1.0, 0.0, 0.01, 0},     // RAMP
        {13, -1.0, -1.0, 1.0, kAny, 0.01, 0},    // TRIANGLE
        {14, kAny, kAny, kAny, 0.0, 0.1, 15},    // RAMPPULSE
        {15, 0.97, kAny, kAny, -0.6, 0.1, 0},    // EXPFALL
        {16, kAny, kAny, kAny, kAny, 0.05, 4},   // POOL
        {18, 0.5, -1.0, 1.0, 0.0, 0.1, 0},       // SINPULSE
        {19, 1.0, -1.0, 1.0, kAny, 0.2, 7},      // STAIR3: eight levels
        {32, 1.0, -1.0, 1.0, kAny, 0.01, 0},     // THE RIDE
        {33, -1.0, -1.0, 0.98, kAny, 0.01, 0},   // SLIDE
    };
    for (const auto& [id, first, min, max, mean, threshold, jumps] : rows)
    {
        const double* t = Wave(id);
        ExpectNear(t[0], first, 1e-9, "first point", id);
        ExpectNear(*std::min_element(t, t + kN), min, 1e-9, "minimum", id);
        ExpectNear(*std::max_element(t, t + kN), max, 1e-9, "maximum", id);
        double average = 0.0;
        for (int n = 0; n < kN; ++n)
            average += t[n] / kN;
        ExpectNear(average, mean, 0.01, "mean", id);
        EXPECT_EQ(Jumps(t, threshold), jumps) << id;
    }
    // Pulses: +1 for their duty, then -1, one jump.
    for (const auto& [id, high] : {std::pair{17, 2048}, {34, 1366}, {35, 1024}, {36, 512}, {37, 256}})
    {
        const double* t = Wave(id);
        EXPECT_EQ(t[high - 1], 1.0) << id;
        EXPECT_EQ(t[high], -1.0) << id;
        EXPECT_EQ(t[kN - 1], -1.0) << id;
        EXPECT_EQ(Jumps(t, 1.0), 1) << id;
    }
    // Runs: the ramp climbs evenly, the triangle and SLIDE rise to the middle and fall back,
    // EXPFALL only falls; STEP8 is odd about the middle.
    const double* ramp = Wave(12);
    const double* tri = Wave(13);
    const double* slide = Wave(33);
    const double* fall = Wave(15);
    const double* step8 = Wave(20);
    for (int n = 0; n + 1 < kN; ++n)
    {
        ASSERT_NEAR(ramp[n + 1] - ramp[n], 2.0 / 4095.0, 1e-12) << n;
        ASSERT_EQ(tri[n + 1] > tri[n], n < kN / 2) << n;
        ASSERT_EQ(slide[n + 1] > slide[n], n < kN / 2) << n;
        ASSERT_LT(fall[n + 1], fall[n]) << n;
        ASSERT_EQ(step8[kN - 1 - n], -step8[n]) << n;
    }
}

TEST(WaveStore, HarmonicContentOfTheSineFamilyAndTheSaw)
{
    // (SIN4, which an LFO of the golden renders plays, is pinned there.)
    EXPECT_NEAR(Harmonic(Wave(1), 1), 0.568, 0.003); // SIN2: first and second equal
    EXPECT_NEAR(Harmonic(Wave(1), 2), 0.568, 0.003);
    EXPECT_NEAR(Harmonic(Wave(2), 1) / Harmonic(Wave(2), 4), 0.412 / 0.314, 1e-6); // SIN3
    // SIN5: one spike in the first eighth, then only a small tail.
    const double* s5 = Wave(4);
    for (int n = kN / 8 + 1; n < kN; ++n)
        ASSERT_LT(std::abs(s5[n]), 0.1) << n;
    // SIN6: a burst with much of its energy above the 8th harmonic.
    double low = 0.0, high = 0.0;
    for (int k = 1; k < 40; ++k)
        (k > 8 ? high : low) += std::pow(Harmonic(Wave(5), k), 2);
    EXPECT_GT(high, 0.3 * (low + high));
    // SAWSIN: harmonics as 1/k.
    EXPECT_NEAR(Harmonic(Wave(9), 2) / Harmonic(Wave(9), 1), 0.5, 1e-6);
    EXPECT_NEAR(Harmonic(Wave(9), 5) / Harmonic(Wave(9), 1), 0.2, 1e-6);
}
