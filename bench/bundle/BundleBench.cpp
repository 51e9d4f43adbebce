#include "BenchNoise.h"
#include "BenchPatches.h"
#include "BundleRunner.h"
#include "TimePerItem.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// Cost per stereo frame of the plug-in as shipped: the built bundle loaded with dlopen and driven
// through its VST 3 interfaces, the host's buffer copies included. Same conditions as the engine
// benchmarks: 48 kHz, 512-frame calls of pre-generated noise, two seconds of warm-up.
namespace
{
using namespace bench_bundle;
using namespace bench_patches;

constexpr int kNoiseBlocks = 16;
constexpr int kWarmupCalls = int(2.0 * kRate) / kHostBlock;

using bench_noise::Noise;

vst3host::PluginModule* Module(std::string& error)
{
    static std::unique_ptr<vst3host::PluginModule> module =
        vst3host::PluginModule::Load(QUORVEX_BUNDLE_DIR, error);
    return module.get();
}

void BM_Bundle(benchmark::State& state, Patch patch)
{
    std::string error;
    vst3host::PluginModule* module = Module(error);
    std::unique_ptr<BundleRunner> runner =
        module != nullptr ? BundleRunner::Open(*module, patch, error) : nullptr;
    if (runner == nullptr)
    {
        state.SkipWithError(error.c_str());
        return;
    }
    const std::size_t len = std::size_t(kNoiseBlocks) * kHostBlock;
    std::vector<double> inL = Noise(len, 11), inR = Noise(len, 23), outL(kHostBlock), outR(kHostBlock);
    int block = 0;
    const auto call = [&]
    {
        const std::size_t at = std::size_t(block) * kHostBlock;
        const bool ok = runner->Call(inL.data() + at, inR.data() + at, outL.data(), outR.data());
        block = (block + 1) % kNoiseBlocks;
        return ok;
    };
    for (int i = 0; i < kWarmupCalls; ++i)
        call();
    for (auto _ : state)
    {
        if (!call())
        {
            state.SkipWithError("process refused");
            break;
        }
        benchmark::DoNotOptimize(outL.data());
        benchmark::DoNotOptimize(outR.data());
        benchmark::ClobberMemory();
    }
    state.counters["per_frame"] = TimePerItem(kHostBlock);
}

const bool kRegistered = []
{
    for (int p = 0; p < kNumPatches; ++p)
    {
        const std::string name = "BM_Bundle/" + std::string(kPatchNames[p]);
        benchmark::RegisterBenchmark(name.c_str(), BM_Bundle, Patch(p));
    }
    return true;
}();
} // namespace
