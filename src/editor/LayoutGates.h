#pragma once
// The gates page: the four step gates in a two-by-two grid. Each panel shows its sixteen steps as
// columns, numbered, with glide, depth and length beside them and the gate's value lists below.

#include "editor/ModPageLayout.h"

namespace gatelayout
{
using namespace modlayout;
inline constexpr const char* kTitles[] = {"GATE 1", "GATE 2", "GATE 3", "GATE 4"};
inline constexpr const char* kStepNumbers[] = {"1", "2",  "3",  "4",  "5",  "6",  "7",  "8",
                                               "9", "10", "11", "12", "13", "14", "15", "16"};
inline constexpr int kSteps = 16;
inline constexpr int kStepPitch = 20; // column width and gap
inline constexpr int kRowsPerGate = 2 + 2 * kSteps + 3 + 2 + 8;

constexpr std::array<LayoutRow, 4 * kRowsPerGate> Make()
{
    Rows<4 * kRowsPerGate> rows;
    const int fader = BitmapId("gate_fader");
    const int faderW = kBitmapRows[fader].mW, faderH = kBitmapRows[fader].mH;
    for (int g = 0; g < 4; ++g)
    {
        const IRECT p = GridPanel(g % 2, 2, g / 2, 2);
        rows.Panel(p, kTitles[g], kRoleGate);
        rows.Switch(TitleSwitch(p), kGate1On + g);

        const int top = p.T + 34;
        for (int s = 0; s < kSteps; ++s)
        {
            const int x = p.L + 16 + s * kStepPitch;
            rows.Add({ELayoutKind::kStepFader, IRECT::FromSize(x, top, faderW, faderH),
                      kGate1Step1 + kSteps * g + s, fader, kRoleGate});
            rows.Caption(IRECT(x - 2, top + faderH + 2, x + faderW + 2, top + faderH + 14), kStepNumbers[s]);
        }

        // Beside the steps: glide and depth, then length and the sync switch.
        const int c0 = p.L + 372, c1 = p.L + 432;
        rows.Knob(c0, top, kGate1Glide + g, "knob_hard_small", kRoleGate, "GLIDE");
        rows.Knob(c1, top, kGate1Depth + g, "knob_hard_small", kRoleGate, "DEPTH");
        const int t2 = top + 62;
        rows.Knob(c0, t2, kGate1Length + g, "knob_hard_small", kRoleGate, "LENGTH");
        rows.Switch(IRECT::FromSize(c1 - kSwitchW / 2, t2 + (kSmallKnob - kSwitchH) / 2, kSwitchW, kSwitchH),
                    kGate1Sync + g);
        const IRECT syncLabel = KnobLabelRect(layout::Knob(c1, t2, kSmallKnob));
        rows.Caption(syncLabel, "SYNC");

        // Value lists in two columns under the steps.
        const char* names[] = {"TIMEBASE", "DIRECTION", "POLARITY", "STEPS"};
        const int params[] = {kGate1Timebase, kGate1Direction, kGATEPol1, kGATESteps1};
        for (int k = 0; k < 4; ++k)
        {
            const int colL = k % 2 == 0 ? p.L + 16 : p.L + 244;
            const int colR = k % 2 == 0 ? p.L + 226 : p.R - 14;
            const int y = top + faderH + 34 + (k / 2) * 32;
            rows.Label(IRECT(colL, y, colL + 72, y + kFieldH), names[k]);
            rows.Field(IRECT(colL + 76, y, colR, y + kFieldH), params[k] + g, kRoleGate);
        }
    }
    return rows.Done();
}
} // namespace gatelayout

inline constexpr auto kGatesLayout = gatelayout::Make();
