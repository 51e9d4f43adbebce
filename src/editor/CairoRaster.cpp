// The offscreen raster on cairo. Everything is drawn in layout pixels under one scale transform,
// so a 2x surface gets crisp lines and text; bitmaps use their 2x twin when the scale is above 1.
#include <cairo.h>

#include <cmath>
#include <cstring>
#include <map>
#include <mutex>
#include <numbers>
#include <vector>

#include "editor/IRaster.h"

struct RasterImage
{
    cairo_surface_t* mSurface1x = nullptr;
    cairo_surface_t* mSurface2x = nullptr;
    int mW = 0;
    int mH = 0;

    ~RasterImage()
    {
        if (mSurface1x) cairo_surface_destroy(mSurface1x);
        if (mSurface2x) cairo_surface_destroy(mSurface2x);
    }
};

namespace
{
// Font names of the text styles and the free fonts that stand in for them. The GS cut of
// Beteckna is taken: the plain face has no punctuation, so no "-" for negative values.
struct FontAlias
{
    const char* mName;
    const char* mFamily;
};
constexpr FontAlias kFontAliases[] = {
    {"Futura", "BetecknaGS"},
    {"Arial", "Liberation Sans"},
};

cairo_surface_t* ReadPng(const std::string& path)
{
    cairo_surface_t* s = cairo_image_surface_create_from_png(path.c_str());
    if (cairo_surface_status(s) != CAIRO_STATUS_SUCCESS)
    {
        cairo_surface_destroy(s);
        return nullptr;
    }
    return s;
}

void SetColor(cairo_t* cr, const IColor& c)
{
    cairo_set_source_rgba(cr, c.R / 255.0, c.G / 255.0, c.B / 255.0, c.A / 255.0);
}

double Radians(double degFromTop)
{
    return (degFromTop - 90.0) * std::numbers::pi / 180.0;
}

class CairoRaster final : public IRaster
{
  public:
    ~CairoRaster() override { Release(); }

    bool Resize(int w, int h, double scale) override
    {
        Release();
        mScale = scale > 0.0 ? scale : 1.0;
        const int dw = std::max(1, static_cast<int>(std::lround(w * mScale)));
        const int dh = std::max(1, static_cast<int>(std::lround(h * mScale)));
        mSurface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, dw, dh);
        if (cairo_surface_status(mSurface) != CAIRO_STATUS_SUCCESS)
        {
            Release();
            return false;
        }
        mCr = cairo_create(mSurface);
        cairo_scale(mCr, mScale, mScale);
        return true;
    }

