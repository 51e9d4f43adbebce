// The pages of the routing, the modulators, the feedback matrix and the options, built on the real
// parameter catalogue: each page puts every parameter of its families on exactly one control, all
// inside the stage and none over another, shows them alone, and its controls reach their
// parameters with one gesture.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include "CatalogueEditor.h"
#include "editor/ModPageControls.h"
#include "editor/PageLayouts.h"
#include "editor/ValuePopUpControl.h"

using namespace editortest;

namespace
{
// A page and the parameters it must carry: every family of its ids, four slots (or two
// followers) each, given as runs [first, end) of the catalogue, where a page's families lie together.
struct PageCase
{
    int mPage;
    EPageList mList;
    std::vector<std::pair<int, int>> mRuns;
};

const std::vector<PageCase> kPageCases{
    // The routing leaves out the slots' modulation switches, which the delay page carries.
    {kPageRouting, kListRouting, {{kSlotOn1, kModulation1}, {kMasterFXSource1, kFX1PR}}},
    {kPageLogic, kListLogic, {{kLogicOn1, kMasterFX}, {kFBMatrix1, kDelayTapsSwing1}}},
    {kPageGates, kListGates, {{kGate1Length, kENV1On}}},
    {kPageEnvelope, kListEnvelope, {{kENV1On, kLogicOn1}}},
    {kPageOptions, kListOptions, {}},
    {kPageLfo, kListLfo, {{kLFOOn1, kGate1Length}}},
};

// The editor builds and shows its pages with its art missing too: these pages are checked so.
struct ModPages : CatalogueEditor
{
    ModPages() : CatalogueEditor("/nonexistent/quorvex/img") {}
    // The page's controls without its stage art (the list's first entry).
    std::vector<IControl*> PageControls(EPageList list)
    {
        std::vector<IControl*> out;
        const std::vector<int>& idx = editor.ListControls(list);
        for (size_t i = 1; i < idx.size(); ++i)
            out.push_back(editor.GetControl(idx[i]));
        return out;
    }
    // The control of the page on `param` (arrows aside), or null.
    IControl* ControlOn(EPageList list, int param)
    {
        for (IControl* c : PageControls(list))
            if (c->ParamIdx() == param && !dynamic_cast<IStepArrowControl*>(c)) return c;
        return nullptr;
    }
};
} // namespace

// Each page's rows build the control their kind asks for, at the row's place and on its parameter
// (meters on none), inside the stage and none over another; every parameter of the page's families
// is on exactly one of them, and nothing else is; shown, the page shows them alone.
TEST_F(ModPages, EachPageBuildsItsRowsOnItsFamiliesAndShowsThemAlone)
{
    for (const PageCase& c : kPageCases)
    {
        SCOPED_TRACE(::testing::Message() << "page " << c.mPage);
        // Showing a page shows its controls and hides every other page's.
        EXPECT_EQ(editor.ShowPage(c.mPage, false), c.mPage);
        EXPECT_FALSE(editor.OnTimerTick().Empty());
        for (int list = 0; list < kNumPageLists; ++list)
            for (int i : editor.ListControls(static_cast<EPageList>(list)))
                EXPECT_EQ(editor.GetControl(i)->IsHidden(), list != c.mList) << "list " << list;
        const std::vector<IControl*> controls = PageControls(c.mList);
        ASSERT_FALSE(controls.empty());
        std::map<int, int> count;
        for (size_t i = 0; i < controls.size(); ++i)
        {
            EXPECT_TRUE(kStageRect.Intersect(controls[i]->GetRECT()) == controls[i]->GetRECT()) << i;
            for (size_t j = i + 1; j < controls.size(); ++j)
                EXPECT_FALSE(controls[i]->GetTargetRECT().Intersects(controls[j]->GetTargetRECT()))
                    << "params " << controls[i]->ParamIdx() << " and " << controls[j]->ParamIdx();
            // The wave arrows are a second way to a wave field's parameter, not its control.
            if (controls[i]->ParamIdx() >= 0 && !dynamic_cast<IStepArrowControl*>(controls[i]))
                ++count[controls[i]->ParamIdx()];
        }
        for (const auto& [first, end] : c.mRuns)
            for (int id = first; id < end; ++id)
                EXPECT_EQ(count[id], 1) << plug.GetParam(id)->name;
        for (const auto& [id, n] : count)
            EXPECT_TRUE(std::any_of(c.mRuns.begin(), c.mRuns.end(),
                                    [&](auto run) { return id >= run.first && id < run.second; }))
                << "stray " << plug.GetParam(id)->name;

        const PageLayout* layout = nullptr;
        for (const PageLayout& page : kPageLayouts)
            layout = page.mFirstList == c.mList ? &page : layout;
        ASSERT_NE(layout, nullptr);
        for (int i = 0; i < static_cast<int>(layout->mRows.size()); ++i)
        {
            const LayoutRow& row = layout->mRows[i];
            IControl* control = editor.ControlOfPageRow(c.mList, i);
            const bool background = row.mKind == ELayoutKind::kPanel || row.mKind == ELayoutKind::kLabel ||
                                    row.mKind == ELayoutKind::kCaption || row.mKind == ELayoutKind::kRule;
            ASSERT_EQ(control == nullptr, background) << "row " << i;
            if (!control) continue;
            EXPECT_EQ(control->GetRECT(), row.mRect) << "row " << i;
            EXPECT_EQ(control->ParamIdx(), row.mKind == ELayoutKind::kMeter ? -1 : row.mParam) << "row " << i;
            if (control->ParamIdx() >= 0)
            {
                EXPECT_DOUBLE_EQ(control->GetValue(), plug.GetParam(control->ParamIdx())->GetNormalized())
                    << i;
            }
        }
    }
}

