#include "engine/Quorvex.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <mutex>

#include "dsp/Decibels.h"
#include "dsp/Denormals.h"
#include "dsp/SignalGuard.h"
#include "dsp/Vec.h"
#include "editor/QuorvexEditor.h"
#include "fx/MasterFxLaws.h"
#include "modulators/WaveMenu.h"
#include "params/IParamRecord.h"
#include "params/ParamCatalogue.h"
#include "params/ValueLists.h"
#include "state/StateChunk.h"

namespace
{
// Host rate the engine was last derived for, shared by every instance of the process: the last
// instance's rate wins, and an instance meeting another rate resets the shared values again.
Relaxed<double> gEngineHostRate{-1.0};

// Corner of the band limit on everything that reaches the slots; the dry path keeps full band.
constexpr double kInputLowpassHz = 15000.0;
constexpr int kInputLowpassOrder = 12;
} // namespace

Quorvex::Quorvex() : IPlugVST3(kQuorvexConfig)
{
    EnableFlushDenormals();
    // The catalogue takes the wave menu's names for the LFO wave lists.
    InitParams(params, kWaveMenuNames);
    SetupEffects();
    ResetEngine();
    // The first call derives the engine again for whatever rate the host then runs at.
    mEngineRate = -1.0;
    // Every cache holds a value before the host sees the plug-in.
    for (int id = 0; id < NParams(); ++id)
        OnParamChange(id);
    SyncTapFxMasks();
    mEffects.ServicePending();
    mEffects.StartWorker();
    BuildEditor();
    mConstructing = false;
}

Quorvex::~Quorvex()
{
    AttachGraphics(nullptr);
}

void Quorvex::BuildEditor()
{
    mEditor = std::make_unique<QuorvexEditor>(this, BundleResourceDir());
    // Host notices that `process` held back (automation for the controls among them) go out
    // once per editor frame, on the UI thread.
    mEditor->SetIdleHook(
        [this]
        {
            FlushPendingHostNotices();
            PresentPresetTexts();
            PresentReadouts();
            PresentFocus();
            PresentOptions();
            PresentLfoWaves();
            PresentStepMasks();
            PresentTimeHighlights();
            PresentMessage();
        });
    mEditor->SetPageActions({[this](int page) { ShowPage(page); }, [this] { ToggleOptionsPage(); },
                             [this] { ToggleLargeDelayView(); }});
    WireOptionsPage();
    WireStepMasks();
    PresentStepMasks();
    mEditor->SetTouchHook([this](int id) { mFields.mFocusedParam = id; });
    mEditor->SetPresetActions({[this] { OpenPresetMenu(); }, [this](bool forward) { StepPreset(forward); },
                               [this] { SavePresetDialog(); }});
    mEditor->SetColorSet(mFields.mColorSet);
    mEditor->ShowPage(mFields.mLastPage, true);
    AttachGraphics(mEditor.get());
}

void Quorvex::ShowPage(int page)
{
    if (!mEditor) return;
    mEditor->ShowPage(page, PresetLoading());
    if (!PresetLoading()) mFields.mLastPage = mEditor->Pages().LastPage();
}

void Quorvex::ToggleOptionsPage()
{
    if (!mEditor) return;
    mEditor->ToggleOptionsPage(PresetLoading());
    if (!PresetLoading()) mFields.mLastPage = mEditor->Pages().LastPage();
}

void Quorvex::ToggleLargeDelayView()
{
    if (!mEditor) return;
    mEditor->ToggleLargeDelayView(PresetLoading());
    if (!PresetLoading()) mFields.mLastPage = mEditor->Pages().LastPage();
}

void Quorvex::ShowColorSetAndPage(int colorSet, int page)
{
    if (!mEditor) return;
    mEditor->SetColorSet(colorSet);
    // A stored page reopens as it was (a large view included) and stays the last page.
    mEditor->Pages().SetLastPage(page);
    mEditor->ShowPage(page, true);
}

