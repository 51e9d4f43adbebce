#pragma once
// Fixed delay in single precision: a ring of floats walked by pointers, for the reverb lines and
// pre-delays. A line built for up to D samples holds D + 11 so that readers that look one or two
// samples past the delay stay inside. Allocate only at set-up (constructor or Allocate, never while
// processing); afterwards the line belongs to the audio thread, which writes through Write and reads
// through Read or ReadBehind. Clear keeps the pointers and the delay.

#include "dsp/DSPShell.h"

#include <memory>

class MDelayLine : public Module
{
  public:
    static constexpr int kSpare = 11; // samples beyond the largest delay

    MDelayLine() = default;
    explicit MDelayLine(int maxDelay) { Allocate(maxDelay); }
    MDelayLine(const MDelayLine&) = delete;
    MDelayLine& operator=(const MDelayLine&) = delete;

    // Zeroes the whole ring; a line that was never allocated stays as it is.
    void Clear() override;
    // Bytes of the ring.
    int Size() const override { return mSize * 4; }

    // Builds a zeroed ring for delays up to maxDelay, frees an earlier one, puts the writer at the
    // start and the read head mDelay (limited to the new maximum) behind it. Set-up threads only.
    void Allocate(int maxDelay);

    // Sets mDelay, limited to 0..mMaxDelay, and puts mRead that far behind the writer. Reading before
    // writing in a sample then gives the sample written mDelay samples earlier (mDelay >= 1).
    void SetDelay(int samples);

    // Stores one sample at the writer and moves it on, wrapping at the end of the ring.
    void Write(float x)
    {
        *mWrite = x;
        if (++mWrite == mEnd) mWrite = mBase;
    }

    // Sample under the read head, which then moves on by one with wrap.
    float Read()
    {
        const float x = *mRead;
        if (++mRead == mEnd) mRead = mBase;
        return x;
    }

    // Sample k positions behind the writer (0 <= k <= mSize): read before the write of a sample, k = d
    // gives the sample written d samples earlier.
    float ReadBehind(int k) const
    {
        const int pos = int(mWrite - mBase) - k;
        return mBase[pos < 0 ? pos + mSize : pos];
    }

    std::unique_ptr<float[]> mStorage; // owns the ring; new[] aligns at least to 16 bytes
    float* mBase = nullptr;
    float* mEnd = nullptr;
    int mSize = 0;
    float* mWrite = nullptr;
    float* mRead = nullptr;
    int mMaxDelay = 0;
    int mDelay = 0;
};
