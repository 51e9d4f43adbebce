#pragma once
// LOFI II (type 22), one instance per channel: drive into a soft clip, noise that follows the
// signal's level, a sample-and-hold downsampler and a bit crusher, in this order. The output is
// 100 % wet: the engine applies mMix. The noise is added, uniform in -2..2 times the setting times
// the smoothed mean level of the block, so that silence stays silent.
// Threads: constructor on the set-up thread; SetParam and the wiring on the parameter path (they
// store); Process and Reset on the audio thread.

#include "dsp/DSPShell.h"

#include <cstdint>

class Lofi : public DSPShell
{
  public:
    explicit Lofi(bool isRight);

    // 0 drive, 1 noise, 2 downsample, 3 bit crush, 4 mix; all fractions 0..1. Modulation inputs 0..3
    // move the first four.
    void SetParam(int id, double value) override;
    void Reset() override;
    void Process() override;

    // Quantisation levels of a bit-crush setting: 2^24 (none) at 0, 4 at 1.
    static double CrushLevels(double x);
    // Phase added per sample by the sample and hold: 1 (every sample) at 0, 0.01 at 1.
    static double HoldStep(double x);

  private:
    double NextNoise();

    Relaxed<double> mDrive{0.0};
    Relaxed<double> mNoise{0.0};
    Relaxed<double> mDownsample{0.0};
    Relaxed<double> mCrush{0.0};
    BlockSmoother mDriveSmooth{10.0};
    double mLevel = 0.0;     // smoothed mean |signal|
    double mLevelCoef = 0.0; // its one-pole coefficient per block
    double mPhase = 0.0;
    double mHeld = 0.0;
    uint32_t mSeed;
    const uint32_t mSeedStart;
};
