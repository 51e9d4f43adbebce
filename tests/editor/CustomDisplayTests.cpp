// Custom controls that show engine data or call the plug-in: guide lines, meters, step and tap
// cells, the blended bitmaps, the call-back buttons and the idle tick. Checked on the raster's pixels
// where the requirement is about what is drawn.
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "EditorDoubles.h"
#include "editor/BlendBitmapControls.h"
#include "editor/HLines.h"
#include "editor/RectMeter.h"
#include "editor/StepControls.h"
#include "editor/VoidControls.h"

using namespace editortest;

namespace
{
constexpr IColor kRed(255, 255, 0, 0);
constexpr IColor kGreen(255, 0, 255, 0);

struct Screen : Window<300, 200>
{
    int Green(int x, int y) { return static_cast<int>((Pixel(x, y) >> 8) & 0xFF); }
    // Rows of column x whose red is above half.
    std::vector<int> RedRows(int x)
    {
        std::vector<int> rows;
        for (int y = 0; y < 200; ++y)
            if (Red(x, y) > 128) rows.push_back(y);
        return rows;
    }
};
} // namespace

// Guide lines divide the rectangle into even bands, across all of it; a meter's bar grows from its
// edge, inside the rectangle whatever the value set directly (as an idle readout may, without the
// toolkit's clamp).
TEST_F(Screen, HLinesDivideTheRectangleEvenlyAndMeterBarsGrowFromTheirEdge)
{
    auto* lines = Attach(new HLines(&plug, IRECT(10, 10, 110, 110), &kRed, 25));
    // 25 makes four bands and three lines; 100 / 30 = 3 bands, the rest below the last.
    const std::pair<int, std::vector<int>> cases[] = {{25, {35, 60, 85}}, {30, {40, 70}}, {100, {}},
                                                      {150, {}},          {0, {}},        {-5, {}}};
    for (const auto& [distance, rows] : cases)
    {
        lines->SetDistance(distance);
        graphics.SetAllControlsDirty();
        graphics.OnTimerTick();
        EXPECT_EQ(RedRows(60), rows) << "distance " << distance;
        for (int row : rows) // across the whole rectangle and no further
            EXPECT_TRUE(Red(10, row) > 128 && Red(109, row) > 128 && Red(111, row) < 128) << row;
    }
    EXPECT_FALSE(lines->IsHit(60, 60));
    lines->Hide(true);

    auto* up = Attach(new RectMeter(&plug, IRECT(20, 20, 30, 120), &kRed));
    auto* across = Attach(new RectMeter(&plug, IRECT(50, 20, 250, 30), &kRed, true));
    // {value, height and width of the lit bars}
    const std::tuple<double, int, int> bars[] = {{0.25, 25, 50}, {0.0, 0, 0},      {1.7, 100, 200},
                                                 {-0.4, 0, 0},   {0.504, 50, 101}, {std::nan(""), 0, 0}};
    for (const auto& [value, height, width] : bars)
    {
        up->SetValue(value);
        across->SetValue(value);
        graphics.SetAllControlsDirty();
        graphics.OnTimerTick();
        EXPECT_EQ(RedPixels(IRECT(0, 0, 300, 200)), height * 10 + width * 10) << value;
        EXPECT_EQ(RedRows(25).size() && RedRows(25).back() == 119, height > 0) << value; // from the bottom
        EXPECT_EQ(Red(50, 25) > 128, width > 0) << value;                                // from the left
    }
    EXPECT_EQ(up->BarRect(), IRECT());
}

// Step and tap cells light without telling the plug-in and take no mouse from what lies below; a
// tap bound to a parameter follows it; a number label is framed to the corner or ringed.
TEST_F(Screen, StepTapAndNumberCellsLightWithoutTellingThePlugin)
{
    IText style;
    auto* step =
        Attach(new StepLengthControl(&plug, IRECT(10, 10, 40, 40), FakeStrip(30, 30, 2), &kRed, style, 3));
    auto* tap =
        Attach(new TapSelector(&plug, IRECT(50, 10, 80, 40), -1, FakeStrip(30, 30, 2), &kRed, style, 7));
    auto* bound = Attach(
        new TapSelector(&plug, IRECT(90, 10, 120, 40), kSwitch, FakeStrip(30, 30, 2), &kRed, style, 2));
    graphics.OnTimerTick();
    const int dimFrame = Red(10, 25), idle = Red(65, 14);
    step->SetCurrent(true);
    tap->SetPlaying(true);
    graphics.OnTimerTick();
    EXPECT_GT(Red(10, 25), dimFrame); // the frame is at full colour on the current step
    EXPECT_GT(Red(65, 14), idle);     // the playing tap glows
    Click(60, 20);
    EXPECT_TRUE(tap->IsSelected() && tap->Frame() == 2 && plug.mLog.empty());
    EXPECT_EQ(graphics.HitTest(20, 20), -1);
    graphics.SetParameterFromPlug(kSwitch, 1.0, true);
    EXPECT_EQ(bound->Frame(), 2);

    style.mSize = 14;
    style.mColor = &kGreen;
    auto* framed = Attach(new NumberLabel(&plug, IRECT(10, 110, 40, 140), IBitmap(), &kRed, style, 3));
    auto* round = Attach(new NumberLabel(&plug, IRECT(60, 110, 90, 140), IBitmap(), &kRed, style, 3, true));
    framed->SetNumber(8);
    round->SetNumber(8);
    graphics.OnTimerTick();
    EXPECT_TRUE(Red(10, 110) > 200 && Red(60, 110) < 100 && Red(60, 125) > 200);
    EXPECT_EQ(framed->GetText(), "8");
    IRECT r;
    framed->SetNumber(8); // the same number again: no redraw
    EXPECT_FALSE(graphics.IsDirty(r));
}

