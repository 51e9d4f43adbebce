// The editor's bitmaps, one drawing routine per kind of the bitmap table. Each routine draws one
// frame into the w x h box at the origin; `value` runs from 0 (first frame) to 1 (last).
#include "Bitmaps.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

#include "ArtKit.h"

namespace art
{
namespace
{
using namespace palette;
constexpr double kPi = std::numbers::pi;

void KnobTrack(cairo_t* cr, double c, double radius, bool bipolar)
{
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_width(cr, 3.4);
    SetRGB(cr, kGroove);
    cairo_new_sub_path(cr);
    cairo_arc(cr, c, c, radius, KnobAngle(0.0), KnobAngle(1.0));
    cairo_stroke(cr);
    if (bipolar)
    {
        cairo_set_line_width(cr, 1.2);
        SetRGB(cr, kTickBright);
        cairo_move_to(cr, c, c - radius - 1.6);
        cairo_line_to(cr, c, c - radius + 1.6);
        cairo_stroke(cr);
    }
}

// A machined body: drop shadow, a lit rim, a face that catches light from above.
void KnobBody(cairo_t* cr, double c, double r, std::uint32_t hi, std::uint32_t lo)
{
    cairo_new_sub_path(cr);
    cairo_arc(cr, c, c + 1.2, r + 0.8, 0, 2 * kPi);
    cairo_set_source_rgba(cr, 0, 0, 0, 0.55);
    cairo_fill(cr);

    cairo_pattern_t* rim = cairo_pattern_create_linear(0, c - r, 0, c + r);
    cairo_pattern_add_color_stop_rgb(rim, 0, ((hi >> 16) & 255) / 255.0, ((hi >> 8) & 255) / 255.0,
                                     (hi & 255) / 255.0);
    cairo_pattern_add_color_stop_rgb(rim, 1, ((lo >> 16) & 255) / 255.0, ((lo >> 8) & 255) / 255.0,
                                     (lo & 255) / 255.0);
    cairo_new_sub_path(cr);
    cairo_arc(cr, c, c, r, 0, 2 * kPi);
    cairo_set_source(cr, rim);
    cairo_fill(cr);
    cairo_pattern_destroy(rim);

    const double face = r * 0.84;
    cairo_pattern_t* grad = cairo_pattern_create_linear(0, c - face, 0, c + face);
    cairo_pattern_add_color_stop_rgb(grad, 0, ((lo >> 16) & 255) / 255.0 * 1.25,
                                     ((lo >> 8) & 255) / 255.0 * 1.25, (lo & 255) / 255.0 * 1.25);
    cairo_pattern_add_color_stop_rgb(grad, 1, ((hi >> 16) & 255) / 255.0 * 0.78,
                                     ((hi >> 8) & 255) / 255.0 * 0.78, (hi & 255) / 255.0 * 0.78);
    cairo_new_sub_path(cr);
    cairo_arc(cr, c, c, face, 0, 2 * kPi);
    cairo_set_source(cr, grad);
    cairo_fill(cr);
    cairo_pattern_destroy(grad);

    cairo_set_line_width(cr, 0.8);
    cairo_new_sub_path(cr);
    cairo_arc(cr, c, c, r - 0.4, DegToCairo(-70), DegToCairo(70));
    cairo_set_source_rgba(cr, 1, 1, 1, 0.16);
    cairo_stroke(cr);
}

void KnobPointerLine(cairo_t* cr, double c, double r, double value, double width)
{
    const double a = KnobAngle(value);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_width(cr, width);
    SetRGB(cr, kPointer);
    cairo_move_to(cr, c + std::cos(a) * r * 0.34, c + std::sin(a) * r * 0.34);
    cairo_line_to(cr, c + std::cos(a) * r * 0.90, c + std::sin(a) * r * 0.90);
    cairo_stroke(cr);
}

void Knob(cairo_t* cr, const BitmapRow& row, double value)
{
    const double c = row.mW / 2.0;
    const double track = c - 2.5;
    const bool bipolar = row.mArt == EArt::kKnobBipolar || row.mArt == EArt::kKnobSoftBipolar;
    KnobTrack(cr, c, track, bipolar);
    const double body = track - 3.6;
    switch (row.mArt)
    {
    case EArt::kKnobHidden:
        KnobBody(cr, c, body, 0x2C3038, 0x1A1C21);
        break;
    case EArt::kKnobSoft:
    case EArt::kKnobSoftBipolar:
    {
        KnobBody(cr, c, body, 0x5B626F, 0x30343C);
        const double a = KnobAngle(value);
        cairo_new_sub_path(cr);
        cairo_arc(cr, c + std::cos(a) * body * 0.62, c + std::sin(a) * body * 0.62,
                  std::max(1.6, row.mW / 20.0), 0, 2 * kPi);
        SetRGB(cr, kPointer);
        cairo_fill(cr);
        break;
    }
    default:
        KnobBody(cr, c, body, 0x4C525E, 0x202329);
        KnobPointerLine(cr, c, body, value, std::max(1.8, row.mW / 22.0));
        break;
    }
}

void ModKnob(cairo_t* cr, const BitmapRow& row, double value)
{
    const double c = row.mW / 2.0;
    KnobTrack(cr, c, c - 2.0, true);
    const double body = c - 5.0;
    KnobBody(cr, c, body, 0x474D58, 0x24272E);
    KnobPointerLine(cr, c, body + 1.0, value, 1.6);
}

void Fader(cairo_t* cr, const BitmapRow& row, double value)
{
    const double cx = row.mW / 2.0;
    RoundRect(cr, cx - 2.0, 6, 4.0, row.mH - 12.0, 2.0);
    SetRGB(cr, kGroove);
    cairo_fill(cr);
    const double capH = 12.0;
    const double y = (row.mH - 6.0 - capH / 2.0) - value * (row.mH - 12.0 - capH);
    RoundRect(cr, 2, y - capH / 2 + 1.2, row.mW - 4.0, capH, 2.5);
    cairo_set_source_rgba(cr, 0, 0, 0, 0.5);
    cairo_fill(cr);
    cairo_pattern_t* g = cairo_pattern_create_linear(0, y - capH / 2, 0, y + capH / 2);
    cairo_pattern_add_color_stop_rgb(g, 0, 0.36, 0.38, 0.43);
    cairo_pattern_add_color_stop_rgb(g, 1, 0.17, 0.18, 0.21);
    RoundRect(cr, 2, y - capH / 2, row.mW - 4.0, capH, 2.5);
    cairo_set_source(cr, g);
    cairo_fill(cr);
    cairo_pattern_destroy(g);
    cairo_set_line_width(cr, 1.4);
    SetRGB(cr, kPointer);
    cairo_move_to(cr, 5, y);
    cairo_line_to(cr, row.mW - 5, y);
    cairo_stroke(cr);
}

void StepFader(cairo_t* cr, const BitmapRow& row, double value)
{
    RoundRect(cr, 0.5, 0.5, row.mW - 1.0, row.mH - 1.0, 2.5);
    SetRGB(cr, 0x14171C);
    cairo_fill_preserve(cr);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, 0x282D37);
    cairo_stroke(cr);
    const double top = 2.0, bottom = row.mH - 2.0, span = bottom - top;
    double from = bottom, to = bottom - value * span;
    if (row.mArt == EArt::kStepFaderBipolar)
    {
        from = top + span / 2.0;
        to = bottom - value * span;
        cairo_set_line_width(cr, 1.0);
        SetRGB(cr, kTick);
        cairo_move_to(cr, 2, from);
        cairo_line_to(cr, row.mW - 2, from);
        cairo_stroke(cr);
    }
    const double y0 = std::min(from, to), y1 = std::max(from, to);
    if (y1 - y0 < 0.5) return;
    cairo_pattern_t* g = cairo_pattern_create_linear(0, top, 0, bottom);
    cairo_pattern_add_color_stop_rgba(g, 0, 0.86, 0.89, 0.93, 0.95);
    cairo_pattern_add_color_stop_rgba(g, 1, 0.55, 0.59, 0.66, 0.95);
    RoundRect(cr, 2.5, y0, row.mW - 5.0, y1 - y0, 1.5);
    cairo_set_source(cr, g);
    cairo_fill(cr);
    cairo_pattern_destroy(g);
}

void Button(cairo_t* cr, const BitmapRow& row, const char* text, bool on, bool dim)
{
    const double w = row.mW, h = row.mH;
    RoundRect(cr, 0.5, 0.5, w - 1.0, h - 1.0, 3.0);
    if (on)
    {
        SetRGB(cr, kButtonOn);
        cairo_fill(cr);
    }
    else
    {
        cairo_pattern_t* g = cairo_pattern_create_linear(0, 0, 0, h);
        cairo_pattern_add_color_stop_rgb(g, 0, 0.16, 0.175, 0.21);
        cairo_pattern_add_color_stop_rgb(g, 1, 0.12, 0.13, 0.155);
        cairo_set_source(cr, g);
        cairo_fill_preserve(cr);
        cairo_pattern_destroy(g);
        cairo_set_line_width(cr, 1.0);
        SetRGB(cr, kButtonBorder);
        cairo_stroke(cr);
    }
    const double size = std::min(h * 0.58, 11.5);
    Text(cr, text, 0, 0, w, h, size, on ? 0x14171C : (dim ? 0x5E6676 : kDimText), 0, 0.6);
}

void TextFrame(cairo_t* cr, const BitmapRow& row, const char* text)
{
    const double w = row.mW, h = row.mH;
    RoundRect(cr, 0.5, 0.5, w - 1.0, h - 1.0, 3.0);
    SetRGB(cr, kField);
    cairo_fill_preserve(cr);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, kFieldBorder);
    cairo_stroke(cr);
    const bool arrow = w >= 60;
    const double size = std::min(h * 0.58, 12.0);
    Text(cr, text ? text : "", arrow ? 6 : 0, 0, arrow ? w - 22 : w, h, size, kBrightText, arrow ? -1 : 0,
         0.5);
    if (arrow)
    {
        const double ax = w - 11, ay = h / 2.0;
        SetRGB(cr, kDimText);
        cairo_move_to(cr, ax - 3.5, ay - 1.8);
        cairo_line_to(cr, ax + 3.5, ay - 1.8);
        cairo_line_to(cr, ax, ay + 2.2);
        cairo_close_path(cr);
        cairo_fill(cr);
    }
}

