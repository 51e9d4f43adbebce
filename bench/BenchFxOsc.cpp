#include "fx/Comb.h"
#include "fx/HilbertShifter.h"
#include "fx/PhaserC.h"
#include "fx/RingMod.h"

#include <benchmark/benchmark.h>

// Per-sample cost of the oscillator effects at 48 kHz, one channel, 32-sample blocks of noise.
namespace
{
struct NoiseBlock
{
    alignas(64) double in[gBlockLen];
    alignas(64) double out[gBlockLen];
    NoiseBlock()
    {
        unsigned seed = 1u;
        for (double& v : in)
        {
            seed = seed * 1664525u + 1013904223u;
            v = double(seed >> 8) / double(1u << 24) - 0.5;
        }
    }
};

template <typename Fx> void RunFx(benchmark::State& state, Fx& fx, std::initializer_list<double> params)
{
    int p = 0;
    for (double v : params)
        fx.SetParam(p++, v);
    NoiseBlock b;
    fx.mIn1 = b.in;
    fx.mOut1 = b.out;
    for (auto _ : state)
    {
        fx.Process();
        benchmark::DoNotOptimize(b.out);
    }
    state.SetItemsProcessed(state.iterations() * gBlockLen);
}

void BM_FxOscHilbertShifter(benchmark::State& state)
{
    SetTimeBase(48000.0);
    HilbertShifter fx(false);
    RunFx(state, fx, {0.7, 2.0, 0.5, 0.5, 1.0});
}
BENCHMARK(BM_FxOscHilbertShifter);

void BM_FxOscRingMod(benchmark::State& state)
{
    SetTimeBase(48000.0);
    RingMod fx(false);
    RunFx(state, fx, {0.6, 0.5, 0.5, 0.6, 1.0});
}
BENCHMARK(BM_FxOscRingMod);

// Eight stages with feedback: the most expensive setting.
void BM_FxOscPhaserC(benchmark::State& state)
{
    SetTimeBase(48000.0);
    PhaserC fx(false);
    RunFx(state, fx, {0.5, 1.0, 1.0, 0.2, 0.5});
}
BENCHMARK(BM_FxOscPhaserC);

void BM_FxOscComb(benchmark::State& state)
{
    SetTimeBase(48000.0);
    Comb fx(false);
    RunFx(state, fx, {0.4, 0.7, 0.2, 0.3, 0.1});
}
BENCHMARK(BM_FxOscComb);
} // namespace
