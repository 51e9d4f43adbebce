// The delay pages built from their tables: the overview's panels on each slot's own parameters
// with a section that follows the delay mode, and the large view of one slot whose tap columns
// follow the slot's tap count, whose faders drag their own step and whose masks gray them.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>
#include <sstream>
#include <tuple>

#include "CatalogueEditor.h"
#include "editor/DelayPageControls.h"
#include "editor/PageLayouts.h"

using namespace editortest;

namespace
{
// The arguments of a call-back in a row, for a log of calls.
template <typename... A> std::string Cat(A... a)
{
    std::ostringstream out;
    (out << ... << a) << ' ';
    return out.str();
}

struct DelayEditor : CatalogueEditor
{
    // The overview's shown control of a parameter, or null.
    IControl* ShownOnOverview(int param)
    {
        for (int row = 0; row < static_cast<int>(kDelayLayout.size()); ++row)
            if (IControl* c = editor.ControlOfPageRow(kListDelay, row))
                if (c->ParamIdx() == param && !c->IsHidden()) return c;
        return nullptr;
    }
    IControl* Large(int slot, int row)
    {
        return editor.ControlOfPageRow(static_cast<EPageList>(kListLarge1 + slot), row);
    }
    IControl* Step(int slot, const char* row, int column)
    {
        return Large(slot, layout::StepRowControl(StepRowOf(row), column));
    }
    bool Lit(int slot, const char* row, int col)
    {
        return dynamic_cast<DelayTextButton*>(Step(slot, row, col))->IsLit();
    }
    static int StepRowOf(const char* name)
    {
        for (int r = 0; r < layout::kNumStepRows; ++r)
            if (std::string(layout::kStepRows[r].name) == name) return r;
        return -1;
    }
};

bool Interactive(ELayoutKind kind)
{
    using enum ELayoutKind;
    const auto kinds = {kKnob,         kModeKnob,        kSwitch,          kValuePopup,
                        kSourceField,  kLargeViewButton, kLargeBackButton, kLargeViewSelect,
                        kTapStepFader, kStepMaskButton,  kTapNumber};
    return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
}

// Without rules every row may show with every other.
template <typename Rows, typename Rules> void ExpectFitsAndNoOverlap(const Rows& rows, const Rules* rules)
{
    for (const LayoutRow& row : rows)
    {
        const bool knob = row.mKind == ELayoutKind::kKnob || row.mKind == ELayoutKind::kModeKnob;
        const IRECT shown = knob ? row.mRect.Union(KnobLabelRect(row.mRect)) : row.mRect;
        EXPECT_TRUE(kStageRect.Intersect(shown) == shown) << row.mLabel << " " << row.mParam;
    }
    // Two rows can show at once when some mode, time kind and view allows both.
    for (size_t i = 0; i < rows.size(); ++i)
        for (size_t j = i + 1; j < rows.size(); ++j)
        {
            const bool together = !rules || (((*rules)[i].mModes & (*rules)[j].mModes) &&
                                             ((*rules)[i].mSync & (*rules)[j].mSync) &&
                                             ((*rules)[i].mViews & (*rules)[j].mViews));
            EXPECT_FALSE(Interactive(rows[i].mKind) && Interactive(rows[j].mKind) && together &&
                         rows[i].mRect.Intersects(rows[j].mRect))
                << i << " " << j;
        }
}
} // namespace

TEST(DelayLayout, DelayAndEffectPagesFitTheStageAndControlsShownTogetherDoNotOverlap)
{
    ExpectFitsAndNoOverlap(kDelayLayout, &kDelayRules);
    ExpectFitsAndNoOverlap(kLargeDelayLayout, &kLargeDelayRules);
    ExpectFitsAndNoOverlap(kEffectsLayout, static_cast<const decltype(kDelayRules)*>(nullptr));
    // Every row of a slot lies inside that slot's panel.
    for (int row = 0; row < static_cast<int>(kDelayLayout.size()); ++row)
    {
        const IRECT& panel =
            kDelayLayout[(row / layout::kDelayRowsPerSlot) * layout::kDelayRowsPerSlot].mRect;
        EXPECT_TRUE(panel.Intersect(kDelayLayout[row].mRect) == kDelayLayout[row].mRect) << row;
    }
}

