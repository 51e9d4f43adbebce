// The custom controls' logic: frame laws, the knob without text and its ring, the routing of the
// double knob, the radio buttons that can be switched off, the step preset grid, value labels, and
// the switch that steps through its frames, each press one host gesture.
#include <gtest/gtest.h>

#include <tuple>

#include "EditorDoubles.h"
#include "editor/IGridOverlayControl.h"
#include "editor/IInvColOverlayControl.h"
#include "editor/IKnobMultiControlNoText.h"
#include "editor/IKnobMultiRemoteControl.h"
#include "editor/IMyControls.h"

using namespace editortest;

namespace
{
using Editor = Window<400, 300>;
constexpr IColor kRed(255, 255, 0, 0);
} // namespace

// The frame a strip shows for a value: a bitmap control's, and a knob's with steps of its own.
TEST(FrameTest, BitmapsPlainLawAndKnobsSteppedLaw)
{
    // {value, frames, frame}: 1 + (frames - 1) x value, rounded and kept on the strip.
    const std::tuple<double, int, int> plain[] = {{1.0, 64, 64}, {0.24, 3, 1},  {0.26, 3, 2},
                                                  {1.7, 10, 10}, {-0.3, 10, 1}, {0.5, 1, 1}};
    for (const auto& [value, frames, frame] : plain)
        EXPECT_EQ(IBitmapControl::FrameForValue(value, frames), frame) << value << " of " << frames;
    // {value, frames, steps, shape, frame}. The knob's plain law is the same. Four steps over 64 frames show
    // only the frames 1, 17, 33, 48 and 64; the shape bends the value first (0.7^2 = 0.49 is still the first
    // step) and counts as linear when not positive. As many steps as frames is a step law; more, or fewer
    // than one, are plain.
    const std::tuple<double, int, int, double, int> cases[] = {
        {0.0, 64, 0, 1.0, 1},   {1.0, 64, 0, 1.0, 64},  {0.6, 64, 0, 1.0, 39}, {1.4, 64, 0, 1.0, 64},
        {-0.2, 64, 0, 1.0, 1},  {0.5, 1, 0, 1.0, 1},    {0.24, 64, 4, 1.0, 1}, {0.25, 64, 4, 1.0, 17},
        {0.99, 64, 4, 1.0, 48}, {1.0, 64, 4, 1.0, 64},  {0.7, 64, 4, 2.0, 17}, {0.71, 64, 4, 2.0, 33},
        {0.6, 64, 64, 1.0, 38}, {0.6, 64, 65, 1.0, 39}, {0.99, 64, 1, 1.0, 1}, {0.6, 64, 4, 0.0, 33}};
    for (const auto& [value, frames, steps, shape, frame] : cases)
        EXPECT_EQ(IKnobMultiControlNoText::FrameFor(value, frames, steps, shape), frame)
            << value << " frames " << frames << " steps " << steps << " shape " << shape;
}

