#pragma once
// The output stage's whole-sample delay of one channel, block in and block out: the delay the
// limiter's look-ahead adds to the wet signal, applied to the dry one (or to the sum when the
// limiter is off) so that both stay aligned and the latency does not depend on the limiter mode.
// The buffer is a member: nothing allocates. Audio thread only (Clear also on reset).

#include "dsp/TimeBase.h"

class OutputDelay
{
  public:
    // Longest delay: 1 ms at the highest internal rate; the buffer holds it plus one block.
    static constexpr int kMaxDelay = 96;
    static constexpr int kLength = 128;
    static_assert(kMaxDelay + gBlockLen <= kLength);

    void Clear();
    // Writes the 32 samples of `in` to `out` delayed by `delay` samples (0..kMaxDelay, the same
    // from block to block; a change takes effect with the history it finds).
    void Run(const double* in, double* out, int delay);

    double mDryDelay[kLength] = {};
};
