#include <chrono>
#include <cmath>

#include "dsp/Decibels.h"
#include "engine/Quorvex.h"
#include "modulators/StepPresets.h"
#include "params/IParamRecord.h"
#include "params/ValueLists.h"

// The modulator families: LFOs, step gates, envelopes and logic modules. The member is the LFO,
// gate, envelope or logic number from 0 (a gate step row: gate x 16 + step).
std::span<const Quorvex::ParamRow> Quorvex::ModulatorParamRows()
{
    using C = const ParamChange&;
    static const ParamRow rows[] = {
        // LFOs
        {"LFO On", kLFOOn1, 4, [](Quorvex& q, C c) { q.mModulators.mLfo[c.member].setOn(c.value >= 0.5); }},
        {"LFO Wave", kLFOWave1, 4,
         [](Quorvex& q, C c)
         { q.mModulators.mLfo[c.member].setWave(q.mModulators.Wave(ListIndex(c.value))); }},
        {"LFO Pol", kLFOPol1, 4,
         [](Quorvex& q, C c) { q.mModulators.mLfo[c.member].setPolarity(ListIndex(c.value)); }},
        {"LFO Sync", kLFOSync1, 4, [](Quorvex& q, C c) { q.SwitchLfoSync(c.member, ListIndex(c.value)); }},
        {"LFO Swap", kLFOSwap1, 4,
         [](Quorvex& q, C c) { q.mModulators.mLfo[c.member].setSwap(c.value >= 0.5); }},
        {"LFO Reverse", kLFOReverse1, 4,
         [](Quorvex& q, C c) { q.mModulators.mLfo[c.member].setReverse(c.value >= 0.5); }},
        {"LFO Mode", kLFOMode1, 4,
         [](Quorvex& q, C c) { q.mModulators.mLfo[c.member].setMode(ListIndex(c.value)); }},
        {"LFO Trigger", kLFOTrigger1, 4,
         [](Quorvex& q, C c)
         { q.mModulators.mLfo[c.member].setTrigger(q.mModulators.Trigger(ListIndex(c.value))); }},
        {"LFO Rate", kLFORate1, 4,
         [](Quorvex& q, C c)
         {
             TableLFO& lfo = q.mModulators.mLfo[c.member];
             if (lfo.getSyncMode() == TableLFO::kSyncHz)
                 lfo.setRate(c.value);
             else
                 lfo.setSyncStep(ListIndex(c.value / TableLFO::kSyncStepSpacing), q.mTempo.tempo);
         }},
        {"LFO Depth", kLFODepth1, 4,
         [](Quorvex& q, C c) { q.mModulators.mLfo[c.member].setDepth(c.value * 0.01); }},
        {"LFO Phase", kLFOPhase1, 4,
         [](Quorvex& q, C c) { q.mModulators.mLfo[c.member].setPhase(c.value * 0.01); }},
        {"LFO Glide", kLFOGlide1, 4, [](Quorvex& q, C c) { q.mModulators.mLfo[c.member].setGlide(c.value); }},
        // Step gates
        {"Gate Length", kGate1Length, 4,
         [](Quorvex& q, C c) { q.mModulators.mGate[c.member].setLength(ListIndex(c.value)); }},
        {"Gate On", kGate1On, 4, [](Quorvex& q, C c) { q.mModulators.mGateOn[c.member] = c.value >= 0.5; }},
        {"Gate Timebase", kGate1Timebase, 4,
         [](Quorvex& q, C c)
         {
             q.mModulators.mGate[c.member].setTimebase(ListIndex(c.value),
                                                       q.mModulators.GateClock(ListIndex(c.value)));
         }},
        {"Gate Direction", kGate1Direction, 4,
         [](Quorvex& q, C c) { q.mModulators.mGate[c.member].setDirection(ListIndex(c.value)); }},
        {"Gate Sync", kGate1Sync, 4,
         [](Quorvex& q, C c) { q.mModulators.mGate[c.member].setSyncSwitch(c.value >= 0.5); }},
        {"Gate Glide", kGate1Glide, 4,
         [](Quorvex& q, C c) { q.mModulators.mGate[c.member].setGlide(c.value); }},
        {"Gate Depth", kGate1Depth, 4,
         [](Quorvex& q, C c) { q.mModulators.mGate[c.member].setDepth(c.value * 0.01); }},
        {"GATE Pol", kGATEPol1, 4,
         [](Quorvex& q, C c) { q.mModulators.mGate[c.member].setPolarity(ListIndex(c.value)); }},
        {"Gate Step", kGate1Step1, 4 * ArpGate::kMaxSteps,
         [](Quorvex& q, C c)
         {
             q.mModulators.mGate[c.member / ArpGate::kMaxSteps].setStepLevel(c.member % ArpGate::kMaxSteps,
                                                                             c.value * 0.01);
         }},
        // Envelopes
        {"ENV On", kENV1On, 2, [](Quorvex& q, C c) { q.mModulators.mEnvOn[c.member] = c.value >= 0.5; }},
        {"ENV Mode", kENV1Mode, 2,
         [](Quorvex& q, C c) { q.mModulators.mEnv[c.member].SetMode(ListIndex(c.value)); }},
        {"ENV Source", kENV1Source, 2,
         [](Quorvex& q, C c) { q.SelectEnvelopeSource(c.member, ListIndex(c.value)); }},
        {"ENV Gain", kENV1Gain, 2, [](Quorvex& q, C c) { q.mModulators.mEnv[c.member].SetGain(c.value); }},
        {"ENV Attack", kENV1Attack, 2,
         [](Quorvex& q, C c) { q.mModulators.mEnv[c.member].SetAttack(c.value); }},
        {"ENV Decay", kENV1Decay, 2, [](Quorvex& q, C c) { q.mModulators.mEnv[c.member].SetDecay(c.value); }},
        {"ENV Hold", kENV1Hold, 2, [](Quorvex& q, C c) { q.mModulators.mEnv[c.member].SetHold(c.value); }},
        {"ENV Threshold", kENV1Threshold, 2,
         [](Quorvex& q, C c) { q.mModulators.mEnv[c.member].SetThreshold(c.value); }},
        {"ENV Locut", kENV1Locut, 2, [](Quorvex& q, C c) { q.mModulators.mEnv[c.member].SetLocut(c.value); }},
        {"ENV Hicut", kENV1Hicut, 2, [](Quorvex& q, C c) { q.mModulators.mEnv[c.member].SetHicut(c.value); }},
        {"ENV Depth", kENV1Depth, 2, [](Quorvex& q, C c) { q.mModulators.mEnv[c.member].SetDepth(c.value); }},
        {"ENV Output", kENV1Output, 2,
         [](Quorvex& q, C c)
         { q.mModulators.mEnv[c.member].GetEnvelope().SetLinear(ListIndex(c.value) == 1); }},
        // Logic modules
        {"Logic On", kLogicOn1, 4,
         [](Quorvex& q, C c) { q.mModulators.mLogicOn[c.member] = c.value >= 0.5; }},
        {"Logic Type", kLogic1Type, 4,
         [](Quorvex& q, C c) { q.mModulators.mLogic[c.member].SetModeMenu(ListIndex(c.value)); }},
        {"Logic Smooth", kLogic1Smooth, 4,
         [](Quorvex& q, C c) { q.mModulators.mLogic[c.member].SetSmooth(c.value); }},
        {"Logic Depth", kLogic1Depth, 4,
         [](Quorvex& q, C c) { q.mModulators.mLogic[c.member].SetDepth(c.value); }},
        // "GATE Steps" only sets the grid of the step controls.
        {"GATE Steps", kGATESteps1, 4, nullptr},
    };
    return rows;
}

