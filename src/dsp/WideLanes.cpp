#include "dsp/WideLanes.h"

#include <atomic>

namespace
{
bool ProcessorHasWideLanes()
{
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
}

const bool kProcessorHasWideLanes = ProcessorHasWideLanes();
std::atomic<bool> gWideLanes{kProcessorHasWideLanes};
} // namespace

bool WideLanes()
{
    return gWideLanes.load(std::memory_order_relaxed);
}

bool SetWideLanes(bool on)
{
    const bool setting = on && kProcessorHasWideLanes;
    gWideLanes.store(setting, std::memory_order_relaxed);
    return setting;
}
