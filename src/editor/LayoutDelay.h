#pragma once
// The delay pages: the overview of the four slots (page 2) and the large view of one slot's 16
// taps (pages 10..17, one control list per slot). Each table comes with a rule per row telling
// when the row's control shows: the overview shows a slot's mode section only for the slot's
// delay mode and its time or factor knobs by the timebase; the large view shows the rows of its
// view (level taps or effect steps) and only the columns of the taps in use.

#include <array>
#include <cstdint>

#include "editor/LayoutEffects.h"
#include "editor/MainLayout.h"
#include "params/ParamIds.h"

// When a row of a delay page shows. A row shows when all of its conditions hold.
struct DelayRowRule
{
    std::uint8_t mModes = 0xF; // overview: bit m for delay mode m (FORWARD, BACKWARD, GRAIN, TAPPED)
    std::uint8_t mSync = 3;    // overview: bit 0 free time, bit 1 synced time
    std::uint8_t mViews = 3;   // large view: bit 0 level taps, bit 1 effect steps
    std::int8_t mColumn = -1;  // large view: the tap column, shown while the slot has that many taps
};

// The presets a step row's menu offers: the curves for time, level and the effect parameters,
// and the pan positions for pan.
inline constexpr const char* kStepCurvePresets[] = {"ALL OFF",  "ALL ON", "RAMP", "EXPONENTIAL",
                                                    "TRIANGLE", "SINUS",  "HALF", "RANDOMIZE"};
inline constexpr const char* kStepPanPresets[] = {"FULL LEFT", "FULL RIGHT", "RAMP UP",  "RAMP DOWN",
                                                  "EXP UP",    "EXP DOWN",   "TRIANGLE", "INVERSE TRIANGLE",
                                                  "CENTER",    "RANDOMIZE"};
inline constexpr const char* kTapPatterns[] = {"ALL ON",    "ALL OFF",  "LEFT",        "RIGHT",
                                               "PING PONG", "SYNCOPED", "SYNCOPED ST", "TWO-ONE",
                                               "BOUNCER",   "RHYTHM I", "RHYTHM II",   "RANDOMIZE"};

// Which channels a tap sounds on, as its number's menu offers them: bit 0 left, bit 1 right.
inline constexpr const char* kChannelMarks[] = {"--", "L", "R", "L+R"};

// The names a narrow source field shows. The list has no names for the third and fourth gate;
// kShortSourceOf maps each modulation source (OFF, LFO1..4, GATE1..4, ENV1..2, LOGIC1..4) to
// its entry, -1 where there is none and the field keeps the source's full name.
inline constexpr const char* kShortModSources[] = {"--", "L1", "L2", "L3", "L4", "G1", "G2",
                                                   "E1", "E2", "M1", "M2", "M3", "M4"};
inline constexpr int kShortSourceOf[] = {0, 1, 2, 3, 4, 5, 6, -1, -1, 7, 8, 9, 10, 11, 12};

// Which mask a mask button of the large view toggles (the row's mIndex is kind * 16 + tap).
enum EStepMask : int
{
    kMaskTapOnL,
    kMaskTapOnR,
    kMaskStepFx,
    kMaskStepMod1,
    kMaskStepMod2,
    kNumStepMasks
};

