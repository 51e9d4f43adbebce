// Every instance these tests build looks for presets in a temporary folder, never in the home
// folder of whoever runs them. Tests that need files of their own set QUORVEX_PRESET_DIR again.

#include <cstdlib>
#include <filesystem>
#include <string>

namespace
{
struct PresetFolderForTests
{
    PresetFolderForTests()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "quorvex-engine-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) path = pattern;
        setenv("QUORVEX_PRESET_DIR", path.empty() ? "/nonexistent/quorvex-presets" : path.c_str(), 1);
    }
    ~PresetFolderForTests()
    {
        std::error_code ignored;
        if (!path.empty()) std::filesystem::remove_all(path, ignored);
    }
    std::string path;
};
const PresetFolderForTests gPresetFolderForTests;
} // namespace