void Quorvex::Reset()
{
    std::lock_guard lock(paramsMutex);
    ResetEngine();
    mRestartRequest = true;
}

void Quorvex::OnActivate(bool active)
{
    if (active) mRestartRequest = true;
}

bool Quorvex::Silenced() const
{
    return mPresetLoading.load() || mStateLoading.load() || mConstructing || mFields.mRestoringState;
}

void Quorvex::ProcessDoubleReplacing(double** inputs, double** outputs, int nFrames) QUORVEX_NONBLOCKING
{
    const ThreadMark::Scope audioThread(ProcessThread());
    double* outL = outputs[0];
    double* outR = outputs[1];
    mOutputsL = outL;
    mOutputsR = outR;

    const bool scLeft = IsInChannelConnected(2);
    mSidechainInUse = scLeft || IsInChannelConnected(3);
    const double* sidechain = mSidechainInUse ? inputs[scLeft ? 2 : 3] : nullptr;

    if (nFrames <= 0) return;
    const ThreadMark::Scope blockLoop(mBlockLoop);
    if (Silenced())
    {
        VecZero(outL, nFrames);
        VecZero(outR, nFrames);
        return;
    }

    const double rate = GetSampleRate();
    if (rate != gEngineHostRate || rate != mEngineRate || mRestartRequest)
    {
        mRestartRequest = false;
        ResetEngine();
        gEngineHostRate = rate;
        mEngineRate = rate;
    }
    if (mLatencyDirty)
    {
        SetLatency(gLookAhead + kBlockSize);
        mLatencyDirty = false;
    }
    mTempo.Update(GetTempo());
    VecZero(mBlockSC, kBlockSize);

    const double* inL = inputs[0];
    const double* inR = inputs[1];
    // Runs of samples up to the next block boundary (or the input ring's end) at a time. All of a
    // run's input is taken before any of its output is written, so a host that hands the same
    // buffer for input and output still hears each sample's input first.
    for (int i = 0; i < nFrames;)
    {
        mInWrite &= kInRingSize - 1;
        mOutRead &= kBlockSize - 1;
        const int n = std::min({nFrames - i, kBlockSize - mOutRead, kInRingSize - mInWrite});
        // Everything the engine keeps starts here: a bad host buffer must not reach any state.
        GuardBlock(inL + i, mInRingL + mInWrite, n, kInputLimit);
        GuardBlock(inR + i, mInRingR + mInWrite, n, kInputLimit);
        if (sidechain != nullptr) GuardBlock(sidechain + i, mInRingSC + mInWrite, n, kInputLimit);
        VecCopy(mOutBlockL + mOutRead, outL + i, n);
        VecCopy(mOutBlockR + mOutRead, outR + i, n);
        mInWrite += n;
        mOutRead += n;
        i += n;
        if (mOutRead == kBlockSize) RunBlock();
    }
}

void Quorvex::RunBlock()
{
    mFadeIn.Step();
    FillBlock();
    ReadTransport();
    mMaster.ClearBuses();
    mMaster.ScaleDry(mBlockL, mBlockR);
    PrepareWet();
    RunSlots();
    WriteDelays();
    mMaster.RunMasterFx();
    mMaster.RunWidth();
    mMaster.RunOutput(mFadeIn.mFade, mOutBlockL, mOutBlockR);
    TickModulators();
    if (mEditorOpen) PublishReadouts();
}

// The oldest 32 ring entries become the block; the sidechain is taken without the fade.
void Quorvex::FillBlock()
{
    // The read position steps by whole blocks through a ring of two, so a block never wraps.
    static_assert(kInRingSize % kBlockSize == 0);
    const double fade = mFadeIn.mFade;
    VecScale(mInRingL + mInRead, fade, mBlockL, kBlockSize);
    VecScale(mInRingR + mInRead, fade, mBlockR, kBlockSize);
    if (mSidechainInUse) VecCopy(mInRingSC + mInRead, mBlockSC, kBlockSize);
    mInRead = (mInRead + kBlockSize) & (kInRingSize - 1);
}

