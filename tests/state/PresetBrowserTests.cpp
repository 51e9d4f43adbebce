// The preset menu, the save checks and the folders.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "PresetFixtures.h"
#include "state/PresetBrowser.h"
#include "state/PresetSaving.h"

using preset_test::TempFolder;

namespace
{
// A folder holding the given preset files, and a menu built from it.
struct Tree
{
    explicit Tree(std::initializer_list<std::string> paths)
    {
        for (const std::string& path : paths)
            dir.Write(path, "x");
        menu.Rebuild(dir.Path());
    }
    TempFolder dir;
    IPresetMenu menu;
};

// Items of a menu as "text" for files, "[text]" for sub-menus and the header texts as they are.
std::vector<std::string> Items(const IPresetMenu& menu, int index)
{
    std::vector<std::string> items;
    for (const PresetMenuItem& item : menu.Menus()[static_cast<std::size_t>(index)].items)
        items.push_back(item.subMenu >= 0 ? "[" + item.text + "]" : item.text);
    return items;
}

// Both sections, folders and files sorted regardless of case; an empty or missing tree gives the two
// headers and no step.
TEST(PresetBrowser, MenuHoldsBothSectionsSortedRegardlessOfCase)
{
    Tree tree{"/User Presets/beta.txt",           "/User Presets/Alpha.txt",
              "/User Presets/zed/b.txt",          "/User Presets/Mine/c.txt",
              "/Factory Presets/Spaces/Hall.txt", "/Factory Presets/Basics/echo.txt",
              "/Factory Presets/Basics/Dub.txt",  "/Elsewhere/ignored.txt"};
    IPresetMenu& menu = tree.menu;
    EXPECT_EQ(Items(menu, 0),
              (std::vector<std::string>{"--  User  Presets  --", "Alpha", "beta", "[Mine]", "[zed]",
                                        "--  Factory  Presets  --", "[Basics]", "[Spaces]"}));
    EXPECT_EQ(Items(menu, menu.MenuOfFolder("/Factory Presets/Basics/")),
              (std::vector<std::string>{"Dub", "echo"}));
    EXPECT_EQ(menu.FlatList(),
              (std::vector<std::string>{"/User Presets/Alpha", "/User Presets/beta", "/User Presets/Mine/c",
                                        "/User Presets/zed/b", "/Factory Presets/Basics/Dub",
                                        "/Factory Presets/Basics/echo", "/Factory Presets/Spaces/Hall"}));
    EXPECT_EQ(std::tuple(menu.MenuOfFolder("/User Presets/"), menu.MenuOfFolder("/Factory Presets/"),
                         menu.MenuOfFolder("/Elsewhere/")),
              std::tuple(0, 0, -1));

    tree.menu.Rebuild(tree.dir.Path() + "/missing");
    EXPECT_EQ(Items(tree.menu, 0),
              (std::vector<std::string>{"--  User  Presets  --", "--  Factory  Presets  --"}));
    EXPECT_FALSE(tree.menu.Step(true).has_value());
    EXPECT_TRUE(tree.menu.SelectedPath().empty());
}

TEST(PresetBrowser, StepWrapsBothWaysAndStartsAtAnEndWithoutSelection)
{
    Tree tree{"/User Presets/a.txt", "/User Presets/B.txt", "/Factory Presets/F/c.txt"};
    IPresetMenu& menu = tree.menu;
    EXPECT_EQ(menu.Step(false), "/Factory Presets/F/c"); // nothing selected: backward is the last
    EXPECT_EQ(menu.Step(true), "/User Presets/a");       // past the last: the first
    EXPECT_EQ(menu.Step(true), "/User Presets/B");
    EXPECT_EQ(menu.Step(false), "/User Presets/a");
    EXPECT_EQ(menu.Step(false), "/Factory Presets/F/c"); // before the first: the last
    EXPECT_EQ(menu.SelectedPath(), "/Factory Presets/F/c");
    EXPECT_EQ(menu.SelectedMenuFolder(), "/Factory Presets/F/");
    EXPECT_EQ(menu.SelectedIndex(), 0);

    menu.ClearSelection();
    EXPECT_EQ(menu.Step(true), "/User Presets/a");
    EXPECT_EQ(menu.SelectedMenuFolder(), "/User Presets/"); // the root menu's own name
    EXPECT_EQ(menu.SelectedIndex(), 1);                     // behind the header
}

// Hidden files and folders are never listed, nor a file whose full path reaches 260 characters.
TEST(PresetBrowser, HiddenEntriesAndOverlongPathsAreNeverListed)
{
    const std::string prefix = "/User Presets/";
    TempFolder dir;
    const std::string longName = std::string(260 - dir.Path().size() - prefix.size() - 4, 'L') + ".txt";
    for (const std::string& path :
         {std::string(".DS_Store"), std::string(".hidden/Secret.txt"), std::string("Deep/.git/x.txt"),
          std::string("Seen.txt"), longName, longName.substr(1)})
        dir.Write(prefix + path, "x");
    std::vector<PresetEntry> folders, files;
    ScanFolder(dir.Path(), "/", folders, files);
    std::vector<std::string> names;
    for (const PresetEntry& f : files)
        names.push_back(f.folder + f.name);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names,
              (std::vector<std::string>{prefix + longName.substr(1, longName.size() - 5), prefix + "Seen"}));
    for (const PresetEntry& f : folders)
        EXPECT_EQ(f.folder.find("/."), std::string::npos) << f.folder;
}

