// The window's background, drawn from the layout table: top bar, page tab labels, the stage,
// panel frames with their titles, knob labels and scales, fixed labels and meter wells.
#include "Background.h"

#include <cmath>
#include <numbers>
#include <span>
#include <string>
#include <vector>

#include "ArtKit.h"
#include "editor/MainLayout.h"
#include "editor/PageLayouts.h"
#include "editor/PanelLook.h"

namespace art
{
namespace
{
using namespace palette;
constexpr double kPi = std::numbers::pi;

void Window(cairo_t* cr)
{
    cairo_pattern_t* g = cairo_pattern_create_linear(0, 0, 0, kEditorHeight);
    cairo_pattern_add_color_stop_rgb(g, 0, 0x16 / 255.0, 0x19 / 255.0, 0x1F / 255.0);
    cairo_pattern_add_color_stop_rgb(g, 1, 0x0E / 255.0, 0x10 / 255.0, 0x14 / 255.0);
    cairo_rectangle(cr, 0, 0, kEditorWidth, kEditorHeight);
    cairo_set_source(cr, g);
    cairo_fill(cr);
    cairo_pattern_destroy(g);
}

void TopBar(cairo_t* cr, const IRECT& r)
{
    cairo_pattern_t* g = cairo_pattern_create_linear(0, r.T, 0, r.B);
    cairo_pattern_add_color_stop_rgb(g, 0, 0x1E / 255.0, 0x22 / 255.0, 0x29 / 255.0);
    cairo_pattern_add_color_stop_rgb(g, 1, 0x17 / 255.0, 0x1A / 255.0, 0x20 / 255.0);
    cairo_rectangle(cr, r.L, r.T, r.W(), r.H());
    cairo_set_source(cr, g);
    cairo_fill(cr);
    cairo_pattern_destroy(g);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, 0x000000, 0.6);
    cairo_move_to(cr, r.L, r.B - 0.5);
    cairo_line_to(cr, r.R, r.B - 0.5);
    cairo_stroke(cr);
    SetRGB(cr, 0xFFFFFF, 0.05);
    cairo_move_to(cr, r.L, r.T + 0.5);
    cairo_line_to(cr, r.R, r.T + 0.5);
    cairo_stroke(cr);
}

// The stage: a recessed field with a faint dot grid that pages draw their panels on.
void Stage(cairo_t* cr, const IRECT& r)
{
    RoundRect(cr, r.L + 0.5, r.T + 0.5, r.W() - 1.0, r.H() - 1.0, 8.0);
    SetRGB(cr, kStage);
    cairo_fill_preserve(cr);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, kHairline);
    cairo_stroke(cr);
    SetRGB(cr, 0xFFFFFF, 0.035);
    for (int y = r.T + 16; y < r.B - 8; y += 16)
        for (int x = r.L + 16; x < r.R - 8; x += 16)
        {
            cairo_rectangle(cr, x, y, 1, 1);
        }
    cairo_fill(cr);
}

void Panel(cairo_t* cr, const IRECT& r, const char* title)
{
    // Soft shadow below, then the body with a titled band.
    RoundRect(cr, r.L + 0.5, r.T + 2.0, r.W() - 1.0, r.H() - 1.0, 7.0);
    SetRGB(cr, 0x000000, 0.35);
    cairo_fill(cr);
    cairo_pattern_t* g = cairo_pattern_create_linear(0, r.T, 0, r.B);
    AddStopRGB(g, 0, kPanelBodyTop);
    AddStopRGB(g, 1, kPanelBodyBottom);
    RoundRect(cr, r.L + 0.5, r.T + 0.5, r.W() - 1.0, r.H() - 1.0, 7.0);
    cairo_set_source(cr, g);
    cairo_fill(cr);
    cairo_pattern_destroy(g);
    cairo_save(cr);
    RoundRect(cr, r.L + 0.5, r.T + 0.5, r.W() - 1.0, r.H() - 1.0, 7.0);
    cairo_clip(cr);
    cairo_rectangle(cr, r.L, r.T, r.W(), 22);
    SetRGB(cr, kPanelTitle);
    cairo_fill(cr);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, 0x000000, 0.45);
    cairo_move_to(cr, r.L, r.T + 22.5);
    cairo_line_to(cr, r.R, r.T + 22.5);
    cairo_stroke(cr);
    cairo_restore(cr);
    RoundRect(cr, r.L + 0.5, r.T + 0.5, r.W() - 1.0, r.H() - 1.0, 7.0);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, kBorder);
    cairo_stroke(cr);
    // The title is tracked for a calm, technical read.
    Text(cr, title, r.L + 12, r.T, r.W() - 24, 22, 11, kTitleText, -1, 1.6);
}

