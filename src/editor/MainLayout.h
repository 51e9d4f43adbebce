#pragma once
// Layout of the part of the window that every page shows: the top bar, the page selector, the
// stage the pages fill, and the master column (output, master effect, limiter). One row per
// panel, label or control: the art generator draws the background from these rows (panel
// frames, titles, knob labels and scales) and the editor builds its controls from the same
// rows, so the two can never disagree. Layout pixels of the 1240 x 620 window at 100 %.

#include <array>
#include <cstddef>

#include "editor/BitmapList.h"
#include "editor/EditorPages.h"
#include "editor/IGraphicsTypes.h"
#include "params/ParamIds.h"

inline constexpr int kEditorWidth = 1240;
inline constexpr int kEditorHeight = 620;
inline constexpr int kEditorFPS = 30;

enum class ELayoutKind
{
    kTopBar,      // the bar along the top (background only)
    kStage,       // the area the pages fill (background only)
    kPanel,       // a framed panel with its title (background only)
    kLabel,       // a fixed label (background only)
    kReserved,    // space kept for controls of another part of the editor (nothing drawn yet)
    kLogo,        // bitmap without value
    kKnob,        // bitmap knob with a value arc in its colour role; label under it
    kSwitch,      // bitmap switch of the parameter
    kPopup,       // selector bitmap whose press opens the parameter's value list
    kValuePopup,  // a field showing the parameter's text; a press opens its value list
    kMeter,       // meter bitmap fed by the editor's tick
    kPageSelect,  // the page tabs; their labels are the row's label split at '|'
    kPageButton,  // a button that opens one page (the row's parameter field holds the page)
    kLiveLabel,   // a label whose text follows the parameter (the master effect's knob names)
    kPresetName,  // the preset name field that opens the preset menu
    kPresetPrev,  // previous preset
    kPresetNext,  // next preset
    kPresetSave,  // save the preset
    kFocus,       // the focus panel: name and value of the control touched last
    kFxKnobLabel, // the name of knob mIndex of the effect chosen by the row's type parameter
    kFxIcon,      // the icon of the effect chosen by the row's type parameter

    // Kinds of the routing, modulation and options pages.
    kCaption,         // a fixed label centred under a control, styled as a knob's label (background only)
    kStepFader,       // a step column of a gate: press and drag set the value where the mouse is
    kRule,            // a hairline parting a panel's sections (background only)
    kColorSetPopup,   // a field naming the colour set in use; a press lists the sets to pick from
    kInputAttenuator, // the input attenuator: a knob of the editor's own, no parameter
    kReadout,         // a text the plug-in sets (the attenuator's decibels); the row's label starts it
    kDryKill,         // the dry-kill switch: the editor's own, no parameter
    kSwatch,          // a patch of the colour role's current colour, no mouse
    kStepArrow,       // steps its list parameter by the row's index (-1 or +1), wrapping at the ends
    kWaveDraw,        // one cycle of the wave of LFO mIndex as the LFO plays it

    // The delay pages' own kinds; their controls come from BuildDelayPageControl.
    kModeKnob,        // a knob that shows by a rule: it draws its own scale and label
    kModeLabel,       // a label that shows by a rule
    kLargeViewButton, // opens the large view of slot mIndex
    kSlotTitle,       // the name of the large view's slot, in its colour
    kLargeBackButton, // from the large view back to the overview
    kLargeViewSelect, // level taps or effect steps of the large view's slot
    kTapStepFader,    // a vertical fader of one tap step; a bipolar bitmap fills from the middle
    kStepMaskButton,  // one bit of a tap or step mask: mIndex is EStepMask * 16 + tap
    kSourceField,     // a narrow value field in small type (a modulation source beside its depth)
    kStepPresetMenu,  // a step row's name that opens its presets (mIndex: the row)
    kTapPatternMenu,  // opens the on/off patterns of the slot's taps
    kStepMove,        // moves a step row along the taps in use: mIndex is row * 2 + (0 left, 1 right)
    kSlotClipboard,   // copies (mIndex 0) or pastes (1) all of a slot's steps and masks
    kTapNumber,       // a tap column's number, lit while that tap plays (mIndex: the column)
};

struct LayoutRow
{
    ELayoutKind mKind;
    IRECT mRect;
    int mParam = -1;     // parameter id, or the page of a kPageButton
    int mBitmap = -1;    // resource id
    int mColorRole = -1; // accent role of the value arc or label
    const char* mLabel = "";
    int mIndex = 0; // kLiveLabel: which knob of the parameter's group it names; kMeter: which meter
    // On pages built more than once (one list per slot or per effect position): how far the
    // parameter moves per instance; 0 takes the page's own step.
    int mStride = 0;
};

