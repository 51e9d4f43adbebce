#pragma once
// The plug-in: host component, engine and owner of the editor, all in one object. It holds
// the construction of the frame (parameters from the catalogue, every cache applied once), the
// state that the host chunk stores, the pending user message, and the engine frame: host blocks of
// any length pass per sample through input rings of 64 and an output ring of 32, and each time 32
// samples have gathered one internal block runs. A sample leaves 64 samples plus 1 ms after it came
// in; the reported latency is 32 samples plus 1 ms. Every buffer is a member, sized for 96 kHz.
// Inside a block the four slots run their forward paths in order, then write their delay lines
// (with the feedback matrix); the master section takes their sums to the output, after which the
// modulators tick for the next block. Modulation reaches the slots through the routing, which
// reads the source bank's buffers as the modulators left them at the end of the previous block.
// Threads: ProcessDoubleReplacing on the audio thread; the constructor, Reset, OnParamChange and
// the state calls on the UI (host) thread, Reset and the state calls under paramsMutex.

#include <array>
#include <atomic>
#include <memory>
#include <thread>

#include "core/EditorReadouts.h"
#include "core/EffectRack.h"
#include "core/EngineFade.h"
#include "core/LevelMeter.h"
#include "core/MasterSection.h"
#include "core/ModulatorBank.h"
#include "core/Slot.h"
#include "core/Tempo.h"
#include "dsp/IppFixBiquad.h"
#include "dsp/Relaxed.h"
#include "dsp/ThreadMark.h"
#include "dsp/TimeBase.h"
#include "host/IPlugVST3.h"
#include "modulators/MultiLFO.h"
#include "params/IParamRecord.h"
#include "params/ModRouting.h"
#include "params/ParamDispatch.h"
#include "params/ParamIds.h"
#include "state/IStateHost.h"
#include "state/Messages.h"
#include "state/PresetBrowser.h"
#include "state/PresetFile.h"
#include "state/PresetFolders.h"
#include "state/PresetSaving.h"
#include "state/StateFields.h"

class QuorvexEditor;

inline constexpr int kQuorvexVersion = 0x10200;

inline constexpr IPlugConfig kQuorvexConfig{
    .nParams = kNumParams,
    .channelIOStr = "2-2 3-2 4-2",
    .nPresets = 1,
    .effectName = "Quorvex",
    .productName = "",
    .mfrName = "qelmar-audio",
    .vendorVersion = kQuorvexVersion,
    .uniqueID = FourCharCode("Qvrz"),
    .mfrID = FourCharCode("Qlmz"),
    .latency = 44,
    .plugDoesMidi = false,
    .plugDoesChunks = true,
    .plugIsInst = false,
    .plugScChans = 2,
};

class Quorvex : public IPlugVST3, private IStateHost
{
  public:
    static constexpr int kBlockSize = gBlockLen;
    static constexpr int kInRingSize = 2 * kBlockSize;
    static constexpr int kNumSlots = 4;

    Quorvex();
    ~Quorvex() override;

    // Host sets up processing: the engine is derived anew for the host's rate.
    void Reset() override;
    // Activation and a change between real-time and offline processing start a new run: the next
    // block begins from the one state every run begins from (lines and memories cleared, every
    // modulator at its start, random sources reseeded), so two renders of a session agree.
    void OnActivate(bool active) override;
    void OnProcessModeChange() override { mRestartRequest = true; }
    // Forever while a heard delay has feedback (its own, the master's or modulated, taps included)
    // or the ambience loops at full gain; else the longest heard delay plus the master reverb's
    // decay to -120 dB, plus the path's own delay and filter ring. Any thread.
    int TailSamples() override;
    // Parameter handler: migration of old chunks while one is read, then the id's one family.
    void OnParamChange(int id) override;
    using Dispatch = ParamDispatch<Quorvex>;
    using ParamRow = Dispatch::Row;
    // The table that owns every parameter id, built once for all instances.
    static const Dispatch& ParamOwners();
    // Audio thread: the engine frame. Silent, with nothing advancing, while the plug-in is built,
    // a state is restored or a preset is loaded.
    void ProcessDoubleReplacing(double** inputs, double** outputs, int nFrames) QUORVEX_NONBLOCKING override;
    bool SerializeState(ByteChunk& chunk) override;
    int UnserializeState(const ByteChunk& chunk, int startPos) override;

