#include "reverb/AFdnReverb.h"
#include "reverb/Ambience.h"
#include "reverb/ReverbLaws.h"

#include <benchmark/benchmark.h>

#include <random>

// Cost of the reverbs per stereo frame at 48 kHz, on noise in 32-sample blocks. Items are frames.
namespace
{
struct NoiseBlocks
{
    static constexpr int kBlocks = 64;
    alignas(64) double left[kBlocks][gBlockLen];
    alignas(64) double right[kBlocks][gBlockLen];
    alignas(64) double outL[gBlockLen];
    alignas(64) double outR[gBlockLen];
    NoiseBlocks()
    {
        std::mt19937 rng(7);
        std::uniform_real_distribution<double> dist(-0.5, 0.5);
        for (int b = 0; b < kBlocks; ++b)
            for (int i = 0; i < gBlockLen; ++i)
                left[b][i] = dist(rng), right[b][i] = dist(rng);
    }
};

void RunStereo(benchmark::State& state, DSPShell& fx)
{
    NoiseBlocks n;
    fx.mOut1 = n.outL;
    fx.mOut2 = n.outR;
    int block = 0;
    for (auto _ : state)
    {
        fx.mIn1 = n.left[block];
        fx.mIn2 = n.right[block];
        block = (block + 1) % NoiseBlocks::kBlocks;
        fx.Process();
        benchmark::DoNotOptimize(n.outL);
        benchmark::DoNotOptimize(n.outR);
    }
    state.SetItemsProcessed(state.iterations() * gBlockLen);
}

void BM_ReverbFdn(benchmark::State& state, int lines, int modLines, int third)
{
    SetTimeBase(48000.0);
    AFdnReverb r(lines, modLines, third);
    r.SetParam(0, HallSizeSeconds(50.0));
    r.SetParam(1, PreDelaySamples(HallPreDelayMs(20.0)));
    r.SetParam(2, ReverbHighPass(10.0));
    r.SetParam(3, HallDamp(50.0));
    r.Reset();
    RunStereo(state, r);
}

void BM_ReverbAmbience(benchmark::State& state)
{
    SetTimeBase(48000.0);
    Ambience a;
    a.SetParam(0, AmbienceSize(50.0));
    a.SetParam(1, AmbienceDecay(80.0));
    a.SetParam(2, AmbienceModulation(50.0));
    a.SetParam(3, AmbienceDamp(30.0));
    a.Init();
    RunStereo(state, a);
}
} // namespace

BENCHMARK_CAPTURE(BM_ReverbFdn, Hall, 16, 7, 1);
BENCHMARK_CAPTURE(BM_ReverbFdn, Room, 10, 2, 4);
BENCHMARK(BM_ReverbAmbience);