TEST_F(DelayEditor, EverySlotShowsEachOfItsDelayParametersInTheModeAndTimeKindThatUseThem)
{
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
    // A mode set while another page shows is right when the overview comes back.
    editor.ShowPage(kPageLfo, false);
    SetIndex(kDelayMode4, 2);
    editor.ShowPage(kPageDelay, false);
    EXPECT_NE(ShownOnOverview(kGrainSize4), nullptr);
    EXPECT_EQ(ShownOnOverview(kDelayTaps4), nullptr);
    for (int slot = 0; slot < 4; ++slot)
        for (int mode = 0; mode < 4; ++mode)
        {
            SCOPED_TRACE(::testing::Message() << "slot " << slot << " mode " << mode);
            SetIndex(kDelayMode1 + slot, mode);
            for (int param : always)
                EXPECT_NE(ShownOnOverview(param + slot), nullptr) << param;
            const std::set<int> mine(byMode[mode].begin(), byMode[mode].end());
            for (int other = 0; other < 4; ++other)
                for (int param : byMode[other])
                    EXPECT_EQ(ShownOnOverview(param + slot) != nullptr, mine.count(param) == 1) << param;
        }
    // Time knobs in milliseconds when free, factors when synced as the other slots are by default.
    for (int timebase : {0, 2})
    {
        SetIndex(kTimebase3, timebase);
        EXPECT_EQ(ShownOnOverview(kDelayTimeL3) && ShownOnOverview(kDelayTimeR3), timebase == 0);
        EXPECT_EQ(ShownOnOverview(kDelayFactorL3) && ShownOnOverview(kDelayFactorR3), timebase != 0);
        EXPECT_TRUE(ShownOnOverview(kDelayFactorL2) && !ShownOnOverview(kDelayTimeL2));
    }
}

TEST_F(DelayEditor, EachLargeViewIsOnItsSlotsSteps)
{
    const std::pair<const char*, int> families[] = {{"TIME", kTapDelay1Step1Time},
                                                    {"LEVEL", kTapDelay1Step1Level},
                                                    {"PAN", kTapDelay1Step1Pan},
                                                    {"FX P1", kTapDelay1Step1FXP1},
                                                    {"FX P2", kTapDelay1Step1FXP2}};
    for (int slot = 0; slot < 4; ++slot)
    {
        for (const auto& [row, first] : families)
            for (int column = 0; column < 16; ++column)
                EXPECT_EQ(Step(slot, row, column)->ParamIdx(), first + slot * 16 + column)
                    << row << " slot " << slot << " column " << column;
        // The rows' settings under the faders are the slot's own, each on its view.
        for (int view : {kPageLargeLevels, kPageLargeSteps})
        {
            editor.ShowPage(view + slot, false);
            std::set<int> shown;
            for (int row = 0; row < static_cast<int>(kLargeDelayLayout.size()); ++row)
                if (const IControl* c = Large(slot, row); c && !c->IsHidden()) shown.insert(c->ParamIdx());
            for (const layout::StepBandItem& item : layout::kStepBand)
                EXPECT_EQ(shown.count(item.param + slot),
                          (item.views & (view == kPageLargeSteps ? 2 : 1)) ? 1u : 0u)
                    << item.label << " slot " << slot;
        }
    }
    // Pan faders fill from the middle; level faders from the bottom.
    EXPECT_TRUE(dynamic_cast<StepFaderControl*>(Step(0, "PAN", 0))->IsBipolar());
    EXPECT_FALSE(dynamic_cast<StepFaderControl*>(Step(0, "LEVEL", 0))->IsBipolar());
    // No delay parameter is left without a control on the delay pages. (The feedback and swing
    // families, which lie elsewhere in the catalogue, are the overview test's.)
    std::set<int> onPages;
    for (int list : {kListDelay, kListLarge1, kListLarge2, kListLarge3, kListLarge4})
        for (int idx : editor.ListControls(static_cast<EPageList>(list)))
            onPages.insert(editor.GetControl(idx)->ParamIdx());
    for (int id = kDelayMode1; id <= kReverseXFade4; ++id)
        EXPECT_EQ(onPages.count(id), 1u) << plug.GetParam(id)->name;
}

