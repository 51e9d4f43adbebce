#pragma once
// The fixed colours of the toolkit's own overlays (menus, text boxes, tooltips, message box, save
// prompt): the same dark panels in every colour set; only their accents follow the set.

#include "editor/IGraphicsTypes.h"

namespace overlaylook
{
inline constexpr IColor kPanel = IColor::FromRGB(0x1A1E26);
inline constexpr IColor kBorder = IColor::FromRGB(0x3A4150);
inline constexpr IColor kDisabledText = IColor::FromRGB(0x69707E);
inline constexpr IColor kFieldBg = IColor::FromRGB(0x0E1116);
inline constexpr IColor kShadow = IColor(90, 0, 0, 0);
inline constexpr IColor kButton = IColor::FromRGB(0x2A303B);
inline constexpr IColor kButtonHover = IColor::FromRGB(0x353D4A);
} // namespace overlaylook