    // Keeps a message of the user message table for the editor's alert panel.
    void ShowMessage(int code) override;
    const PendingMessage& Message() const { return mMessage; }
    StateFields& Fields() override { return mFields; }

    // Set by the preset reader around applying a file: the output is silent meanwhile.
    void SetPresetLoading(bool loading) { mPresetLoading.store(loading); }
    // A new fade-in from silence at the next block (a changed tap time base asks for one).
    void RequestFadeIn() { mFadeIn.Request(); }
    // The host's output buffers of the last call, for the editor's meters.
    const double* OutputsL() const { return mOutputsL; }
    const double* OutputsR() const { return mOutputsR; }

    // Modulators: a gate's step preset ("ALL OFF" .. "RANDOMIZE") written through the step
    // parameters, so the host hears of every step; and an envelope's listen switch, exclusive
    // between the two envelopes. UI thread.
    void ApplyGateStepPreset(int gate, int preset);
    void ToggleEnvelopeListen(int env);

    // Preset files and the preset browser (QuorvexPresets.cpp). UI thread. Relative paths begin
    // "/User Presets/" or "/Factory Presets/" and lie below the preset folder.
    // Reads and applies a file; a failure marks the preset list stale.
    bool LoadPreset(const std::string& relativePath);
    // Stage one: takes the file apart and sets its masks; parameters stay untouched.
    bool ReadPresetFile(const std::string& relativePath);
    // Stage two: every parameter from the file or its default, with silence and a fade-in.
    void ApplyPendingPreset();
    // Writes the present settings; without force not while a preset is being loaded.
    bool WritePresetFile(const std::string& fullPath, bool force);
    // The save action behind the editor's dialog, for the path the user chose there.
    PresetSaveResult SavePresetAs(const std::string& chosenPath);
    // The save button: the editor's save prompt over the user folder, then SavePresetAs.
    void SavePresetDialog();
    void SetPresetNames(const std::string& relativePath);
    void SetPresetFolderLabel(const std::string& relativePath);
    void RebuildPresetMenu();
    // The menu as the editor shows it, rebuilt first when the preset list has changed.
    const IPresetMenu& PresetMenu();
    // The user picked an item of the menu: it is checked and its file loaded.
    bool PickPresetMenuItem(int menu, int item);
    // The previous / next buttons.
    void StepPreset(bool forward);
    // The preset name's press: the menu (rebuilt when the lists moved) under the name; a pick loads.
    void OpenPresetMenu();
    bool SelectPresetItem(const std::string& relativePath);
    std::string SelectedPresetPath() const { return mPresetMenu.SelectedPath(); }
    const PresetFolders& Folders() const { return mPresetFolders; }
    bool PresetLoading() const { return mPresetLoading.load(); }
    // The focus panel's name and value of a parameter (QuorvexFocus.cpp). UI thread.
    std::pair<std::string, std::string> FocusTexts(int id);

  private:
    friend class QuorvexProbe; // test access to the frame's private state

    // The state chunk's view of the plug-in.
    std::recursive_mutex& StateMutex() override { return paramsMutex; }
    int ParamCount() const override { return NParams(); }
    IParamRecord* Param(int id) override { return GetParam(id); }
    void ParamChanged(int id) override { OnParamChange(id); }
    bool WriteParamValues(ByteChunk& chunk) override { return SerializeParams(chunk); }
    int ReadParamValues(const ByteChunk& chunk, int pos) override { return UnserializeParams(chunk, pos); }
    void RedrawControls() override { RedrawParamControls(); }
    // A loaded state's colour set and page reach the editor.
    void ShowColorSetAndPage(int colorSet, int page) override;
    void FlushTimedLabels() override;
    // Page switches of the editor (UI thread); the page shown becomes `LastPage` unless a preset
    // is loading.
    void ShowPage(int page);
    void ToggleOptionsPage();
    void ToggleLargeDelayView();
    void SelectPresetMenuItem(const std::string& folder, int index) override;
    // The tap engine's on flags follow a stored mask.
    void ApplyTapMask(int index, std::int32_t mask) override;
    // A loaded state starts from silence: no tail of the old one survives.
    void FinishStateLoad() override
    {
        SyncTapFxMasks();
        mEffects.ServicePending();
        ClearEngine();
    }

