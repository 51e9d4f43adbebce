#include "BenchPatches.h"
#include "BundleRunner.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

// What idle instances cost: a session's worth of instances from the built bundle, each with the
// default patch, played for a moment (so that every thread they start is running) and then left
// active with no audio and no window, as a host leaves plug-ins on stopped tracks. Prints the
// process's CPU time over the idle wait as a share of one core; the goal is zero.
//   quorvex_idle_cpu [instances = 50] [seconds = 5]
namespace
{
double CpuSeconds()
{
    rusage use{};
    getrusage(RUSAGE_SELF, &use);
    return double(use.ru_utime.tv_sec + use.ru_stime.tv_sec) +
           1e-6 * double(use.ru_utime.tv_usec + use.ru_stime.tv_usec);
}
} // namespace

int main(int argc, char** argv)
{
    using namespace bench_bundle;
    const int instances = argc > 1 ? std::max(1, std::atoi(argv[1])) : 50;
    const double seconds = argc > 2 ? std::max(0.5, std::atof(argv[2])) : 5.0;

    std::string error;
    std::unique_ptr<vst3host::PluginModule> module = vst3host::PluginModule::Load(QUORVEX_BUNDLE_DIR, error);
    if (!module)
    {
        std::fprintf(stderr, "quorvex_idle_cpu: %s\n", error.c_str());
        return 1;
    }
    std::vector<std::unique_ptr<BundleRunner>> runners;
    std::vector<double> in(kHostBlock, 0.1), outL(kHostBlock), outR(kHostBlock);
    for (int i = 0; i < instances; ++i)
    {
        auto runner = BundleRunner::Open(*module, bench_patches::kPatchDefault, error);
        if (!runner)
        {
            std::fprintf(stderr, "quorvex_idle_cpu: %s\n", error.c_str());
            return 1;
        }
        for (int call = 0; call < 8; ++call)
            runner->Call(in.data(), in.data(), outL.data(), outR.data());
        runners.push_back(std::move(runner));
    }

    const double before = CpuSeconds();
    const auto start = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const double cpu = CpuSeconds() - before;
    std::printf("%d idle instances, %.1f s: %.3f ms of CPU, %.4f %% of one core\n", instances, wall,
                1000.0 * cpu, 100.0 * cpu / wall);
    return 0;
}
