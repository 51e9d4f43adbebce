// Custom controls that show engine data or call the plug-in: guide lines, meters, the LFO wave,
// step and tap cells, the call-back buttons and the idle tick. Checked on the raster's pixels
// where the requirement is about what is drawn.
#include <gtest/gtest.h>

#include <cmath>

#include "EditorDoubles.h"
#include "editor/BlendBitmapControls.h"
#include "editor/HLines.h"
#include "editor/IKnobMultiControlNoText.h"
#include "editor/IMyControls.h"
#include "editor/MenuControls.h"
#include "editor/RectMeter.h"
#include "editor/StepControls.h"
#include "editor/VoidControls.h"
#include "editor/WaveDraw.h"

using namespace editortest;

namespace
{
constexpr IColor kRed(255, 255, 0, 0);
constexpr IColor kGreen(255, 0, 255, 0);

struct Screen : Window<300, 200>
{
    int Green(int x, int y) { return static_cast<int>((Pixel(x, y) >> 8) & 0xFF); }
    // Rows of column x in y0..y1 whose red is above half.
    std::vector<int> RedRows(int x, int y0, int y1)
    {
        std::vector<int> rows;
        for (int y = y0; y < y1; ++y)
            if (Red(x, y) > 128) rows.push_back(y);
        return rows;
    }
    int RedPixels(const IRECT& r)
    {
        int n = 0;
        for (int y = r.T; y < r.B; ++y)
            for (int x = r.L; x < r.R; ++x)
                n += Red(x, y) > 128;
        return n;
    }
};
} // namespace

TEST_F(Screen, HLinesDivideTheRectangleEvenly)
{
    auto* lines = Attach(new HLines(&plug, IRECT(10, 10, 110, 110), &kRed, 25));
    struct Case
    {
        int distance;
        std::vector<int> rows;
    };
    const Case cases[] = {
        {25, {35, 60, 85}}, // four bands, three lines
        {30, {40, 70}},     // 100 / 30 = 3 bands; the rest stays below the last
        {50, {60}},         {100, {}}, {150, {}}, {0, {}}, {-5, {}},
    };
    for (const Case& c : cases)
    {
        lines->SetDistance(c.distance);
        graphics.SetAllControlsDirty();
        graphics.OnTimerTick();
        EXPECT_EQ(RedRows(60, 0, 200), c.rows) << "distance " << c.distance;
        EXPECT_EQ(lines->NLines(), static_cast<int>(c.rows.size()));
        // Lines run across the whole rectangle and no further.
        for (int row : c.rows)
        {
            EXPECT_GT(Red(10, row), 128);
            EXPECT_GT(Red(109, row), 128);
            EXPECT_LT(Red(111, row), 128);
        }
    }
    EXPECT_FALSE(lines->IsHit(60, 60));
}

TEST_F(Screen, MeterBarGrowsFromItsEdgeAndStaysInsideTheRectangle)
{
    auto* up = Attach(new RectMeter(&plug, IRECT(20, 20, 30, 120), &kRed));
    auto* across = Attach(new RectMeter(&plug, IRECT(50, 20, 250, 30), &kRed, true));
    struct Case
    {
        double value;
        int height, width; // of the lit bars
    };
    const Case cases[] = {{0.25, 25, 50}, {0.0, 0, 0},      {1.0, 100, 200}, {1.7, 100, 200},
                          {-0.4, 0, 0},   {0.504, 50, 101}, {1e9, 100, 200}, {std::nan(""), 0, 0}};
    for (const Case& c : cases)
    {
        // Set directly, as an idle readout may be, without the toolkit's clamp.
        up->SetValue(c.value);
        across->SetValue(c.value);
        graphics.SetAllControlsDirty();
        graphics.OnTimerTick();
        EXPECT_EQ(RedPixels(IRECT(0, 0, 300, 200)), c.height * 10 + c.width * 10) << c.value;
        if (c.height > 0)
        {
            EXPECT_GT(Red(25, 119), 128); // from the bottom
            EXPECT_GT(Red(25, 120 - c.height), 128);
            EXPECT_LT(Red(25, 119 - c.height), 128);
            EXPECT_GT(Red(50, 25), 128); // from the left
            EXPECT_GT(Red(49 + c.width, 25), 128);
        }
    }
    EXPECT_EQ(up->BarRect(), IRECT());
}