    bool Silenced() const;
    bool IsAudioHeld() override { return mPresetLoading.load() || mStateLoading.load(); }
    void BuildEditor();
    // Idle: a message not shown yet goes to the editor's message box (the alert panel).
    void PresentMessage();
    // Idle: the preset row follows the name and folder label.
    void PresentPresetTexts();
    // Editor readouts (QuorvexEditorIdle.cpp).
    void OnGUIOpen() override;
    void OnGUIClose() override;
    void PublishReadouts();
    void PresentFocus();
    void WireOptionsPage();
    void PresentOptions();
    void PresentLfoWaves();
    void WireStepMasks();
    // Slots whose timebase changed since the editor's last tick (any thread sets, the UI takes).
    std::atomic<int> mTimeHighlightRequests{0};
    void PresentTimeHighlights();
    void PresentStepMasks();
    std::array<const WaveRecord*, 4> mShownWave{};
    void PresentReadouts();
    Relaxed<bool> mEditorOpen{false};
    EditorReadouts mReadouts;
    std::array<LevelMeter, EditorReadouts::kNumMeters> mMeters;
    int mMessageShown = 0; // serial of the message the box shows
    // Derives every rate-dependent value from the host's rate, then clears and fades in.
    void ResetEngine();
    // Clears rings, buses, delays and module memories; keeps designs and positions.
    void ClearEngine();

    // One internal block, its steps in this order.
    void RunBlock();
    void FillBlock();
    void ReadTransport();
    void PrepareWet();
    bool WetInputHeard() const;
    void RunSlots();
    void WriteDelays();
    void TickModulators();

    // The parameter families, one table each: slots, taps and the main and master sections
    // (QuorvexParams.cpp), effects (QuorvexFx.cpp), modulators (QuorvexModulators.cpp), and the
    // routing's depths and sources.
    static std::span<const ParamRow> SlotParamRows();
    static std::span<const ParamRow> TapParamRows();
    static std::span<const ParamRow> MainParamRows();
    static std::span<const ParamRow> FxParamRows();
    static std::span<const ParamRow> ModulatorParamRows();
    static std::vector<ParamRow> ModRouteParamRows();
    TapEngine& Taps(int slot) { return mSlots[slot].Taps(); }
    bool WireFxModRoute(const ModParamRef& ref);
    bool WireModulatorRoute(const ModParamRef& ref);
    // "LFO Sync": switching between free and synced rewrites "LFO Rate" in the other unit.
    void SwitchLfoSync(int lfo, int mode);
    // "ENV# Source": the buffer the choice names, as the slots route their outputs now.
    void SelectEnvelopeSource(int env, int choice);
    // A source or depth of a family that the delay modules read themselves goes to them.
    void WireModRoute(const ModParamRef& ref);
    // Points a slot's inputs at the pair its "Input " value names.
    void SelectInput(int slot, int value);
    // With "DelayL/R Link " on, an edited side's value goes to the other side as well.
    void LinkTimes(int slot, int twinId, double value);
    // "Timebase " switching: free times take over the synced ones, or the factors are re-sent.
    void SwitchTimebase(int slot, int value);
    // Parameter writes the engine makes itself, told to the host like an edit.
    void SetParamFromEngine(int id, double value);
    bool Loading() const;

    StateFields mFields;
    MasterSection mMaster{mFields};
    PendingMessage mMessage;
    // The editor exists from construction, window or not; the host's views show it.
    std::unique_ptr<QuorvexEditor> mEditor;

