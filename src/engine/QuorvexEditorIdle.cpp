// The editor's readouts (QuorvexEditorIdle.cpp): the audio thread holds peaks and positions while
// an editor window is open, and the editor's tick turns them into what the meters show.

#include <cmath>

#include "core/LevelMeter.h"
#include "dsp/Vec.h"
#include "editor/DelayPageControls.h"
#include "editor/LayoutLfo.h"
#include "editor/LayoutOptions.h"
#include "editor/QuorvexEditor.h"
#include "editor/WaveDraw.h"
#include "engine/Quorvex.h"
#include "modulators/WaveStore.h"
#include "state/InputAttenuator.h"

void Quorvex::OnGUIOpen()
{
    for (Slot& slot : mSlots)
        slot.Taps().trackPlaying = true;
    mEditorOpen = true;
}

void Quorvex::OnGUIClose()
{
    mEditorOpen = false;
    for (Slot& slot : mSlots)
        slot.Taps().trackPlaying = false;
}

// Audio thread, once per block and only with a window open: a few peaks and a last sample each.
void Quorvex::PublishReadouts()
{
    mReadouts.HoldPeak(EditorReadouts::kOutL, BlockPeak(mOutBlockL, kBlockSize));
    mReadouts.HoldPeak(EditorReadouts::kOutR, BlockPeak(mOutBlockR, kBlockSize));
    for (int s = 0; s < kNumSlots; ++s)
    {
        const double l = BlockPeak(mSlots[s].StageL(Slot::kStageOut), kBlockSize);
        const double r = BlockPeak(mSlots[s].StageR(Slot::kStageOut), kBlockSize);
        mReadouts.HoldPeak(EditorReadouts::kSlot1 + s, std::max(l, r));
    }
    for (int m = 0; m < kNumModSources - 1; ++m)
    {
        const double* buffer = mModBank.SourceBuffer(m + 1);
        mReadouts.SetPosition(EditorReadouts::kMod1 + m, buffer ? buffer[kBlockSize - 1] : 0.0);
    }
    for (int e = 0; e < ModulatorBank::kEnvelopes; ++e)
    {
        const double* heard = mModulators.mEnv[e].SourceBuffer();
        mReadouts.HoldPeak(EditorReadouts::kEnvIn1 + e, heard ? BlockPeak(heard, kBlockSize) : 0.0);
    }
    for (int g = 0; g < ModulatorBank::kGates; ++g)
        mReadouts.SetStep(EditorReadouts::kGateStep1 + g, mModulators.mGate[g].Step());
    for (int s = 0; s < kNumSlots; ++s)
        mReadouts.SetStep(EditorReadouts::kTapStep1 + s, mSlots[s].Taps().TakePlayingTap());
}

// UI thread: the options page's own controls (the attenuator and the dry kill are state, not
// parameters) act on the engine, and show what a loaded state holds.
void Quorvex::WireOptionsPage()
{
    if (!mEditor) return;
    mEditor->SetColorSetHandler([this](int set) { mFields.mColorSet = set; });
    if (IControl* att = mEditor->ControlOfPageRow(kListOptions, kOptionsAttenuatorRow))
        att->SetAction([this](IControl& c) { mMaster.SetAttenuator(c.GetValue()); });
    if (IControl* kill = mEditor->ControlOfPageRow(kListOptions, kOptionsDryKillRow))
        kill->SetAction([this](IControl& c) { mMaster.SetDryKill(c.GetValue() > 0.5); });
}

void Quorvex::PresentOptions()
{
    if (!mEditor) return;
    IControl* att = mEditor->ControlOfPageRow(kListOptions, kOptionsAttenuatorRow);
    if (att && att->GetValue() != mFields.mInputAttenuator) att->SetValueFromPlug(mFields.mInputAttenuator);
    IControl* kill = mEditor->ControlOfPageRow(kListOptions, kOptionsDryKillRow);
    const double killed = mFields.mDryKill ? 1.0 : 0.0;
    if (kill && kill->GetValue() != killed) kill->SetValueFromPlug(killed);
    if (auto* readout =
            dynamic_cast<ITextControl*>(mEditor->ControlOfPageRow(kListOptions, kOptionsReadoutRow)))
        readout->SetTextFromPlug(std::to_string(InputAttenuatorDb(mFields.mInputAttenuator)) + " dB");
}

// UI thread: the large views' tap and step buttons write the masks the state keeps and the engine
// plays; the idle tick shows the masks a state or preset brought, only when they differ.
void Quorvex::WireStepMasks()
{
    if (!mEditor) return;
    auto setBit = [](std::int32_t& mask, int tap, bool on)
    { mask = on ? (mask | (1 << tap)) : (mask & ~(1 << tap)); };
    StepMaskActions actions;
    actions.tapOn = [this, setBit](int slot, int tap, bool left, bool right)
    {
        setBit(mFields.mTapOnMask[2 * slot], tap, left);
        setBit(mFields.mTapOnMask[2 * slot + 1], tap, right);
        ApplyTapMask(2 * slot, mFields.mTapOnMask[2 * slot]);
        ApplyTapMask(2 * slot + 1, mFields.mTapOnMask[2 * slot + 1]);
    };
    actions.stepFx = [this, setBit](int slot, int tap, bool on)
    {
        setBit(mFields.mStepFxMask[slot], tap, on);
        SyncTapFxMasks();
    };
    actions.stepMod = [this, setBit](int slot, int row, int tap, bool on)
    {
        setBit(mFields.mStepModMask[row][slot], tap, on);
        SyncTapFxMasks();
    };
    mEditor->SetStepMaskActions(std::move(actions));
}