void Quorvex::ReadTransport()
{
    TransportInfo info;
    GetTime(info);
    mTransport = TransportCache::From(info);
    mSongPosition.Advance(mTransport, mTempo.beatsPerSample);
}

// The wet copy: denormal guard, then the band limit. While nobody hears it the filter rests, and
// when a listener returns it starts from silence, as a signal that begins there would pass it: its
// old memory belongs to audio long gone.
void Quorvex::PrepareWet()
{
    if (!WetInputHeard())
    {
        mInputFilterResting = true;
        return;
    }
    if (mInputFilterResting)
    {
        mInputFilterResting = false;
        mInputFilterL.ClearMemory();
        mInputFilterR.ClearMemory();
    }
    VecAddConstI(kDenormGuard, mBlockL, kBlockSize);
    VecAddConstI(kDenormGuard, mBlockR, kBlockSize);
    IppFixBiquad::RunPairI(mInputFilterL, mInputFilterR, mBlockL, mBlockR, kBlockSize);
    VecAdd(mBlockL, mBlockR, mBlockMono, kBlockSize);
}

// A slot that is on may read the input whatever its source; an envelope reads it only through its
// input sources.
bool Quorvex::WetInputHeard() const
{
    for (const Slot& slot : mSlots)
        if (slot.mOn) return true;
    for (int env = 0; env < ModulatorBank::kEnvelopes; ++env)
    {
        const double* source = mModulators.mEnv[static_cast<std::size_t>(env)].SourceBuffer();
        if (mModulators.mEnvOn[static_cast<std::size_t>(env)] &&
            (source == mBlockL || source == mBlockR || source == mBlockMono))
            return true;
    }
    return false;
}

// Forward paths in slot order, so that a later slot hears an earlier one's stage of this block.
void Quorvex::RunSlots()
{
    if (mClearMfxOutRequest)
    {
        mClearMfxOutRequest = false;
        VecZero(mMaster.mMfxOutL, kBlockSize);
        VecZero(mMaster.mMfxOutR, kBlockSize);
    }
    SlotBlockContext ctx;
    ctx.fade = mFadeIn.mFade;
    ctx.attenuation = mFields.mAttenuation;
    ctx.secPerBeat = mTempo.secPerBeat;
    ctx.timeScale = mTimeScale;
    ctx.feedbackMaster = mFeedbackMaster;
    ctx.mainDepth = mMainDepth;
    ctx.mainOut = mMainOsc.Outputs();
    ctx.routing = &mModRouting;
    ctx.masterFxOn = mMaster.MasterFxType() > MasterSection::kMasterFxOff;
    ctx.wetL = mMaster.mWetL;
    ctx.wetR = mMaster.mWetR;
    ctx.mfxInL = mMaster.mMfxInL;
    ctx.mfxInR = mMaster.mMfxInR;
    // The lines are written only after every slot has run, so each slot's read can be done now,
    // two slots side by side: a read's pace is set by its recursions, which then overlap.
    Slot* pairable[kNumSlots];
    int count = 0;
    for (Slot& slot : mSlots)
    {
        slot.BeginBlock(ctx);
        if (slot.ReadsForwardPair()) pairable[count++] = &slot;
    }
    for (int k = 0; k + 1 < count; k += 2)
        Slot::ReadForwardTogether(*pairable[k], *pairable[k + 1]);
    // The sums are built afresh in every block that a slot takes one: nobody reads them otherwise.
    if (std::any_of(std::begin(mSlots), std::end(mSlots),
                    [this](const Slot& s) { return s.TakesSum(mSums); }))
        ctx.sums = &mSums;
    for (Slot& slot : mSlots)
    {
        if (slot.OnThisBlock())
            slot.RunForward(ctx);
        else
            slot.RunOff(ctx.sums);
    }
}

