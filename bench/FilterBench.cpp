#include "dsp/IppBiquad.h"
#include "dsp/QLMSVF.h"

#include <benchmark/benchmark.h>

#include <cmath>

// Per-sample cost of the tunable filters on 32-sample blocks, control updates included.
namespace
{
struct Blocks
{
    alignas(64) double in[gBlockLen];
    alignas(64) double out[gBlockLen];
    Blocks()
    {
        for (int i = 0; i < gBlockLen; ++i)
            in[i] = std::sin(0.1 * i);
    }
};

void BM_IppBiquadLowpass(benchmark::State& state)
{
    Blocks b;
    IppBiquad f(false, kBqLowpass, int(state.range(0)), 24.0f);
    f.SetParam(0, 0.5);
    f.mIn1 = b.in;
    f.mOut1 = b.out;
    for (auto _ : state)
    {
        f.Process();
        benchmark::DoNotOptimize(b.out);
    }
    state.SetItemsProcessed(state.iterations() * gBlockLen);
}
BENCHMARK(BM_IppBiquadLowpass)->Arg(1)->Arg(12);

// The corner moves all the time, so every second block redesigns the order-4 filter.
void BM_IppBiquadChebyshevSweep(benchmark::State& state)
{
    Blocks b;
    IppBiquad f(false, kBqChebyLow4, 4, 24.0f);
    f.SetResonance(0.5f);
    f.mIn1 = b.in;
    f.mOut1 = b.out;
    int block = 0;
    for (auto _ : state)
    {
        f.SetParam(0, 0.2 + 0.6 * double(block & 255) / 255.0);
        ++block;
        f.Process();
        benchmark::DoNotOptimize(b.out);
    }
    state.SetItemsProcessed(state.iterations() * gBlockLen);
}
BENCHMARK(BM_IppBiquadChebyshevSweep);

// Type 2: one linear pass; type 0: saturating pass then linear pass.
void BM_QLMSVF(benchmark::State& state)
{
    Blocks b;
    QLMSVF f(false, int(state.range(0)));
    f.SetParam(0, 0.5);
    f.SetParam(1, 0.5);
    f.mIn1 = b.in;
    f.mOut1 = b.out;
    for (auto _ : state)
    {
        f.Process();
        benchmark::DoNotOptimize(b.out);
    }
    state.SetItemsProcessed(state.iterations() * gBlockLen);
}
BENCHMARK(BM_QLMSVF)->Arg(2)->Arg(0);
} // namespace
