#pragma once
// The engine's modulation sources: four wave-table LFOs, four step gates, two envelope followers
// and four logic combiners, with the one-block pulses that clock and trigger them. Tick runs once
// at the end of every internal block, in a fixed order (gates, LFO tempo tracking, LFOs,
// envelopes, logic), and only then copies every output into the source bank: whatever reads a
// source, a slot parameter or another modulator, sees the block before, whichever ran first.
// Threads: the setters come from the parameter path (plain stores in the modules); Tick on the
// audio thread. The constructor builds the wave list, which must happen at set-up.

#include <array>
#include <cstdint>

#include "modulators/ArpGate.h"
#include "modulators/EnvelopeSource.h"
#include "modulators/LogicModule.h"
#include "modulators/TableLFO.h"
#include "modulators/WaveStore.h"
#include "params/ModRouting.h"

// The transport and the audio a tick works with, all of the block just done.
struct ModulatorTickContext
{
    double songPos = 0.0; // quarter notes
    double tempo = 120.0;
    bool beatChanged = false;
    bool barChanged = false;
    bool oddBar = false;
    double* listenL = nullptr; // the block's output pair, replaced while an envelope listens
    double* listenR = nullptr;
};

class ModulatorBank
{
  public:
    static constexpr int kLfos = 4;
    static constexpr int kGates = 4;
    static constexpr int kEnvelopes = 2;
    static constexpr int kLogics = 4;

    // Indexes of "LFO Trigger" (0 OFF .. 13 "GATE4 START"); gate clocks use the tail from ENV1 on.
    enum TriggerFlag : int
    {
        kTrigOff = 0,
        kTrigQuarter,
        kTrigBar,
        kTrigTwoBars,
        kTrigEnv1,
        kTrigEnv2,
        kTrigGateLevel1,
        kTrigGateStart1 = kTrigGateLevel1 + kGates,
        kNumTriggers = kTrigGateStart1 + kGates
    };

    explicit ModulatorBank(ModSourceBank& bank);
    ModulatorBank(const ModulatorBank&) = delete;
    ModulatorBank& operator=(const ModulatorBank&) = delete;

    // The flag a trigger or clock choice reads; never null (OFF reads a constant zero).
    const std::uint8_t* Trigger(int index) const;
    // "Gate# Timebase" index to the clock it names, null for the tempo divisions.
    const std::uint8_t* GateClock(int timebase) const;
    const WaveRecord* Wave(int menuIndex) const;

    void Tick(const ModulatorTickContext& ctx);
    // Clears memories after a rate change or a cleared engine and puts every source at the start
    // of a run (LFO phases, random sources reseeded); steps and settings stay.
    void Reset();

    std::array<TableLFO, kLfos> mLfo;
    std::array<ArpGate, kGates> mGate;
    std::array<EnvelopeSource, kEnvelopes> mEnv;
    std::array<LogicModule, kLogics> mLogic;
    std::array<Relaxed<bool>, kGates> mGateOn{};
    std::array<Relaxed<bool>, kEnvelopes> mEnvOn{};
    std::array<Relaxed<bool>, kLogics> mLogicOn{};
    std::array<Relaxed<int>, kEnvelopes> mEnvChoice{};

  private:
    ModSourceBank& mBank;
    WaveList mWaves;
    // Pulses raised by the time base for the block just done.
    std::uint8_t mQuarter = 0;
    std::uint8_t mBar = 0;
    std::uint8_t mTwoBars = 0;
    double mLastTempo = -1.0;
    std::array<bool, kLfos> mLfoPublished{}; // the bank holds a block of this LFO that isn't zero
    std::array<const std::uint8_t*, kNumTriggers> mTriggers{};
};