void Quorvex::PresentStepMasks()
{
    if (!mEditor) return;
    DelayPages& pages = mEditor->Delay();
    for (int slot = 0; slot < kNumSlots; ++slot)
    {
        for (int ch = 0; ch < 2; ++ch)
        {
            const auto mask = static_cast<std::uint16_t>(mFields.mTapOnMask[2 * slot + ch]);
            if (pages.TapOnMask(slot, ch) != mask) pages.SetTapOnMask(slot, ch, mask);
        }
        const auto fx = static_cast<std::uint16_t>(mFields.mStepFxMask[slot]);
        if (pages.StepFxMask(slot) != fx) pages.SetStepFxMask(slot, fx);
        for (int row = 0; row < 2; ++row)
        {
            const auto mod = static_cast<std::uint16_t>(mFields.mStepModMask[row][slot]);
            if (pages.StepModMask(row, slot) != mod) pages.SetStepModMask(row, slot, mod);
        }
    }
}

// A loaded preset or state ends the notices of the one before.
void Quorvex::FlushTimedLabels()
{
    if (mEditor) mEditor->FlushTimedLabels();
}

void Quorvex::PresentTimeHighlights()
{
    if (!mEditor) return;
    const int slots = mTimeHighlightRequests.exchange(0, std::memory_order_relaxed);
    for (int slot = 0; slot < kNumSlots; ++slot)
        if (slots & (1 << slot)) mEditor->HighlightTimes(slot);
    mEditor->TickHighlights();
    mEditor->TickTimedLabels();
}

// UI thread: each LFO's wave display shows the table its wave choice names, as the LFO plays it.
void Quorvex::PresentLfoWaves()
{
    if (!mEditor) return;
    int row = 0;
    for (const LayoutRow& r : kLfoLayout)
    {
        auto* wave = r.mKind == ELayoutKind::kWaveDraw
                         ? dynamic_cast<WaveDraw*>(mEditor->ControlOfPageRow(kListLfo, row))
                         : nullptr;
        ++row;
        if (!wave) continue;
        const int lfo = r.mIndex;
        const WaveRecord* record = mModulators.Wave(static_cast<int>(GetParam(kLFOWave1 + lfo)->value));
        if (record && mShownWave[lfo] != record)
        {
            wave->SetTable(record->samples, kWaveTableSize);
            mShownWave[lfo] = record;
        }
        wave->SetPhase(GetParam(kLFOPhase1 + lfo)->value * 0.01);
        wave->SetPolarity(static_cast<int>(GetParam(kLFOPol1 + lfo)->value));
        wave->SetReverse(GetParam(kLFOReverse1 + lfo)->value > 0.5);
        wave->SetSwap(GetParam(kLFOSwap1 + lfo)->value > 0.5);
    }
}

// UI thread, once per editor frame.
void Quorvex::PresentReadouts()
{
    if (!mEditor) return;
    for (int ch = 0; ch < 2; ++ch)
    {
        const double peak = mReadouts.TakePeak(EditorReadouts::kOutL + ch);
        mEditor->SetMeter(EditorReadouts::kOutL + ch, mMeters[ch].Tick(MeterLaw(peak)));
    }
    for (int s = 0; s < kNumSlots; ++s)
    {
        const int id = EditorReadouts::kSlot1 + s;
        mEditor->SetMeter(id, std::min(1.0, mMeters[id].Tick(SlotActivityLaw(mReadouts.TakePeak(id)))));
    }
    // Modulator outputs as they swing, on a 0..1 strip: their magnitude.
    for (int m = EditorReadouts::kMod1; m <= EditorReadouts::kModLast; ++m)
        mEditor->SetMeter(m, std::min(1.0, std::fabs(mReadouts.Position(m))));
    for (int e = 0; e < ModulatorBank::kEnvelopes; ++e)
    {
        const int id = EditorReadouts::kEnvIn1 + e;
        mEditor->SetMeter(id, mMeters[id].Tick(MeterLaw(mReadouts.TakePeak(id))));
    }
    for (int g = 0; g < ModulatorBank::kGates; ++g)
        mEditor->SetPlayingStep(g, mReadouts.Step(EditorReadouts::kGateStep1 + g));
    for (int s = 0; s < kNumSlots; ++s)
        mEditor->Delay().SetPlayingTap(s, mReadouts.Step(EditorReadouts::kTapStep1 + s));
}
