// Plays one patch of BenchPatches.h through the engine for a fixed number of 512-frame host calls,
// for counting instructions under callgrind: the warm-up runs with instrumentation off, and only
// the measured calls are collected, so the count divided by the frames is instructions per stereo
// frame. Outside valgrind the requests do nothing and the program just plays the patch.
//   valgrind --tool=callgrind --instr-atstart=no --collect-atstart=no quorvex_patch_run Default 94

#include "BenchPatches.h"
#include "EngineDriver.h"

#include <valgrind/callgrind.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        std::fprintf(stderr, "usage: %s <patch> <calls of %d frames>\npatches:", argv[0],
                     bench_engine::kHostBlock);
        for (const auto name : bench_patches::kPatchNames)
            std::fprintf(stderr, " %.*s", int(name.size()), name.data());
        std::fprintf(stderr, "\n");
        return 2;
    }
    const bench_patches::Patch patch = bench_patches::FindPatch(argv[1]);
    const int calls = std::atoi(argv[2]);
    if (patch == bench_patches::kNumPatches || calls <= 0)
    {
        std::fprintf(stderr, "unknown patch or bad call count\n");
        return 2;
    }

    bench_engine::EngineDriver driver(patch);
    driver.WarmUp();

    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_TOGGLE_COLLECT;
    for (int i = 0; i < calls; ++i)
        driver.Call();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_STOP_INSTRUMENTATION;

    // The output is read, so that none of the measured work can be left out.
    double sum = 0.0;
    for (int i = 0; i < bench_engine::kHostBlock; ++i)
        sum += std::fabs(driver.OutL()[i]) + std::fabs(driver.OutR()[i]);
    std::printf("patch %s frames %d output %.6g\n", argv[1], calls * bench_engine::kHostBlock, sum);
    return std::isfinite(sum) ? 0 : 1;
}