TEST_F(Screen, StepAndTapCellsLightWithoutTellingThePlugin)
{
    IText style;
    auto* step =
        Attach(new StepLengthControl(&plug, IRECT(10, 10, 40, 40), FakeStrip(30, 30, 2), &kRed, style, 3));
    auto* tap =
        Attach(new TapSelector(&plug, IRECT(50, 10, 80, 40), -1, FakeStrip(30, 30, 2), &kRed, style, 7));
    int selections = 0;
    tap->SetAction([&](IControl&) { ++selections; });
    graphics.OnTimerTick();
    IRECT r;
    step->SetCurrent(false);
    tap->SetPlaying(false);
    EXPECT_FALSE(graphics.IsDirty(r)); // the idle code sets them every tick: no change, no redraw
    const int dimFrame = Red(10, 25);
    step->SetCurrent(true);
    EXPECT_TRUE(graphics.IsDirty(r));
    graphics.Draw(r);
    EXPECT_GT(Red(10, 25), dimFrame); // the frame is at full colour on the current step
    EXPECT_EQ(step->Number(), 3);

    const int idle = Red(65, 14);
    tap->SetPlaying(true);
    graphics.OnTimerTick();
    EXPECT_GT(Red(65, 14), idle); // the playing tap glows
    EXPECT_EQ(tap->Frame(), 1);
    Click(60, 20);
    EXPECT_TRUE(tap->IsSelected());
    EXPECT_EQ(tap->Frame(), 2);
    EXPECT_EQ(selections, 1);
    tap->SetSelected(false);
    EXPECT_EQ(tap->Frame(), 1);
    EXPECT_EQ(selections, 1);
    EXPECT_TRUE(plug.mLog.empty());
    // Bound to a parameter, the tap follows its value.
    auto* bound = Attach(
        new TapSelector(&plug, IRECT(90, 10, 120, 40), kSwitch, FakeStrip(30, 30, 2), &kRed, style, 2));
    graphics.SetParameterFromPlug(kSwitch, 1.0, true);
    EXPECT_TRUE(bound->IsSelected());
    graphics.SetParameterFromPlug(kSwitch, 0.0, true);
    EXPECT_FALSE(bound->IsSelected());
    EXPECT_EQ(bound->Frame(), 1);
    // Cells don't take the mouse away from what lies below them.
    EXPECT_EQ(graphics.HitTest(20, 20), -1);
}

TEST_F(Screen, BlendBitmapFadesItsColourByTheWeight)
{
    auto* faded = Attach(new IBlendBitmapControl(&plug, IRECT(10, 10, 30, 30), -1, IBitmap(), 0.5f, &kRed));
    graphics.OnTimerTick();
    const int bg = Red(100, 100);
    EXPECT_NEAR(Red(20, 20), (255 + bg) / 2, 2);
    faded->SetWeight(1.0f);
    graphics.OnTimerTick();
    EXPECT_EQ(Red(20, 20), 255);
    faded->SetWeight(0.0f);
    graphics.OnTimerTick();
    EXPECT_EQ(Red(20, 20), bg);

    auto* round = Attach(new IBlendRoundSwitchControl(&plug, IRECT(100, 10, 120, 30), kSwitch,
                                                      FakeStrip(20, 20, 2), &kGreen, 3));
    EXPECT_EQ(round->GetRECT(), IRECT(97, 7, 123, 33));
    EXPECT_EQ(graphics.HitTest(98, 20), -1); // the ring is drawn, not hit
    graphics.OnTimerTick();
    const int ringOff = Green(98, 20);
    Click(110, 20);
    EXPECT_TRUE(round->IsOn());
    graphics.OnTimerTick();
    EXPECT_GT(Green(98, 20), ringOff);
    EXPECT_GT(Green(110, 20), 200); // the drawn face lights its centre
}

