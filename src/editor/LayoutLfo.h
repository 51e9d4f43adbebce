#pragma once
// The LFO page: the four LFOs in a two-by-two grid. Each panel reads from left to right: its
// value lists (wave, sync, mode, trigger, polarity) and the wave's swap and reverse switches,
// then the knobs, the rate's modulation depth beside its source.

#include "core/EditorReadouts.h"
#include "editor/ModPageLayout.h"

namespace lfolayout
{
using namespace modlayout;
inline constexpr const char* kTitles[] = {"LFO 1", "LFO 2", "LFO 3", "LFO 4"};
inline constexpr int kArrow = 18; // arrow_left, arrow_right
inline constexpr int kRowsPerLfo = 27;

constexpr std::array<LayoutRow, 4 * kRowsPerLfo> Make()
{
    Rows<4 * kRowsPerLfo> rows;
    for (int i = 0; i < 4; ++i)
    {
        const IRECT p = GridPanel(i % 2, 2, i / 2, 2);
        rows.Panel(p, kTitles[i], kRoleLfo);
        rows.Switch(TitleSwitch(p), kLFOOn1 + i);
        // The LFO's output, fed by the editor's tick, in the title band beside its switch.
        const int vu = BitmapId("lfo_vu");
        const IRECT onSwitch = TitleSwitch(p);
        rows.Add(
            {ELayoutKind::kMeter,
             IRECT::FromSize(onSwitch.L - 16 - kBitmapRows[vu].mW, p.T + (kTitleH - kBitmapRows[vu].mH) / 2,
                             kBitmapRows[vu].mW, kBitmapRows[vu].mH),
             -1, vu, -1, "", EditorReadouts::kMod1 + i});

        // Value lists, one a line: label on the left, field to its right.
        const int labelL = p.L + 14, fieldL = p.L + 92, fieldR = p.L + 232;
        const char* names[] = {"WAVE", "SYNC", "MODE", "TRIGGER", "POLARITY"};
        const int params[] = {kLFOWave1, kLFOSync1, kLFOMode1, kLFOTrigger1, kLFOPol1};
        for (int k = 0; k < 5; ++k)
        {
            const int y = p.T + 36 + k * 34;
            rows.Label(IRECT(labelL, y, fieldL - 6, y + kFieldH), names[k]);
            // The wave has arrows beside its field that step through the waves.
            const int right = k == 0 ? fieldR - 2 * kArrow - 6 : fieldR;
            rows.Field(IRECT(fieldL, y, right, y + kFieldH), params[k] + i, kRoleLfo);
        }
        const int ay = p.T + 36 + (kFieldH - kArrow) / 2;
        rows.Add({ELayoutKind::kStepArrow, IRECT::FromSize(fieldR - 2 * kArrow - 2, ay, kArrow, kArrow),
                  kLFOWave1 + i, BitmapId("arrow_left"), -1, "", -1});
        rows.Add({ELayoutKind::kStepArrow, IRECT::FromSize(fieldR - kArrow, ay, kArrow, kArrow),
                  kLFOWave1 + i, BitmapId("arrow_right"), -1, "", 1});
        const int sy = p.T + 36 + 5 * 34 + 2;
        rows.Label(IRECT(labelL, sy, labelL + 66, sy + kSwitchH), "SWAP");
        rows.Switch(IRECT::FromSize(fieldL, sy, kSwitchW, kSwitchH), kLFOSwap1 + i);
        rows.Label(IRECT(fieldL + 48, sy, fieldR - kSwitchW - 6, sy + kSwitchH), "REVERSE");
        rows.Switch(IRECT::FromSize(fieldR - kSwitchW, sy, kSwitchW, kSwitchH), kLFOReverse1 + i);

        // Knobs on the right half: a row of three, then glide and the rate's modulation.
        const int c0 = p.L + 280, c1 = p.L + 350, c2 = p.L + 420;
        rows.Knob(c0, p.T + 44, kLFORate1 + i, "knob_hard_small", kRoleLfo, "RATE");
        rows.Knob(c1, p.T + 44, kLFODepth1 + i, "knob_hard_small", kRoleLfo, "DEPTH");
        rows.Knob(c2, p.T + 44, kLFOPhase1 + i, "knob_hard_small", kRoleLfo, "PHASE");
        const int t2 = p.T + 148;
        rows.Knob(c0, t2, kLFOGlide1 + i, "knob_hard_small", kRoleLfo, "GLIDE");
        rows.Knob(c1, t2 + (kSmallKnob - kModKnob) / 2, kLFOFreqModDepth1 + i, "knob_soft_mod", kRoleLfo, "");
        rows.Field(IRECT(c2 - 34, t2 + 8, c2 + 34, t2 + 8 + kFieldH), kLFOFreqModSource1 + i, kRoleLfo);
        const IRECT caption = KnobLabelRect(layout::Knob(c1, t2, kSmallKnob));
        rows.Caption(IRECT(caption.L, caption.T, c2 + 34, caption.B), "RATE MOD");
        // The wave as the LFO plays it, under the knobs.
        rows.Add(
            {ELayoutKind::kWaveDraw, IRECT(c0 - 22, p.T + 208, c2 + 34, p.B - 10), -1, -1, kRoleLfo, "", i});
    }
    return rows.Done();
}
} // namespace lfolayout

inline constexpr auto kLfoLayout = lfolayout::Make();