// The area the pages fill; their stage art covers exactly this.
inline constexpr IRECT kStageRect(12, 92, 980, 608);

// Colour roles of the master column.
inline constexpr int kRoleOutput = 1;
inline constexpr int kRoleMasterFx = 9;
inline constexpr int kRoleLimiter = 6;

inline constexpr int kNumSelectablePages = 9; // pages 0..8 on the tabs; 9 behind "OPTIONS"

// A knob's label sits under it, a little wider than the knob.
constexpr IRECT KnobLabelRect(const IRECT& knob)
{
    return IRECT(knob.L - 12, knob.B + 2, knob.R + 12, knob.B + 16);
}

namespace layout
{
constexpr IRECT Knob(int cx, int top, int size)
{
    return IRECT::FromSize(cx - size / 2, top, size, size);
}
inline constexpr int kMain = 52;  // knob_hard_main
inline constexpr int kSmall = 36; // knob_hard_small
inline constexpr int kOutCol[3] = {1068, 1128, 1188};
inline constexpr int kFxCol[5] = {1024, 1067, 1110, 1153, 1196};
} // namespace layout

// clang-format off
inline constexpr LayoutRow kMainLayout[] = {
    {ELayoutKind::kTopBar, IRECT(0, 0, kEditorWidth, 50)},
    {ELayoutKind::kLogo, IRECT::FromSize(18, 9, 200, 32), -1, BitmapId("Logo")},
    {ELayoutKind::kPresetPrev, IRECT::FromSize(300, 13, 26, 24), -1, -1, 1},
    {ELayoutKind::kPresetName, IRECT(332, 13, 742, 37), -1, -1, 1},
    {ELayoutKind::kPresetNext, IRECT::FromSize(748, 13, 26, 24), -1, -1, 1},
    {ELayoutKind::kPresetSave, IRECT::FromSize(784, 13, 56, 24), -1, -1, 1},
    {ELayoutKind::kFocus, IRECT(852, 13, 1128, 37), -1, -1, 1},
    {ELayoutKind::kPageButton, IRECT::FromSize(1140, 13, 84, 24), kPageOptions, BitmapId("options")},
    {ELayoutKind::kPageSelect, IRECT(16, 58, 16 + 9 * 96 + 8 * 8, 82), -1, BitmapId("page_select"), -1,
     "ROUTING|PRE FX|DELAY|FB FX|POST FX|LFO|GATES|ENVELOPE|LOGIC"},
    {ELayoutKind::kStage, kStageRect},

    // Output
    {ELayoutKind::kPanel, IRECT(992, 92, 1228, 330), -1, -1, kRoleOutput, "OUTPUT"},
    {ELayoutKind::kMeter, IRECT::FromSize(1004, 132, 10, 150), -1, BitmapId("VU"), -1, "", 0},
    {ELayoutKind::kMeter, IRECT::FromSize(1018, 132, 10, 150), -1, BitmapId("VU"), -1, "", 1},
    {ELayoutKind::kLabel, IRECT(998, 286, 1034, 300), -1, -1, -1, "L   R"},
    {ELayoutKind::kKnob, layout::Knob(layout::kOutCol[0], 132, layout::kMain), kDryLevel, BitmapId("knob_hard_main"), kRoleOutput, "DRY"},
    {ELayoutKind::kKnob, layout::Knob(layout::kOutCol[1], 132, layout::kMain), kWetLevel, BitmapId("knob_hard_main"), kRoleOutput, "WET"},
    {ELayoutKind::kKnob, layout::Knob(layout::kOutCol[2], 132, layout::kMain), kOutputLevel, BitmapId("knob_hard_main_sp"), kRoleOutput, "OUTPUT"},
    {ELayoutKind::kKnob, layout::Knob(layout::kOutCol[0], 232, layout::kMain), kGlobalWidth, BitmapId("knob_hard_main"), kRoleOutput, "WIDTH"},
    {ELayoutKind::kKnob, layout::Knob(layout::kOutCol[1], 232, layout::kMain), kFeedbackMaster, BitmapId("knob_hard_main_sp"), kRoleOutput, "FEEDBACK"},
    {ELayoutKind::kKnob, layout::Knob(layout::kOutCol[2], 232, layout::kMain), kDelayTimeScale, BitmapId("knob_hard_main_sp"), kRoleOutput, "TIME SCALE"},

    // Master effect
    {ELayoutKind::kPanel, IRECT(992, 338, 1228, 486), -1, -1, kRoleMasterFx, "MASTER FX"},
    {ELayoutKind::kLabel, IRECT(1120, 341, 1180, 357), -1, -1, -1, "BYPASS"},
    {ELayoutKind::kSwitch, IRECT::FromSize(1186, 341, 30, 16), kMasterFXBypass, BitmapId("switch1_grey")},
    {ELayoutKind::kPopup, IRECT::FromSize(1004, 370, 212, 22), kMasterFX, BitmapId("FXselect2")},
    {ELayoutKind::kKnob, layout::Knob(layout::kFxCol[0], 410, layout::kSmall), kMasterFXP1, BitmapId("knob_hard_small"), kRoleMasterFx},
    {ELayoutKind::kKnob, layout::Knob(layout::kFxCol[1], 410, layout::kSmall), kMasterFXP2, BitmapId("knob_hard_small"), kRoleMasterFx},
    {ELayoutKind::kKnob, layout::Knob(layout::kFxCol[2], 410, layout::kSmall), kMasterFXP3, BitmapId("knob_hard_small"), kRoleMasterFx},
    {ELayoutKind::kKnob, layout::Knob(layout::kFxCol[3], 410, layout::kSmall), kMasterFXP4, BitmapId("knob_hard_small"), kRoleMasterFx},
    {ELayoutKind::kKnob, layout::Knob(layout::kFxCol[4], 410, layout::kSmall), kMasterFXLevel, BitmapId("knob_hard_small"), kRoleMasterFx, "LEVEL"},
    {ELayoutKind::kLiveLabel, KnobLabelRect(layout::Knob(layout::kFxCol[0], 410, layout::kSmall)), kMasterFX, -1, kRoleMasterFx, "", 0},
    {ELayoutKind::kLiveLabel, KnobLabelRect(layout::Knob(layout::kFxCol[1], 410, layout::kSmall)), kMasterFX, -1, kRoleMasterFx, "", 1},
    {ELayoutKind::kLiveLabel, KnobLabelRect(layout::Knob(layout::kFxCol[2], 410, layout::kSmall)), kMasterFX, -1, kRoleMasterFx, "", 2},
    {ELayoutKind::kLiveLabel, KnobLabelRect(layout::Knob(layout::kFxCol[3], 410, layout::kSmall)), kMasterFX, -1, kRoleMasterFx, "", 3},

    // Limiter
    {ELayoutKind::kPanel, IRECT(992, 494, 1228, 608), -1, -1, kRoleLimiter, "LIMITER"},
    {ELayoutKind::kLabel, IRECT(1004, 526, 1110, 540), -1, -1, -1, "MODE"},
    {ELayoutKind::kValuePopup, IRECT(1004, 542, 1110, 564), kLimiterOn, -1, kRoleLimiter},
    {ELayoutKind::kKnob, layout::Knob(1176, 522, layout::kMain), kLimiterLevel, BitmapId("knob_hard_main"), kRoleLimiter, "LEVEL"},
};
// clang-format on

