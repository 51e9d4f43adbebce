#include "BenchPatches.h"
#include "EngineDriver.h"
#include "TimePerItem.h"
#include "dsp/SignalGuard.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

// Cost of the whole engine per stereo frame, driven as a host drives it (see EngineDriver.h): the
// patches of BenchPatches.h over the defaults, 48 kHz, 512-frame host calls of pre-generated noise
// after two seconds of warm-up. "per_frame" is the time of one stereo frame, "x_realtime" how many
// times faster than real time one core runs. What one module costs comes from differences: the master
// hall added to the defaults is DefaultHall minus Default, the limiter is LimiterSlowI minus
// AllOff, the fourteen modulators are Modulators minus Default.
namespace
{
using namespace bench_engine;
using namespace bench_patches;

void BM_Engine(benchmark::State& state, Patch patch)
{
    EngineDriver driver(patch);
    driver.WarmUp();
    for (auto _ : state)
    {
        driver.Call();
        benchmark::DoNotOptimize(driver.OutL());
        benchmark::DoNotOptimize(driver.OutR());
        benchmark::ClobberMemory();
    }

    // Inverted rate: CPU seconds per stereo frame, printed with its unit (e.g. "53ns").
    state.counters["per_frame"] = TimePerItem(kHostBlock);
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
    state.counters["per_frame"] = TimePerItem(kHostBlock);
}
BENCHMARK_TEMPLATE(BM_EntryGuard, false)->Name("BM_EntryGuard/Plain");
BENCHMARK_TEMPLATE(BM_EntryGuard, true)->Name("BM_EntryGuard/Guarded");

// Every patch of the table, under its name.
const bool kRegistered = []
{
    for (int p = 0; p < kNumPatches; ++p)
    {
        const std::string name = "BM_Engine/" + std::string(kPatchNames[p]);
        benchmark::RegisterBenchmark(name.c_str(), BM_Engine, Patch(p));
    }
    return true;
}();
} // namespace
