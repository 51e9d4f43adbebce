// The pages of the routing, the modulators, the feedback matrix and the options, built on the real
// parameter catalogue: each page puts every parameter of its families on exactly one control, all
// inside the stage and none over another, shows them alone, and its controls reach their
// parameters with one gesture.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <vector>

#include "EditorDoubles.h"
#include "editor/IOverlay.h"
#include "editor/MainLayout.h"
#include "editor/ModPageControls.h"
#include "editor/PageLayouts.h"
#include "editor/QuorvexEditor.h"
#include "editor/ValuePopUpControl.h"
#include "params/ParamCatalogue.h"
#include "params/ParamIds.h"

namespace
{
constexpr const char* kWaves[] = {"SINE", "TRIANGLE", "SAW"};

class CataloguePlug : public editortest::RecordingPlug
{
  public:
    CataloguePlug() { InitParams(params, kWaves); }
};

// A run of consecutive parameter ids.
struct Family
{
    int mFirst;
    int mCount;
};

struct PageCase
{
    int mPage;
    EPageList mList;
    std::vector<Family> mFamilies;
};

const std::vector<PageCase>& PageCases()
{
    static const std::vector<PageCase> cases{
        {kPageRouting,
         kListRouting,
         {{kSlotOn1, 4},
          {kDelayOn1, 4},
          {kDirectOut1, 4},
          {kInput1, 4},
          {kDirectIn1, 4},
          {kMasterFXSource1, 4},
          {kPanPosition1, 4},
          {kWidth1, 4},
          {kOutputMode1, 4},
          {kLROffset1, 4},
          {kInputGain1, 4},
          {kInputGainModDepth1, 4},
          {kInputGainModSource1, 4},
          {kPanning1, 4},
          {kPanningModDepth1, 4},
          {kPanningModSource1, 4},
          {kFeedback1, 4},
          {kFeedbackModDepth1, 4},
          {kFeedbackModSource1, 4},
          {kLevel1, 4},
          {kLevelModDepth1, 4},
          {kLevelModSource1, 4},
          {kMFXSend1, 4},
          {kMFXSendModDepth1, 4},
          {kMFXSendModSource1, 4}}},
        {kPageLogic,
         kListLogic,
         {{kLogicOn1, 4},
          {kLogic1Type, 4},
          {kLogic1Source1Depth, 4},
          {kLogic1Source1, 4},
          {kLogic1Source2Depth, 4},
          {kLogic1Source2, 4},
          {kLogic1Smooth, 4},
          {kLogic1Depth, 4},
          {kLogic1DepthMod, 4},
          {kLogic1DepthModSource, 4},
          {kFBMatrix1, 4},
          {kSlot1FB1, 16}}},
        {kPageGates,
         kListGates,
         {{kGate1Length, 4},
          {kGate1On, 4},
          {kGate1Timebase, 4},
          {kGate1Direction, 4},
          {kGate1Sync, 4},
          {kGate1Glide, 4},
          {kGate1Depth, 4},
          {kGATEPol1, 4},
          {kGATESteps1, 4},
          {kGate1Step1, 64}}},
        {kPageEnvelope,
         kListEnvelope,
         {{kENV1On, 2},
          {kENV1Mode, 2},
          {kENV1Source, 2},
          {kENV1Gain, 2},
          {kENV1Attack, 2},
          {kENV1Decay, 2},
          {kENV1Hold, 2},
          {kENV1Threshold, 2},
          {kENV1Locut, 2},
          {kENV1Hicut, 2},
          {kENV1Depth, 2},
          {kENV1Output, 2}}},
        {kPageOptions, kListOptions, {}},
        {kPageLfo,
         kListLfo,
         {{kLFOOn1, 4},
          {kLFOWave1, 4},
          {kLFOPol1, 4},
          {kLFOSync1, 4},
          {kLFOSwap1, 4},
          {kLFOReverse1, 4},
          {kLFOMode1, 4},
          {kLFOTrigger1, 4},
          {kLFORate1, 4},
          {kLFOFreqModDepth1, 4},
          {kLFOFreqModSource1, 4},
          {kLFODepth1, 4},
          {kLFOPhase1, 4},
          {kLFOGlide1, 4}}},
    };
    return cases;
}

std::vector<int> FamilyIds(const PageCase& c)
{
    std::vector<int> ids;
    for (const Family& f : c.mFamilies)
        for (int i = 0; i < f.mCount; ++i)
            ids.push_back(f.mFirst + i);
    return ids;
}

struct ModPagesFixture : ::testing::Test
{
    CataloguePlug plug;
    QuorvexEditor editor{&plug, QUORVEX_ART_DIR};
    ModPagesFixture()
    {
        plug.AttachGraphics(&editor);
        editor.OnTimerTick();
        plug.mLog.clear();
    }
    ~ModPagesFixture() override { plug.AttachGraphics(nullptr); }

