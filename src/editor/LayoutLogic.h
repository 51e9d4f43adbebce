#pragma once
// The logic page: the four logic modules as rows on the left, each reading like its signal flow
// (two sources with their depths, the mode that joins them, smoothing, depth and the depth's own
// modulation), and the feedback matrix on the right: per slot a row of its feedback into each slot
// with the switch that puts the slot on the matrix.

#include "editor/ModPageLayout.h"

namespace logiclayout
{
using namespace modlayout;
inline constexpr const char* kTitles[] = {"LOGIC 1", "LOGIC 2", "LOGIC 3", "LOGIC 4"};
inline constexpr const char* kSlots[] = {"SLOT 1", "SLOT 2", "SLOT 3", "SLOT 4"};
inline constexpr const char* kFbLabels[] = {"FB SLOT 1", "FB SLOT 2", "FB SLOT 3", "FB SLOT 4"};
inline constexpr int kMatrixW = 342;
inline constexpr int kRowsPerModule = 15;
inline constexpr int kMatrixRows = 1 + 4 * 6 + 3;

constexpr std::array<LayoutRow, 4 * kRowsPerModule + kMatrixRows> Make()
{
    Rows<4 * kRowsPerModule + kMatrixRows> rows;
    const int moduleR = kArea.R - kMatrixW - kGap;
    const int moduleH = (kArea.H() - 3 * kGap) / 4;
    for (int i = 0; i < 4; ++i)
    {
        const IRECT p(kArea.L, kArea.T + i * (moduleH + kGap), moduleR,
                      kArea.T + i * (moduleH + kGap) + moduleH);
        rows.Panel(p, kTitles[i], kRoleLogic);
        rows.Switch(TitleSwitch(p), kLogicOn1 + i);
        // Knobs and fields share one centre line; captions sit on the knobs' label line.
        const int kt = p.T + 42, fy = kt + (kSmallKnob - kFieldH) / 2;
        const IRECT labels = KnobLabelRect(layout::Knob(0, kt, kSmallKnob));
        auto caption = [&](int l, int r, const char* text)
        { rows.Caption(IRECT(l, labels.T, r, labels.B), text); };

        rows.Field(IRECT(p.L + 14, fy, p.L + 92, fy + kFieldH), kLogic1Source1 + i, kRoleLogic);
        rows.Knob(p.L + 114, kt, kLogic1Source1Depth + i, "knob_hard_small_sp", kRoleLogic, "");
        caption(p.L + 14, p.L + 132, "SOURCE 1");
        rows.Field(IRECT(p.L + 156, fy, p.L + 234, fy + kFieldH), kLogic1Source2 + i, kRoleLogic);
        rows.Knob(p.L + 256, kt, kLogic1Source2Depth + i, "knob_hard_small_sp", kRoleLogic, "");
        caption(p.L + 156, p.L + 274, "SOURCE 2");
        rows.Field(IRECT(p.L + 298, fy, p.L + 388, fy + kFieldH), kLogic1Type + i, kRoleLogic);
        caption(p.L + 298, p.L + 388, "MODE");
        rows.Knob(p.L + 420, kt, kLogic1Smooth + i, "knob_hard_small", kRoleLogic, "SMOOTH");
        rows.Knob(p.L + 474, kt, kLogic1Depth + i, "knob_hard_small", kRoleLogic, "DEPTH");
        rows.Knob(p.L + 516, kt + (kSmallKnob - kModKnob) / 2, kLogic1DepthMod + i, "knob_soft_mod",
                  kRoleLogic, "");
        rows.Field(IRECT(p.L + 536, fy, p.R - 14, fy + kFieldH), kLogic1DepthModSource + i, kRoleLogic);
        caption(p.L + 504, p.R - 14, "DEPTH MOD");
    }

    const IRECT m(kArea.R - kMatrixW, kArea.T, kArea.R, kArea.B);
    rows.Panel(m, "FB MATRIX", kRoleMatrix);
    const int rowStep = 116, firstTop = m.T + 60;
    for (int s = 0; s < 4; ++s)
    {
        const int t = firstTop + s * rowStep;
        // The row's slot name over the switch that puts the slot on the matrix.
        rows.Label(IRECT(m.L + 14, t, m.L + 78, t + 14), kSlots[s]);
        rows.Switch(IRECT::FromSize(m.L + 14, t + 20, kSwitchW, kSwitchH), kFBMatrix1 + s);
        for (int k = 0; k < 4; ++k)
            rows.Knob(m.L + 112 + k * 62, t, kSlot1FB1 + 4 * s + k, "knob_hard_small_sp", kRoleMatrix,
                      kFbLabels[k]);
        if (s > 0) rows.Rule(m.L + 10, t - (rowStep - kSmallKnob - 16) / 2 - 1, m.R - 10);
    }
    return rows.Done();
}
} // namespace logiclayout

inline constexpr auto kLogicLayout = logiclayout::Make();
