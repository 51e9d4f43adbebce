#pragma once
// Gain ramp of a mode change: fades out, lets the owner switch at silence, fades back in. The owner
// steps it once per 32-sample block and applies the square of mGain. Step sizes are fixed for
// 44.1 kHz whatever the rate, so the fades run shorter at higher rates.
// Threads: mFadeOut may be raised from the parameter path; everything else belongs to the owner's
// Process and Reset.

#include "dsp/Relaxed.h"

class FadeRamp
{
  public:
    // Clears a pending switch and sets each step to 32 / (ms * 44100 * 0.001), or 1 for 0 ms.
    void Prepare();

    Relaxed<bool> mFadeOut{false};
    bool mFadeIn = false;
    bool mSwitchNow = false;
    double mInStep = 0.0;
    double mOutStep = 0.0;
    double mInMs = 50.0;
    double mOutMs = 50.0;
    double mGain = 1.0;
};
