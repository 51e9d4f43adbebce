#include "dsp/Compressor.h"
#include "dsp/MasterLimiter.h"
#include "dsp/ModDelayBuffer.h"

#include <benchmark/benchmark.h>

#include <cmath>

// Per-sample cost of the block delay's modulated read and of the dynamics modules, at 32-sample
// blocks. Items are samples (stereo frames for the limiter).
namespace
{
constexpr int kN = 32;

// Items per second, and the inverted rate: time per sample (or frame), printed with its unit.
void CountSamples(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * kN);
    state.counters["per_sample"] = benchmark::Counter(
        double(kN), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void FillSine(double* x, int n, double amp, double step, double& phase)
{
    for (int i = 0; i < n; ++i)
    {
        x[i] = amp * std::sin(phase);
        phase += step;
    }
}

void BM_ModDelayBufferReadModulated(benchmark::State& state)
{
    ModDelayBuffer buf;
    buf.Allocate(4096);
    alignas(64) double in[kN];
    double phase = 0.0;
    FillSine(in, kN, 0.5, 0.01, phase);
    double delay = 1000.25;
    for (auto _ : state)
    {
        buf.Write(in, kN);
        benchmark::DoNotOptimize(buf.ReadModulated(delay, kN));
        delay = delay > 1500.0 ? 1000.25 : delay + 0.37;
    }
    CountSamples(state);
}
BENCHMARK(BM_ModDelayBufferReadModulated);

void BM_MasterLimiter(benchmark::State& state)
{
    MasterLimiter lim;
    lim.SetMode(static_cast<int>(state.range(0)), false);
    lim.SetBoost(12.0);
    lim.Reset();
    alignas(64) double l[kN], r[kN], outL[kN], outR[kN];
    lim.mIn1 = l;
    lim.mIn2 = r;
    lim.mOut1 = outL;
    lim.mOut2 = outR;
    double pl = 0.0, pr = 0.3;
    for (auto _ : state)
    {
        FillSine(l, kN, 0.9, 0.013, pl);
        FillSine(r, kN, 0.7, 0.021, pr);
        lim.Process();
        benchmark::DoNotOptimize(outL);
        benchmark::DoNotOptimize(outR);
    }
    CountSamples(state);
    SetLimiterCurve(kLimiterSlowI);
}
BENCHMARK(BM_MasterLimiter)->Arg(kLimiterSlowI)->Arg(kLimiterFast);

void BM_Compressor(benchmark::State& state)
{
    Compressor comp;
    comp.SetParam(0, 0.1);
    comp.SetParam(1, 4.0);
    comp.SetParam(2, 5.0);
    comp.SetParam(3, 100.0);
    comp.SetParam(4, 0.2);
    alignas(64) double in[kN], out[kN];
    comp.mIn1 = in;
    comp.mOut1 = out;
    double phase = 0.0;
    for (auto _ : state)
    {
        FillSine(in, kN, 0.8, 0.02, phase);
        comp.Process();
        benchmark::DoNotOptimize(out);
    }
    CountSamples(state);
}
BENCHMARK(BM_Compressor);
} // namespace
