#include "engine/Quorvex.h"

#include <mutex>

#include "dsp/Decibels.h"
#include "dsp/Denormals.h"
#include "dsp/Vec.h"
#include "editor/QuorvexEditor.h"
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
    mEditor->SetIdleHook([this] { FlushPendingHostNotices(); });
    mEditor->SetColorSet(mFields.mColorSet);
    AttachGraphics(mEditor.get());
}

void Quorvex::ShowColorSetAndPage(int colorSet, int page)
{
    if (!mEditor) return;
    mEditor->SetColorSet(colorSet);
    mEditor->SelectPage(page);
}

void Quorvex::Reset()
{
    std::lock_guard lock(paramsMutex);
    ResetEngine();
}

void Quorvex::OnParamChange(int id)
{
    IParamRecord* param = GetParam(id);
    if (param == nullptr) return;
    if (mFields.mMigrationMarker > 0) MigrateOldParam(*this, id);
    const double v = param->value;
    if (const ModParamRef ref = mModRouting.OnParamChange(id, v); ref.Found())
    {
        WireModRoute(ref);
        return;
    }
    if (ApplyFxParam(id, v) || ApplyModulatorParam(id, v)) return;
    if (ApplySlotParam(id, v) || ApplyMainParam(id, v)) return;
    ApplyMasterParam(id, v);
}

// The delay modules read their time, taps-time and grain modulation through pointers, so a route
// of those families is handed to them; the block loop reads the other slot families itself. The
// LFO rate, effect and logic families go to their modules once those exist.
void Quorvex::WireModRoute(const ModParamRef& ref)
{
    if (WireFxModRoute(ref) || WireModulatorRoute(ref)) return;
    const ModFamily& family = GetModFamily(ref.family);
    if (family.delayInput < 0 || family.delaySide == DelaySide::kNone) return;
    const ModRoute& route = mModRouting.Route(ref.family, ref.member);
    mSlots[ref.member].WireDelayMod(family.delayInput, family.delaySide, route.Source(),
                                    route.DepthPointer());
}

bool Quorvex::ApplyMasterParam(int id, double v)
{
    switch (id)
    {
    case kWetLevel:
        mMaster.SetWetLevel(v);
        return true;
    case kDryLevel:
        mMaster.SetDryLevel(v);
        return true;
    case kOutputLevel:
        mMaster.SetOutputLevel(v);
        return true;
    case kMasterFXLevel:
        mMaster.SetMasterFxLevel(v);
        return true;
    case kGlobalWidth:
        mMaster.SetGlobalWidth(v);
        return true;
    case kLimiterOn:
        mMaster.SetLimiterMode(ListIndex(v));
        return true;
    case kLimiterLevel:
        mMaster.SetLimiterBoost(v);
        return true;
    case kMasterFXBypass:
        mMaster.SetMasterFxBypass(v >= 0.5);
        return true;
    default:
        return false;
    }
}

bool Quorvex::Silenced() const
{
    return mPresetLoading.load() || mConstructing || mFields.mRestoringState;
}

