// The factory preset library as it ships: enough presets, in category folders, each in the exact
// form the plug-in's writer gives, with keys the plug-in knows and values inside their ranges, and
// each rendering the demo phrase through the built bundle to audible, finite sound that dies away.

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "state/FakeStateHost.h"
#include "state/PresetFile.h"
#include "tools/ToolRun.h"

namespace
{
using namespace tooltest;

constexpr double kDemoSeconds = 6.0; // two bars and a ringing bar at 120 BPM
constexpr double kMaxTailSeconds = 30.0;
constexpr double kQuietWindowSeconds = 0.1; // the tool stops this long after -90 dBFS is reached
constexpr double kEnvelopeSeconds = 0.02;

std::vector<fs::path> FactoryFiles()
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(QUORVEX_FACTORY_PRESETS))
        if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::string Relative(const fs::path& file)
{
    return fs::relative(file, QUORVEX_FACTORY_PRESETS).string();
}

// At least 48 presets in 8 category folders or more, each named whole, each file in the exact form
// the writer gives it: every key one the loader takes and every value inside its range.
TEST(FactoryPresets, EnoughInCategoryFoldersEachAsTheWriterWritesItWithKnownKeysAndValuesInRange)
{
    const auto files = FactoryFiles();
    EXPECT_GE(files.size(), 48u);
    std::set<std::string> folders;
    for (const fs::path& file : files)
    {
        const std::string relative = "/Factory Presets/" + Relative(file);
        SCOPED_TRACE(relative);
        EXPECT_EQ(file.extension(), ".txt");
        EXPECT_EQ(std::count(relative.begin(), relative.end(), '/'), 3);
        folders.insert(PresetFolderLabelOf(relative));
        EXPECT_EQ(folders.count("F:" + file.parent_path().filename().string()), 1u);
        EXPECT_EQ(PresetNameOf(relative), file.stem().string()) << "the name must show whole";
        PresetData data;
        ASSERT_EQ(ReadPresetText(file.string(), data), PresetReadResult::kOk);
        EXPECT_EQ(data.version, kPresetVersion);
        EXPECT_FALSE(data.stoppedEarly);

        // Every key taken (none left over) and the file exactly as the writer gives it back: a value
        // outside its range would come back cut to it.
        FakeStateHost host;
        ApplyPresetMasks(host, data);
        ApplyPresetParams(host, data);
        EXPECT_TRUE(data.keys.empty());
        host.Fields().mLastPage = data.lastPage.value_or(host.Fields().mLastPage);
        EXPECT_EQ(PresetFileText(host), Slurp(file));
    }
    EXPECT_GE(folders.size(), 8u);
}

struct Render
{
    std::string name;
    double seconds = 0.0, peakDb = -200.0;
    std::vector<double> envelopeDb; // per 20 ms window, both channels
};

Render RenderPreset(const fs::path& file, const fs::path& scratch)
{
    Render r{Relative(file), 0.0, -200.0, {}};
    const fs::path wav = scratch / "render.wav";
    const ToolRun run = RunTool({"--preset", file.string(), "--demo", wav.string()}, scratch);
    EXPECT_EQ(run.code, 0) << r.name << "\n" << run.err;
    EXPECT_EQ((run.out + run.err).find("warning"), std::string::npos) << r.name;
    const Audio audio = ReadAudio(wav);
    EXPECT_EQ(audio.channels, 2) << r.name;
    if (audio.channels == 0) return r;
    r.seconds = static_cast<double>(audio.Frames()) / audio.rate;
    const auto window = static_cast<std::size_t>(kEnvelopeSeconds * audio.rate) * 2;
    double peak = 0.0;
    for (std::size_t start = 0; start < audio.samples.size(); start += window)
    {
        double sum = 0.0;
        const std::size_t end = std::min(audio.samples.size(), start + window);
        for (std::size_t i = start; i < end; ++i)
        {
            sum += audio.samples[i] * audio.samples[i];
            peak = std::max(peak, std::abs(audio.samples[i]));
        }
        r.envelopeDb.push_back(10.0 * std::log10(sum / static_cast<double>(end - start) + 1e-12));
    }
    r.peakDb = 20.0 * std::log10(peak + 1e-12);
    return r;
}

TEST(FactoryPresets, EveryPresetRendersTheDemoAudiblyDistinctAndDying)
{
    const fs::path scratch = fs::temp_directory_path() / ("quorvex_factory_" + std::to_string(getpid()));
    fs::create_directories(scratch);
    const auto files = FactoryFiles();
    std::vector<Render> renders;
    for (std::size_t i = 0; i < files.size(); i += QUORVEX_FACTORY_RENDER_STRIDE)
    {
        renders.push_back(RenderPreset(files[i], scratch));
        const Render& r = renders.back();
        EXPECT_GT(r.peakDb, -30.0) << r.name << " is (nearly) silent";
        // The tool stops once the output has stayed below -90 dBFS for 100 ms.
        EXPECT_LT(r.seconds, kDemoSeconds + kMaxTailSeconds + kQuietWindowSeconds)
            << r.name << " rings on for more than 30 s";
    }
    fs::remove_all(scratch);

    // Two presets that differ nowhere by a tenth of a decibel in any 20 ms sound the same.
    for (std::size_t a = 0; a < renders.size(); ++a)
        for (std::size_t b = a + 1; b < renders.size(); ++b)
        {
            const auto& x = renders[a].envelopeDb;
            const auto& y = renders[b].envelopeDb;
            double largest = x.size() == y.size() ? 0.0 : 100.0;
            for (std::size_t k = 0; k < std::min(x.size(), y.size()); ++k)
                largest = std::max(largest, std::abs(x[k] - y[k]));
            EXPECT_GT(largest, 0.1) << renders[a].name << " and " << renders[b].name << " render alike";
        }
}
} // namespace
