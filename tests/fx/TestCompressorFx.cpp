#include "fx/CompressorFx.h"
#include "fx/FxRig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <vector>

using namespace filtertest;

namespace
{
// Output over input level, in dB, of a steady sine whose period is one block, every block bit for
// bit the same (the follower releases on any drop of the level, even by rounding), measured over the
// last 0.2 s of 2 s.
double SteadyGainDb(CompressorFx& c, double rmsDb)
{
    const double amp = std::sqrt(2.0) * std::pow(10.0, rmsDb / 20.0);
    const int total = int(2.0 * gSampleRate) / gBlockLen * gBlockLen;
    std::vector<double> x(total);
    for (int n = 0; n < total; ++n)
        x[n] = amp * std::sin(2.0 * M_PI * double(n % gBlockLen) / gBlockLen);
    const std::vector<double> y = RunBlocks(c, x);
    const int from = total - int(0.2 * gSampleRate);
    double sx = 0, sy = 0;
    for (int n = from; n < total; ++n)
    {
        sx += x[n] * x[n];
        sy += y[n] * y[n];
    }
    return 10.0 * std::log10(sy / sx);
}
} // namespace

// Threshold -30 dB (knob 0.5), a signal 20 dB above it: ratio 4 takes off 15 dB, ratio 2 10 dB, and
// the makeup knob adds 24 dB per unit on top. The compressor's own law (knee, ratio 1, below the
// threshold) is measured in the dynamics suite.
TEST(CompressorFx, SteadyReductionFollowsRatio)
{
    for (const auto& [ratio, makeup, want] : {std::tuple{4.0, 0.0, -15.0}, {2.0, 0.5, -10.0 + 12.0}})
    {
        CompressorFx comp(false);
        fxrig::SetParams(comp, {0.5, std::sqrt((ratio - 1.0) / 19.0), 0.3, 0.3, makeup}); // 1 + 19 x^2
        EXPECT_NEAR(SteadyGainDb(comp, -10.0), want, 0.1) << "ratio " << ratio;
    }
}
