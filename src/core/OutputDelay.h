#pragma once
// The output stage's whole-sample delay of one channel, block in and block out: the delay the
// limiter's look-ahead adds to the wet signal, applied to the dry one (or to the sum when the
// limiter is off) so that both stay aligned and the latency does not depend on the limiter mode.
// A ring that steps by whole blocks, its first block mirrored behind its end: a block goes in
// with one pass and comes out with one, two samples to a vector. The ring is a member: nothing
// allocates. Audio thread only (Clear also on reset).

#include <algorithm>

#include "dsp/LanePair.h"
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

    // Pushes the block in(0..31), given as pairs in(i) of samples i and i + 1 for even i, and
    // hands out the block `delay` samples older as pairs out(i, pair). The delay is 0..kMaxDelay
    // and the same from block to block; a change takes effect with the history it finds.
    template <class Source, class Sink> void Run(int delay, Source in, Sink out)
    {
        static_assert(gBlockLen % 2 == 0);
        double* block = mRing + mWrite;
        for (int i = 0; i < gBlockLen; i += 2)
            StorePair(block + i, in(i));
        if (mWrite == 0)
            for (int i = 0; i < gBlockLen; i += 2)
                StorePair(mRing + kLength + i, LoadPair(block + i));
        // Past the end the read goes on in the mirror, so it never wraps.
        const double* from = mRing + ((mWrite - std::clamp(delay, 0, kMaxDelay)) & (kLength - 1));
        for (int i = 0; i < gBlockLen; i += 2)
            out(i, LoadPair(from + i));
        mWrite = (mWrite + gBlockLen) & (kLength - 1);
    }

  private:
    double mRing[kLength + gBlockLen] = {};
    int mWrite = 0;
};