// After every forward path: each slot that is on takes its own feedback, or with its matrix on a
// mix of all delay outputs of this block, and writes its lines.
void Quorvex::WriteDelays()
{
    for (Slot& slot : mSlots)
    {
        if (!slot.OnThisBlock()) continue;
        if (!slot.mMatrixOn)
        {
            // Its own feedback, scaled and summed as it goes into the lines.
            slot.WriteOwnDelay(slot.FbGainL(), slot.FbGainR(), mFadeIn.mFade);
            continue;
        }
        VecZero(mFbSumL, kBlockSize);
        VecZero(mFbSumR, kBlockSize);
        for (const Slot& source : mSlots)
        {
            if (!source.OnThisBlock() || !source.mDelayOn) continue;
            const double m = slot.mMatrix[static_cast<std::size_t>(source.Index())];
            VecAddScaled(source.FbOutL(), m * slot.FbGainL(), mFbSumL, kBlockSize);
            VecAddScaled(source.FbOutR(), m * slot.FbGainR(), mFbSumR, kBlockSize);
        }
        slot.WriteDelay(mFbSumL, mFbSumR, mFadeIn.mFade);
    }
}

// Modulators run after the audio of the block: their outputs reach the next block.
void Quorvex::TickModulators()
{
    ModulatorTickContext ctx;
    ctx.songPos = mSongPosition.mSongPos;
    ctx.tempo = mTempo.tempo;
    ctx.beatChanged = mSongPosition.mFlags.beatChanged;
    ctx.barChanged = mSongPosition.mFlags.barChanged;
    ctx.oddBar = mSongPosition.mFlags.oddBar;
    ctx.listenL = mOutBlockL;
    ctx.listenR = mOutBlockR;
    mModulators.Tick(ctx);
    mMainOsc.Tick();
}

void Quorvex::ResetEngine()
{
    mLatencyDirty = true;
    SetTimeBase(GetSampleRate());
    mMaster.Prepare();
    mModRouting.OnRateChange();
    mTempo.Derive();
    // With the transport stopped the song position runs free from here: a new run starts at 0.
    mSongPosition.Reset();
    const double relFreq = kInputLowpassHz / gSampleRate;
    mInputFilterL.Design(kInputLowpassOrder, relFreq);
    mInputFilterR.Design(kInputLowpassOrder, relFreq);
    mFadeIn.Prepare();
    for (Slot& slot : mSlots)
        slot.Prepare();
    mMainOsc.SetModRate(mMainRatePercent);
    mMainOsc.Reset();
    // Steps, glides and smoothing depend on the rate: their parameters are applied again.
    if (!mConstructing)
        for (int id = kLFOOn1; id <= kLogic4DepthModSource; ++id)
            OnParamChange(id);
    // The master effect's laws read the rate (pre-delays in samples).
    if (!mConstructing) SendMasterFxParams();
    mFadeIn.Request();
    ClearEngine();
}

void Quorvex::ClearEngine()
{
    mMaster.Clear();
    VecZero(mInRingL, kInRingSize);
    VecZero(mInRingR, kInRingSize);
    VecZero(mInRingSC, kInRingSize);
    VecZero(mOutBlockL, kBlockSize);
    VecZero(mOutBlockR, kBlockSize);
    // The rings' phase too: a host call that ended inside a block must not shift the next run.
    mInWrite = kBlockSize;
    mInRead = 0;
    mOutRead = 0;
    // The band limit's memory too: a cleared engine hears nothing of what came before.
    mInputFilterL.ClearMemory();
    mInputFilterR.ClearMemory();
    for (Slot& slot : mSlots)
        slot.Restart();
    mEffects.ClearAll();
    mModulators.Reset();
    mSums.Clear();
    VecZero(mFbSumL, kBlockSize);
    VecZero(mFbSumR, kBlockSize);
}

