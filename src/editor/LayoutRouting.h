#pragma once
// The routing page: one column per slot. From the top: where the slot takes its signal and where
// it sends it (value lists), the delay and pan-position switches, the plain knobs, then the five
// modulatable levels, each a strip of knob, modulation depth and modulation source.

#include "editor/ModPageLayout.h"

namespace routinglayout
{
using namespace modlayout;
inline constexpr const char* kTitles[] = {"SLOT 1", "SLOT 2", "SLOT 3", "SLOT 4"};
inline constexpr int kRowsPerSlot = 41;

// A modulatable parameter: its knob, its depth and its source.
struct ModStrip
{
    const char* mLabel;
    int mParam, mDepth, mSource;
};
inline constexpr ModStrip kStrips[] = {
    {"INPUT GAIN", kInputGain1, kInputGainModDepth1, kInputGainModSource1},
    {"PANNING", kPanning1, kPanningModDepth1, kPanningModSource1},
    {"FEEDBACK", kFeedback1, kFeedbackModDepth1, kFeedbackModSource1},
    {"LEVEL", kLevel1, kLevelModDepth1, kLevelModSource1},
    {"M-FX SEND", kMFXSend1, kMFXSendModDepth1, kMFXSendModSource1},
};

constexpr std::array<LayoutRow, 4 * kRowsPerSlot> Make()
{
    Rows<4 * kRowsPerSlot> rows;
    for (int i = 0; i < 4; ++i)
    {
        const IRECT p = GridPanel(i, 4, 0, 1);
        rows.Panel(p, kTitles[i], kRoleRouting);
        rows.Switch(TitleSwitch(p), kSlotOn1 + i);

        const int labelL = p.L + 12, fieldL = p.L + 100, fieldR = p.R - 12;
        const char* names[] = {"INPUT", "DIRECT OUT", "OUTPUT", "M-FX SOURCE"};
        const int params[] = {kInput1, kDirectOut1, kOutputMode1, kMasterFXSource1};
        for (int k = 0; k < 4; ++k)
        {
            const int y = p.T + 34 + k * 27;
            rows.Label(IRECT(labelL, y, fieldL - 4, y + kFieldH), names[k]);
            rows.Field(IRECT(fieldL, y, fieldR, y + kFieldH), params[k] + i, kRoleRouting);
        }
        const int sy = p.T + 34 + 4 * 27 + 2;
        rows.Label(IRECT(labelL, sy, fieldL - 4, sy + kSwitchH), "DELAY");
        rows.Switch(IRECT::FromSize(fieldL, sy, kSwitchW, kSwitchH), kDelayOn1 + i);
        rows.Label(IRECT(fieldL + 40, sy, fieldR - kSwitchW - 4, sy + kSwitchH), "PAN POS");
        rows.Switch(IRECT::FromSize(fieldR - kSwitchW, sy, kSwitchW, kSwitchH), kPanPosition1 + i);

        rows.Rule(p.L + 10, sy + kSwitchH + 11, p.R - 10);
        const int kt = sy + kSwitchH + 24;
        const int third = p.W() / 3;
        rows.Knob(p.L + third / 2 + 2, kt, kDirectIn1 + i, "knob_hard_small", kRoleRouting, "DIRECT IN");
        rows.Knob(p.L + third + third / 2, kt, kWidth1 + i, "knob_hard_small", kRoleRouting, "WIDTH");
        rows.Knob(p.L + 2 * third + third / 2 - 2, kt, kLROffset1 + i, "knob_hard_small_sp", kRoleRouting,
                  "L/R OFFSET");

        rows.Rule(p.L + 10, kt + kSmallKnob + 22, p.R - 10);
        // Strips: label, knob, depth, source; captions over the depth and source columns.
        const int knobX = p.L + 104, modX = p.L + 146, srcL = p.L + 164;
        const int st = kt + kSmallKnob + 46;
        rows.Caption(IRECT(modX - 18, st - 18, modX + 18, st - 4), "MOD");
        rows.Caption(IRECT(srcL, st - 18, fieldR, st - 4), "SOURCE");
        for (int k = 0; k < 5; ++k)
        {
            const ModStrip& s = kStrips[k];
            const int t = st + k * 44;
            rows.Label(IRECT(labelL, t + 10, knobX - 24, t + 26), s.mLabel);
            const bool bipolar = s.mParam == kPanning1;
            rows.Knob(knobX, t, s.mParam + i, bipolar ? "knob_hard_small_sp" : "knob_hard_small",
                      kRoleRouting, "");
            rows.Knob(modX, t + (kSmallKnob - kModKnob) / 2, s.mDepth + i, "knob_soft_mod", kRoleRouting, "");
            rows.Field(IRECT(srcL, t + 8, fieldR, t + 8 + kFieldH), s.mSource + i, kRoleRouting);
        }
    }
    return rows.Done();
}
} // namespace routinglayout

inline constexpr auto kRoutingLayout = routinglayout::Make();