TEST(PresetBrowser, SelectionChecksExactlyOneFileAndSurvivesARebuild)
{
    Tree tree{"/User Presets/a.txt", "/Factory Presets/F/b.txt"};
    IPresetMenu& menu = tree.menu;
    EXPECT_FALSE(menu.SelectItem(0, 0)); // a header
    EXPECT_FALSE(menu.SelectPath("/User Presets/none.txt"));
    ASSERT_TRUE(menu.SelectPath("/Factory Presets/F/b.txt"));
    ASSERT_TRUE(menu.SelectPath("/User Presets/a"));
    int checked = 0;
    for (const PresetMenuData& m : menu.Menus())
        checked += std::count_if(m.items.begin(), m.items.end(), [](const auto& i) { return i.checked; });
    EXPECT_EQ(checked, 1);
    tree.dir.Write("/User Presets/0 first.txt", "x");
    menu.Rebuild(tree.dir.Path());
    EXPECT_EQ(menu.SelectedPath() + std::to_string(menu.SelectedIndex()), "/User Presets/a2");
}

// Each row: the path chosen (below /p/Presets unless it starts elsewhere), whether the write works,
// the answer, the path written and the path relative to the presets folder afterwards.
TEST(PresetSaving, ChosenPathsAreCheckedBeforeAndAfterWriting)
{
    using R = PresetSaveResult;
    const std::string base = "/p/Presets";
    const std::tuple<std::string, bool, R, std::string, std::string> cases[] = {
        {"/User Presets/Mine/Dub.txt", true, R::kSaved, "/User Presets/Mine/Dub.txt",
         "/User Presets/Mine/Dub.txt"},
        {"/User Presets/Dub", true, R::kSaved, "/User Presets/Dub.txt", "/User Presets/Dub.txt"},
        {"/user presets/Dub.txt", true, R::kSaved, "/user presets/Dub.txt", "/user presets/Dub.txt"},
        {"/Factory Presets/Basics/Dub.txt", true, R::kFactoryTree, "", ""},
        {"/FACTORY PRESETS/Dub.txt", true, R::kFactoryTree, "", ""},
        {"/User Presets/Dub.txt", false, R::kWriteFailed, "/User Presets/Dub.txt", ""},
        {"!/home/me/Dub.txt", true, R::kOutsideUserTree, "!/home/me/Dub.txt", ""},
        {"/User Presets/.txt", true, R::kNoName, "", ""},
        {"/User Presets/   ", true, R::kNoName, "", ""},
        {"!", true, R::kNoName, "", ""},
    };
    const auto full = [&](const std::string& path) {
        return path.empty() ? path : path[0] == '!' ? path.substr(1) : base + path;
    };
    for (const auto& [chosen, writes, answer, written, relative] : cases)
    {
        std::string wrote;
        PresetSaveTarget target;
        const R result = SavePresetFile(
            PresetFolders::FromBase(base), full(chosen),
            [&, writes = writes](const std::string& path)
            {
                wrote = path;
                return writes;
            },
            target);
        EXPECT_EQ(std::tuple(result, wrote, result == R::kSaved ? target.relativePath : ""),
                  std::tuple(answer, full(written), relative))
            << chosen;
    }
}

TEST(PresetFolders, EnvironmentPicksTheBaseFolder)
{
    const auto with = [](const char* own, const char* xdg, const char* home)
    {
        own ? setenv("QUORVEX_PRESET_DIR", own, 1) : unsetenv("QUORVEX_PRESET_DIR");
        setenv("XDG_DATA_HOME", xdg, 1);
        setenv("HOME", home, 1);
        return PresetFolders::FromEnvironment();
    };
    const std::string home = std::getenv("HOME") ? std::getenv("HOME") : "";
    const PresetFolders own = with("/tmp/qp/", "/x", "/h");
    EXPECT_EQ(own.base + "|" + own.user + "|" + own.factory,
              "/tmp/qp|/tmp/qp/User Presets|/tmp/qp/factory Presets");
    EXPECT_EQ(with(nullptr, "/x", "/h").base, "/x/qelmar-audio/Quorvex/Presets");
    EXPECT_EQ(with("", "", "/h").base, "/h/.local/share/qelmar-audio/Quorvex/Presets");
    unsetenv("QUORVEX_PRESET_DIR");
    unsetenv("XDG_DATA_HOME");
    setenv("HOME", home.c_str(), 1);
}
} // namespace