void Arrow(cairo_t* cr, const BitmapRow& row, bool on)
{
    const double w = row.mW, h = row.mH;
    RoundRect(cr, 0.5, 0.5, w - 1.0, h - 1.0, 3.0);
    SetRGB(cr, on ? 0x3A404C : kButton);
    cairo_fill_preserve(cr);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, kButtonBorder);
    cairo_stroke(cr);
    const bool left = std::strcmp(row.mText, "<") == 0;
    const double s = std::min(w, h) * 0.22, cx = w / 2.0, cy = h / 2.0;
    SetRGB(cr, on ? kPointer : kLabelText);
    cairo_move_to(cr, cx + (left ? s * 0.7 : -s * 0.7), cy - s);
    cairo_line_to(cr, cx + (left ? -s * 0.8 : s * 0.8), cy);
    cairo_line_to(cr, cx + (left ? s * 0.7 : -s * 0.7), cy + s);
    cairo_close_path(cr);
    cairo_fill(cr);
}

void ToggleLed(cairo_t* cr, const BitmapRow& row, bool on)
{
    const double w = row.mW, h = row.mH, r = h / 2.0;
    RoundRect(cr, 0.5, 0.5, w - 1.0, h - 1.0, r);
    SetRGB(cr, on ? 0xC9D0DB : 0x1A1D23);
    cairo_fill_preserve(cr);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, on ? 0xE8ECF2 : kButtonBorder);
    cairo_stroke(cr);
    const double kx = on ? w - r : r;
    cairo_new_sub_path(cr);
    cairo_arc(cr, kx, r, r - 2.5, 0, 2 * kPi);
    SetRGB(cr, on ? 0x15181D : 0x6A7282);
    cairo_fill(cr);
}