    // The page's controls without its stage art (the list's first entry).
    std::vector<IControl*> PageControls(EPageList list)
    {
        std::vector<IControl*> out;
        const std::vector<int>& idx = editor.ListControls(list);
        for (size_t i = 1; i < idx.size(); ++i)
            out.push_back(editor.GetControl(idx[i]));
        return out;
    }
    // The one control of the page on `param` (arrows aside); fails the test when there are none or
    // several.
    IControl* ControlOn(EPageList list, int param)
    {
        IControl* found = nullptr;
        for (IControl* c : PageControls(list))
            if (c->ParamIdx() == param && !dynamic_cast<IStepArrowControl*>(c))
            {
                EXPECT_EQ(found, nullptr) << param;
                found = c;
            }
        EXPECT_NE(found, nullptr) << param;
        return found;
    }
    void Click(IControl* c, int dx = 5, int dy = 5)
    {
        const IRECT r = c->GetRECT();
        editor.OnMouseDown(r.L + dx, r.T + dy, editortest::Left());
        editor.OnMouseUp(r.L + dx, r.T + dy, editortest::Left());
    }
    // Drags a knob up by `pixels` (down when negative), one pixel at a time.
    void DragUp(IControl* c, int pixels)
    {
        const IRECT r = c->GetRECT();
        const int x = (r.L + r.R) / 2, y = (r.T + r.B) / 2;
        const int step = pixels < 0 ? -1 : 1;
        editor.OnMouseDown(x, y, editortest::Left());
        for (int i = step; i != pixels + step; i += step)
            editor.OnMouseDrag(x, y - i, editortest::Left());
        editor.OnMouseUp(x, y - pixels, editortest::Left());
    }
    // A value picked from a list: the press that opened it may bracket nothing, the pick itself is
    // the one begin, perform, end of the parameter.
    bool PickIsOneGesture(int param) const
    {
        const std::string g = plug.Gestures();
        const std::string pick = OneGesture(param);
        return g.size() >= pick.size() && g.compare(g.size() - pick.size(), pick.size(), pick) == 0 &&
               g.find(" P") == g.rfind(" P");
    }
    std::string OneGesture(int param) const
    {
        const std::string id = std::to_string(param);
        return "B" + id + " P" + id + " E" + id;
    }
};
} // namespace

TEST_F(ModPagesFixture, PageControlsStayInsideTheStageAndNeverOverlap)
{
    for (const PageCase& c : PageCases())
    {
        const std::vector<IControl*> controls = PageControls(c.mList);
        ASSERT_FALSE(controls.empty()) << c.mPage;
        for (IControl* a : controls)
        {
            const IRECT r = a->GetRECT();
            EXPECT_TRUE(r.L >= kStageRect.L && r.T >= kStageRect.T && r.R <= kStageRect.R &&
                        r.B <= kStageRect.B)
                << "page " << c.mPage << " param " << a->ParamIdx();
        }
        for (size_t i = 0; i < controls.size(); ++i)
            for (size_t j = i + 1; j < controls.size(); ++j)
                EXPECT_FALSE(controls[i]->GetTargetRECT().Intersects(controls[j]->GetTargetRECT()))
                    << "page " << c.mPage << ": params " << controls[i]->ParamIdx() << " and "
                    << controls[j]->ParamIdx();
    }
}

