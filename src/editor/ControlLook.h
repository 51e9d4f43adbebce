#pragma once
// The drawn parts that the custom controls share: knob and button faces for when a bitmap is
// missing, the accent rings, and the fixed dark tones around them. Drawing goes through the
// editor's raster only; everything is in layout pixels.
// UI thread only.

#include "editor/IGraphicsTypes.h"

class IGraphics;

namespace controllook
{
inline constexpr IColor kFace = IColor::FromRGB(0x252A34);
inline constexpr IColor kFaceEdge = IColor::FromRGB(0x3A4150);
inline constexpr IColor kWell = IColor::FromRGB(0x0E1116);
inline constexpr IColor kText = IColor::FromRGB(0xE6E9EF);
inline constexpr IColor kDimText = IColor::FromRGB(0x8A93A4);
// Opacity a grayed control keeps.
inline constexpr float kGrayedWeight = 0.35f;

// The colour at a fraction of its opacity.
constexpr IColor Faded(const IColor& c, float weight)
{
    const float w = weight < 0.0f ? 0.0f : (weight > 1.0f ? 1.0f : weight);
    return c.WithAlpha(static_cast<int>(c.A * w + 0.5f));
}
// A rectangle grown by d on every side.
constexpr IRECT Grow(const IRECT& r, int d)
{
    return r.Inset(-d);
}
// Knob sweep: from -135 to +135 degrees about twelve o'clock.
double KnobAngle(double value);

// A round knob face with a pointer at the value's angle.
void DrawKnobFace(IGraphics* graphics, const IRECT& r, double value, float weight);
// A rounded push button; `lit` fills its centre with the accent.
void DrawButtonFace(IGraphics* graphics, const IRECT& r, bool lit, const IColor& accent);
// A round button; `lit` fills its centre with the accent.
void DrawRoundFace(IGraphics* graphics, const IRECT& r, bool lit, const IColor& accent);
// A ring about the centre of r, of radius half the smaller side less half the width.
void DrawRing(IGraphics* graphics, const IRECT& r, const IColor& color, float width);
// A frame of `width` pixels just inside r.
void DrawFrame(IGraphics* graphics, const IRECT& r, const IColor& color, int width);
} // namespace controllook
