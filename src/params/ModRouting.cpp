#include "params/ModRouting.h"

#include "dsp/BlockSmoother.h"
#include "params/ParamIds.h"

#include <algorithm>
#include <cmath>

namespace
{
// Full-scale time modulation held in samples: 25 ms.
constexpr double kTimeModSeconds = 0.025;

// clang-format off
constexpr std::array<ModFamily, kNumModFamilies> kFamilies{{
    {"Input Gain",      kInputGain1,     kInputGainModDepth1,     kInputGainModSource1,     4,  DepthLaw::kCube,           -1, DelaySide::kNone},
    {"Panning",         kPanning1,       kPanningModDepth1,       kPanningModSource1,       4,  DepthLaw::kLinear,         -1, DelaySide::kNone},
    {"Feedback",        kFeedback1,      kFeedbackModDepth1,      kFeedbackModSource1,      4,  DepthLaw::kCube,           -1, DelaySide::kNone},
    {"Level",           kLevel1,         kLevelModDepth1,         kLevelModSource1,         4,  DepthLaw::kCube,           -1, DelaySide::kNone},
    {"M-FX Send",       kMFXSend1,       kMFXSendModDepth1,       kMFXSendModSource1,       4,  DepthLaw::kLinear,         -1, DelaySide::kNone},
    {"Delay TimeL",     kDelayTimeL1,    kDelayTimeLModDepth1,    kDelayTimeLModSource1,    4,  DepthLaw::kSamples,         0, DelaySide::kLeft},
    {"Delay TimeR",     kDelayTimeR1,    kDelayTimeRModDepth1,    kDelayTimeRModSource1,    4,  DepthLaw::kSamplesNegated,  0, DelaySide::kRight},
    {"Delay Taps Time", kDelayTapsTime1, kDelayTapsTimeModDepth1, kDelayTapsTimeModSource1, 4,  DepthLaw::kHalfCube,        6, DelaySide::kBoth},
    {"Delay Spread",    kDelaySpread1,   kDelayModDepth1,         kDelaySpreadModSource1,   4,  DepthLaw::kSamples,        -1, DelaySide::kNone},
    {"Grain Size",      kGrainSize1,     kGrainSizeModDepth1,     kGrainSizeModSource1,     4,  DepthLaw::kCube,            5, DelaySide::kBoth},
    {"Grain Speed",     kGrainSpeed1,    kGSpeedModDepth1,        kGrainSpreadModSource1,   4,  DepthLaw::kCube,            4, DelaySide::kBoth},
    {"Grain Position",  kGrainPosition1, kGPositionModDepth1,     kGrainSpeedModSource1,    4,  DepthLaw::kCube,            3, DelaySide::kBoth},
    {"LFO Rate",        kLFORate1,       kLFOFreqModDepth1,       kLFOFreqModSource1,       4,  DepthLaw::kCube,           -1, DelaySide::kNone},
    {"FXParam1",        kFXParam1PR1,    kFXParam1ModDepthPR1,    kFXParam1ModSourcePR1,    12, DepthLaw::kCube,           -1, DelaySide::kNone},
    {"FXParam2",        kFXParam2PR1,    kFXParam2ModDepthPR1,    kFXParam2ModSourcePR1,    12, DepthLaw::kCube,           -1, DelaySide::kNone},
    {"FXParam3",        kFXParam3PR1,    kFXParam3ModDepthPR1,    kFXParam3ModSourcePR1,    12, DepthLaw::kCube,           -1, DelaySide::kNone},
    {"FXParam4",        kFXParam4PR1,    kFXParam4ModDepthPR1,    kFXParam4ModSourcePR1,    12, DepthLaw::kCube,           -1, DelaySide::kNone},
    {"FXParam5",        kFXParam5PR1,    kFXParam5ModDepthPR1,    kFXParam5ModSourcePR1,    12, DepthLaw::kCube,           -1, DelaySide::kNone},
    {"Logic Source1",   -1,              kLogic1Source1Depth,     kLogic1Source1,           4,  DepthLaw::kLinear,         -1, DelaySide::kNone},
    {"Logic Source2",   -1,              kLogic1Source2Depth,     kLogic1Source2,           4,  DepthLaw::kLinear,         -1, DelaySide::kNone},
    {"Logic Depth",     kLogic1Depth,    kLogic1DepthMod,         kLogic1DepthModSource,    4,  DepthLaw::kLinear,         -1, DelaySide::kNone},
}};
// clang-format on

// The per-slot families pair by id: depth at value + 4, source at value + 8, whatever their names
// say. The effect families are twelve wide, so there the steps are 12 and 24.
constexpr bool PairedByOffset(int first, int last, int step)
{
    for (int f = first; f <= last; ++f)
        if (kFamilies[f].depthId != kFamilies[f].valueId + step ||
            kFamilies[f].sourceId != kFamilies[f].valueId + 2 * step)
            return false;
    return true;
}
static_assert(PairedByOffset(kModInputGain, kModLfoRate, 4));
static_assert(PairedByOffset(kModFxParam1, kModFxParam5, 12));

constexpr std::array<int, kNumModFamilies + 1> kRouteOffsets = []
{
    std::array<int, kNumModFamilies + 1> offsets{};
    for (int f = 0; f < kNumModFamilies; ++f)
        offsets[f + 1] = offsets[f] + kFamilies[f].width;
    return offsets;
}();
static_assert(kRouteOffsets.back() == ModRouting::kNumRoutes);
} // namespace

