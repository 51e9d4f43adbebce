#pragma once
// Frequency shifter: two chains of eight all-pass sections form an analytic pair whose parts are
// multiplied by the cosine and sine of a running phase, so every partial moves by the same number of
// hertz (up for a positive shift). Its output goes back to its input one block later, scaled by the
// feedback (0 to -0.7). A second-order high-pass in front follows a downward shift, so that content
// below the shift does not fold back through 0 Hz. The module outputs 100 % wet; mMix is P5.
//
// Parameters (SetParam, parameter thread): 0 shift fraction (2x - 1), 1 scale list index (x1, x10,
// x100 Hz), 2 feedback fraction, 3 spread fraction (2x - 1, squared with its sign kept, times the
// channel sign, added to the shift), 4 mix. Process, Reset and Init run on the audio thread.

#include "dsp/DSPShell.h"

class HilbertShifter : public QLM_DSPFunctions::SimpleOSC, public DSPShell
{
  public:
    static constexpr int kSections = 8;
    static constexpr double kScales[3] = {1.0, 10.0, 100.0};
    static constexpr double kMaxFeedback = -0.7;

    explicit HilbertShifter(bool isRight);

    void Reset() override;
    void SetParam(int id, double value) override;
    void Process() override;

    // Shift in hertz for the present parameters and modulation (positive: up).
    double ShiftHz() const;

  private:
    struct AllPassChain
    {
        double x1[kSections], x2[kSections], y1[kSections], y2[kSections];
        void Clear();
        double Run(const double* k, double v);
        void Undenormalise();
    };

    void DesignHighpass(double w);

    Relaxed<double> mShiftX{0.5};
    Relaxed<int> mScaleIndex{0};
    Relaxed<double> mFeedbackX{0.0};

    // Audio-thread state.
    AllPassChain mChainA{}, mChainB{};
    double mDelayedA = 0.0; // chain one's previous output: the one-sample delay of that chain
    double mPhase = 0.0;
    double mFeedback[gBlockLen] = {};
    double mHpW = -1.0;
    double mHp[5] = {}; // b0 b1 b2 a1 a2, normalised by a0
    double mHpX1 = 0.0, mHpX2 = 0.0, mHpY1 = 0.0, mHpY2 = 0.0;
    bool mSnap = true;
};