int Quorvex::TailSamples()
{
    // Filters, effect memories and the limiter's release after the last echo.
    constexpr double kRingSec = 0.1;
    // An ambience whose tail to -120 dB would pass this counts as sustaining.
    constexpr double kLongestFiniteSec = 60.0;
    const auto value = [this](int id) { return static_cast<double>(GetParam(id)->value); };

    const int masterType = MasterSection::kMasterFxOff + static_cast<int>(value(kMasterFX));
    const bool masterOn = masterType > MasterSection::kMasterFxOff && value(kMasterFXBypass) < 0.5 &&
                          value(kMasterFXLevel) > 0.0;
    int slotsOn = 0;
    for (const Slot& slot : mSlots)
        slotsOn += slot.mOn ? 1 : 0;

    double delaySec = 0.0;
    for (const Slot& slot : mSlots)
    {
        if (!slot.mOn || !slot.mDelayOn) continue;
        // A delay nobody hears (no wet share, no master effect, no later slot) leaves no tail.
        if (slot.WetShare() <= 0.0 && !masterOn && slotsOn < 2) continue;
        const ModRoute& fbMod = mModRouting.Route(kModFeedback, slot.Index());
        const bool fbModulated = fbMod.SourceIndex() != kModSourceOff && fbMod.Depth() != 0.0;
        if (slot.mFeedback + mFeedbackMaster > 0.0 || fbModulated) return kTailForever;
        delaySec = std::max(delaySec, slot.ReachSeconds(mTempo.secPerBeat, mTimeScale));
    }

    double reverbSec = 0.0;
    if (masterOn &&
        (masterType == MasterSection::kFirstMasterFx || masterType == MasterSection::kFirstMasterFx + 1 ||
         masterType == MasterSection::kFirstMasterFx + 2))
    {
        const double p1 = value(kMasterFXP1);
        const double p2 = value(kMasterFXP2);
        if (masterType == MasterSection::kFirstMasterFx)
        {
            // The ambience: four lines of up to size x 4297 samples at 44.1 kHz, loop gain = decay.
            const double size = MasterFxParam(masterType, 0, p1).value;
            const double gain = std::abs(MasterFxParam(masterType, 1, p2).value);
            if (gain >= 1.0) return kTailForever;
            const double loopSec = size * 4297.0 / 44100.0;
            reverbSec = gain <= 0.0 ? loopSec : loopSec * 6.0 / -std::log10(gain);
            if (reverbSec > kLongestFiniteSec) return kTailForever;
        }
        else
        {
            // Hall and room: the decay knob is seconds to -60 dB; -120 dB takes twice that.
            const double rt60 = MasterFxParam(masterType, 0, p1).value;
            const double preDelaySec = MasterFxParam(masterType, 1, p2).value / 44100.0;
            reverbSec = 2.0 * rt60 + preDelaySec;
        }
    }
    const double rate = GetSampleRate();
    const double seconds = delaySec + reverbSec + kRingSec;
    return static_cast<int>(std::ceil(seconds * rate)) + GetLatency() + kInRingSize;
}

bool Quorvex::SerializeState(ByteChunk& chunk)
{
    return WriteStateChunk(*this, chunk);
}

int Quorvex::UnserializeState(const ByteChunk& chunk, int startPos)
{
    // Nothing of the engine may run while its values are rewritten one by one: a block, an
    // automation point or a rate reset in between would read half of the old state and half of
    // the new (and a limiter meeting that can be left holding NaN).
    HoldAudio(mStateLoading);
    const int pos = ReadStateChunk(*this, chunk, startPos);
    mStateLoading.store(false);
    return pos;
}

void Quorvex::ShowMessage(int code)
{
    mMessage.Show(code);
}

void Quorvex::PresentMessage()
{
    if (!mEditor || !mMessage.IsPending()) return;
    // A box closed with the window comes back when the window opens again.
    if (mMessage.Serial() == mMessageShown && mEditor->MessageBoxShowing()) return;
    mMessageShown = mMessage.Serial();
    mEditor->ShowMessageBox(mMessage.Text(), "QUORVEX", [this] { mMessage.Dismiss(); });
}
