// The custom controls' logic: frame laws, the routing of the double knob, the radio buttons that
// can be switched off, the step preset grid, value labels, and that every control bound to a
// parameter makes exactly one host gesture per press.
#include <gtest/gtest.h>

#include "EditorDoubles.h"
#include "editor/BlendBitmapControls.h"
#include "editor/IGridOverlayControl.h"
#include "editor/IInvColOverlayControl.h"
#include "editor/IKnobMultiControlNoText.h"
#include "editor/IKnobMultiRemoteControl.h"
#include "editor/IMyControls.h"
#include "editor/StepControls.h"

using namespace editortest;

namespace
{
using Editor = Window<400, 300>;

constexpr IColor kRed(255, 255, 0, 0);
} // namespace

TEST(KnobFrameTest, PlainAndSteppedLaws)
{
    struct Case
    {
        double value;
        int frames, steps;
        double shape;
        int frame;
    };
    const Case cases[] = {
        // Plain: 1 + (frames - 1) x value, rounded; out-of-range values stay on the strip.
        {0.0, 64, 0, 1.0, 1},
        {1.0, 64, 0, 1.0, 64},
        {0.5, 3, 0, 1.0, 2},
        {0.6, 64, 0, 1.0, 39},
        {1.4, 64, 0, 1.0, 64},
        {-0.2, 64, 0, 1.0, 1},
        {0.5, 1, 0, 1.0, 1},
        // Four steps over 64 frames: only the frames 1, 17, 33, 48 and 64 show.
        {0.24, 64, 4, 1.0, 1},
        {0.25, 64, 4, 1.0, 17},
        {0.6, 64, 4, 1.0, 33},
        {0.99, 64, 4, 1.0, 48},
        {1.0, 64, 4, 1.0, 64},
        // The shape bends the value before the steps: 0.7^2 = 0.49 is still the first step.
        {0.7, 64, 4, 2.0, 17},
        {0.5, 64, 4, 2.0, 17},
        {0.71, 64, 4, 2.0, 33},
        // As many steps as frames is still a step law; more, fewer than one, or none are plain.
        {0.6, 64, 64, 1.0, 38},
        {0.6, 64, 65, 1.0, 39},
        {0.6, 64, -3, 1.0, 39},
        {0.99, 64, 1, 1.0, 1},
        {1.0, 64, 1, 1.0, 64},
        // A shape that isn't positive counts as linear.
        {0.6, 64, 4, 0.0, 33},
    };
    for (const Case& c : cases)
        EXPECT_EQ(IKnobMultiControlNoText::FrameFor(c.value, c.frames, c.steps, c.shape), c.frame)
            << c.value << " frames " << c.frames << " steps " << c.steps << " shape " << c.shape;
}

TEST_F(Editor, KnobNotesTheLastTouchedParameterAndJumpsToTheClick)
{
    int lastTouched = -1;
    auto* knob = Attach(new IKnobMultiControlNoText(&plug, IRECT(100, 100, 120, 200), kMix,
                                                    FakeStrip(20, 100, 64), nullptr, &lastTouched));
    auto* other = Attach(new IKnobMultiControlNoText(&plug, IRECT(200, 100, 240, 140), kGain,
                                                     FakeStrip(40, 40, 64), nullptr, &lastTouched));
    knob->SetValueFromPlug(0.5);
    Settle();
    // Without jumping a press only grabs the knob.
    Click(110, 190);
    EXPECT_EQ(lastTouched, kMix);
    EXPECT_EQ(knob->GetValue(), 0.5);
    Click(210, 110);
    EXPECT_EQ(lastTouched, kGain);
    // A right press notes it too (the prompt belongs to that parameter).
    graphics.OnMouseDown(110, 150, Right());
    graphics.OnKeyDown(0, 0, kKeyEscape);
    EXPECT_EQ(lastTouched, kMix);

    knob->SetJumpToClick(true);
    plug.mLog.clear();
    Click(110, 125); // a quarter below the top
    EXPECT_DOUBLE_EQ(knob->GetValue(), 0.75);
    EXPECT_NEAR(plug.GetParam(kMix)->value, 75.0, 1e-9);
    EXPECT_EQ(plug.Gestures(), "B3 P3 E3");
    Click(110, 199);
    EXPECT_DOUBLE_EQ(knob->GetValue(), 0.01);
    EXPECT_DOUBLE_EQ(knob->ValueAt(110, 100), 1.0);
    EXPECT_DOUBLE_EQ(knob->ValueAt(110, 260), 0.0); // dragged out below: cut

    auto* across =
        Attach(new IKnobMultiControlNoText(&plug, IRECT(0, 250, 200, 260), kGain, FakeStrip(200, 10, 8),
                                           nullptr, nullptr, IKnobControl::kHorizontal));
    across->SetJumpToClick(true);
    Click(150, 255);
    EXPECT_DOUBLE_EQ(across->GetValue(), 0.75);
    EXPECT_EQ(other->GetValue(), across->GetValue()); // the other control of the parameter follows
}