TEST_F(ModPagesFixture, EveryParameterOfAPagesFamiliesIsOnExactlyOneOfItsControls)
{
    for (const PageCase& c : PageCases())
    {
        std::map<int, int> count;
        // The wave arrows are a second way to a wave field's parameter, not its control.
        for (IControl* control : PageControls(c.mList))
            if (control->ParamIdx() >= 0 && !dynamic_cast<IStepArrowControl*>(control))
                ++count[control->ParamIdx()];
        const std::vector<int> ids = FamilyIds(c);
        for (int id : ids)
            EXPECT_EQ(count[id], 1) << "page " << c.mPage << ": " << plug.GetParam(id)->name;
        // Nothing else: every control of the page belongs to one of its families.
        const std::set<int> family(ids.begin(), ids.end());
        for (const auto& [id, n] : count)
            EXPECT_TRUE(family.count(id)) << "page " << c.mPage << ": stray " << plug.GetParam(id)->name;
    }
}

TEST_F(ModPagesFixture, EachPageRowBuildsTheControlItsKindAsksFor)
{
    for (const PageCase& c : PageCases())
    {
        const PageLayout* layout = nullptr;
        for (const PageLayout& page : kPageLayouts)
            if (page.mFirstList == c.mList) layout = &page;
        ASSERT_NE(layout, nullptr) << c.mPage;
        for (int i = 0; i < static_cast<int>(layout->mRows.size()); ++i)
        {
            const LayoutRow& row = layout->mRows[i];
            IControl* control = editor.ControlOfPageRow(c.mList, i);
            const bool background = row.mKind == ELayoutKind::kPanel || row.mKind == ELayoutKind::kLabel ||
                                    row.mKind == ELayoutKind::kCaption || row.mKind == ELayoutKind::kRule;
            EXPECT_EQ(control == nullptr, background) << "page " << c.mPage << " row " << i;
            if (!control) continue;
            EXPECT_EQ(control->GetRECT(), row.mRect) << "page " << c.mPage << " row " << i;
            // Meters show a level and take no parameter; everything else sits on the row's.
            EXPECT_EQ(control->ParamIdx(), row.mKind == ELayoutKind::kMeter ? -1 : row.mParam)
                << "page " << c.mPage << " row " << i;
            if (control->ParamIdx() >= 0)
            {
                EXPECT_DOUBLE_EQ(control->GetValue(), plug.GetParam(control->ParamIdx())->GetNormalized());
            }
        }
    }
}

TEST(ModPagesTest, FollowerKnobsCarryTheFollowersLabels)
{
    const std::map<int, std::string> expected{{kENV1Gain, "GAIN"},           {kENV1Locut, "LOCUT"},
                                              {kENV1Hicut, "HICUT"},         {kENV1Depth, "DEPTH"},
                                              {kENV1Threshold, "THRESHOLD"}, {kENV1Attack, "ATTACK"},
                                              {kENV1Hold, "HOLD"},           {kENV1Decay, "RELEASE"}};
    int knobs = 0;
    for (const LayoutRow& row : kEnvelopeLayout)
        if (row.mKind == ELayoutKind::kKnob)
        {
            ++knobs;
            // Both followers' ids alternate: ENV1 x, ENV2 x.
            const int first = row.mParam - (row.mParam - kENV1On) % 2;
            ASSERT_TRUE(expected.count(first)) << row.mParam;
            EXPECT_EQ(row.mLabel, expected.at(first)) << row.mParam;
        }
    EXPECT_EQ(knobs, 16);
}

TEST_F(ModPagesFixture, FollowerAttackDragAndSourcePick)
{
    editor.ShowPage(kPageEnvelope, false);
    DragUp(ControlOn(kListEnvelope, kENV2Attack), 39); // a quarter of three 52-pixel heights
    EXPECT_EQ(plug.Gestures(), OneGesture(kENV2Attack));
    EXPECT_NEAR(plug.GetParam(kENV2Attack)->GetNormalized() - plug.GetParam(kENV1Attack)->GetNormalized(),
                0.25, 0.01);

    plug.mLog.clear();
    Click(ControlOn(kListEnvelope, kENV1Source));
    ASSERT_NE(editor.ModalOverlay(), nullptr);
    for (int i = 0; i < 3; ++i)
        editor.OnKeyDown(0, 0, kKeyDown);
    editor.OnKeyDown(0, 0, kKeyEnter);
    EXPECT_EQ(plug.GetParam(kENV1Source)->value, 2.0); // "IN RIGHT"
    EXPECT_TRUE(PickIsOneGesture(kENV1Source)) << plug.Gestures();
}

