// The delay pages built from their tables: the overview's panels on each slot's own parameters
// with a section that follows the delay mode, and the large view of one slot whose tap columns
// follow the slot's tap count, whose faders drag their own step and whose masks gray them.
#include <gtest/gtest.h>

#include <set>
#include <tuple>

#include "EditorDoubles.h"
#include "editor/DelayPageControls.h"
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

struct DelayPagesFixture : ::testing::Test
{
    CataloguePlug plug;
    QuorvexEditor editor{&plug, QUORVEX_ART_DIR};
    DelayPagesFixture()
    {
        plug.AttachGraphics(&editor);
        editor.OnTimerTick();
        plug.mLog.clear();
    }
    ~DelayPagesFixture() override { plug.AttachGraphics(nullptr); }

    // A list parameter set to entry `index` as the host would.
    void SetIndex(int param, int index)
    {
        IParamRecord* p = plug.GetParam(param);
        p->value = index;
        editor.SetParameterFromPlug(param, p->GetNormalized(), true);
    }
    // The overview's shown control of a parameter, or null.
    IControl* ShownOnOverview(int param)
    {
        for (int row = 0; row < static_cast<int>(kDelayLayout.size()); ++row)
            if (IControl* c = editor.ControlOfPageRow(kListDelay, row))
                if (c->ParamIdx() == param && !c->IsHidden()) return c;
        return nullptr;
    }
    IControl* Step(int slot, int stepRow, int column)
    {
        return editor.ControlOfPageRow(static_cast<EPageList>(kListLarge1 + slot),
                                       layout::StepRowControl(stepRow, column));
    }
    void Click(IControl* c)
    {
        const IRECT r = c->GetRECT();
        const int x = (r.L + r.R) / 2, y = (r.T + r.B) / 2;
        ASSERT_EQ(editor.GetControl(editor.HitTest(x, y)), c);
        editor.OnMouseDown(x, y, editortest::Left());
        editor.OnMouseUp(x, y, editortest::Left());
    }
};

// Rows of the step table by name.
int StepRowOf(const char* name)
{
    for (int r = 0; r < layout::kNumStepRows; ++r)
        if (std::string(layout::kStepRows[r].name) == name) return r;
    return -1;
}

bool Interactive(ELayoutKind kind)
{
    switch (kind)
    {
    case ELayoutKind::kKnob:
    case ELayoutKind::kModeKnob:
    case ELayoutKind::kSwitch:
    case ELayoutKind::kValuePopup:
    case ELayoutKind::kSourceField:
    case ELayoutKind::kLargeViewButton:
    case ELayoutKind::kLargeBackButton:
    case ELayoutKind::kLargeViewSelect:
    case ELayoutKind::kTapStepFader:
    case ELayoutKind::kStepMaskButton:
    case ELayoutKind::kTapNumber:
        return true;
    default:
        return false;
    }
}

// Two rows can show at once when some mode, time kind and view allows both.
bool CanShowTogether(const DelayRowRule& a, const DelayRowRule& b)
{
    return (a.mModes & b.mModes) != 0 && (a.mSync & b.mSync) != 0 && (a.mViews & b.mViews) != 0;
}

template <typename Rows, typename Rules> void ExpectFitsAndNoOverlap(const Rows& rows, const Rules& rules)
{
    for (const LayoutRow& row : rows)
    {
        EXPECT_TRUE(kStageRect.Intersect(row.mRect) == row.mRect) << row.mLabel << " " << row.mParam;
        if (row.mKind == ELayoutKind::kKnob || row.mKind == ELayoutKind::kModeKnob)
        {
            EXPECT_TRUE(kStageRect.Intersect(KnobLabelRect(row.mRect)) == KnobLabelRect(row.mRect));
        }
    }
    for (size_t i = 0; i < rows.size(); ++i)
        for (size_t j = i + 1; j < rows.size(); ++j)
        {
            if (Interactive(rows[i].mKind) && Interactive(rows[j].mKind) &&
                CanShowTogether(rules[i], rules[j]))
            {
                EXPECT_FALSE(rows[i].mRect.Intersects(rows[j].mRect)) << i << " " << j;
            }
        }
}
} // namespace

TEST(DelayLayout, OverviewFitsTheStageAndControlsShownTogetherDoNotOverlap)
{
    ExpectFitsAndNoOverlap(kDelayLayout, kDelayRules);
    // Every row of a slot lies inside that slot's panel.
    for (int row = 0; row < static_cast<int>(kDelayLayout.size()); ++row)
    {
        const IRECT& panel =
            kDelayLayout[(row / layout::kDelayRowsPerSlot) * layout::kDelayRowsPerSlot].mRect;
        EXPECT_TRUE(panel.Intersect(kDelayLayout[row].mRect) == kDelayLayout[row].mRect) << row;
    }
}