TEST_F(Editor, KnobRingIsDrawnFilledOrAsOutlineAtTheGrownRectangle)
{
    const IColor* role = graphics.Colors().Role(5); // 0xFB1352 in the default set
    auto* knob = Attach(new IKnobMultiControlNoText(&plug, IRECT(100, 100, 140, 140), kMix, IBitmap(), role));
    knob->SetRing(false, 6);
    EXPECT_EQ(knob->RingRect(), IRECT(94, 94, 146, 146));
    graphics.OnTimerTick();
    // The outline runs about 1 pixel inside the grown rectangle; between it and the knob, nothing.
    EXPECT_GT(Red(120, 95), 200);
    EXPECT_LT(Red(120, 98), 80);
    knob->SetRing(true, 6);
    graphics.OnTimerTick();
    EXPECT_GT(Red(120, 98), 200);
    // A colour set change is seen at the next draw, with no call to the knob.
    graphics.SetColorSet(5); // ICE: role 5 is 0x7BB6FD
    graphics.OnTimerTick();
    EXPECT_EQ(Red(120, 98), 0x7B);
    // The ring is drawn but neither hit nor part of the drag's gearing: 30 pixels up on a
    // 40-pixel knob at gearing 3 is a quarter of the range.
    EXPECT_EQ(knob->GetRECT(), IRECT(94, 94, 146, 146));
    EXPECT_EQ(graphics.HitTest(96, 120), -1);
    graphics.OnMouseDown(120, 120, Left());
    graphics.OnMouseDrag(120, 90, Left());
    graphics.OnMouseUp(120, 90, Left());
    EXPECT_NEAR(knob->GetValue(), 0.25, 1e-12);
}

TEST_F(Editor, RemoteKnobRoutesByNormalisedRadius)
{
    auto* inner =
        Attach(new IKnobMultiControlNoText(&plug, IRECT(100, 100, 300, 200), kGain, FakeStrip(20, 20, 8)));
    auto* outer =
        Attach(new IKnobMultiControlNoText(&plug, IRECT(100, 100, 300, 200), kMix, FakeStrip(20, 20, 8)));
    auto* remote = Attach(new IKnobMultiRemoteControl(&plug, IRECT(100, 100, 300, 200), inner, outer, 0.5));
    struct Case
    {
        int x, y;
        IControl* knob;
    };
    // Half width 100 and half height 50: the radius 0.5 is 50 pixels across and 25 down.
    const Case cases[] = {{200, 150, inner}, {250, 150, inner}, {251, 150, outer}, {150, 150, inner},
                          {149, 150, outer}, {200, 125, inner}, {200, 124, outer}, {200, 175, inner},
                          {200, 176, outer}, {101, 101, outer}, {235, 167, inner}, {235, 168, outer}};
    for (const Case& c : cases)
        EXPECT_EQ(remote->Route(c.x, c.y), c.knob) << c.x << "," << c.y;
}

