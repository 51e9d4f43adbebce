#include "state/PresetSaving.h"

#include "state/PresetFile.h"

namespace
{
// Lower-cased and cut to the folder's length, the path is compared with the folder lower-cased.
bool LiesIn(std::string_view path, const std::string& folder)
{
    return LowerCase(path.substr(0, folder.size())) == LowerCase(folder);
}
} // namespace

PresetSaveResult SavePresetFile(const PresetFolders& folders, std::string_view chosenPath,
                                const std::function<bool(const std::string&)>& write,
                                PresetSaveTarget& target)
{
    target = PresetSaveTarget{};
    std::string path(chosenPath);
    const std::string_view ext = kPresetDotExtension;
    const std::size_t slash = path.rfind('/');
    const std::string fileName = slash == std::string::npos ? path : path.substr(slash + 1);
    if (!fileName.ends_with(ext)) path += ext;
    const std::string stem =
        path.substr(slash == std::string::npos ? 0 : slash + 1,
                    path.size() - ext.size() - (slash == std::string::npos ? 0 : slash + 1));
    if (stem.find_first_not_of(" \t") == std::string::npos) return PresetSaveResult::kNoName;

    target.fullPath = path;
    target.name = stem;
    if (LiesIn(path, folders.factory)) return PresetSaveResult::kFactoryTree;
    if (!write(path)) return PresetSaveResult::kWriteFailed;
    if (!LiesIn(path, folders.user)) return PresetSaveResult::kOutsideUserTree;
    target.relativePath = folders.RelativePath(path);
    return PresetSaveResult::kSaved;
}