TEST(DelayLayout, LargeViewFitsTheStageAndControlsShownTogetherDoNotOverlap)
{
    ExpectFitsAndNoOverlap(kLargeDelayLayout, kLargeDelayRules);
}

TEST_F(DelayPagesFixture, EverySlotShowsEachOfItsDelayParametersInTheModeThatUsesThem)
{
    editor.ShowPage(kPageDelay, false);
    const int always[] = {
        kDelayMode1,          kDelayRoute1,           kTimebase1,           kDelayLRLink1,
        kDelayTimeLModDepth1, kDelayTimeLModSource1,  kDelayTimeRModDepth1, kDelayTimeRModSource1,
        kFeedback1,           kFeedbackModDepth1,     kFeedbackModSource1,  kDelaySpread1,
        kDelayModDepth1,      kDelaySpreadModSource1, kDelayLopass1,        kDelayHipass1};
    const std::vector<std::vector<int>> byMode = {
        {kFBProportional1},
        {kReverseDelayTrigger1, kReverseXFade1, kGrainPosition1, kGPositionModDepth1, kGrainSpeedModSource1},
        {kGrainSize1, kGrainSizeModDepth1, kGrainSizeModSource1, kGrainSpeed1, kGSpeedModDepth1,
         kGrainSpreadModSource1, kGrainPosition1, kGPositionModDepth1, kGrainSpeedModSource1, kGrainFade1},
        {kDelayTaps1, kDelayTapFB1, kTapTimebase1, kDelayTapsTime1, kDelayTapsTimeModDepth1,
         kDelayTapsTimeModSource1, kDelayTapsSwing1, kDelayTapsSwell1}};
    for (int slot = 0; slot < 4; ++slot)
        for (int mode = 0; mode < 4; ++mode)
        {
            SetIndex(kDelayMode1 + slot, mode);
            for (int param : always)
                EXPECT_NE(ShownOnOverview(param + slot), nullptr) << "slot " << slot << " param " << param;
            std::set<int> mine(byMode[mode].begin(), byMode[mode].end());
            for (int other = 0; other < 4; ++other)
                for (int param : byMode[other])
                {
                    const bool shown = ShownOnOverview(param + slot) != nullptr;
                    EXPECT_EQ(shown, mine.count(param) == 1)
                        << "slot " << slot << " mode " << mode << " " << param;
                }
        }
}

TEST_F(DelayPagesFixture, TimeKnobsInMillisecondsWhenFreeAndFactorsWhenSynced)
{
    editor.ShowPage(kPageDelay, false);
    SetIndex(kTimebase3, 0); // "MS"
    EXPECT_NE(ShownOnOverview(kDelayTimeL3), nullptr);
    EXPECT_NE(ShownOnOverview(kDelayTimeR3), nullptr);
    EXPECT_EQ(ShownOnOverview(kDelayFactorL3), nullptr);
    // The other slots keep their synced default.
    EXPECT_NE(ShownOnOverview(kDelayFactorL2), nullptr);
    EXPECT_EQ(ShownOnOverview(kDelayTimeL2), nullptr);
    SetIndex(kTimebase3, 2);
    EXPECT_EQ(ShownOnOverview(kDelayTimeL3), nullptr);
    EXPECT_NE(ShownOnOverview(kDelayFactorR3), nullptr);
}

TEST_F(DelayPagesFixture, AModeChangeOnAnotherPageShowsRightOnReturn)
{
    editor.ShowPage(kPageLfo, false);
    SetIndex(kDelayMode4, 2);
    for (int row = 0; row < static_cast<int>(kDelayLayout.size()); ++row)
    {
        if (IControl* c = editor.ControlOfPageRow(kListDelay, row))
        {
            EXPECT_TRUE(c->IsHidden()) << row;
        }
    }
    editor.ShowPage(kPageDelay, false);
    EXPECT_NE(ShownOnOverview(kGrainSize4), nullptr);
    EXPECT_EQ(ShownOnOverview(kDelayTaps4), nullptr);
}

