// A bad host buffer must cost one buffer at most. A burst of NaN or infinity in the input counts
// as silence, so the run is the run with the burst zeroed, sample for sample. A burst of absurd
// finite values (1e300) is bounded at +60 dBFS: every output sample stays finite, and once the
// patch's tail has passed the output is that of the zeroed run again. Patches: the default, every delay mode
// with echoes, feedback at 160 % with the limiter off, every FB effect type, every master effect, at 44.1 and
// 96 kHz.

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "EngineRig.h"
#include "params/ValueLists.h"

using namespace engine_rig;

namespace
{
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct Patch
{
    std::string name;
    std::vector<std::pair<int, double>> settings;
    // When the patch has forgotten a burst (0: not within the test's length).
    double settledSeconds = 0.0;
};

std::vector<Patch> Patches()
{
    // Echoes of 120 / 170 ms at 60 % feedback and `more` on top of them.
    const auto echoes = [](std::string name, std::vector<std::pair<int, double>> more, int delayL = 120,
                           int delayR = 170, double feedback = 60.0, double settled = 0.0)
    {
        Patch p{std::move(name), {{kTimebase1, 0.0}, {kDirectIn1, 50.0}, {kFeedback1, feedback}}, settled};
        p.settings.insert(p.settings.end(), {{kDelayTimeL1, delayL}, {kDelayTimeR1, delayR}});
        p.settings.insert(p.settings.end(), more.begin(), more.end());
        return p;
    };
    // The default patch holds the burst only in its band limit and output delay: 50 ms is ample.
    // Short echoes at 30 % feedback fall below -240 dB of the burst well within a second.
    std::vector<Patch> patches = {{"default", {}, 0.3},
                                  echoes("echoes", {}, 20, 30, 30.0, 1.2),
                                  echoes("feedback 160", {{kLimiterOn, 0.0}}, 10, 15, 160.0)};
    for (int m = 0; m < static_cast<int>(kDelayModeList.size()); ++m)
        patches.push_back(echoes(std::string("mode ") + kDelayModeList[m], {{kDelayMode1, m}}));
    using Settings = std::vector<std::pair<int, double>>;
    const Settings fb = {{kFXOnFB1, 1}, {kFXParam1FB1, 60}, {kFXParam2FB1, 70}, {kFXParam3FB1, 40}};
    const Settings master = {{kMasterFXP1, 60}, {kMasterFXP2, 70}, {kMasterFXP4, 50}, {kMasterFXLevel, 100}};
    for (int t = 0; t < static_cast<int>(kFxFeedbackTypeList.size()); ++t)
        if (const std::string_view type = kFxFeedbackTypeList[t]; type != "" && type != "OFF")
        {
            patches.push_back(echoes("FB " + std::string(type), fb));
            patches.back().settings.push_back({kFX1FB, t});
        }
    for (int t = 1; t < static_cast<int>(kMasterFxTypeList.size()); ++t) // after OFF
    {
        patches.push_back(echoes(std::string("master ") + kMasterFxTypeList[t], master));
        patches.back().settings.push_back({kMasterFX, t});
    }
    return patches;
}

// Noise at -10 dBFS for the first half of 1.5 s, then silence: the patch is busy when the burst
// comes and shows its tail afterwards. The burst (64 samples at 0.25 s) is filled by `burst(k)`.
template <typename Burst> Stereo Input(double rate, Burst burst)
{
    const auto n = static_cast<std::size_t>(1.5 * rate);
    Stereo in(n);
    testnoise::NoiseSource noise{777u};
    for (std::size_t i = 0; i < n / 2; ++i)
    {
        in.l[i] = noise.Next(0.3);
        in.r[i] = noise.Next(0.3);
    }
    const auto at = static_cast<std::size_t>(0.25 * rate);
    for (std::size_t k = 0; k < 64; ++k)
    {
        in.l[at + k] = burst(k);
        in.r[at + k] = burst(k + 1);
    }
    return in;
}

Stereo Render(const Patch& patch, double rate, const Stereo& in)
{
    Engine e(rate);
    for (const auto& [id, value] : patch.settings)
        e.Set(id, value);
    return e.Run(in, 128);
}

// The largest difference between a and b from `from` on; infinite where either is not finite.
double MaxDifference(const Stereo& a, const Stereo& b, std::size_t from)
{
    double most = 0.0;
    for (std::size_t i = from; i < a.l.size(); ++i)
        for (double d : {a.l[i] - b.l[i], a.r[i] - b.r[i]})
            most = std::isfinite(d) ? std::max(most, std::abs(d)) : kInf;
    return most;
}

class InputHygiene : public ::testing::TestWithParam<double>
{
};

TEST_P(InputHygiene, NonFiniteBurstIsSilenceAndAbsurdOnePassesInEveryPatch)
{
    const double rate = GetParam();
    const Stereo zeroed = Input(rate, [](std::size_t) { return 0.0; });
    // NaN, +inf and -inf in turn; then +-1e300.
    const Stereo bad =
        Input(rate, [](std::size_t k) { return k % 3 == 0 ? kNaN : (k % 3 == 1 ? kInf : -kInf); });
    const Stereo huge = Input(rate, [](std::size_t k) { return k % 2 == 0 ? 1e300 : -1e300; });
    for (const Patch& patch : Patches())
    {
        SCOPED_TRACE(patch.name);
        const Stereo expected = Render(patch, rate, zeroed);
        ASSERT_EQ(Render(patch, rate, bad), expected); // a NaN anywhere would differ
        const Stereo got = Render(patch, rate, huge);
        ASSERT_LT(MaxDifference(got, expected, 0), kInf);
        if (patch.settledSeconds == 0.0) continue;
        // Right after the burst the difference is the burst itself, bounded at +60 dBFS.
        const double early = MaxDifference(got, expected, static_cast<std::size_t>(0.25 * rate));
        EXPECT_GT(early, 10.0);
        EXPECT_LE(early, 4000.0);
        EXPECT_LT(MaxDifference(got, expected, static_cast<std::size_t>(patch.settledSeconds * rate)), 1e-9);
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, InputHygiene, ::testing::Values(44100.0, 96000.0));
} // namespace
