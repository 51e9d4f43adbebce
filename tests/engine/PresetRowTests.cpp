#include <gtest/gtest.h>

#include <filesystem>

#include "PresetRig.h"
#include "editor/IFilePromptOverlay.h"
#include "editor/IMessageBoxOverlay.h"
#include "editor/MainLayout.h"
#include "editor/PresetRowControls.h"
#include "editor/QuorvexEditor.h"

// The preset row, the steps and the save prompt as the user meets them in the plug-in's own
// window: the menu under the name, the arrows, the prompt and the alerts.

using namespace engine_rig;

namespace
{
// The save button's path through the editor: the prompt over the user folder, the file, and the
// refusal shown in the editor's message box on its next tick.
TEST(PresetRow, SaveDialogWritesThroughThePromptAndAlertsInTheEditor)
{
    PresetRig rig;
    std::filesystem::create_directories(rig.Dir().Path() + "/User Presets/Mine");
    auto plug = rig.Make();
    auto* editor = dynamic_cast<IGraphics*>(plug->GetGUI());
    ASSERT_NE(editor, nullptr);
    // A second instance, made before the save, finds the new file in its next menu.
    auto other = rig.Make();
    EXPECT_EQ(other->PresetMenu().FlatList(), std::vector<std::string>{});
    plug->GetParam(kFeedback1)->value = 81.5;
    plug->SavePresetDialog();
    auto* prompt = dynamic_cast<IFilePromptOverlay*>(editor->ModalOverlay());
    ASSERT_NE(prompt, nullptr);
    EXPECT_EQ(prompt->Name(), "New Preset");
    ASSERT_EQ(prompt->Folders().size(), 2u);
    EXPECT_EQ(prompt->Folders()[1].mRelative, "Mine");
    editor->OnKeyDown(0, 0, kKeyDown);
    for (char c : std::string("Dub Echo"))
        editor->OnKeyDown(0, 0, c);
    editor->OnKeyDown(0, 0, kKeyEnter);
    EXPECT_TRUE(std::filesystem::exists(rig.Dir().Path() + "/User Presets/Mine/Dub Echo.txt"));
    // The saved preset becomes the current one, in the menu's selection too.
    EXPECT_EQ(plug->SelectedPresetPath(), "/User Presets/Mine/Dub Echo");
    EXPECT_EQ(plug->Fields().mPresetName + " " + plug->Fields().mPresetFolderLabel, "Dub Echo U:Mine");
    EXPECT_EQ(plug->Fields().mPresetMenuFolder, "/User Presets/Mine/");
    EXPECT_EQ(plug->Fields().mPresetMenuIndex, 0);
    EXPECT_EQ(other->PresetMenu().FlatList(), std::vector<std::string>{"/User Presets/Mine/Dub Echo"});
    ASSERT_TRUE(other->LoadPreset("/User Presets/Mine/Dub Echo.txt"));
    EXPECT_EQ(other->GetParam(kFeedback1)->value, 81.5);
    editor->OnTimerTick();
    EXPECT_EQ(editor->ModalOverlay(), nullptr); // nothing to say

    // Cancelled: nothing written, nothing said.
    plug->SavePresetDialog();
    editor->OnKeyDown(0, 0, kKeyEscape);
    editor->OnTimerTick();
    EXPECT_EQ(editor->ModalOverlay(), nullptr);

    // A refusal is shown on the next tick; a second one replaces the text in the same box; the
    // box's button dismisses the message.
    plug->ShowMessage(kMsgCannotWritePreset);
    editor->OnTimerTick();
    auto* box = dynamic_cast<IMessageBoxOverlay*>(editor->ModalOverlay());
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->Text(), "Could not write Preset file!\nPlease re-install QUORVEX!");
    plug->ShowMessage(kMsgFactoryFolderReadOnly);
    editor->OnTimerTick();
    EXPECT_EQ(editor->ModalOverlay(), box);
    EXPECT_EQ(box->Text(), "Can't write into Fatory Preset Folder!\nPlease save to User Preset Folder!");
    editor->OnKeyDown(0, 0, kKeyEnter);
    EXPECT_EQ(editor->ModalOverlay(), nullptr);
    EXPECT_FALSE(plug->Message().IsPending());
    editor->OnTimerTick();
    EXPECT_EQ(editor->ModalOverlay(), nullptr);
}