// A scale of ticks around a knob: ends and the centre of a bipolar knob brighter.
void KnobScale(cairo_t* cr, const IRECT& r, bool bipolar)
{
    const double cx = (r.L + r.R) / 2.0, cy = (r.T + r.B) / 2.0;
    const double r0 = r.W() / 2.0 + 1.5, r1 = r0 + (r.W() >= 48 ? 3.5 : 2.5);
    const int ticks = r.W() >= 48 ? 11 : 7;
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    for (int i = 0; i < ticks; ++i)
    {
        const double v = static_cast<double>(i) / (ticks - 1);
        const double a = KnobAngle(v);
        const bool major = i == 0 || i == ticks - 1 || (bipolar && i == ticks / 2);
        cairo_set_line_width(cr, major ? 1.4 : 1.0);
        SetRGB(cr, major ? kTickBright : kTick);
        cairo_move_to(cr, cx + std::cos(a) * r0, cy + std::sin(a) * r0);
        cairo_line_to(cr, cx + std::cos(a) * r1, cy + std::sin(a) * r1);
        cairo_stroke(cr);
    }
}

void MeterWell(cairo_t* cr, const IRECT& r)
{
    RoundRect(cr, r.L - 2.5, r.T - 2.5, r.W() + 5.0, r.H() + 5.0, 3.0);
    SetRGB(cr, 0x0B0D10);
    cairo_fill_preserve(cr);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, kHairline);
    cairo_stroke(cr);
}

void PageTabs(cairo_t* cr, const LayoutRow& row)
{
    const std::string labels = row.mLabel;
    std::vector<std::string> names;
    size_t start = 0;
    while (start <= labels.size())
    {
        const size_t bar = labels.find('|', start);
        names.push_back(labels.substr(start, bar == std::string::npos ? std::string::npos : bar - start));
        if (bar == std::string::npos) break;
        start = bar + 1;
    }
    const BitmapRow& tab = kBitmapRows[row.mBitmap];
    const int n = static_cast<int>(names.size());
    for (int i = 0; i < n; ++i)
    {
        const double x = row.mRect.L + (n > 1 ? (row.mRect.W() - tab.mW) * i / (n - 1.0) : 0.0);
        Text(cr, names[i].c_str(), x, row.mRect.T, tab.mW, tab.mH, 11.5, kLabelText, 0, 1.3);
    }
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, kHairline);
    cairo_move_to(cr, 12, row.mRect.B + 4.5);
    cairo_line_to(cr, 980, row.mRect.B + 4.5);
    cairo_stroke(cr);
}

// Panels first, then the marks that sit on them.
void DrawRows(cairo_t* cr, std::span<const LayoutRow> rows)
{
    for (const LayoutRow& row : rows)
    {
        switch (row.mKind)
        {
        case ELayoutKind::kTopBar:
            TopBar(cr, row.mRect);
            break;
        case ELayoutKind::kStage:
            Stage(cr, row.mRect);
            break;
        case ELayoutKind::kPanel:
            Panel(cr, row.mRect, row.mLabel);
            break;
        case ELayoutKind::kPageSelect:
            PageTabs(cr, row);
            break;
        default:
            break;
        }
    }
    for (const LayoutRow& row : rows)
    {
        switch (row.mKind)
        {
        case ELayoutKind::kLabel:
            Text(cr, row.mLabel, row.mRect.L, row.mRect.T, row.mRect.W(), row.mRect.H(), 10, kDimText,
                 row.mRect.W() > 60 ? -1 : 0, 1.0);
            break;
        case ELayoutKind::kRule:
            cairo_set_line_width(cr, 1.0);
            SetRGB(cr, kHairline);
            cairo_move_to(cr, row.mRect.L, row.mRect.T + 0.5);
            cairo_line_to(cr, row.mRect.R, row.mRect.T + 0.5);
            cairo_stroke(cr);
            break;
        case ELayoutKind::kCaption:
            Text(cr, row.mLabel, row.mRect.L, row.mRect.T, row.mRect.W(), row.mRect.H(), 9.5, kLabelText, 0,
                 0.5);
            break;
        case ELayoutKind::kKnob:
        case ELayoutKind::kInputAttenuator:
        {
            const EArt art = kBitmapRows[row.mBitmap].mArt;
            KnobScale(cr, row.mRect,
                      art == EArt::kKnobBipolar || art == EArt::kKnobSoftBipolar || art == EArt::kModKnob);
            const IRECT label = KnobLabelRect(row.mRect);
            if (row.mLabel[0])
                Text(cr, row.mLabel, label.L, label.T, label.W(), label.H(), 9.5, kLabelText, 0, 0.5);
            break;
        }
        case ELayoutKind::kMeter:
            MeterWell(cr, row.mRect);
            break;

        default:
            break;
        }
    }
}
} // namespace

void DrawBackground(cairo_t* cr)
{
    Window(cr);
    DrawRows(cr, kMainLayout);
}

void DrawPageArt(cairo_t* cr, const PageLayout& page)
{
    cairo_translate(cr, -kStageRect.L, -kStageRect.T);
    Stage(cr, kStageRect);
    DrawRows(cr, page.mRows);
}
} // namespace art
