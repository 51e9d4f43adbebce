#pragma once
// Every bitmap of the editor, one row each: its resource id (the row's index), its file name in
// the bundle's Resources/img folder, the size of one frame at 100 % and the frame count, and how
// the art generator draws it. The generator and the editor read this one table, so a bitmap's
// file and the control that shows it always agree on size and frames.

#include <array>
#include <cstddef>
#include <string_view>

#include "params/ValueLists.h"

// How the art generator draws a bitmap.
enum class EArt
{
    kKnob,        // body, rim track (the value arc is drawn live over it), pointer; frames turn it
    kKnobBipolar, // as kKnob, with a centre notch on the track
    kKnobHidden,  // a body without pointer: a knob that stands for nothing now
    kKnobSoft,    // lighter body, dot pointer
    kKnobSoftBipolar,
    kModKnob,          // small ring knob for modulation depths, bipolar
    kFader,            // groove and cap; frames move the cap up
    kStepFader,        // a column filled from the bottom
    kStepFaderBipolar, // a column filled from the middle
    kButton,           // text button: frame 1 off, frame 2 on
    kTextFrames,       // one frame per text: a selector showing its value
    kArrow,            // 2 frames; text "<" or ">" gives the direction
    kToggleLed,        // a small slide switch with an LED
    kLed,              // round LED: frame 1 off, frame 2 on; text gives the colour ("red", "yellow", "white")
    kPageTab,          // tab highlight over a label that the background carries
    kRadioDot,         // small round radio button
    kMeter,            // vertical segmented meter, frames light more segments
    kHMeter,           // horizontal meter
    kPanDot,           // a dot moving left to right on a line
    kMatrixCell,       // crosspoint of a matrix
    kField,            // an inset value field (1 frame)
    kOutline,          // a highlight frame (1 frame)
    kPopupArrow,       // small down-arrow tag (1 frame)
    kLogo,
    kAlertPanel,
    kFxIcon, // effect pictogram; text names the glyph
};

struct BitmapRow
{
    const char* mName;
    int mW, mH; // one frame at 100 %
    int mFrames;
    EArt mArt;
    const char* mText = "";              // label, glyph or colour
    const char* const* mTexts = nullptr; // kTextFrames: one text per frame
};

namespace bitmaptexts
{
inline constexpr std::array kSyncShort{"HZ", "STRGHT", "DOT.", "TRIP."};
inline constexpr std::array kUniBi{"UNI", "BI"};
inline constexpr std::array kHzSync{"HZ", "SYNC"};
inline constexpr std::array kDirections{"FWD", "REV", "P-P"};
inline constexpr std::array kEnvModes{"PEAK", "RMS"};
inline constexpr std::array kEnvSources{"MAIN", "SIDE"};
inline constexpr std::array kSlots{"SLOT 1", "SLOT 2", "SLOT 3", "SLOT 4"};
} // namespace bitmaptexts

inline constexpr int kKnobFrames = 64;
inline constexpr int kFaderFrames = 64;
inline constexpr int kMeterFrames = 32;