// A press notes the knob as the last touched; with jumping on, a click sets the value where it
// lands, down or across, and a point dragged out is cut. The ring is drawn as an outline about 1
// pixel inside the grown rectangle or filled, in its colour slot's present colour (as a panel is),
// and is neither hit nor part of the drag's gearing; a colour overlay's band runs along the rim
// from the lower stop to its parameter's value and lets the mouse through.
TEST_F(Editor, KnobJumpsToTheClickAndItsRingPanelAndOverlayFollowTheirColours)
{
    int lastTouched = -1;
    auto* knob = Attach(new IKnobMultiControlNoText(&plug, IRECT(100, 100, 120, 200), kMix,
                                                    FakeStrip(20, 100, 64), nullptr, &lastTouched));
    knob->SetValueFromPlug(0.5);
    Click(110, 150, Right());
    auto* box = dynamic_cast<ITextEntryOverlay*>(graphics.ModalOverlay());
    EXPECT_TRUE(box && box->Text() == "50.0") << (box ? box->Text() : "no box"); // the value, to edit
    graphics.OnKeyDown(0, 0, '5'); // typed into the prompt, then given up
    graphics.OnKeyDown(0, 0, kKeyEscape);
    EXPECT_TRUE(lastTouched == kMix && knob->GetValue() == 0.5);
    knob->SetJumpToClick(true);
    plug.mLog.clear();
    Click(110, 125); // a quarter below the top
    EXPECT_DOUBLE_EQ(knob->GetValue(), 0.75);
    EXPECT_EQ(plug.Gestures(), "B3 P3 E3");
    EXPECT_DOUBLE_EQ(knob->ValueAt(110, 260), 0.0);
    auto* across =
        Attach(new IKnobMultiControlNoText(&plug, IRECT(0, 250, 200, 260), kGain, FakeStrip(200, 10, 8),
                                           nullptr, nullptr, IKnobControl::kHorizontal));
    across->SetJumpToClick(true);
    Click(150, 255);
    EXPECT_DOUBLE_EQ(across->GetValue(), 0.75);

    const IColor* role = graphics.Colors().Role(5); // 0xFB1352 in the default set
    auto* ringed =
        Attach(new IKnobMultiControlNoText(&plug, IRECT(200, 100, 240, 140), kMix, IBitmap(), role));
    Attach(new IMyPanelControl(&plug, IRECT(10, 10, 50, 50), graphics.Colors().Role(1)));
    ringed->SetRing(false, 6);
    EXPECT_EQ(ringed->GetRECT(), IRECT(194, 94, 246, 146));
    graphics.OnTimerTick();
    EXPECT_TRUE(Red(220, 95) > 200 && Red(220, 98) < 80);
    EXPECT_EQ(Pixel(20, 20) & 0xFFFFFF, 0x6176FFu);
    ringed->SetRing(true, 6);
    graphics.SetColorSet(5); // ICE: roles 1 and 5 are 0x6A87FF and 0x7BB6FD, with no call to either
    graphics.OnTimerTick();
    EXPECT_EQ(Red(220, 98), 0x7B);
    EXPECT_EQ(Pixel(20, 20) & 0xFFFFFF, 0x6A87FFu);
    EXPECT_EQ(graphics.HitTest(196, 120), -1);
    EXPECT_EQ(graphics.HitTest(20, 20), -1);
    // 30 pixels up on a 40-pixel knob at gearing 3 is a quarter of the range.
    graphics.OnMouseDown(220, 120, Left());
    graphics.OnMouseDrag(220, 90, Left());
    graphics.OnMouseUp(220, 90, Left());
    EXPECT_NEAR(ringed->GetValue(), 0.25, 1e-12);

    Attach(new IKnobMultiControlNoText(&plug, IRECT(320, 20, 380, 80), kGain, FakeStrip(60, 60, 64)));
    Attach(new IInvColOverlayControl(&plug, IRECT(320, 20, 380, 80), kGain, &kRed, 1.0f, 3.0f));
    EXPECT_EQ(graphics.HitTest(350, 50), 4);
    for (const auto& [value, right] : {std::pair{0.5, false}, std::pair{1.0, true}})
    {
        graphics.SetParameterFromPlug(kGain, value, true);
        graphics.OnTimerTick();
        EXPECT_TRUE(Red(322, 50) > 200 && (Red(378, 50) > 200) == right) << value;
    }
}

