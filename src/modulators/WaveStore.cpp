#include "modulators/WaveStore.h"

#include "modulators/WaveData.h"
#include "modulators/WaveMenu.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace
{
constexpr int kN = kWaveTableSize;
constexpr double kTwoPi = 2.0 * std::numbers::pi;

double Theta(int n)
{
    return kTwoPi * n / kN;
}

void Normalise(double* t)
{
    double peak = 0.0;
    for (int n = 0; n < kN; ++n)
        peak = std::max(peak, std::abs(t[n]));
    for (int n = 0; n < kN; ++n)
        t[n] /= peak;
}

// Square with rounded edges: each edge is a half sine over kEdge points; the rising edge is placed
// so the cycle starts on it at 0.5 (sin(pi/6)).
double SinPulse(int n)
{
    constexpr double kEdge = 128.0;
    const double u = std::fmod(n + kEdge / 6.0, double(kN));
    if (u < kEdge / 2.0) return std::sin(std::numbers::pi * u / kEdge);
    if (u > kN - kEdge / 2.0) return std::sin(std::numbers::pi * (u - kN) / kEdge);
    if (std::abs(u - kN / 2.0) < kEdge / 2.0) return -std::sin(std::numbers::pi * (u - kN / 2.0) / kEdge);
    return u < kN / 2.0 ? 1.0 : -1.0;
}

// Pulse of +1 for the first n < kN / divisor points, -1 after.
double Pulse(int n, int divisor)
{
    return n * divisor < kN ? 1.0 : -1.0;
}

void FillFormula(WaveRecord& r)
{
    double* t = r.samples;
    for (int n = 0; n < kN; ++n)
    {
        const double th = Theta(n);
        switch (r.id)
        {
        case 0:
            t[n] = std::sin(th);
            break;
        case 1:
            t[n] = 0.568 * std::sin(th) + 0.568 * std::sin(2.0 * th);
            break;
        case 2:
            t[n] = 0.412 * std::sin(th) + 0.412 * std::sin(2.0 * th) + 0.314 * std::sin(4.0 * th);
            break;
        case 9:
        {
            // Band-limited falling saw, harmonics as 1/k: rounded start, peak early, trough late.
            double s = 0.0;
            for (int k = 1; k <= 32; ++k)
                s += std::sin(k * th) / k;
            t[n] = s;
            break;
        }
        case 12:
            t[n] = -1.0 + 2.0 * n / (kN - 1);
            break;
        case 13:
            t[n] = n <= kN / 2 ? -1.0 + 4.0 * n / kN : 3.0 - 4.0 * n / kN;
            break;
        case 17:
            t[n] = Pulse(n, 2);
            break;
        case 18:
            t[n] = SinPulse(n);
            break;
        case 19:
            t[n] = 1.0 - 2.0 * ((n * 8) / kN) / 7.0;
            break;
        case 34:
            t[n] = Pulse(n, 3);
            break;
        case 35:
            t[n] = Pulse(n, 4);
            break;
        case 36:
            t[n] = Pulse(n, 8);
            break;
        case 37:
            t[n] = Pulse(n, 16);
            break;
        default:
            t[n] = 0.0;
            break; // S&H: the table is never read
        }
    }
    if (r.id == 1 || r.id == 2 || r.id == 9) Normalise(t);
}

struct FormulaWave
{
    int id;
    const char* name;
};

constexpr FormulaWave kFormulaWaves[] = {
    {0, "SIN1"},       {1, "SIN2"},       {2, "SIN3"},        {9, "SAWSIN"},  {12, "RAMP"},
    {13, "TRIANGLE"},  {17, "HALFPULSE"}, {18, "SINPULSE"},   {19, "STAIR3"}, {34, "1/3 PULSE"},
    {35, "1/4 PULSE"}, {36, "1/8 PULSE"}, {37, "1/16 PULSE"}, {38, "S&H"},
};
static_assert(std::size(kFormulaWaves) + kDrawnWaveCount == kWaveStoreSize);

void SetName(WaveRecord& r, const char* name)
{
    std::memset(r.name, 0, sizeof(r.name));
    std::memcpy(r.name, name, std::min<std::size_t>(std::strlen(name), kWaveNameLen));
}

// Built in place (the records are 1 MB together, too large for a temporary on the stack).
struct Store
{
    std::array<WaveRecord, kWaveStoreSize> records;

    Store()
    {
        int i = 0;
        for (const FormulaWave& w : kFormulaWaves)
        {
            WaveRecord& r = records[i++];
            r.id = w.id;
            SetName(r, w.name);
            FillFormula(r);
        }
        for (const DrawnWave& w : kDrawnWaves)
        {
            WaveRecord& r = records[i++];
            r.id = w.id;
            SetName(r, w.name);
            std::copy(w.samples, w.samples + kN, r.samples);
        }
        std::sort(records.begin(), records.end(),
                  [](const WaveRecord& a, const WaveRecord& b) { return a.id < b.id; });
    }
};
} // namespace

const std::array<WaveRecord, kWaveStoreSize>& WaveStore()
{
    static const Store store;
    return store.records;
}

const WaveRecord* FindWave(int id)
{
    for (const WaveRecord& r : WaveStore())
        if (r.id == id) return &r;
    return nullptr;
}

WaveList BuildWaveList()
{
    WaveList list{};
    for (std::size_t i = 0; i < kWaveMenu.size(); ++i)
        list[i] = FindWave(kWaveMenu[i].storeId);
    return list;
}
