// A bad host buffer must cost one buffer at most. A burst of NaN or infinity in the input counts
// as silence, so the run is the run with the burst zeroed, sample for sample. A burst of absurd
// finite values (1e300) is bounded: every output sample stays finite, and once the patch's tail has
// passed the output is that of the zeroed run again. Patches: the default, every delay mode with
// echoes, feedback at 160 % with the limiter off, every FB effect type, every master effect, at
// 44.1 and 96 kHz.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "EngineRig.h"
#include "params/ValueLists.h"

using namespace engine_rig;

namespace
{
constexpr int kHostBlock = 128;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

using Settings = std::vector<std::pair<int, double>>;

struct Patch
{
    std::string name;
    Settings settings;
    // The patch forgets a burst within the test's length (no sustaining feedback or reverb).
    bool tailEnds = true;
};

std::vector<Patch> Patches()
{
    const Settings echoes = {{kTimebase1, 0.0},
                             {kDirectIn1, 50.0},
                             {kFeedback1, 60.0},
                             {kDelayTimeL1, 120.0},
                             {kDelayTimeR1, 170.0}};
    const auto withEchoes = [&](const std::string& name, const Settings& more)
    {
        Patch p{name, echoes, false};
        p.settings.insert(p.settings.end(), more.begin(), more.end());
        return p;
    };
    std::vector<Patch> patches = {{"default", {}},
                                  {"feedback 160",
                                   {{kTimebase1, 0.0},
                                    {kDirectIn1, 50.0},
                                    {kFeedback1, 160.0},
                                    {kDelayTimeL1, 10.0},
                                    {kDelayTimeR1, 15.0},
                                    {kLimiterOn, 0.0}},
                                   false}};
    for (int m = 0; m < static_cast<int>(kDelayModeList.size()); ++m)
        patches.push_back(withEchoes(std::string("mode ") + kDelayModeList[m], {{kDelayMode1, m}}));
    for (int t = 0; t < static_cast<int>(kFxFeedbackTypeList.size()); ++t)
        if (std::string_view(kFxFeedbackTypeList[t]) != "" &&
            std::string_view(kFxFeedbackTypeList[t]) != "OFF")
            patches.push_back(withEchoes(std::string("FB ") + kFxFeedbackTypeList[t], {{kFXOnFB1, 1.0},
                                                                                       {kFXParam1FB1, 60.0},
                                                                                       {kFXParam2FB1, 70.0},
                                                                                       {kFXParam3FB1, 40.0},
                                                                                       {kFX1FB, t}}));
    for (int t = 1; t < static_cast<int>(kMasterFxTypeList.size()); ++t) // after OFF
        patches.push_back(withEchoes(std::string("master ") + kMasterFxTypeList[t], {{kMasterFXP1, 60.0},
                                                                                     {kMasterFXP2, 70.0},
                                                                                     {kMasterFXP4, 50.0},
                                                                                     {kMasterFXLevel, 100.0},
                                                                                     {kMasterFX, t}}));
    return patches;
}

// Noise at -10 dBFS for the first half, then silence: the patch is busy when the burst comes and
// shows its tail afterwards. The burst (64 samples at 0.25 s) is filled by `burst(i)`.
template <typename Burst> Stereo Input(double rate, double seconds, Burst burst)
{
    const auto n = static_cast<std::size_t>(seconds * rate);
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
    return e.Run(in, kHostBlock);
}

// Index of the first sample that is not finite, or -1.
int FirstNonFinite(const Stereo& s)
{
    for (int i = 0; i < s.Size(); ++i)
        if (!std::isfinite(s.l[i]) || !std::isfinite(s.r[i])) return i;
    return -1;
}

// The largest difference between a and b from `from` on.
double MaxDifference(const Stereo& a, const Stereo& b, std::size_t from)
{
    Stereo d = a;
    for (std::size_t i = 0; i < d.l.size(); ++i)
    {
        d.l[i] -= b.l[i];
        d.r[i] -= b.r[i];
    }
    return Peak(d, static_cast<int>(from));
}

class InputHygiene : public ::testing::TestWithParam<double>
{
};

TEST_P(InputHygiene, NonFiniteBurstIsSilenceInEveryPatch)
{
    const double rate = GetParam();
    const Stereo zeroed = Input(rate, 1.5, [](std::size_t) { return 0.0; });
    // NaN, +inf and -inf in turn.
    const Stereo bad =
        Input(rate, 1.5, [](std::size_t k) { return k % 3 == 0 ? kNaN : (k % 3 == 1 ? kInf : -kInf); });
    for (const Patch& patch : Patches())
    {
        SCOPED_TRACE(patch.name);
        const Stereo expected = Render(patch, rate, zeroed);
        const Stereo got = Render(patch, rate, bad);
        ASSERT_EQ(FirstNonFinite(got), -1);
        ASSERT_EQ(got.l, expected.l);
        ASSERT_EQ(got.r, expected.r);
    }
}

TEST_P(InputHygiene, AbsurdFiniteBurstStaysFiniteAndPasses)
{
    const double rate = GetParam();
    const Stereo zeroed = Input(rate, 1.5, [](std::size_t) { return 0.0; });
    const Stereo huge = Input(rate, 1.5, [](std::size_t k) { return k % 2 == 0 ? 1e300 : -1e300; });
    for (const Patch& patch : Patches())
    {
        SCOPED_TRACE(patch.name);
        const Stereo got = Render(patch, rate, huge);
        ASSERT_EQ(FirstNonFinite(got), -1);
        if (!patch.tailEnds) continue;
        // The default patch holds the burst only in its band limit and output delay: 50 ms is ample.
        const Stereo expected = Render(patch, rate, zeroed);
        EXPECT_EQ(MaxDifference(got, expected, static_cast<std::size_t>(0.3 * rate)), 0.0);
    }
}

// Echoes with a long tail: the same burst is gone once the echoes have decayed below -240 dB of
// the burst, and nothing was left non-finite on the way.
TEST_P(InputHygiene, AbsurdBurstDecaysOutOfTheEchoes)
{
    const double rate = GetParam();
    const Patch patch{"echoes",
                      {{kTimebase1, 0.0},
                       {kDirectIn1, 50.0},
                       {kFeedback1, 30.0},
                       {kDelayTimeL1, 20.0},
                       {kDelayTimeR1, 30.0}}};
    const Stereo zeroed = Input(rate, 2.0, [](std::size_t) { return 0.0; });
    const Stereo huge = Input(rate, 2.0, [](std::size_t) { return 1e300; });
    const Stereo got = Render(patch, rate, huge);
    ASSERT_EQ(FirstNonFinite(got), -1);
    const Stereo expected = Render(patch, rate, zeroed);
    // Right after the burst the difference is the burst itself, bounded at +60 dBFS.
    const double early = MaxDifference(got, expected, static_cast<std::size_t>(0.25 * rate));
    EXPECT_GT(early, 10.0);
    EXPECT_LE(early, 4000.0);
    EXPECT_LT(MaxDifference(got, expected, static_cast<std::size_t>(1.2 * rate)), 1e-9);
}

INSTANTIATE_TEST_SUITE_P(Rates, InputHygiene, ::testing::Values(44100.0, 96000.0));
} // namespace
