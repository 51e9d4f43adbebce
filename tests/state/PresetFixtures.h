#pragma once
// Shared by the preset tests: a file head of a given format version, loading a text into a fake
// plug-in as the two stages do, and a temporary preset folder that is removed afterwards.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "FakeStateHost.h"
#include "state/PresetFile.h"

namespace preset_test
{
// The two header lines and an empty ADDPARAMS section.
inline std::string Head(int version)
{
    return "Quorvex V. 1.0.0r" + std::to_string(version) +
           " PresetFile!\nPresetVersion: " + std::to_string(version) + "\n\nADDPARAMS:\n\nEParams:\n";
}

inline PresetData Load(FakeStateHost& host, std::string_view text)
{
    PresetData data;
    EXPECT_EQ(ParsePresetText(text, data), PresetReadResult::kOk);
    ApplyPresetMasks(host, data);
    ApplyPresetParams(host, data);
    return data;
}

class TempFolder
{
  public:
    TempFolder() : mPath((std::filesystem::temp_directory_path() / "quorvex-presets-XXXXXX").string())
    {
        EXPECT_NE(mkdtemp(mPath.data()), nullptr);
    }
    ~TempFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& Path() const { return mPath; }
    // Writes text at a path below the folder, making the folders on the way.
    void Write(const std::string& relative, std::string_view text) const
    {
        std::filesystem::create_directories(std::filesystem::path(mPath + relative).parent_path());
        std::ofstream(mPath + relative, std::ios::binary) << text;
    }

  private:
    std::string mPath;
};
} // namespace preset_test
