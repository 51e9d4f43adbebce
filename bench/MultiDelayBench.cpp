#include "TimePerItem.h"
#include "delay/QLMMultiDelay.h"
#include "dsp/TimeBase.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

// Per-sample cost of one delay channel at 48 kHz in 32-sample blocks, as the engine drives it:
// every head read, then the block written. Range(0) is the mode, Range(1) the number of heads.
namespace
{
constexpr int kBlocks = 64;

void BM_MultiDelay(benchmark::State& state)
{
    SetTimeBase(48000.0);
    const int mode = int(state.range(0));
    const int taps = int(state.range(1));
    auto d = std::make_unique<QLMMultiDelay>();
    d->SetMode(mode);
    d->SetLowPass(5000.0 / 48000.0);
    d->SetHighPass(100.0 / 48000.0);
    d->SetReverseFade(10.0);
    d->mReverseOffset = 100.0;
    d->SetGrainSpeed(0.3);
    d->SetGrainSize(80.0);

    std::vector<double> in(kBlocks * gBlockLen);
    for (size_t i = 0; i < in.size(); ++i)
        in[i] = std::sin(2.0 * std::numbers::pi * 440.0 * double(i) / 48000.0);
    double sink = 0.0;
    for (auto _ : state)
    {
        for (int b = 0; b < kBlocks; ++b)
        {
            for (int tap = 0; tap < taps; ++tap)
                sink += d->ReadTap(float(4800 + 1500 * tap), tap)[gBlockLen - 1];
            d->WriteBlock(in.data() + b * gBlockLen);
        }
        benchmark::DoNotOptimize(sink);
    }
    const double samples = double(kBlocks * gBlockLen);
    state.SetItemsProcessed(state.iterations() * int64_t(samples));
    state.counters["per_sample"] = TimePerItem(samples);
    SetTimeBase(44100.0);
}
BENCHMARK(BM_MultiDelay)
    ->ArgNames({"mode", "taps"})
    ->Args({DelayForward, 1})
    ->Args({DelayBackward, 1})
    ->Args({DelayGrain, 1})
    ->Args({DelayTapped, 16});
} // namespace