TEST_F(Editor, RemoteKnobHoldsItsChoiceUntilTheRelease)
{
    auto* inner =
        Attach(new IKnobMultiControlNoText(&plug, IRECT(100, 100, 200, 200), kGain, FakeStrip(20, 20, 8)));
    auto* outer =
        Attach(new IKnobMultiControlNoText(&plug, IRECT(100, 100, 200, 200), kMix, FakeStrip(20, 20, 8)));
    auto* remote = Attach(new IKnobMultiRemoteControl(&plug, IRECT(100, 100, 200, 200), inner, outer, 0.4));
    inner->SetValueFromPlug(0.5);
    outer->SetValueFromPlug(0.5);
    Settle();
    EXPECT_EQ(graphics.HitTest(150, 150), 2); // the remote lies over both knobs

    // Pressed on the inner knob and dragged out over the outer ring and beyond the rectangle.
    graphics.OnMouseDown(150, 150, Left());
    EXPECT_EQ(remote->Active(), inner);
    for (int i = 1; i <= 6; ++i)
        graphics.OnMouseDrag(150 + 12 * i, 150 - 5 * i, Left());
    graphics.OnMouseUp(222, 120, Left());
    EXPECT_EQ(remote->Active(), nullptr);
    EXPECT_NEAR(inner->GetValue(), 0.5 + 30.0 / 300.0, 1e-12);
    EXPECT_EQ(outer->GetValue(), 0.5);
    EXPECT_EQ(plug.Gestures(), "B0 P0 E0");

    // The outer ring: its own gesture.
    plug.mLog.clear();
    graphics.OnMouseDown(105, 150, Left());
    graphics.OnMouseDrag(105, 140, Left());
    graphics.OnMouseDrag(150, 150, Left()); // over the inner knob now: still the outer one
    graphics.OnMouseUp(150, 150, Left());
    EXPECT_NEAR(outer->GetValue(), 0.5 + 10.0 / 300.0 - 10.0 / 300.0, 1e-12);
    EXPECT_NEAR(inner->GetValue(), 0.6, 1e-12);
    EXPECT_EQ(plug.Gestures(), "B3 P3 E3");

    // The wheel and the double click reach the knob under the pointer.
    plug.mLog.clear();
    graphics.OnMouseWheel(150, 150, IMouseMod(), 2);
    EXPECT_NEAR(inner->GetValue(), 0.62, 1e-12);
    graphics.OnMouseWheel(190, 150, IMouseMod(), -1);
    EXPECT_NEAR(outer->GetValue(), 0.49, 1e-12);
    EXPECT_EQ(plug.Gestures(), "B0 P0 E0 B3 P3 E3");
    plug.mLog.clear();
    graphics.OnMouseDblClick(102, 150, Left());
    graphics.OnMouseUp(102, 150, Left());
    EXPECT_EQ(outer->GetValue(), 0.5);
    EXPECT_NEAR(inner->GetValue(), 0.62, 1e-12);
    EXPECT_EQ(plug.Gestures(), "B3 P3 E3");

    // A right press prompts for the knob under it, without a gesture.
    plug.mLog.clear();
    graphics.OnMouseDown(150, 150, Right());
    graphics.OnMouseUp(150, 150, Right());
    auto* box = dynamic_cast<ITextEntryOverlay*>(graphics.ModalOverlay());
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->Text(),
              plug.GetParam(kGain)->GetDisplayForHost(plug.GetParam(kGain)->value, false, false));
    EXPECT_TRUE(plug.mLog.empty());
}

