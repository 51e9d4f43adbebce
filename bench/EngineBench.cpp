#include "BenchPlug.h"
#include "delay/DelayMode.h"
#include "dsp/SignalGuard.h"
#include "engine/Quorvex.h"
#include "params/IParamRecord.h"
#include "params/ParamIds.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

// Cost of the whole engine per stereo frame, driven as a host drives it: parameters through their
// records and OnParamChange, Reset at 48 kHz, then 512-frame host calls of noise. "per_frame" is
// the time of one stereo frame, "x_realtime" how many times faster than real time one core runs.
namespace
{
constexpr double kRate = 48000.0;
constexpr int kHostBlock = 512;
constexpr int kNoiseBlocks = 16;
// Two seconds before timing, so feedback paths and lines are full when the clock starts.
constexpr int kWarmupCalls = int(2.0 * kRate) / kHostBlock;

enum Patch
{
    kPatchDefault,
    kPatchFourForward,
    kPatchTapped16Swell,
    kPatchGrain,
    kPatchBackward,
};

using namespace bench_plug;

void ApplyPatch(Quorvex& plug, Patch patch)
{
    switch (patch)
    {
    case kPatchDefault:
        break;
    case kPatchFourForward:
        for (int slot = 0; slot < Quorvex::kNumSlots; ++slot)
        {
            Set(plug, kSlotOn1 + slot, 1.0);
            Set(plug, kDelayMode1 + slot, DelayForward);
            Set(plug, kDirectIn1 + slot, 50.0);
            Set(plug, kFeedback1 + slot, 40.0);
        }
        break;
    case kPatchTapped16Swell:
        Set(plug, kDelayMode1, DelayTapped);
        Set(plug, kDelayTaps1, 15.0); // the list starts at "1"
        Set(plug, kDelayTapsSwell1, 100.0);
        break;
    case kPatchGrain:
        Set(plug, kDelayMode1, DelayGrain);
        break;
    case kPatchBackward:
        Set(plug, kDelayMode1, DelayBackward);
        break;
    }
}

std::vector<double> Noise(std::size_t n, std::uint32_t seed)
{
    std::vector<double> v(n);
    std::uint32_t x = seed;
    for (double& s : v)
    {
        x = x * 1664525u + 1013904223u;
        s = 0.5 * (double(x >> 8) / 8388608.0 - 1.0);
    }
    return v;
}

void BM_Engine(benchmark::State& state, Patch patch)
{
    QuorvexPtr plug(new Quorvex());
    plug->SetSampleRate(kRate);
    ApplyPatch(*plug, patch);
    plug->Reset();

    const std::size_t len = std::size_t(kNoiseBlocks) * kHostBlock;
    std::vector<double> inL = Noise(len, 11), inR = Noise(len, 23);
    std::vector<double> silence(kHostBlock, 0.0), outL(kHostBlock), outR(kHostBlock);
    int block = 0;
    const auto call = [&]
    {
        const std::size_t at = std::size_t(block) * kHostBlock;
        double* inputs[4] = {inL.data() + at, inR.data() + at, silence.data(), silence.data()};
        double* outputs[2] = {outL.data(), outR.data()};
        plug->ProcessDoubleReplacing(inputs, outputs, kHostBlock);
        block = (block + 1) % kNoiseBlocks;
    };

    for (int i = 0; i < kWarmupCalls; ++i)
        call();
    for (auto _ : state)
    {
        call();
        benchmark::DoNotOptimize(outL.data());
        benchmark::DoNotOptimize(outR.data());
        benchmark::ClobberMemory();
    }

    // Inverted rate: CPU seconds per stereo frame, printed with its unit (e.g. "53ns").
    state.counters["per_frame"] = benchmark::Counter(
        kHostBlock, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    // Seconds of audio per second of CPU time: the console shows this ratio with a "/s" suffix.
    state.counters["x_realtime"] =
        benchmark::Counter(kHostBlock / kRate, benchmark::Counter::kIsIterationInvariantRate);
}
// What the guards against bad input cost per stereo frame. The entry: left, right and sidechain
// samples into 64-entry rings as the engine's entry loop takes them, bounded ("Guarded") or copied
// as they come ("Plain"); the difference is the guard's share, the whole of it in every patch.
// Host calls of 512 frames of noise with a NaN in every 97th sample.
template <bool kGuarded> void BM_EntryGuard(benchmark::State& state)
{
    constexpr int kRing = 64;
    const std::size_t len = std::size_t(kNoiseBlocks) * kHostBlock;
    std::vector<double> inL = Noise(len, 11), inR = Noise(len, 23), inSC = Noise(len, 31);
    for (std::size_t i = 0; i < len; i += 97)
        inL[i] = std::numeric_limits<double>::quiet_NaN();
    double ringL[kRing] = {}, ringR[kRing] = {}, ringSC[kRing] = {};
    int write = 0;
    int block = 0;
    for (auto _ : state)
    {
        const double* l = inL.data() + std::size_t(block) * kHostBlock;
        const double* r = inR.data() + std::size_t(block) * kHostBlock;
        const double* sc = inSC.data() + std::size_t(block) * kHostBlock;
        for (int i = 0; i < kHostBlock; ++i)
        {
            write &= kRing - 1;
            ringL[write] = kGuarded ? GuardSample(l[i], kInputLimit) : l[i];
            ringR[write] = kGuarded ? GuardSample(r[i], kInputLimit) : r[i];
            ringSC[write] = kGuarded ? GuardSample(sc[i], kInputLimit) : sc[i];
            ++write;
        }
        block = (block + 1) % kNoiseBlocks;
        benchmark::DoNotOptimize(ringL);
        benchmark::DoNotOptimize(ringR);
        benchmark::DoNotOptimize(ringSC);
        benchmark::ClobberMemory();
    }
    state.counters["per_frame"] = benchmark::Counter(
        kHostBlock, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK_TEMPLATE(BM_EntryGuard, false)->Name("BM_EntryGuard/Plain");
BENCHMARK_TEMPLATE(BM_EntryGuard, true)->Name("BM_EntryGuard/Guarded");

BENCHMARK_CAPTURE(BM_Engine, Default, kPatchDefault);
BENCHMARK_CAPTURE(BM_Engine, FourForward, kPatchFourForward);
BENCHMARK_CAPTURE(BM_Engine, Tapped16Swell, kPatchTapped16Swell);
BENCHMARK_CAPTURE(BM_Engine, Grain, kPatchGrain);
BENCHMARK_CAPTURE(BM_Engine, Backward, kPatchBackward);
} // namespace
