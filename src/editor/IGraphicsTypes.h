#pragma once
// Plain value types of the editor toolkit: rectangles in layout pixels, colours, blend modes,
// text styles, mouse modifiers and key codes. Layout pixels are those of the 1240 x 620 window at
// 100 %; the scale of the screen is applied below the toolkit, so no control ever sees it.

#include <algorithm>
#include <cstdint>
#include <memory>

// A rectangle with integer edges; R and B lie outside it.
struct IRECT
{
    int L = 0, T = 0, R = 0, B = 0;

    constexpr IRECT() = default;
    constexpr IRECT(int l, int t, int r, int b) : L(l), T(t), R(r), B(b) {}
    static constexpr IRECT FromSize(int x, int y, int w, int h) { return IRECT(x, y, x + w, y + h); }

    constexpr int W() const { return R - L; }
    constexpr int H() const { return B - T; }
    constexpr bool Empty() const { return R <= L || B <= T; }
    constexpr bool Contains(int x, int y) const { return x >= L && x < R && y >= T && y < B; }
    constexpr bool Intersects(const IRECT& o) const
    {
        return !Empty() && !o.Empty() && L < o.R && o.L < R && T < o.B && o.T < B;
    }
    // The smallest rectangle holding both; an empty side counts as nothing.
    constexpr IRECT Union(const IRECT& o) const
    {
        if (Empty()) return o;
        if (o.Empty()) return *this;
        return IRECT(std::min(L, o.L), std::min(T, o.T), std::max(R, o.R), std::max(B, o.B));
    }
    constexpr IRECT Intersect(const IRECT& o) const
    {
        IRECT r(std::max(L, o.L), std::max(T, o.T), std::min(R, o.R), std::min(B, o.B));
        return r.Empty() ? IRECT() : r;
    }
    constexpr IRECT Inset(int d) const { return IRECT(L + d, T + d, R - d, B - d); }
    constexpr IRECT Shift(int dx, int dy) const { return IRECT(L + dx, T + dy, R + dx, B + dy); }
    constexpr bool operator==(const IRECT&) const = default;
};

// Four 8-bit channels; alpha 255 is opaque.
struct IColor
{
    int A = 255, R = 0, G = 0, B = 0;

    constexpr IColor() = default;
    constexpr IColor(int a, int r, int g, int b) : A(a), R(r), G(g), B(b) {}
    static constexpr IColor FromRGB(std::uint32_t rgb, int alpha = 255)
    {
        return IColor(alpha, static_cast<int>((rgb >> 16) & 0xFF), static_cast<int>((rgb >> 8) & 0xFF),
                      static_cast<int>(rgb & 0xFF));
    }
    constexpr IColor WithAlpha(int a) const { return IColor(a, R, G, B); }
    constexpr bool operator==(const IColor&) const = default;
};

// How a bitmap meets what lies below it: None copies (through the bitmap's own alpha), Add adds
// the pixels, Scale lays them over at the given weight.
struct IChannelBlend
{
    enum EBlendMode
    {
        kBlendNone = 0,
        kBlendAdd = 1,
        kBlendScale = 2
    };
    EBlendMode mMode = kBlendNone;
    float mWeight = 1.0f;

    constexpr IChannelBlend() = default;
    constexpr IChannelBlend(EBlendMode mode, float weight = 1.0f) : mMode(mode), mWeight(weight) {}
};

// A text style. The colour is a pointer so that a style follows its colour role slot.
struct IText
{
    enum EStyle
    {
        kStyleNormal = 0,
        kStyleBold = 1,
        kStyleItalic = 2
    };
    enum EAlign
    {
        kAlignNear = 0,
        kAlignCenter = 1,
        kAlignFar = 2
    };
    int mSize = 12;
    const IColor* mColor = nullptr; // null draws in white
    const char* mFont = "Futura";
    EStyle mStyle = kStyleNormal;
    EAlign mAlign = kAlignCenter;
};

// Opaque decoded image of a bitmap (both resolutions); the raster back end defines it.
struct RasterImage;

// A bitmap strip: frames stacked vertically, W x H the whole strip at 100 %. A bitmap without a
// raster (not found, not decodable) keeps its size and frame count and draws nothing.
struct IBitmap
{
    std::shared_ptr<const RasterImage> mRaster;
    int W = 0;
    int H = 0;
    int N = 1; // frames
    int FrameH() const { return N > 0 ? H / N : H; }
};

// Mouse buttons and keyboard modifiers of one mouse event.
struct IMouseMod
{
    bool L = false, R = false, S = false, C = false, A = false;
};

// Key codes of OnKeyDown: printable characters are their Unicode code point, the rest these.
enum EKey
{
    kKeyNone = 0,
    kKeyBackspace = 0x110000,
    kKeyTab,
    kKeyEnter,
    kKeyEscape,
    kKeyDelete,
    kKeyLeft,
    kKeyRight,
    kKeyUp,
    kKeyDown,
    kKeyHome,
    kKeyEnd,
    kKeyPageUp,
    kKeyPageDown
};
