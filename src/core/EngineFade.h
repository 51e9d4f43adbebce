#pragma once
// Fade-in of the engine after a reset or a change of tap time base: a linear ramp from 0 to 1 over
// 100 ms, stepped once per 32-sample block, whose square is the block gain. The gain is 1.0 while
// no fade runs; the block that ends a fade may lie a fraction of a step above 1.0.
// Threads: Request from the reset or the parameter path; Prepare on reset, with audio held off or
// on the audio thread; Step on the audio thread.

#include "dsp/Relaxed.h"

class EngineFade
{
  public:
    static constexpr double kFadeMs = 100.0;

    // Step size for the present gSampleRate.
    void Prepare();
    // The next block starts a new fade from silence.
    void Request() { mFadeStart = true; }
    // Once per block: advances the ramp and returns the block's gain, also kept in mFade.
    double Step();
    bool Running() const { return mFadeStart || mFadeRunning; }

    double mFade = 1.0;
    double mFadeRamp = 1.0;
    double mFadeStep = 0.0;
    Relaxed<bool> mFadeStart{false};
    bool mFadeRunning = false;
};
