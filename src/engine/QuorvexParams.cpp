#include <algorithm>
#include <array>

#include "dsp/Decibels.h"
#include "engine/Quorvex.h"
#include "params/IParamRecord.h"
#include "params/ValueLists.h"
#include "state/StateChunk.h"

// Parameter application: one dispatch table owns every id, each family's law lives with its row.
// The slot, main and master families are here; the effect families in QuorvexFx.cpp, the
// modulator families in QuorvexModulators.cpp.

namespace
{
constexpr int kSlots = Quorvex::kNumSlots;

// Gains in dB with -60 dB and below as silence.
double GainLaw(double dB)
{
    return dB <= -60.0 ? 0.0 : DbToGain(dB);
}
} // namespace

const Quorvex::Dispatch& Quorvex::ParamOwners()
{
    static const std::vector<ParamRow> routeRows = ModRouteParamRows();
    static const std::span<const ParamRow> tables[] = {SlotParamRows(), TapParamRows(),       MainParamRows(),
                                                       FxParamRows(),   ModulatorParamRows(), routeRows};
    static const Dispatch dispatch{tables};
    return dispatch;
}

void Quorvex::OnParamChange(int id)
{
    IParamRecord* param = GetParam(id);
    if (param == nullptr) return;
    if (mFields.mMigrationMarker > 0) MigrateOldParam(*this, id);
    ParamOwners().Apply(*this, id, param->value);
}

// Every ModDepth and ModSource parameter belongs to the routing, which turns it into a route; the
// route then goes to whoever reads it through a pointer (the delay modules, the effects, the LFO
// rates and the logic modules). The block loop reads the other slot routes itself.
std::vector<Quorvex::ParamRow> Quorvex::ModRouteParamRows()
{
    static constexpr auto kRoute = [](Quorvex& q, const ParamChange& c)
    {
        if (const ModParamRef ref = q.mModRouting.OnParamChange(c.id, c.value); ref.Found())
            q.WireModRoute(ref);
    };
    std::vector<ParamRow> rows;
    for (int f = 0; f < kNumModFamilies; ++f)
    {
        const ModFamily& family = GetModFamily(static_cast<ModFamilyId>(f));
        rows.push_back({family.name, family.depthId, family.width, kRoute});
        rows.push_back({family.name, family.sourceId, family.width, kRoute});
    }
    return rows;
}

void Quorvex::WireModRoute(const ModParamRef& ref)
{
    if (WireFxModRoute(ref) || WireModulatorRoute(ref)) return;
    const ModFamily& family = GetModFamily(ref.family);
    if (family.delayInput < 0 || family.delaySide == DelaySide::kNone) return;
    const ModRoute& route = mModRouting.Route(ref.family, ref.member);
    mSlots[ref.member].WireDelayMod(family.delayInput, family.delaySide, route.Source(),
                                    route.DepthPointer());
}

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

// ---- slot families: member is the slot ----

