// Custom controls that choose through the editor's popup overlay: the list field bound to a
// parameter, the parameter's display texts on a button, the field with its own menu, the
// invisible menu area and the colour set chooser. Picks are made by clicking the overlay's rows.
#include <gtest/gtest.h>

#include "EditorDoubles.h"
#include "editor/IColorPanel.h"
#include "editor/MenuControls.h"

using namespace editortest;

namespace
{
struct Menus : Window<600, 400>
{
    IText style;

    IPopupOverlay* Popup() { return dynamic_cast<IPopupOverlay*>(graphics.ModalOverlay()); }
    // Number of rows the open popup offers at its first level.
    int Rows() { return Popup() ? Popup()->MenuAt(0)->NItems() : 0; }
};
} // namespace

// A list field and a button of the parameter's display texts: the pick sets the value (blank
// entries left out of the list) as a gesture of its own after the press's, and shows its text; a
// click elsewhere chooses nothing.
TEST_F(Menus, ParameterPopupsChooseTheValueAndShowIt)
{
    auto* field = Attach(new ITextPopupMenu(&plug, IRECT(100, 100, 200, 120), kMode, {"SOFT", "HARD", "FOLD"},
                                            style, graphics.Colors().Role(2)));
    graphics.SetParameterFromPlug(kMode, 0.5, true);
    EXPECT_EQ(field->Text(), "HARD");
    graphics.OnTimerTick();
    plug.mLog.clear();
    Click(150, 110);
    EXPECT_EQ(Rows(), 3);
    PickRow(graphics, 2);
    EXPECT_EQ(field->Text(), "FOLD");
    EXPECT_EQ(plug.GetParam(kMode)->value, 2.0);
    EXPECT_EQ(plug.Gestures(), "B1 E1 B1 P1 E1");
    Click(150, 110);
    plug.mLog.clear();
    Click(5, 5);
    EXPECT_TRUE(plug.mLog.empty());

    IParamRecord* mode = plug.GetParam(kMode);
    mode->InitEnum("Mode", 0, 4, "", "", true);
    for (int i = 0; const char* text : {"SOFT", "", "FOLD", "WRAP"})
        mode->SetDisplayText(i++, text);
    auto* button =
        Attach(new IParamPopupMenu(&plug, IRECT(300, 100, 360, 120), kMode, FakeStrip(60, 20, 4), &style));
    graphics.OnTimerTick();
    Click(320, 110);
    EXPECT_EQ(Rows(), 3);
    plug.mLog.clear();
    PickRow(graphics, 1); // the second row shown is the third value
    EXPECT_EQ(mode->value, 2.0);
    EXPECT_DOUBLE_EQ(button->GetValue(), 2.0 / 3.0);
    EXPECT_EQ(button->ValueText(), "FOLD");
    EXPECT_EQ(plug.Gestures(), "B1 P1 E1");
}

// Without a parameter a list field, a menu field and an invisible menu area hand the pick to their
// call-back; a one-entry list doesn't divide by zero and an empty one opens nothing.
TEST_F(Menus, MenusWithoutAParameterHandTheirPickToTheCallback)
{
    std::vector<int> picks;
    auto* single = Attach(new ITextPopupMenu(&plug, IRECT(300, 100, 400, 120), -1, {"ONLY"}, style, nullptr));
    single->SetAction([&](IControl& c) { picks.push_back(static_cast<ITextPopupMenu&>(c).Index()); });
    Click(350, 110);
    PickRow(graphics, 0);
    EXPECT_EQ(single->GetValue(), 0.0);
    single->SetItems({});
    Click(350, 110);
    EXPECT_EQ(graphics.ModalOverlay(), nullptr);

    auto menu = std::make_shared<IPopupMenu>();
    for (const char* item : {"ALL OFF", "ALL ON", "RAMP"})
        menu->AddItem(item);
    auto* simple = Attach(new ISimpleMenu(
        &plug, IRECT(100, 100, 200, 120), menu,
        [&](IPopupMenu* m, int i) { picks.push_back(m == menu.get() ? i : -9); }, style, "PRESETS"));
    simple->SetCheckChoice(true);
    for (int pick : {2, 1, -1}) // the last dismissed: the check stays
    {
        Click(150, 110);
        pick < 0 ? Click(5, 5) : PickRow(graphics, pick);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(menu->GetItem(i)->Checked(), i == (pick < 0 ? 1 : pick)) << pick << " " << i;
    }
    Attach(new IEmptyPopupMenu(&plug, IRECT(450, 100, 490, 120), menu,
                               [&](IPopupMenu*, int i) { picks.push_back(10 + i); }));
    Click(470, 110);
    PickRow(graphics, 1);
    EXPECT_EQ(picks, (std::vector<int>{0, 2, 1, 11}));
    EXPECT_TRUE(plug.mLog.empty());
}

TEST_F(Menus, ColourPanelListsTheSetsAndReportsThePick)
{
    std::vector<int> chosen;
    auto* panel =
        Attach(new IColorPanel(&plug, IRECT(100, 100, 260, 122), style, [&](int i) { chosen.push_back(i); }));
    EXPECT_STREQ(panel->Name(), "DEFAULT");
    Click(150, 110);
    EXPECT_EQ(Rows(), kNumColorSets);
    PickRow(graphics, 4);
    EXPECT_EQ(panel->Selection(), 4);
    EXPECT_STREQ(panel->Name(), "FIRE");
    // The plug-in moves the selection after a state load; an index outside the table shows the
    // default, and tells nobody.
    panel->SetSelection(99);
    EXPECT_STREQ(panel->Name(), "DEFAULT");
    EXPECT_EQ(chosen, (std::vector<int>{4}));
    EXPECT_TRUE(plug.mLog.empty());
}