TEST_F(Editor, RemoteKnobRoutesByNormalisedRadiusAndHoldsItsChoiceUntilTheRelease)
{
    auto* inner =
        Attach(new IKnobMultiControlNoText(&plug, IRECT(100, 100, 300, 200), kGain, FakeStrip(20, 20, 8)));
    auto* outer =
        Attach(new IKnobMultiControlNoText(&plug, IRECT(100, 100, 300, 200), kMix, FakeStrip(20, 20, 8)));
    auto* remote = Attach(new IKnobMultiRemoteControl(&plug, IRECT(100, 100, 300, 200), inner, outer, 0.5));
    // Half width 100 and half height 50: the radius 0.5 is 50 pixels across and 25 down.
    const std::tuple<int, int, IControl*> cases[] = {{250, 150, inner}, {251, 150, outer}, {200, 125, inner},
                                                     {200, 124, outer}, {235, 167, inner}, {235, 168, outer}};
    for (const auto& [x, y, knob] : cases)
        EXPECT_EQ(remote->Route(x, y), knob) << x << "," << y;
    inner->SetValueFromPlug(0.5);
    outer->SetValueFromPlug(0.5);
    Settle();
    // Pressed on the inner knob and dragged out over the outer ring and beyond the rectangle: the
    // inner knob's gesture to the release.
    graphics.OnMouseDown(200, 150, Left());
    EXPECT_EQ(remote->Active(), inner);
    for (int i = 1; i <= 6; ++i)
        graphics.OnMouseDrag(200 + 20 * i, 150 - 5 * i, Left());
    graphics.OnMouseUp(320, 120, Left());
    EXPECT_EQ(remote->Active(), nullptr);
    EXPECT_NEAR(inner->GetValue(), 0.5 + 30.0 / 300.0, 1e-12);
    EXPECT_EQ(outer->GetValue(), 0.5);
    // The wheel reaches the knob under the pointer, each notch as its gesture. (The right button and
    // the double click go by the same routing as a press.)
    graphics.OnMouseWheel(200, 150, IMouseMod(), 2);
    EXPECT_NEAR(inner->GetValue(), 0.62, 1e-12);
    graphics.OnMouseWheel(290, 150, IMouseMod(), -1);
    EXPECT_NEAR(outer->GetValue(), 0.49, 1e-12);
    EXPECT_EQ(plug.Gestures(), "B0 P0 E0 B0 P0 E0 B3 P3 E3");
}

TEST_F(Editor, RadioSelectionSwitchesOffOnTheSelectedButton)
{
    // No bitmap: three buttons of (62 - 2 x 2) / 3 = 19 pixels share the row.
    auto* radio = Attach(new IMyRadioControl(&plug, IRECT(0, 0, 62, 20), kMode, 3, IBitmap()));
    Settle();
    // {x clicked, selection after, value after}: the selected button switches off keeping the value,
    // and the gap between the first two buttons does nothing (a gesture without a perform).
    const std::tuple<int, int, double> clicks[] = {{45, 2, 1.0}, {50, -1, 1.0}, {50, 2, 1.0},
                                                   {25, 1, 0.5}, {20, 1, 0.5},  {25, -1, 0.5}};
    for (const auto& [x, selection, value] : clicks)
    {
        plug.mLog.clear();
        Click(x, 5);
        EXPECT_EQ(radio->Selection(), selection) << x;
        EXPECT_EQ(radio->GetValue(), value) << x;
        EXPECT_EQ(plug.Gestures(), x == 20 ? "B1 E1" : "B1 P1 E1") << x;
    }
    // Switched off, the plug-in's value selects a button again.
    graphics.SetParameterFromPlug(kMode, 0.0, true);
    EXPECT_EQ(radio->Selection(), 0);

    // One button: the value stays 0 (no division by n - 1), and the button only switches on and off.
    auto* one = Attach(new IMyRadioControl(&plug, IRECT(100, 0, 120, 20), -1, 1, FakeStrip(20, 20, 2)));
    for (int selection : {-1, 0})
    {
        Click(105, 5);
        EXPECT_TRUE(one->GetValue() == 0.0 && one->Selection() == selection);
    }
}

TEST_F(Editor, GridSelectsACellAndItsMarkerFollowsTheMouse)
{
    auto* grid = Attach(new IGridOverlayControl(&plug, 100, 100, kMix, IBitmap(), 4, 2, 20, 10, &kRed));
    EXPECT_EQ(grid->GetRECT(), IRECT(100, 100, 180, 120));
    Settle();
    const std::tuple<int, int, int> cases[] = {{100, 100, 0}, {179, 119, 7}, {100, 110, 4}, {139, 109, 1}};
    for (const auto& [x, y, cell] : cases)
    {
        plug.mLog.clear();
        Click(x, y);
        EXPECT_EQ(grid->SelectedCell(), cell) << x << "," << y;
        EXPECT_NEAR(plug.GetParam(kMix)->value, 100.0 * cell / 7.0, 1e-9);
        EXPECT_EQ(plug.mLog, (std::vector<std::string>{"B3", "P3", "E3"}));
    }
    graphics.OnMouseOver(150, 112, IMouseMod());
    EXPECT_EQ(grid->MarkerCell(), 6);
    graphics.OnMouseOver(50, 50, IMouseMod());
    EXPECT_EQ(grid->MarkerCell(), -1);
    // The selection's outline lies 4 pixels inside the cell: cell 1 is 120..140 x 100..110.
    graphics.OnTimerTick();
    EXPECT_EQ(Red(124, 104) + Red(135, 105), 2 * 255);
    for (const auto& [x, y] : {std::pair{123, 104}, {130, 103}, {130, 106}, {104, 104}})
        EXPECT_LT(Red(x, y), 100) << x << "," << y; // the last in a cell not selected
}

