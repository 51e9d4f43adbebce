#pragma once
// The drawing surface below the toolkit: one offscreen raster of the window's size in device
// pixels, drawn in layout pixels (the scale is applied here and nowhere above). UI thread only.

#include <cstdint>
#include <memory>
#include <string>

#include "editor/IGraphicsTypes.h"

class IRaster
{
  public:
    virtual ~IRaster() = default;

    // A new surface of w x h layout pixels at `scale` device pixels each; contents cleared.
    virtual bool Resize(int w, int h, double scale) = 0;
    virtual double Scale() const = 0;
    // Device pixels, premultiplied ARGB, rows of Stride() bytes.
    virtual const std::uint32_t* Pixels() = 0;
    virtual int DeviceWidth() const = 0;
    virtual int DeviceHeight() const = 0;
    virtual int Stride() const = 0;
    // Writes the device pixels as a PNG file; false on failure.
    virtual bool SavePNG(const std::string& path) = 0;

    // Drawing is limited to r until the matching PopClip.
    virtual void PushClip(const IRECT& r) = 0;
    virtual void PopClip() = 0;

    virtual void FillRect(const IColor& color, const IRECT& r) = 0;
    virtual void FillRoundRect(const IColor& color, const IRECT& r, double radius) = 0;
    // Fills r with the part of a vertical gradient that runs from `top` at y0 to `bottom` at y1.
    virtual void FillVerticalGradient(const IColor& top, const IColor& bottom, double y0, double y1,
                                      const IRECT& r) = 0;
    // A one-pixel outline inside r.
    virtual void DrawRect(const IColor& color, const IRECT& r) = 0;
    virtual void DrawLine(const IColor& color, double x1, double y1, double x2, double y2,
                          double width = 1.0) = 0;
    virtual void FillCircle(const IColor& color, double cx, double cy, double radius) = 0;
    // Angles in degrees, 0 at twelve o'clock, growing clockwise.
    virtual void DrawArc(const IColor& color, double cx, double cy, double radius, double fromDeg,
                         double toDeg, double width) = 0;

    // Text in the style's font and size, aligned in r and centred vertically.
    virtual void DrawText(const IText& text, const char* str, const IRECT& r) = 0;
    // Width and height the text takes, in layout pixels (rounded up).
    virtual IRECT MeasureText(const IText& text, const char* str) = 0;

    // Frame `frame` (1-based) of the strip into dest, with the blend.
    virtual void DrawBitmap(const IBitmap& bitmap, const IRECT& dest, int frame,
                            const IChannelBlend* blend) = 0;
    // The first frame turned by angleDeg about its centre, drawn centred on (cx, cy).
    virtual void DrawRotatedBitmap(const IBitmap& bitmap, double cx, double cy, double angleDeg,
                                   const IChannelBlend* blend) = 0;
};

// The cairo raster (ARGB32 image surface).
std::unique_ptr<IRaster> MakeCairoRaster();

// Decodes "<dir>/<name>.png" and, if present, its double-resolution twin "<dir>/<name>@2x.png".
// Null when the 1x file can't be read: such a bitmap draws nothing, and nobody is alarmed.
// An image already decoded for another editor is shared, not decoded again.
std::shared_ptr<const RasterImage> LoadRasterImage(const std::string& dir, const std::string& name);
// Always decodes the files.
std::shared_ptr<const RasterImage> DecodeRasterImage(const std::string& dir, const std::string& name);

// Size of a decoded image at 100 %, or 0 x 0 for null.
void RasterImageSize(const RasterImage* image, int& w, int& h);

// The installed font that stands in for a font name of the text styles.
const char* FontFamilyFor(const char* fontName);