// Knob names of the master effect's four parameters, per master effect type.
inline constexpr std::array<std::array<const char*, 4>, 8> kMasterFxKnobLabels{{
    {"", "", "", ""},                               // OFF: the knobs do nothing
    {"SIZE", "DECAY", "MOD", "DAMP"},               // QUORVEX
    {"SIZE", "PREDELAY", "HIPASS", "DAMP"},         // REVERB
    {"SIZE", "PREDELAY", "HIPASS", "DAMP"},         // ROOM
    {"LO GAIN", "MID FREQ", "MID GAIN", "HI GAIN"}, // FIX EQ
    {"GAIN 1", "FREQ 1", "GAIN 2", "FREQ 2"},       // 2 BAND EQ
    {"LO GAIN", "LO FREQ", "HI GAIN", "HI FREQ"},   // LO/HI SHELF
    {"HI PASS", "LO PASS", "GAIN", "MODE"},         // DRIVE LP+HP
}};
static_assert(kMasterFxKnobLabels.size() == kMasterFxTypeList.size());

// Every control's rectangle lies inside the window.
constexpr bool LayoutInsideWindow()
{
    for (const LayoutRow& row : kMainLayout)
        if (row.mRect.L < 0 || row.mRect.T < 0 || row.mRect.R > kEditorWidth || row.mRect.B > kEditorHeight)
            return false;
    return true;
}
static_assert(LayoutInsideWindow());
