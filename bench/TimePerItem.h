#pragma once
// The cost of one item (a sample, a frame, a block) from a benchmark's iteration time: the rate of
// items per iteration, inverted, so the console prints seconds per item with their unit.

#include <benchmark/benchmark.h>

inline benchmark::Counter TimePerItem(double itemsPerIteration)
{
    return benchmark::Counter(itemsPerIteration,
                              benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
