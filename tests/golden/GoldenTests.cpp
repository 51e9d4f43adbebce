#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "GoldenPatches.h"
#include "GoldenSummary.h"
#include "common/Noise.h"
#include "dsp/WideLanes.h"
#include "engine/Quorvex.h"
#include "params/IParamRecord.h"
#include "params/ParamCatalogue.h"

// Every golden patch rendered through the engine at 44.1 and 96 kHz and reduced to its summary,
// compared with the stored summaries. After an intended change of the sound, regenerate them with
//   QUORVEX_GOLDEN_WRITE=1 ./build/release/tests/quorvex_golden_tests
// and say in the commit why the sound changed.

namespace
{
constexpr double kSeconds = 2.5;
constexpr int kHostBlock = 128;
const double kRates[] = {44100.0, 96000.0};

// A decaying noise burst, then a short two-tone chord and a click: transients for the echo
// positions, tones for the spectra, silence for the tails.
void Phrase(double rate, std::vector<double>& l, std::vector<double>& r)
{
    const auto n = static_cast<std::size_t>(kSeconds * rate);
    l.assign(n, 0.0);
    r.assign(n, 0.0);
    testnoise::NoiseSource noise{12345u};
    for (std::size_t i = 0; i < static_cast<std::size_t>(0.05 * rate); ++i)
    {
        const double env = 0.6 * std::exp(-static_cast<double>(i) / (0.01 * rate));
        l[i] = env * noise.Next();
        r[i] = env * noise.Next();
    }
    const auto from = static_cast<std::size_t>(0.5 * rate);
    const auto to = static_cast<std::size_t>(0.62 * rate);
    for (std::size_t i = from; i < to; ++i)
    {
        const double t = static_cast<double>(i - from) / rate;
        const double fade =
            std::sin(std::numbers::pi * static_cast<double>(i - from) / static_cast<double>(to - from));
        l[i] = 0.4 * fade * std::sin(2.0 * std::numbers::pi * 440.0 * t);
        r[i] = 0.4 * fade * std::sin(2.0 * std::numbers::pi * 659.25 * t);
    }
    const auto click = static_cast<std::size_t>(1.0 * rate);
    l[click] = 0.9;
    r[click + 7] = -0.7;
}

int FindParam(const Quorvex& plug, std::string_view name)
{
    for (int id = 0; id < kNumParams; ++id)
        if (ParamName(id) == name) return id;
    return -1;
}

// Applies "Name=value" in order, as the host would set them; a bad setting fails the test.
void Apply(Quorvex& plug, std::string_view setting)
{
    const std::size_t eq = setting.find('=');
    ASSERT_NE(eq, std::string_view::npos) << setting;
    const int id = FindParam(plug, setting.substr(0, eq));
    ASSERT_GE(id, 0) << "no parameter named in " << setting;
    IParamRecord* param = plug.GetParam(id);
    const std::string text(setting.substr(eq + 1));
    double value = 0.0;
    if (!param->GetValueFromDisplayText(text, value))
    {
        char* end = nullptr;
        value = std::strtod(text.c_str(), &end);
        ASSERT_TRUE(end != text.c_str() && *end == '\0') << "no value in " << setting;
    }
    ASSERT_TRUE(value >= param->min && value <= param->max) << setting;
    param->value = value;
    plug.OnParamChange(id);
}

GoldenSummary Render(const GoldenPatch& patch, double rate)
{
    std::unique_ptr<Quorvex, void (*)(Quorvex*)> plug(new Quorvex(), [](Quorvex* q) { q->release(); });
    plug->SetSampleRate(rate);
    for (std::string_view setting : patch.settings)
        Apply(*plug, setting);
    std::vector<double> inL, inR;
    Phrase(rate, inL, inR);
    std::vector<double> outL(inL.size()), outR(inR.size()), silence(kHostBlock, 0.0);
    for (std::size_t done = 0; done < inL.size(); done += kHostBlock)
    {
        const int n = static_cast<int>(std::min<std::size_t>(kHostBlock, inL.size() - done));
        double* ins[4] = {inL.data() + done, inR.data() + done, silence.data(), silence.data()};
        double* outs[2] = {outL.data() + done, outR.data() + done};
        plug->ProcessDoubleReplacing(ins, outs, n);
    }
    return GoldenSummary::Of(outL, outR, rate);
}

std::string Key(const GoldenPatch& patch, double rate)
{
    return std::string(patch.name) + "@" + std::to_string(static_cast<int>(rate));
}

std::map<std::string, std::string> ReadStored()
{
    std::map<std::string, std::string> stored;
    std::ifstream in(QUORVEX_GOLDEN_FILE);
    std::string line;
    while (std::getline(in, line))
    {
        const std::size_t space = line.find(' ');
        if (line.empty() || line[0] == '#' || space == std::string::npos) continue;
        stored[line.substr(0, space)] = line.substr(space + 1);
    }
    return stored;
}
void ExpectEveryPatchAsStored()
{
    const std::map<std::string, std::string> stored = ReadStored();
    ASSERT_EQ(stored.size(), GoldenPatches().size() * std::size(kRates))
        << "summaries missing: regenerate them";
    for (const GoldenPatch& patch : GoldenPatches())
        for (double rate : kRates)
        {
            const std::string key = Key(patch, rate);
            GoldenSummary expected;
            const auto it = stored.find(key);
            ASSERT_TRUE(it != stored.end() && GoldenSummary::FromLine(it->second, expected)) << key;
            EXPECT_EQ(Render(patch, rate).Difference(expected), "") << key;
        }
}
} // namespace