TEST_F(Editor, ColourOverlayFollowsItsValueAndLetsTheMouseThrough)
{
    auto* knob =
        Attach(new IKnobMultiControlNoText(&plug, IRECT(20, 20, 80, 80), kMix, FakeStrip(60, 60, 64)));
    auto* overlay = Attach(new IInvColOverlayControl(&plug, IRECT(20, 20, 80, 80), kMix, &kRed, 1.0f, 3.0f));
    EXPECT_EQ(graphics.HitTest(50, 50), 0);
    knob->SetJumpToClick(true);
    Click(50, 35);
    EXPECT_DOUBLE_EQ(overlay->GetValue(), 0.75); // it follows the parameter
    graphics.SetParameterFromPlug(kMix, 0.5, true);
    graphics.OnTimerTick();
    // The band runs along the rim (radius 28.5 about 50,50) from the lower stop to twelve o'clock.
    EXPECT_GT(Red(22, 50), 200);
    EXPECT_LT(Red(78, 50), 100);
    graphics.SetParameterFromPlug(kMix, 1.0, true);
    graphics.OnTimerTick();
    EXPECT_GT(Red(78, 50), 200);
}

TEST_F(Editor, MySwitchStepsThroughItsStripAndNeverPrompts)
{
    auto* sw = Attach(new IMySwitchControl(&plug, IRECT(0, 0, 20, 20), kMix, FakeStrip(20, 20, 3)));
    Settle();
    std::vector<double> seen;
    for (int i = 0; i < 4; ++i)
    {
        Click(5, 5);
        seen.push_back(sw->GetValue());
    }
    EXPECT_EQ(seen, (std::vector<double>{0.5, 1.0, 0.0, 0.5}));
    EXPECT_EQ(plug.Gestures(), "B3 P3 E3 B3 P3 E3 B3 P3 E3 B3 P3 E3");
    plug.mLog.clear();
    Click(5, 5, Right());
    EXPECT_EQ(graphics.ModalOverlay(), nullptr);
    EXPECT_EQ(sw->GetValue(), 0.5);
    EXPECT_TRUE(plug.mLog.empty());
}

TEST_F(Editor, RadioSelectionSwitchesOffOnTheSelectedButton)
{
    // No bitmap: three buttons of (62 - 2 x 2) / 3 = 19 pixels share the row.
    auto* radio = Attach(new IMyRadioControl(&plug, IRECT(0, 0, 62, 20), kMode, 3, IBitmap()));
    EXPECT_EQ(radio->ButtonRect(1), IRECT(21, 0, 40, 20));
    Settle();
    Click(45, 5);
    EXPECT_EQ(radio->Selection(), 2);
    EXPECT_EQ(radio->GetValue(), 1.0);
    EXPECT_EQ(plug.GetParam(kMode)->value, 2.0);
    Click(50, 5); // the selected one: off, the value kept
    EXPECT_EQ(radio->Selection(), -1);
    EXPECT_FALSE(radio->SelectionOn());
    EXPECT_EQ(radio->GetValue(), 1.0);
    Click(50, 5); // and on again
    EXPECT_EQ(radio->Selection(), 2);
    Click(25, 5);
    EXPECT_EQ(radio->Selection(), 1);
    EXPECT_EQ(radio->GetValue(), 0.5);
    plug.mLog.clear();
    Click(20, 5); // the gap between the first two buttons
    EXPECT_EQ(radio->GetValue(), 0.5);
    EXPECT_EQ(plug.Gestures(), "B1 E1");
    // Switched off, the plug-in's value selects a button again.
    Click(25, 5);
    EXPECT_EQ(radio->Selection(), -1);
    graphics.SetParameterFromPlug(kMode, 0.0, true);
    EXPECT_EQ(radio->Selection(), 0);

    // One button: the value stays 0, and the button only switches on and off.
    int actions = 0;
    auto* one = Attach(new IMyRadioControl(&plug, IRECT(100, 0, 120, 20), -1, 1, FakeStrip(20, 20, 2)));
    one->SetAction([&](IControl&) { ++actions; });
    Click(105, 5);
    EXPECT_EQ(one->GetValue(), 0.0);
    EXPECT_EQ(one->Selection(), -1);
    Click(105, 5);
    EXPECT_EQ(one->GetValue(), 0.0);
    EXPECT_EQ(one->Selection(), 0);
    EXPECT_EQ(actions, 2);
}