    // Frame.
    double mInRingL[kInRingSize] = {};
    double mInRingR[kInRingSize] = {};
    double mInRingSC[kInRingSize] = {};
    double mOutBlockL[kBlockSize] = {};
    double mOutBlockR[kBlockSize] = {};
    int mInWrite = kBlockSize;
    int mInRead = 0;
    int mOutRead = 0;
    Relaxed<const double*> mOutputsL{nullptr};
    Relaxed<const double*> mOutputsR{nullptr};
    bool mSidechainInUse = false;

    // Block buffers.
    double mBlockL[kBlockSize] = {};
    double mBlockR[kBlockSize] = {};
    double mBlockSC[kBlockSize] = {};
    double mBlockMono[kBlockSize] = {};
    double mFbSumL[kBlockSize] = {};
    double mFbSumR[kBlockSize] = {};

    // Slots, in block order, and the sums of earlier slots that later ones may take as input.
    Slot mSlots[kNumSlots] = {Slot(0), Slot(1), Slot(2), Slot(3)};
    SlotSumBuses mSums;
    MultiLFO mMainOsc;
    // Buffers of the modulators (filled at the end of a block) and the routes that read them.
    ModSourceBank mModBank;
    ModRouting mModRouting{mModBank};
    ModulatorBank mModulators{mModBank};
    Relaxed<bool> mClearMfxOutRequest{false};
    bool mLinking = false; // a linked twin is being written: no link back

    // Modules.
    IppFixBiquad mInputFilterL{false};
    IppFixBiquad mInputFilterR{true};
    // True while nobody hears the band-limited input and its filter rests.
    bool mInputFilterResting = false;
    EngineFade mFadeIn;

    // Time base: tempo once per host call, transport and song position once per block.
    TempoCache mTempo;
    TransportCache mTransport;
    SongPosition mSongPosition;

    // Rate this instance was last reset for; -1 until its first call.
    double mEngineRate = -1.0;
    // A new run starts at the next block (set by the host's thread or the audio thread).
    Relaxed<bool> mRestartRequest{false};
    Relaxed<bool> mLatencyDirty{false};

    // Caches of the main section that the slots read.
    Relaxed<double> mMainRatePercent{30.0};
    Relaxed<double> mMainDepth{50.0};
    Relaxed<double> mFeedbackMaster{0.0};
    Relaxed<double> mTimeScale{1.0};

    Relaxed<bool> mConstructing{true};
    std::atomic<bool> mPresetLoading{false};
    // Set while a state chunk is read: the audio is held off (silence, no parameter changes).
    std::atomic<bool> mStateLoading{false};

    // Preset state (QuorvexPresets.cpp).
    // Sets PresetLoading, then waits until the audio thread is outside its block loop, so that
    // nothing the preset changes is read by a block already under way.
    void HoldAudioForPreset();
    void EnsurePresetMenu();
    // The menu's selection into the fields that the state chunk stores.
    void NoteMenuSelection();
    PresetFolders mPresetFolders = PresetFolders::FromEnvironment();
    PresetData mPendingPreset;
    std::string mPresetFile; // full path of the current preset file
    IPresetMenu mPresetMenu;
    // Held while the audio thread is inside ProcessDoubleReplacing past its silence test.
    ThreadMark mBlockLoop;

    // Effects (QuorvexFx.cpp). The rack comes last: it stops its worker before anything it
    // reaches is destroyed.
  public:
    // The step buttons' masks in the fields go to the taps (after the editor or a state changed them).
    void SyncTapFxMasks();

  private:
    void SetupEffects();
    void OnFxTypeBuilt(int position, int type, bool byUser);
    // Under paramsMutex: the slot's "Tap FX Param" lists take the POST type's parameter names.
    void NameTapFxLists(int slot, int type);
    void SendMasterFxParams();
    std::unique_ptr<DSPShell> mMasterFxModules[MasterSection::kMasterFxCount];
    // The "Tap FX Param" lists of a slot read "OFF" and the POST type's parameter names.
    std::array<std::array<const char*, 1 + EffectRack::kParams>, kNumSlots> mTapFxLabelTexts{};
    std::array<IParamRecord::ScaleLabels, kNumSlots> mTapFxLabels{};
    EffectRack mEffects{mSlots, EffectTableCatalog()};
};
