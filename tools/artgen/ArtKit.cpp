#include "ArtKit.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

namespace art
{
void SetRGB(cairo_t* cr, std::uint32_t rgb, double alpha)
{
    cairo_set_source_rgba(cr, ((rgb >> 16) & 0xFF) / 255.0, ((rgb >> 8) & 0xFF) / 255.0, (rgb & 0xFF) / 255.0,
                          alpha);
}

void AddStopRGB(cairo_pattern_t* pattern, double offset, std::uint32_t rgb)
{
    cairo_pattern_add_color_stop_rgb(pattern, offset, ((rgb >> 16) & 0xFF) / 255.0,
                                     ((rgb >> 8) & 0xFF) / 255.0, (rgb & 0xFF) / 255.0);
}

void RoundRect(cairo_t* cr, double x, double y, double w, double h, double r)
{
    const double pi = std::numbers::pi;
    r = std::min({r, w / 2.0, h / 2.0});
    cairo_new_sub_path(cr);
    cairo_arc(cr, x + w - r, y + r, r, -pi / 2, 0);
    cairo_arc(cr, x + w - r, y + h - r, r, 0, pi / 2);
    cairo_arc(cr, x + r, y + h - r, r, pi / 2, pi);
    cairo_arc(cr, x + r, y + r, r, pi, 3 * pi / 2);
    cairo_close_path(cr);
}

void Text(cairo_t* cr, const char* text, double x, double y, double w, double h, double size,
          std::uint32_t rgb, int align, double tracking, bool bold)
{
    cairo_select_font_face(cr, "BetecknaGS", CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, size);
    cairo_font_extents_t fe;
    cairo_font_extents(cr, &fe);
    // Width with tracking: the advance of each glyph plus the spacing between them.
    const std::string s = text;
    double width = 0.0;
    for (size_t i = 0; i < s.size(); ++i)
    {
        cairo_text_extents_t te;
        const char one[2] = {s[i], 0};
        cairo_text_extents(cr, one, &te);
        width += te.x_advance + (i + 1 < s.size() ? tracking : 0.0);
    }
    double px = x;
    if (align == 0) px = x + (w - width) / 2.0;
    if (align > 0) px = x + w - width;
    const double py = y + (h + fe.ascent - fe.descent) / 2.0;
    SetRGB(cr, rgb);
    for (char c : s)
    {
        const char one[2] = {c, 0};
        cairo_text_extents_t te;
        cairo_text_extents(cr, one, &te);
        cairo_move_to(cr, px, py);
        cairo_show_text(cr, one);
        px += te.x_advance + tracking;
    }
}

double DegToCairo(double degFromTop)
{
    return (degFromTop - 90.0) * std::numbers::pi / 180.0;
}

double KnobAngle(double value)
{
    return DegToCairo(-135.0 + 270.0 * value);
}
} // namespace art