TEST_F(DelayPagesFixture, EachLargeViewIsOnItsSlotsSteps)
{
    const struct
    {
        const char* row;
        int first;
    } families[] = {{"TIME", kTapDelay1Step1Time},
                    {"LEVEL", kTapDelay1Step1Level},
                    {"PAN", kTapDelay1Step1Pan},
                    {"FX P1", kTapDelay1Step1FXP1},
                    {"FX P2", kTapDelay1Step1FXP2}};
    EXPECT_EQ(Step(2, StepRowOf("TIME"), 4)->ParamIdx(), kTapDelay3Step5Time);
    for (int slot = 0; slot < 4; ++slot)
        for (const auto& f : families)
            for (int column = 0; column < 16; ++column)
                EXPECT_EQ(Step(slot, StepRowOf(f.row), column)->ParamIdx(), f.first + slot * 16 + column)
                    << f.row << " slot " << slot << " column " << column;
    // The rows' settings under the faders are the slot's own, each on its view.
    for (int slot = 0; slot < 4; ++slot)
        for (int view : {kPageLargeLevels, kPageLargeSteps})
        {
            editor.ShowPage(view + slot, false);
            std::set<int> shown;
            const auto list = static_cast<EPageList>(kListLarge1 + slot);
            for (int row = 0; row < static_cast<int>(kLargeDelayLayout.size()); ++row)
            {
                const IControl* c = editor.ControlOfPageRow(list, row);
                if (c && !c->IsHidden() && c->ParamIdx() >= 0) shown.insert(c->ParamIdx());
            }
            for (const layout::StepBandItem& item : layout::kStepBand)
            {
                const bool mine = (item.views & (view == kPageLargeSteps ? 2 : 1)) != 0;
                EXPECT_EQ(shown.count(item.param + slot), mine ? 1u : 0u) << item.label << " slot " << slot;
            }
        }
    // Pan faders fill from the middle; level faders from the bottom.
    EXPECT_TRUE(dynamic_cast<StepFaderControl*>(Step(0, StepRowOf("PAN"), 0))->IsBipolar());
    EXPECT_FALSE(dynamic_cast<StepFaderControl*>(Step(0, StepRowOf("LEVEL"), 0))->IsBipolar());
}

TEST_F(DelayPagesFixture, VisibleColumnsFollowTheSlotsTapCount)
{
    const int counts[4] = {1, 4, 16, 11};
    for (int slot = 0; slot < 4; ++slot)
        SetIndex(kDelayTaps1 + slot, counts[slot] - 1);
    for (int slot = 0; slot < 4; ++slot)
        for (int view : {kPageLargeLevels, kPageLargeSteps})
        {
            editor.ShowPage(view + slot, false);
            const char* rowName = view == kPageLargeLevels ? "LEVEL" : "FX P2";
            for (int column = 0; column < 16; ++column)
            {
                const bool shown = column < counts[slot];
                EXPECT_EQ(!Step(slot, StepRowOf(rowName), column)->IsHidden(), shown)
                    << slot << " " << column;
                EXPECT_EQ(!editor
                               .ControlOfPageRow(static_cast<EPageList>(kListLarge1 + slot),
                                                 layout::StepColumnNumber(column))
                               ->IsHidden(),
                          shown);
            }
        }
    // A change while the view is shown takes effect at once.
    editor.ShowPage(kPageLargeLevels + 1, false);
    SetIndex(kDelayTaps2, 5);
    EXPECT_FALSE(Step(1, StepRowOf("TIME"), 5)->IsHidden());
    EXPECT_TRUE(Step(1, StepRowOf("TIME"), 6)->IsHidden());
}

TEST_F(DelayPagesFixture, EachViewShowsItsOwnRows)
{
    editor.ShowPage(kPageLargeLevels + 2, false);
    EXPECT_FALSE(Step(2, StepRowOf("PAN"), 0)->IsHidden());
    EXPECT_TRUE(Step(2, StepRowOf("FX P1"), 0)->IsHidden());
    EXPECT_TRUE(Step(2, StepRowOf("FX ON"), 0)->IsHidden());
    editor.ShowPage(kPageLargeSteps + 2, false);
    EXPECT_TRUE(Step(2, StepRowOf("PAN"), 0)->IsHidden());
    EXPECT_FALSE(Step(2, StepRowOf("FX P1"), 0)->IsHidden());
    EXPECT_FALSE(Step(2, StepRowOf("MOD P2"), 0)->IsHidden());
    // The other slots' views stay hidden.
    EXPECT_TRUE(Step(1, StepRowOf("FX P1"), 0)->IsHidden());
}

TEST_F(DelayPagesFixture, AFaderDragIsOneGestureOnItsStep)
{
    editor.ShowPage(kPageLargeLevels + 3, false);
    IControl* fader = Step(3, StepRowOf("LEVEL"), 6);
    const IRECT r = fader->GetRECT();
    const int x = (r.L + r.R) / 2, y = (r.T + r.B) / 2;
    ASSERT_EQ(editor.GetControl(editor.HitTest(x, y)), fader);
    const double before = fader->GetValue();
    editor.OnMouseDown(x, y, editortest::Left());
    editor.OnMouseDrag(x, y + 24, editortest::Left());
    editor.OnMouseUp(x, y + 24, editortest::Left());
    const std::string id = std::to_string(kTapDelay4Step7Level);
    EXPECT_EQ(plug.Gestures(), "B" + id + " P" + id + " E" + id);
    // Down by a quarter of the fader's height takes a quarter of the range off.
    EXPECT_NEAR(fader->GetValue(), before - 24.0 / r.H(), 0.02);
}