const double* ModSourceBank::SourceBuffer(int index) const
{
    if (index <= kModSourceOff || index >= kNumModSources) return nullptr;
    return mBuffers[index - 1];
}

void modulate(const double* source, double depth, double* base, double* result, int count, double low,
              double high)
{
    BlockSmoother::ApplyMod(source, depth, base, result, count, low, high);
}

double DepthFromPercent(DepthLaw law, double percent)
{
    switch (law)
    {
    case DepthLaw::kCube:
        return CubedDepth(percent);
    case DepthLaw::kHalfCube:
        return CubedDepth(percent) * 0.5;
    case DepthLaw::kLinear:
        return LinearDepth(percent);
    case DepthLaw::kSamples:
        return gSampleRate * CubedDepth(percent) * kTimeModSeconds;
    case DepthLaw::kSamplesNegated:
        return -gSampleRate * CubedDepth(percent) * kTimeModSeconds;
    }
    return 0.0;
}

const ModFamily& GetModFamily(ModFamilyId family)
{
    return kFamilies[family];
}

ModParamRef FindModParam(int id)
{
    for (int f = 0; f < kNumModFamilies; ++f)
    {
        const ModFamily& fam = kFamilies[f];
        if (id >= fam.sourceId && id < fam.sourceId + fam.width)
            return {static_cast<ModFamilyId>(f), id - fam.sourceId, true};
        if (id >= fam.depthId && id < fam.depthId + fam.width)
            return {static_cast<ModFamilyId>(f), id - fam.depthId, false};
    }
    return {};
}

double ModRoute::Offset() const
{
    const double* source = mSource;
    return source != nullptr ? Depth() * source[0] : 0.0;
}

ModParamRef ModRouting::OnParamChange(int id, double value)
{
    const ModParamRef ref = FindModParam(id);
    if (!ref.Found()) return ref;
    ModRoute& route = MutableRoute(ref.family, ref.member);
    if (ref.isSource)
    {
        const int index = static_cast<int>(std::lround(value));
        route.mSource = mBank.SourceBuffer(index);
        route.mSourceIndex = route.mSource.Load() != nullptr ? index : int(kModSourceOff);
    }
    else
    {
        route.mPercent = value;
        route.SetDepth(DepthFromPercent(kFamilies[ref.family].law, value));
    }
    return ref;
}

void ModRouting::OnRateChange()
{
    for (int f = 0; f < kNumModFamilies; ++f)
    {
        const DepthLaw law = kFamilies[f].law;
        if (law != DepthLaw::kSamples && law != DepthLaw::kSamplesNegated) continue;
        for (int m = 0; m < kFamilies[f].width; ++m)
        {
            ModRoute& route = MutableRoute(static_cast<ModFamilyId>(f), m);
            route.SetDepth(DepthFromPercent(law, route.mPercent));
        }
    }
}

const ModRoute& ModRouting::Route(ModFamilyId family, int member) const
{
    return mRoutes[kRouteOffsets[family] + member];
}

ModRoute& ModRouting::MutableRoute(ModFamilyId family, int member)
{
    return mRoutes[kRouteOffsets[family] + member];
}

// Only sample 0 of the source enters: modulation of these destinations is block-rate and the
// smoothers interpolate between blocks. The scalar form gives exactly the vector form's entry 0.
double ModRouting::Modulated(ModFamilyId family, int slot, double base, double low, double high) const
{
    const ModRoute& route = Route(family, slot);
    modulate(route.Source(), route.Depth(), &base, nullptr, 1, low, high);
    return base;
}

double ModRouting::InputGainTarget(int slot, double base) const
{
    return Modulated(kModInputGain, slot, base, 0.0, kMaxGain);
}

double ModRouting::FeedbackAmount(int slot, double base) const
{
    return std::clamp(Modulated(kModFeedback, slot, base, 0.0, kMaxFeedback), 0.0, kMaxFeedback);
}

DelayTimePair ModRouting::DelayTimes(int slot, double left, double right) const
{
    const double shift = Route(kModDelaySpread, slot).Offset();
    return {std::max(left + shift, kShortestDelay), std::max(right - shift, kShortestDelay)};
}

double ModRouting::PanTarget(int slot, double base) const
{
    return Modulated(kModPanning, slot, base, -1.0, 1.0);
}

double ModRouting::LevelTarget(int slot, double base) const
{
    return Modulated(kModLevel, slot, base, 0.0, kMaxGain);
}

double ModRouting::SendLevel(int slot, double base) const
{
    return std::clamp(Modulated(kModSend, slot, base, 0.0, 1.0), 0.0, 1.0);
}