// Each view shows its own rows, in as many columns as the slot has taps; the other view's rows and
// the other slots' views stay hidden.
TEST_F(DelayEditor, VisibleColumnsFollowTheSlotsTapCountAndAFaderDragsItsStep)
{
    const int counts[4] = {1, 4, 16, 11};
    for (int slot = 0; slot < 4; ++slot)
        SetIndex(kDelayTaps1 + slot, counts[slot] - 1);
    for (int slot = 0; slot < 4; ++slot)
        for (int view : {kPageLargeLevels, kPageLargeSteps})
        {
            editor.ShowPage(view + slot, false);
            const bool levels = view == kPageLargeLevels;
            for (int column = 0; column < 16; ++column)
            {
                SCOPED_TRACE(::testing::Message()
                             << "slot " << slot << " view " << view << " column " << column);
                const bool shown = column < counts[slot];
                EXPECT_EQ(!Step(slot, levels ? "PAN" : "FX P2", column)->IsHidden(), shown);
                EXPECT_EQ(!Step(slot, levels ? "TAP L" : "MOD P2", column)->IsHidden(), shown);
                EXPECT_TRUE(Step(slot, levels ? "FX P1" : "PAN", column)->IsHidden());
                EXPECT_TRUE(Step((slot + 1) % 4, "TIME", column)->IsHidden());
                EXPECT_EQ(!Large(slot, layout::StepColumnNumber(column))->IsHidden(), shown);
            }
        }
    // A change while the view is shown takes effect at once.
    editor.ShowPage(kPageLargeLevels + 1, false);
    SetIndex(kDelayTaps2, 5);
    EXPECT_FALSE(Step(1, "TIME", 5)->IsHidden());
    EXPECT_TRUE(Step(1, "TIME", 6)->IsHidden());
    // A fader drag is one gesture on its own step: a quarter of its height takes a quarter off.
    IControl* fader = Step(1, "LEVEL", 5);
    const double before = fader->GetValue();
    const IRECT r = fader->GetRECT();
    editor.OnMouseDown(r.L + 2, r.T + 30, Left());
    for (int y = r.T + 31; y <= r.T + 54; ++y) // one pixel at a time
        editor.OnMouseDrag(r.L + 2, y, Left());
    editor.OnMouseUp(r.L + 2, r.T + 54, Left());
    EXPECT_EQ(plug.Gestures(), OneGesture(kTapDelay2Step6Level));
    EXPECT_NEAR(fader->GetValue(), before - 24.0 / fader->GetRECT().H(), 0.02);
}

TEST_F(DelayEditor, MaskButtonsTellThePlugInAndGrayTheStepsTheySwitchOff)
{
    std::string told;
    editor.SetStepMaskActions({nullptr, [&](int s, int t, bool on) { told += Cat("fx", s, t, on); },
                               [&](int s, int row, int t, bool on) { told += Cat("mod", s, row, t, on); }});
    editor.ShowPage(kPageLargeSteps + 1, false);
    // A fresh slot has every step effect off: both faders gray and take no mouse.
    EXPECT_TRUE(Step(1, "FX P1", 2)->IsGrayed() && Step(1, "FX P2", 2)->IsGrayed());
    Click(Step(1, "FX ON", 2));
    Click(Step(1, "MOD P1", 2));
    EXPECT_FALSE(Step(1, "FX P1", 2)->IsGrayed());
    EXPECT_TRUE(Step(1, "FX P2", 2)->IsGrayed()); // its modulation is still off
    EXPECT_TRUE(Step(1, "FX P1", 3)->IsGrayed());
    EXPECT_EQ(editor.Delay().StepFxMask(1), 1u << 2);
    EXPECT_EQ(editor.Delay().StepModMask(0, 1), 1u << 2);
    // The step's effect off grays it again, its modulation bit kept.
    Click(Step(1, "FX ON", 2));
    Click(Step(1, "FX ON", 5), Right()); // the right button belongs to the host's menu
    EXPECT_TRUE(Step(1, "FX P1", 2)->IsGrayed());
    EXPECT_EQ(told, "fx121 mod1021 fx120 ");
    EXPECT_EQ(editor.Delay().StepFxMask(1), 0u);
    // Masks from the plug-in gray the faders too; level taps are never grayed by them.
    editor.Delay().SetStepFxMask(1, 0xFFFF);
    editor.Delay().SetStepModMask(1, 1, 0x0001);
    EXPECT_TRUE(!Step(1, "FX P2", 0)->IsGrayed() && Step(1, "FX P2", 1)->IsGrayed());

    editor.ShowPage(kPageLargeLevels + 1, false);
    EXPECT_FALSE(Step(1, "LEVEL", 1)->IsGrayed());
    EXPECT_EQ(plug.Gestures(), ""); // no parameter moved
}

