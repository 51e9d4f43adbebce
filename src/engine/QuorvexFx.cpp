#include <cmath>
#include <mutex>
#include <thread>

#include "delay/DelayMode.h"
#include "dsp/BlockingAllowed.h"
#include "engine/Quorvex.h"
#include "fx/EffectTable.h"
#include "fx/FxFactory.h"
#include "fx/MasterFxLaws.h"
#include "params/IParamRecord.h"
#include "params/ValueLists.h"

namespace
{
constexpr int kPositions = EffectRack::kPositions;
constexpr int kParamStride = kFXParam2PR1 - kFXParam1PR1; // value, depth and source rows of one P
static_assert(kParamStride == 3 * kPositions && kFXParam5PR1 == kFXParam1PR1 + 4 * kParamStride);
static_assert(kFX1FB == kFX1PR + 4 && kFX1PO == kFX1PR + 8 && kFXOnPO1 == kFXOnPR1 + 8);
static_assert(kTapDelay1Step1FXP2 == kTapDelay1Step1FXP1 + 4 * kNumTaps);
static_assert(kTapFXP2StepDepth1 == kTapFXP1StepDepth1 + 4 && kTapFXParam2_1 == kTapFXParam1_1 + 4);
static_assert(kMasterFXP4 == kMasterFXP1 + 3);

} // namespace

// Master modules exist for the life of the plug-in; the rack tells the engine of every new type.
void Quorvex::SetupEffects()
{
    for (int k = 0; k < MasterSection::kMasterFxCount; ++k)
    {
        const int type = MasterSection::kFirstMasterFx + k;
        mMasterFxModules[k] = CreateMasterFxModule(type);
        mMaster.SetMasterFxModule(type, mMasterFxModules[k].get());
    }
    mEffects.SetTypeListener([this](int position, int type, bool byUser)
                             { OnFxTypeBuilt(position, type, byUser); });
}

// After the rack built a position: the tap lists' names follow the POST type; a change the user
// made (not a state being loaded) starts from the type's defaults and clears the slot's FX steps.
void Quorvex::OnFxTypeBuilt(int position, int type, bool byUser)
{
    std::lock_guard lock(paramsMutex);
    const int slot = position % EffectRack::kSlots;
    const int kind = position / EffectRack::kSlots;
    if (kind == Slot::kFxPost) NameTapFxLists(slot, type);
    if (!byUser || Loading()) return;
    if (const FxTypeInfo* info = FindFxType(type))
        for (int p = 0; p < kFxParams; ++p)
            SetParamFromEngine(kFXParam1PR1 + p * kParamStride + position, info->defaults[p] * 100.0);
    if (kind != Slot::kFxPost) return;
    for (int row = 0; row < EffectRack::kStepRows; ++row)
        for (int t = 0; t < kNumTaps; ++t)
            SetParamFromEngine(kTapDelay1Step1FXP1 + row * 4 * kNumTaps + slot * kNumTaps + t, 0.0);
}

// Called with paramsMutex held, as the host reads the texts under it too.
void Quorvex::NameTapFxLists(int slot, int type)
{
    const FxTypeInfo* info = type != 0 ? FindFxType(type) : nullptr;
    const IParamRecord::ScaleLabels* labels = nullptr;
    if (info != nullptr)
    {
        mTapFxLabelTexts[slot][0] = "OFF";
        for (int p = 0; p < kFxParams; ++p)
            mTapFxLabelTexts[slot][1 + p] = info->names[p];
        mTapFxLabels[slot] = {mTapFxLabelTexts[slot].data(), 1 + kFxParams, 1.0};
        labels = &mTapFxLabels[slot];
    }
    for (int row = 0; row < EffectRack::kStepRows; ++row)
        GetParam(kTapFXParam1_1 + row * kNumSlots + slot)->scaleLabels = labels;
}

void Quorvex::SyncTapFxMasks()
{
    for (int slot = 0; slot < kNumSlots; ++slot)
    {
        mSlots[slot].Taps().SetFxMask(static_cast<std::uint32_t>(mFields.mStepFxMask[slot]));
        for (int row = 0; row < EffectRack::kStepRows; ++row)
            mEffects.SetTapStepMask(slot, row, static_cast<std::uint32_t>(mFields.mStepModMask[row][slot]));
    }
}

void Quorvex::SendMasterFxParams()
{
    DSPShell* module = mMaster.ActiveMasterFx();
    if (module == nullptr) return;
    const int type = mMaster.MasterFxType();
    for (int p = 0; p < kMasterFxKnobs; ++p)
    {
        const MasterFxSetting s = MasterFxParam(type, p, GetParam(kMasterFXP1 + p)->value);
        if (s.id >= 0) module->SetParam(s.id, s.value);
    }
}

