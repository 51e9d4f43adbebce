#include "state/PresetBrowser.h"

#include <algorithm>
#include <filesystem>
#include <mutex>

#include "state/PresetFolders.h"

namespace
{
// The lists of the last scan, shared by every instance of the process.
struct PresetLists
{
    std::mutex mutex;
    std::vector<PresetEntry> folders;
    std::vector<PresetEntry> files;
    std::vector<std::string> flat;
};

PresetLists& SharedLists()
{
    static PresetLists lists;
    return lists;
}

std::atomic<int> gPresetListGeneration{0};

char Lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string_view LastPart(std::string_view folder)
{
    folder.remove_suffix(1);
    return folder.substr(folder.rfind('/') + 1);
}

std::string_view ParentFolder(std::string_view folder)
{
    folder.remove_suffix(1);
    return folder.substr(0, folder.rfind('/') + 1);
}

std::string_view WithoutExtension(std::string_view path)
{
    if (path.ends_with(kPresetDotExtension)) path.remove_suffix(kPresetDotExtension.size());
    return path;
}
} // namespace

bool PresetPathLess(std::string_view a, std::string_view b)
{
    const std::size_t n = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < n; ++i)
    {
        const char x = Lower(a[i]);
        const char y = Lower(b[i]);
        if (x != y) return static_cast<unsigned char>(x) < static_cast<unsigned char>(y);
    }
    if (a.size() != b.size()) return a.size() < b.size();
    return a < b;
}

int PresetListGeneration()
{
    return gPresetListGeneration.load();
}

void RaisePresetListGeneration()
{
    gPresetListGeneration.fetch_add(1);
}

void ScanFolder(const std::string& base, const std::string& relativeFolder, std::vector<PresetEntry>& folders,
                std::vector<PresetEntry>& files)
{
    namespace fs = std::filesystem;
    std::error_code ec;
    fs::directory_iterator it(base + relativeFolder, ec);
    for (const fs::directory_iterator end; !ec && it != end; it.increment(ec))
    {
        const std::string name = it->path().filename().string();
        if (base.size() + relativeFolder.size() + name.size() >= kMaxPresetPathLength) continue;
        std::error_code typeError;
        if (it->is_directory(typeError))
        {
            if (name.empty() || name[0] == '.') continue;
            const std::string folder = relativeFolder + name + "/";
            folders.push_back({folder, name});
            ScanFolder(base, folder, folders, files);
        }
        else if (it->is_regular_file(typeError) && name != ".DS_Store")
        {
            const std::size_t dot = name.rfind('.');
            files.push_back({relativeFolder, dot == std::string::npos ? name : name.substr(0, dot)});
        }
    }
}

void IPresetMenu::Rebuild(const std::string& base)
{
    PresetLists& lists = SharedLists();
    const std::string selected = SelectedPath();
    std::lock_guard lock(lists.mutex);
    mGeneration = PresetListGeneration();

    lists.folders.clear();
    lists.files.clear();
    ScanFolder(base, "/", lists.folders, lists.files);
    std::sort(lists.folders.begin(), lists.folders.end(),
              [](const PresetEntry& a, const PresetEntry& b) { return PresetPathLess(a.folder, b.folder); });
    std::sort(lists.files.begin(), lists.files.end(),
              [](const PresetEntry& a, const PresetEntry& b)
              { return PresetPathLess(a.folder + a.name, b.folder + b.name); });
    Build(lists.folders, lists.files);
    lists.flat = mFlatPaths;

    if (!selected.empty()) SelectPath(selected);
}

