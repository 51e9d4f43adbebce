#include "ReverbMeasure.h"
#include "reverb/AFdnReverb.h"

#include <gtest/gtest.h>

#include <tuple>

namespace
{
constexpr double kRate = 44100.0;

// The impulse response over `seconds` at a decay time and damping, from a cleared network.
StereoBuffer ImpulseResponse(AFdnReverb& r, double decay, double damp, double seconds)
{
    for (const auto& [index, value] : {std::pair{0, decay}, {1, 0.0}, {2, 0.0}, {3, damp}})
        r.SetParam(index, value);
    r.Reset();
    const int frames = int(seconds * kRate);
    return RenderStereo(r, Impulse(frames), std::vector<double>(size_t(frames), 0.0), frames);
}
} // namespace

// Every line carries the loop gain of its own length, so the whole undamped network falls by 60 dB
// in the decay time it was set to. With damping the highs decay faster than the lows, by the ratio
// the damper law gives: at angular frequency w a line's loss ln g grows to
// ln g + ln(1 - d) - 0.5 ln(1 - 2 d cos w + d^2).
TEST(AFdnReverb, DecayTimeMatchesSettingAndDampingShortensTheHighs)
{
    SetTimeBase(kRate);
    // Damping (0.99 - 1) / 0.89 makes alpha 1 at 44.1 kHz: the dampers are then plain gains.
    const double decay = 2.0, damp = (0.99 - 0.3) / 0.89, none = (0.99 - 1.0) / 0.89; // alpha = 0.3
    for (const auto& [name, lines, modLines, third] : {std::tuple{"hall", 16, 7, 1}, {"room", 10, 2, 4}})
    {
        AFdnReverb r(lines, modLines, third);
        for (double undamped : {1.0, 2.5})
        {
            const StereoBuffer out = ImpulseResponse(r, undamped, none, undamped * 1.3);
            EXPECT_NEAR(MeasureRt60(out.left, out.right, kRate), undamped, 0.1 * undamped)
                << name << undamped;
        }
        const StereoBuffer out = ImpulseResponse(r, decay, damp, 3.0);
        // Two band-pass passes, so that the slower skirts of the band do not take over the tail.
        const auto band = [](const std::vector<double>& x, double hz)
        { return BandPass(BandPass(x, hz, 8.0, kRate), hz, 8.0, kRate); };
        const double low = MeasureRt60(band(out.left, 300.0), band(out.right, 300.0), kRate);
        const double high = MeasureRt60(band(out.left, 8000.0), band(out.right, 8000.0), kRate);
        const double g = r.mGainLine[lines / 2], d = r.mDampCoef[lines / 2];
        const auto lossAt = [&](double hz)
        {
            const double w = 2.0 * std::numbers::pi * hz / kRate;
            return std::log(g) + std::log(1.0 - d) - 0.5 * std::log(1.0 - 2.0 * d * std::cos(w) + d * d);
        };
        const double expected = lossAt(300.0) / lossAt(8000.0);
        EXPECT_NEAR(low, decay, 0.15 * decay) << name;
        EXPECT_TRUE(std::fabs(high / low - expected) < 0.15 * expected && high / low < 0.6)
            << name << " low " << low << " high " << high << " expected " << expected;
    }
}
