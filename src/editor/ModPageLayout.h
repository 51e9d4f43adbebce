#pragma once
// Building blocks of the modulation, routing and options pages: their tables repeat one panel
// per module (LFO, gate, follower, logic module, slot), so each is made by a constexpr function
// that places one panel's rows at an origin and runs once per module. Everything lands in a
// plain array of rows like the main layout's, checked for its exact length at compile time.

#include <array>
#include <cstddef>

#include "editor/MainLayout.h"

namespace modlayout
{
// Colour roles of the pages' value arcs and fields.
inline constexpr int kRoleRouting = 8;
inline constexpr int kRoleLfo = 2;
inline constexpr int kRoleGate = 3;
inline constexpr int kRoleEnvelope = 4;
inline constexpr int kRoleLogic = 11;
inline constexpr int kRoleMatrix = 5;
inline constexpr int kRoleOptions = 10;

// The stage less a margin: the area panels share.
inline constexpr int kMargin = 8;
inline constexpr int kGap = 10;
inline constexpr IRECT kArea(kStageRect.L + kMargin, kStageRect.T + kMargin, kStageRect.R - kMargin,
                             kStageRect.B - kMargin);
inline constexpr int kTitleH = 22; // the panel's title band
inline constexpr int kFieldH = 20; // value fields
inline constexpr int kSwitchW = 30, kSwitchH = 16;
inline constexpr int kSmallKnob = 36; // knob_hard_small
inline constexpr int kModKnob = 24;   // knob_soft_mod

// Panel `i` of `n` side by side across the area, `rows` rows high; row `r` of them.
constexpr IRECT GridPanel(int col, int cols, int row, int rows)
{
    const int w = (kArea.W() - (cols - 1) * kGap) / cols;
    const int h = (kArea.H() - (rows - 1) * kGap) / rows;
    return IRECT::FromSize(kArea.L + col * (w + kGap), kArea.T + row * (h + kGap), w, h);
}

// The switch that turns a panel's module on, at the right end of its title band.
constexpr IRECT TitleSwitch(const IRECT& panel)
{
    return IRECT::FromSize(panel.R - 12 - kSwitchW, panel.T + (kTitleH - kSwitchH) / 2, kSwitchW, kSwitchH);
}

// Rows of one page, filled in order; Done() fails the build unless exactly N rows were added.
template <std::size_t N> class Rows
{
  public:
    constexpr void Add(const LayoutRow& row) { mRows[mCount++] = row; }
    constexpr void Panel(const IRECT& r, const char* title, int role)
    {
        Add({ELayoutKind::kPanel, r, -1, -1, role, title});
    }
    // A label left of its control, read from the left.
    constexpr void Label(const IRECT& r, const char* text)
    {
        Add({ELayoutKind::kLabel, r, -1, -1, -1, text});
    }
    // A caption centred under a control, like a knob's label.
    constexpr void Caption(const IRECT& r, const char* text)
    {
        Add({ELayoutKind::kCaption, r, -1, -1, -1, text});
    }
    constexpr void Rule(int l, int y, int r) { Add({ELayoutKind::kRule, IRECT(l, y, r, y + 1)}); }
    constexpr void Field(const IRECT& r, int param, int role)
    {
        Add({ELayoutKind::kValuePopup, r, param, -1, role});
    }
    constexpr void Switch(const IRECT& r, int param)
    {
        Add({ELayoutKind::kSwitch, r, param, BitmapId("switch1_grey")});
    }
    // A knob by its centre and top, sized by its bitmap, labelled under it.
    constexpr void Knob(int cx, int top, int param, const char* bitmap, int role, const char* label)
    {
        const int id = BitmapId(bitmap);
        Add({ELayoutKind::kKnob, layout::Knob(cx, top, kBitmapRows[id].mW), param, id, role, label});
    }
    constexpr std::array<LayoutRow, N> Done() const
    {
        if (mCount != static_cast<int>(N)) throw "row count differs from the table's size";
        return mRows;
    }

  private:
    std::array<LayoutRow, N> mRows{};
    int mCount = 0;
};
} // namespace modlayout
