#include "dsp/Vec.h"

#include <benchmark/benchmark.h>

// Per-sample cost of the block operations the signal path leans on most, at the usual 32 samples.
namespace
{
constexpr int kN = 32;

void BM_VecAddScaled(benchmark::State& state)
{
    alignas(64) double a[kN], b[kN];
    for (int i = 0; i < kN; ++i)
        a[i] = b[i] = i * 0.01;
    for (auto _ : state)
    {
        VecAddScaled(a, 0.999, b, kN);
        benchmark::DoNotOptimize(b);
    }
    state.SetItemsProcessed(state.iterations() * kN);
}
BENCHMARK(BM_VecAddScaled);

void BM_VecMul(benchmark::State& state)
{
    alignas(64) double a[kN], b[kN], d[kN];
    for (int i = 0; i < kN; ++i)
        a[i] = b[i] = i * 0.01;
    for (auto _ : state)
    {
        VecMul(a, b, d, kN);
        benchmark::DoNotOptimize(d);
    }
    state.SetItemsProcessed(state.iterations() * kN);
}
BENCHMARK(BM_VecMul);

void BM_VecClamp(benchmark::State& state)
{
    alignas(64) double a[kN];
    for (int i = 0; i < kN; ++i)
        a[i] = (i - 16) * 0.1;
    for (auto _ : state)
    {
        VecFloorI(a, kN, -1.0);
        VecCeilI(a, kN, 1.0);
        benchmark::DoNotOptimize(a);
    }
    state.SetItemsProcessed(state.iterations() * kN);
}
BENCHMARK(BM_VecClamp);

void BM_VecSin(benchmark::State& state)
{
    alignas(64) double a[kN], d[kN];
    for (int i = 0; i < kN; ++i)
        a[i] = i * 0.1;
    for (auto _ : state)
    {
        VecSin(a, d, kN);
        benchmark::DoNotOptimize(d);
    }
    state.SetItemsProcessed(state.iterations() * kN);
}
BENCHMARK(BM_VecSin);

void BM_VecExp(benchmark::State& state)
{
    alignas(64) double a[kN], d[kN];
    for (int i = 0; i < kN; ++i)
        a[i] = -i * 0.1;
    for (auto _ : state)
    {
        VecExp(a, d, kN);
        benchmark::DoNotOptimize(d);
    }
    state.SetItemsProcessed(state.iterations() * kN);
}
BENCHMARK(BM_VecExp);
} // namespace
