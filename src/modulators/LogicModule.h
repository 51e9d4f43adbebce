#pragma once
// One logic modulator: combines two modulation sources into a third, sample by sample over the
// block, then smooths the result, scales it by the output depth (itself modulatable) and clips it
// to -1..1. All inputs are read before the output is written, so a module that reads its own
// output (as a source or as depth source) sees the previous block.
// Threads: setters from the parameter path (relaxed stores); Process and Reset on the audio
// thread. Nothing allocates.

#include "dsp/Relaxed.h"
#include "dsp/TimeBase.h"

#include <array>

class LogicModule
{
  public:
    // Internal modes, in the order the combiner knows them.
    enum Mode : int
    {
        kAdd = 0,
        kMultiply = 1,
        kAbsMin = 2,
        kAbsMax = 3,
        kMin = 4,
        kMax = 5,
        kGate = 6,
        kHigher = 7,
        kLower = 8,
        kNumModes = 9
    };

    // "Logic Mode" menu, in menu order, and the internal mode of each entry.
    static constexpr std::array<const char*, kNumModes> kModeLabels = {
        "ADD", "MULTIPLY", "MIN", "MAX", "ABS MIN", "ABS MAX", "GATE", "HIGHER", "LOWER"};
    static constexpr std::array<Mode, kNumModes> kMenuModes = {kAdd,    kMultiply, kMin,    kMax,  kAbsMin,
                                                               kAbsMax, kGate,     kHigher, kLower};
    // Menu value to internal mode; values out of range clamp to the ends of the menu.
    static Mode ModeFromMenu(int value);

    // output: the buffer the result goes to (a source bank's buffer); null keeps it inside.
    explicit LogicModule(double* output = nullptr);
    LogicModule(const LogicModule&) = delete;
    LogicModule& operator=(const LogicModule&) = delete;

    // Source buffers of gBlockLen samples; null = no source.
    void SetSource1(const double* buffer) { mSource1 = buffer; }
    void SetSource2(const double* buffer) { mSource2 = buffer; }
    void SetDepthSource(const double* buffer) { mDepthSource = buffer; }
    // Knob values in percent.
    void SetSource1Depth(double percent) { mSource1Depth = percent / 100.0; }
    void SetSource2Depth(double percent) { mSource2Depth = percent / 100.0; }
    void SetDepth(double percent) { mOutDepth = percent / 100.0; }
    void SetDepthMod(double percent) { mDepthMod = percent / 100.0; }
    void SetModeMenu(int value) { mMode = ModeFromMenu(value); }
    // Smoothing time in ms (0..1000), at the present sample rate.
    void SetSmooth(double ms);

    // Clears the smoother and recomputes its coefficient at the present sample rate; the output
    // keeps its content.
    void Reset();
    // One block. The owner skips it while the logic section is off, so the output holds.
    void Process();
    // Process on two modules at once, each exactly as its own: their smoothers side by side.
    static void ProcessPair(LogicModule& a, LogicModule& b);

    const double* Output() const { return mOut; }
    int InternalMode() const { return mMode; }
    double SmoothCoef() const { return mA; }

  private:
    // The two scaled sources combined by the mode, into mWorkA.
    void Combine();
    // Depth and bounds of the smoothed block, into the output block.
    void ApplyDepth();
    void UpdateSmooth();

    Relaxed<const double*> mSource1{nullptr};
    Relaxed<const double*> mSource2{nullptr};
    Relaxed<const double*> mDepthSource{nullptr};
    Relaxed<double> mSource1Depth{1.0};
    Relaxed<double> mSource2Depth{1.0};
    Relaxed<double> mOutDepth{1.0};
    Relaxed<double> mDepthMod{0.0};
    Relaxed<int> mMode{kAdd};
    Relaxed<double> mSmoothMs{0.0};
    Relaxed<double> mA{0.0};
    Relaxed<double> mB{1.0};
    double mY = 0.0;
    double mWorkA[gBlockLen] = {};
    double mWorkB[gBlockLen] = {};
    double mOwnOut[gBlockLen] = {};
    double* mOut;
};
