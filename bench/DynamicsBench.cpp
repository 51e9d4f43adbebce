#include "TimePerItem.h"
#include "dsp/Compressor.h"
#include "dsp/MasterLimiter.h"
#include "dsp/ModDelayBuffer.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>

// Per-sample cost of the block delay's modulated read and of the dynamics modules, at 32-sample
// blocks. Items are samples (stereo frames for the limiter).
namespace
{
constexpr int kN = 32;

// Items per second, and the inverted rate: time per sample (or frame), printed with its unit.
void CountSamples(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * kN);
    state.counters["per_sample"] = TimePerItem(double(kN));
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

// The limiter on pre-generated noise (so no generator is timed), 12 dB of boost so that it limits.
void BM_MasterLimiter(benchmark::State& state)
{
    MasterLimiter lim;
    lim.SetMode(static_cast<int>(state.range(0)), false);
    lim.SetBoost(12.0);
    lim.Reset();
    constexpr int kBlocks = 64;
    alignas(64) static double noiseL[kBlocks][kN], noiseR[kBlocks][kN];
    std::uint32_t x = 5;
    for (int b = 0; b < kBlocks; ++b)
        for (int i = 0; i < kN; ++i)
        {
            x = x * 1664525u + 1013904223u;
            noiseL[b][i] = 0.9 * (double(x >> 8) / 8388608.0 - 1.0);
            x = x * 1664525u + 1013904223u;
            noiseR[b][i] = 0.7 * (double(x >> 8) / 8388608.0 - 1.0);
        }
    alignas(64) double outL[kN], outR[kN];
    lim.mOut1 = outL;
    lim.mOut2 = outR;
    int block = 0;
    for (auto _ : state)
    {
        lim.mIn1 = noiseL[block];
        lim.mIn2 = noiseR[block];
        block = (block + 1) % kBlocks;
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
