#pragma once
// Chain of 3 to 7 first-order all-pass stages with feedback round the chain ("PHASEBP"): a
// resonant phase-band filter whose all-pass coefficient follows a fourth-power law of the
// frequency control, so that the sweep spreads evenly over the audible range.
// Controls: 0 frequency 0..1; 1 feedback amount 0..1; 2 spread, a 0..1 knob taken as 2x - 1 and
// signed by the channel; 3 stages, min(truncate(4x + 3), 7), which clears the memories; 4 mix
// (applied by the engine). Modulation inputs 0 and 2 move the frequency, 1 the feedback.
// Threads: SetParam on the parameter path (stores and flags); Process and Reset on the audio
// thread or while audio is held off. Nothing allocates.

#include "dsp/QLMFilter.h"
#include "dsp/Relaxed.h"

class PhaseFilter : public QLMFilter
{
  public:
    static constexpr int kMaxStages = 7;

    explicit PhaseFilter(bool isRight = false);

    void SetParam(int id, double value) override;
    void Reset() override;
    void Process() override;

    double mCoef = 0.0; // all-pass coefficient the smoother moves towards
    Relaxed<double> mFreqBase{0.5};
    double mFeedback = 0.0;
    double mOutGain = 1.0;
    Relaxed<double> mAmountBase{0.0};
    Relaxed<int> mStages{3};
    double mPrevIn[kMaxStages + 1] = {};
    double mStage[kMaxStages + 1] = {};

  private:
    // Coefficient target, feedback and output gain from the controls and the modulation inputs.
    void UpdateCoefficients();
    void ClearMemories();

    Relaxed<bool> mClearPending{false};
};