void Quorvex::ProcessDoubleReplacing(double** inputs, double** outputs, int nFrames) QUORVEX_NONBLOCKING
{
    const AudioThreadScope audioThread(mAudioThread);
    double* outL = outputs[0];
    double* outR = outputs[1];
    mOutputsL = outL;
    mOutputsR = outR;

    const bool scLeft = IsInChannelConnected(2);
    mSidechainInUse = scLeft || IsInChannelConnected(3);
    const double* sidechain = mSidechainInUse ? inputs[scLeft ? 2 : 3] : nullptr;

    if (nFrames <= 0) return;
    if (Silenced())
    {
        VecZero(outL, nFrames);
        VecZero(outR, nFrames);
        return;
    }

    const double rate = GetSampleRate();
    if (rate != gEngineHostRate || rate != mEngineRate)
    {
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
    for (int i = 0; i < nFrames; ++i)
    {
        mInWrite &= kInRingSize - 1;
        mOutRead &= kBlockSize - 1;
        mInRingL[mInWrite] = inL[i];
        mInRingR[mInWrite] = inR[i];
        if (sidechain != nullptr) mInRingSC[mInWrite] = sidechain[i];
        outL[i] = mOutBlockL[mOutRead];
        outR[i] = mOutBlockR[mOutRead];
        ++mInWrite;
        ++mOutRead;
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
}

// The oldest 32 ring entries become the block; the sidechain is taken without the fade.
void Quorvex::FillBlock()
{
    const double fade = mFadeIn.mFade;
    for (int k = 0; k < kBlockSize; ++k)
    {
        const int pos = (mInRead + k) & (kInRingSize - 1);
        mBlockL[k] = mInRingL[pos] * fade;
        mBlockR[k] = mInRingR[pos] * fade;
    }
    if (mSidechainInUse)
        for (int k = 0; k < kBlockSize; ++k)
            mBlockSC[k] = mInRingSC[(mInRead + k) & (kInRingSize - 1)];
    mInRead = (mInRead + kBlockSize) & (kInRingSize - 1);
}

void Quorvex::ReadTransport()
{
    ITimeInfo info;
    GetTime(info);
    mTransport = TransportCache::From(info);
    mSongPosition.Advance(mTransport, mTempo.beatsPerSample);
}

// The wet copy: denormal guard, then the band limit.
void Quorvex::PrepareWet()
{
    VecAddConstI(kDenormGuard, mBlockL, kBlockSize);
    VecAddConstI(kDenormGuard, mBlockR, kBlockSize);
    mInputFilterL.RunI(mBlockL, kBlockSize);
    mInputFilterR.RunI(mBlockR, kBlockSize);
    VecAdd(mBlockL, mBlockR, mBlockMono, kBlockSize);
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
    ctx.sums = &mSums;
    for (Slot& slot : mSlots)
    {
        if (slot.mOn)
            slot.RunForward(ctx);
        else
            slot.RunOff(mSums);
    }
}

// After every forward path: each slot that is on takes its own feedback, or with its matrix on a
// mix of all delay outputs of this block, and writes its lines.
void Quorvex::WriteDelays()
{
    for (Slot& slot : mSlots)
    {
        if (!slot.mOn) continue;
        if (!slot.mMatrixOn)
        {
            VecScale(slot.FbOutL(), slot.FbGainL(), mFbSumL, kBlockSize);
            VecScale(slot.FbOutR(), slot.FbGainR(), mFbSumR, kBlockSize);
        }
        else
        {
            VecZero(mFbSumL, kBlockSize);
            VecZero(mFbSumR, kBlockSize);
            for (const Slot& source : mSlots)
            {
                if (!source.mOn || !source.mDelayOn) continue;
                const double m = slot.mMatrix[static_cast<std::size_t>(source.Index())];
                VecAddScaled(source.FbOutL(), m * slot.FbGainL(), mFbSumL, kBlockSize);
                VecAddScaled(source.FbOutR(), m * slot.FbGainR(), mFbSumR, kBlockSize);
            }
        }
        slot.WriteDelay(mFbSumL, mFbSumR, mFadeIn.mFade);
    }
}

// Modulators run after the audio of the block: their outputs reach the next block. The bank's
// modulators (wave-table LFOs, gates, envelopes, logic) write their buffers here once they exist.
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
    // The band limit's memory too: a cleared engine hears nothing of what came before.
    VecZero(mInputFilterL.mDelay, 2 * kIirMaxOrder);
    VecZero(mInputFilterR.mDelay, 2 * kIirMaxOrder);
    for (Slot& slot : mSlots)
        slot.Clear();
    mEffects.ClearAll();
    mModulators.Reset();
    mSums.Clear();
    VecZero(mFbSumL, kBlockSize);
    VecZero(mFbSumR, kBlockSize);
}

bool Quorvex::SerializeState(ByteChunk& chunk)
{
    return WriteStateChunk(*this, chunk);
}

int Quorvex::UnserializeState(const ByteChunk& chunk, int startPos)
{
    return ReadStateChunk(*this, chunk, startPos);
}

void Quorvex::ShowMessage(int code)
{
    mMessage.Show(code);
}

// Until the preset browser exists the selection lives in the fields alone, and any folder text
// stands for its menu; an empty folder names no menu and leaves the selection as it was.
void Quorvex::SelectPresetMenuItem(const std::string& folder, int index)
{
    if (folder.empty()) return;
    mFields.mPresetMenuFolder = folder;
    mFields.mPresetMenuIndex = index;
}

// ---- parameter application of the slots and the main section ----

namespace
{
// Gains in dB with -60 dB and below as silence.
double GainLaw(double dB)
{
    return dB <= -60.0 ? 0.0 : DbToGain(dB);
}
} // namespace

bool Quorvex::Loading() const
{
    return mConstructing || mPresetLoading.load() || mFields.mRestoringState;
}

void Quorvex::SetParamFromEngine(int id, double value)
{
    IParamRecord* param = GetParam(id);
    if (param == nullptr) return;
    param->value = std::clamp(value, param->min, param->max);
    OnParamChange(id);
    const double normalized = param->GetNormalized();
    BeginInformHostOfParamChange(id);
    InformHostOfParamChange(id, normalized);
    EndInformHostOfParamChange(id);
}

bool Quorvex::ApplySlotParam(int id, double v)
{
    if (const int tapSlot = TapEngine::SlotOfParam(id);
        tapSlot >= 0 && mSlots[tapSlot].Taps().ApplyParam(id, v))
        return true;
    using Handler = void (*)(Quorvex&, int, double);
    struct Family
    {
        int first;
        Handler apply;
    };
    static const Family kFamilies[] = {
        {kSlotOn1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetOn(x >= 0.5); }},
        {kDelayOn1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetDelayOn(x >= 0.5); }},
        {kDirectOut1,
         [](Quorvex& q, int s, double x)
         {
             q.mSlots[s].SetDirectOut(ListIndex(x));
             // A later slot that takes this one as input follows it to its new stage.
             for (int later = s + 1; later < kNumSlots; ++later)
                 q.SelectInput(later, ListIndex(q.GetParam(kInput1 + later)->value));
         }},
        {kInput1, [](Quorvex& q, int s, double x) { q.SelectInput(s, ListIndex(x)); }},
        {kDirectIn1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetDirectIn(x); }},
        // Neighbouring slots wobble in opposite senses.
        {kModulation1,
         [](Quorvex& q, int s, double x) { q.mSlots[s].mModulation = (s % 2 == 1 ? -x : x) * 0.01; }},
        {kMasterFXSource1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetMasterFxSource(ListIndex(x)); }},
        {kPanPosition1, [](Quorvex& q, int s, double x) { q.mSlots[s].mPanPosition = x >= 0.5; }},
        {kWidth1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetWidth(x); }},
        {kOutputMode1, [](Quorvex& q, int s, double x) { q.mSlots[s].mOutputMode = ListIndex(x); }},
        {kLROffset1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetOffsetMs(x); }},
        {kInputGain1, [](Quorvex& q, int s, double x) { q.mSlots[s].mInputGain = GainLaw(x); }},
        {kPanning1, [](Quorvex& q, int s, double x) { q.mSlots[s].mPanning = x * 0.01; }},
        {kFeedback1, [](Quorvex& q, int s, double x) { q.mSlots[s].mFeedback = x * 0.01; }},
        {kLevel1, [](Quorvex& q, int s, double x) { q.mSlots[s].mLevel = GainLaw(x); }},
        {kMFXSend1, [](Quorvex& q, int s, double x) { q.mSlots[s].mSend = x * 0.01; }},
        {kDelayMode1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetDelayMode(ListIndex(x)); }},
        {kDelayRoute1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetRoute(ListIndex(x)); }},
        {kFBProportional1, [](Quorvex& q, int s, double x) { q.mSlots[s].mFbProportional = x >= 0.5; }},
        {kTimebase1, [](Quorvex& q, int s, double x) { q.SwitchTimebase(s, ListIndex(x)); }},
        {kTapTimebase1,
         [](Quorvex& q, int s, double x)
         {
             q.mSlots[s].mTiming.SetTapTimebase(ListIndex(x));
             if (q.mConstructing) return;
             q.RequestFadeIn();
             q.mSlots[s].RestartLines();
         }},
        {kDelayFactorL1,
         [](Quorvex& q, int s, double x)
         {
             q.mSlots[s].mTiming.SetDelayFactor(0, ListIndex(x));
             q.LinkTimes(s, kDelayFactorR1 + s, x);
         }},
        {kDelayFactorR1,
         [](Quorvex& q, int s, double x)
         {
             q.mSlots[s].mTiming.SetDelayFactor(1, ListIndex(x));
             q.LinkTimes(s, kDelayFactorL1 + s, x);
         }},
        {kDelayTimeL1,
         [](Quorvex& q, int s, double x)
         {
             q.mSlots[s].mTiming.SetFreeTimeMs(0, x);
             q.LinkTimes(s, kDelayTimeR1 + s, x);
         }},
        {kDelayTimeR1,
         [](Quorvex& q, int s, double x)
         {
             q.mSlots[s].mTiming.SetFreeTimeMs(1, x);
             q.LinkTimes(s, kDelayTimeL1 + s, x);
         }},
        {kDelayTapsTime1, [](Quorvex& q, int s, double x) { q.mSlots[s].mTiming.SetTapTimeMs(x); }},
        {kDelaySpread1, [](Quorvex& q, int s, double x) { q.mSlots[s].mSpreadMs = x; }},
        {kDelayLopass1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetLowPassHz(x); }},
        {kDelayHipass1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetHighPassHz(x); }},
        {kGrainSize1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetGrainSize(x); }},
        {kGrainSpeed1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetGrainSpeed(x); }},
        {kGrainPosition1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetGrainPosition(x); }},
        {kGrainFade1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetGrainFade(x); }},
        {kReverseXFade1, [](Quorvex& q, int s, double x) { q.mSlots[s].SetReverseFade(x); }},
        {kFBMatrix1, [](Quorvex& q, int s, double x) { q.mSlots[s].mMatrixOn = x >= 0.5; }},
    };

    for (const Family& family : kFamilies)
        if (id >= family.first && id < family.first + kNumSlots)
        {
            family.apply(*this, id - family.first, v);
            return true;
        }
    // "SlotN FB M": the share of slot N's delay output in slot M's feedback.
    if (id >= kSlot1FB1 && id < kSlot1FB1 + kNumSlots * kNumSlots)
    {
        const int source = (id - kSlot1FB1) / kNumSlots;
        const int dest = (id - kSlot1FB1) % kNumSlots;
        mSlots[dest].mMatrix[static_cast<std::size_t>(source)] = v * 0.01;
        return true;
    }
    return false;
}