TEST_F(DelayPagesFixture, MaskButtonsTellThePlugInAndGrayTheStepsTheySwitchOff)
{
    std::vector<std::tuple<int, int, bool, bool>> taps;
    std::vector<std::tuple<int, int, bool>> fx;
    std::vector<std::tuple<int, int, int, bool>> mods;
    editor.SetStepMaskActions({[&](int s, int t, bool l, bool r) { taps.emplace_back(s, t, l, r); },
                               [&](int s, int t, bool on) { fx.emplace_back(s, t, on); },
                               [&](int s, int row, int t, bool on) { mods.emplace_back(s, row, t, on); }});
    editor.ShowPage(kPageLargeSteps + 1, false);
    IControl* p1 = Step(1, StepRowOf("FX P1"), 2);
    IControl* p2 = Step(1, StepRowOf("FX P2"), 2);
    // A fresh slot has every step effect off: both faders gray and take no mouse.
    EXPECT_TRUE(p1->IsGrayed());
    EXPECT_TRUE(p2->IsGrayed());
    Click(Step(1, StepRowOf("FX ON"), 2));
    Click(Step(1, StepRowOf("MOD P1"), 2));
    EXPECT_FALSE(p1->IsGrayed());
    EXPECT_TRUE(p2->IsGrayed()); // its modulation is still off
    EXPECT_TRUE(Step(1, StepRowOf("FX P1"), 3)->IsGrayed());
    EXPECT_EQ(editor.Delay().StepFxMask(1), 1u << 2);
    EXPECT_EQ(editor.Delay().StepModMask(0, 1), 1u << 2);
    // The step's effect off grays it again, its modulation bit kept.
    Click(Step(1, StepRowOf("FX ON"), 2));
    EXPECT_TRUE(p1->IsGrayed());
    EXPECT_EQ(fx, (std::vector<std::tuple<int, int, bool>>{{1, 2, true}, {1, 2, false}}));
    EXPECT_EQ(mods, (std::vector<std::tuple<int, int, int, bool>>{{1, 0, 2, true}}));

    // The right button leaves a mask alone.
    IControl* fxOn = Step(1, StepRowOf("FX ON"), 5);
    const IRECT fr = fxOn->GetRECT();
    editor.OnMouseDown((fr.L + fr.R) / 2, (fr.T + fr.B) / 2, editortest::Right());
    editor.OnMouseUp((fr.L + fr.R) / 2, (fr.T + fr.B) / 2, editortest::Right());
    EXPECT_EQ(editor.Delay().StepFxMask(1), 0u);

    // Tap buttons report both channels of the tap.
    editor.ShowPage(kPageLargeLevels + 1, false);
    Click(Step(1, StepRowOf("TAP R"), 0));
    Click(Step(1, StepRowOf("TAP L"), 0));
    EXPECT_EQ(taps, (std::vector<std::tuple<int, int, bool, bool>>{{1, 0, false, true}, {1, 0, true, true}}));
    EXPECT_EQ(editor.Delay().TapOnMask(1, 0), 1u);
    EXPECT_EQ(editor.Delay().TapOnMask(1, 1), 1u);
    EXPECT_TRUE(dynamic_cast<DelayTextButton*>(Step(1, StepRowOf("TAP L"), 0))->IsLit());
    EXPECT_FALSE(dynamic_cast<DelayTextButton*>(Step(1, StepRowOf("TAP L"), 1))->IsLit());
    // No parameter moved.
    EXPECT_EQ(plug.Gestures(), "");
}