// The effect families reach the effect rack here; their depths and sources are the routing's and
// arrive through WireFxModRoute.
std::span<const Quorvex::ParamRow> Quorvex::FxParamRows()
{
    using C = const ParamChange&;
    static const ParamRow rows[] = {
        {"FX type", kFX1PR, kPositions,
         [](Quorvex& q, C c)
         {
             const int type = FxTypeFromMenu(c.member / EffectRack::kSlots, ListIndex(c.value));
             // Automation on the audio thread leaves the other parameters to the automation: no
             // defaults then. In real time the rack's worker builds the module; in an offline render
             // there is no deadline, and the block where the change arrives builds it, so that
             // every render of the same automation is the same.
             const bool audio = q.InsideProcess();
             const bool offline = audio && q.IsRenderingOffline();
             q.mEffects.RequestType(c.member, type, !q.Loading() && !audio, audio && !offline);
             if (!audio) q.mEffects.ServicePending();
             if (offline)
             {
                 const BlockingAllowed building;
                 q.mEffects.ServicePending();
             }
         }},
        {"FXOn", kFXOnPR1, kPositions, [](Quorvex& q, C c) { q.mEffects.SetOn(c.member, c.value >= 0.5); }},
        {"FXParam1", kFXParam1PR1, kPositions,
         [](Quorvex& q, C c) { q.mEffects.SetValue(c.member, 0, c.value); }},
        {"FXParam2", kFXParam2PR1, kPositions,
         [](Quorvex& q, C c) { q.mEffects.SetValue(c.member, 1, c.value); }},
        {"FXParam3", kFXParam3PR1, kPositions,
         [](Quorvex& q, C c) { q.mEffects.SetValue(c.member, 2, c.value); }},
        {"FXParam4", kFXParam4PR1, kPositions,
         [](Quorvex& q, C c) { q.mEffects.SetValue(c.member, 3, c.value); }},
        {"FXParam5", kFXParam5PR1, kPositions,
         [](Quorvex& q, C c) { q.mEffects.SetValue(c.member, 4, c.value); }},
        // member = row x 4 + slot
        {"Tap FX Param", kTapFXParam1_1, 2 * kNumSlots,
         [](Quorvex& q, C c)
         {
             const int row = c.member / kNumSlots;
             const int slot = c.member % kNumSlots;
             q.Taps(slot).SetFxParam(row, ListIndex(c.value));
             q.mEffects.SetTapSelection(slot, row, ListIndex(c.value));
         }},
        // member = (row x 4 + slot) x 16 + tap
        {"TapDelay FX P", kTapDelay1Step1FXP1, 2 * kNumSlots * kNumTaps,
         [](Quorvex& q, C c)
         {
             const int row = c.member / (kNumSlots * kNumTaps);
             q.mEffects.SetTapStep((c.member / kNumTaps) % kNumSlots, row, c.member % kNumTaps, c.value);
         }},
        // member = row x 4 + slot
        {"Tap FX P Step Depth", kTapFXP1StepDepth1, 2 * kNumSlots,
         [](Quorvex& q, C c)
         { q.mEffects.SetTapDepth(c.member % kNumSlots, c.member / kNumSlots, c.value); }},
        // The step counts set the grid of the editor's step controls only.
        {"Tap FX Param Steps", kTapFXParam1Steps1, 2 * kNumSlots, nullptr},
        {"MasterFX", kMasterFX, 1,
         [](Quorvex& q, C c)
         {
             // The list starts with OFF, which is the master section's first type.
             q.mMaster.SetMasterFxType(MasterSection::kMasterFxOff + ListIndex(c.value));
             q.SendMasterFxParams();
         }},
        {"MasterFX P", kMasterFXP1, kMasterFxKnobs,
         [](Quorvex& q, C c)
         {
             DSPShell* module = q.mMaster.ActiveMasterFx();
             if (module == nullptr) return;
             const MasterFxSetting s = MasterFxParam(q.mMaster.MasterFxType(), c.member, c.value);
             if (s.id >= 0) module->SetParam(s.id, s.value);
         }},
    };
    return rows;
}

// Depth (already cubed by the routing) and source of an FX parameter go to every module of the
// position, and for a mix P5 to the slot's own blend.
bool Quorvex::WireFxModRoute(const ModParamRef& ref)
{
    if (ref.family < kModFxParam1 || ref.family > kModFxParam5) return false;
    const ModRoute& route = mModRouting.Route(ref.family, ref.member);
    mEffects.SetModRoute(ref.member, ref.family - kModFxParam1, route.Source(), route.DepthPointer());
    return true;
}
