#pragma once
// The preset browser's model: the scan of the preset folder tree, the process-wide lists it fills,
// and each instance's menu as plain data (menus of items, sub-menus and one checked item) that the
// editor draws. Several instances in one host process share the lists; hosts may run their editors
// on different UI threads, so the lists are guarded by one process-wide lock. An instance rebuilds
// its menu when PresetListGeneration has moved since its last build: any instance raises it when it
// adds a file or finds a file gone.
// UI thread(s) only.

#include <atomic>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A file or folder found by the scan. Folder texts are relative to PresetBase, begin and end in
// "/"; a file's name is cut at its last ".".
struct PresetEntry
{
    std::string folder;
    std::string name;
};

// Paths of this length or more end the scan of their branch.
inline constexpr std::size_t kMaxPresetPathLength = 260;
inline constexpr std::string_view kUserSectionHeader = "--  User  Presets  --";
inline constexpr std::string_view kFactorySectionHeader = "--  Factory  Presets  --";

// Recursive scan below base + relativeFolder (which begins and ends in "/"): sub-directories not
// beginning with "." become folders and are scanned in turn, regular files other than ".DS_Store"
// become files. Unreadable directories are skipped.
void ScanFolder(const std::string& base, const std::string& relativeFolder, std::vector<PresetEntry>& folders,
                std::vector<PresetEntry>& files);

// Case-blind order of whole relative paths; ties fall back to the exact bytes.
bool PresetPathLess(std::string_view a, std::string_view b);

int PresetListGeneration();
void RaisePresetListGeneration();

struct PresetMenuItem
{
    std::string text;
    int subMenu = -1;    // index into the menus for a sub-menu item, else -1
    bool header = false; // a section header: not selectable
    bool checked = false;
    std::string folder; // a file item's folder text
};

struct PresetMenuData
{
    std::string title;
    std::vector<PresetMenuItem> items;
};

// One instance's preset menu (the menu control's model). Menu 0 is the root, which holds both
// sections; the folder texts "/User Presets/" and "/Factory Presets/" both name it.
class IPresetMenu
{
  public:
    // Scans base into the process-wide lists and builds the menus from them, noting the
    // generation it was built from. The selection is kept when its file is still listed.
    void Rebuild(const std::string& base);
    bool Stale() const { return mGeneration != PresetListGeneration(); }
    bool Built() const { return mGeneration != kNeverBuilt; }

    const std::vector<PresetMenuData>& Menus() const { return mMenus; }
    // Files in menu order, as "folder text + name".
    const std::vector<std::string>& FlatList() const { return mFlatPaths; }
    // Index of the menu of a folder text, or -1.
    int MenuOfFolder(std::string_view folder) const;

    // Checks item `item` of menu `menu` alone; false (selection unchanged) for anything but a file.
    bool SelectItem(int menu, int item);
    // Checks the file of a relative path, with or without its ".txt"; false when it isn't listed.
    bool SelectPath(std::string_view relativePath);
    void ClearSelection();
    // Folder text plus item text of the selection, or empty.
    std::string SelectedPath() const;
    // The selection as the state chunk keeps it: the folder text of its menu and its index there.
    std::string SelectedMenuFolder() const;
    int SelectedIndex() const { return mSelectedItem; }

    // The previous or next file, wrapping at both ends; with nothing selected, forward gives the
    // first file and backward the last. Selects it and returns its path; nothing on an empty list.
    std::optional<std::string> Step(bool forward);

  private:
    static constexpr int kNeverBuilt = -1000000;
    struct FlatItem
    {
        int menu;
        int item;
    };
    void Build(const std::vector<PresetEntry>& folders, const std::vector<PresetEntry>& files);

    std::vector<PresetMenuData> mMenus;
    std::vector<std::pair<std::string, int>> mFolderMenus; // folder text -> menu, sorted
    std::vector<std::string> mFlatPaths;
    std::vector<FlatItem> mFlatItems;
    int mSelectedMenu = -1;
    int mSelectedItem = -1;
    int mGeneration = kNeverBuilt;
};
