#pragma once
// Ring modulator: multiplies the input by a carrier whose shape runs from a sine (shape 0) to a
// band-limited pulse, sin c / (1 + s^2 - 2 s cos c) with s = 0.9 x shape, whose k-th harmonic has the
// amplitude s^(k-1). The carrier is scaled by (1 - s^2), which makes its peak exactly 1 for every
// shape: the module never raises the peak level, which keeps it safe inside a feedback path.
// A slow wobble (one cycle in two seconds, up to 0.75 half-cycles times the width) moves the two
// channels' carrier phases apart; the spread detunes them by up to half an octave each, in opposite
// senses. The module outputs 100 % wet; mMix is the square of P5.
//
// Parameters (SetParam, parameter thread): 0 frequency fraction, 1 shape, 2 width, 3 spread
// (2x - 1), 4 mix fraction. Process, Reset and Init run on the audio thread. A right instance given
// its left partner takes over the partner's phase (by a one-block ramp) at the first block after
// width and spread both reach 0 with nothing wired to them; the left instance must process first.

#include "dsp/DSPShell.h"

class RingMod : public QLM_DSPFunctions::SimpleOSC, public DSPShell
{
  public:
    explicit RingMod(bool isRight, const RingMod* partner = nullptr);

    void Reset() override;
    void SetParam(int id, double value) override;
    void Process() override;

    // Carrier frequency in hertz for the present parameters and modulation, spread included.
    double CarrierHz() const;
    // Carrier phase in half-cycles, 0..2, at the end of the last block.
    double Phase() const { return mPhase; }

  private:
    const RingMod* mPartner;
    Relaxed<double> mFreqX{0.0};
    Relaxed<double> mShapeX{0.0};
    Relaxed<double> mWidthX{0.0};

    // Audio-thread state.
    double mPhase = 0.0;  // half-cycles, 0..2
    double mWobble = 0.0; // wobble phase, 0..2
    bool mLocked = false;
};
