#include "TimePerItem.h"
#include "dsp/MSVRAP1ModDelayLine.h"
#include "dsp/MSinOsc.h"

#include <benchmark/benchmark.h>

#include <numbers>

// Per-sample cost of a reverb line: a modulated line of the longest reverb length, its head moved
// every 50 samples by a 2 Hz sine, written and read once per sample as the reverb does.
namespace
{
constexpr int kSamples = 1024;

void BM_ModDelayLineProcess(benchmark::State& state)
{
    const int centre = 1361;
    const int depth = 6;
    const int interval = 50;
    MSinOsc osc;
    osc.Setup(2.0 * std::numbers::pi * interval * 2.0 / 44100.0, 0.0);
    MSVRAP1ModDelayLine line(int((centre + depth) * 96000.0 / 44100.0 + 1.0));
    line.SetInterval(interval);
    line.SetModulator(&osc);
    line.SetCenterDelay(centre);
    line.SetDepth(depth);

    float x = 0.25f;
    for (auto _ : state)
    {
        for (int n = 0; n < kSamples; ++n)
        {
            const float y = line.Process();
            line.Write(x - 0.5f * y);
            x = -x;
        }
        benchmark::DoNotOptimize(line.mLast);
    }
    state.SetItemsProcessed(state.iterations() * kSamples);
    state.counters["per_sample"] = TimePerItem(double(kSamples));
}
BENCHMARK(BM_ModDelayLineProcess);
} // namespace