void Led(cairo_t* cr, const BitmapRow& row, bool on)
{
    std::uint32_t color = 0xF5F7FA;
    if (std::strcmp(row.mText, "red") == 0) color = 0xFF3B4A;
    if (std::strcmp(row.mText, "yellow") == 0) color = 0xFFD43B;
    const double c = row.mW / 2.0, r = c - 1.0;
    if (on)
    {
        cairo_pattern_t* glow = cairo_pattern_create_radial(c, c, 0, c, c, c);
        cairo_pattern_add_color_stop_rgba(glow, 0.5, ((color >> 16) & 255) / 255.0,
                                          ((color >> 8) & 255) / 255.0, (color & 255) / 255.0, 0.5);
        cairo_pattern_add_color_stop_rgba(glow, 1, ((color >> 16) & 255) / 255.0,
                                          ((color >> 8) & 255) / 255.0, (color & 255) / 255.0, 0.0);
        cairo_rectangle(cr, 0, 0, row.mW, row.mH);
        cairo_set_source(cr, glow);
        cairo_fill(cr);
        cairo_pattern_destroy(glow);
    }
    cairo_new_sub_path(cr);
    cairo_arc(cr, c, c, r * 0.62, 0, 2 * kPi);
    SetRGB(cr, color, on ? 1.0 : 0.16);
    cairo_fill_preserve(cr);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, on ? color : kButtonBorder);
    cairo_stroke(cr);
}