TEST_F(ModPagesFixture, ShowingAPageShowsItsControlsAndHidesTheOtherPages)
{
    for (const PageCase& c : PageCases())
    {
        EXPECT_EQ(editor.ShowPage(c.mPage, false), c.mPage);
        for (int list = 0; list < kNumPageLists; ++list)
            for (int idx : editor.ListControls(static_cast<EPageList>(list)))
                EXPECT_EQ(editor.GetControl(idx)->IsHidden(), list != c.mList)
                    << "page " << c.mPage << " list " << list;
        // Another page hides them again.
        editor.ShowPage(kPageDelay, false);
        for (IControl* control : PageControls(c.mList))
            EXPECT_TRUE(control->IsHidden()) << c.mPage;
    }
}

TEST_F(ModPagesFixture, LfoRateKnobDragIsOneGestureOnTheRate)
{
    editor.ShowPage(kPageLfo, false);
    IControl* rate = ControlOn(kListLfo, kLFORate3);
    const double before = plug.GetParam(kLFORate3)->GetNormalized();
    DragUp(rate, 27); // a quarter of three knob heights
    EXPECT_EQ(plug.Gestures(), OneGesture(kLFORate3));
    EXPECT_NEAR(plug.GetParam(kLFORate3)->GetNormalized() - before, 0.25, 0.01);
}

TEST_F(ModPagesFixture, LfoSwitchAndWaveFieldReachTheirParameters)
{
    editor.ShowPage(kPageLfo, false);
    Click(ControlOn(kListLfo, kLFOOn2));
    EXPECT_EQ(plug.Gestures(), OneGesture(kLFOOn2));
    EXPECT_EQ(plug.GetParam(kLFOOn2)->value, 1.0);
    EXPECT_EQ(plug.GetParam(kLFOOn1)->value, 0.0);

    plug.mLog.clear();
    Click(ControlOn(kListLfo, kLFOWave4));
    ASSERT_NE(editor.ModalOverlay(), nullptr);
    editor.OnKeyDown(0, 0, kKeyDown); // onto the current wave
    editor.OnKeyDown(0, 0, kKeyDown);
    editor.OnKeyDown(0, 0, kKeyEnter);
    EXPECT_EQ(plug.GetParam(kLFOWave4)->value, 1.0);
    EXPECT_TRUE(PickIsOneGesture(kLFOWave4)) << plug.Gestures();
}

TEST_F(ModPagesFixture, RoutingFeedbackDragAndSlotSwitchReachTheirSlot)
{
    editor.ShowPage(kPageRouting, false);
    IControl* feedback = ControlOn(kListRouting, kFeedback2);
    const double before = plug.GetParam(kFeedback2)->GetNormalized();
    DragUp(feedback, 27);
    EXPECT_EQ(plug.Gestures(), OneGesture(kFeedback2));
    EXPECT_NEAR(plug.GetParam(kFeedback2)->GetNormalized() - before, 0.25, 0.01);
    EXPECT_EQ(plug.GetParam(kFeedback1)->value, 50.0);

    // Slot 1 starts on, the others off: a press turns slot 4 on and leaves slot 1 alone.
    plug.mLog.clear();
    Click(ControlOn(kListRouting, kSlotOn4));
    EXPECT_EQ(plug.Gestures(), OneGesture(kSlotOn4));
    EXPECT_EQ(plug.GetParam(kSlotOn4)->value, 1.0);
    EXPECT_EQ(plug.GetParam(kSlotOn1)->value, 1.0);
}

TEST_F(ModPagesFixture, SlotFourInputFieldOffersTheOtherSlots)
{
    editor.ShowPage(kPageRouting, false);
    Click(ControlOn(kListRouting, kInput4));
    ASSERT_NE(editor.ModalOverlay(), nullptr);
    // Past the five inputs every slot has, to the first of slot 4's own: "SLOT 1".
    for (int i = 0; i < 6; ++i)
        editor.OnKeyDown(0, 0, kKeyDown);
    editor.OnKeyDown(0, 0, kKeyEnter);
    EXPECT_EQ(plug.GetParam(kInput4)->value, 5.0);
    EXPECT_TRUE(PickIsOneGesture(kInput4)) << plug.Gestures();
}

