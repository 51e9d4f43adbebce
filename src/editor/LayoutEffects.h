#pragma once
// The effect pages (pre, feedback and post effects share this table, one list each): four slot
// panels side by side, each with its on switch, the type field, the type's icon and five knobs
// whose names follow the type, every knob with its modulation depth and source. Rows are written
// for the pre position of each slot; the feedback and post pages move every parameter by 4.

#include <array>

#include "editor/MainLayout.h"
#include "params/ParamIds.h"

namespace layout
{
inline constexpr int kFxPanelW = 232;
inline constexpr int kFxPanelGap = 8;
inline constexpr int kFxPanelTop = 100;
inline constexpr int kFxKnobTop = 204;
inline constexpr int kFxKnobPitch = 79;
// Slot colour roles: each slot keeps its colour on every page.
inline constexpr int kSlotRole[4] = {2, 3, 4, 5};

constexpr int FxPanelLeft(int slot)
{
    return 20 + slot * (kFxPanelW + kFxPanelGap);
}

constexpr IRECT FxPanelRect(int slot)
{
    return IRECT(FxPanelLeft(slot), kFxPanelTop, FxPanelLeft(slot) + kFxPanelW, 600);
}

inline constexpr int kFxValueParams[5] = {kFXParam1PR1, kFXParam2PR1, kFXParam3PR1, kFXParam4PR1,
                                          kFXParam5PR1};
inline constexpr int kFxDepthParams[5] = {kFXParam1ModDepthPR1, kFXParam2ModDepthPR1, kFXParam3ModDepthPR1,
                                          kFXParam4ModDepthPR1, kFXParam5ModDepthPR1};
inline constexpr int kFxSourceParams[5] = {kFXParam1ModSourcePR1, kFXParam2ModSourcePR1,
                                           kFXParam3ModSourcePR1, kFXParam4ModSourcePR1,
                                           kFXParam5ModSourcePR1};
inline constexpr const char* kSlotTitles[4] = {"SLOT 1", "SLOT 2", "SLOT 3", "SLOT 4"};

inline constexpr int kFxRowsPerSlot = 5 + 5 * 5;
// The first of a knob's rows (knob, name, depth, source, depth label) in the table.
constexpr int FxKnobFirstRow(int slot, int knob)
{
    return slot * kFxRowsPerSlot + 5 + knob * 5;
}

constexpr std::array<LayoutRow, 4 * kFxRowsPerSlot> MakeEffectsLayout()
{
    std::array<LayoutRow, 4 * kFxRowsPerSlot> rows{};
    int n = 0;
    for (int s = 0; s < 4; ++s)
    {
        const int x = FxPanelLeft(s);
        const int role = kSlotRole[s];
        rows[n++] = {ELayoutKind::kPanel, FxPanelRect(s), -1, -1, role, kSlotTitles[s]};
        rows[n++] = {ELayoutKind::kSwitch, IRECT::FromSize(x + 12, 133, 30, 16), kFXOnPR1 + s,
                     BitmapId("switch1_grey")};
        rows[n++] = {ELayoutKind::kValuePopup, IRECT(x + 50, 130, x + kFxPanelW - 12, 152), kFX1PR + s, -1,
                     role};
        rows[n++] = {ELayoutKind::kFxIcon, IRECT::FromSize(x + 12, 164, 36, 24), kFX1PR + s, -1, role};
        rows[n++] = {ELayoutKind::kLabel, IRECT(x + 134, 168, x + kFxPanelW - 12, 182), -1, -1, -1, "MOD"};
        for (int k = 0; k < 5; ++k)
        {
            const int y = kFxKnobTop + k * kFxKnobPitch;
            const IRECT knob = IRECT::FromSize(x + 16, y, kMain, kMain);
            rows[n++] = {ELayoutKind::kKnob, knob, kFxValueParams[k] + s, BitmapId("knob_hard_main"), role};
            rows[n++] = {ELayoutKind::kFxKnobLabel, KnobLabelRect(knob), kFX1PR + s, -1, role, "", k};
            rows[n++] = {ELayoutKind::kKnob, IRECT::FromSize(x + 100, y + 14, 24, 24), kFxDepthParams[k] + s,
                         BitmapId("knob_soft_mod"), role};
            rows[n++] = {ELayoutKind::kValuePopup, IRECT(x + 134, y + 15, x + kFxPanelW - 12, y + 37),
                         kFxSourceParams[k] + s, -1, -1};
            rows[n++] = {ELayoutKind::kLabel, IRECT(x + 96, y + 40, x + 128, y + 52), -1, -1, -1, "DEPTH"};
        }
    }
    return rows;
}
} // namespace layout

inline constexpr auto kEffectsLayout = layout::MakeEffectsLayout();

namespace layout
{
// What a knob row covers while its knob is out: the knob with its printed scale (a few pixels
// beyond the bitmap), its name, depth, source and "DEPTH", inside the panel's border.
constexpr IRECT FxKnobRowArea(int slot, int knob)
{
    IRECT area;
    for (int r = FxKnobFirstRow(slot, knob); r < FxKnobFirstRow(slot, knob) + 5; ++r)
        area = area.Union(kEffectsLayout[static_cast<size_t>(r)].mRect);
    return area.Inset(-6).Intersect(FxPanelRect(slot).Inset(2));
}
} // namespace layout