// Rate and logic routes: the modules hold the source pointer themselves; depths are read from the
// parameters in the unit each module takes.
bool Quorvex::WireModulatorRoute(const ModParamRef& ref)
{
    const ModRoute& route = mModRouting.Route(ref.family, ref.member);
    const int m = ref.member;
    switch (ref.family)
    {
    case kModLfoRate:
        mModulators.mLfo[m].setRateModSource(route.Source());
        mModulators.mLfo[m].setRateModDepth(route.Depth());
        return true;
    case kModLogicSource1:
        mModulators.mLogic[m].SetSource1(route.Source());
        mModulators.mLogic[m].SetSource1Depth(GetParam(kLogic1Source1Depth + m)->value);
        return true;
    case kModLogicSource2:
        mModulators.mLogic[m].SetSource2(route.Source());
        mModulators.mLogic[m].SetSource2Depth(GetParam(kLogic1Source2Depth + m)->value);
        return true;
    case kModLogicDepth:
        mModulators.mLogic[m].SetDepthSource(route.Source());
        mModulators.mLogic[m].SetDepthMod(GetParam(kLogic1DepthMod + m)->value);
        return true;
    default:
        return false;
    }
}

// Sync off writes the rate that was heard into "LFO Rate"; sync on picks the nearest note value
// below that rate and writes its place on the scale. While a state loads the parameter arrives by
// itself.
void Quorvex::SwitchLfoSync(int lfo, int mode)
{
    TableLFO& osc = mModulators.mLfo[lfo];
    const bool wasSynced = osc.getSyncMode() != TableLFO::kSyncHz;
    osc.setSyncMode(mode, mTempo.tempo);
    const bool synced = mode != TableLFO::kSyncHz;
    // The rate knob shows the note values while synced.
    static constexpr IParamRecord::ScaleLabels kNoteLabels{
        TableLFO::kSyncLabels.data(), TableLFO::kNumSyncSteps, TableLFO::kSyncStepSpacing};
    GetParam(kLFORate1 + lfo)->scaleLabels = synced ? &kNoteLabels : nullptr;
    if (Loading() || synced == wasSynced) return;
    if (synced)
        SetParamFromEngine(kLFORate1 + lfo, osc.getSyncStep() * TableLFO::kSyncStepSpacing);
    else
        SetParamFromEngine(kLFORate1 + lfo, osc.getRate());
}