namespace layout
{
inline constexpr int kDelayModeForward = 0, kDelayModeBackward = 1, kDelayModeGrain = 2, kDelayModeTapped = 3;
inline constexpr std::uint8_t kModeBit[4] = {1, 2, 4, 8};
inline constexpr int kCellW = 104; // a knob with its modulation depth and source
inline constexpr int kModeTop = 392;
inline constexpr int kCellRow[3] = {218, 276, 334};

template <size_t N> struct RowBuilder
{
    std::array<LayoutRow, N> rows{};
    std::array<DelayRowRule, N> rules{};
    int n = 0;
    constexpr int Add(const LayoutRow& row, DelayRowRule rule = {})
    {
        rules[n] = rule;
        rows[n] = row;
        return n++;
    }
};

// ---- Overview ----

inline constexpr int kDelayRowsPerSlot = 60;

// A knob at the left of a cell with its label under it; the modulation depth at the right with
// the source field under it.
template <size_t N>
constexpr void ModCell(RowBuilder<N>& b, int cellL, int y, int knobParam, int depthParam, int sourceParam,
                       int role, const char* label, ELayoutKind kind, DelayRowRule rule)
{
    b.Add({kind, IRECT::FromSize(cellL + 4, y, kSmall, kSmall), knobParam, BitmapId("knob_hard_small"), role,
           label},
          rule);
    if (depthParam < 0) return;
    // A depth that may hide draws its own scale too.
    const ELayoutKind depthKind = kind == ELayoutKind::kModeKnob ? kind : ELayoutKind::kKnob;
    b.Add(
        {depthKind, IRECT::FromSize(cellL + 66, y + 1, 24, 24), depthParam, BitmapId("knob_soft_mod"), role},
        {rule.mModes, 3});
    b.Add({ELayoutKind::kSourceField, IRECT(cellL + 52, y + 31, cellL + kCellW, y + 49), sourceParam, -1, -1},
          {rule.mModes, 3});
}

template <size_t N> constexpr void ModeLabel(RowBuilder<N>& b, int x, int mode, const char* title, int role)
{
    b.Add({ELayoutKind::kModeLabel, IRECT(x + 12, kModeTop + 8, x + kFxPanelW - 12, kModeTop + 22), -1, -1,
           role, title},
          {kModeBit[mode]});
}

constexpr RowBuilder<4 * kDelayRowsPerSlot> MakeDelayOverview()
{
    RowBuilder<4 * kDelayRowsPerSlot> b;
    for (int s = 0; s < 4; ++s)
    {
        const int x = FxPanelLeft(s);
        const int role = kSlotRole[s];
        const int c1 = x + 12, c2 = x + 116;
        const DelayRowRule all{};
        b.Add({ELayoutKind::kPanel, IRECT(x, kFxPanelTop, x + kFxPanelW, 600), -1, -1, role, kSlotTitles[s]});
        b.Add({ELayoutKind::kLargeViewButton, IRECT::FromSize(x + kFxPanelW - 66, 102, 56, 18), -1,
               BitmapId("open_step_edit"), role, "", s});
        // Mode and route, then the time base with the left/right link.
        b.Add({ELayoutKind::kLabel, IRECT(c1, 128, x + 112, 140), -1, -1, -1, "MODE"});
        b.Add({ELayoutKind::kLabel, IRECT(c2 + 4, 128, x + 220, 140), -1, -1, -1, "ROUTE"});
        b.Add({ELayoutKind::kValuePopup, IRECT(c1, 142, x + 112, 164), kDelayMode1 + s, -1, role});
        b.Add({ELayoutKind::kValuePopup, IRECT(c2 + 4, 142, x + 220, 164), kDelayRoute1 + s, -1, role});
        b.Add({ELayoutKind::kLabel, IRECT(c1, 172, x + 112, 184), -1, -1, -1, "TIMEBASE"});
        b.Add({ELayoutKind::kValuePopup, IRECT(c1, 186, x + 112, 208), kTimebase1 + s, -1, role});
        b.Add({ELayoutKind::kSwitch, IRECT::FromSize(c2 + 4, 189, 34, 16), kDelayLRLink1 + s,
               BitmapId("delay_link")});
        b.Add({ELayoutKind::kLabel, IRECT(c2 + 42, 189, x + 220, 205), -1, -1, -1, "L = R"});
        // Times: milliseconds when free, counts of the time base's note when synced.
        ModCell(b, c1, kCellRow[0], kDelayTimeL1 + s, kDelayTimeLModDepth1 + s, kDelayTimeLModSource1 + s,
                role, "TIME L", ELayoutKind::kModeKnob, {0xF, 1});
        ModCell(b, c1, kCellRow[0], kDelayFactorL1 + s, -1, -1, role, "FACTOR L", ELayoutKind::kModeKnob,
                {0xF, 2});
        ModCell(b, c2, kCellRow[0], kDelayTimeR1 + s, kDelayTimeRModDepth1 + s, kDelayTimeRModSource1 + s,
                role, "TIME R", ELayoutKind::kModeKnob, {0xF, 1});
        ModCell(b, c2, kCellRow[0], kDelayFactorR1 + s, -1, -1, role, "FACTOR R", ELayoutKind::kModeKnob,
                {0xF, 2});
        ModCell(b, c1, kCellRow[1], kFeedback1 + s, kFeedbackModDepth1 + s, kFeedbackModSource1 + s, role,
                "FEEDBACK", ELayoutKind::kKnob, all);
        ModCell(b, c2, kCellRow[1], kDelaySpread1 + s, kDelayModDepth1 + s, kDelaySpreadModSource1 + s, role,
                "SPREAD", ELayoutKind::kKnob, all);
        ModCell(b, c1, kCellRow[2], kDelayLopass1 + s, -1, -1, role, "LO PASS", ELayoutKind::kKnob, all);
        ModCell(b, c2, kCellRow[2], kDelayHipass1 + s, -1, -1, role, "HI PASS", ELayoutKind::kKnob, all);

        // The mode section: what only the slot's delay mode uses.
        b.Add({ELayoutKind::kRule, IRECT(x + 12, kModeTop, x + kFxPanelW - 12, kModeTop + 1)});
        ModeLabel(b, x, kDelayModeForward, "FORWARD", role);
        ModeLabel(b, x, kDelayModeBackward, "REVERSE", role);
        ModeLabel(b, x, kDelayModeGrain, "GRAIN", role);
        ModeLabel(b, x, kDelayModeTapped, "TAPPED", role);

        const DelayRowRule fwd{kModeBit[kDelayModeForward]};
        b.Add({ELayoutKind::kSwitch, IRECT::FromSize(c1, 426, 34, 16), kFBProportional1 + s,
               BitmapId("delay_fb_prop")},
              fwd);
        b.Add({ELayoutKind::kModeLabel, IRECT(c1 + 42, 426, x + 220, 442), -1, -1, -1, "EQUAL L/R DECAY"},
              fwd);

        const DelayRowRule rev{kModeBit[kDelayModeBackward]};
        b.Add({ELayoutKind::kModeLabel, IRECT(c1, 420, x + 112, 432), -1, -1, -1, "TRIGGER"}, rev);
        b.Add({ELayoutKind::kValuePopup, IRECT(c1, 434, x + 112, 456), kReverseDelayTrigger1 + s, -1, role},
              rev);
        ModCell(b, c1, 476, kGrainPosition1 + s, kGPositionModDepth1 + s, kGrainSpeedModSource1 + s, role,
                "POSITION", ELayoutKind::kModeKnob, rev);
        ModCell(b, c2, 476, kReverseXFade1 + s, -1, -1, role, "X-FADE", ELayoutKind::kModeKnob, rev);

        const DelayRowRule grain{kModeBit[kDelayModeGrain]};
        ModCell(b, c1, 424, kGrainPosition1 + s, kGPositionModDepth1 + s, kGrainSpeedModSource1 + s, role,
                "POSITION", ELayoutKind::kModeKnob, grain);
        ModCell(b, c2, 424, kGrainSpeed1 + s, kGSpeedModDepth1 + s, kGrainSpreadModSource1 + s, role, "SPEED",
                ELayoutKind::kModeKnob, grain);
        ModCell(b, c1, 482, kGrainSize1 + s, kGrainSizeModDepth1 + s, kGrainSizeModSource1 + s, role, "SIZE",
                ELayoutKind::kModeKnob, grain);
        ModCell(b, c2, 482, kGrainFade1 + s, -1, -1, role, "X-FADE", ELayoutKind::kModeKnob, grain);

        const DelayRowRule tap{kModeBit[kDelayModeTapped]};
        b.Add({ELayoutKind::kModeLabel, IRECT(c1, 420, x + 112, 432), -1, -1, -1, "TAPS"}, tap);
        b.Add({ELayoutKind::kValuePopup, IRECT(c1, 434, x + 112, 456), kDelayTaps1 + s, -1, role}, tap);
        b.Add({ELayoutKind::kModeLabel, IRECT(c2 + 4, 420, x + 220, 432), -1, -1, -1, "FB TAP"}, tap);
        b.Add({ELayoutKind::kValuePopup, IRECT(c2 + 4, 434, x + 220, 456), kDelayTapFB1 + s, -1, role}, tap);
        ModCell(b, c1, 472, kDelayTapsTime1 + s, kDelayTapsTimeModDepth1 + s, kDelayTapsTimeModSource1 + s,
                role, "TAP TIME", ELayoutKind::kModeKnob, tap);
        b.Add({ELayoutKind::kModeLabel, IRECT(c2 + 4, 474, x + 220, 486), -1, -1, -1, "TAP BASE"}, tap);
        b.Add({ELayoutKind::kValuePopup, IRECT(c2 + 4, 488, x + 220, 510), kTapTimebase1 + s, -1, role}, tap);
        ModCell(b, c1, 534, kDelayTapsSwing1 + s, -1, -1, role, "SWING", ELayoutKind::kModeKnob, tap);
        ModCell(b, c2, 534, kDelayTapsSwell1 + s, -1, -1, role, "SWELL", ELayoutKind::kModeKnob, tap);
    }
    return b;
}

inline constexpr auto kDelayOverviewBuild = MakeDelayOverview();
static_assert(kDelayOverviewBuild.n == 4 * kDelayRowsPerSlot, "one count of rows per slot");

// ---- Large view ----

inline constexpr int kStepColumns = 16;
inline constexpr int kStepColL = 108;
inline constexpr int kStepPitch = 53;
inline constexpr int kFaderW = 22;
inline constexpr int kFaderH = 96;
inline constexpr int kLabelColL = 32, kLabelColR = 100;

constexpr int StepColumnCentre(int column)
{
    return kStepColL + column * kStepPitch + kStepPitch / 2;
}

// A row of the large view: its name at the left, and one control per tap column.
struct StepRowDef
{
    std::uint8_t views;
    const char* name;
    int top;
    ELayoutKind kind;
    int param;  // slot 1, tap 1 for faders
    int mask;   // EStepMask for mask buttons
    int bitmap; // fader look
    const char* text;
};

inline constexpr int kFaderRows[3] = {196, 304, 412};
inline constexpr StepRowDef kStepRows[] = {
    {1, "TAP L", 150, ELayoutKind::kStepMaskButton, -1, kMaskTapOnL, -1, "L"},
    {1, "TAP R", 170, ELayoutKind::kStepMaskButton, -1, kMaskTapOnR, -1, "R"},
    {1, "TIME", kFaderRows[0], ELayoutKind::kTapStepFader, kTapDelay1Step1Time, 0, BitmapId("gate_fader"),
     ""},
    {1, "LEVEL", kFaderRows[1], ELayoutKind::kTapStepFader, kTapDelay1Step1Level, 0, BitmapId("gate_fader"),
     ""},
    {1, "PAN", kFaderRows[2], ELayoutKind::kTapStepFader, kTapDelay1Step1Pan, 0, BitmapId("gate_fader_sp"),
     ""},
    {2, "FX ON", 150, ELayoutKind::kStepMaskButton, -1, kMaskStepFx, -1, "FX"},
    {2, "FX P1", kFaderRows[0], ELayoutKind::kTapStepFader, kTapDelay1Step1FXP1, 0, BitmapId("gate_fader"),
     ""},
    {2, "MOD P1", kFaderRows[0] + kFaderH + 8, ELayoutKind::kStepMaskButton, -1, kMaskStepMod1, -1, "MOD"},
    {2, "FX P2", kFaderRows[0] + 142, ELayoutKind::kTapStepFader, kTapDelay1Step1FXP2, 0,
     BitmapId("gate_fader"), ""},
    {2, "MOD P2", kFaderRows[0] + 142 + kFaderH + 8, ELayoutKind::kStepMaskButton, -1, kMaskStepMod2, -1,
     "MOD"},
};
inline constexpr int kNumStepRows = static_cast<int>(std::size(kStepRows));

// The settings of the rows under the faders: how deep each row's steps act, how many steps it
// has, and for the effect steps which effect parameter each row drives.
struct StepBandItem
{
    std::uint8_t views;
    ELayoutKind kind; // kModeKnob or kValuePopup
    int x, w;
    int param; // slot 1
    const char* label;
};
inline constexpr int kBandTop = 532;
inline constexpr StepBandItem kStepBand[] = {
    {1, ELayoutKind::kModeKnob, 40, kSmall, kTapTimeStepDepth1, "DEPTH"},
    {1, ELayoutKind::kValuePopup, 96, 110, kTapTimeSteps1, "TIME STEPS"},
    {1, ELayoutKind::kModeKnob, 262, kSmall, kTapLevelStepDepth1, "DEPTH"},
    {1, ELayoutKind::kValuePopup, 318, 110, kTapLevelSteps1, "LEVEL STEPS"},
    {1, ELayoutKind::kModeKnob, 484, kSmall, kTapPanWidth1, "WIDTH"},
    {1, ELayoutKind::kValuePopup, 540, 110, kTapPanSteps1, "PAN STEPS"},
    {1, ELayoutKind::kValuePopup, 698, 120, kTapPanMode1, "PAN MODE"},
    {1, ELayoutKind::kValuePopup, 834, 120, kDelayTapDIOut1, "TAP OUT"},
    {2, ELayoutKind::kModeKnob, 40, kSmall, kTapFXP1StepDepth1, "DEPTH"},
    {2, ELayoutKind::kValuePopup, 96, 130, kTapFXParam1_1, "FX P1 TARGET"},
    {2, ELayoutKind::kValuePopup, 242, 110, kTapFXParam1Steps1, "FX P1 STEPS"},
    {2, ELayoutKind::kModeKnob, 484, kSmall, kTapFXP2StepDepth1, "DEPTH"},
    {2, ELayoutKind::kValuePopup, 540, 130, kTapFXParam2_1, "FX P2 TARGET"},
    {2, ELayoutKind::kValuePopup, 686, 110, kTapFXParam2Steps1, "FX P2 STEPS"},
};
inline constexpr int kNumBandItems = static_cast<int>(std::size(kStepBand));
inline constexpr int kNumBandPopups = 9;
inline constexpr int kLargeHeadRows = 5;
inline constexpr int kNumFaderRows = 5;
inline constexpr int kLargeRows = kLargeHeadRows + kStepColumns + kNumStepRows * (1 + kStepColumns) + 1 +
                                  kNumBandItems + kNumBandPopups + 2 * kNumFaderRows + 2;
// The first of the rows after the band: two move buttons per fader row, then copy and paste.
inline constexpr int kLargeMoveRows = kLargeRows - 2 * kNumFaderRows - 2;
inline constexpr int kCopyRow = kLargeRows - 2, kPasteRow = kLargeRows - 1;

// The table row of step row r's control in tap column c, and of a tap column's number.
constexpr int StepRowControl(int r, int column)
{
    return kLargeHeadRows + kStepColumns + r * (1 + kStepColumns) + 1 + column;
}
constexpr int StepColumnNumber(int column)
{
    return kLargeHeadRows + column;
}
inline constexpr int kLargeBackRow = 2;
inline constexpr int kLargeViewSelectRow = 3;
inline constexpr int kTapPatternRow = 4;
// The table row of step row r's name.
constexpr int StepRowName(int r)
{
    return kLargeHeadRows + kStepColumns + r * (1 + kStepColumns);
}

inline constexpr const char* kColumnNumbers[kStepColumns] = {"1", "2",  "3",  "4",  "5",  "6",  "7",  "8",
                                                             "9", "10", "11", "12", "13", "14", "15", "16"};

constexpr RowBuilder<kLargeRows> MakeLargeDelay()
{
    RowBuilder<kLargeRows> b;
    b.Add({ELayoutKind::kPanel, IRECT(20, kFxPanelTop, 972, 600), -1, -1, -1, ""});
    // The slot's name in its colour, the way back to the overview and the view selector in the
    // title band.
    b.Add({ELayoutKind::kSlotTitle, IRECT(32, 102, 240, 120)});
    b.Add({ELayoutKind::kLargeBackButton, IRECT(872, 102, 960, 120), -1, -1, -1, "OVERVIEW"});
    b.Add({ELayoutKind::kLargeViewSelect, IRECT(376, 102, 616, 120), -1, -1, -1, "LEVEL TAPS|EFFECT STEPS"});
    b.Add({ELayoutKind::kTapPatternMenu, IRECT(760, 102, 864, 120), -1, -1, -1, "PATTERN"}, {0xF, 3, 1});
    for (int c = 0; c < kStepColumns; ++c)
    {
        const int cx = StepColumnCentre(c);
        b.Add({ELayoutKind::kTapNumber, IRECT(cx - 16, 129, cx + 16, 145), -1, -1, -1, kColumnNumbers[c], c},
              {0xF, 3, 3, static_cast<std::int8_t>(c)});
    }
    for (int r = 0; r < kNumStepRows; ++r)
    {
        const StepRowDef& def = kStepRows[r];
        const bool fader = def.kind == ELayoutKind::kTapStepFader;
        const int h = fader ? kFaderH : 16;
        const int labelT = fader ? def.top + h / 2 - 7 : def.top + 1;
        // A fader row's name opens the row's presets.
        b.Add({fader ? ELayoutKind::kStepPresetMenu : ELayoutKind::kModeLabel,
               fader ? IRECT(kLabelColL - 4, labelT - 3, kLabelColR, labelT + 17)
                     : IRECT(kLabelColL + 2, labelT, kLabelColR, labelT + 14),
               -1, -1, -1, def.name, r},
              {0xF, 3, def.views});
        for (int c = 0; c < kStepColumns; ++c)
        {
            const int cx = StepColumnCentre(c);
            const DelayRowRule rule{0xF, 3, def.views, static_cast<std::int8_t>(c)};
            if (fader)
                b.Add({def.kind, IRECT::FromSize(cx - kFaderW / 2, def.top, kFaderW, h), def.param + c,
                       def.bitmap, -1, "", c, 16},
                      rule);
            else
                b.Add({def.kind, IRECT::FromSize(cx - 19, def.top, 38, h), -1, -1, -1, def.text,
                       def.mask * kStepColumns + c},
                      rule);
        }
    }
    b.Add({ELayoutKind::kRule, IRECT(32, kBandTop - 12, 960, kBandTop - 11)});
    for (const StepBandItem& item : kStepBand)
    {
        const DelayRowRule rule{0xF, 3, item.views};
        if (item.kind == ELayoutKind::kModeKnob)
        {
            b.Add({item.kind, IRECT::FromSize(item.x, kBandTop, kSmall, kSmall), item.param,
                   BitmapId("knob_hard_small"), -1, item.label},
                  rule);
            continue;
        }
        b.Add({ELayoutKind::kModeLabel, IRECT(item.x, kBandTop, item.x + item.w, kBandTop + 12), -1, -1, -1,
               item.label},
              rule);
        b.Add({item.kind, IRECT(item.x, kBandTop + 14, item.x + item.w, kBandTop + 36), item.param}, rule);
    }
    // Under each fader row's name: move the row one tap left or right.
    for (int r = 0; r < kNumStepRows; ++r)
    {
        const StepRowDef& def = kStepRows[r];
        if (def.kind != ELayoutKind::kTapStepFader) continue;
        const int y = def.top + kFaderH / 2 + 14;
        for (int dir = 0; dir < 2; ++dir)
            b.Add({ELayoutKind::kStepMove, IRECT::FromSize(kLabelColL - 4 + dir * 38, y, 34, 16), -1, -1, -1,
                   dir == 0 ? "<" : ">", r * 2 + dir},
                  {0xF, 3, def.views});
    }
    b.Add({ELayoutKind::kSlotClipboard, IRECT(624, 102, 684, 120), -1, -1, -1, "COPY", 0});
    b.Add({ELayoutKind::kSlotClipboard, IRECT(692, 102, 752, 120), -1, -1, -1, "PASTE", 1});
    return b;
}

inline constexpr auto kLargeDelayBuild = MakeLargeDelay();
static_assert(kLargeDelayBuild.n == kLargeRows);
} // namespace layout

inline constexpr auto kDelayLayout = layout::kDelayOverviewBuild.rows;
inline constexpr auto kDelayRules = layout::kDelayOverviewBuild.rules;
inline constexpr auto kLargeDelayLayout = layout::kLargeDelayBuild.rows;
inline constexpr auto kLargeDelayRules = layout::kLargeDelayBuild.rules;