TEST_F(DelayEditor, ATapNumberOffersTheChannelsTheTapSoundsOnAndLightsWhileItPlays)
{
    std::string taps;
    editor.SetStepMaskActions(
        {[&](int s, int t, bool l, bool r) { taps += Cat("tap", s, t, l, r); }, {}, {}});
    editor.ShowPage(kPageLargeLevels + 1, false);
    editor.Delay().SetTapOnMask(1, 0, 0xFFFF);
    editor.Delay().SetTapOnMask(1, 1, 0xFFFF);
    // {row picked of "--|L|R|L+R|", entry checked before, left and right on after}
    const std::tuple<int, const char*, bool, bool> picks[] = {
        {2, "L+R", false, true}, {0, "R", false, false}, {1, "--", true, false}};
    for (const auto& [row, checked, left, right] : picks)
    {
        Click(Large(1, layout::StepColumnNumber(2)));
        const IPopupMenu* items = Popup()->MenuAt(0);
        std::string texts, was;
        for (int i = 0; i < items->NItems(); ++i)
        {
            texts += items->GetItem(i)->mText + "|";
            was = items->GetItem(i)->Checked() ? items->GetItem(i)->mText : was;
        }
        EXPECT_EQ(texts, "--|L|R|L+R|");
        EXPECT_EQ(was, checked);
        PickRow(editor, row);
        EXPECT_EQ(editor.Delay().TapOnMask(1, 0), left ? 0xFFFFu : 0xFFFBu) << row;
        EXPECT_EQ(editor.Delay().TapOnMask(1, 1), right ? 0xFFFFu : 0xFFFBu) << row;
        EXPECT_TRUE(Lit(1, "TAP L", 2) == left && Lit(1, "TAP R", 2) == right) << row;
    }
    // One report per pick, with both channels; no other tap and no parameter moved.
    EXPECT_EQ(taps, "tap1201 tap1200 tap1210 ");
    EXPECT_EQ(plug.Gestures(), "");
    // The playing tap's number lights; when the next tap plays, both are drawn again. (That the
    // light follows the echoes is the engine suite's
    // EditorOnEngine.TapPlayingEachTapLightsWhereItsEchoSounds.)
    auto* three = dynamic_cast<DelayTextButton*>(Large(1, layout::StepColumnNumber(3)));
    auto* four = dynamic_cast<DelayTextButton*>(Large(1, layout::StepColumnNumber(4)));
    editor.Delay().SetPlayingTap(1, 3);
    editor.OnTimerTick();
    EXPECT_FALSE(four->PeekDirty());
    editor.Delay().SetPlayingTap(1, 4);
    EXPECT_TRUE(!three->IsLit() && four->IsLit() && three->PeekDirty() && four->PeekDirty());
}

TEST_F(DelayEditor, NarrowSourceFieldsShowShortNamesAndOfferTheFullList)
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
    ASSERT_EQ(Popup()->MenuAt(0)->NItems(), 15);
    EXPECT_EQ(Popup()->MenuAt(0)->GetItem(14)->mText, "LOGIC4");
}

TEST_F(DelayEditor, ButtonsMoveBetweenTheOverviewAndALargeView)
{
    editor.ShowPage(kPageDelay, false);
    IControl* slot3 = editor.ControlOfPageRow(kListDelay, 2 * layout::kDelayRowsPerSlot + 1);
    const IRECT r = Large(2, layout::kLargeViewSelectRow)->GetRECT();
    // Slot 3's button opens slot 3's level taps; the selector's middle lies between its two halves;
    // the slot's view is remembered, so its button opens the effect steps after the way back.
    const std::pair<std::function<void()>, int> steps[] = {
        {[&] { Click(slot3); }, kPageLargeLevels + 2},
        {[&] { Click(Large(2, layout::kLargeViewSelectRow)); }, kPageLargeLevels + 2},
        {[&] { ClickAt(r.R - 4, (r.T + r.B) / 2); }, kPageLargeSteps + 2},
        {[&] { Click(Large(2, layout::kLargeBackRow)); }, kPageDelay},
        {[&] { Click(slot3); }, kPageLargeSteps + 2}};
    for (const auto& [act, shown] : steps)
    {
        act();
        EXPECT_EQ(editor.Pages().Shown(), shown);
    }
    // With page actions set, the buttons ask the plug-in instead.
    std::string asked;
    editor.SetPageActions({[&](int page) { asked += Cat("show", page); }, nullptr,
                           [&] { asked += Cat("toggle", editor.Pages().SelectedSlot()); }});
    ClickAt(r.L + 4, (r.T + r.B) / 2);
    Click(Large(2, layout::kLargeBackRow));
    EXPECT_EQ(asked, "show12 toggle2 ");
}

