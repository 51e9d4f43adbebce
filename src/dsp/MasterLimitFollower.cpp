#include "dsp/MasterLimitFollower.h"

#include <cmath>

MasterLimitFollower::MasterLimitFollower(bool isRight) : Dynamics(isRight) {}

void MasterLimitFollower::Reset()
{
    Dynamics::Reset();
    mEnv = 1.0;
    mHold = 1.0;
}

void MasterLimitFollower::Run(double* block, double rise, double fall, double hold, int n)
{
    double env = mEnv;
    double held = mHold;
    for (int i = 0; i < n; ++i)
    {
        double x = block[i];
        if (std::fabs(x) <= 1e-15) continue;
        if (x < held) x = (held - x) * hold + x;
        held = x;
        const double c = x <= env ? fall : rise;
        x = (env - x) * c + x;
        env = x;
        block[i] = x;
    }
    mEnv = env;
    mHold = held;
}
