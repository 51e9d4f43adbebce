#pragma once
// The checks of saving a preset under a path the user chose, apart from the dialog that chooses it:
// nothing is written inside the factory tree, and a file outside the user tree is written but
// can't appear in the menu. UI thread.

#include <functional>
#include <string>
#include <string_view>

#include "state/PresetFolders.h"

enum class PresetSaveResult
{
    kNoName,          // empty or blank file name: nothing written
    kFactoryTree,     // message 6, nothing written
    kWriteFailed,     // message 5
    kOutsideUserTree, // message 3: written, not listed
    kSaved,           // written in the user tree: becomes the current preset
};

// Shown when the chosen name is empty or only blanks; the message table has no entry for it.
inline constexpr std::string_view kNoPresetNameText = "Preset name is empty!\nPreset was not saved.";

struct PresetSaveTarget
{
    std::string fullPath;     // the chosen path, with ".txt" added when it has another ending
    std::string relativePath; // below PresetBase with a leading "/"; empty outside it
    std::string name;         // file name without its extension
};

// Checks chosenPath, calls write(fullPath) when it may be written, and says how it went.
PresetSaveResult SavePresetFile(const PresetFolders& folders, std::string_view chosenPath,
                                const std::function<bool(const std::string&)>& write,
                                PresetSaveTarget& target);
