#include "dsp/TimeBase.h"
#include "modulators/MultiLFO.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

// An hour of blocks at 44.1 kHz for every rate: the integration must not run away. L+ stays inside
// -1 .. 1; R+ follows y, whose attractor reaches about -16.5, so it dips to about -1.17 by design.
// From 10 % on, an hour covers the whole attractor: a wide swing, not a stuck value. The negative
// pair mirrors the positive one.
TEST(MultiLFO, RoesslerStaysBoundedForEveryRateOverAnHour)
{
    SetTimeBase(44100.0);
    const long ticks = static_cast<long>(3600.0 * 44100.0 / gBlockLen);
    for (int percent = 0; percent <= 100; percent += 10)
    {
        SCOPED_TRACE(percent);
        MultiLFO lfo;
        lfo.SetModRate(percent);
        lfo.Reset();
        double lo[2] = {0.0, 0.0}, hi[2] = {0.0, 0.0};
        for (long i = 0; i < ticks; ++i)
        {
            lfo.Tick();
            for (int k = 0; k < 2; ++k)
            {
                lo[k] = std::min(lo[k], lfo.Out(k));
                hi[k] = std::max(hi[k], lfo.Out(k));
            }
        }
        const bool swings = percent >= 10;
        EXPECT_TRUE(std::isfinite(lfo.Out(0)) && std::isfinite(lfo.Out(1)));
        EXPECT_TRUE(lo[0] > -1.0 && hi[0] < 1.0 && lo[1] > -1.2 && hi[1] < 1.0)
            << lo[0] << " " << hi[0] << " " << lo[1] << " " << hi[1];
        EXPECT_TRUE(!swings || (lo[0] < -0.7 && hi[0] > 0.85 && lo[1] < -1.05 && hi[1] > 0.85))
            << lo[0] << " " << hi[0] << " " << lo[1] << " " << hi[1];
        EXPECT_EQ(lfo.Out(MultiLFO::kLMinus), -lfo.Out(MultiLFO::kLPlus));
        EXPECT_EQ(lfo.Out(MultiLFO::kRMinus), -lfo.Out(MultiLFO::kRPlus));
    }
}
