#include "dsp/MasterLimitFollower.h"

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
        block[i] = LimitFollowStep(block[i], rise, fall, hold, env, held);
    mEnv = env;
    mHold = held;
}
