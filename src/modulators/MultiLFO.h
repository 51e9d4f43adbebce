#pragma once
// The main modulator: a slow oscillator ticked once per 32-sample block that wobbles the delay
// times of all slots through its four outputs L+, R+, L-, R-. Shape 0, the only one the engine
// uses, is a Roessler attractor; shapes 1 to 5 are plain waves of the phase p, which runs -1 .. 1.
//
// Rate: SetRate(freq) makes freqNorm = freq / gSampleRate (the phase step per block) and derives
// the attractor's step dt = 2.9 x freqNorm from it. A step proportional to the rate keeps the
// explicit Euler integration inside its stable range (the fastest contraction of z, about 20 per
// unit of time, needs a step well below 0.1; at 224 Hz and 32 kHz dt is 0.02) and makes the wobble
// rate follow the rate linearly: about 2.9 x freq / 32 / (2 pi) Hz, 1 Hz at the default of 30 %.
//
// Threads: SetModRate, SetRate and SetShape from the parameter path (plain stores); Tick and Reset
// on the audio thread. Nothing allocates.

#include "dsp/DSPShell.h"
#include "dsp/Relaxed.h"

#include <array>

class MultiLFO : public QLM_DSPFunctions::SimpleOSC
{
  public:
    enum Shape
    {
        kRoessler = 0,
        kSine,
        kSaw,
        kInvertedSaw,
        kSquare,
        kTriangle,
        kNumShapes
    };
    // Output order: L+, R+, L-, R-.
    enum Output
    {
        kLPlus = 0,
        kRPlus,
        kLMinus,
        kRMinus,
        kNumOutputs
    };

    MultiLFO();

    // "Main ModRate" in percent: freq = value x 0.07 x 32 + 0.01.
    static double RateFromPercent(double percent) { return percent * 0.07 * 32.0 + 0.01; }
    void SetModRate(double percent) { SetRate(RateFromPercent(percent)); }
    void SetShape(int shape);

    // Back to the start state x = 0, y = 1, z = 1, phase 0, outputs 0; the step follows the
    // present sample rate.
    void Reset();
    // One block's step of phase and shape.
    void Tick();

    double Out(int k) const { return mOut[k]; }
    const double* Outputs() const { return mOut.data(); }
    double Phase() const { return mPhase; }
    double FreqNorm() const { return mPhaseInc; }
    double Step() const { return mDt; }

  protected:
    void OnRate(double hz) override;
    void OnPhase(double halfPhaseInc) override;

  private:
    void StepAttractor(double dt);

    Relaxed<int> mShape{kRoessler};
    Relaxed<double> mDt{0.0};
    double mOffset = 0.0;
    double mGain = 1.0;
    double mPhase = 0.0;
    double mX = 0.0;
    double mY = 1.0;
    double mZ = 1.0;
    std::array<double, kNumOutputs> mOut{};
};