TEST_F(ModPagesFixture, AGateStepTakesTheHeightItIsPressedAtAndFollowsTheDrag)
{
    editor.ShowPage(kPageGates, false);
    auto* step = dynamic_cast<IStepFaderControl*>(ControlOn(kListGates, kGate2Step5));
    ASSERT_NE(step, nullptr);
    const IRECT r = step->GetRECT();
    const int x = (r.L + r.R) / 2;
    const int quarter = r.B - 2 - (r.H() - 4) / 4; // a quarter up the column
    editor.OnMouseDown(x, quarter, editortest::Left());
    EXPECT_NEAR(plug.GetParam(kGate2Step5)->value, 25.0, 1.5);
    // Dragging to above the top sets the full step; the neighbours stay untouched.
    for (int y = quarter; y >= r.T - 10; --y)
        editor.OnMouseDrag(x, y, editortest::Left());
    editor.OnMouseUp(x, r.T - 10, editortest::Left());
    EXPECT_EQ(plug.GetParam(kGate2Step5)->value, 100.0);
    EXPECT_EQ(plug.GetParam(kGate2Step4)->value, 0.0);
    EXPECT_EQ(plug.GetParam(kGate2Step6)->value, 0.0);
    EXPECT_EQ(plug.Gestures(), OneGesture(kGate2Step5));
}

TEST_F(ModPagesFixture, GateStepsRunInOrderAcrossTheirPanel)
{
    for (int g = 0; g < 4; ++g)
    {
        const int first = kGate1Step1 + 16 * g;
        const IRECT r0 = ControlOn(kListGates, first)->GetRECT();
        const int pitch = ControlOn(kListGates, first + 1)->GetRECT().L - r0.L;
        EXPECT_GT(pitch, r0.W()) << g;
        for (int s = 1; s < 16; ++s)
        {
            const IRECT r = ControlOn(kListGates, first + s)->GetRECT();
            EXPECT_EQ(r.T, r0.T) << g << " " << s;
            EXPECT_EQ(r.L, r0.L + s * pitch) << g << " " << s;
        }
    }
}

TEST_F(ModPagesFixture, TheColourSetFieldAppliesAPickAndTellsTheHandler)
{
    std::vector<int> told;
    editor.SetColorSetHandler([&](int set) { told.push_back(set); });
    editor.ShowPage(kPageOptions, false);
    auto* field =
        dynamic_cast<IColorSetPopUpControl*>(editor.ControlOfPageRow(kListOptions, kOptionsColorSetRow));
    ASSERT_NE(field, nullptr);
    EXPECT_STREQ(field->SetName(), "DEFAULT");
    Click(field);
    auto* menu = dynamic_cast<IPopupOverlay*>(editor.ModalOverlay());
    ASSERT_NE(menu, nullptr);
    const IRECT ice = menu->ItemRect(0, 5);
    editor.OnMouseOver(ice.L + 4, ice.T + 4, IMouseMod());
    editor.OnMouseDown(ice.L + 4, ice.T + 4, editortest::Left());
    EXPECT_EQ(told, std::vector<int>{5});
    EXPECT_EQ(editor.Colors().Current(), 5);
    EXPECT_STREQ(field->SetName(), "ICE");
    EXPECT_TRUE(plug.mLog.empty()); // the colour set is no parameter
}

TEST_F(ModPagesFixture, AttenuatorAndDryKillAreTheEditorsOwnControls)
{
    editor.ShowPage(kPageOptions, false);
    IControl* att = editor.ControlOfPageRow(kListOptions, kOptionsAttenuatorRow);
    IControl* dryKill = editor.ControlOfPageRow(kListOptions, kOptionsDryKillRow);
    auto* readout = dynamic_cast<ITextControl*>(editor.ControlOfPageRow(kListOptions, kOptionsReadoutRow));
    ASSERT_TRUE(att && dryKill && readout);
    // A fresh attenuator sits at 0 dB, the top of its travel, and says so.
    EXPECT_EQ(att->GetValue(), 1.0);
    EXPECT_EQ(readout->GetText(), "0 dB");
    DragUp(att, -27);
    EXPECT_NEAR(att->GetValue(), 0.75, 0.01);
    Click(dryKill);
    EXPECT_EQ(dryKill->GetValue(), 1.0);
    // Neither is a parameter: the host hears nothing of them.
    EXPECT_EQ(att->ParamIdx(), -1);
    EXPECT_EQ(dryKill->ParamIdx(), -1);
    EXPECT_TRUE(plug.mLog.empty()) << plug.Gestures();
}

