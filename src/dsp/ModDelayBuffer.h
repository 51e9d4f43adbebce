#pragma once
// Block delay in double precision on a power-of-two ring. Read gives whole-sample delays and points
// straight into the ring when the stretch is contiguous; ReadModulated glides the delay time over
// 10 ms and interpolates with a first-order all-pass, so a fractional delay keeps the high end.
// Allocation happens only in the constructor and in Allocate (set-up, under the engine's lock);
// Clear, Write and the reads belong to the audio thread and never allocate.

#include "dsp/BlockSmoother.h"

inline constexpr int kModDelayDefaultSize = 16384;
inline constexpr int kModDelayOutLen = 128;

class ModDelayBuffer
{
  public:
    ModDelayBuffer();
    ~ModDelayBuffer();
    ModDelayBuffer(const ModDelayBuffer&) = delete;
    ModDelayBuffer& operator=(const ModDelayBuffer&) = delete;

    // Ring of 2^ceil(log2(minLength)) samples, the logarithms taken in single precision; clears
    // everything and sets the time glide to 10 ms at the present sample rate.
    void Allocate(int minLength);
    void Clear();

    // Appends n samples (n <= mSize); mWrite wraps to 0 when it lands exactly on the end.
    void Write(const double* src, int n);

    // n samples (n <= kModDelayOutLen) whose last lies `delay` whole samples behind the last
    // written one; the delay is truncated and limited to mMask. Read-only result: a pointer into
    // the ring when contiguous, else mOut.
    const double* Read(double delay, int n);

    // n samples (n <= gBlockLen) at a glided, fractional delay of at least a tenth of a
    // millisecond, all-pass interpolated; call after Write of the same block. Returns mOut.
    const double* ReadModulated(double delay, int n);

    int mSize = 0;
    int mMask = 0;
    int mWrite = 0;
    double mAllPassState = 0.0;
    double mOut[kModDelayOutLen] = {};
    double* mBuf = nullptr;
    bool mAllocated = false;
    BlockSmoother mTimeSmoother{10.0};

  private:
    void AllocateSize(int size);
};
