// The effect pages built from their table: one panel per slot on each of the pre, feedback and
// post pages, on that position's parameters, with knob names and knobs that follow the type.
#include <gtest/gtest.h>

#include <cstring>

#include "EditorDoubles.h"
#include "editor/FxPanelControls.h"
#include "editor/PageLayouts.h"
#include "editor/QuorvexEditor.h"
#include "params/IParamRecord.h"
#include "params/ParamCatalogue.h"
#include "params/ParamIds.h"

namespace
{
constexpr const char* kWaves[] = {"SINE"};

class CataloguePlug : public editortest::RecordingPlug
{
  public:
    CataloguePlug() { InitParams(params, kWaves); }
};

struct EffectPages : ::testing::Test
{
    CataloguePlug plug;
    QuorvexEditor editor{&plug, QUORVEX_ART_DIR};
    EffectPages()
    {
        plug.AttachGraphics(&editor);
        editor.OnTimerTick();
        plug.mLog.clear();
    }
    ~EffectPages() override { plug.AttachGraphics(nullptr); }

    // Chooses entry `index` of a type parameter's menu as the host would.
    void SetType(int param, int index)
    {
        IParamRecord* p = plug.GetParam(param);
        p->value = index;
        editor.SetParameterFromPlug(param, p->GetNormalized(), true);
    }
    int MenuIndex(int param, const char* label)
    {
        const IParamRecord* p = plug.GetParam(param);
        for (int i = 0; i < static_cast<int>(p->displayTexts.size()); ++i)
            if (std::strcmp(p->displayTexts[i].text, label) == 0) return i;
        return -1;
    }
    IControl* Row(EPageList list, int slot, int knob, int part)
    {
        return editor.ControlOfPageRow(list, layout::FxKnobFirstRow(slot, knob) + part);
    }
    std::vector<std::string> Names(EPageList list, int slot)
    {
        std::vector<std::string> names;
        for (int k = 0; k < 5; ++k)
        {
            auto* label = dynamic_cast<IFxKnobLabelControl*>(Row(list, slot, k, 1));
            names.push_back(label && !label->IsHidden() ? label->Text() : "-");
        }
        return names;
    }
};
} // namespace

TEST_F(EffectPages, EachPageShowsItsPositionsParameters)
{
    const struct
    {
        int page;
        EPageList list;
        int knob1, type, on;
    } pages[] = {{kPagePreFx, kListPreFx, kFXParam1PR1, kFX1PR, kFXOnPR1},
                 {kPageFeedbackFx, kListFeedbackFx, kFXParam1FB1, kFX1FB, kFXOnFB1},
                 {kPagePostFx, kListPostFx, kFXParam1PO1, kFX1PO, kFXOnPO1}};
    for (const auto& p : pages)
    {
        editor.ShowPage(p.page, false);
        for (int slot = 0; slot < 4; ++slot)
        {
            SetType(p.type + slot, 1); // the first effect of every menu has five knobs
            EXPECT_EQ(Row(p.list, slot, 0, 0)->ParamIdx(), p.knob1 + slot);
            EXPECT_EQ(Row(p.list, slot, 4, 0)->ParamIdx(), kFXParam5PR1 + (p.knob1 - kFXParam1PR1) + slot);
            EXPECT_EQ(Row(p.list, slot, 2, 2)->ParamIdx(),
                      kFXParam3ModDepthPR1 + (p.knob1 - kFXParam1PR1) + slot);
            EXPECT_FALSE(Row(p.list, slot, 0, 0)->IsHidden());
        }
        // The other effect pages' panels are hidden.
        for (EPageList other : {kListPreFx, kListFeedbackFx, kListPostFx})
        {
            if (other == p.list) continue;
            EXPECT_TRUE(Row(other, 0, 0, 0)->IsHidden()) << p.page;
        }
    }
    editor.ShowPage(kPageLfo, false);
    EXPECT_TRUE(Row(kListPostFx, 0, 0, 0)->IsHidden());
}

