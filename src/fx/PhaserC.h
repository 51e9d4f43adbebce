#pragma once
// Phaser: up to eight second-order all-pass sections in series, mixed with the input so that the
// sections' phase lag cuts notches where it passes odd multiples of 180 degrees, with feedback from
// the last section to the first.
//
// Section centres: w x kSectionTable[i] x 44100 / sampleRate as a fraction of Nyquist, so each
// centre sits at w x kSectionTable[i] x 22050 Hz at every rate, clamped to 0.002..0.9976 of Nyquist.
// The table spaces the eight geometrically over four octaves; with the base's range (w = 0.6 to 6.6)
// the lowest section runs from about 100 Hz to 1.1 kHz. Each section has a bandwidth equal to its
// centre frequency (Q of 1), with phase exactly -180 degrees at the centre.
// Feedback: the last section's output, times sqrt(P5) x 0.95, is added to the chain input one sample
// later; positive, so the loop stays below unity gain and the notches keep their places.
// Output: (depth x wet + (1 - depth) x input) x (1 + depth) x stage gain, depth = P2 / 2, which keeps
// the average power near the input's; the stage gain is 1 / 1.5 at eight stages, 1 below.
//
// Parameters (SetParam, parameter thread): 0 base, 1 depth, 2 stages (1 + round(7x)), 3 spread
// (x x channel sign x 6 added to w), 4 feedback. Process, Reset and Init run on the audio thread.

#include "dsp/DSPShell.h"

class PhaserC : public QLM_DSPFunctions::SimpleOSC, public DSPShell
{
  public:
    static constexpr int kMaxStages = 8;
    static constexpr double kSectionTable[kMaxStages] = {0.0076,   0.011294, 0.016782, 0.024938,
                                                         0.037058, 0.055068, 0.081831, 0.1216};

    explicit PhaserC(bool isRight);

    void Reset() override;
    void SetParam(int id, double value) override;
    void Process() override;

    // w for the present parameters and modulation, before smoothing.
    double TargetW() const;
    int Stages() const { return mStages; }

  private:
    void Design(double w);

    Relaxed<double> mBase{0.6};
    Relaxed<double> mDepthX{0.0};
    Relaxed<int> mStages{1};
    Relaxed<double> mFeedbackX{0.0};

    // Audio-thread state.
    double mW = -1.0;
    double mA[kMaxStages] = {}, mB[kMaxStages] = {};
    double mV1[kMaxStages] = {}, mV2[kMaxStages] = {}, mY1[kMaxStages] = {}, mY2[kMaxStages] = {};
    double mFeedbackState = 0.0;
    int mRunStages = 0; // stages run in the last block; sections that join start from silence
    bool mSnap = true;
};
