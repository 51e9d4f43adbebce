#pragma once
// Peak tracker of the master limiter: a held value that decays by `hold` per sample, followed by
// an envelope that rises by `rise` and falls by `fall` (a coefficient of 0 makes a stage instant).
// Elements at or below 1e-15 in magnitude pass untouched and move no state, so silence freezes it.
// Audio thread only; Reset puts both states back to 1.0.

#include "dsp/Dynamics.h"

#include <cmath>

// One sample of the follower on states held by the caller (so that a loop can keep them in
// registers beside other work); returns the output, or x itself when it is too small to count.
inline double LimitFollowStep(double x, double rise, double fall, double hold, double& env, double& held)
{
    if (std::fabs(x) <= 1e-15) return x;
    if (x < held) x = (held - x) * hold + x;
    held = x;
    const double c = x <= env ? fall : rise;
    x = (env - x) * c + x;
    env = x;
    return x;
}

class MasterLimitFollower : public Dynamics
{
  public:
    explicit MasterLimitFollower(bool isRight = false);

    void Reset() override;
    // Replaces each element of the n-sample block by the follower's output.
    void Run(double* block, double rise, double fall, double hold, int n = gBlockLen);

    double mEnv = 1.0;
    double mHold = 1.0;
};