TEST(VoidFramesTest, FrameFormula)
{
    struct Case
    {
        double value;
        int frames, frame;
    };
    const Case cases[] = {{0.0, 5, 1}, {0.124, 5, 1}, {0.125, 5, 2}, {0.5, 5, 3},         {0.875, 5, 5},
                          {1.0, 5, 5}, {1.3, 5, 5},   {-0.2, 5, 1},  {0.5, 1, 1},         {0.49, 2, 1},
                          {0.5, 2, 2}, {0.0, 0, 1},   {1.0, 18, 18}, {9.0 / 17.0, 18, 10}};
    for (const Case& c : cases)
        EXPECT_EQ(IVoidFramesControl::FrameFor(c.value, c.frames), c.frame) << c.value << " of " << c.frames;
}

TEST_F(Screen, VoidControlsCallTheirFunctionsAndNoHost)
{
    std::vector<double> switched;
    auto* sw = Attach(new IVoidSwitchControl(&plug, IRECT(0, 0, 20, 20), FakeStrip(20, 20, 2),
                                             [&](double v) { switched.push_back(v); }));
    int pressed = 0;
    auto* contact = Attach(
        new IVoidContactControl(&plug, IRECT(30, 0, 50, 20), FakeStrip(20, 20, 2), [&] { ++pressed; }));
    int invPressed = 0;
    auto* inv = Attach(new IVoidInvContactControl(&plug, IRECT(60, 0, 80, 20), [&] { ++invPressed; }));
    std::vector<int> frames;
    auto* pages = Attach(new IVoidFramesControl(&plug, IRECT(100, 0, 160, 20), FakeStrip(60, 20, 3),
                                                [&](int f) { frames.push_back(f); }));

    Click(5, 5);
    Click(5, 5);
    Click(5, 5);
    EXPECT_EQ(switched, (std::vector<double>{1.0, 0.0, 1.0}));
    // The plug-in showing its state calls nothing back.
    sw->SetValueFromPlug(0.0);
    EXPECT_EQ(switched.size(), 3u);

    graphics.OnMouseDown(35, 5, Left());
    EXPECT_EQ(pressed, 1); // on the press, not the release
    EXPECT_EQ(contact->GetValue(), 1.0);
    graphics.OnMouseUp(35, 5, Left());
    EXPECT_EQ(contact->GetValue(), 0.0);
    graphics.OnMouseDown(65, 5, Left());
    EXPECT_EQ(invPressed, 1);
    EXPECT_EQ(inv->GetValue(), 1.0);
    graphics.OnMouseUp(65, 5, Left());
    EXPECT_EQ(inv->GetValue(), 0.0);
    graphics.OnMouseDblClick(65, 5, Left()); // the quick second press counts too
    graphics.OnMouseUp(65, 5, Left());
    EXPECT_EQ(invPressed, 2);
    EXPECT_EQ(inv->GetValue(), 0.0);

    for (int i = 0; i < 4; ++i)
        Click(120, 5);
    EXPECT_EQ(frames, (std::vector<int>{1, 2, 0, 1}));
    EXPECT_EQ(pages->Frame(), 2);
    EXPECT_TRUE(plug.mLog.empty());
}

TEST_F(Screen, FramesControlDrawsItsMarksForTheirFrames)
{
    auto* pages = Attach(new IVoidFramesControl(&plug, IRECT(100, 0, 160, 20), FakeStrip(60, 20, 3), {}));
    pages->AddMark(IRECT(100, 30, 110, 40), &kRed);
    pages->AddMark(IRECT(120, 30, 130, 40), &kRed, 2);
    graphics.OnTimerTick();
    EXPECT_GT(Red(105, 35), 128);
    EXPECT_LT(Red(125, 35), 128);
    Click(110, 10); // to frame 2
    graphics.SetAllControlsDirty();
    graphics.OnTimerTick();
    EXPECT_GT(Red(125, 35), 128);
}