    double Scale() const override { return mScale; }
    const std::uint32_t* Pixels() override
    {
        if (!mSurface) return nullptr;
        cairo_surface_flush(mSurface);
        return reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(mSurface));
    }
    int DeviceWidth() const override { return mSurface ? cairo_image_surface_get_width(mSurface) : 0; }
    int DeviceHeight() const override { return mSurface ? cairo_image_surface_get_height(mSurface) : 0; }
    int Stride() const override { return mSurface ? cairo_image_surface_get_stride(mSurface) : 0; }
    bool SavePNG(const std::string& path) override
    {
        return mSurface && cairo_surface_write_to_png(mSurface, path.c_str()) == CAIRO_STATUS_SUCCESS;
    }

    void PushClip(const IRECT& r) override
    {
        if (!mCr) return;
        cairo_save(mCr);
        cairo_rectangle(mCr, r.L, r.T, r.W(), r.H());
        cairo_clip(mCr);
    }
    void PopClip() override
    {
        if (mCr) cairo_restore(mCr);
    }

    void FillRect(const IColor& color, const IRECT& r) override
    {
        if (!mCr) return;
        SetColor(mCr, color);
        cairo_rectangle(mCr, r.L, r.T, r.W(), r.H());
        cairo_fill(mCr);
    }

    void FillVerticalGradient(const IColor& top, const IColor& bottom, double y0, double y1,
                              const IRECT& r) override
    {
        if (!mCr) return;
        cairo_pattern_t* g = cairo_pattern_create_linear(0, y0, 0, y1);
        cairo_pattern_add_color_stop_rgba(g, 0, top.R / 255.0, top.G / 255.0, top.B / 255.0, top.A / 255.0);
        cairo_pattern_add_color_stop_rgba(g, 1, bottom.R / 255.0, bottom.G / 255.0, bottom.B / 255.0,
                                          bottom.A / 255.0);
        cairo_rectangle(mCr, r.L, r.T, r.W(), r.H());
        cairo_set_source(mCr, g);
        cairo_fill(mCr);
        cairo_pattern_destroy(g);
    }

    void FillRoundRect(const IColor& color, const IRECT& r, double radius) override
    {
        if (!mCr) return;
        SetColor(mCr, color);
        RoundRectPath(r.L, r.T, r.W(), r.H(), radius);
        cairo_fill(mCr);
    }

    void DrawRect(const IColor& color, const IRECT& r) override
    {
        if (!mCr) return;
        SetColor(mCr, color);
        cairo_set_line_width(mCr, 1.0);
        cairo_rectangle(mCr, r.L + 0.5, r.T + 0.5, r.W() - 1.0, r.H() - 1.0);
        cairo_stroke(mCr);
    }

    void DrawLine(const IColor& color, double x1, double y1, double x2, double y2, double width) override
    {
        if (!mCr) return;
        SetColor(mCr, color);
        cairo_set_line_width(mCr, width);
        cairo_set_line_cap(mCr, CAIRO_LINE_CAP_ROUND);
        cairo_move_to(mCr, x1, y1);
        cairo_line_to(mCr, x2, y2);
        cairo_stroke(mCr);
    }

    void FillCircle(const IColor& color, double cx, double cy, double radius) override
    {
        if (!mCr) return;
        SetColor(mCr, color);
        cairo_new_sub_path(mCr);
        cairo_arc(mCr, cx, cy, radius, 0.0, 2.0 * std::numbers::pi);
        cairo_fill(mCr);
    }

    void DrawArc(const IColor& color, double cx, double cy, double radius, double fromDeg, double toDeg,
                 double width) override
    {
        if (!mCr || toDeg == fromDeg) return;
        if (toDeg < fromDeg) std::swap(toDeg, fromDeg);
        SetColor(mCr, color);
        cairo_set_line_width(mCr, width);
        cairo_set_line_cap(mCr, CAIRO_LINE_CAP_ROUND);
        cairo_new_sub_path(mCr);
        cairo_arc(mCr, cx, cy, radius, Radians(fromDeg), Radians(toDeg));
        cairo_stroke(mCr);
    }

    void DrawText(const IText& text, const char* str, const IRECT& r) override
    {
        if (!mCr || !str || !*str) return;
        SelectFont(text);
        cairo_text_extents_t te;
        cairo_font_extents_t fe;
        cairo_text_extents(mCr, str, &te);
        cairo_font_extents(mCr, &fe);
        double x = r.L - te.x_bearing;
        if (text.mAlign == IText::kAlignCenter) x = r.L + (r.W() - te.width) / 2.0 - te.x_bearing;
        if (text.mAlign == IText::kAlignFar) x = r.R - te.width - te.x_bearing;
        const double y = r.T + (r.H() + fe.ascent - fe.descent) / 2.0;
        SetColor(mCr, text.mColor ? *text.mColor : IColor(255, 255, 255, 255));
        cairo_move_to(mCr, x, y);
        cairo_show_text(mCr, str);
    }

    IRECT MeasureText(const IText& text, const char* str) override
    {
        if (!mCr || !str) return IRECT();
        SelectFont(text);
        cairo_text_extents_t te;
        cairo_font_extents_t fe;
        cairo_text_extents(mCr, str, &te);
        cairo_font_extents(mCr, &fe);
        return IRECT(0, 0, static_cast<int>(std::ceil(te.x_advance)),
                     static_cast<int>(std::ceil(fe.ascent + fe.descent)));
    }

    void DrawBitmap(const IBitmap& bitmap, const IRECT& dest, int frame, const IChannelBlend* blend) override
    {
        if (!mCr || !bitmap.mRaster) return;
        const int frameH = bitmap.FrameH();
        frame = std::clamp(frame, 1, std::max(1, bitmap.N));
        cairo_save(mCr);
        cairo_rectangle(mCr, dest.L, dest.T, dest.W(), dest.H());
        cairo_clip(mCr);
        cairo_translate(mCr, dest.L, dest.T - (frame - 1) * frameH);
        PaintImage(*bitmap.mRaster, blend);
        cairo_restore(mCr);
    }

    void DrawRotatedBitmap(const IBitmap& bitmap, double cx, double cy, double angleDeg,
                           const IChannelBlend* blend) override
    {
        if (!mCr || !bitmap.mRaster) return;
        const int frameH = bitmap.FrameH();
        cairo_save(mCr);
        cairo_translate(mCr, cx, cy);
        cairo_rotate(mCr, angleDeg * std::numbers::pi / 180.0);
        cairo_translate(mCr, -bitmap.W / 2.0, -frameH / 2.0);
        cairo_rectangle(mCr, 0, 0, bitmap.W, frameH);
        cairo_clip(mCr);
        PaintImage(*bitmap.mRaster, blend);
        cairo_restore(mCr);
    }

  private:
    void Release()
    {
        if (mCr) cairo_destroy(mCr);
        if (mSurface) cairo_surface_destroy(mSurface);
        mCr = nullptr;
        mSurface = nullptr;
    }

    void RoundRectPath(double x, double y, double w, double h, double r)
    {
        r = std::min({r, w / 2.0, h / 2.0});
        const double pi = std::numbers::pi;
        cairo_new_sub_path(mCr);
        cairo_arc(mCr, x + w - r, y + r, r, -pi / 2, 0);
        cairo_arc(mCr, x + w - r, y + h - r, r, 0, pi / 2);
        cairo_arc(mCr, x + r, y + h - r, r, pi / 2, pi);
        cairo_arc(mCr, x + r, y + r, r, pi, 3 * pi / 2);
        cairo_close_path(mCr);
    }

    void SelectFont(const IText& text)
    {
        cairo_select_font_face(
            mCr, FontFamilyFor(text.mFont),
            (text.mStyle & IText::kStyleItalic) ? CAIRO_FONT_SLANT_ITALIC : CAIRO_FONT_SLANT_NORMAL,
            (text.mStyle & IText::kStyleBold) ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
        cairo_set_font_size(mCr, text.mSize);
    }

    // Paints the whole image at the current origin: the 2x twin at half size on a fine surface.
    void PaintImage(const RasterImage& image, const IChannelBlend* blend)
    {
        cairo_surface_t* src = image.mSurface1x;
        if (mScale > 1.01 && image.mSurface2x)
        {
            src = image.mSurface2x;
            cairo_scale(mCr, 0.5, 0.5);
        }
        cairo_set_source_surface(mCr, src, 0, 0);
        cairo_pattern_set_filter(cairo_get_source(mCr), CAIRO_FILTER_GOOD);
        const IChannelBlend::EBlendMode mode = blend ? blend->mMode : IChannelBlend::kBlendNone;
        const double weight = blend ? std::clamp<double>(blend->mWeight, 0.0, 1.0) : 1.0;
        switch (mode)
        {
        case IChannelBlend::kBlendNone:
            cairo_paint(mCr);
            break;
        case IChannelBlend::kBlendAdd:
            cairo_set_operator(mCr, CAIRO_OPERATOR_ADD);
            cairo_paint_with_alpha(mCr, weight);
            break;
        case IChannelBlend::kBlendScale:
            cairo_paint_with_alpha(mCr, weight);
            break;
        }
    }

    cairo_surface_t* mSurface = nullptr;
    cairo_t* mCr = nullptr;
    double mScale = 1.0;
};
} // namespace

