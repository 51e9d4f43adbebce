#include <gtest/gtest.h>

#include <vector>

#include "core/OutputDelay.h"
#include "dsp/TimeBase.h"

// Block after block the output is the input `delay` samples late, with silence before it, for
// delays that start the read inside the ring, at its seam and across it; a delay beyond the
// longest is held at the longest, and Clear forgets the history.
TEST(OutputDelay, EveryBlockComesOutExactlyDelaySamplesLate)
{
    constexpr int kBlocks = 13; // more than a turn of the ring from every start
    for (const int delay : {0, 1, 31, 32, 33, 44, 95, 96, 500})
    {
        const int expected = std::min(delay, OutputDelay::kMaxDelay);
        OutputDelay line;
        for (int pass = 0; pass < 2; ++pass)
        {
            std::vector<double> out(kBlocks * gBlockLen, -1.0);
            for (int b = 0; b < kBlocks; ++b)
                line.Run(
                    delay,
                    [b, pass](int i)
                    {
                        const double v = 1.0 + b * gBlockLen + i + 1000.0 * pass;
                        return LanePair{v, v + 1.0};
                    },
                    [&out, b](int i, LanePair v)
                    {
                        out[static_cast<std::size_t>(b * gBlockLen + i)] = v[0];
                        out[static_cast<std::size_t>(b * gBlockLen + i + 1)] = v[1];
                    });
            for (int i = 0; i < kBlocks * gBlockLen; ++i)
            {
                const double want = i < expected ? 0.0 : 1.0 + (i - expected) + 1000.0 * pass;
                ASSERT_EQ(out[static_cast<std::size_t>(i)], want) << "delay " << delay << " sample " << i;
            }
            line.Clear();
        }
    }
}
