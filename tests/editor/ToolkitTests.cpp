// The toolkit's logic without a display: routing, redraw bookkeeping, value laws of the control
// families, prompts and the host gestures they make.
#include <gtest/gtest.h>

#include <tuple>

#include "EditorDoubles.h"
#include "editor/IMyControls.h"

using namespace editortest;

namespace
{
struct Fixture : Window<1240, 620>
{
    std::vector<int> drawn;

    RecordingControl* Add(const IRECT& r, int id = -1, int tag = 0)
    {
        return Attach(new RecordingControl(&plug, r, id, &drawn, tag));
    }
};
} // namespace

TEST_F(Fixture, DrawsInAttachOrderHitsFromTheLastAndSkipsHiddenAndGrayed)
{
    RecordingControl *under = Add(IRECT(0, 0, 100, 100), -1, 1), *over = Add(IRECT(50, 50, 150, 150), -1, 2);
    Add(IRECT(400, 400, 420, 420), -1, 3);
    IRECT r;
    ASSERT_TRUE(graphics.IsDirty(r));
    graphics.Draw(r);
    EXPECT_EQ(drawn, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(graphics.HitTest(60, 60), 1); // overlap: the later one
    EXPECT_EQ(graphics.HitTest(10, 10), 0);
    Settle();
    drawn.clear();

    over->Hide(true);
    Click(60, 60);
    EXPECT_TRUE(under->mDowns == 1 && over->mDowns == 0);
    ASSERT_TRUE(graphics.IsDirty(r)); // the area it left is painted over
    graphics.Draw(r);
    EXPECT_EQ(drawn, (std::vector<int>{1}));
    under->GrayOut(true);
    graphics.OnMouseDown(10, 10, Left());
    EXPECT_EQ(under->mDowns, 1);
}

TEST_F(Fixture, RedrawsTheUnionOfDirtyControlsOnly)
{
    RecordingControl* a = Add(IRECT(10, 10, 30, 30), -1, 1);
    Add(IRECT(500, 500, 520, 520), -1, 2);
    RecordingControl* c = Add(IRECT(100, 200, 140, 240), -1, 3);
    auto* text = Attach(new ITextControl(&plug, IRECT(600, 0, 700, 20), IText(), "A"));
    EXPECT_EQ(graphics.OnTimerTick(), IRECT(0, 0, 1240, 620));
    EXPECT_TRUE(graphics.OnTimerTick().Empty()); // nothing changed: nothing drawn
    drawn.clear();
    IRECT r;
    a->SetDirty(false);
    c->SetDirty(false);
    ASSERT_TRUE(graphics.IsDirty(r));
    EXPECT_EQ(r, IRECT(10, 10, 140, 240));
    graphics.Draw(r);
    EXPECT_EQ(drawn, (std::vector<int>{1, 3})); // the far one lies outside the union
    EXPECT_FALSE(graphics.IsDirty(r));

    // A text that is set to what it shows asks for no redraw.
    text->SetTextFromPlug("A");
    EXPECT_FALSE(graphics.IsDirty(r));
    text->SetTextFromPlug("B");
    EXPECT_TRUE(graphics.IsDirty(r));
    graphics.Draw(r);
    // A hidden control that changes stays out of the union.
    c->Hide(true);
    graphics.IsDirty(r);
    graphics.Draw(r);
    c->SetDirty(false);
    EXPECT_FALSE(graphics.IsDirty(r));
}

TEST_F(Fixture, PlugValuesFanOutToEveryControlOfTheParameter)
{
    RecordingControl *a = Add(IRECT(0, 0, 10, 10), kMix), *b = Add(IRECT(20, 0, 30, 10), kMix);
    RecordingControl* other = Add(IRECT(40, 0, 50, 10), kGain);
    graphics.SetParameterFromPlug(kMix, 0.25, true);
    EXPECT_TRUE(a->GetValue() == 0.25 && b->GetValue() == 0.25 && other->GetValue() == 0.0);
    // The first value from the plug-in is the default; a plain value is normalised first.
    graphics.SetParameterFromPlug(kMix, 80.0, false);
    EXPECT_DOUBLE_EQ(b->GetValue(), 0.8);
    EXPECT_EQ(a->GetDefaultValue(), 0.25);
    EXPECT_TRUE(plug.mLog.empty()); // the host hears nothing of this
}

TEST(ValueEntryTest, ParsedAndCutToRange)
{
    IParamRecord gain;
    gain.InitDouble("Gain", 0.0, -12.0, 12.0, 0.1, "dB");
    // Text that isn't a number leaves the value alone.
    const std::pair<const char*, double> cases[] = {{"  -6 dB", -6.0}, {"40", 12.0},     {"-100", -12.0},
                                                    {"abc", 99.0},     {"", 99.0},       {"nan", 99.0},
                                                    {"1e1", 10.0},     {"+2.25dB", 2.25}};
    for (const auto& [text, value] : cases)
    {
        double v = 99.0;
        EXPECT_EQ(IGraphics::ParseValueEntry(gain, text, v), value != 99.0) << text;
        EXPECT_DOUBLE_EQ(v, value) << text;
    }
}

TEST_F(Fixture, PopupSkipsDisabledItemsAndSeparators)
{
    auto menu = std::make_shared<IPopupMenu>();
    menu->AddItem("A");
    menu->AddItem("B", IPopupMenu::kDisabled);
    menu->AddSeparator();
    menu->AddItem("C", IPopupMenu::kChecked);
    int index = -1;
    graphics.CreateIPopupMenu(menu, IRECT(0, 0, 50, 20),
                              [&](IPopupMenu* m, int i) { index = m == menu.get() ? i : -9; });
    auto* popup = dynamic_cast<IPopupOverlay*>(graphics.ModalOverlay());
    ASSERT_NE(popup, nullptr);
    for (int i : {1, 2}) // clicks on the disabled item and the separator do nothing
        graphics.OnMouseDown(popup->ItemRect(0, i).L + 3, popup->ItemRect(0, i).T + 3, Left());
    EXPECT_EQ(graphics.ModalOverlay(), popup);
    // Keys walk over them too.
    graphics.OnKeyDown(0, 0, kKeyUp);   // from the separator up to A, over B
    graphics.OnKeyDown(0, 0, kKeyDown); // down to C, over B and the separator
    graphics.OnKeyDown(0, 0, kKeyEnter);
    EXPECT_EQ(index, 3);
    EXPECT_EQ(menu->GetChosenItemIdx(), 3);
}

// A long menu opened at the window's corner stays inside, scrolls by the wheel, and its sub-menu
// turns left at the edge. (Picks in a sub-menu are the engine suite's PresetRow test.)
TEST_F(Fixture, LongMenusScrollAndSubMenusCascade)
{
    auto menu = std::make_shared<IPopupMenu>();
    auto sub = std::make_shared<IPopupMenu>();
    for (int i = 0; i < 5; ++i)
        sub->AddItem("sub " + std::to_string(i));
    menu->AddItem("folder", sub);
    for (int i = 0; i < 80; ++i)
        menu->AddItem("preset " + std::to_string(i));
    graphics.CreateIPopupMenu(menu, IRECT(1200, 600, 1240, 620), {});
    auto* popup = dynamic_cast<IPopupOverlay*>(graphics.ModalOverlay());
    ASSERT_NE(popup, nullptr);
    const IRECT b = popup->Bounds();
    EXPECT_TRUE(IRECT(0, 0, 1240, 620).Intersect(b) == b);
    EXPECT_TRUE(popup->ItemRect(0, 80).Empty()); // out of view
    graphics.OnMouseWheel(b.L + 10, b.T + 40, IMouseMod(), -40);
    EXPECT_FALSE(popup->ItemRect(0, 80).Empty());
    graphics.OnMouseWheel(b.L + 10, b.T + 40, IMouseMod(), 40);
    const IRECT folder = popup->ItemRect(0, 0);
    graphics.OnMouseOver(folder.L + 5, folder.T + 5, IMouseMod());
    ASSERT_EQ(popup->NLevels(), 2);
    EXPECT_LE(popup->ItemRect(1, 3).R, 1240);
}

TEST_F(Fixture, KnobArcIsUnipolarFromTheStopBipolarFromTheTop)
{
    // At the middle value a unipolar arc covers the left of the track and a bipolar one nothing.
    const std::tuple<bool, double, bool, bool> cases[] = {{false, 0.5, true, false},
                                                          {true, 0.5, false, false},
                                                          {true, 0.9, false, true},
                                                          {true, 0.1, true, false}};
    const IColor red(255, 255, 0, 0);
    for (int x = 0; const auto& [bipolar, value, leftLit, rightLit] : cases)
    {
        Attach(new IBitmapKnobControl(&plug, x + 20, 20, kMix, FakeStrip(60, 60, 64), &red, bipolar))
            ->SetValueFromPlug(value);
        graphics.OnTimerTick();
        // Points on the track (radius 27.5 about the knob's centre) at 9 and 3 o'clock.
        EXPECT_EQ(Red(x + 23, 50) > 200, leftLit) << bipolar << " " << value;
        EXPECT_EQ(Red(x + 77, 50) > 200, rightLit) << bipolar << " " << value;
        x += 100;
    }
}

// A link opens its fixed address through the window's opener on a press, and tells the host
// nothing.
TEST_F(Fixture, ALinkOpensItsAddress)
{
    std::string opened;
    graphics.SetURLOpener([&](const std::string& url) { return !(opened = url).empty(); });
    graphics.AttachControl(new IURLControl(&plug, IRECT(200, 0, 250, 20), "https://example.org/quorvex"));
    Click(210, 5);
    EXPECT_EQ(opened, "https://example.org/quorvex");
    EXPECT_TRUE(plug.mLog.empty());
}
