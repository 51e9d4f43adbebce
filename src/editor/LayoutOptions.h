#pragma once
// The options page: the colour set, the input section (the input attenuator with its decibel
// readout, the dry-kill switch) and the version and notice lines. The attenuator and the
// dry-kill switch are the editor's own controls, not parameters: the plug-in reads them through
// the rows named below and stores them with its state.

#include "editor/ColorSets.h"
#include "editor/ModPageLayout.h"
#include "host/PlugClassInfo.h"

namespace optionslayout
{
using namespace modlayout;

// "QUORVEX Version " + the plug-in's version + " VST3", made once at compile time.
inline constexpr char kVersionPrefix[] = "QUORVEX Version ";
inline constexpr char kVersionSuffix[] = " VST3";
inline constexpr auto kVersionLine = []
{
    std::array<char, sizeof(kVersionPrefix) + sizeof(PlugClassInfo::kVersion) + sizeof(kVersionSuffix) - 2>
        line{};
    int n = 0;
    for (const char* part : {kVersionPrefix, PlugClassInfo::kVersion, kVersionSuffix})
        for (const char* c = part; *c; ++c)
            line[n++] = *c;
    return line;
}();
inline constexpr char kTrademark[] = "VST is a trademark of Steinberg Media Technologies GmbH";

inline constexpr int kRows = 13 + kNumColorRoles;

constexpr std::array<LayoutRow, kRows> Make()
{
    Rows<kRows> rows;
    // The page holds little: its panels start at the top of the stage, as every page's do, so
    // that switching pages does not move the eye.
    const int leftR = kArea.L + 470;
    const int displayH = 112, inputH = 112;
    const int top = kArea.T;
    const IRECT display(kArea.L, top, leftR, top + displayH);
    rows.Panel(display, "DISPLAY", kRoleOptions);
    const int fy = display.T + 40;
    rows.Label(IRECT(display.L + 16, fy, display.L + 116, fy + kFieldH), "COLOUR SET:");
    const int swatchW = 22, swatchPitch = 28;
    const int fieldL = display.L + 120,
              fieldR = fieldL + kNumColorRoles * swatchPitch - (swatchPitch - swatchW);
    rows.Add({ELayoutKind::kColorSetPopup, IRECT(fieldL, fy, fieldR, fy + kFieldH), -1, -1, kRoleOptions});
    // The set's colours, role by role, under its name.
    for (int role = 0; role < kNumColorRoles; ++role)
        rows.Add({ELayoutKind::kSwatch, IRECT::FromSize(fieldL + role * swatchPitch, fy + 34, swatchW, 10),
                  -1, -1, role});

    const IRECT input(kArea.L, display.B + kGap, leftR, display.B + kGap + inputH);
    rows.Panel(input, "INPUT", kRoleOptions);
    const int knobCx = input.L + 56, knobT = input.T + 40;
    const int att = BitmapId("input_att");
    rows.Add({ELayoutKind::kInputAttenuator, layout::Knob(knobCx, knobT, kBitmapRows[att].mW), -1, att,
              kRoleOptions, "INPUT ATT"});
    const int ry = knobT + (kSmallKnob - kFieldH) / 2;
    rows.Add({ELayoutKind::kReadout, IRECT(knobCx + 32, ry, knobCx + 96, ry + kFieldH), -1, -1, -1, "0 dB"});
    const int sy = knobT + (kSmallKnob - kSwitchH) / 2;
    rows.Label(IRECT(input.L + 230, sy, input.L + 310, sy + kSwitchH), "DRY KILL");
    rows.Add({ELayoutKind::kDryKill, IRECT::FromSize(input.L + 314, sy, kSwitchW, kSwitchH), -1,
              BitmapId("switch1_grey")});

    const IRECT about(leftR + kGap, display.T, kArea.R, input.B);
    rows.Panel(about, "ABOUT", kRoleOptions);
    rows.Label(IRECT(about.L + 16, about.T + 44, about.R - 16, about.T + 60), kVersionLine.data());
    rows.Label(IRECT(about.L + 16, about.T + 68, about.R - 16, about.T + 84), kTrademark);
    rows.Rule(about.L + 10, about.T + 100, about.R - 10);
    rows.Label(IRECT(about.L + 16, about.T + 114, about.R - 16, about.T + 130), PlugClassInfo::kVendor);
    return rows.Done();
}

// Row of the first row of a kind, for the plug-in to reach the page's own controls.
constexpr int RowOfKind(const std::array<LayoutRow, kRows>& rows, ELayoutKind kind)
{
    for (int i = 0; i < kRows; ++i)
        if (rows[i].mKind == kind) return i;
    return -1;
}
} // namespace optionslayout

inline constexpr auto kOptionsLayout = optionslayout::Make();
inline constexpr int kOptionsAttenuatorRow =
    optionslayout::RowOfKind(kOptionsLayout, ELayoutKind::kInputAttenuator);
inline constexpr int kOptionsReadoutRow = optionslayout::RowOfKind(kOptionsLayout, ELayoutKind::kReadout);
inline constexpr int kOptionsDryKillRow = optionslayout::RowOfKind(kOptionsLayout, ELayoutKind::kDryKill);
inline constexpr int kOptionsColorSetRow =
    optionslayout::RowOfKind(kOptionsLayout, ELayoutKind::kColorSetPopup);
