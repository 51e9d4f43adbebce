// The editor built from the main layout on the real parameter catalogue: the art that the
// generator drew matches the bitmap table, every control sits where the layout says, and the
// controls reach the parameters with proper gestures.
#include <gtest/gtest.h>

#include <filesystem>

#include "EditorDoubles.h"
#include "editor/BitmapList.h"
#include "editor/MainLayout.h"
#include "editor/QuorvexEditor.h"
#include "editor/ValuePopUpControl.h"
#include "params/ParamCatalogue.h"
#include "params/ParamIds.h"

namespace
{
constexpr const char* kWaves[] = {"SINE", "TRIANGLE", "SAW"};

// The full catalogue behind a base that records what the host hears.
class CataloguePlug : public editortest::RecordingPlug
{
  public:
    CataloguePlug() { InitParams(params, kWaves); }
};

int RowOf(ELayoutKind kind, int param)
{
    for (int i = 0; i < static_cast<int>(std::size(kMainLayout)); ++i)
        if (kMainLayout[i].mKind == kind && kMainLayout[i].mParam == param) return i;
    return -1;
}

std::uint32_t PixelAt(IGraphics& g, int x, int y)
{
    IRaster& r = g.Raster();
    const double s = r.Scale();
    return r.Pixels()[static_cast<int>(y * s) * (r.Stride() / 4) + static_cast<int>(x * s)];
}

struct EditorFixture : ::testing::Test
{
    CataloguePlug plug;
    QuorvexEditor editor{&plug, QUORVEX_ART_DIR};
    EditorFixture()
    {
        plug.AttachGraphics(&editor);
        editor.OnTimerTick();
        plug.mLog.clear();
    }
    ~EditorFixture() override { plug.AttachGraphics(nullptr); }
    IControl* Control(ELayoutKind kind, int param) { return editor.ControlOfRow(RowOf(kind, param)); }
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
    EXPECT_EQ(BitmapId("knob_hard_main"), 0);
    EXPECT_EQ(BitmapId("no such bitmap"), -1);
}

TEST_F(EditorFixture, ControlsSitWhereTheLayoutSaysOnTheirParameters)
{
    int controls = 0;
    for (int i = 0; i < static_cast<int>(std::size(kMainLayout)); ++i)
    {
        const LayoutRow& row = kMainLayout[i];
        IControl* c = editor.ControlOfRow(i);
        const bool background = row.mKind == ELayoutKind::kTopBar || row.mKind == ELayoutKind::kStage ||
                                row.mKind == ELayoutKind::kPanel || row.mKind == ELayoutKind::kLabel ||
                                row.mKind == ELayoutKind::kReserved;
        EXPECT_EQ(c == nullptr, background) << i;
        if (!c) continue;
        ++controls;
        EXPECT_EQ(c->GetRECT(), row.mRect) << i;
        if (row.mKind == ELayoutKind::kKnob || row.mKind == ELayoutKind::kSwitch ||
            row.mKind == ELayoutKind::kPopup)
        {
            EXPECT_EQ(c->ParamIdx(), row.mParam) << i;
            EXPECT_DOUBLE_EQ(c->GetValue(), plug.GetParam(row.mParam)->GetNormalized()) << i;
        }
    }
    // The rest are the pages' controls, each in its page's list.
    int pageControls = 0;
    for (int list = 0; list < kNumPageLists; ++list)
        pageControls += static_cast<int>(editor.ListControls(static_cast<EPageList>(list)).size());
    EXPECT_EQ(controls + pageControls, editor.NControls());
}

TEST(MainPageTest, BuildsAndDrawsWithEveryBitmapMissing)
{
    CataloguePlug plug;
    QuorvexEditor editor(&plug, "/nonexistent/quorvex/img");
    plug.AttachGraphics(&editor);
    EXPECT_FALSE(editor.OnTimerTick().Empty());
    const int row = RowOf(ELayoutKind::kKnob, kDryLevel);
    EXPECT_EQ(editor.ControlOfRow(row)->GetRECT(), kMainLayout[row].mRect);
    plug.AttachGraphics(nullptr);
}

TEST_F(EditorFixture, KnobDragReachesTheParameterAsOneGesture)
{
    IControl* dry = Control(ELayoutKind::kKnob, kDryLevel);
    const IRECT r = dry->GetRECT();
    const double before = plug.GetParam(kDryLevel)->value;
    editor.OnMouseDown(r.L + 20, r.T + 20, editortest::Left());
    for (int i = 1; i <= 13; ++i)
        editor.OnMouseDrag(r.L + 20, r.T + 20 - 2 * i, editortest::Left());
    editor.OnMouseUp(r.L + 20, r.T - 6, editortest::Left());
    const std::string id = std::to_string(kDryLevel);
    std::string gesture = "B";
    gesture.append(id).append(" P").append(id).append(" E").append(id);
    EXPECT_EQ(plug.Gestures(), gesture);
    // 26 pixels of a 52-pixel knob at gearing 3: a sixth of the range, 0..100 %.
    EXPECT_NEAR(plug.GetParam(kDryLevel)->value - before, 100.0 / 6.0, 0.1);
    EXPECT_FALSE(editor.OnTimerTick().Empty());
    EXPECT_TRUE(editor.OnTimerTick().Empty());
}

TEST_F(EditorFixture, MasterEffectPopupPicksATypeAndTheKnobNamesFollow)
{
    IControl* popup = Control(ELayoutKind::kPopup, kMasterFX);
    const IRECT r = popup->GetRECT();
    editor.OnMouseDown(r.L + 5, r.T + 5, editortest::Left());
    editor.OnMouseUp(r.L + 5, r.T + 5, editortest::Left());
    auto* menu = dynamic_cast<IPopupOverlay*>(editor.ModalOverlay());
    ASSERT_NE(menu, nullptr);
    const IRECT reverb = menu->ItemRect(0, 2);
    editor.OnMouseOver(reverb.L + 4, reverb.T + 4, IMouseMod());
    editor.OnMouseDown(reverb.L + 4, reverb.T + 4, editortest::Left());
    EXPECT_EQ(plug.GetParam(kMasterFX)->value, 2.0);
    // The knob names follow at once: the host doesn't echo the edit back.
    const char* expected[] = {"SIZE", "PREDELAY", "HIPASS", "DAMP"};
    int found = 0;
    for (int i = 0; i < editor.NControls(); ++i)
        if (auto* label = dynamic_cast<ISelectorLabelControl*>(editor.GetControl(i)))
        {
            EXPECT_STREQ(label->Text(), expected[found++]);
        }
    EXPECT_EQ(found, 4);
    // The frame of the selector strip names the type.
    auto* selector = dynamic_cast<IBitmapControl*>(popup);
    ASSERT_NE(selector, nullptr);
    EXPECT_EQ(selector->CurrentFrame(), 3);
}

TEST_F(EditorFixture, LimiterFieldShowsAndSetsItsText)
{
    auto* field = dynamic_cast<IValuePopUpControl*>(Control(ELayoutKind::kValuePopup, kLimiterOn));
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->ValueText(), "OFF");
    const IRECT r = field->GetRECT();
    editor.OnMouseDown(r.L + 5, r.T + 5, editortest::Left());
    editor.OnMouseUp(r.L + 5, r.T + 5, editortest::Left());
    editor.OnKeyDown(0, 0, kKeyDown);
    editor.OnKeyDown(0, 0, kKeyDown);
    editor.OnKeyDown(0, 0, kKeyDown);
    editor.OnKeyDown(0, 0, kKeyEnter);
    EXPECT_EQ(plug.GetParam(kLimiterOn)->value, 2.0);
    EXPECT_EQ(field->ValueText(), "SLOW II");
}