TEST_F(Screen, BlendBitmapFadesItsColourByTheWeight)
{
    auto* faded = Attach(new IBlendBitmapControl(&plug, IRECT(10, 10, 30, 30), -1, IBitmap(), 0.5f, &kRed));
    graphics.OnTimerTick();
    const int bg = Red(100, 100);
    for (const auto& [weight, red] : {std::pair{0.5f, (255 + bg) / 2}, {1.0f, 255}, {0.0f, bg}})
    {
        faded->SetWeight(weight);
        graphics.OnTimerTick();
        EXPECT_NEAR(Red(20, 20), red, 2) << weight;
    }
    auto* round = Attach(new IBlendRoundSwitchControl(&plug, IRECT(100, 10, 120, 30), kSwitch,
                                                      FakeStrip(20, 20, 2), &kGreen, 3));
    EXPECT_EQ(round->GetRECT(), IRECT(97, 7, 123, 33));
    EXPECT_EQ(graphics.HitTest(98, 20), -1); // the ring is drawn, not hit
    graphics.OnTimerTick();
    const int ringOff = Green(98, 20);
    Click(110, 20);
    graphics.OnTimerTick();
    EXPECT_GT(Green(98, 20), ringOff);
    EXPECT_GT(Green(110, 20), 200); // the drawn face lights its centre
}

TEST_F(Screen, VoidControlsCallTheirFunctionsAndNoHostAndFramesShowTheirMarks)
{
    std::string calls;
    auto* sw = Attach(new IVoidSwitchControl(&plug, IRECT(0, 0, 20, 20), FakeStrip(20, 20, 2),
                                             [&](double v) { calls += v > 0.5 ? "on " : "off "; }));
    IControl* contacts[] = {
        Attach(new IVoidContactControl(&plug, IRECT(30, 0, 50, 20), FakeStrip(20, 20, 2),
                                       [&] { calls += "contact "; })),
        Attach(new IVoidInvContactControl(&plug, IRECT(60, 0, 80, 20), [&] { calls += "inv "; }))};
    auto* pages = Attach(new IVoidFramesControl(&plug, IRECT(100, 0, 160, 20), FakeStrip(60, 20, 3),
                                                [&](int f) { calls += std::to_string(f) + " "; }));
    for (int i = 0; i < 3; ++i)
        Click(5, 5);
    sw->SetValueFromPlug(0.0);  // the plug-in showing its state calls nothing back
    for (int i = 0; i < 2; ++i) // on the press, not the release, and back up after it
    {
        graphics.OnMouseDown(35 + 30 * i, 5, Left());
        EXPECT_TRUE(calls.ends_with(i ? "inv " : "contact "));
        graphics.OnMouseUp(35 + 30 * i, 5, Left());
        EXPECT_EQ(contacts[i]->GetValue(), 0.0);
    }
    graphics.OnMouseDblClick(65, 5, Left()); // the quick second press counts too
    graphics.OnMouseUp(65, 5, Left());
    EXPECT_EQ(contacts[1]->GetValue(), 0.0);
    for (int i = 0; i < 4; ++i)
        Click(120, 5);
    EXPECT_EQ(calls, "on off on contact inv inv 1 2 0 1 ");
    EXPECT_EQ(pages->Frame(), 2);
    EXPECT_TRUE(plug.mLog.empty());
    // A mark shows on every frame, or only on its own.
    pages->AddMark(IRECT(100, 30, 110, 40), &kRed);
    pages->AddMark(IRECT(120, 30, 130, 40), &kRed, 3);
    graphics.OnTimerTick();
    EXPECT_TRUE(Red(105, 35) > 128 && Red(125, 35) < 128);
    Click(120, 5); // to frame 3
    graphics.SetAllControlsDirty();
    graphics.OnTimerTick();
    EXPECT_GT(Red(125, 35), 128);
    const std::tuple<double, int, int> cases[] = {{0.124, 5, 1}, {0.125, 5, 2},       {0.875, 5, 5},
                                                  {1.3, 5, 5},   {-0.2, 5, 1},        {0.5, 1, 1},
                                                  {0.0, 0, 1},   {9.0 / 17.0, 18, 10}};
    for (const auto& [value, frames, frame] : cases)
        EXPECT_EQ(IVoidFramesControl::FrameFor(value, frames), frame) << value << " of " << frames;
}

// The idle tick runs once per redraw pass, hidden or not, and takes no mouse.
TEST_F(Screen, DrawDummyTicksOncePerRedrawPass)
{
    int ticks = 0;
    auto* dummy = Attach(new DrawDummy(&plug, [&] { ++ticks; }));
    EXPECT_EQ(graphics.HitTest(0, 0), -1);
    graphics.OnTimerTick();
    graphics.OnTimerTick();
    dummy->Hide(true);
    EXPECT_FALSE(dummy->IsHidden());
    graphics.OnTimerTick();
    EXPECT_EQ(ticks, 3);
}