void Quorvex::SelectEnvelopeSource(int env, int choice)
{
    EnvSourceBuffers buffers;
    buffers.inMono = mBlockMono;
    buffers.inLeft = mBlockL;
    buffers.inRight = mBlockR;
    for (int s = 0; s < kNumSlots; ++s)
    {
        buffers.slotMono[s] = mSlots[s].MonoSum();
        buffers.slotLeft[s] = mSlots[s].FeedForwardL();
        buffers.slotRight[s] = mSlots[s].FeedForwardR();
    }
    buffers.sidechain = mBlockSC;
    buffers.masterFx = mMaster.mMfxOutL;
    mModulators.mEnvChoice[env] = choice;
    mModulators.mEnv[env].SetSourceBuffer(ResolveEnvelopeSource(choice, buffers));
}

void Quorvex::ApplyGateStepPreset(int gate, int preset)
{
    if (gate < 0 || gate >= ModulatorBank::kGates) return;
    const int length = mModulators.mGate[gate].Length();
    const int grid = ListIndex(GetParam(kGATESteps1 + gate)->value);
    const auto seed = static_cast<std::uint32_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    const StepPattern pattern = MakeStepPattern(preset, length, grid, seed);
    for (int i = 0; i < pattern.count; ++i)
        SetParamFromEngine(kGate1Step1 + gate * ArpGate::kMaxSteps + i, pattern.levels[i] * 100.0);
}

void Quorvex::ToggleEnvelopeListen(int env)
{
    EnvelopeSource* envs[ModulatorBank::kEnvelopes] = {&mModulators.mEnv[0], &mModulators.mEnv[1]};
    ::ToggleEnvelopeListen(envs, env);
}