TEST_F(ModPages, AGateStepTakesTheHeightItIsPressedAtAndFollowsTheDrag)
{
    editor.ShowPage(kPageGates, false);
    auto* step = dynamic_cast<IStepFaderControl*>(ControlOn(kListGates, kGate2Step5));
    ASSERT_NE(step, nullptr);
    const IRECT r = step->GetRECT();
    const int x = (r.L + r.R) / 2;
    const int quarter = r.B - 2 - (r.H() - 4) / 4; // a quarter up the column
    editor.OnMouseDown(x, quarter, Left());
    EXPECT_NEAR(plug.GetParam(kGate2Step5)->value, 25.0, 1.5);
    // Dragging to above the top sets the full step.
    for (int y = quarter; y >= r.T - 10; --y)
        editor.OnMouseDrag(x, y, Left());
    editor.OnMouseUp(x, r.T - 10, Left());
    EXPECT_EQ(plug.GetParam(kGate2Step5)->value, 100.0);
    EXPECT_EQ(plug.Gestures(), OneGesture(kGate2Step5));
}

// The colour set is the editor's own: a pick recolours at once, tells the plug-in and moves no
// parameter.
TEST_F(ModPages, TheColourSetFieldAppliesAPickAndTellsThePlugIn)
{
    std::vector<int> told;
    editor.SetColorSetHandler([&](int set) { told.push_back(set); });
    editor.ShowPage(kPageOptions, false);
    auto* field =
        dynamic_cast<IColorSetPopUpControl*>(editor.ControlOfPageRow(kListOptions, kOptionsColorSetRow));
    ASSERT_NE(field, nullptr);
    Click(field);
    PickRow(editor, 5);
    EXPECT_EQ(told, std::vector<int>{5});
    EXPECT_EQ(editor.Colors().Current(), 5);
    EXPECT_STREQ(field->SetName(), "ICE");
    EXPECT_TRUE(plug.mLog.empty()) << plug.Gestures();
}

TEST_F(ModPages, WaveArrowsStepThroughTheWavesAndWrap)
{
    editor.ShowPage(kPageLfo, false);
    std::vector<IStepArrowControl*> arrows;
    for (IControl* c : PageControls(kListLfo))
        if (auto* arrow = dynamic_cast<IStepArrowControl*>(c); arrow && arrow->ParamIdx() == kLFOWave2)
            arrows.push_back(arrow);
    ASSERT_EQ(arrows.size(), 2u);
    // The left arrow comes first.
    if (arrows[0]->GetRECT().L > arrows[1]->GetRECT().L) std::swap(arrows[0], arrows[1]);
    auto* field = dynamic_cast<IValuePopUpControl*>(ControlOn(kListLfo, kLFOWave2));
    // Back from the first wave to the last, on from the last to the first again, and on.
    for (const auto& [arrow, text] : {std::pair{0, "SAW"}, {1, "SINE"}, {1, "TRIANGLE"}})
    {
        plug.mLog.clear();
        Click(arrows[arrow]);
        EXPECT_EQ(field->ValueText(), text);
        EXPECT_EQ(plug.Gestures(), OneGesture(kLFOWave2));
    }
    EXPECT_EQ(plug.GetParam(kLFOWave1)->value, 0.0);
}
