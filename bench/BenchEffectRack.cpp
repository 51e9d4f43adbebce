#include "BenchPlug.h"
#include "delay/DelayMode.h"
#include "engine/Quorvex.h"
#include "params/IParamRecord.h"
#include "params/ParamIds.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <vector>

// The effect rack in the engine at 48 kHz: "FREQ SHIFT" at PRE, FB and POST of all four slots
// (and per tap in TAPPED mode), per stereo frame; and the cost of replacing one position's type
// on the parameter thread (building, publishing and freeing the modules).
namespace
{
constexpr double kRate = 48000.0;
constexpr int kHostBlock = 512;

using namespace bench_plug;

void RunEffects(benchmark::State& state, bool tapped)
{
    QuorvexPtr plug(new Quorvex());
    plug->SetSampleRate(kRate);
    for (int s = 0; s < Quorvex::kNumSlots; ++s)
    {
        Set(*plug, kSlotOn1 + s, 1.0);
        Set(*plug, kDelayMode1 + s, tapped ? DelayTapped : DelayForward);
        Set(*plug, kTapFXParam1_1 + s, 1.0);
        for (int id : {kFX1PR, kFX1FB, kFX1PO})
            Set(*plug, id + s, 1.0);
        for (int id : {kFXOnPR1, kFXOnFB1, kFXOnPO1})
            Set(*plug, id + s, 1.0);
        plug->Fields().mStepFxMask[s] = 0xFFFF; // every tap runs its POST pair
    }
    plug->SyncTapFxMasks();
    std::vector<double> inL(kHostBlock), inR(kHostBlock), outL(kHostBlock), outR(kHostBlock), sc(kHostBlock);
    std::minstd_rand rng(1);
    std::uniform_real_distribution<double> noise(-0.5, 0.5);
    for (int i = 0; i < kHostBlock; ++i)
    {
        inL[static_cast<std::size_t>(i)] = noise(rng);
        inR[static_cast<std::size_t>(i)] = noise(rng);
    }
    double* in[4] = {inL.data(), inR.data(), sc.data(), sc.data()};
    double* out[2] = {outL.data(), outR.data()};
    for (auto _ : state)
    {
        plug->ProcessDoubleReplacing(in, out, kHostBlock);
        benchmark::DoNotOptimize(outL.data());
    }
    state.SetItemsProcessed(state.iterations() * kHostBlock);
}

void BM_EffectRackFreqShiftEverywhere(benchmark::State& state)
{
    RunEffects(state, false);
}
BENCHMARK(BM_EffectRackFreqShiftEverywhere);

void BM_EffectRackFreqShiftTapped(benchmark::State& state)
{
    RunEffects(state, true);
}
BENCHMARK(BM_EffectRackFreqShiftTapped);

// One POST position switched between two types: 32 modules built, published and freed per switch.
void BM_EffectRackPostTypeSwitch(benchmark::State& state)
{
    QuorvexPtr plug(new Quorvex());
    plug->SetSampleRate(kRate);
    int menu = 1;
    for (auto _ : state)
    {
        Set(*plug, kFX1PO, menu);
        menu = menu == 1 ? 2 : 1;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_EffectRackPostTypeSwitch);
} // namespace
