// quorvex-wavegen: draws the LFO wave records that follow no closed formula and writes them as a
// C++ source of constant data (the build compiles the output into the modulators library).
//
// Every curve is drawn here from sums of sines, windows, exponentials and explicit steps, with the
// character each wave needs: its range, start value, mean and number of jumps. The program is
// deterministic (no random generator), so the same source always yields the same data.
//
// Usage: quorvex-wavegen <output.cpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <initializer_list>
#include <numbers>
#include <utility>
#include <vector>

namespace
{
constexpr int kSize = 4096;
constexpr double kTwoPi = 2.0 * std::numbers::pi;
using Table = std::array<double, kSize>;

struct Drawn
{
    int id;
    const char* name;
    Table samples;
};

// Position of point n in the cycle, 0 .. 1.
double X(int n)
{
    return double(n) / kSize;
}

Table Draw(const std::function<double(double)>& f)
{
    Table t{};
    for (int n = 0; n < kSize; ++n)
        t[n] = f(X(n));
    return t;
}

double PeakAbs(const Table& t)
{
    double p = 0.0;
    for (double v : t)
        p = std::max(p, std::abs(v));
    return p;
}

void ScalePeak(Table& t, double peak)
{
    const double g = peak / PeakAbs(t);
    for (double& v : t)
        v *= g;
}

// Hann window over the cycle: 0 at both ends, 1 at the middle.
double Hann(double x)
{
    return 0.5 - 0.5 * std::cos(kTwoPi * x);
}

// SIN4: a carrier on the 6th harmonic under a Hann window, which puts half the carrier's level on
// the 5th and 7th harmonics; peak 0.94.
Table Sin4()
{
    Table t = Draw([](double x) { return Hann(x) * std::sin(6.0 * kTwoPi * x); });
    ScalePeak(t, 0.94);
    return t;
}

// SIN5: one positive sine lobe over the first eighth of the cycle (peak 1), then a small negative
// tail that dies away to 0 at the end.
Table Sin5()
{
    return Draw(
        [](double x)
        {
            if (x < 0.125) return std::sin(std::numbers::pi * x / 0.125);
            const double u = (x - 0.125) / 0.875;
            return -0.08 * std::sin(std::numbers::pi * u) * (1.0 - u);
        });
}

// Phase of a burst whose momentary harmonic rises linearly from h0 to h1 over the cycle.
double ChirpPhase(double x, double h0, double h1)
{
    return kTwoPi * (h0 * x + 0.5 * (h1 - h0) * x * x);
}

// SIN6: a Hann-windowed burst whose momentary harmonic rises from 4 to 14, peak 1.
Table Sin6()
{
    Table t = Draw([](double x) { return Hann(x) * std::sin(ChirpPhase(x, 4.0, 14.0)); });
    ScalePeak(t, 1.0);
    return t;
}

// SIN7: the SIN6 burst roughened by two fixed upper partials, then its positive and negative
// halves scaled separately to the range -0.71 .. 0.91 (the start stays at 0).
Table Sin7()
{
    Table t = Draw(
        [](double x)
        {
            return Hann(x) * (std::sin(ChirpPhase(x, 4.0, 14.0)) + 0.25 * std::sin(kTwoPi * 17.0 * x) +
                              0.15 * std::sin(kTwoPi * 23.0 * x + 1.0));
        });
    double hi = 0.0, lo = 0.0;
    for (double v : t)
        hi = std::max(hi, v), lo = std::min(lo, v);
    for (double& v : t)
        v = v > 0.0 ? v * 0.91 / hi : v * 0.71 / -lo;
    return t;
}

// SIN8: a full-level chirp from the 1st to the 16th harmonic, which spreads its energy evenly over
// the harmonics it sweeps, with a 0.08 offset on the second and fourth quarters: three small
// jumps inside the cycle.
Table Sin8()
{
    return Draw(
        [](double x)
        {
            const int quarter = int(x * 4.0);
            return 0.92 * std::sin(ChirpPhase(x, 1.0, 16.0)) + ((quarter & 1) ? 0.08 : 0.0);
        });
}

// SAW2: a band-limited falling saw (8 harmonics, even ones raised by half) plus a falling
// staircase of 16 treads, which adds 15 small steps; peak 1.
Table Saw2()
{
    Table t = Draw(
        [](double x)
        {
            double s = 0.0;
            for (int k = 1; k <= 8; ++k)
                s += ((k % 2 == 0) ? 1.5 : 1.0) * std::sin(kTwoPi * k * x) / k;
            return s - 0.15 * std::floor(x * 16.0);
        });
    ScalePeak(t, 1.0);
    return t;
}

// STEPSIN: the mixture sin + 0.5 sin(3x) + 0.25 sin(5x) held over 48 equal time slices, each at
// its value at the slice start: 47 jumps, starting at 0.
Table StepSin()
{
    Table t = Draw(
        [](double x)
        {
            const double xs = std::floor(x * 48.0) / 48.0;
            return std::sin(kTwoPi * xs) + 0.5 * std::sin(3.0 * kTwoPi * xs) +
                   0.25 * std::sin(5.0 * kTwoPi * xs);
        });
    ScalePeak(t, 1.0);
    return t;
}

// RAMPPULSE: a ramp rising from -0.8 to 0.8 with a pulse train on top (+0.2 for the first half of
// each eighth, -0.2 for the second half): 15 steps, rising between them.
Table RampPulse()
{
    return Draw([](double x)
                { return 0.8 * (2.0 * x - 1.0) + (std::fmod(x * 8.0, 1.0) < 0.5 ? 0.2 : -0.2); });
}

// EXPFALL: -1 + 1.97 exp(-k x), from 0.97 towards -1; k solved so the mean over the cycle is -0.6.
Table ExpFall()
{
    auto mean = [](double k) { return -1.0 + 1.97 * (1.0 - std::exp(-k)) / k; };
    double lo = 0.1, hi = 50.0;
    for (int i = 0; i < 200; ++i)
    {
        const double mid = 0.5 * (lo + hi);
        (mean(mid) > -0.6 ? lo : hi) = mid;
    }
    const double k = 0.5 * (lo + hi);
    return Draw([k](double x) { return -1.0 + 1.97 * std::exp(-k * x); });
}

// SLIDE: a smooth hump from -1 up to 0.98 at the half cycle and back, flatter at the bottom than
// a sine (raised cosine to the power 1.5).
Table Slide()
{
    return Draw([](double x) { return -1.0 + 1.98 * std::pow(Hann(x), 1.5); });
}

// THE RIDE: a straight fall from +1 to -1 bent by a few fixed partials that vanish at both ends,
// so the curve wanders up and down on its way; clamped to -1 .. 1.
Table TheRide()
{
    return Draw(
        [](double x)
        {
            const double last = double(kSize - 1) / kSize;
            const double u = x / last;
            const double bend = 0.9 * std::sin(std::numbers::pi * 2.0 * u) +
                                0.6 * std::sin(std::numbers::pi * 3.0 * u) +
                                0.4 * std::sin(std::numbers::pi * 5.0 * u);
            return std::clamp(1.0 - 2.0 * u + 1.6 * u * (1.0 - u) * bend, -1.0, 1.0);
        });
}

// POOL: a smooth irregular sum of three partials with odd phases plus four offsets at irregular
// places (four jumps); peak 1.
Table Pool()
{
    Table t = Draw(
        [](double x)
        {
            const double smooth = std::sin(kTwoPi * x + 0.4) + 0.45 * std::sin(2.0 * kTwoPi * x + 2.1) +
                                  0.3 * std::sin(3.0 * kTwoPi * x + 4.0);
            double step = 0.0;
            if (x >= 0.17) step += 0.25;
            if (x >= 0.41) step -= 0.4;
            if (x >= 0.63) step += 0.3;
            if (x >= 0.88) step -= 0.2;
            return smooth + step;
        });
    ScalePeak(t, 1.0);
    return t;
}

// STEP8: sin + 0.35 sin(2x) + 0.15 sin(3x), which is odd about the half cycle, held over 118
// slices at each slice's centre value. The slices are taken at the point centres, so the table is
// odd-symmetric: t[4095 - n] = -t[n]. The 2nd harmonic keeps all 118 levels distinct.
Table Step8()
{
    Table t{};
    for (int n = 0; n < kSize / 2; ++n)
    {
        const double xc = (std::floor((n + 0.5) / kSize * 118.0) + 0.5) / 118.0;
        t[n] =
            std::sin(kTwoPi * xc) + 0.35 * std::sin(2.0 * kTwoPi * xc) + 0.15 * std::sin(3.0 * kTwoPi * xc);
        t[kSize - 1 - n] = -t[n]; // mirrored rather than recomputed, so the symmetry is exact
    }
    ScalePeak(t, 1.0);
    return t;
}

// TRAPEZOID (not offered in the menu): -1 .. +1 ramps over a quarter cycle each, with flat tops.
Table Trapezoid()
{
    return Draw(
        [](double x)
        {
            if (x < 0.125) return x / 0.125;
            if (x < 0.375) return 1.0;
            if (x < 0.625) return 1.0 - 2.0 * (x - 0.375) / 0.25;
            if (x < 0.875) return -1.0;
            return -1.0 + (x - 0.875) / 0.125;
        });
}

// The WAVE records (not offered in the menu): smooth sums of a few partials, peak 1.
Table Partials(std::initializer_list<std::pair<int, double>> parts)
{
    std::vector<std::pair<int, double>> p(parts);
    Table t = Draw(
        [&p](double x)
        {
            double s = 0.0;
            for (auto [k, a] : p)
                s += a * std::sin(kTwoPi * k * x);
            return s;
        });
    ScalePeak(t, 1.0);
    return t;
}

void Write(std::FILE* f, const std::vector<Drawn>& waves)
{
    std::fprintf(f, "// Generated by quorvex-wavegen; do not edit.\n#include \"modulators/WaveData.h\"\n\n");
    std::fprintf(f, "namespace\n{\n");
    for (const Drawn& w : waves)
    {
        std::fprintf(f, "constexpr double kWave%d[%d] = {\n", w.id, kSize);
        for (int n = 0; n < kSize; ++n)
            std::fprintf(f, "%a,%s", w.samples[n], (n % 8 == 7) ? "\n" : " ");
        std::fprintf(f, "};\n");
    }
    std::fprintf(f, "} // namespace\n\nconst DrawnWave kDrawnWaves[kDrawnWaveCount] = {\n");
    for (const Drawn& w : waves)
        std::fprintf(f, "    {%d, \"%s\", kWave%d},\n", w.id, w.name, w.id);
    std::fprintf(f, "};\n");
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fprintf(stderr, "usage: quorvex-wavegen <output.cpp>\n");
        return 2;
    }
    const std::vector<Drawn> waves = {
        {3, "SIN4", Sin4()},
        {4, "SIN5", Sin5()},
        {5, "SIN6", Sin6()},
        {6, "SIN7", Sin7()},
        {7, "SIN8", Sin8()},
        {10, "SAW2", Saw2()},
        {11, "STEPSIN", StepSin()},
        {14, "RAMPPULSE", RampPulse()},
        {15, "EXPFALL", ExpFall()},
        {16, "POOL", Pool()},
        {20, "STEP8", Step8()},
        {21, "TRAPEZOID", Trapezoid()},
        {22, "WAVE1", Partials({{1, 1.0}, {3, 0.3}})},
        {23, "WAVE2", Partials({{1, 1.0}, {2, -0.5}, {4, 0.2}})},
        {27, "WAVE6", Partials({{2, 1.0}, {3, 0.4}})},
        {30, "WAVE9", Partials({{1, 0.6}, {5, 0.5}, {7, 0.3}})},
        {31, "WAVE10", Partials({{3, 1.0}, {1, 0.5}})},
        {32, "THE RIDE", TheRide()},
        {33, "SLIDE", Slide()},
    };
    std::FILE* f = std::fopen(argv[1], "w");
    if (!f)
    {
        std::perror(argv[1]);
        return 1;
    }
    Write(f, waves);
    return std::fclose(f) == 0 ? 0 : 1;
}
