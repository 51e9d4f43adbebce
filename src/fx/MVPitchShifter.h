#pragma once
// Pitch shifter of the "PITCH SHIFT" (mono) and "PITCH SHIFT ST" (stereo) effect types: one instance
// per channel, 32 samples per Process, output 100 % wet (the engine applies mMix).
//
// Method. The input is written into a ring; two read heads move through it at the pitch ratio r. Their
// delays are d = 3 + phase * W + offset, where the phase is the module's own oscillator
// (SimpleOSC, rate (1 - r) / W, so the delay changes by 1 - r per sample) and the second head runs half
// a cycle behind. Each head is faded by a raised-cosine window, sin^2(pi * phase); the two windows
// sum to 1. A head jumps by about W when its phase wraps, at the instant its window is zero.
// Splices: at that jump the head's new offset (0 .. 20 ms, so fundamentals down to 50 Hz) is chosen by a
// normalised cross-correlation over 8 ms between the head's new read position and the other head,
// which is then at full weight: every second lag first, then a climb to the best neighbour and a
// parabola through the peak for the fraction of a sample. The heads stay in phase on periodic
// material, so the crossfades neither beat nor comb, which a fixed jump of W cannot avoid. A splice
// costs some 10^5 multiply-adds, spent in the block where it falls. At a ratio of exactly 1 the heads
// stand still; after Reset only one of them is heard.
// Interpolation: four-point third-order Lagrange on every head read.
// Laws (x = knob fraction): coarse = round(48 x - 24) semitones; fine = 200 x - 100 cents (mono only);
// buffer size W = 10 * 20^x ms (10 .. 200 ms, exponential; default x = 0.5, 44.7 ms); spread (mono) or
// detune (stereo) = (2 x - 1) * 50 cents times mChannelSign. Stereo: P1 is the left instance's coarse
// and P2 the right's. Modulation inputs 0..3 add to their knob at block rate, clamped to 0..1. W glides
// to a new size with a 30 ms time constant, so size changes do not click.
// Threads: SetParam only stores; Process and Reset run on the audio thread (or with audio held off).
// The ring is allocated in the constructor, sized for the longest window at 96 kHz.

#include "dsp/DSPShell.h"
#include "dsp/Relaxed.h"

#include <cstdint>
#include <vector>

class MVPitchShifter : public QLM_DSPFunctions::SimpleOSC, public DSPShell
{
  public:
    MVPitchShifter(bool stereo, bool isRight);

    void Reset() override;
    void SetParam(int id, double value) override;
    void Process() override;

    // Parameter laws, from the knob fraction x in 0..1.
    static int CoarseSemitones(double x);
    static double FineCents(double x);
    static double WindowMs(double x);
    static double DetuneCents(double x);

    static constexpr double kDefaultSize = 0.5;
    static constexpr double kMinWindowMs = 10.0;
    static constexpr double kMaxWindowMs = 200.0;
    static constexpr double kMaxDetuneCents = 50.0;

  private:
    double TargetWindow() const;
    double Ratio() const;
    double ReadAt(uint32_t now, double delay) const;
    double SpliceDelay(uint32_t now, double otherDelay, double lowDelay);

    const bool mStereo;
    Relaxed<double> mParam[4];

    std::vector<double> mRing;
    std::vector<double> mSplice; // work space of the splice search
    uint32_t mMask = 0;
    uint32_t mWrite = 0; // absolute index of the next input sample, wraps with the mask
    double mPhase = 0.0; // head 0; head 1 is half a cycle behind
    double mOffset[2] = {0.0, 0.0};
    double mWindow = 0.0; // current window length in samples
    double mGlide = 0.0;  // per-block coefficient of the window glide
    int mSearch = 0;      // splice search span in samples
    int mMatch = 0;       // terms of the splice correlation
    int mStride = 1;      // spacing of those terms
};
