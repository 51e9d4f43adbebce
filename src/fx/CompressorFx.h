#pragma once
// The "COMPRESSOR" slot effect: the RMS compressor with its 10 ms look-ahead (the audio path is
// delayed by 10 ms, so the gain acts on the sound it measured), driven by five knob fractions:
//   P1 threshold  -60 + 60x dB (of RMS level; 0 dB is a sine of amplitude sqrt 2)
//   P2 ratio      1 + 19x^2 : 1 (finer steps at the gentle end)
//   P3 attack     0.1 * 1000^x ms (0.1 .. 100 ms)
//   P4 release    5 * 400^x ms (5 .. 2000 ms)
//   P5 makeup     24x dB (not a mix: mMix stays 1)
// Modulation inputs 0..3 move their fraction (clamped to 0..1) once per block; input 4 reaches the
// compressor's own makeup input.
// Threads: SetParam on the parameter path (stores fractions only); Process and Reset on the audio
// thread or while audio is held off. The look-ahead ring is allocated at construction for 96 kHz.

#include "dsp/Compressor.h"
#include "dsp/Relaxed.h"

class CompressorFx : public Compressor
{
  public:
    explicit CompressorFx(bool isRight = false);

    void SetParam(int id, double value) override;
    void Reset() override;
    void Process() override;

    // The laws above, from a fraction 0..1.
    static double ThresholdDb(double x) { return -60.0 + 60.0 * x; }
    static double Ratio(double x) { return 1.0 + 19.0 * x * x; }
    static double AttackMs(double x);
    static double ReleaseMs(double x);

  private:
    // Brings the compressor's settings to the (modulated) fractions; the time coefficients are
    // recomputed only when their fraction moved.
    void ApplyControls(bool force);

    Relaxed<double> mKnob[4] = {0.5, 0.0, 0.33, 0.5};
    double mApplied[4] = {-1.0, -1.0, -1.0, -1.0};
};