TEST_F(Editor, MyTextFormatsRedrawsOnlyOnAChangeAndAlignsToItsSide)
{
    // The text is the value through its format and unit; a list text format and unusable ones
    // show the plain number.
    const std::tuple<const char*, const char*, double, const char*> cases[] = {
        {"%.1f", " ms", 12.345, "12.3 ms"},
        {"%d", " ST", -6.6, "-7 ST"},
        {"%5.2f", "", 3.14159, " 3.14"},
        {"%+.1f", " dB", 1.25, "+1.2 dB"},
        {"%s", "", 1.5, "1.5"},
        {"%.1f %f", "", 1.0, "1"},
        {"%n", "", 2.0, "2"},
        {"%", " ms", 3.0, "3 ms"},
        {"%.1f%%", "", 50.0, "50.0%"}};
    for (const auto& [format, unit, value, text] : cases)
        EXPECT_EQ(IMyTextControl::FormatValue(format, unit, value), text) << format;

    IText style;
    style.mSize = 14;
    auto* left = Attach(new IMyTextControl(&plug, IRECT(0, 0, 200, 20), style, &kRed, false, "%.1f", " ms"));
    auto* right = Attach(new IMyTextControl(&plug, IRECT(0, 30, 200, 50), style, &kRed, true, "%.1f", " ms"));
    left->SetValueText(1.0);
    right->SetValueText(1.0);
    EXPECT_EQ(left->GetText(), "1.0 ms");
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
    // Only the left half of the left label's row, and the right half of the right one's, is lit.
    for (int y0 : {0, 30})
        for (int x0 : {0, 100})
        {
            const int lit = RedPixels(IRECT(x0, y0, x0 + 100, y0 + 20));
            EXPECT_EQ(lit > 10, (x0 == 0) == (y0 == 0)) << x0 << "," << y0 << ": " << lit;
        }

    // A notice of no ticks never shows. (Notices for their ticks, replaced and flushed, are the
    // delay page tests' slot titles.)
    left->SetTimedText("NEVER", 0);
    EXPECT_EQ(left->GetText(), "1.0 ms");
}

// A switch steps through its frames and wraps, one gesture per press, and ignores the right button:
// it has too few states to be worth a prompt. (The other controls' presses are their own tests'.)
TEST_F(Editor, ASwitchStepsThroughItsFramesOneGesturePerPress)
{
    for (const auto& [frames, param, after] :
         {std::tuple{2, +kSwitch, std::vector<double>{1.0, 0.0}}, {3, +kMix, {0.5, 1.0, 0.0, 0.5}}})
    {
        // The second switch lies over the first and takes the mouse.
        IControl* c =
            Attach(new IMySwitchControl(&plug, IRECT(0, 0, 20, 40), param, FakeStrip(20, 20, frames)));
        Settle();
        graphics.OnMouseDown(10, 20, Right());
        EXPECT_TRUE(graphics.ModalOverlay() == nullptr && plug.mLog.empty());
        const std::string id = std::to_string(param);
        for (double value : after)
        {
            plug.mLog.clear();
            Click(10, 20);
            EXPECT_EQ(plug.mLog, (std::vector<std::string>{"B" + id, "P" + id, "E" + id}));
            EXPECT_DOUBLE_EQ(c->GetValue(), value);
            EXPECT_DOUBLE_EQ(plug.mLastPerformed, value);
        }
    }
}