bool Quorvex::ApplyMainParam(int id, double v)
{
    switch (id)
    {
    case kMainModRate:
        mMainRatePercent = v;
        mMainOsc.SetModRate(v);
        return true;
    case kMainModDepth:
        mMainDepth = v;
        return true;
    case kFeedbackMaster:
        mFeedbackMaster = v * 0.01;
        return true;
    case kDelayTimeScale:
        mTimeScale = DelayTimeScale(v);
        return true;
    default:
        return false;
    }
}

// Inputs are pointers, never copies. A slot choice takes whatever the named slot offers at this
// moment; the sums are buses the slots fill in the block.
void Quorvex::SelectInput(int slot, int value)
{
    Slot& s = mSlots[slot];
    const auto pair = [&s](const double* l, const double* r) { s.SetSource(l, r, false); };
    const auto fromSlot = [&](int n) { pair(mSlots[n].FeedForwardL(), mSlots[n].FeedForwardR()); };
    const auto fromSum = [&](double(*sum)[kBlockSize]) { pair(sum[0], sum[1]); };
    switch (value)
    {
    case Slot::kInputLeft:
        pair(mBlockL, mBlockL);
        return;
    case Slot::kInputRight:
        pair(mBlockR, mBlockR);
        return;
    case Slot::kInputStereo:
        pair(mBlockL, mBlockR);
        return;
    case Slot::kInputMasterFx:
        mClearMfxOutRequest = true;
        s.SetSource(mMaster.mMfxOutL, mMaster.mMfxOutR, true);
        return;
    default:
        break;
    }
    const int choice = value - Slot::kFirstSlotInput;
    if (value < Slot::kFirstSlotInput || choice >= 7)
    {
        pair(mBlockMono, mBlockMono);
        return;
    }
    // Slot 3 lists slot 1, slot 2, then their sum; slot 4 lists three slots and then the sums.
    if (slot == 2 && choice == 2)
        fromSum(mSums.sum12);
    else if (choice < slot)
        fromSlot(choice);
    else if (slot == 3 && choice == 3)
        fromSum(mSums.sum12);
    else if (slot == 3 && choice == 4)
        fromSum(mSums.sum13);
    else if (slot == 3 && choice == 5)
        fromSum(mSums.sum23);
    else if (slot == 3 && choice == 6)
        fromSum(mSums.sum123);
    else
        pair(mBlockMono, mBlockMono);
}

