#pragma once
// Envelope follower of the modulation section: band-limits its input, takes the block RMS and
// turns it into a level, either by the shared attack/release curve (follower mode, output block
// mOut through a 1 ms smoother) or by a threshold-triggered attack/hold/release ramp (gate mode,
// level in mScalarOut only). Nothing allocates after construction.
// Threads: setters on the parameter path; Process on the audio thread (input mIn1, 32 samples).

#include "dsp/BlockSmoother.h"
#include "dsp/Dynamics.h"
#include "dsp/Relaxed.h"

class Envelope : public Dynamics
{
  public:
    enum GateState : int
    {
        kGateAttack = 0,
        kGateHold = 1,
        kGateRelease = 2,
        kGateIdle = 3,
    };

    explicit Envelope(bool isRight = false);

    // Also clears the follower, the gate machine and the output, and retimes the output smoother.
    void Reset() override;
    void Process() override;
    // Process on two envelopes at once, each exactly as its own Process.
    static void ProcessPair(Envelope& a, Envelope& b);

    // The mode switch: 0 follower, 1 gate (stored inverted as mFollowerMode).
    void SetGateMode(bool gate) { mFollowerMode = !gate; }
    // True: the follower's level goes out without the soft-knee curve.
    void SetLinear(bool linear) { mLinear = linear; }
    // Gate threshold as a linear RMS level.
    void SetThreshold(double level) { mGateThreshold = level; }
    void SetDepth(double depth) { mDepth = depth; }
    void SetHold(double ms);
    void SetInputGain(double gain) { mInputGain = gain; }
    // Corners of the detector band as 0..1 controls (50 Hz .. 20 kHz): the low cut is the
    // high-pass mHighCut, the high cut the low-pass mLowCut.
    void SetLowCutFreq(double value);
    void SetHighCutFreq(double value);
    // Zeroes the output block unless keep is true.
    void ClearOutput(bool keep);

    double mFollow = 0.0;
    Relaxed<double> mDepth{1.0};
    Relaxed<double> mGateThreshold{0.0};
    double mPhase = 0.0;
    Relaxed<bool> mFollowerMode{true};
    Relaxed<bool> mLinear{false};
    int mGateState = kGateIdle;
    BlockSmoother mOutSmooth{1.0};
    double mFiltered[gBlockLen] = {};
    double mOut[gBlockLen] = {};

  private:
    // One band filter in place on mFiltered, unless bypassed.
    void RunBand(IppBiquad& filter);
    // The level of the filtered block and the output; for two envelopes side by side.
    void Detect();
    static void DetectPair(Envelope& a, Envelope& b);
    // Detect from the block's RMS on.
    void DetectFrom(double rms);
    // Steps the attack/hold/release machine by one block; returns the level.
    double StepGate(double r);
};
