#pragma once
// Base of the level-driven modules: a filtered level detector (block mean square smoothed at a
// fixed 1.5 % per block) and one follower curve with attack and release, shared by the envelope
// followers, the compressor and the limiter. Attack and release times are stored as twice the
// value set. Reset recomputes the rate-dependent coefficients and clears the detector; nothing
// here allocates after construction.
// Threads: setters on the parameter path (they store scalars); Process and Reset on the audio
// thread or while audio is held off.

#include "dsp/DSPShell.h"
#include "dsp/FadeRamp.h"
#include "dsp/IppBiquad.h"
#include "dsp/Relaxed.h"

class Dynamics : public DSPShell
{
  public:
    // exp(-2 pi): the floor of the follower curve, reached from 1.0 in exactly one release time
    // (and left towards 1.0 in one attack time).
    static constexpr double kFollowFloor = 0.001867442732;
    // Range rescale applied after subtracting the floor.
    static constexpr double kFollowScale = 0.998132557;

    explicit Dynamics(bool isRight = false);

    void Reset() override;
    // Slot 9: a level setting changed. Nothing in the base.
    virtual void OnLevelChanged() {}

    // Store 2 * ms and recompute the per-block coefficient and the per-sample ramp step.
    void SetAttack(double ms);
    void SetRelease(double ms);

    // One block (mBlockLen samples): mMeanSquare moves 1.5 % of the way to the block's mean
    // square (plus a 1e-9 guard); returns the RMS. Audio thread.
    double RmsLevel(const double* block);
    // RmsLevel in two parts: the block's mean square, and the step with it. MeanSquares takes two
    // blocks' at once, each summed in its own order, so that the two serial sums overlap.
    double RmsFromMeanSquare(double meanSquare);
    static void MeanSquares(const double* a, const double* b, int n, double& meanA, double& meanB);

    // The shared follower curve: release by a factor per block when x falls below e, else rise by
    // a factor per block but not beyond x; never below the floor.
    double Follow(double x, double e) const;

    double mMeanSquare = 0.0;
    double mLevelDb = 0.0;
    double mEnvOut = 0.0;
    double mScalarOut = 0.0;
    double mRms = 0.0;
    Relaxed<double> mThreshold{1.0};
    Relaxed<double> mInputGain{1.0};
    Relaxed<double> mAttackCoef{1.0};
    Relaxed<double> mAttackMs{10.0};
    Relaxed<double> mReleaseCoef{1.0};
    Relaxed<double> mReleaseMs{100.0};
    Relaxed<double> mAttackInc{1.0};
    Relaxed<double> mReleaseInc{1.0};
    Relaxed<double> mHoldInc{1.0};
    IppBiquad mLowCut;
    IppBiquad mHighCut;
    FadeRamp mFade;

  protected:
    void UpdateAttack();
    void UpdateRelease();
};