TEST_F(DelayEditor, ARowPresetWritesTheTapsInUseOneGestureEach)
{
    SetIndex(kDelayTaps2, 4); // five taps
    editor.ShowPage(kPageLargeLevels + 1, false);
    const double untouched = Step(1, "LEVEL", 5)->GetValue();
    Click(Large(1, layout::StepRowName(StepRowOf("LEVEL")))); // the row's name opens its menu
    EXPECT_NE(editor.ModalOverlay(), nullptr);
    // {row, preset, the five steps after}: RAMP; with a grid of two steps it snaps to floor(3 v) / 2;
    // pan presets run from full left to full right (RAMP DOWN).
    const std::tuple<const char*, int, int, std::vector<double>> cases[] = {
        {"LEVEL", 2, 0, {0.0, 0.25, 0.5, 0.75, 1.0}},
        {"LEVEL", 2, 2, {0.0, 0.0, 0.5, 1.0, 1.0}},
        {"PAN", 3, 0, {1.0, 0.75, 0.5, 0.25, 0.0}}};
    for (const auto& [row, preset, grid, steps] : cases)
    {
        SetIndex(kTapLevelSteps2, grid);
        plug.mLog.clear();
        editor.Delay().ApplyStepPreset(1, StepRowOf(row), preset);
        for (int i = 0; i < 5; ++i)
            EXPECT_NEAR(Step(1, row, i)->GetValue(), steps[i], 1e-9) << row << " " << grid << " " << i;
        // Levels start at full: the last step of the ramp is there already and is left out.
        if (preset == 2 && !grid)
        {
            EXPECT_EQ(plug.Gestures(),
                      OneGesture(kTapDelay2Step1Level) + " " + OneGesture(kTapDelay2Step2Level) + " " +
                          OneGesture(kTapDelay2Step3Level) + " " + OneGesture(kTapDelay2Step4Level));
        }
    }
    EXPECT_EQ(Step(1, "LEVEL", 5)->GetValue(), untouched);
    // RANDOMIZE fills all 16 steps, the hidden ones too.
    plug.mLog.clear();
    editor.Delay().ApplyStepPreset(1, StepRowOf("TIME"), 7);
    EXPECT_EQ(
        std::count_if(plug.mLog.begin(), plug.mLog.end(), [](const std::string& e) { return e[0] == 'E'; }),
        16);
}