void PageTab(cairo_t* cr, const BitmapRow& row, bool on)
{
    if (!on) return;
    RoundRect(cr, 0, 0, row.mW, row.mH, 4.0);
    cairo_set_source_rgba(cr, 1, 1, 1, 0.075);
    cairo_fill(cr);
    RoundRect(cr, 10, row.mH - 2.5, row.mW - 20, 2.5, 1.25);
    SetRGB(cr, kPointer);
    cairo_fill(cr);
}

void RadioDot(cairo_t* cr, const BitmapRow& row, bool on)
{
    const double c = row.mW / 2.0;
    cairo_new_sub_path(cr);
    cairo_arc(cr, c, c, c - 1.0, 0, 2 * kPi);
    SetRGB(cr, kField);
    cairo_fill_preserve(cr);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, kFieldBorder);
    cairo_stroke(cr);
    if (!on) return;
    cairo_new_sub_path(cr);
    cairo_arc(cr, c, c, c * 0.45, 0, 2 * kPi);
    SetRGB(cr, kPointer);
    cairo_fill(cr);
}

// Segments light from the bottom: cool white, then amber near the top, red at full scale.
void Meter(cairo_t* cr, const BitmapRow& row, double value, bool vertical)
{
    const double len = vertical ? row.mH : row.mW, thick = vertical ? row.mW : row.mH;
    const int segments = vertical ? 30 : 20;
    const double pitch = len / segments;
    const int lit = static_cast<int>(std::lround(value * segments));
    for (int s = 0; s < segments; ++s)
    {
        const double frac = static_cast<double>(s) / segments;
        std::uint32_t color = frac < 0.7 ? 0xC9D1DE : (frac < 0.9 ? 0xFFC94A : 0xFF4D5E);
        const bool on = s < lit;
        if (vertical)
            RoundRect(cr, 0.5, len - (s + 1) * pitch + 0.5, thick - 1.0, pitch - 1.2, 1.0);
        else
            RoundRect(cr, s * pitch + 0.5, 0.5, pitch - 1.2, thick - 1.0, 1.0);
        SetRGB(cr, on ? color : 0x1C2028, on ? 1.0 : 1.0);
        cairo_fill(cr);
    }
}

void PanDot(cairo_t* cr, const BitmapRow& row, double value)
{
    const double y = row.mH / 2.0;
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, kTick);
    cairo_move_to(cr, 3, y);
    cairo_line_to(cr, row.mW - 3, y);
    cairo_stroke(cr);
    cairo_move_to(cr, row.mW / 2.0, 1);
    cairo_line_to(cr, row.mW / 2.0, row.mH - 1);
    cairo_stroke(cr);
    cairo_new_sub_path(cr);
    cairo_arc(cr, 3 + value * (row.mW - 6), y, 2.8, 0, 2 * kPi);
    SetRGB(cr, kPointer);
    cairo_fill(cr);
}

void MatrixCell(cairo_t* cr, const BitmapRow& row, bool on)
{
    RoundRect(cr, 1.5, 1.5, row.mW - 3.0, row.mH - 3.0, 3.0);
    SetRGB(cr, on ? kButtonOn : kButton);
    cairo_fill_preserve(cr);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, on ? 0xFFFFFF : kButtonBorder);
    cairo_stroke(cr);
}

void Field(cairo_t* cr, const BitmapRow& row)
{
    RoundRect(cr, 0.5, 0.5, row.mW - 1.0, row.mH - 1.0, 3.0);
    SetRGB(cr, kField);
    cairo_fill_preserve(cr);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, kFieldBorder);
    cairo_stroke(cr);
}

void Outline(cairo_t* cr, const BitmapRow& row)
{
    RoundRect(cr, 1.0, 1.0, row.mW - 2.0, row.mH - 2.0, 4.0);
    cairo_set_line_width(cr, 1.6);
    SetRGB(cr, kPointer, 0.9);
    cairo_stroke(cr);
}

