#include "dsp/TimeBase.h"
#include "fx/CompressorFx.h"
#include "fx/EQ_ST.h"
#include "fx/FilterFx.h"
#include "fx/PhaseFilter.h"

#include <benchmark/benchmark.h>

#include <random>

// Per-sample cost of the filter effect types and the master equalisers at 48 kHz, one channel
// (EQ_ST: per channel of the pair), on 32-sample blocks of noise.
namespace
{
struct Noise
{
    alignas(64) double in[gBlockLen];
    alignas(64) double out[gBlockLen];
    alignas(64) double in2[gBlockLen];
    alignas(64) double out2[gBlockLen];
    Noise()
    {
        std::mt19937 rng(1);
        std::uniform_real_distribution<double> d(-1.0, 1.0);
        for (int i = 0; i < gBlockLen; ++i)
        {
            in[i] = d(rng);
            in2[i] = d(rng);
        }
    }
};

void RunMono(benchmark::State& state, DSPShell& m)
{
    Noise b;
    m.mIn1 = b.in;
    m.mOut1 = b.out;
    for (auto _ : state)
    {
        m.Process();
        benchmark::DoNotOptimize(b.out);
    }
    state.SetItemsProcessed(state.iterations() * gBlockLen);
}

void BM_FxFilterType(benchmark::State& state)
{
    SetTimeBase(48000.0);
    const int type = int(state.range(0));
    FilterFx fx(type, false);
    fx.SetParam(0, 0.5);
    fx.SetParam(1, 0.5);
    fx.SetParam(2, 0.5);
    fx.SetParam(3, type == kFxPeak || type == kFxVowel ? 0.7 : 0.0);
    fx.SetParam(4, 0.5);
    RunMono(state, fx);
}
BENCHMARK(BM_FxFilterType)->Arg(29)->Arg(30)->Arg(31)->Arg(32)->Arg(33)->Arg(36);

void BM_FxPhaseFilter(benchmark::State& state)
{
    SetTimeBase(48000.0);
    PhaseFilter pf(false);
    pf.SetParam(0, 0.5);
    pf.SetParam(1, 0.5);
    pf.SetParam(3, 1.0); // 7 stages
    RunMono(state, pf);
}
BENCHMARK(BM_FxPhaseFilter);

void BM_FxCompressor(benchmark::State& state)
{
    SetTimeBase(48000.0);
    CompressorFx comp(false);
    comp.SetParam(0, 0.6);
    comp.SetParam(1, 0.5);
    RunMono(state, comp);
}
BENCHMARK(BM_FxCompressor);

void BM_FxEqStereo(benchmark::State& state)
{
    SetTimeBase(48000.0);
    EQ_ST eq(int(state.range(0)));
    eq.SetParam(0, 0.7);
    eq.SetParam(1, 800.0);
    eq.SetParam(2, 0.3);
    eq.SetParam(3, 4000.0);
    Noise b;
    eq.mIn1 = b.in;
    eq.mOut1 = b.out;
    eq.mIn2 = b.in2;
    eq.mOut2 = b.out2;
    for (auto _ : state)
    {
        eq.Process();
        benchmark::DoNotOptimize(b.out);
        benchmark::DoNotOptimize(b.out2);
    }
    state.SetItemsProcessed(state.iterations() * gBlockLen * 2);
}
BENCHMARK(BM_FxEqStereo)->Arg(0)->Arg(1)->Arg(2);
} // namespace