TEST_F(DelayEditor, ARowMovesAroundTheTapsInUseAndTapPatternsSetBothChannels)
{
    SetIndex(kDelayTaps1, 3); // four taps
    editor.ShowPage(kPageLargeLevels, false);
    const double values[] = {0.1, 0.2, 0.3, 0.4, 0.9};
    for (int i = 0; i < 5; ++i)
        Step(0, "TIME", i)->SetValueFromPlug(values[i]);
    // The move buttons sit under the row's name: the right one first. The fifth step is beyond the
    // taps in use, and the other rows stay.
    for (const auto& [button, shift] : {std::pair{1, 3}, {0, 0}})
    {
        Click(Large(0, layout::kLargeMoveRows + button));
        for (int i = 0; i < 5; ++i)
            EXPECT_DOUBLE_EQ(Step(0, "TIME", i)->GetValue(), values[i < 4 ? (i + shift) % 4 : 4]) << i;
    }
    EXPECT_DOUBLE_EQ(Step(0, "LEVEL", 0)->GetValue(), plug.GetParam(kTapDelay1Step1Level)->GetNormalized());

    // Tap patterns set both channels of every tap: PING PONG, LEFT and SYNCOPED (every third).
    int reports = 0;
    editor.SetStepMaskActions({[&](int slot, int, bool, bool) { reports += slot == 3; }, nullptr, nullptr});
    editor.ShowPage(kPageLargeLevels + 3, false);
    EXPECT_FALSE(Large(3, layout::kTapPatternRow)->IsHidden());
    const std::tuple<int, unsigned, unsigned> cases[] = {
        {4, 0x5555, 0xAAAA}, {2, 0xFFFF, 0}, {5, 0x9249, 0x9249}};
    for (const auto& [pattern, left, right] : cases)
    {
        editor.Delay().ApplyTapPattern(3, pattern);
        EXPECT_EQ(editor.Delay().TapOnMask(3, 0), left) << pattern;
        EXPECT_EQ(editor.Delay().TapOnMask(3, 1), right) << pattern;
    }
    EXPECT_EQ(reports, 48);
    EXPECT_TRUE(Lit(3, "TAP R", 3) && !Lit(3, "TAP R", 4));
    // The other slots keep theirs; the pattern menu belongs to the level taps view.
    EXPECT_EQ(editor.Delay().TapOnMask(2, 0), 0u);
    editor.ShowPage(kPageLargeSteps + 3, false);
    EXPECT_TRUE(Large(3, layout::kTapPatternRow)->IsHidden());
}

// A slot's steps and masks paste onto another; the large view's title says for a moment what the
// edit did, then shows the view's name again, and a load ends such a notice at once.
TEST_F(DelayEditor, ASlotsStepsAndMasksPasteOntoAnotherAndTheTitleTellsForAMoment)
{
    int fxReports = 0;
    editor.SetStepMaskActions({nullptr, [&](int slot, int, bool) { fxReports += slot == 2; }, nullptr});
    const auto title = [&](int slot)
    {
        for (int row = 0; row < static_cast<int>(kLargeDelayLayout.size()); ++row)
            if (kLargeDelayLayout[row].mKind == ELayoutKind::kSlotTitle)
                return dynamic_cast<IMyTextControl*>(Large(slot, row))->GetText();
        return std::string();
    };
    editor.ShowPage(kPageLargeSteps, false);
    Click(Large(0, layout::kPasteRow)); // nothing copied yet: nothing to paste
    EXPECT_TRUE(plug.mLog.empty());
    Step(0, "FX P2", 9)->SetValueFromPlug(0.75);
    Step(0, "PAN", 15)->SetValueFromPlug(0.0);
    editor.Delay().SetStepFxMask(0, 0x0F0F);
    editor.Delay().SetTapOnMask(0, 1, 0x00F0);
    Click(Large(0, layout::kCopyRow));
    EXPECT_EQ(title(0), "SLOT 1  -  COPIED");
    for (int i = 1; i <= editor.FPS() * 3 / 2; ++i) // a second and a half
    {
        editor.TickTimedLabels();
        EXPECT_EQ(title(0), i < editor.FPS() * 3 / 2 ? "SLOT 1  -  COPIED" : "SLOT 1  -  TAP STEPS");
    }

    editor.ShowPage(kPageLargeSteps + 2, false);
    plug.mLog.clear();
    Click(Large(2, layout::kPasteRow));
    EXPECT_TRUE(Step(2, "FX P2", 9)->GetValue() == 0.75 && Step(2, "PAN", 15)->GetValue() == 0.0);
    EXPECT_EQ(editor.Delay().StepFxMask(2), 0x0F0Fu);
    EXPECT_EQ(editor.Delay().TapOnMask(2, 1), 0x00F0u);
    EXPECT_EQ(fxReports, 16);
    // Exactly the two steps that differ reach the host, each as one gesture.
    EXPECT_EQ(plug.Gestures(), OneGesture(kTapDelay3Step16Pan) + " " + OneGesture(kTapDelay3Step10FXP2));
    // The pasted effect masks gray the new slot's faders.
    EXPECT_TRUE(Step(2, "FX P1", 4)->IsGrayed());
    EXPECT_EQ(title(2), "SLOT 3  -  PASTED FROM SLOT 1");
    editor.Delay().ApplyTapPattern(2, 4);
    EXPECT_EQ(title(2), "SLOT 3  -  PING PONG");
    editor.FlushTimedLabels();
    EXPECT_EQ(title(2), "SLOT 3  -  TAP STEPS");
}
