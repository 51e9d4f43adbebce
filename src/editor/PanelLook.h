#pragma once
// The body of a page's panels: a vertical gradient from the panel's top to its bottom. The art
// generator paints it; a control that covers an unused part of a panel paints the same pixels.

#include <cstdint>

inline constexpr std::uint32_t kPanelBodyTop = 0x1D2129;
inline constexpr std::uint32_t kPanelBodyBottom = 0x16191F;
