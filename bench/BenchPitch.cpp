#include "dsp/TimeBase.h"
#include "fx/MVPitchShifter.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

// Per-sample cost of the pitch shifter on 32-sample blocks of noise at 48 kHz, splices included.
namespace
{
constexpr int kBlocks = 1024; // distinct noise blocks, so the splice search sees changing material

std::vector<double> Noise()
{
    std::mt19937 gen(3);
    std::uniform_real_distribution<double> dist(-1.0, 1.0);
    std::vector<double> v(size_t(kBlocks * gBlockLen));
    for (double& s : v)
        s = dist(gen);
    return v;
}

void Setup(MVPitchShifter& fx, double p0, double p1)
{
    fx.SetParam(0, p0);
    fx.SetParam(1, p1);
    fx.SetParam(2, MVPitchShifter::kDefaultSize);
    fx.SetParam(3, 0.6);
    fx.Reset();
}

// Mono type: +7 semitones and a little spread, one channel instance.
void BM_PitchShiftMono(benchmark::State& state)
{
    SetTimeBase(48000.0);
    const std::vector<double> in = Noise();
    double out[gBlockLen];
    MVPitchShifter fx(false, false);
    Setup(fx, 31.0 / 48.0, 0.5);
    int b = 0;
    for (auto _ : state)
    {
        fx.mIn1 = in.data() + b * gBlockLen;
        fx.mOut1 = out;
        fx.Process();
        benchmark::DoNotOptimize(out);
        b = (b + 1) % kBlocks;
    }
    state.SetItemsProcessed(state.iterations() * gBlockLen);
}
BENCHMARK(BM_PitchShiftMono);

// Stereo type: left +7, right -5 semitones; both instances per iteration, reported per channel.
void BM_PitchShiftStereo(benchmark::State& state)
{
    SetTimeBase(48000.0);
    const std::vector<double> in = Noise();
    double outL[gBlockLen], outR[gBlockLen];
    MVPitchShifter left(true, false), right(true, true);
    Setup(left, 31.0 / 48.0, 19.0 / 48.0);
    Setup(right, 31.0 / 48.0, 19.0 / 48.0);
    int b = 0;
    for (auto _ : state)
    {
        left.mIn1 = in.data() + b * gBlockLen;
        left.mOut1 = outL;
        right.mIn1 = in.data() + ((b + 7) % kBlocks) * gBlockLen;
        right.mOut1 = outR;
        left.Process();
        right.Process();
        benchmark::DoNotOptimize(outL);
        benchmark::DoNotOptimize(outR);
        b = (b + 1) % kBlocks;
    }
    state.SetItemsProcessed(state.iterations() * 2 * gBlockLen);
}
BENCHMARK(BM_PitchShiftStereo);
} // namespace