void PopupArrow(cairo_t* cr, const BitmapRow& row)
{
    Field(cr, row);
    const double c = row.mW / 2.0;
    SetRGB(cr, kLabelText);
    cairo_move_to(cr, c - 3.5, c - 1.5);
    cairo_line_to(cr, c + 3.5, c - 1.5);
    cairo_line_to(cr, c, c + 2.5);
    cairo_close_path(cr);
    cairo_fill(cr);
}

// The mark: a ring with echoes fading to the right, then the name.
void Logo(cairo_t* cr, const BitmapRow& row)
{
    const double cy = row.mH / 2.0;
    cairo_set_line_width(cr, 3.0);
    SetRGB(cr, kPointer);
    cairo_new_sub_path(cr);
    cairo_arc(cr, 13, cy, 9.5, 0, 2 * kPi);
    cairo_stroke(cr);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_move_to(cr, 18, cy + 5);
    cairo_line_to(cr, 23.5, cy + 10.5);
    cairo_stroke(cr);
    for (int i = 0; i < 3; ++i)
    {
        cairo_new_sub_path(cr);
        cairo_arc(cr, 30 + i * 6.5, cy, 2.2 - i * 0.45, 0, 2 * kPi);
        SetRGB(cr, kPointer, 0.8 - i * 0.25);
        cairo_fill(cr);
    }
    Text(cr, "QUORVEX", 50, 0, row.mW - 50, row.mH, 21, kBrightText, -1, 3.2);
}

void AlertPanel(cairo_t* cr, const BitmapRow& row)
{
    RoundRect(cr, 0.5, 0.5, row.mW - 1.0, row.mH - 1.0, 8.0);
    SetRGB(cr, 0x1D2129);
    cairo_fill_preserve(cr);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, 0x3A404C);
    cairo_stroke(cr);
    cairo_save(cr);
    RoundRect(cr, 0.5, 0.5, row.mW - 1.0, row.mH - 1.0, 8.0);
    cairo_clip(cr);
    cairo_rectangle(cr, 0, 0, row.mW, 4);
    SetRGB(cr, 0xFF4D5E);
    cairo_fill(cr);
    cairo_restore(cr);
}

// Effect pictograms: a curve plotted across the box, one function per glyph.
double Glyph(const char* name, double x)
{
    const double s = std::sin(2 * kPi * x);
    auto is = [&](const char* n) { return std::strcmp(name, n) == 0; };
    if (is("frq")) return std::sin(2 * kPi * x * (1.0 + 1.5 * x));
    if (is("rm")) return std::sin(2 * kPi * x) * std::sin(2 * kPi * 5 * x);
    if (is("comp")) return x < 0.5 ? -1 + 2.4 * x : 0.2 + 0.5 * (x - 0.5);
    if (is("cheb")) return std::cos(3 * std::acos(2 * x - 1));
    if (is("ps1") || is("ps2")) return std::sin(2 * kPi * x * (is("ps2") ? 3 : 2)) * 0.8;
    if (is("pk")) return -0.7 + 1.6 * std::exp(-std::pow((x - 0.5) * 7, 2));
    if (is("dest")) return std::fmod(std::floor(x * 9) * 0.73, 1.0) * 2 - 1;
    if (is("phb")) return -0.8 + 1.5 * std::exp(-std::pow((x - 0.5) * 4, 2)) * (0.6 + 0.4 * std::cos(18 * x));
    if (is("comb")) return 0.8 * std::pow(std::cos(kPi * 5 * x), 8) * 2 - 0.8;
    if (is("bt")) return std::round(s * 3) / 3;
    if (is("svf")) return x < 0.55 ? 0.5 : 0.5 - std::pow((x - 0.55) * 3.0, 1.6);
    if (is("lofi1")) return std::round(std::sin(2 * kPi * std::floor(x * 10) / 10) * 4) / 4;
    if (is("lofi2")) return std::round(std::sin(2 * kPi * std::floor(x * 6) / 6) * 2) / 2;
    if (is("nois")) return std::sin(x * 91.0) * std::cos(x * 37.0) * 0.9;
    if (is("rect")) return std::fabs(std::sin(2 * kPi * x)) * 1.6 - 0.8;
    if (is("sat")) return std::tanh(3 * s);
    if (is("ph")) return std::sin(2 * kPi * x) * std::cos(2 * kPi * 2 * x);
    if (is("lphp")) return -0.7 + 1.4 * std::exp(-std::pow((x - 0.5) * 3.2, 4));
    if (is("varilphp")) return -0.7 + 1.4 * std::exp(-std::pow((x - 0.35) * 4, 4));
    if (is("vow"))
        return -0.6 + 0.9 * std::exp(-std::pow((x - 0.3) * 10, 2)) +
               0.8 * std::exp(-std::pow((x - 0.7) * 10, 2));
    if (is("ws")) return std::sin(kPi * 0.5 * (2 * x - 1) * 2.5) * 0.9;
    return 0.0;
}

