#include "core/EngineFade.h"

#include "dsp/TimeBase.h"

void EngineFade::Prepare()
{
    mFadeStep = gBlockLen / (gSampleRate * kFadeMs * 0.001);
}

double EngineFade::Step()
{
    if (!mFadeStart && !mFadeRunning)
    {
        mFade = 1.0;
    }
    else if (mFadeStart)
    {
        mFadeRamp = 0.0;
        mFadeStart = false;
        mFadeRunning = true;
        mFade = 0.0;
    }
    else
    {
        mFadeRamp += mFadeStep;
        mFadeRunning = mFadeRamp < 1.0;
        // The square keeps the start soft: a linear gain rise is heard as a click at low levels.
        mFade = mFadeRamp * mFadeRamp;
    }
    return mFade;
}
