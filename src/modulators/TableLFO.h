#pragma once
// A modulation LFO that reads a 4096-point wave record and produces one 32-sample block of
// modulation per call of processBlock(): rate (free or tempo-synced), LOOP / ONE SHOT / LATCH with
// an engine-owned trigger flag, reverse, phase offset, swap, polarity, sample-and-hold, glide and
// depth. `out` is the source buffer modulation destinations read.
//
// Threads: the set* calls come from the parameter path as plain stores (Relaxed); processBlock
// runs on the audio thread. setOn(false) clears `out`; the engine skips processBlock of an LFO
// that is off. Nothing allocates; no virtual operations.

#include "dsp/Relaxed.h"
#include "dsp/TimeBase.h"
#include "modulators/WaveStore.h"

#include <array>
#include <cstdint>

class TableLFO
{
  public:
    enum Polarity
    {
        kPos = 0,
        kNeg,
        kBi
    };
    enum Mode
    {
        kLoop = 0,
        kOneShot,
        kLatch
    };
    // `LFO Sync`: free rate in Hz, or tempo-synced straight, dotted or triplet note values.
    enum Sync
    {
        kSyncHz = 0,
        kSyncStraight,
        kSyncDotted,
        kSyncTriplet
    };
    static constexpr int kNumSyncSteps = 8;
    static constexpr std::array<const char*, kNumSyncSteps> kSyncLabels = {
        "4 BARS", "2 BARS", "1 BAR", "1/2", "1/4", "1/8", "1/16", "1/32"};
    static constexpr std::array<const char*, 4> kSyncModeLabels = {"HZ", "STRGHT", "DOT.", "TRIP."};
    // Position of sync step i on the rate parameter's scale.
    static constexpr double kSyncStepSpacing = 71.42857142857143;

    TableLFO();

    // Step limits in whole table points per sample, fixed from 44.1 kHz at construction.
    static int LowerLimit() { return sLowerLimit; }
    static int UpperLimit() { return sUpperLimit; }

    void setWave(const WaveRecord* record);
    void setRate(double hz);
    double getRate() const { return rateHz; }
    void setDepth(double d) { depth = d; }
    void setPhase(double fraction);
    void setGlide(double ms);
    void setPolarity(int p);
    void setMode(int m);
    void setSwap(bool on) { swapSign = on ? -1.0 : 1.0; }
    void setReverse(bool on) { reverse = on; }
    // A one-block pulse owned by the engine; null selects the constant-false flag ("OFF").
    void setTrigger(const std::uint8_t* flag);
    void setRateModSource(const double* source) { rateModSource = source; }
    void setRateModDepth(double d) { rateModDepth = d; }
    void setOn(bool on);
    bool isOn() const { return on; }

    void processBlock();
    // processBlock on two LFOs at once, each exactly as its own: their glides side by side.
    static void ProcessPair(TableLFO& a, TableLFO& b);
    // Back to the start of a run: phase, glide and output at rest, the random source reseeded
    // (and a sample-and-hold value drawn from it). Audio thread, or with audio held off.
    void Restart();

    // Tempo sync. Ratio in Hz per beat per minute of sync step `index` (0 = "4 BARS").
    static double SyncRatio(int index, int syncMode);
    // Free-to-sync step: truncation of log2(960 x rate / tempo), clamped to 0..7.
    static int SyncIndexForRate(double hz, double tempo);
    // Sets the synced step (ignored while `LFO Sync` is HZ) and the rate from it.
    void setSyncStep(int index, double tempo);
    // On a tempo change a synced LFO recomputes its rate from the stored ratio.
    void tempoChanged(double tempo);
    // Switches `LFO Sync`; returns the value to write into `LFO Rate`: the present rate in Hz when
    // going free, the sync step index when going synced.
    double setSyncMode(int mode, double tempo);
    int getSyncMode() const { return syncMode; }
    int getSyncStep() const { return syncIndex; }

    const double* output() const { return out; }
    double getLastOut() const { return lastOut; }
    double getRawOut() const { return rawOut; }
    double getIncrement() const { return increment; }
    double getPhasePoints() const { return phase; }
    double getHoldValue() const { return holdValue; }
    double getGlideCoef() const { return glideA; }

  private:
    double DrawHold();
    // The block before the glide: the wave read at the running phase, polarity and swap applied.
    void FillBlock();
    // After the glide: depth, and the first sample for the displays.
    void FinishBlock();

    static inline Relaxed<int> sLowerLimit{0};
    static inline Relaxed<int> sUpperLimit{0};

    Relaxed<double> lastOut{0.0};
    Relaxed<double> rawOut{0.0};
    Relaxed<double> rateHz{0.0};
    Relaxed<double> increment{0.0};
    double phase = 0.0;
    Relaxed<double> depth{0.0};
    Relaxed<double> polOffset{0.0};
    Relaxed<double> polScale{1.0};
    Relaxed<double> swapSign{1.0};
    Relaxed<double> rateModDepth{0.0};
    Relaxed<double> holdValue{0.0};
    Relaxed<bool> reverse{false};
    Relaxed<bool> noRetrigger{false};
    Relaxed<bool> isRandom{false};
    Relaxed<bool> loops{true};
    Relaxed<bool> on{true};
    int tableSize = kWaveTableSize;
    int tableMask = kWaveTableSize - 1;
    Relaxed<int> phaseOffset{0};
    Relaxed<int> polarity{kBi};
    Relaxed<const double*> table{nullptr};
    Relaxed<const std::uint8_t*> trigger;
    Relaxed<const double*> rateModSource{nullptr};
    // Glide: one pole per sample, y = b x in + a x y.
    Relaxed<double> glideA{0.0};
    Relaxed<double> glideB{1.0};
    double glideY = 0.0;
    // 15-bit linear congruential generator for the sample-and-hold wave.
    Relaxed<std::uint32_t> randState{1u};
    Relaxed<int> syncMode{kSyncHz};
    Relaxed<int> syncIndex{0};
    Relaxed<double> syncRatio{0.0};
    double out[gBlockLen] = {};
};