// The preset row as the user meets it: the menu under the name with both sections, a sub-menu per
// folder and the current file checked; picks and steps load, and the row shows the result.
TEST(PresetRow, ThePresetRowOpensTheMenuStepsAndShowsTheName)
{
    const IMouseMod left{true, false, false, false, false};
    PresetRig rig;
    rig.Dir().Write("/User Presets/Mine.txt", File(14, "Feedback1 11\n"));
    rig.Dir().Write("/Factory Presets/Basics/Clean.txt", File(14, "Feedback1 22\n"));
    auto plug = rig.Make();
    auto* editor = dynamic_cast<QuorvexEditor*>(plug->GetGUI());
    ASSERT_NE(editor, nullptr);
    auto clickItem = [&](int level, int index)
    {
        auto* menu = dynamic_cast<IPopupOverlay*>(editor->ModalOverlay());
        ASSERT_NE(menu, nullptr);
        const IRECT r = menu->ItemRect(level, index);
        ASSERT_FALSE(r.Empty());
        editor->OnMouseOver(r.L + 10, r.T + 5, {});
        editor->OnMouseDown(r.L + 10, r.T + 5, left);
        editor->OnMouseUp(r.L + 10, r.T + 5, left);
    };

    const IRECT name = editor->PresetName()->GetRECT();
    editor->OnMouseDown(name.L + 20, name.T + 5, left);
    editor->OnMouseUp(name.L + 20, name.T + 5, left);
    clickItem(0, 1); // "Mine"
    EXPECT_EQ(plug->GetParam(kFeedback1)->value, 11.0);
    editor->OnTimerTick();
    EXPECT_EQ(editor->PresetName()->Name(), "Mine");

    // Into the factory folder's sub-menu.
    editor->OnMouseDown(name.L + 20, name.T + 5, left);
    auto* menu = dynamic_cast<IPopupOverlay*>(editor->ModalOverlay());
    ASSERT_NE(menu, nullptr);
    const IRECT basics = menu->ItemRect(0, 3);
    editor->OnMouseOver(basics.L + 10, basics.T + 5, {});
    ASSERT_EQ(menu->NLevels(), 2);
    clickItem(1, 0); // "Clean"
    EXPECT_EQ(plug->GetParam(kFeedback1)->value, 22.0);
    editor->OnTimerTick();
    EXPECT_EQ(editor->PresetName()->Name(), "Clean");
    EXPECT_EQ(editor->PresetName()->FolderLabel(), plug->Fields().mPresetFolderLabel);
    // The pick is kept as the menu's selection for the state chunk.
    EXPECT_EQ(plug->Fields().mPresetMenuFolder, "/Factory Presets/Basics/");
    EXPECT_EQ(plug->Fields().mPresetMenuIndex, 0);

    // The buttons step through the files, wrapping.
    IRECT next;
    for (const LayoutRow& row : kMainLayout)
        if (row.mKind == ELayoutKind::kPresetNext) next = row.mRect;
    editor->OnMouseDown(next.L + 5, next.T + 5, left);
    editor->OnMouseUp(next.L + 5, next.T + 5, left);
    EXPECT_EQ(plug->GetParam(kFeedback1)->value, 11.0);
}

TEST(PresetRow, StepLoadsTheNeighboursAndWraps)
{
    PresetRig rig;
    rig.Dir().Write("/User Presets/a.txt", File(14, "Feedback1 1\n"));
    rig.Dir().Write("/User Presets/B.txt", File(14, "Feedback1 2\n"));
    rig.Dir().Write("/Factory Presets/F/c.txt", File(14, "Feedback1 3\n"));
    auto plug = rig.Make();
    for (const auto& [forward, feedback] :
         {std::pair{true, 1.0}, {true, 2.0}, {true, 3.0}, {true, 1.0}, {false, 3.0}})
    {
        plug->StepPreset(forward);
        EXPECT_EQ(plug->GetParam(kFeedback1)->value, feedback);
    }
    EXPECT_EQ(plug->Fields().mPresetFolderLabel, "F:F");

    // A section header is no preset: picking it loads nothing.
    EXPECT_FALSE(plug->PickPresetMenuItem(plug->PresetMenu().MenuOfFolder("/User Presets/"), 0));
    EXPECT_EQ(plug->GetParam(kFeedback1)->value, 3.0);

    // A file gone since the scan: the step fails, the selection stays, the next step rescans.
    std::filesystem::remove(rig.Dir().Path() + "/User Presets/a.txt");
    plug->StepPreset(true);
    EXPECT_EQ(plug->SelectedPresetPath(), "/Factory Presets/F/c");
    EXPECT_EQ(plug->Fields().mPresetName, "NO FILE");
    plug->StepPreset(true);
    EXPECT_EQ(plug->GetParam(kFeedback1)->value, 2.0);
}
} // namespace