void Quorvex::LinkTimes(int slot, int twinId, double value)
{
    if (mLinking || Loading() || GetParam(kDelayLRLink1 + slot)->value < 0.5) return;
    if (GetParam(twinId)->value == value) return;
    mLinking = true;
    SetParamFromEngine(twinId, value);
    mLinking = false;
}

void Quorvex::SwitchTimebase(int slot, int value)
{
    SlotTiming& timing = mSlots[slot].mTiming;
    const bool wasSynced = timing.Synced();
    const double beats[2] = {timing.syncTime[0], timing.syncTime[1]};
    timing.SetTimebase(value);
    if (Loading()) return;
    if (wasSynced && !timing.Synced())
    {
        // The free times take over what was heard: beats at the present tempo, in ms.
        const double secPerBeat = mTempo.secPerBeat;
        const double leftMs = SyncedBeatsToFreeMs(beats[0], secPerBeat);
        const double rightMs = SyncedBeatsToFreeMs(beats[1], secPerBeat);
        mLinking = true;
        SetParamFromEngine(kDelayTimeL1 + slot, leftMs);
        SetParamFromEngine(kDelayTimeR1 + slot, rightMs);
        mLinking = false;
    }
    else if (timing.Synced())
    {
        OnParamChange(kDelayFactorL1 + slot);
        OnParamChange(kDelayFactorR1 + slot);
    }
}
