// The factory preset library as it ships: enough presets, in category folders, each in the exact
// form the plug-in's writer gives, with keys the plug-in knows and values inside their ranges, and
// each rendering the demo phrase through the built bundle to audible sound that dies away.

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
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

// Renders every preset (every sixth under the sanitizers): each audible, and quiet again within
// 30 s of the phrase's end, which the tool's tail rule (it stops 100 ms after -90 dBFS) shows.
TEST(FactoryPresets, EveryPresetRendersTheDemoAudiblyAndDying)
{
    const fs::path scratch = fs::temp_directory_path() / ("quorvex_factory_" + std::to_string(getpid()));
    fs::create_directories(scratch);
    const auto files = FactoryFiles();
    for (std::size_t i = 0; i < files.size(); i += QUORVEX_FACTORY_RENDER_STRIDE)
    {
        const std::string name = Relative(files[i]);
        const fs::path wav = scratch / "render.wav";
        const ToolRun run = RunTool({"--preset", files[i].string(), "--demo", wav.string()}, scratch);
        EXPECT_EQ(run.code, 0) << name << "\n" << run.err;
        EXPECT_EQ((run.out + run.err).find("warning"), std::string::npos) << name;
        const Audio audio = ReadAudio(wav);
        EXPECT_EQ(audio.channels, 2) << name;
        EXPECT_GT(PeakDb(audio), -30.0) << name << " is (nearly) silent";
        EXPECT_LT(static_cast<double>(audio.Frames()) / std::max(audio.rate, 1),
                  kDemoSeconds + kMaxTailSeconds + kQuietWindowSeconds)
            << name << " rings on for more than 30 s";
    }
    fs::remove_all(scratch);
}
} // namespace
