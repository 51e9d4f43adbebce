#include <gtest/gtest.h>

#include "EngineRig.h"
#include "params/ModRouting.h"

// The modulation routing of the delay times as the whole plug-in runs it (the master section's laws
// are tested in the core suite, its wiring by the golden summaries).

using namespace engine_rig;

namespace
{
// Delay times: a source on "Delay TimeL/R" lengthens both sides by depth x source (full depth is
// 25 ms), one on the spread ("Delay ModDepth", also 25 ms at full depth) lengthens the left and
// shortens the right. 0.4 on the first and 0.2 on the second (two LFOs held at those values):
// left +15 ms, right +5 ms.
TEST(ModWiring, RoutedSourcesMoveTheEchoes)
{
    const int at = 19200 + 3;
    Stereo in(at + 9600);
    in.l[at] = in.r[at] = 1.0;
    int peaks[2][2] = {};
    for (int routed = 0; routed < 2; ++routed)
    {
        Rig rig; // echoes only, pure delays
        rig.Set({{kDelayOn1, 1.0}, {kDirectIn1, 100.0}, {kFeedback1, 0.0}, {kModulation1, 0.0}});
        rig.Set({{kTimebase1, 0.0}, {kDelayLopass1, 20000.0}, {kDelayHipass1, 20.0}});
        rig.Set({{kDelayTimeL1, 100.0}, {kDelayTimeR1, 100.0}});
        if (routed == 1)
        {
            rig.Set({{kDelayTimeLModSource1, kModSourceLFO1}, {kDelayTimeRModSource1, kModSourceLFO1}});
            rig.Set({{kDelaySpreadModSource1, kModSourceLFO1 + 1}, {kDelayTimeLModDepth1, 100.0}});
            rig.Set({{kDelayTimeRModDepth1, 100.0}, {kDelayModDepth1, 100.0}});
            // Two LFOs that hold still: the first half of a square at the slowest rate.
            HoldLfo(rig, 0, 40.0);
            HoldLfo(rig, 1, 20.0);
        }
        const Stereo out = rig.Run(in);
        peaks[routed][0] = PeakIndex(out.l, at, out.Size());
        peaks[routed][1] = PeakIndex(out.r, at, out.Size());
    }
    // Unrouted, both echoes sit 100 ms behind the impulse's way through the plug-in.
    for (int side : {0, 1})
        EXPECT_NEAR(peaks[0][side] - at, 4800 + 2 * kBlock + kMs, 3);
    EXPECT_NEAR(peaks[1][0] - peaks[0][0], 720, 1); // 15 ms
    EXPECT_NEAR(peaks[1][1] - peaks[0][1], 240, 1); // 5 ms
}
} // namespace
