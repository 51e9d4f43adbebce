#pragma once
// Modulated delay lines of the reverb. MModDelayLine adds a centre delay, a depth and a modulator to
// the plain ring; MSVRAP1ModDelayLine moves its read head only every mInterval samples (ticking the
// modulator once per move) and between moves walks it at one sample per sample with a constant
// fraction, read through a first-order all-pass whose coefficient is the fraction itself. The DC delay
// at a fraction f is therefore centre - floor(v * depth) - 1 + (1 - f) / (1 + f), not linear in f.
//
// Contract: the ring is allocated before the first Process, and the owner calls Process before
// writing the sample of the same step (Write). The read position is kept for the next head update,
// relative to the writer at the time the centre is set, so a centre set at construction or just
// before an update comes out exact; set in between, it comes out longer by the samples left until
// that update. Allocate and the setters belong to set-up; Process to the audio thread. Clear zeroes
// the ring only, the all-pass state stays.

#include "dsp/MDelayLine.h"
#include "dsp/MSinOsc.h"

class MModDelayLine : public MDelayLine
{
  public:
    MModDelayLine() = default;
    explicit MModDelayLine(int maxDelay) : MDelayLine(maxDelay) {}

    // Builds the ring (see MDelayLine::Allocate) and places the read position for the present centre.
    void Allocate(int maxDelay);

    // Centre delay, limited to 0..mMaxDelay; the read position goes that far behind the writer, and
    // the depth is limited anew to the centre.
    void SetCenterDelay(int samples);
    // Modulation depth in samples, limited to 0..mCenterDelay - 1.
    void SetDepth(int samples);
    // The modulator is not owned; null means no modulation.
    void SetModulator(MModulator* osc) { mOsc = osc; }

    float mReadPos = 0.0f; // read position from mBase at the next head update, with fraction
    int mCenterDelay = 0;
    int mDepth = 0;
    MModulator* mOsc = nullptr;
};

class MSVRAP1ModDelayLine final : public MModDelayLine
{
  public:
    MSVRAP1ModDelayLine() = default;
    explicit MSVRAP1ModDelayLine(int maxDelay) : MModDelayLine(maxDelay) {}

    // Back to the schedule of a new line: the writer at the ring's start, the head placed at the
    // next Process with the centre exactly behind the writer, the all-pass state cleared. Clear
    // leaves all of this. The writer matters: the read position is a float, whose rounding of the
    // modulated fraction depends on where in the ring it stands.
    void Restart()
    {
        if (mBase != nullptr) mWrite = mBase;
        mTick = 0;
        mFrac = 0.0f;
        mLast = 0.0f;
        SetCenterDelay(mCenterDelay);
    }

    // Samples between two head updates, at least 1.
    void SetInterval(int samples) { mInterval = samples < 1 ? 1 : samples; }

    // Next delayed sample. The very first call updates the head, then every mInterval-th.
    virtual float Process()
    {
        if (mTick % mInterval == 0) UpdateHead();
        ++mTick;
        const float x0 = *mRead;
        if (++mRead == mEnd) mRead = mBase;
        const float x1 = *mRead;
        mLast = x0 + (x1 - mLast) * mFrac;
        return mLast;
    }

    int mTick = 0;     // samples since construction (restarted at an update, long before overflow)
    int mInterval = 1; // samples between two head updates
    float mFrac = 0.0f;
    float mLast = 0.0f; // all-pass state: the previous output

  private:
    void UpdateHead();
};