TEST_F(DelayPagesFixture, ATapNumberOffersTheChannelsTheTapSoundsOn)
{
    std::vector<std::tuple<int, int, bool, bool>> taps;
    editor.SetStepMaskActions({[&](int s, int t, bool l, bool r) { taps.emplace_back(s, t, l, r); }, {}, {}});
    editor.ShowPage(kPageLargeLevels + 1, false);
    editor.Delay().SetTapOnMask(1, 0, 0xFFFF);
    editor.Delay().SetTapOnMask(1, 1, 0xFFFF);
    IControl* number = editor.ControlOfPageRow(kListLarge2, layout::StepColumnNumber(2));
    auto popup = [&] { return dynamic_cast<IPopupOverlay*>(editor.ModalOverlay()); };
    auto pick = [&](const char* mark)
    {
        Click(number);
        ASSERT_NE(popup(), nullptr);
        const IPopupMenu* menu = popup()->MenuAt(0);
        ASSERT_NE(menu, nullptr);
        for (int i = 0; i < menu->NItems(); ++i)
            if (menu->GetItem(i)->mText == mark)
            {
                const IRECT r = popup()->ItemRect(0, i);
                editor.OnMouseOver(r.L + 5, r.T + 5, IMouseMod());
                editor.OnMouseDown(r.L + 5, r.T + 5, editortest::Left());
                editor.OnMouseUp(r.L + 5, r.T + 5, editortest::Left());
                return;
            }
        FAIL() << mark;
    };
    auto checked = [&]
    {
        Click(number);
        const IPopupMenu* menu = popup()->MenuAt(0);
        std::string texts, mark;
        for (int i = 0; i < menu->NItems(); ++i)
        {
            texts += menu->GetItem(i)->mText + "|";
            if (menu->GetItem(i)->Checked()) mark += menu->GetItem(i)->mText;
        }
        editor.OnKeyDown(0, 0, kKeyEscape);
        EXPECT_EQ(texts, "--|L|R|L+R|");
        return mark;
    };
    EXPECT_EQ(checked(), "L+R");
    pick("R");
    EXPECT_EQ(editor.Delay().TapOnMask(1, 0), 0xFFFFu & ~(1u << 2));
    EXPECT_EQ(editor.Delay().TapOnMask(1, 1), 0xFFFFu);
    EXPECT_FALSE(dynamic_cast<DelayTextButton*>(Step(1, StepRowOf("TAP L"), 2))->IsLit());
    EXPECT_TRUE(dynamic_cast<DelayTextButton*>(Step(1, StepRowOf("TAP R"), 2))->IsLit());
    EXPECT_EQ(checked(), "R");
    pick("--");
    EXPECT_EQ(checked(), "--");
    pick("L");
    EXPECT_EQ(editor.Delay().TapOnMask(1, 0), 0xFFFFu);
    EXPECT_EQ(editor.Delay().TapOnMask(1, 1), 0xFFFFu & ~(1u << 2));
    // One report per pick, with both channels; no other tap and no parameter moved.
    EXPECT_EQ(taps, (std::vector<std::tuple<int, int, bool, bool>>{
                        {1, 2, false, true}, {1, 2, false, false}, {1, 2, true, false}}));
    EXPECT_EQ(plug.Gestures(), "");
}

TEST_F(DelayPagesFixture, NarrowSourceFieldsShowShortNamesAndOfferTheFullList)
{
    editor.ShowPage(kPageDelay, false);
    auto* field = dynamic_cast<SourceFieldControl*>(ShownOnOverview(kFeedbackModSource1));
    ASSERT_NE(field, nullptr);
    // OFF, LFO2, GATE2, GATE3 (no short name of its own), ENV1, ENV2, LOGIC4.
    const std::pair<int, const char*> cases[] = {{0, "--"}, {2, "L2"},  {6, "G2"}, {7, "GATE3"},
                                                 {9, "E1"}, {10, "E2"}, {14, "M4"}};
    for (const auto& [source, text] : cases)
    {
        SetIndex(kFeedbackModSource1, source);
        EXPECT_EQ(field->ShortText(), text) << source;
    }
    Click(field);
    auto* popup = dynamic_cast<IPopupOverlay*>(editor.ModalOverlay());
    ASSERT_NE(popup, nullptr);
    EXPECT_EQ(popup->MenuAt(0)->NItems(), 15);
    EXPECT_EQ(popup->MenuAt(0)->GetItem(14)->mText, "LOGIC4");
}

TEST_F(DelayPagesFixture, MasksFromThePlugInGrayTheFaders)
{
    editor.ShowPage(kPageLargeSteps, false);
    editor.Delay().SetStepFxMask(0, 0xFFFF);
    editor.Delay().SetStepModMask(1, 0, 0x0001);
    EXPECT_FALSE(Step(0, StepRowOf("FX P2"), 0)->IsGrayed());
    EXPECT_TRUE(Step(0, StepRowOf("FX P2"), 1)->IsGrayed());
    EXPECT_TRUE(Step(0, StepRowOf("FX P1"), 0)->IsGrayed());
    // Level taps are never grayed by the effect masks.
    editor.ShowPage(kPageLargeLevels, false);
    EXPECT_FALSE(Step(0, StepRowOf("LEVEL"), 1)->IsGrayed());
}

