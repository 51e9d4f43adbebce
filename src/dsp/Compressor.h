#pragma once
// One channel of the compressor effect (the effect runs two): RMS detection in dB above the
// threshold, the shared follower curve, a gain from the ratio with makeup, smoothed at block rate,
// applied to the input delayed by a 10 ms look-ahead that stays in the signal path as latency.
// The look-ahead ring is allocated at construction and again by Reset only when the sample rate
// changed its length (the engine resets under its lock); Process never allocates.
// Threads: SetParam on the parameter path; Process and Reset on the audio thread or while audio
// is held off.

#include "dsp/Dynamics.h"
#include "dsp/ModDelayBuffer.h"
#include "dsp/Relaxed.h"

class Compressor : public Dynamics
{
  public:
    explicit Compressor(bool isRight = false);

    // 0 threshold (linear level), 1 ratio, 2 attack ms, 3 release ms (both stored doubled),
    // 4 makeup 0..1 (0 .. +24 dB).
    void SetParam(int id, double value) override;
    void Reset() override;
    void Process() override;

    Relaxed<double> mRatio{1.0};
    double mGainState = 1.0;
    ModDelayBuffer mDelay;
    int mLookAhead = 0;
    Relaxed<double> mMakeup{0.0};

  private:
    // Look-ahead length for the present rate; re-allocates the ring if that length needs another.
    void PrepareLookAhead();
};