void IPresetMenu::Build(const std::vector<PresetEntry>& folders, const std::vector<PresetEntry>& files)
{
    mMenus.assign(1, PresetMenuData{});
    mFolderMenus.clear();
    mFlatPaths.clear();
    mFlatItems.clear();
    mSelectedMenu = -1;
    mSelectedItem = -1;
    mFolderMenus.emplace_back(std::string(kUserTreeText), 0);
    mFolderMenus.emplace_back(std::string(kFactoryTreeText), 0);
    const auto menuOf = [this](std::string_view folder)
    {
        for (const auto& [text, menu] : mFolderMenus)
            if (text == folder) return menu;
        return -1;
    };

    const std::pair<std::string_view, std::string_view> sections[] = {
        {kUserTreeText, kUserSectionHeader},
        {kFactoryTreeText, kFactorySectionHeader},
    };
    for (const auto& [section, header] : sections)
    {
        PresetMenuItem head;
        head.text = header;
        head.header = true;
        mMenus[0].items.push_back(head);

        // The section's own folder first (its files sit in the root menu), then its sub-folders
        // in sorted order; a parent always sorts before its children.
        std::vector<std::string_view> sectionFolders{section};
        for (const PresetEntry& folder : folders)
            if (folder.folder.size() > section.size() && folder.folder.starts_with(section))
                sectionFolders.push_back(folder.folder);

        for (std::string_view folder : sectionFolders)
        {
            int menu = menuOf(folder);
            if (menu < 0)
            {
                const int parent = menuOf(ParentFolder(folder));
                if (parent < 0) continue;
                menu = static_cast<int>(mMenus.size());
                mMenus.push_back(PresetMenuData{std::string(LastPart(folder)), {}});
                PresetMenuItem sub;
                sub.text = mMenus.back().title;
                sub.subMenu = menu;
                mMenus[static_cast<std::size_t>(parent)].items.push_back(sub);
                mFolderMenus.emplace_back(std::string(folder), menu);
            }
            // Files are sorted by their whole path, so a folder's files lie together.
            for (const PresetEntry& file : files)
            {
                if (file.folder != folder) continue;
                PresetMenuItem item;
                item.text = file.name;
                item.folder = file.folder;
                auto& items = mMenus[static_cast<std::size_t>(menu)].items;
                mFlatItems.push_back({menu, static_cast<int>(items.size())});
                mFlatPaths.push_back(file.folder + file.name);
                items.push_back(std::move(item));
            }
        }
    }
    std::sort(mFolderMenus.begin(), mFolderMenus.end());
}

int IPresetMenu::MenuOfFolder(std::string_view folder) const
{
    const auto it = std::lower_bound(mFolderMenus.begin(), mFolderMenus.end(), folder,
                                     [](const auto& entry, std::string_view f) { return entry.first < f; });
    return it != mFolderMenus.end() && it->first == folder ? it->second : -1;
}

bool IPresetMenu::SelectItem(int menu, int item)
{
    if (menu < 0 || menu >= static_cast<int>(mMenus.size())) return false;
    auto& items = mMenus[static_cast<std::size_t>(menu)].items;
    if (item < 0 || item >= static_cast<int>(items.size())) return false;
    const PresetMenuItem& chosen = items[static_cast<std::size_t>(item)];
    if (chosen.header || chosen.subMenu >= 0) return false;
    ClearSelection();
    items[static_cast<std::size_t>(item)].checked = true;
    mSelectedMenu = menu;
    mSelectedItem = item;
    return true;
}

void IPresetMenu::ClearSelection()
{
    for (PresetMenuData& m : mMenus)
        for (PresetMenuItem& i : m.items)
            i.checked = false;
    mSelectedMenu = -1;
    mSelectedItem = -1;
}

bool IPresetMenu::SelectPath(std::string_view relativePath)
{
    const std::string_view path = WithoutExtension(relativePath);
    for (std::size_t i = 0; i < mFlatPaths.size(); ++i)
        if (mFlatPaths[i] == path) return SelectItem(mFlatItems[i].menu, mFlatItems[i].item);
    return false;
}

std::string IPresetMenu::SelectedPath() const
{
    if (mSelectedMenu < 0) return {};
    const PresetMenuItem& item =
        mMenus[static_cast<std::size_t>(mSelectedMenu)].items[static_cast<std::size_t>(mSelectedItem)];
    return item.folder + item.text;
}

std::string IPresetMenu::SelectedMenuFolder() const
{
    if (mSelectedMenu < 0) return {};
    if (mSelectedMenu == 0) return std::string(kUserTreeText);
    for (const auto& [text, menu] : mFolderMenus)
        if (menu == mSelectedMenu) return text;
    return {};
}

std::optional<std::string> IPresetMenu::Step(bool forward)
{
    if (mFlatPaths.empty()) return std::nullopt;
    const int count = static_cast<int>(mFlatPaths.size());
    const std::string current = SelectedPath();
    const auto found = std::find(mFlatPaths.begin(), mFlatPaths.end(), current);
    int next = forward ? 0 : count - 1;
    if (!current.empty() && found != mFlatPaths.end())
    {
        const int at = static_cast<int>(found - mFlatPaths.begin());
        next = (at + (forward ? 1 : count - 1)) % count;
    }
    SelectItem(mFlatItems[static_cast<std::size_t>(next)].menu,
               mFlatItems[static_cast<std::size_t>(next)].item);
    return mFlatPaths[static_cast<std::size_t>(next)];
}
