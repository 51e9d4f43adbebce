// The editor built from the main layout on the real parameter catalogue: the art that the
// generator drew matches the bitmap table, every control sits where the layout says, and the
// controls that change other controls or pages do so at once.
#include <gtest/gtest.h>

#include "CatalogueEditor.h"
#include "editor/BitmapList.h"
#include "editor/MainLayout.h"
#include "editor/ValuePopUpControl.h"

using namespace editortest;

namespace
{
struct MainPage : CatalogueEditor
{
    IControl* Control(ELayoutKind kind, int param)
    {
        for (int i = 0; i < static_cast<int>(std::size(kMainLayout)); ++i)
            if (kMainLayout[i].mKind == kind && kMainLayout[i].mParam == param) return editor.ControlOfRow(i);
        return nullptr;
    }
};
} // namespace

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

TEST_F(MainPage, ControlsSitWhereTheLayoutSaysOnTheirParameters)
{
    int controls = 0;
    for (int i = 0; i < static_cast<int>(std::size(kMainLayout)); ++i)
    {
        SCOPED_TRACE(::testing::Message() << "row " << i);
        const LayoutRow& row = kMainLayout[i];
        IControl* c = editor.ControlOfRow(i);
        const bool background = row.mKind == ELayoutKind::kTopBar || row.mKind == ELayoutKind::kStage ||
                                row.mKind == ELayoutKind::kPanel || row.mKind == ELayoutKind::kLabel ||
                                row.mKind == ELayoutKind::kReserved;
        EXPECT_EQ(c == nullptr, background);
        if (!c) continue;
        ++controls;
        EXPECT_EQ(c->GetRECT(), row.mRect);
        if (row.mKind == ELayoutKind::kKnob || row.mKind == ELayoutKind::kSwitch ||
            row.mKind == ELayoutKind::kPopup)
        {
            EXPECT_EQ(c->ParamIdx(), row.mParam);
            EXPECT_DOUBLE_EQ(c->GetValue(), plug.GetParam(row.mParam)->GetNormalized());
        }
    }
    // The rest are the pages' controls, each in its page's list.
    int pageControls = 0;
    for (int list = 0; list < kNumPageLists; ++list)
        pageControls += static_cast<int>(editor.ListControls(static_cast<EPageList>(list)).size());
    EXPECT_EQ(controls + pageControls, editor.NControls());
}

TEST_F(MainPage, MasterEffectPopupPicksATypeAndTheKnobNamesFollow)
{
    IControl* popup = Control(ELayoutKind::kPopup, kMasterFX);
    const IRECT r = popup->GetRECT();
    ClickAt(r.L + 5, r.T + 5);
    auto* menu = dynamic_cast<IPopupOverlay*>(editor.ModalOverlay());
    ASSERT_NE(menu, nullptr);
    const IRECT reverb = menu->ItemRect(0, 2);
    editor.OnMouseOver(reverb.L + 4, reverb.T + 4, IMouseMod());
    editor.OnMouseDown(reverb.L + 4, reverb.T + 4, Left());
    EXPECT_EQ(plug.GetParam(kMasterFX)->value, 2.0);
    // The knob names follow at once: the host doesn't echo the edit back.
    std::vector<std::string> names;
    for (int i = 0; i < editor.NControls(); ++i)
        if (auto* label = dynamic_cast<ISelectorLabelControl*>(editor.GetControl(i)))
            names.push_back(label->Text());
    EXPECT_EQ(names, (std::vector<std::string>{"SIZE", "PREDELAY", "HIPASS", "DAMP"}));
    // The frame of the selector strip names the type.
    EXPECT_EQ(dynamic_cast<IBitmapControl*>(popup)->CurrentFrame(), 3);
    // A click beside an open list picks nothing.
    ClickAt(r.L + 5, r.T + 5);
    ASSERT_NE(editor.ModalOverlay(), nullptr);
    ClickAt(5, 600);
    EXPECT_EQ(editor.ModalOverlay(), nullptr);
    EXPECT_EQ(plug.GetParam(kMasterFX)->value, 2.0);
}

TEST_F(MainPage, PageTabsAndTheOptionsButton)
{
    std::vector<int> asked;
    editor.SetPageActions({[&](int page) { asked.push_back(editor.ShowPage(page, false)); },
                           [&] { asked.push_back(editor.ToggleOptionsPage(false)); },
                           {}});
    const LayoutRow* tabs = nullptr;
    const LayoutRow* options = nullptr;
    for (const LayoutRow& row : kMainLayout)
    {
        if (row.mKind == ELayoutKind::kPageSelect) tabs = &row;
        if (row.mKind == ELayoutKind::kPageButton) options = &row;
    }
    ASSERT_TRUE(tabs && options);
    const int tabW = kBitmapRows[tabs->mBitmap].mW;
    ClickAt(tabs->mRect.L + (tabs->mRect.W() - tabW) * 5 / 8 + 10, tabs->mRect.T + 5);
    ClickAt(options->mRect.L + 5, options->mRect.T + 5);
    ClickAt(options->mRect.L + 5, options->mRect.T + 5);
    EXPECT_EQ(asked, (std::vector<int>{5, 9, 5}));
    EXPECT_EQ(editor.Pages().LastPage(), 5);
    EXPECT_TRUE(plug.mLog.empty()); // pages are no parameters
}