TEST_F(EditorFixture, PageTabsAndTheOptionsButton)
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
    const int x5 = tabs->mRect.L + (tabs->mRect.W() - tabW) * 5 / 8 + 10;
    editor.OnMouseDown(x5, tabs->mRect.T + 5, editortest::Left());
    editor.OnMouseUp(x5, tabs->mRect.T + 5, editortest::Left());
    editor.OnMouseDown(options->mRect.L + 5, options->mRect.T + 5, editortest::Left());
    editor.OnMouseUp(options->mRect.L + 5, options->mRect.T + 5, editortest::Left());
    editor.OnMouseDown(options->mRect.L + 5, options->mRect.T + 5, editortest::Left());
    editor.OnMouseUp(options->mRect.L + 5, options->mRect.T + 5, editortest::Left());
    EXPECT_EQ(asked, (std::vector<int>{5, 9, 5}));
    EXPECT_EQ(editor.Pages().Shown(), 5);
    EXPECT_EQ(editor.Pages().LastPage(), 5);
    EXPECT_TRUE(plug.mLog.empty()); // pages are no parameters
}

TEST_F(EditorFixture, AColourSetChangeRecoloursTheValueArcs)
{
    // Wet sits at 75 %: its arc passes over twelve o'clock at the top of the knob's track.
    const IRECT wet = Control(ELayoutKind::kKnob, kWetLevel)->GetRECT();
    const int x = (wet.L + wet.R) / 2, y = wet.T + 2;
    for (double scale : {1.0, 2.0})
    {
        editor.SetScale(scale);
        editor.SetColorSet(0);
        editor.OnTimerTick();
        const std::uint32_t blue = PixelAt(editor, x, y);
        editor.SetColorSet(4); // "FIRE"
        editor.OnTimerTick();
        const std::uint32_t fire = PixelAt(editor, x, y);
        EXPECT_NE(blue, fire) << scale;
        EXPECT_GT(blue & 0xFF, (blue >> 16) & 0xFF) << scale; // blue over red
        EXPECT_GT((fire >> 16) & 0xFF, fire & 0xFF) << scale; // red over blue
    }
}