TEST_F(Editor, GridSelectsACellAndItsMarkerFollowsTheMouse)
{
    auto* grid = Attach(new IGridOverlayControl(&plug, 100, 100, kMix, IBitmap(), 4, 2, 20, 10, &kRed));
    EXPECT_EQ(grid->GetRECT(), IRECT(100, 100, 180, 120));
    EXPECT_EQ(grid->Cells(), 8);
    Settle();
    struct Case
    {
        int x, y, cell;
    };
    const Case cases[] = {{100, 100, 0}, {125, 105, 1}, {179, 119, 7},
                          {165, 115, 7}, {100, 110, 4}, {139, 109, 1}};
    for (const Case& c : cases)
    {
        Click(c.x, c.y);
        EXPECT_EQ(grid->SelectedCell(), c.cell) << c.x << "," << c.y;
        EXPECT_DOUBLE_EQ(grid->GetValue(), c.cell / 7.0);
        EXPECT_NEAR(plug.GetParam(kMix)->value, 100.0 * c.cell / 7.0, 1e-9);
    }
    graphics.OnMouseOver(150, 112, IMouseMod());
    EXPECT_EQ(grid->MarkerCell(), 6);
    graphics.OnMouseOver(50, 50, IMouseMod());
    EXPECT_EQ(grid->MarkerCell(), -1);

    // The selection's outline lies 4 pixels inside the cell: cell 1 is 120..140 x 100..110.
    Click(125, 105);
    graphics.OnTimerTick();
    EXPECT_EQ(Red(124, 104), 255);
    EXPECT_EQ(Red(135, 105), 255);
    EXPECT_LT(Red(123, 104), 100);
    EXPECT_LT(Red(130, 103), 100);
    EXPECT_LT(Red(130, 106), 100);
    EXPECT_LT(Red(104, 104), 100); // the other cells carry no outline
}

TEST_F(Editor, MyTextRedrawsOnlyOnAChangeAndAlignsToItsSide)
{
    IText style;
    style.mSize = 14;
    auto* left = Attach(new IMyTextControl(&plug, IRECT(0, 0, 200, 20), style, &kRed, false, "%.1f", " ms"));
    auto* right = Attach(new IMyTextControl(&plug, IRECT(0, 30, 200, 50), style, &kRed, true, "%.1f", " ms"));
    left->SetValueText(1.0);
    right->SetValueText(1.0);
    EXPECT_EQ(left->GetText(), "1.0 ms");
    EXPECT_TRUE(right->AlignRight());
    graphics.OnTimerTick();
    IRECT r;
    left->SetValueText(1.04);
    EXPECT_FALSE(graphics.IsDirty(r));
    left->SetFormat("%.2f", " s");
    left->SetValueText(1.04);
    EXPECT_TRUE(graphics.IsDirty(r));
    EXPECT_EQ(left->GetText(), "1.04 s");
    left->SetText("1.0 ms");
    graphics.OnTimerTick();
    auto litIn = [&](int x0, int x1, int y0, int y1)
    {
        int n = 0;
        for (int y = y0; y < y1; ++y)
            for (int x = x0; x < x1; ++x)
                n += Red(x, y) > 128;
        return n;
    };
    EXPECT_GT(litIn(0, 100, 0, 20), 10);
    EXPECT_EQ(litIn(100, 200, 0, 20), 0);
    EXPECT_EQ(litIn(0, 100, 30, 50), 0);
    EXPECT_GT(litIn(100, 200, 30, 50), 10);
}