TEST(GoldenSummaries, EveryPatchRendersAsStored)
{
    const char* write = std::getenv("QUORVEX_GOLDEN_WRITE");
    if (write != nullptr && std::string(write) == "1")
    {
        std::ofstream out(QUORVEX_GOLDEN_FILE);
        out << "# Golden summaries: patch@rate, peaks, octave-band RMS in three windows, echo onsets in ms,\n"
               "# hash of the raw output. Regenerate only after an intended change of the sound.\n";
        for (const GoldenPatch& patch : GoldenPatches())
            for (double rate : kRates)
                out << Key(patch, rate) << ' ' << Render(patch, rate).ToLine() << '\n';
        GTEST_SKIP() << "golden summaries written to " << QUORVEX_GOLDEN_FILE;
    }
    ExpectEveryPatchAsStored();
}

// The same renders with the four-lane forms off: the two-lane forms, which every x86-64 runs,
// give the same bits.
TEST(GoldenSummaries, TheTwoLaneFormsRenderAsStored)
{
    if (!SetWideLanes(true)) GTEST_SKIP() << "no AVX2 here: the test above ran the two-lane forms";
    SetWideLanes(false);
    ExpectEveryPatchAsStored();
    SetWideLanes(true);
}

// The reduction itself: a summary survives its text form, and each kind of change shows.
TEST(GoldenSummaries, SummaryNoticesEveryKindOfChange)
{
    std::vector<double> l(96000, 0.0), r(96000, 0.0);
    l[48000] = 1.0;
    r[72000] = 0.5;
    const GoldenSummary base = GoldenSummary::Of(l, r, 48000.0);
    EXPECT_EQ(base.echoesMs, (std::vector<int>{1000, 1500}));
    GoldenSummary parsed;
    ASSERT_TRUE(GoldenSummary::FromLine(base.ToLine(), parsed));
    EXPECT_EQ(base.Difference(parsed), "");

    std::vector<double> quieter = r;
    quieter[72000] = 0.25;
    EXPECT_NE(GoldenSummary::Of(l, quieter, 48000.0).Difference(base), "");
    std::vector<double> later(96000, 0.0);
    later[48048] = 1.0;
    EXPECT_NE(GoldenSummary::Of(later, r, 48000.0).Difference(base), "");
    std::vector<double> ulp = l;
    ulp[100] = 1e-300;
    const std::string tiny = GoldenSummary::Of(ulp, r, 48000.0).Difference(base);
    EXPECT_NE(tiny.find("hash"), std::string::npos);
}
