#include "state/PresetFolders.h"

#include <cstdlib>

namespace
{
std::string Environment(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? std::string(value) : std::string();
}

std::string WithoutTrailingSlashes(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}
} // namespace

std::string LowerCase(std::string_view text)
{
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

PresetFolders PresetFolders::FromBase(std::string base)
{
    PresetFolders folders;
    folders.base = WithoutTrailingSlashes(std::move(base));
    folders.user = folders.base + "/" + std::string(kUserTreeName);
    folders.factory = folders.base + "/factory Presets";
    return folders;
}

PresetFolders PresetFolders::FromEnvironment()
{
    if (std::string own = Environment("QUORVEX_PRESET_DIR"); !own.empty()) return FromBase(own);
    std::string data = Environment("XDG_DATA_HOME");
    if (data.empty()) data = Environment("HOME") + "/.local/share";
    return FromBase(data + "/qelmar-audio/Quorvex/Presets");
}

std::string PresetFolders::RelativePath(std::string_view fullPath) const
{
    if (fullPath.size() <= base.size() || fullPath.substr(0, base.size()) != base ||
        fullPath[base.size()] != '/')
        return {};
    return std::string(fullPath.substr(base.size()));
}
