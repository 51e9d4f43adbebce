#include "dsp/TimeBase.h"
#include "fx/LPHP.h"
#include "fx/Lofi.h"
#include "fx/Shaper.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>

// Per-sample cost of one channel of the shaping and drive-filter effects at 48 kHz, 32-sample
// blocks of noise, with mid-range settings (the mode and slope lists at their middle entries).
namespace
{
std::unique_ptr<DSPShell> MakeShaperFx(int type)
{
    std::unique_ptr<DSPShell> m;
    if (type == 22)
        m = std::make_unique<Lofi>(false);
    else if (type == 56)
        m = std::make_unique<LPHP>(false);
    else if (type == 57)
        m = std::make_unique<VARILPHP>(false);
    else
        m = std::make_unique<Shaper>(type, false);
    const double mid[5] = {type == 6 ? 3.0 : 0.5, type == 57 ? 1.0 : 0.5, 0.5,
                           type == 56 ? 1.0 : (type == 57 ? 1.0 : 0.5), 0.5};
    for (int p = 0; p < 5; ++p)
        m->SetParam(p, mid[p]);
    m->Reset();
    return m;
}

void BM_FxShaper(benchmark::State& state)
{
    SetTimeBase(48000.0);
    std::unique_ptr<DSPShell> m = MakeShaperFx(int(state.range(0)));
    alignas(64) double in[gBlockLen];
    alignas(64) double out[gBlockLen];
    uint32_t seed = 7;
    for (double& v : in)
    {
        seed = seed * 1664525u + 1013904223u;
        v = double(seed) / 4294967296.0 - 0.5;
    }
    m->mIn1 = in;
    m->mOut1 = out;
    for (auto _ : state)
    {
        m->Process();
        benchmark::DoNotOptimize(out);
    }
    state.SetItemsProcessed(state.iterations() * gBlockLen);
}
BENCHMARK(BM_FxShaper)
    ->ArgName("type")
    ->Arg(6)
    ->Arg(14)
    ->Arg(15)
    ->Arg(16)
    ->Arg(17)
    ->Arg(18)
    ->Arg(19)
    ->Arg(20)
    ->Arg(21)
    ->Arg(22)
    ->Arg(23)
    ->Arg(24)
    ->Arg(56)
    ->Arg(57);
} // namespace
