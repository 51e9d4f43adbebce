#include "core/ModulatorBank.h"

#include <algorithm>

#include "dsp/Vec.h"

namespace
{
constexpr std::uint8_t kNeverSet = 0;

// Modules k and k + 1 that both run go through `pair`, side by side; one that runs alone through
// `single`.
template <typename On, typename Pair, typename Single>
void RunInPairs(int count, On on, Pair pair, Single single)
{
    for (int k = 0; k + 1 < count; k += 2)
    {
        if (on(k) && on(k + 1))
        {
            pair(k);
            continue;
        }
        if (on(k)) single(k);
        if (on(k + 1)) single(k + 1);
    }
}
// Seed of the gates' random step order at the start of every run.
constexpr std::uint32_t kGateSeed = 1;
} // namespace

ModulatorBank::ModulatorBank(ModSourceBank& bank) : mBank(bank), mWaves(BuildWaveList())
{
    mTriggers[kTrigOff] = &kNeverSet;
    mTriggers[kTrigQuarter] = &mQuarter;
    mTriggers[kTrigBar] = &mBar;
    mTriggers[kTrigTwoBars] = &mTwoBars;
    for (int e = 0; e < kEnvelopes; ++e)
        mTriggers[kTrigEnv1 + e] = mEnv[e].TriggerFlag();
    for (int g = 0; g < kGates; ++g)
    {
        mTriggers[kTrigGateLevel1 + g] = mGate[g].LevelPulse();
        mTriggers[kTrigGateStart1 + g] = mGate[g].StartPulse();
    }
    for (TableLFO& lfo : mLfo)
    {
        lfo.setTrigger(Trigger(kTrigOff));
        lfo.setWave(mWaves[0]);
    }
}

const std::uint8_t* ModulatorBank::Trigger(int index) const
{
    return index > kTrigOff && index < kNumTriggers ? mTriggers[index] : mTriggers[kTrigOff];
}

const std::uint8_t* ModulatorBank::GateClock(int timebase) const
{
    // The clock entries of the gate timebase list follow the trigger list from ENV1 on.
    if (timebase < ArpGate::kFirstClockTimebase) return nullptr;
    return Trigger(kTrigEnv1 + timebase - ArpGate::kFirstClockTimebase);
}

const WaveRecord* ModulatorBank::Wave(int menuIndex) const
{
    return mWaves[static_cast<std::size_t>(std::clamp(menuIndex, 0, int(mWaves.size()) - 1))];
}

void ModulatorBank::Tick(const ModulatorTickContext& ctx)
{
    mQuarter = ctx.beatChanged ? 1 : 0;
    mBar = ctx.barChanged ? 1 : 0;
    mTwoBars = ctx.oddBar ? 1 : 0;

    // A gate left off keeps its last block and its pulses.
    for (int g = 0; g < kGates; ++g)
        if (mGateOn[g]) mGate[g].processBlock(ctx.songPos, static_cast<float>(ctx.tempo));

    if (ctx.tempo != mLastTempo)
    {
        mLastTempo = ctx.tempo;
        for (TableLFO& lfo : mLfo)
            lfo.tempoChanged(ctx.tempo);
    }
    // Modules of a kind that both run take their longest chains (the LFOs' glides, the envelopes'
    // band filters, the logic modules' smoothers) side by side.
    static_assert(kLfos % 2 == 0 && kEnvelopes % 2 == 0 && kLogics % 2 == 0);
    RunInPairs(
        kLfos, [this](int k) { return mLfo[k].isOn(); },
        [this](int k) { TableLFO::ProcessPair(mLfo[k], mLfo[k + 1]); },
        [this](int k) { mLfo[k].processBlock(); });
    RunInPairs(
        kEnvelopes, [this](int k) { return bool(mEnvOn[k]); },
        [this, &ctx](int k) { EnvelopeSource::ProcessPair(mEnv[k], mEnv[k + 1], ctx.listenL, ctx.listenR); },
        [this, &ctx](int k) { mEnv[k].Process(ctx.listenL, ctx.listenR); });
    RunInPairs(
        kLogics, [this](int k) { return bool(mLogicOn[k]); },
        [this](int k) { LogicModule::ProcessPair(mLogic[k], mLogic[k + 1]); },
        [this](int k) { mLogic[k].Process(); });

    // Only now does any source change: every reader sees the block before. A module that did not
    // run left its block as it was, except an LFO just turned off, whose cleared block goes out
    // once.
    for (int k = 0; k < kLfos; ++k)
    {
        const bool on = mLfo[k].isOn();
        if (on || mLfoPublished[k]) VecCopy(mLfo[k].output(), mBank.Buffer(kModSourceLFO1 + k), gBlockLen);
        mLfoPublished[k] = on;
    }
    for (int k = 0; k < kGates; ++k)
        if (mGateOn[k]) VecCopy(mGate[k].Out(), mBank.Buffer(kModSourceGate1 + k), gBlockLen);
    for (int k = 0; k < kEnvelopes; ++k)
        if (mEnvOn[k]) VecCopy(mEnv[k].Output(), mBank.Buffer(kModSourceEnv1 + k), gBlockLen);
    for (int k = 0; k < kLogics; ++k)
        if (mLogicOn[k]) VecCopy(mLogic[k].Output(), mBank.Buffer(kModSourceLogic1 + k), gBlockLen);
}

void ModulatorBank::Reset()
{
    // Every source starts a run from one state, so that two runs of a session are identical.
    for (TableLFO& lfo : mLfo)
        lfo.Restart();
    mLfoPublished.fill(false);
    // The routes read the sources one block late: the first block of a run reads silence.
    for (int k = kModSourceOff + 1; k < kNumModSources; ++k)
        VecZero(mBank.Buffer(k), gBlockLen);
    for (ArpGate& gate : mGate)
    {
        gate.SeedRandom(kGateSeed);
        gate.Reset();
    }
    for (EnvelopeSource& env : mEnv)
        env.Reset();
    for (LogicModule& logic : mLogic)
        logic.Reset();
    mLastTempo = -1.0;
}
