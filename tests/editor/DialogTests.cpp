// The toolkit's own dialogs without a display: the message box and the save prompt.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <tuple>

#include "EditorDoubles.h"
#include "editor/IFilePromptOverlay.h"
#include "editor/IMessageBoxOverlay.h"

using namespace editortest;
namespace fs = std::filesystem;

namespace
{
struct Dialogs : Window<1240, 620>
{
    fs::path dir;

    void SetUp() override
    {
        dir = fs::temp_directory_path() /
              ("quorvex-dialogs-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "-" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(dir);
        fs::create_directories(dir / "User Presets" / "bass" / "Dub");
        fs::create_directories(dir / "User Presets" / "Atmos");
        fs::create_directories(dir / "User Presets" / ".git" / "objects");
        std::ofstream(dir / "User Presets" / "loose.txt") << "x";
    }
    void TearDown() override { fs::remove_all(dir); }
    std::string Top() const { return (dir / "User Presets").string(); }
    void Click(const IRECT& r) { Window::Click((r.L + r.R) / 2, (r.T + r.B) / 2); }
};
} // namespace

// Modal: a click beside it or another key changes nothing; its button, Enter, Escape and space
// answer. (That the editor shows the plug-in's messages in it is the engine suite's PresetRow test.)
TEST_F(Dialogs, MessageBoxWaitsForTheUsersAnswer)
{
    int acknowledged = 0;
    for (int key : {0, +kKeyEnter, +kKeyEscape, int(' ')})
    {
        graphics.ShowMessageBox("First line\nSecond line", "QUORVEX", [&] { ++acknowledged; });
        auto* box = dynamic_cast<IMessageBoxOverlay*>(graphics.ModalOverlay());
        ASSERT_NE(box, nullptr);
        Window::Click(5, 5);
        EXPECT_TRUE(graphics.OnKeyDown(0, 0, 'x')); // taken, but no answer
        EXPECT_EQ(graphics.ModalOverlay(), box);
        key ? (void)graphics.OnKeyDown(0, 0, key) : Click(box->ButtonRect());
        EXPECT_EQ(graphics.ModalOverlay(), nullptr);
    }
    EXPECT_EQ(acknowledged, 4);
}

TEST_F(Dialogs, SavePromptListsTheFolderTreeWithoutHiddenFoldersAndMakesPathsInIt)
{
    // Sorted by path regardless of case: "Atmos" before "bass", "bass/Dub" under "bass".
    std::string listed;
    for (const auto& f : IFilePromptOverlay::ScanFolders(Top()))
        listed += f.mRelative + ":" + f.mName + ":" + std::to_string(f.mDepth) + " ";
    EXPECT_EQ(listed, ":User Presets:0 Atmos:Atmos:1 bass:bass:1 bass/Dub:Dub:2 ");
    // A folder that doesn't exist still offers itself, and nothing else.
    EXPECT_EQ(IFilePromptOverlay::ScanFolders((dir / "missing").string()).size(), 1u);

    // A blank name gives no path at all.
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"bass/Dub", "  Deep  ", "/bass/Dub/Deep.txt"},
        {"", "Has.TXT", "/Has.TXT"},
        {"", "a/b\\c", "/a-b-c.txt"},
        {"", ".txt", "/.txt.txt"},
        {"", "   ", ""}};
    for (const auto& [relative, name, want] : cases)
        EXPECT_EQ(IFilePromptOverlay::PathFor(Top(), relative, name, "txt"), *want ? Top() + want : "")
            << name;
    EXPECT_EQ(IFilePromptOverlay::PathFor(Top() + "/", "", "x", "txt"), Top() + "/x.txt");
}

// The mouse picks a folder and saves, keys move the selection; CANCEL gives an empty path, and so
// does a blank name. (Typing over the starting name, Enter and Escape are the engine suite's
// PresetRow test.) A long folder list keeps the selection in view and the box inside the window.
TEST_F(Dialogs, SavePromptPicksAFolderAndScrollsALongList)
{
    std::string saved = "-";
    graphics.PromptForFile(
        "Echo", Top(), "txt", [&](const std::string& p) { saved = p; }, "SAVE PRESET");
    auto* prompt = dynamic_cast<IFilePromptOverlay*>(graphics.ModalOverlay());
    ASSERT_NE(prompt, nullptr);
    Click(prompt->FolderRect(3)); // bass/Dub
    EXPECT_EQ(prompt->SelectedFolder(), 3);
    graphics.OnKeyDown(0, 0, kKeyUp); // bass
    Click(prompt->SaveRect());
    EXPECT_EQ(saved, Top() + "/bass/Echo.txt");
    for (int blank = 0; blank < 2; ++blank)
    {
        saved = "-";
        graphics.PromptForFile("Drop", Top(), "txt", [&](const std::string& p) { saved = p; });
        if (!blank) Click(dynamic_cast<IFilePromptOverlay*>(graphics.ModalOverlay())->CancelRect());
        if (blank) graphics.OnKeyDown(0, 0, kKeyBackspace), graphics.OnKeyDown(0, 0, kKeyEnter);
        EXPECT_EQ(saved, "");
    }

    for (int i = 0; i < 30; ++i)
        fs::create_directories(dir / "User Presets" / "Atmos" / ("Sub " + std::to_string(100 + i)));
    graphics.PromptForFile("X", Top(), "txt", [&](const std::string& p) { saved = p; });
    prompt = dynamic_cast<IFilePromptOverlay*>(graphics.ModalOverlay());
    ASSERT_NE(prompt, nullptr);
    ASSERT_EQ(prompt->Folders().size(), 34u);
    EXPECT_TRUE(prompt->FolderRect(IFilePromptOverlay::kVisibleRows).Empty()); // below the box
    graphics.OnKeyDown(0, 0, kKeyPageDown);
    graphics.OnKeyDown(0, 0, kKeyPageDown);
    EXPECT_EQ(prompt->SelectedFolder(), 2 * IFilePromptOverlay::kVisibleRows);
    EXPECT_FALSE(prompt->FolderRect(prompt->SelectedFolder()).Empty());
    EXPECT_TRUE(IRECT(0, 0, 1240, 620).Intersect(prompt->Bounds()) == prompt->Bounds());
}