// clang-format off
inline constexpr BitmapRow kBitmapRows[] = {
    // Knobs
    {"knob_hard_main", 52, 52, kKnobFrames, EArt::kKnob},
    {"knob_hard_main_sp", 52, 52, kKnobFrames, EArt::kKnobBipolar},
    {"knob_hard_main_hidden", 52, 52, kKnobFrames, EArt::kKnobHidden},
    {"knob_hard_small", 36, 36, kKnobFrames, EArt::kKnob},
    {"knob_hard_small_sp", 36, 36, kKnobFrames, EArt::kKnobBipolar},
    {"hard_mod", 24, 24, kKnobFrames, EArt::kModKnob},
    {"knob_soft", 40, 40, kKnobFrames, EArt::kKnobSoft},
    {"knob_soft_sp", 40, 40, kKnobFrames, EArt::kKnobSoftBipolar},
    {"knob_soft_mod", 24, 24, kKnobFrames, EArt::kModKnob},
    // Faders
    {"fader", 24, 120, kFaderFrames, EArt::kFader},
    {"gate_fader", 16, 96, kFaderFrames, EArt::kStepFader},
    {"gate_fader_sp", 16, 96, kFaderFrames, EArt::kStepFaderBipolar},
    {"gate_fader_big", 22, 150, kFaderFrames, EArt::kStepFader},
    {"gate_fader_big_sp", 22, 150, kFaderFrames, EArt::kStepFaderBipolar},
    // Arrows and buttons
    {"arrow_left", 18, 18, 2, EArt::kArrow, "<"},
    {"arrow_right", 18, 18, 2, EArt::kArrow, ">"},
    {"arrow_p_left", 22, 24, 2, EArt::kArrow, "<"},
    {"arrow_p_right", 22, 24, 2, EArt::kArrow, ">"},
    {"arrow_fill_left", 14, 14, 2, EArt::kArrow, "<"},
    {"arrow_fill_right", 14, 14, 2, EArt::kArrow, ">"},
    {"switch1_grey", 30, 16, 2, EArt::kToggleLed},
    {"button_red", 18, 18, 2, EArt::kLed, "red"},
    {"ok", 36, 20, 2, EArt::kButton, "OK"},
    {"close", 18, 18, 2, EArt::kButton, "X"},
    {"validate", 18, 18, 2, EArt::kButton, "+"},
    {"copy", 44, 18, 2, EArt::kButton, "COPY"},
    {"paste", 44, 18, 2, EArt::kButton, "PASTE"},
    // Page and modulation selectors
    {"page_select", 96, 24, 2, EArt::kPageTab},
    {"page_select_off", 96, 24, 1, EArt::kPageTab},
    {"mod_select", 54, 18, 2, EArt::kButton, "MOD"},
    {"mod_select_off", 54, 18, 1, EArt::kButton, "MOD"},
    // LFO
    {"wavinv", 30, 16, 2, EArt::kButton, "INV"},
    {"wavrev", 30, 16, 2, EArt::kButton, "REV"},
    {"lfo_pol", 30, 16, 2, EArt::kTextFrames, "", bitmaptexts::kUniBi.data()},
    {"lfo_run", 30, 16, 2, EArt::kButton, "RUN"},
    {"lfo_unit", 36, 16, 2, EArt::kTextFrames, "", bitmaptexts::kHzSync.data()},
    {"lfo_trig", 36, 16, 2, EArt::kButton, "TRIG"},
    {"lfo_vu", 80, 6, kMeterFrames, EArt::kHMeter},
    // Delay
    {"delay_timebase", 60, 18, 4, EArt::kTextFrames, "", bitmaptexts::kSyncShort.data()},
    {"delay_time_label", 70, 18, 1, EArt::kField},
    {"delay_mode", 80, 18, 4, EArt::kTextFrames, "", kDelayModeList.data()},
    {"delay_link", 34, 16, 2, EArt::kButton, "LINK"},
    {"delay_fade", 34, 16, 2, EArt::kButton, "FADE"},
    {"panpos", 40, 8, kKnobFrames, EArt::kPanDot},
    {"delay_pp", 30, 16, 2, EArt::kButton, "PP"},
    {"delay_time_radio_sm", 14, 14, 2, EArt::kRadioDot},
    {"delay_time_sm", 40, 14, 2, EArt::kButton, "TIME"},
    {"delay_taps_fb", 30, 16, 2, EArt::kButton, "FB"},
    {"delay_taps_di", 30, 16, 2, EArt::kButton, "DI"},
    {"delay_tap_step_mod", 34, 16, 2, EArt::kButton, "MOD"},
    {"delay_fb_prop", 34, 16, 2, EArt::kButton, "PROP"},
    {"delay_rev_trig", 56, 16, 4, EArt::kTextFrames, "", kReverseTriggerList.data()},
    {"tap_swell", 40, 16, 2, EArt::kButton, "SWELL"},
    // Steps
    {"step_label_time", 56, 18, 2, EArt::kButton, "TIME"},
    {"step_label_level", 56, 18, 2, EArt::kButton, "LEVEL"},
    {"step_label_pan", 56, 18, 2, EArt::kButton, "PAN"},
    {"step_label_fx1", 56, 18, 2, EArt::kButton, "FX P1"},
    {"step_label_fx2", 56, 18, 2, EArt::kButton, "FX P2"},
    {"step_label_fx_on", 56, 18, 2, EArt::kButton, "FX ON"},
    {"step_edit_select", 16, 16, 2, EArt::kRadioDot},
    {"step_width", 34, 16, 2, EArt::kButton, "WIDE"},
    {"step_move_l", 18, 16, 2, EArt::kArrow, "<"},
    {"step_move_r", 18, 16, 2, EArt::kArrow, ">"},
    {"open_step_edit", 56, 18, 2, EArt::kButton, "STEPS"},
    // Routing
    {"mfx_source", 64, 18, 5, EArt::kTextFrames, "", kMasterFxSourceList.data()},
    {"direct_out", 64, 18, 4, EArt::kTextFrames, "", kDirectOutList.data()},
    {"direct_in", 30, 16, 2, EArt::kButton, "IN"},
    {"width", 36, 36, kKnobFrames, EArt::kKnob},
    {"swap", 34, 16, 2, EArt::kButton, "SWAP"},
    {"slot_set", 60, 18, 4, EArt::kTextFrames, "", bitmaptexts::kSlots.data()},
    {"mod_level", 24, 24, kKnobFrames, EArt::kModKnob},
    {"spread", 36, 36, kKnobFrames, EArt::kKnobBipolar},
    {"round_white", 14, 14, 2, EArt::kLed, "white"},
    {"round_white_big", 20, 20, 2, EArt::kLed, "white"},
    {"mod_pu", 14, 14, 1, EArt::kPopupArrow},
    {"input_att", 36, 36, kKnobFrames, EArt::kKnob},
    // Gates and envelopes
    {"gate_sync", 60, 18, 4, EArt::kTextFrames, "", bitmaptexts::kSyncShort.data()},
    {"gate_direction", 40, 16, 3, EArt::kTextFrames, "", bitmaptexts::kDirections.data()},
    {"gate_timebase", 40, 16, 2, EArt::kButton, "SYNC"},
    {"gate_length", 40, 16, 2, EArt::kButton, "LEN"},
    {"gate_pol", 30, 16, 2, EArt::kTextFrames, "", bitmaptexts::kUniBi.data()},
    {"gate_preset", 60, 18, 1, EArt::kButton, "PRESET"},
    {"gate_preset_big", 80, 22, 1, EArt::kButton, "PRESET"},
    {"env_mode", 40, 16, 2, EArt::kTextFrames, "", bitmaptexts::kEnvModes.data()},
    {"env_source", 44, 16, 2, EArt::kTextFrames, "", bitmaptexts::kEnvSources.data()},
    {"env_monitor", 44, 16, 2, EArt::kButton, "LISTEN"},
    {"env_out", 30, 16, 2, EArt::kButton, "OUT"},
    // Matrix
    {"matrix", 18, 18, 2, EArt::kMatrixCell},
    {"fb_matrix", 30, 30, kKnobFrames, EArt::kKnobBipolar},
    // Meters and marks
    {"VU", 10, 150, kMeterFrames, EArt::kMeter},
    {"LEDyel", 10, 10, 2, EArt::kLed, "yellow"},
    {"label_hilight", 72, 22, 1, EArt::kOutline},
    {"save_hilite", 50, 22, 1, EArt::kOutline},
    {"options", 84, 24, 2, EArt::kButton, "OPTIONS"},
    {"Logo", 200, 32, 1, EArt::kLogo},
    {"Alert", 420, 120, 1, EArt::kAlertPanel},
    // Effect selectors and icons
    {"FXselect", 116, 20, static_cast<int>(kFxTypeList.size()), EArt::kTextFrames, "", kFxTypeList.data()},
    {"FXselect2", 212, 22, static_cast<int>(kMasterFxTypeList.size()), EArt::kTextFrames, "", kMasterFxTypeList.data()},
    {"fxic_off", 36, 24, 1, EArt::kFxIcon, "off"},
    {"fxic_frq", 36, 24, 1, EArt::kFxIcon, "frq"},
    {"fxic_rm", 36, 24, 1, EArt::kFxIcon, "rm"},
    {"fxic_comp", 36, 24, 1, EArt::kFxIcon, "comp"},
    {"fxic_cheb", 36, 24, 1, EArt::kFxIcon, "cheb"},
    {"fxic_ps1", 36, 24, 1, EArt::kFxIcon, "ps1"},
    {"fxic_pk", 36, 24, 1, EArt::kFxIcon, "pk"},
    {"fxic_dest", 36, 24, 1, EArt::kFxIcon, "dest"},
    {"fxic_phb", 36, 24, 1, EArt::kFxIcon, "phb"},
    {"fxic_ps2", 36, 24, 1, EArt::kFxIcon, "ps2"},
    {"fxic_comb", 36, 24, 1, EArt::kFxIcon, "comb"},
    {"fxic_bt", 36, 24, 1, EArt::kFxIcon, "bt"},
    {"fxic_svf", 36, 24, 1, EArt::kFxIcon, "svf"},
    {"fxic_lofi1", 36, 24, 1, EArt::kFxIcon, "lofi1"},
    {"fxic_lofi2", 36, 24, 1, EArt::kFxIcon, "lofi2"},
    {"fxic_nois", 36, 24, 1, EArt::kFxIcon, "nois"},
    {"fxic_rect", 36, 24, 1, EArt::kFxIcon, "rect"},
    {"fxic_sat", 36, 24, 1, EArt::kFxIcon, "sat"},
    {"fxic_ph", 36, 24, 1, EArt::kFxIcon, "ph"},
    {"fxic_lphp", 36, 24, 1, EArt::kFxIcon, "lphp"},
    {"fxic_varilphp", 36, 24, 1, EArt::kFxIcon, "varilphp"},
    {"fxic_vow", 36, 24, 1, EArt::kFxIcon, "vow"},
    {"fxic_ws", 36, 24, 1, EArt::kFxIcon, "ws"},
};
// clang-format on

inline constexpr int kNumBitmaps = static_cast<int>(std::size(kBitmapRows));
static_assert(kNumBitmaps == 121, "every bitmap named by the resource list has one row");
inline constexpr const char* kBackgroundName = "bg";

// Resource id of a bitmap by name, -1 when there is none (a compile-time look-up in practice).
constexpr int BitmapId(std::string_view name)
{
    for (int i = 0; i < kNumBitmaps; ++i)
        if (name == kBitmapRows[i].mName) return i;
    return -1;
}
