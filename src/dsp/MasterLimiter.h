#pragma once
// End of the master chain: a stereo look-ahead limiter with a slow program-dependent stage (modes
// 1 and 2) and a peak stage (all modes), whose gain is computed from the undelayed detector and
// applied to audio delayed by gLookAhead samples. In modes 2 and 3 a second pass on the delayed
// detector caps the output at 1.0. A mode change fades out, switches at silence and fades in.
// The follower constants are fixed for 44.1 kHz and run shorter at higher rates, by design.
// Allocation only in the constructor. Threads: SetMode and SetBoost on the parameter path (they
// store single values); Process and Reset on the audio thread or while audio is held off.

#include "dsp/Dynamics.h"
#include "dsp/MasterLimitFollower.h"
#include "dsp/ModDelayBuffer.h"
#include "dsp/Relaxed.h"

enum LimiterMode : int
{
    kLimiterOff = 0,
    kLimiterSlowI = 1,
    kLimiterSlowII = 2,
    kLimiterFast = 3,
};

// Shared by every limiter of the process: the last change wins for all instances.
inline Relaxed<double> gLimitKnee{5.0};
inline Relaxed<double> gLimitTrim{1.4};
inline Relaxed<int> gPendingLimiterMode{kLimiterSlowI};

// Per-sample follower coefficients for 0.5 ms .. 2 s at 44.1 kHz, computed once at load.
extern const double gCoef05ms;
extern const double gCoef3ms;
extern const double gCoef10ms;
extern const double gCoef20ms;
extern const double gCoef100ms;
extern const double gCoef1s;
extern const double gCoef2s;

// Knee 5.0 in SLOW I and 1.5 otherwise; the trim that lifts the slow stage is knee * 0.1 + 0.9.
void SetLimiterCurve(int mode);

class MasterLimiter : public Dynamics
{
  public:
    static constexpr int kFollowers = 6;

    explicit MasterLimiter(bool isRight = false);

    // With fade: out, switch to `mode` at silence, back in. Without: switches at once.
    void SetMode(int mode, bool fade);
    // The generic mode slot switches at once.
    void SetMode(int mode) override { SetMode(mode, false); }
    // Input boost in dB, applied before detection.
    void SetBoost(double dB);
    void OnLevelChanged() override;

    void Reset() override;
    // Inputs mIn1, mIn2; outputs mOut1, mOut2; 32 samples.
    void Process() override;

    Relaxed<double> mBoostDb{0.0};
    double mRmsState = 1.0;
    Relaxed<double> mBoostGain{1.0};
    double mRmsCoef = 0.0;
    double mL[gBlockLen] = {};
    double mR[gBlockLen] = {};
    double mDetect[gBlockLen] = {};
    double mG1[gBlockLen] = {};
    double mW[gBlockLen] = {};
    double mP[gBlockLen] = {};
    Relaxed<int> mMode{kLimiterSlowI};
    MasterLimitFollower mFollower[kFollowers];
    ModDelayBuffer mDelayL;
    ModDelayBuffer mDelayR;
    ModDelayBuffer mDelayDetect;

  private:
    void SlowStage(int mode);
    void StepFade();
};
