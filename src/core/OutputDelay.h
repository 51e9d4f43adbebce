#pragma once
// The output stage's whole-sample delay of one channel, block in and block out: the delay the
// limiter's look-ahead adds to the wet signal, applied to the dry one (or to the sum when the
// limiter is off) so that both stay aligned and the latency does not depend on the limiter mode.
// A ring that steps by whole blocks: a block goes in with one pass and comes out with one pass,
// in at most two runs. The ring is a member: nothing allocates. Audio thread only (Clear also on
// reset).

#include <algorithm>

#include "dsp/TimeBase.h"

class OutputDelay
{
  public:
    // Longest delay: 1 ms at the highest internal rate; the ring holds it plus one block.
    static constexpr int kMaxDelay = 96;
    static constexpr int kLength = 128;
    static_assert(kMaxDelay + gBlockLen <= kLength && kLength % gBlockLen == 0);
    static_assert((kLength & (kLength - 1)) == 0);

    void Clear();

    // Pushes the block in(0..31) and hands each sample of the block `delay` samples older to
    // out(i, sample). The delay is 0..kMaxDelay and the same from block to block; a change takes
    // effect with the history it finds.
    template <class Source, class Sink> void Run(int delay, Source in, Sink out)
    {
        double* block = mRing + mWrite;
        for (int i = 0; i < gBlockLen; ++i)
            block[i] = in(i);
        const int from = (mWrite - std::clamp(delay, 0, kMaxDelay)) & (kLength - 1);
        const int first = std::min(gBlockLen, kLength - from);
        for (int i = 0; i < first; ++i)
            out(i, mRing[from + i]);
        for (int i = first; i < gBlockLen; ++i)
            out(i, mRing[i - first]);
        mWrite = (mWrite + gBlockLen) & (kLength - 1);
    }

  private:
    double mRing[kLength] = {};
    int mWrite = 0;
};