TEST_F(EffectPages, KnobNamesAndKnobsFollowTheType)
{
    editor.ShowPage(kPagePreFx, false);
    SetType(kFX2PR, MenuIndex(kFX2PR, "COMPRESSOR"));
    EXPECT_EQ(Names(kListPreFx, 1),
              (std::vector<std::string>{"THRESH", "RATIO", "ATTACK", "RELEASE", "GAIN"}));
    SetType(kFX2PR, MenuIndex(kFX2PR, "COMB"));
    EXPECT_EQ(Names(kListPreFx, 1), (std::vector<std::string>{"FREQ", "FB", "HIPASS", "LOPASS", "SPREAD"}));
    SetType(kFX2PR, MenuIndex(kFX2PR, "PITCH SHIFT ST"));
    EXPECT_EQ(Names(kListPreFx, 1),
              (std::vector<std::string>{"COARSE L", "COARSE R", "SIZE", "DETUNE", "MIX"}));
    // OFF shows no knob at all; the icon follows too.
    SetType(kFX2PR, 0);
    EXPECT_EQ(Names(kListPreFx, 1), (std::vector<std::string>(5, "-")));
    for (int k = 0; k < 5; ++k)
        for (int part = 0; part < 4; ++part)
            EXPECT_TRUE(Row(kListPreFx, 1, k, part)->IsHidden());

    // The feedback menu is a list of its own: its entry 3 is the pitch shifter, not the phaser.
    editor.ShowPage(kPageFeedbackFx, false);
    SetType(kFX1FB, MenuIndex(kFX1FB, "PITCH SHIFT"));
    EXPECT_EQ(MenuIndex(kFX1FB, "PITCH SHIFT"), 3);
    EXPECT_EQ(Names(kListFeedbackFx, 0),
              (std::vector<std::string>{"COARSE", "FINE", "SIZE", "DETUNE", "MIX"}));
    // A type change on a page not shown changes nothing visible there, and shows right later.
    SetType(kFX4PO, MenuIndex(kFX4PO, "VOWEL"));
    EXPECT_TRUE(Row(kListPostFx, 3, 0, 0)->IsHidden());
    editor.ShowPage(kPagePostFx, false);
    EXPECT_EQ(Names(kListPostFx, 3),
              (std::vector<std::string>{"VOWEL POS", "MODE", "SPREAD", "GAIN", "DIM"}));
}

// A knob that a type leaves out leaves no printed scale or "DEPTH" behind: its row draws as the
// plain panel (each pixel line one colour), and comes back with a type that has the knob.
TEST_F(EffectPages, ARowWithoutItsKnobShowsThePlainPanel)
{
    editor.ShowPage(kPagePostFx, false);
    const auto rowIsPlain = [&](int slot, int knob)
    {
        editor.OnTimerTick();
        IRaster& raster = editor.Raster();
        const IRECT knobRect = Row(kListPostFx, slot, knob, 0)->GetRECT();
        // The knob with its scale and name, and the depth knob with its "DEPTH".
        const IRECT area(knobRect.L - 4, knobRect.T - 4, knobRect.L + 110, knobRect.B + 14);
        const int stride = raster.Stride() / 4;
        for (int y = area.T; y < area.B; ++y)
            for (int x = area.L; x < area.R; ++x)
                if (raster.Pixels()[y * stride + x] != raster.Pixels()[y * stride + area.L]) return false;
        return true;
    };
    SetType(kFX1PO, MenuIndex(kFX1PO, "MULTI SVF")); // no second knob
    ASSERT_TRUE(Row(kListPostFx, 0, 1, 0)->IsHidden());
    EXPECT_TRUE(rowIsPlain(0, 1));
    EXPECT_FALSE(rowIsPlain(0, 0)) << "a knob that is there draws";
    SetType(kFX1PO, MenuIndex(kFX1PO, "VOWEL"));
    EXPECT_FALSE(rowIsPlain(0, 1));
    // OFF leaves every row of its panel plain.
    SetType(kFX1PO, 0);
    for (int k = 0; k < 5; ++k)
        EXPECT_TRUE(rowIsPlain(0, k)) << "knob " << k + 1;
}

TEST_F(EffectPages, AKnobDragReachesItsPositionsParameter)
{
    editor.ShowPage(kPageFeedbackFx, false);
    SetType(kFX3FB, 1);
    IControl* knob = Row(kListFeedbackFx, 2, 1, 0);
    const IRECT r = knob->GetRECT();
    const int x = (r.L + r.R) / 2, y = (r.T + r.B) / 2;
    EXPECT_EQ(editor.GetControl(editor.HitTest(x, y)), knob);
    editor.OnMouseDown(x, y, editortest::Left());
    editor.OnMouseDrag(x, y - 20, editortest::Left());
    editor.OnMouseUp(x, y - 20, editortest::Left());
    const std::string id = std::to_string(kFXParam2FB3);
    EXPECT_EQ(plug.Gestures(), "B" + id + " P" + id + " E" + id);
}

TEST(EffectLayout, PanelsFitTheStageAndControlsDoNotOverlap)
{
    std::vector<IRECT> interactive;
    for (const LayoutRow& row : kEffectsLayout)
    {
        EXPECT_TRUE(kStageRect.Intersect(row.mRect) == row.mRect) << row.mLabel;
        if (row.mKind == ELayoutKind::kKnob || row.mKind == ELayoutKind::kSwitch ||
            row.mKind == ELayoutKind::kValuePopup)
            interactive.push_back(row.mRect);
    }
    for (size_t i = 0; i < interactive.size(); ++i)
        for (size_t j = i + 1; j < interactive.size(); ++j)
            EXPECT_FALSE(interactive[i].Intersects(interactive[j])) << i << " " << j;
}
