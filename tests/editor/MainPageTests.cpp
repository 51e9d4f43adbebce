// The editor built from the main layout on the real parameter catalogue: the art that the
// generator drew matches the bitmap table, and the controls that change other controls or pages
// do so at once. (That every control sits where the layout says is the page tests'.)
#include <gtest/gtest.h>

#include "CatalogueEditor.h"
#include "editor/BitmapList.h"
#include "editor/MainLayout.h"
#include "editor/ValuePopUpControl.h"

using namespace editortest;

using MainPage = CatalogueEditor;

TEST(ArtTest, EveryBitmapHasTheTablesSizeAtOneAndTwoTimes)
{
    for (const BitmapRow& row : kBitmapRows)
        for (int scale : {1, 2})
        {
            const std::string name = std::string(row.mName) + (scale == 2 ? "@2x" : "");
            const auto image = LoadRasterImage(QUORVEX_ART_DIR, name);
            ASSERT_NE(image, nullptr) << name;
            int w = 0, h = 0;
            RasterImageSize(image.get(), w, h);
            EXPECT_EQ(w, row.mW * scale) << name;
            EXPECT_EQ(h, row.mH * row.mFrames * scale) << name;
        }
    EXPECT_EQ(BitmapId("no such bitmap"), -1);
}

TEST_F(MainPage, MasterEffectPopupPicksATypeAndTheKnobNamesFollow)
{
    IControl* popup = nullptr;
    for (int i = 0; i < static_cast<int>(std::size(kMainLayout)); ++i)
        if (kMainLayout[i].mKind == ELayoutKind::kPopup && kMainLayout[i].mParam == kMasterFX)
            popup = editor.ControlOfRow(i);
    ClickAt(popup->GetRECT().L + 5, popup->GetRECT().T + 5);
    PickRow(editor, 2);
    EXPECT_EQ(plug.GetParam(kMasterFX)->value, 2.0);
    // The press that opened the list brackets nothing; the pick is the one gesture that moves it.
    const std::string id = std::to_string(kMasterFX);
    EXPECT_EQ(plug.Gestures(), "B" + id + " E" + id + " " + OneGesture(kMasterFX));
    // The knob names follow at once: the host doesn't echo the edit back.
    std::vector<std::string> names;
    for (int i = 0; i < editor.NControls(); ++i)
        if (auto* label = dynamic_cast<ISelectorLabelControl*>(editor.GetControl(i)))
            names.push_back(label->Text());
    EXPECT_EQ(names, (std::vector<std::string>{"SIZE", "PREDELAY", "HIPASS", "DAMP"}));
    // The frame of the selector strip names the type.
    EXPECT_EQ(dynamic_cast<IBitmapControl*>(popup)->CurrentFrame(), 3);
}

// The options button opens the options page and leads back; the tabs are the window suite's
// EditorHost.EveryPageTakesTheMouse.
TEST_F(MainPage, TheOptionsButtonTogglesTheOptionsPage)
{
    std::vector<int> asked;
    editor.SetPageActions({{}, [&] { asked.push_back(editor.ToggleOptionsPage(false)); }, {}});
    editor.ShowPage(5, false);
    for (const LayoutRow& row : kMainLayout)
        if (row.mKind == ELayoutKind::kPageButton)
            for (int i = 0; i < 2; ++i)
                ClickAt(row.mRect.L + 5, row.mRect.T + 5);
    EXPECT_EQ(asked, (std::vector<int>{9, 5}));
    EXPECT_EQ(editor.Pages().LastPage(), 5);
    EXPECT_TRUE(plug.mLog.empty()); // pages are no parameters
}
