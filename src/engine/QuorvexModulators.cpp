#include <chrono>
#include <cmath>

#include "dsp/Decibels.h"
#include "engine/Quorvex.h"
#include "modulators/StepPresets.h"
#include "params/IParamRecord.h"
#include "params/ValueLists.h"

// The modulator families: LFOs, step gates, envelopes and logic modules. Each handler gets the
// member (LFO, gate, envelope or logic number from 0) and the parameter's value.
bool Quorvex::ApplyModulatorParam(int id, double v)
{
    using Handler = void (*)(Quorvex&, int, double);
    struct Family
    {
        int first;
        int count;
        Handler apply;
    };
    static const Family kFamilies[] = {
        // LFOs
        {kLFOOn1, 4, [](Quorvex& q, int m, double x) { q.mModulators.mLfo[m].setOn(x >= 0.5); }},
        {kLFOWave1, 4,
         [](Quorvex& q, int m, double x)
         { q.mModulators.mLfo[m].setWave(q.mModulators.Wave(ListIndex(x))); }},
        {kLFOPol1, 4, [](Quorvex& q, int m, double x) { q.mModulators.mLfo[m].setPolarity(ListIndex(x)); }},
        {kLFOSync1, 4, [](Quorvex& q, int m, double x) { q.SwitchLfoSync(m, ListIndex(x)); }},
        {kLFOSwap1, 4, [](Quorvex& q, int m, double x) { q.mModulators.mLfo[m].setSwap(x >= 0.5); }},
        {kLFOReverse1, 4, [](Quorvex& q, int m, double x) { q.mModulators.mLfo[m].setReverse(x >= 0.5); }},
        {kLFOMode1, 4, [](Quorvex& q, int m, double x) { q.mModulators.mLfo[m].setMode(ListIndex(x)); }},
        {kLFOTrigger1, 4,
         [](Quorvex& q, int m, double x)
         { q.mModulators.mLfo[m].setTrigger(q.mModulators.Trigger(ListIndex(x))); }},
        {kLFORate1, 4,
         [](Quorvex& q, int m, double x)
         {
             TableLFO& lfo = q.mModulators.mLfo[m];
             if (lfo.getSyncMode() == TableLFO::kSyncHz)
                 lfo.setRate(x);
             else
                 lfo.setSyncStep(ListIndex(x / TableLFO::kSyncStepSpacing), q.mTempo.tempo);
         }},
        {kLFODepth1, 4, [](Quorvex& q, int m, double x) { q.mModulators.mLfo[m].setDepth(x * 0.01); }},
        {kLFOPhase1, 4, [](Quorvex& q, int m, double x) { q.mModulators.mLfo[m].setPhase(x * 0.01); }},
        {kLFOGlide1, 4, [](Quorvex& q, int m, double x) { q.mModulators.mLfo[m].setGlide(x); }},
        // Step gates
        {kGate1Length, 4,
         [](Quorvex& q, int m, double x) { q.mModulators.mGate[m].setLength(ListIndex(x)); }},
        {kGate1On, 4, [](Quorvex& q, int m, double x) { q.mModulators.mGateOn[m] = x >= 0.5; }},
        {kGate1Timebase, 4,
         [](Quorvex& q, int m, double x)
         { q.mModulators.mGate[m].setTimebase(ListIndex(x), q.mModulators.GateClock(ListIndex(x))); }},
        {kGate1Direction, 4,
         [](Quorvex& q, int m, double x) { q.mModulators.mGate[m].setDirection(ListIndex(x)); }},
        {kGate1Sync, 4, [](Quorvex& q, int m, double x) { q.mModulators.mGate[m].setSyncSwitch(x >= 0.5); }},
        {kGate1Glide, 4, [](Quorvex& q, int m, double x) { q.mModulators.mGate[m].setGlide(x); }},
        {kGate1Depth, 4, [](Quorvex& q, int m, double x) { q.mModulators.mGate[m].setDepth(x * 0.01); }},
        {kGATEPol1, 4, [](Quorvex& q, int m, double x) { q.mModulators.mGate[m].setPolarity(ListIndex(x)); }},
        {kGate1Step1, 4 * ArpGate::kMaxSteps,
         [](Quorvex& q, int m, double x)
         { q.mModulators.mGate[m / ArpGate::kMaxSteps].setStepLevel(m % ArpGate::kMaxSteps, x * 0.01); }},
        // Envelopes
        {kENV1On, 2, [](Quorvex& q, int m, double x) { q.mModulators.mEnvOn[m] = x >= 0.5; }},
        {kENV1Mode, 2, [](Quorvex& q, int m, double x) { q.mModulators.mEnv[m].SetMode(ListIndex(x)); }},
        {kENV1Source, 2, [](Quorvex& q, int m, double x) { q.SelectEnvelopeSource(m, ListIndex(x)); }},
        {kENV1Gain, 2, [](Quorvex& q, int m, double x) { q.mModulators.mEnv[m].SetGain(x); }},
        {kENV1Attack, 2, [](Quorvex& q, int m, double x) { q.mModulators.mEnv[m].SetAttack(x); }},
        {kENV1Decay, 2, [](Quorvex& q, int m, double x) { q.mModulators.mEnv[m].SetDecay(x); }},
        {kENV1Hold, 2, [](Quorvex& q, int m, double x) { q.mModulators.mEnv[m].SetHold(x); }},
        {kENV1Threshold, 2, [](Quorvex& q, int m, double x) { q.mModulators.mEnv[m].SetThreshold(x); }},
        {kENV1Locut, 2, [](Quorvex& q, int m, double x) { q.mModulators.mEnv[m].SetLocut(x); }},
        {kENV1Hicut, 2, [](Quorvex& q, int m, double x) { q.mModulators.mEnv[m].SetHicut(x); }},
        {kENV1Depth, 2, [](Quorvex& q, int m, double x) { q.mModulators.mEnv[m].SetDepth(x); }},
        {kENV1Output, 2,
         [](Quorvex& q, int m, double x)
         { q.mModulators.mEnv[m].GetEnvelope().SetLinear(ListIndex(x) == 1); }},
        // Logic modules
        {kLogicOn1, 4, [](Quorvex& q, int m, double x) { q.mModulators.mLogicOn[m] = x >= 0.5; }},
        {kLogic1Type, 4,
         [](Quorvex& q, int m, double x) { q.mModulators.mLogic[m].SetModeMenu(ListIndex(x)); }},
        {kLogic1Smooth, 4, [](Quorvex& q, int m, double x) { q.mModulators.mLogic[m].SetSmooth(x); }},
        {kLogic1Depth, 4, [](Quorvex& q, int m, double x) { q.mModulators.mLogic[m].SetDepth(x); }},
    };
    for (const Family& family : kFamilies)
        if (id >= family.first && id < family.first + family.count)
        {
            family.apply(*this, id - family.first, v);
            return true;
        }
    // "GATE Steps" only sets the grid of the step controls: nothing for the engine.
    return id >= kGATESteps1 && id < kGATESteps1 + ModulatorBank::kGates;
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
