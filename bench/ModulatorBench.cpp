#include "TimePerItem.h"
#include "core/ModulatorBank.h"
#include "dsp/TimeBase.h"
#include "modulators/LogicModule.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>

// The engine's whole modulator tick with every modulator on: four LFOs (one rate-modulated, one
// S&H, one glided), four gates (synced, free, clocked by a gate and by an envelope), two envelope
// followers on audio, four logic modules on LFOs and gates. Time per 32-sample block, and that
// time spread over the block's stereo frames: the tick's share of the engine's per-frame cost.
namespace
{
void BM_ModulatorTick(benchmark::State& state)
{
    SetTimeBase(48000.0);
    auto bank = std::make_unique<ModSourceBank>();
    auto mods = std::make_unique<ModulatorBank>(*bank);

    const int waves[ModulatorBank::kLfos] = {0, 12, 26, 8}; // SIN1, TRIANGLE, S&H, SAWSIN
    for (int k = 0; k < ModulatorBank::kLfos; ++k)
    {
        TableLFO& lfo = mods->mLfo[k];
        lfo.setWave(mods->Wave(waves[k]));
        lfo.setRate(0.5 + k);
        lfo.setDepth(1.0);
        lfo.setGlide(k == 3 ? 200.0 : 1.0);
        lfo.setOn((state.range(0) & 1) != 0);
    }
    mods->mLfo[1].setRateModSource(bank->SourceBuffer(kModSourceLFO1));
    mods->mLfo[1].setRateModDepth(0.1);
    mods->mLfo[2].setTrigger(mods->Trigger(ModulatorBank::kTrigQuarter));

    const int timebases[ModulatorBank::kGates] = {2, 5, 14, 12}; // 1/16, 1/4d, GATE1 LEVEL, ENV1
    for (int g = 0; g < ModulatorBank::kGates; ++g)
    {
        ArpGate& gate = mods->mGate[g];
        gate.setTimebase(timebases[g], mods->GateClock(timebases[g]));
        gate.setSyncSwitch(g == 0);
        gate.setDirection(g);
        gate.setGlide(20.0 * g);
        for (int s = 0; s < ArpGate::kMaxSteps; ++s)
            gate.setStepLevel(s, (s % 3) / 2.0);
        mods->mGateOn[g] = (state.range(0) & 2) != 0;
    }

    double audio[gBlockLen];
    for (int i = 0; i < gBlockLen; ++i)
        audio[i] = 0.5 * std::sin(0.05 * i);
    for (int e = 0; e < ModulatorBank::kEnvelopes; ++e)
    {
        mods->mEnv[e].SetSourceBuffer(audio);
        mods->mEnvOn[e] = (state.range(0) & 4) != 0;
    }
    for (int k = 0; k < ModulatorBank::kLogics; ++k)
    {
        LogicModule& logic = mods->mLogic[k];
        logic.SetSource1(bank->SourceBuffer(kModSourceLFO1 + k));
        logic.SetSource2(bank->SourceBuffer(kModSourceGate1 + k));
        logic.SetSource1Depth(100.0);
        logic.SetSource2Depth(80.0);
        logic.SetModeMenu(2 * k);
        logic.SetSmooth(5.0);
        logic.SetDepth(100.0);
        mods->mLogicOn[k] = (state.range(0) & 8) != 0;
    }

    ModulatorTickContext ctx;
    double outL[gBlockLen] = {}, outR[gBlockLen] = {};
    ctx.listenL = outL;
    ctx.listenR = outR;
    const double beatsPerBlock = gBlockLen * 2.0 / 48000.0; // 120 bpm
    for (auto _ : state)
    {
        ctx.songPos += beatsPerBlock;
        const double beat = std::floor(ctx.songPos);
        ctx.beatChanged = std::floor(ctx.songPos - beatsPerBlock) != beat;
        mods->Tick(ctx);
        benchmark::DoNotOptimize(bank->SourceBuffer(kModSourceLogic1));
        benchmark::ClobberMemory();
    }
    state.counters["per_block"] = TimePerItem(1.0);
    state.counters["per_frame"] = TimePerItem(double(gBlockLen));
}
} // namespace

BENCHMARK(BM_ModulatorTick)->Arg(15)->Arg(0)->Arg(1)->Arg(2)->Arg(4)->Arg(8);