TEST_F(Screen, DrawDummyTicksOncePerRedrawPass)
{
    int ticks = 0;
    auto* meter = Attach(new RectMeter(&plug, IRECT(200, 100, 210, 200), &kRed));
    auto* dummy = Attach(new DrawDummy(&plug,
                                       [&]
                                       {
                                           ++ticks;
                                           meter->SetValueFromPlug(ticks / 10.0);
                                       }));
    EXPECT_EQ(graphics.HitTest(0, 0), -1);
    for (int i = 1; i <= 5; ++i)
    {
        const IRECT drawn = graphics.OnTimerTick();
        EXPECT_EQ(ticks, i);
        // What the tick pushed is drawn in the next pass, not lost.
        if (i > 1)
        {
            EXPECT_EQ(drawn.Union(meter->GetRECT()), drawn);
        }
    }
    EXPECT_EQ(RedPixels(meter->GetRECT()), 10 * 40); // 0.4 of 100 rows: pushed by the fourth tick
    // Hiding doesn't stop it: the editor's idle work must go on.
    dummy->Hide(true);
    EXPECT_FALSE(dummy->IsHidden());
    graphics.OnTimerTick();
    EXPECT_EQ(ticks, 6);
}

TEST_F(Screen, NumberLabelRingOrFrameAndItsText)
{
    IText style;
    style.mSize = 14;
    style.mColor = &kGreen;
    auto* framed = Attach(new NumberLabel(&plug, IRECT(10, 10, 40, 40), IBitmap(), &kRed, style, 3));
    auto* round = Attach(new NumberLabel(&plug, IRECT(60, 10, 90, 40), IBitmap(), &kRed, style, 3, true));
    framed->SetNumber(8);
    round->SetNumber(8);
    graphics.OnTimerTick();
    EXPECT_GT(Red(10, 10), 200); // a frame reaches the corner
    EXPECT_LT(Red(60, 10), 100); // a ring doesn't
    EXPECT_GT(Red(60, 25), 200);
    EXPECT_EQ(framed->GetText(), "8");
    IRECT r;
    framed->SetNumber(8);
    EXPECT_FALSE(graphics.IsDirty(r));
    framed->SetText("12");
    EXPECT_TRUE(graphics.IsDirty(r));
}

TEST_F(Screen, EveryVisibleControlDrawsItselfWithoutItsBitmap)
{
    // Bitmaps that failed to load keep their size and frame count but have no raster.
    const IBitmap missing = FakeStrip(30, 30, 2);
    IText style;
    auto within = [&](IControl* c)
    {
        graphics.AttachControl(c);
        c->SetValueFromPlug(1.0);
        return c;
    };
    std::vector<IControl*> shown = {
        within(new StepLengthControl(&plug, IRECT(10, 10, 40, 40), missing, &kRed, style, 1)),
        within(new NumberLabel(&plug, IRECT(50, 10, 80, 40), missing, &kRed, style)),
        within(new TapSelector(&plug, IRECT(90, 10, 120, 40), -1, missing, &kRed, style, 2)),
        within(new IBlendBitmapControl(&plug, IRECT(130, 10, 160, 40), -1, missing, 1.0f, &kRed)),
        within(new IBlendRoundSwitchControl(&plug, IRECT(170, 10, 200, 40), -1, missing, &kRed)),
        within(new IVoidSwitchControl(&plug, IRECT(210, 10, 240, 40), missing, {}, &kRed)),
        within(new IVoidContactControl(&plug, IRECT(250, 10, 280, 40), missing, {}, &kRed)),
        within(new IVoidFramesControl(&plug, IRECT(10, 60, 70, 90), missing, {})),
        within(new RectMeter(&plug, IRECT(90, 60, 100, 90), &kRed)),
        within(new IKnobMultiControlNoText(&plug, IRECT(110, 60, 140, 90), kGain, missing)),
        within(new IMySwitchControl(&plug, IRECT(150, 60, 180, 90), kSwitch, missing)),
        within(new IMyRadioControl(&plug, IRECT(190, 60, 250, 90), kMode, 2, IBitmap())),
        within(new IParamPopupMenu(&plug, IRECT(10, 110, 70, 130), kMode, missing)),
    };
    graphics.OnTimerTick();
    const std::uint32_t background = Pixel(295, 195);
    for (size_t i = 0; i < shown.size(); ++i)
    {
        const IRECT r = shown[i]->GetRECT();
        int differing = 0;
        for (int y = r.T; y < r.B; ++y)
            for (int x = r.L; x < r.R; ++x)
                differing += Pixel(x, y) != background;
        EXPECT_GT(differing, r.W() * r.H() / 10) << "control " << i;
    }
}