std::span<const Quorvex::ParamRow> Quorvex::SlotParamRows()
{
    using C = const ParamChange&;
    static const ParamRow rows[] = {
        {"SlotOn", kSlotOn1, kSlots, [](Quorvex& q, C c) { q.mSlots[c.member].SetOn(c.value >= 0.5); }},
        {"DelayOn", kDelayOn1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].SetDelayOn(c.value >= 0.5); }},
        {"Direct Out", kDirectOut1, kSlots,
         [](Quorvex& q, C c)
         {
             q.mSlots[c.member].SetDirectOut(ListIndex(c.value));
             // A later slot that takes this one as input follows it to its new stage.
             for (int later = c.member + 1; later < kSlots; ++later)
                 q.SelectInput(later, ListIndex(q.GetParam(kInput1 + later)->value));
         }},
        {"Input", kInput1, kSlots, [](Quorvex& q, C c) { q.SelectInput(c.member, ListIndex(c.value)); }},
        {"Direct In", kDirectIn1, kSlots, [](Quorvex& q, C c) { q.mSlots[c.member].SetDirectIn(c.value); }},
        // Neighbouring slots wobble in opposite senses.
        {"Modulation", kModulation1, kSlots,
         [](Quorvex& q, C c)
         { q.mSlots[c.member].mModulation = (c.member % 2 == 1 ? -c.value : c.value) * 0.01; }},
        {"Master FX Source", kMasterFXSource1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].SetMasterFxSource(ListIndex(c.value)); }},
        {"Pan Position", kPanPosition1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].mPanPosition = c.value >= 0.5; }},
        {"Width", kWidth1, kSlots, [](Quorvex& q, C c) { q.mSlots[c.member].SetWidth(c.value); }},
        {"Output Mode", kOutputMode1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].mOutputMode = ListIndex(c.value); }},
        {"L/R Offset", kLROffset1, kSlots, [](Quorvex& q, C c) { q.mSlots[c.member].SetOffsetMs(c.value); }},
        {"Input Gain", kInputGain1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].mInputGain = GainLaw(c.value); }},
        {"Panning", kPanning1, kSlots, [](Quorvex& q, C c) { q.mSlots[c.member].mPanning = c.value * 0.01; }},
        {"Feedback", kFeedback1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].mFeedback = c.value * 0.01; }},
        {"Level", kLevel1, kSlots, [](Quorvex& q, C c) { q.mSlots[c.member].mLevel = GainLaw(c.value); }},
        {"M-FX Send", kMFXSend1, kSlots, [](Quorvex& q, C c) { q.mSlots[c.member].mSend = c.value * 0.01; }},
        // TAPPED also tells the slot's POST effects to follow the taps' step rows.
        {"Delay Mode", kDelayMode1, kSlots,
         [](Quorvex& q, C c)
         {
             q.mEffects.SetTapped(c.member, ListIndex(c.value) == DelayTapped);
             q.mSlots[c.member].SetDelayMode(ListIndex(c.value));
         }},
        {"Delay Route", kDelayRoute1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].SetRoute(ListIndex(c.value)); }},
        {"FB Proportional", kFBProportional1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].mFbProportional = c.value >= 0.5; }},
        {"Timebase", kTimebase1, kSlots,
         [](Quorvex& q, C c) { q.SwitchTimebase(c.member, ListIndex(c.value)); }},
        {"TapTimebase", kTapTimebase1, kSlots,
         [](Quorvex& q, C c)
         {
             q.mSlots[c.member].mTiming.SetTapTimebase(ListIndex(c.value));
             if (q.mConstructing) return;
             q.RequestFadeIn();
             q.mSlots[c.member].RestartLines();
         }},
        {"DelayFactorL", kDelayFactorL1, kSlots,
         [](Quorvex& q, C c)
         {
             q.mSlots[c.member].mTiming.SetDelayFactor(0, ListIndex(c.value));
             q.LinkTimes(c.member, kDelayFactorR1 + c.member, c.value);
         }},
        {"DelayFactorR", kDelayFactorR1, kSlots,
         [](Quorvex& q, C c)
         {
             q.mSlots[c.member].mTiming.SetDelayFactor(1, ListIndex(c.value));
             q.LinkTimes(c.member, kDelayFactorL1 + c.member, c.value);
         }},
        {"Delay TimeL", kDelayTimeL1, kSlots,
         [](Quorvex& q, C c)
         {
             q.mSlots[c.member].mTiming.SetFreeTimeMs(0, c.value);
             q.LinkTimes(c.member, kDelayTimeR1 + c.member, c.value);
         }},
        {"Delay TimeR", kDelayTimeR1, kSlots,
         [](Quorvex& q, C c)
         {
             q.mSlots[c.member].mTiming.SetFreeTimeMs(1, c.value);
             q.LinkTimes(c.member, kDelayTimeL1 + c.member, c.value);
         }},
        // Read by LinkTimes when a time or factor changes.
        {"DelayL/R Link", kDelayLRLink1, kSlots, nullptr},
        {"Delay Taps Time", kDelayTapsTime1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].mTiming.SetTapTimeMs(c.value); }},
        {"Delay Spread", kDelaySpread1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].mSpreadMs = c.value; }},
        {"Delay Lopass", kDelayLopass1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].SetLowPassHz(c.value); }},
        {"Delay Hipass", kDelayHipass1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].SetHighPassHz(c.value); }},
        {"Grain Size", kGrainSize1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].SetGrainSize(c.value); }},
        {"Grain Speed", kGrainSpeed1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].SetGrainSpeed(c.value); }},
        {"Grain Position", kGrainPosition1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].SetGrainPosition(c.value); }},
        {"Grain Fade", kGrainFade1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].SetGrainFade(c.value); }},
        {"Reverse X-Fade", kReverseXFade1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].SetReverseFade(c.value); }},
        // Kept in state and presets for their round trip; the backward mode restarts on its own cycle.
        {"Reverse Delay Trigger", kReverseDelayTrigger1, kSlots, nullptr},
        {"FB Matrix", kFBMatrix1, kSlots,
         [](Quorvex& q, C c) { q.mSlots[c.member].mMatrixOn = c.value >= 0.5; }},
        // "SlotN FB M": the share of slot N's delay output in slot M's feedback.
        {"Slot FB", kSlot1FB1, kSlots * kSlots,
         [](Quorvex& q, C c) {
             q.mSlots[c.member % kSlots].mMatrix[static_cast<std::size_t>(c.member / kSlots)] =
                 c.value * 0.01;
         }},
    };
    return rows;
}

// ---- tap families of the TAPPED mode: member is the slot, or slot x 16 + tap in a step row ----

