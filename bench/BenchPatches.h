#pragma once
// The patches the speed measurements play, as (parameter id, plain value) pairs laid over the
// plug-in's defaults. One table for every driver: the engine benchmarks, the bundle benchmark,
// the instruction counts and the side-by-side timing host all play exactly these settings. Enum
// parameters take the index of their entry (16 taps is entry 15 of the tap list).

#include "delay/DelayMode.h"
#include "params/ParamIds.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace bench_patches
{
enum Patch
{
    kPatchDefault,       // the plug-in's defaults: slot 1 on, FORWARD
    kPatchFourForward,   // four slots FORWARD, Direct In 50
    kPatchTapped16Swell, // slot 1 TAPPED, 16 taps, swell 100
    kPatchGrain,
    kPatchBackward,
    kPatchAllOff,       // slots off: what the engine costs around them
    kPatchLimiterSlowI, // slots off, master limiter SLOW I
    kPatchHeavy,        // four slots, 16 taps, two feedback effects, four routed LFOs, hall
    kPatchMasterHall,   // slots off, master effect REVERB
    kPatchDefaultHall,  // the defaults plus master effect REVERB
    kPatchModulators,   // the defaults plus all fourteen modulators running and routed
    kNumPatches
};

using Setting = std::pair<int, double>;

inline constexpr std::string_view kPatchNames[kNumPatches] = {
    "Default",      "FourForward", "Tapped16Swell", "Grain",       "Backward",  "AllOff",
    "LimiterSlowI", "Heavy",       "MasterHall",    "DefaultHall", "Modulators"};

// Entries of the value lists the patches use, by their texts.
inline constexpr double kMasterFxReverb = 2.0; // "REVERB", the hall
inline constexpr double kLimiterSlowI = 1.0;   // "SLOW I"
inline constexpr double kFbPitchShift = 3.0;   // "PITCH SHIFT" in the feedback list
inline constexpr double kFbMulti12dB = 11.0;   // "MULTI 12dB" in the feedback list
inline constexpr double kTaps16 = 15.0;        // the tap list starts at "1"
inline constexpr double kSourceLfo1 = 1.0;     // "LFO1"; LFO2..4, GATE1..4, ENV1..2, LOGIC1..4 follow
inline constexpr double kSourceGate1 = 5.0;
inline constexpr double kSourceEnv1 = 9.0;
inline constexpr double kSourceLogic1 = 11.0;
inline constexpr double kEnvSourceSlot1Mono = 3.0; // "SLOT1 M"

inline void AddSlotsOff(std::vector<Setting>& s)
{
    for (int slot = 0; slot < 4; ++slot)
        s.push_back({kSlotOn1 + slot, 0.0});
}

inline void AddFourLfosRouted(std::vector<Setting>& s)
{
    for (int k = 0; k < 4; ++k)
    {
        s.push_back({kLFOOn1 + k, 1.0});
        s.push_back({kLFORate1 + k, 0.3 + 0.7 * k});
        s.push_back({kLFODepth1 + k, 100.0});
    }
    // One destination per LFO, each in a different place of the engine.
    s.push_back({kDelayTimeLModSource2, kSourceLfo1});
    s.push_back({kDelayTimeLModDepth2, 10.0});
    s.push_back({kPanningModSource3, kSourceLfo1 + 1});
    s.push_back({kPanningModDepth3, 60.0});
    s.push_back({kFXParam1ModSourceFB3, kSourceLfo1 + 2});
    s.push_back({kFXParam1ModDepthFB3, 30.0});
    s.push_back({kLevelModSource4, kSourceLfo1 + 3});
    s.push_back({kLevelModDepth4, 20.0});
}

inline std::vector<Setting> PatchSettings(Patch patch)
{
    std::vector<Setting> s;
    switch (patch)
    {
    case kPatchDefault:
    case kNumPatches:
        break;
    case kPatchFourForward:
        for (int slot = 0; slot < 4; ++slot)
        {
            s.push_back({kSlotOn1 + slot, 1.0});
            s.push_back({kDelayMode1 + slot, DelayForward});
            s.push_back({kDirectIn1 + slot, 50.0});
            s.push_back({kFeedback1 + slot, 40.0});
        }
        break;
    case kPatchTapped16Swell:
        s.push_back({kDelayMode1, DelayTapped});
        s.push_back({kDelayTaps1, kTaps16});
        s.push_back({kDelayTapsSwell1, 100.0});
        break;
    case kPatchGrain:
        s.push_back({kDelayMode1, DelayGrain});
        break;
    case kPatchBackward:
        s.push_back({kDelayMode1, DelayBackward});
        break;
    case kPatchAllOff:
        AddSlotsOff(s);
        break;
    case kPatchLimiterSlowI:
        AddSlotsOff(s);
        s.push_back({kLimiterOn, kLimiterSlowI});
        break;
    case kPatchHeavy:
        for (int slot = 0; slot < 4; ++slot)
            s.push_back({kSlotOn1 + slot, 1.0});
        s.push_back({kDelayMode1, DelayTapped});
        s.push_back({kDelayTaps1, kTaps16});
        s.push_back({kFX2FB, kFbPitchShift});
        s.push_back({kFXOnFB2, 1.0});
        s.push_back({kFX3FB, kFbMulti12dB});
        s.push_back({kFXOnFB3, 1.0});
        // The effects' knobs spelled out: a type chosen inside a host's process call keeps the
        // knobs where they are, one chosen outside loads the type's defaults, and both drivers
        // must play the same sound. Pitch shifted up, full mix; the filter half open, full mix.
        for (const auto& [first, values] :
             {std::pair{kFXParam1FB2, std::array{75.0, 50.0, 50.0, 50.0, 100.0}},
              std::pair{kFXParam1FB3, std::array{50.0, 0.0, 50.0, 0.0, 100.0}}})
            for (int k = 0; k < 5; ++k)
                s.push_back({first + k * (kFXParam2PR1 - kFXParam1PR1), values[std::size_t(k)]});
        AddFourLfosRouted(s);
        s.push_back({kMasterFX, kMasterFxReverb});
        break;
    case kPatchMasterHall:
        AddSlotsOff(s);
        s.push_back({kMasterFX, kMasterFxReverb});
        break;
    case kPatchDefaultHall:
        s.push_back({kMasterFX, kMasterFxReverb});
        break;
    case kPatchModulators:
        AddFourLfosRouted(s);
        for (int g = 0; g < 4; ++g)
        {
            s.push_back({kGate1On + g, 1.0});
            s.push_back({kGate1Timebase + g, 2.0 + g}); // 1/16, 1/32, 1/64, 1/4d
            for (int step = 0; step < 16; ++step)
                s.push_back({kGate1Step1 + 16 * g + step, (step % 3) * 50.0});
        }
        for (int e = 0; e < 2; ++e)
        {
            s.push_back({kENV1On + e, 1.0});
            s.push_back({kENV1Source + e, e == 0 ? 0.0 : kEnvSourceSlot1Mono});
        }
        for (int k = 0; k < 4; ++k)
        {
            s.push_back({kLogicOn1 + k, 1.0});
            s.push_back({kLogic1Type + k, 2.0 * k});
            s.push_back({kLogic1Source1 + k, kSourceLfo1 + k});
            s.push_back({kLogic1Source1Depth + k, 100.0});
            s.push_back({kLogic1Source2 + k, kSourceGate1 + k});
            s.push_back({kLogic1Source2Depth + k, 80.0});
            s.push_back({kLogic1Smooth + k, 5.0});
            s.push_back({kLogic1Depth + k, 100.0});
        }
        // Gates, envelopes and logic reach slot 1's parameters.
        s.push_back({kFeedbackModSource1, kSourceGate1});
        s.push_back({kFeedbackModDepth1, 30.0});
        s.push_back({kInputGainModSource1, kSourceEnv1});
        s.push_back({kInputGainModDepth1, 20.0});
        s.push_back({kPanningModSource1, kSourceLogic1});
        s.push_back({kPanningModDepth1, 50.0});
        s.push_back({kMFXSendModSource1, kSourceEnv1 + 1});
        s.push_back({kMFXSendModDepth1, 40.0});
        break;
    }
    return s;
}

// A patch by its name; kNumPatches when there is none.
inline Patch FindPatch(std::string_view name)
{
    for (int p = 0; p < kNumPatches; ++p)
        if (kPatchNames[p] == name) return Patch(p);
    return kNumPatches;
}
} // namespace bench_patches