TEST_F(DelayPagesFixture, ButtonsMoveBetweenTheOverviewAndALargeView)
{
    editor.ShowPage(kPageDelay, false);
    // Slot 3's button opens slot 3's level taps.
    Click(editor.ControlOfPageRow(kListDelay, 2 * layout::kDelayRowsPerSlot + 1));
    EXPECT_EQ(editor.Pages().Shown(), kPageLargeLevels + 2);
    const auto list = kListLarge3;
    Click(editor.ControlOfPageRow(list, layout::kLargeViewSelectRow));
    EXPECT_EQ(editor.Pages().Shown(), kPageLargeLevels + 2); // the middle lies between the two
    IControl* select = editor.ControlOfPageRow(list, layout::kLargeViewSelectRow);
    const IRECT r = select->GetRECT();
    editor.OnMouseDown(r.R - 4, (r.T + r.B) / 2, editortest::Left());
    editor.OnMouseUp(r.R - 4, (r.T + r.B) / 2, editortest::Left());
    EXPECT_EQ(editor.Pages().Shown(), kPageLargeSteps + 2);
    Click(editor.ControlOfPageRow(list, layout::kLargeBackRow));
    EXPECT_EQ(editor.Pages().Shown(), kPageDelay);
    // The slot's view is remembered: its button opens the effect steps now.
    Click(editor.ControlOfPageRow(kListDelay, 2 * layout::kDelayRowsPerSlot + 1));
    EXPECT_EQ(editor.Pages().Shown(), kPageLargeSteps + 2);

    // With page actions set, the buttons ask the plug-in instead.
    std::vector<std::string> asked;
    editor.SetPageActions({[&](int page) { asked.push_back("show " + std::to_string(page)); }, nullptr,
                           [&]
                           { asked.push_back("toggle " + std::to_string(editor.Pages().SelectedSlot())); }});
    editor.OnMouseDown(r.L + 4, (r.T + r.B) / 2, editortest::Left());
    editor.OnMouseUp(r.L + 4, (r.T + r.B) / 2, editortest::Left());
    Click(editor.ControlOfPageRow(list, layout::kLargeBackRow));
    EXPECT_EQ(asked, (std::vector<std::string>{"show 12", "toggle 2"}));
}

TEST_F(DelayPagesFixture, ARowPresetWritesTheTapsInUseOneGestureEach)
{
    SetIndex(kDelayTaps2, 4); // five taps
    editor.ShowPage(kPageLargeLevels + 1, false);
    const int level = StepRowOf("LEVEL");
    const double untouched = Step(1, level, 5)->GetValue();
    // The row's name opens its menu.
    Click(editor.ControlOfPageRow(kListLarge2, layout::StepRowName(level)));
    EXPECT_NE(editor.ModalOverlay(), nullptr);

    plug.mLog.clear();
    editor.Delay().ApplyStepPreset(1, level, 2); // RAMP
    for (int i = 0; i < 5; ++i)
        EXPECT_NEAR(Step(1, level, i)->GetValue(), i / 4.0, 1e-9) << i;
    EXPECT_EQ(Step(1, level, 5)->GetValue(), untouched);
    // Levels start at full: the last step of the ramp is there already and is left out.
    std::string expected;
    for (int i = 0; i < 4; ++i)
    {
        const std::string id = std::to_string(kTapDelay2Step1Level + i);
        if (!expected.empty()) expected += ' ';
        expected += "B" + id + " P" + id + " E" + id;
    }
    EXPECT_EQ(plug.Gestures(), expected);

    // With a grid of two steps the ramp snaps: floor(3 v) / 2.
    SetIndex(kTapLevelSteps2, 2);
    editor.Delay().ApplyStepPreset(1, level, 2);
    const double snapped[] = {0.0, 0.0, 0.5, 1.0, 1.0};
    for (int i = 0; i < 5; ++i)
        EXPECT_NEAR(Step(1, level, i)->GetValue(), snapped[i], 1e-9) << i;

    // Pan presets run from full left to full right.
    const int pan = StepRowOf("PAN");
    editor.Delay().ApplyStepPreset(1, pan, 3); // RAMP DOWN
    EXPECT_NEAR(Step(1, pan, 0)->GetValue(), 1.0, 1e-9);
    EXPECT_NEAR(Step(1, pan, 2)->GetValue(), 0.5, 1e-9);
    EXPECT_NEAR(Step(1, pan, 4)->GetValue(), 0.0, 1e-9);
    // RANDOMIZE fills all 16 steps, the hidden ones too.
    plug.mLog.clear();
    editor.Delay().ApplyStepPreset(1, StepRowOf("TIME"), 7);
    int ends = 0;
    for (const std::string& e : plug.mLog)
        ends += e.rfind("E", 0) == 0;
    EXPECT_EQ(ends, 16);
}