void FxIcon(cairo_t* cr, const BitmapRow& row)
{
    const double w = row.mW, h = row.mH;
    RoundRect(cr, 0.5, 0.5, w - 1.0, h - 1.0, 3.5);
    SetRGB(cr, 0x161920);
    cairo_fill_preserve(cr);
    cairo_set_line_width(cr, 1.0);
    SetRGB(cr, kFieldBorder);
    cairo_stroke(cr);
    cairo_set_line_width(cr, 1.5);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    SetRGB(cr, 0xD2D8E2);
    if (std::strcmp(row.mText, "off") == 0)
    {
        cairo_new_sub_path(cr);
        cairo_arc(cr, w / 2, h / 2, 6, 0, 2 * kPi);
        cairo_move_to(cr, w / 2 - 4.2, h / 2 + 4.2);
        cairo_line_to(cr, w / 2 + 4.2, h / 2 - 4.2);
        SetRGB(cr, kDimText);
        cairo_stroke(cr);
        return;
    }
    const int n = 80;
    for (int i = 0; i <= n; ++i)
    {
        const double x = static_cast<double>(i) / n;
        const double y = std::clamp(Glyph(row.mText, x), -1.0, 1.0);
        const double px = 5 + x * (w - 10), py = h / 2 - y * (h / 2 - 5);
        if (i == 0)
            cairo_move_to(cr, px, py);
        else
            cairo_line_to(cr, px, py);
    }
    cairo_stroke(cr);
}
} // namespace

void DrawBitmapFrame(cairo_t* cr, const BitmapRow& row, int frame)
{
    const double value = row.mFrames > 1 ? static_cast<double>(frame) / (row.mFrames - 1) : 0.0;
    const bool on = frame == 1;
    switch (row.mArt)
    {
    case EArt::kKnob:
    case EArt::kKnobBipolar:
    case EArt::kKnobHidden:
    case EArt::kKnobSoft:
    case EArt::kKnobSoftBipolar:
        Knob(cr, row, value);
        break;
    case EArt::kModKnob:
        ModKnob(cr, row, value);
        break;
    case EArt::kFader:
        Fader(cr, row, value);
        break;
    case EArt::kStepFader:
    case EArt::kStepFaderBipolar:
        StepFader(cr, row, value);
        break;
    case EArt::kButton:
        Button(cr, row, row.mText, on, std::strstr(row.mName, "_off") != nullptr);
        break;
    case EArt::kTextFrames:
        TextFrame(cr, row, row.mTexts ? row.mTexts[frame] : "");
        break;
    case EArt::kArrow:
        Arrow(cr, row, on);
        break;
    case EArt::kToggleLed:
        ToggleLed(cr, row, on);
        break;
    case EArt::kLed:
        Led(cr, row, on);
        break;
    case EArt::kPageTab:
        PageTab(cr, row, on);
        break;
    case EArt::kRadioDot:
        RadioDot(cr, row, on);
        break;
    case EArt::kMeter:
        Meter(cr, row, value, true);
        break;
    case EArt::kHMeter:
        Meter(cr, row, value, false);
        break;
    case EArt::kPanDot:
        PanDot(cr, row, value);
        break;
    case EArt::kMatrixCell:
        MatrixCell(cr, row, on);
        break;
    case EArt::kField:
        Field(cr, row);
        break;
    case EArt::kOutline:
        Outline(cr, row);
        break;
    case EArt::kPopupArrow:
        PopupArrow(cr, row);
        break;
    case EArt::kLogo:
        Logo(cr, row);
        break;
    case EArt::kAlertPanel:
        AlertPanel(cr, row);
        break;
    case EArt::kFxIcon:
        FxIcon(cr, row);
        break;
    }
}
} // namespace art