std::span<const Quorvex::ParamRow> Quorvex::TapParamRows()
{
    using C = const ParamChange&;
    constexpr int kRow = kSlots * kNumTaps;
    static const ParamRow rows[] = {
        {"DelayTaps", kDelayTaps1, kSlots,
         [](Quorvex& q, C c) { q.Taps(c.member).SetTapCount(ListIndex(c.value)); }},
        {"DelayTap FB", kDelayTapFB1, kSlots,
         [](Quorvex& q, C c) { q.Taps(c.member).SetFeedbackTap(ListIndex(c.value)); }},
        {"Tap Time Step Depth", kTapTimeStepDepth1, kSlots,
         [](Quorvex& q, C c) { q.Taps(c.member).SetTimeStepDepth(c.value); }},
        {"Tap Level Step Depth", kTapLevelStepDepth1, kSlots,
         [](Quorvex& q, C c) { q.Taps(c.member).SetLevelStepDepth(c.value); }},
        {"Tap Pan Width", kTapPanWidth1, kSlots,
         [](Quorvex& q, C c) { q.Taps(c.member).SetPanWidth(c.value); }},
        {"Tap Pan Mode", kTapPanMode1, kSlots,
         [](Quorvex& q, C c) { q.Taps(c.member).SetPanMode(ListIndex(c.value)); }},
        {"DelayTap DI Out", kDelayTapDIOut1, kSlots,
         [](Quorvex& q, C c) { q.Taps(c.member).SetDiOut(ListIndex(c.value)); }},
        {"Delay Taps Swell", kDelayTapsSwell1, kSlots,
         [](Quorvex& q, C c) { q.Taps(c.member).SetSwell(c.value); }},
        {"Delay Taps Swing", kDelayTapsSwing1, kSlots,
         [](Quorvex& q, C c) { q.Taps(c.member).SetSwing(c.value); }},
        {"TapDelay Time", kTapDelay1Step1Time, kRow,
         [](Quorvex& q, C c) { q.Taps(c.member / kNumTaps).SetTimeStep(c.member % kNumTaps, c.value); }},
        {"TapDelay Level", kTapDelay1Step1Level, kRow,
         [](Quorvex& q, C c) { q.Taps(c.member / kNumTaps).SetLevelStep(c.member % kNumTaps, c.value); }},
        {"TapDelay Pan", kTapDelay1Step1Pan, kRow,
         [](Quorvex& q, C c) { q.Taps(c.member / kNumTaps).SetPanStep(c.member % kNumTaps, c.value); }},
        // The step counts set the grid of the editor's step controls only.
        {"Tap Time Steps", kTapTimeSteps1, kSlots, nullptr},
        {"Tap Level Steps", kTapLevelSteps1, kSlots, nullptr},
        {"Tap Pan Steps", kTapPanSteps1, kSlots, nullptr},
    };
    return rows;
}

// ---- main section and master section ----

std::span<const Quorvex::ParamRow> Quorvex::MainParamRows()
{
    using C = const ParamChange&;
    static const ParamRow rows[] = {
        {"Main ModRate", kMainModRate, 1,
         [](Quorvex& q, C c)
         {
             q.mMainRatePercent = c.value;
             q.mMainOsc.SetModRate(c.value);
         }},
        {"Main ModDepth", kMainModDepth, 1, [](Quorvex& q, C c) { q.mMainDepth = c.value; }},
        {"Feedback Master", kFeedbackMaster, 1, [](Quorvex& q, C c) { q.mFeedbackMaster = c.value * 0.01; }},
        {"Delay Time Scale", kDelayTimeScale, 1,
         [](Quorvex& q, C c) { q.mTimeScale = DelayTimeScale(c.value); }},
        {"Wet Level", kWetLevel, 1, [](Quorvex& q, C c) { q.mMaster.SetWetLevel(c.value); }},
        {"Dry Level", kDryLevel, 1, [](Quorvex& q, C c) { q.mMaster.SetDryLevel(c.value); }},
        {"Output Level", kOutputLevel, 1, [](Quorvex& q, C c) { q.mMaster.SetOutputLevel(c.value); }},
        {"MasterFX Level", kMasterFXLevel, 1, [](Quorvex& q, C c) { q.mMaster.SetMasterFxLevel(c.value); }},
        {"Global Width", kGlobalWidth, 1, [](Quorvex& q, C c) { q.mMaster.SetGlobalWidth(c.value); }},
        {"Limiter On", kLimiterOn, 1, [](Quorvex& q, C c) { q.mMaster.SetLimiterMode(ListIndex(c.value)); }},
        {"Limiter Level", kLimiterLevel, 1, [](Quorvex& q, C c) { q.mMaster.SetLimiterBoost(c.value); }},
        {"MasterFX Bypass", kMasterFXBypass, 1,
         [](Quorvex& q, C c) { q.mMaster.SetMasterFxBypass(c.value >= 0.5); }},
        // Placeholders of the catalogue that nothing reads.
        {"NoOp", kNoOp, 1, nullptr},
        {"BP", kBP, 1, nullptr},
    };
    return rows;
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
    mTimeHighlightRequests.fetch_or(1 << slot, std::memory_order_relaxed); // the editor marks the times
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
