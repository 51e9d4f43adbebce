#include "ReverbMeasure.h"
#include "common/Noise.h"
#include "reverb/Ambience.h"
#include "reverb/ReverbLaws.h"

#include <gtest/gtest.h>

#include <memory>
#include <numeric>

namespace
{
constexpr double kRate = 44100.0;

std::unique_ptr<Ambience> MakeAmbience(double size, double decay, double modulation, double damp)
{
    SetTimeBase(kRate);
    auto a = std::make_unique<Ambience>();
    for (const auto& [index, value] : {std::pair{0, size}, {1, decay}, {2, modulation}, {3, damp}})
        a->SetParam(index, value);
    a->Init();
    return a;
}

} // namespace

// The loop is a Householder reflection times the decay, so the tail falls at about 20 log10(decay)
// dB per trip round the loop: one block plus the mean line delay.
TEST(Ambience, TailDecaysAtTheRateOfItsLoopGain)
{
    const int frames = int(4.0 * kRate);
    for (double control : {20.0, 50.0, 80.0, 95.0})
    {
        const double decay = AmbienceDecay(control);
        auto a = MakeAmbience(AmbienceSize(0.0), decay, 1.0, 1.0);
        // A burst of noise, then silence (RenderStereo pads it).
        const StereoBuffer out =
            RenderStereo(*a, testnoise::Noise(2048, 1.0, 1), testnoise::Noise(2048, 1.0, 2), frames);

        const double meanTrip =
            gBlockLen + 0.25 * AmbienceSize(0.0) *
                            std::accumulate(std::begin(a->mBaseLength), std::end(a->mBaseLength), 0.0);
        const double expectedDbPerSecond = 20.0 * std::log10(decay) * kRate / meanTrip;

        // Energy in half-second windows from 0.5 s on: each one below the one before.
        const size_t window = size_t(0.5 * kRate);
        std::vector<double> levels;
        for (size_t from = window; from + window <= size_t(frames); from += window)
        {
            const double e = std::pow(testmeasure::Rms(out.left, from, from + window), 2) +
                             std::pow(testmeasure::Rms(out.right, from, from + window), 2);
            if (e < 1e-30) break; // fallen below anything measurable
            levels.push_back(10.0 * std::log10(e));
        }
        ASSERT_GE(levels.size(), 2u) << control;
        for (size_t k = 1; k < levels.size(); ++k)
            EXPECT_LT(levels[k], levels[k - 1]) << "decay control " << control << " window " << k;
        const double measured = (levels.back() - levels.front()) / (0.5 * double(levels.size() - 1));
        EXPECT_NEAR(measured, expectedDbPerSecond, 0.25 * std::fabs(expectedDbPerSecond)) << control;
    }
}

// With decay 0 the output is the line read once: an impulse returns after the line's delay, 4297
// samples per unit of size on the left and 1669 on the right, the rings holding the longest line at
// size 6. Chaos depth 0 keeps that delay fixed while the attractor runs on, so every pulse gives the
// same echo; depth 1 makes it wander.
TEST(Ambience, ChaosDepthZeroHoldsTheFirstLinesAndSizeIsHeldAtSix)
{
    const int period = 32768, pulses = 6;
    for (const auto& [size, modulation] : {std::pair{1.2, 0.0}, {1.2, 1.0}, {7.0, 0.0}})
    {
        auto a = MakeAmbience(size, 0.0, modulation, 1.0);
        // Undamped, so that the echo is the bare fractional delay.
        a->mDampL.SetBypass(true);
        a->mDampR.SetBypass(true);
        std::vector<double> in(size_t(period) * pulses, 0.0);
        for (int p = 0; p < pulses; ++p)
            in[size_t(p) * period] = 1.0;
        const double xBefore = a->mX;
        const StereoBuffer out = RenderStereo(*a, in, in, int(in.size()));
        EXPECT_NE(a->mX, xBefore) << "the attractor runs in either case";
        double worstChange = 0.0;
        for (const auto& [side, unit] : {std::pair{&out.left, 4297.0}, {&out.right, 1669.0}})
        {
            for (int p = 1; p < pulses; ++p)
                for (int i = 0; i < period; ++i)
                    worstChange = std::max(worstChange,
                                           std::fabs((*side)[size_t(p * period + i)] - (*side)[size_t(i)]));
            const auto peak =
                std::max_element(side->begin(), side->begin() + period,
                                 [](double u, double v) { return std::fabs(u) < std::fabs(v); });
            const double at = double(peak - side->begin());
            EXPECT_TRUE(modulation != 0.0 || std::fabs(at - std::min(size, 6.0) * unit) <= 1.0)
                << size << " " << at;
        }
        EXPECT_TRUE(modulation == 0.0 ? worstChange < 1e-9 : worstChange > 0.5) << size << " " << worstChange;
    }
}
