#pragma once
// Where preset files live. PresetBase holds two trees, "User Presets" (the user's own, where saving
// goes) and "Factory Presets" (installed with the product, never written by the plug-in). A preset
// is named by its path relative to PresetBase, beginning "/User Presets/" or "/Factory Presets/".
// On Linux PresetBase is $XDG_DATA_HOME/qelmar-audio/Quorvex/Presets (~/.local/share when the
// variable is unset or empty); QUORVEX_PRESET_DIR replaces it, which tests rely on.

#include <string>
#include <string_view>

inline constexpr std::string_view kUserTreeName = "User Presets";
inline constexpr std::string_view kFactoryTreeName = "Factory Presets";
inline constexpr std::string_view kUserTreeText = "/User Presets/";
inline constexpr std::string_view kFactoryTreeText = "/Factory Presets/";
inline constexpr std::string_view kPresetExtension = "txt";
inline constexpr std::string_view kPresetDotExtension = ".txt";

struct PresetFolders
{
    std::string base;    // PresetBase, no trailing "/"
    std::string user;    // base + "/User Presets"
    std::string factory; // base + "/factory Presets": the save check compares it in lower case

    static PresetFolders FromBase(std::string base);
    // From the environment, as the plug-in finds them at construction.
    static PresetFolders FromEnvironment();

    std::string FullPath(std::string_view relativePath) const { return base + std::string(relativePath); }
    // The path below base with a leading "/", or empty when fullPath doesn't lie below base.
    std::string RelativePath(std::string_view fullPath) const;
};

// ASCII lower case, for the case-blind comparisons of paths and menu entries.
std::string LowerCase(std::string_view text);