TEST_F(DelayPagesFixture, TapPatternsSetBothChannelsOfEveryTap)
{
    int reports = 0;
    editor.SetStepMaskActions({[&](int slot, int, bool, bool) { reports += slot == 3; }, nullptr, nullptr});
    editor.ShowPage(kPageLargeLevels + 3, false);
    EXPECT_FALSE(editor.ControlOfPageRow(kListLarge4, layout::kTapPatternRow)->IsHidden());
    editor.Delay().ApplyTapPattern(3, 4); // PING PONG
    EXPECT_EQ(editor.Delay().TapOnMask(3, 0), 0x5555u);
    EXPECT_EQ(editor.Delay().TapOnMask(3, 1), 0xAAAAu);
    EXPECT_EQ(reports, 16);
    editor.Delay().ApplyTapPattern(3, 2); // LEFT
    EXPECT_EQ(editor.Delay().TapOnMask(3, 0), 0xFFFFu);
    EXPECT_EQ(editor.Delay().TapOnMask(3, 1), 0u);
    editor.Delay().ApplyTapPattern(3, 5); // SYNCOPED: every third tap
    EXPECT_EQ(editor.Delay().TapOnMask(3, 0), 0x9249u);
    EXPECT_EQ(editor.Delay().TapOnMask(3, 1), 0x9249u);
    EXPECT_TRUE(dynamic_cast<DelayTextButton*>(Step(3, StepRowOf("TAP R"), 3))->IsLit());
    EXPECT_FALSE(dynamic_cast<DelayTextButton*>(Step(3, StepRowOf("TAP R"), 4))->IsLit());
    // The other slots keep theirs; the pattern menu belongs to the level taps view.
    EXPECT_EQ(editor.Delay().TapOnMask(2, 0), 0u);
    editor.ShowPage(kPageLargeSteps + 3, false);
    EXPECT_TRUE(editor.ControlOfPageRow(kListLarge4, layout::kTapPatternRow)->IsHidden());
}

TEST_F(DelayPagesFixture, ARowMovesAroundTheTapsInUse)
{
    SetIndex(kDelayTaps1, 3); // four taps
    editor.ShowPage(kPageLargeLevels, false);
    const int time = StepRowOf("TIME");
    const double values[] = {0.1, 0.2, 0.3, 0.4};
    for (int i = 0; i < 4; ++i)
        Step(0, time, i)->SetValueFromPlug(values[i]);
    Step(0, time, 4)->SetValueFromPlug(0.9);
    // The move buttons sit under the row's name: the right one first.
    Click(editor.ControlOfPageRow(kListLarge1, layout::kLargeMoveRows + 2 * 0 + 1));
    const double right[] = {0.4, 0.1, 0.2, 0.3};
    for (int i = 0; i < 4; ++i)
        EXPECT_DOUBLE_EQ(Step(0, time, i)->GetValue(), right[i]) << i;
    EXPECT_DOUBLE_EQ(Step(0, time, 4)->GetValue(), 0.9); // beyond the taps in use
    Click(editor.ControlOfPageRow(kListLarge1, layout::kLargeMoveRows + 0));
    for (int i = 0; i < 4; ++i)
        EXPECT_DOUBLE_EQ(Step(0, time, i)->GetValue(), values[i]) << i;
    // The other rows stay.
    EXPECT_DOUBLE_EQ(Step(0, StepRowOf("LEVEL"), 0)->GetValue(),
                     plug.GetParam(kTapDelay1Step1Level)->GetNormalized());
}

TEST_F(DelayPagesFixture, ASlotsStepsAndMasksPasteOntoAnother)
{
    int fxReports = 0;
    editor.SetStepMaskActions({nullptr, [&](int slot, int, bool) { fxReports += slot == 2; }, nullptr});
    editor.ShowPage(kPageLargeSteps, false);
    Step(0, StepRowOf("FX P2"), 9)->SetValueFromPlug(0.75);
    Step(0, StepRowOf("PAN"), 15)->SetValueFromPlug(0.0);
    editor.Delay().SetStepFxMask(0, 0x0F0F);
    editor.Delay().SetTapOnMask(0, 1, 0x00F0);
    EXPECT_FALSE(editor.Delay().HasCopy());
    Click(editor.ControlOfPageRow(kListLarge1, layout::kCopyRow));
    EXPECT_TRUE(editor.Delay().HasCopy());

    editor.ShowPage(kPageLargeSteps + 2, false);
    plug.mLog.clear();
    Click(editor.ControlOfPageRow(kListLarge3, layout::kPasteRow));
    EXPECT_DOUBLE_EQ(Step(2, StepRowOf("FX P2"), 9)->GetValue(), 0.75);
    EXPECT_DOUBLE_EQ(Step(2, StepRowOf("PAN"), 15)->GetValue(), 0.0);
    EXPECT_EQ(editor.Delay().StepFxMask(2), 0x0F0Fu);
    EXPECT_EQ(editor.Delay().TapOnMask(2, 1), 0x00F0u);
    EXPECT_EQ(fxReports, 16);
    // Exactly the two steps that differ reach the host, each as one gesture.
    const std::string fx = std::to_string(kTapDelay3Step10FXP2), pan = std::to_string(kTapDelay3Step16Pan);
    EXPECT_EQ(plug.Gestures(), "B" + pan + " P" + pan + " E" + pan + " B" + fx + " P" + fx + " E" + fx);
    // The pasted effect masks gray the new slot's faders.
    EXPECT_TRUE(Step(2, StepRowOf("FX P1"), 4)->IsGrayed());
}