TEST_F(Editor, TimedTextGoesBackToTheLabelsOwnText)
{
    IText style;
    auto* label = Attach(new IMyTextControl(&plug, IRECT(0, 0, 100, 20), style, &kRed, false, "%.1f", " ms"));
    label->SetValueText(250.0);
    EXPECT_FALSE(label->TimedTick()); // nothing pending
    label->SetTimedText("COPIED", 3);
    EXPECT_EQ(label->GetText(), "COPIED");
    EXPECT_FALSE(label->TimedTick());
    label->SetValueText(300.0); // arrives meanwhile: kept for later
    EXPECT_EQ(label->GetText(), "COPIED");
    EXPECT_FALSE(label->TimedTick());
    EXPECT_TRUE(label->TimedTick());
    EXPECT_EQ(label->GetText(), "300.0 ms");
    EXPECT_FALSE(label->TimedTextShowing());
    EXPECT_FALSE(label->TimedTick());

    // A second notice restarts the count and still returns to the label's text.
    label->SetTimedText("A", 2);
    label->TimedTick();
    label->SetTimedText("B", 2);
    EXPECT_FALSE(label->TimedTick());
    EXPECT_EQ(label->GetText(), "B");
    EXPECT_TRUE(label->TimedTick());
    EXPECT_EQ(label->GetText(), "300.0 ms");
    label->SetTimedText("NEVER", 0);
    EXPECT_EQ(label->GetText(), "300.0 ms");
}

TEST_F(Editor, PanelFollowsItsColourSlotAndTakesNoMouse)
{
    Attach(new IMyPanelControl(&plug, IRECT(10, 10, 50, 50), graphics.Colors().Role(1)));
    EXPECT_EQ(graphics.HitTest(20, 20), -1);
    graphics.OnTimerTick();
    EXPECT_EQ(Pixel(20, 20) & 0xFFFFFF, 0x6176FFu);
    graphics.SetColorSet(4); // FIRE: role 1 is 0xFD6275
    graphics.OnTimerTick();
    EXPECT_EQ(Pixel(20, 20) & 0xFFFFFF, 0xFD6275u);
}

TEST(CustomGestureTest, EveryParameterControlMakesOneGesturePerPress)
{
    IText style;
    // Each kind on its own editor and plug-in, so that the logs don't mix.
    auto build = [&](int kind, IPlugBase* p) -> IControl*
    {
        switch (kind)
        {
        case 0:
        {
            auto* k = new IKnobMultiControlNoText(p, IRECT(0, 0, 20, 40), kGain, FakeStrip(20, 40, 32));
            k->SetJumpToClick(true);
            return k;
        }
        case 1:
            return new IMySwitchControl(p, IRECT(0, 0, 20, 40), kSwitch, FakeStrip(20, 20, 2));
        case 2:
            return new IMyRadioControl(p, IRECT(0, 0, 20, 40), kMode, 3, IBitmap(),
                                       IRadioButtonsControl::kVertical);
        case 3:
            return new IGridOverlayControl(p, 0, 0, kMix, IBitmap(), 1, 3, 20, 40 / 3, &kRed);
        case 4:
            return new TapSelector(p, IRECT(0, 0, 20, 40), kSwitch, FakeStrip(20, 20, 2), &kRed, style, 1);
        default:
            return new IBlendRoundSwitchControl(p, IRECT(0, 0, 20, 40), kSwitch, FakeStrip(20, 40, 2), &kRed);
        }
    };
    const int params[] = {kGain, kSwitch, kMode, kMix, kSwitch, kSwitch};
    const double after[] = {0.5, 1.0, 0.5, 0.5, 1.0, 1.0};
    for (int kind = 0; kind < 6; ++kind)
    {
        RecordingPlug p;
        IGraphics g(&p, 100, 100, 25);
        IControl* c = build(kind, &p);
        g.AttachControl(c);
        g.OnTimerTick();
        g.OnMouseDown(10, 20, Left());
        g.OnMouseUp(10, 20, Left());
        const std::string id = std::to_string(params[kind]);
        EXPECT_EQ(p.mLog, (std::vector<std::string>{"B" + id, "P" + id, "E" + id})) << "kind " << kind;
        EXPECT_DOUBLE_EQ(c->GetValue(), after[kind]) << "kind " << kind;
        EXPECT_DOUBLE_EQ(p.mLastPerformed, after[kind]) << "kind " << kind;
    }
}