TEST(ModPagesTest, OptionsCarryTheVersionAndTrademarkLines)
{
    std::set<std::string> labels;
    for (const LayoutRow& row : kOptionsLayout)
        if (row.mKind == ELayoutKind::kLabel) labels.insert(row.mLabel);
    EXPECT_TRUE(labels.count("COLOUR SET:"));
    EXPECT_TRUE(labels.count("QUORVEX Version 1.2.0r14 VST3"));
    EXPECT_TRUE(labels.count("VST is a trademark of Steinberg Media Technologies GmbH"));
}

TEST(ModPagesTest, MatrixKnobsAreNamedAfterTheSlotTheyFeed)
{
    int knobs = 0;
    for (const LayoutRow& row : kLogicLayout)
        if (row.mParam >= kSlot1FB1 && row.mParam <= kSlot4FB4)
        {
            ++knobs;
            const std::string expected = "FB SLOT " + std::to_string((row.mParam - kSlot1FB1) % 4 + 1);
            EXPECT_EQ(row.mLabel, expected) << row.mParam;
        }
    EXPECT_EQ(knobs, 16);
}

TEST_F(ModPagesFixture, MatrixKnobAndLogicModeReachTheirParameters)
{
    editor.ShowPage(kPageLogic, false);
    IControl* knob = ControlOn(kListLogic, kSlot3FB2);
    DragUp(knob, 27);
    EXPECT_EQ(plug.Gestures(), OneGesture(kSlot3FB2));
    // A bipolar knob from its centre: a quarter of the range of -100..100 %.
    EXPECT_NEAR(plug.GetParam(kSlot3FB2)->value, 50.0, 2.0);
    EXPECT_EQ(plug.GetParam(kSlot2FB3)->value, 0.0);

    plug.mLog.clear();
    Click(ControlOn(kListLogic, kLogic3Type));
    ASSERT_NE(editor.ModalOverlay(), nullptr);
    for (int i = 0; i < 3; ++i)
        editor.OnKeyDown(0, 0, kKeyDown);
    editor.OnKeyDown(0, 0, kKeyEnter);
    EXPECT_EQ(plug.GetParam(kLogic3Type)->value, 2.0); // "MIN"
    EXPECT_TRUE(PickIsOneGesture(kLogic3Type)) << plug.Gestures();
}

TEST_F(ModPagesFixture, WaveArrowsStepThroughTheWavesAndWrap)
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
    ASSERT_NE(field, nullptr);

    Click(arrows[0]); // back from the first wave: the last
    EXPECT_EQ(plug.GetParam(kLFOWave2)->value, 2.0);
    EXPECT_EQ(field->ValueText(), "SAW");
    EXPECT_EQ(plug.Gestures(), OneGesture(kLFOWave2));
    plug.mLog.clear();
    Click(arrows[1]); // on from the last: the first again
    EXPECT_EQ(plug.GetParam(kLFOWave2)->value, 0.0);
    Click(arrows[1]);
    EXPECT_EQ(plug.GetParam(kLFOWave2)->value, 1.0);
    EXPECT_EQ(field->ValueText(), "TRIANGLE");
    EXPECT_EQ(plug.Gestures(), OneGesture(kLFOWave2) + " " + OneGesture(kLFOWave2));
    EXPECT_EQ(plug.GetParam(kLFOWave1)->value, 0.0);
}

TEST(ModPagesTest, EveryPageBuildsAndShowsWithTheBitmapsMissing)
{
    CataloguePlug plug;
    QuorvexEditor editor(&plug, "/nonexistent/quorvex/img");
    plug.AttachGraphics(&editor);
    for (const PageCase& c : PageCases())
    {
        editor.ShowPage(c.mPage, false);
        EXPECT_FALSE(editor.OnTimerTick().Empty()) << c.mPage;
        const std::vector<int>& idx = editor.ListControls(c.mList);
        ASSERT_GT(idx.size(), 1u) << c.mPage;
        for (int i : idx)
        {
            EXPECT_FALSE(editor.GetControl(i)->IsHidden()) << c.mPage;
            EXPECT_FALSE(editor.GetControl(i)->GetRECT().Empty()) << c.mPage;
        }
    }
    plug.AttachGraphics(nullptr);
}