// The large view's title says for a moment what an edit did, then shows the view's name again; a
// load ends such a notice at once.
TEST_F(DelayPagesFixture, TheTitleTellsWhatAnEditDidForAMoment)
{
    const auto title = [&](int slot)
    {
        int row = 0;
        for (const LayoutRow& r : kLargeDelayLayout)
        {
            if (r.mKind == ELayoutKind::kSlotTitle)
                return dynamic_cast<IMyTextControl*>(
                           editor.ControlOfPageRow(static_cast<EPageList>(kListLarge1 + slot), row))
                    ->GetText();
            ++row;
        }
        return std::string();
    };
    editor.ShowPage(kPageLargeSteps, false);
    EXPECT_EQ(title(0), "SLOT 1  -  TAP STEPS");
    Click(editor.ControlOfPageRow(kListLarge1, layout::kCopyRow));
    EXPECT_EQ(title(0), "SLOT 1  -  COPIED");
    const int ticks = editor.FPS() * 3 / 2; // a second and a half
    for (int i = 0; i < ticks - 1; ++i)
        editor.TickTimedLabels();
    EXPECT_EQ(title(0), "SLOT 1  -  COPIED");
    editor.TickTimedLabels();
    EXPECT_EQ(title(0), "SLOT 1  -  TAP STEPS");

    editor.ShowPage(kPageLargeSteps + 2, false);
    Click(editor.ControlOfPageRow(kListLarge3, layout::kPasteRow));
    EXPECT_EQ(title(2), "SLOT 3  -  PASTED FROM SLOT 1");
    editor.Delay().ApplyTapPattern(2, 4);
    EXPECT_EQ(title(2), "SLOT 3  -  PING PONG");
    editor.FlushTimedLabels();
    EXPECT_EQ(title(2), "SLOT 3  -  TAP STEPS");
    EXPECT_EQ(title(0), "SLOT 1  -  TAP STEPS");
}

TEST_F(DelayPagesFixture, EveryDelayParameterHasAControlOnTheDelayPages)
{
    std::set<int> onPages;
    for (int list : {kListDelay, kListLarge1, kListLarge2, kListLarge3, kListLarge4})
        for (int idx : editor.ListControls(static_cast<EPageList>(list)))
            onPages.insert(editor.GetControl(idx)->ParamIdx());
    std::vector<int> wanted;
    for (int id = kDelayMode1; id <= kReverseXFade4; ++id)
        wanted.push_back(id);
    for (int slot = 0; slot < 4; ++slot)
        for (int first : {kFeedback1, kFeedbackModDepth1, kFeedbackModSource1, kDelayTapsSwing1})
            wanted.push_back(first + slot);
    for (int id : wanted)
        EXPECT_EQ(onPages.count(id), 1u) << plug.GetParam(id)->name;
}

TEST_F(DelayPagesFixture, ThePlayingTapsNumberLights)
{
    editor.ShowPage(kPageLargeLevels + 1, false);
    auto number = [&](int slot, int column)
    {
        return dynamic_cast<DelayTextButton*>(editor.ControlOfPageRow(
            static_cast<EPageList>(kListLarge1 + slot), layout::StepColumnNumber(column)));
    };
    editor.Delay().SetPlayingTap(1, 3);
    EXPECT_TRUE(number(1, 3)->IsLit());
    EXPECT_FALSE(number(1, 2)->IsLit());
    EXPECT_FALSE(number(0, 3)->IsLit());
    editor.OnTimerTick();
    EXPECT_FALSE(number(1, 4)->PeekDirty());
    editor.Delay().SetPlayingTap(1, 4);
    EXPECT_FALSE(number(1, 3)->IsLit());
    EXPECT_TRUE(number(1, 4)->IsLit());
    // Both the number that went out and the one that lit are redrawn.
    EXPECT_TRUE(number(1, 3)->PeekDirty());
    EXPECT_TRUE(number(1, 4)->PeekDirty());
    editor.Delay().SetPlayingTap(1, -1);
    EXPECT_FALSE(number(1, 4)->IsLit());
}
