#pragma once
// Drawing helpers of the art generator: the palette of the Quorvex look and the shapes its
// bitmaps and background are made of. Everything is drawn in 100 % pixels; the caller's cairo
// context carries the scale, so the same code renders the 1x and 2x files.

#include <cairo.h>

#include <cstdint>

namespace art
{
// The palette: near-black blue-greys for surfaces, cool light greys for text and marks.
// Accent colours are not baked in: the editor draws them live in the colour set's roles.
namespace palette
{
inline constexpr std::uint32_t kWindowTop = 0x16191F;
inline constexpr std::uint32_t kWindowBottom = 0x0E1014;
inline constexpr std::uint32_t kBar = 0x1A1D24;
inline constexpr std::uint32_t kStage = 0x13161B;
inline constexpr std::uint32_t kPanelTitle = 0x22262F;
inline constexpr std::uint32_t kBorder = 0x2B303B;
inline constexpr std::uint32_t kHairline = 0x252A34;
inline constexpr std::uint32_t kTitleText = 0x9AA3B5;
inline constexpr std::uint32_t kLabelText = 0xB8BFCC;
inline constexpr std::uint32_t kDimText = 0x8A93A4;
inline constexpr std::uint32_t kBrightText = 0xE8EBF0;
inline constexpr std::uint32_t kField = 0x0F1217;
inline constexpr std::uint32_t kFieldBorder = 0x2F3541;
inline constexpr std::uint32_t kGroove = 0x0A0B0E;
inline constexpr std::uint32_t kTick = 0x3B414D;
inline constexpr std::uint32_t kTickBright = 0x6C7485;
inline constexpr std::uint32_t kButton = 0x23272F;
inline constexpr std::uint32_t kButtonBorder = 0x373D49;
inline constexpr std::uint32_t kButtonOn = 0xDDE2EA;
inline constexpr std::uint32_t kPointer = 0xF3F5F8;
} // namespace palette

void SetRGB(cairo_t* cr, std::uint32_t rgb, double alpha = 1.0);
void AddStopRGB(cairo_pattern_t* pattern, double offset, std::uint32_t rgb);
void RoundRect(cairo_t* cr, double x, double y, double w, double h, double r);
// Text in the generator's font ("BetecknaGS" of fonts-beteckna, the stand-in for "Futura";
// the plain "Beteckna" face lacks punctuation), centred in the box
// (align -1 left, 0 centre, 1 right), optionally letter-spaced.
void Text(cairo_t* cr, const char* text, double x, double y, double w, double h, double size,
          std::uint32_t rgb, int align = 0, double tracking = 0.0, bool bold = true);
// Angle of a knob position in cairo radians: -135 to +135 degrees about twelve o'clock.
double KnobAngle(double value);
double DegToCairo(double degFromTop);
} // namespace art