std::unique_ptr<IRaster> MakeCairoRaster()
{
    return std::make_unique<CairoRaster>();
}

namespace
{
// Decoded images shared by every editor of the process: a second instance of the plug-in costs
// no decoding and no memory for its bitmaps. Only editors on UI threads get here.
std::mutex gImageCacheMutex;
std::map<std::string, std::weak_ptr<const RasterImage>> gImageCache;
} // namespace

std::shared_ptr<const RasterImage> LoadRasterImage(const std::string& dir, const std::string& name)
{
    const std::string key = dir + "/" + name;
    std::lock_guard lock(gImageCacheMutex);
    if (auto cached = gImageCache[key].lock()) return cached;
    auto image = DecodeRasterImage(dir, name);
    if (image) gImageCache[key] = image;
    return image;
}

std::shared_ptr<const RasterImage> DecodeRasterImage(const std::string& dir, const std::string& name)
{
    cairo_surface_t* one = ReadPng(dir + "/" + name + ".png");
    if (!one) return nullptr;
    auto image = std::make_shared<RasterImage>();
    image->mSurface1x = one;
    image->mW = cairo_image_surface_get_width(one);
    image->mH = cairo_image_surface_get_height(one);
    // A twin of another size than double would draw misplaced: it is left out.
    cairo_surface_t* two = ReadPng(dir + "/" + name + "@2x.png");
    if (two && cairo_image_surface_get_width(two) == 2 * image->mW &&
        cairo_image_surface_get_height(two) == 2 * image->mH)
        image->mSurface2x = two;
    else if (two)
        cairo_surface_destroy(two);
    return image;
}

void RasterImageSize(const RasterImage* image, int& w, int& h)
{
    w = image ? image->mW : 0;
    h = image ? image->mH : 0;
}

const char* FontFamilyFor(const char* fontName)
{
    if (!fontName) return kFontAliases[0].mFamily;
    for (const FontAlias& alias : kFontAliases)
        if (std::strcmp(alias.mName, fontName) == 0) return alias.mFamily;
    return fontName;
}
