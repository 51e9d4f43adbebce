#pragma once
// Conversions between the UTF-16 texts of VST 3 (titles, units, value texts) and UTF-8.

#include "pluginterfaces/base/ftypes.h"

#include <string>
#include <string_view>

namespace vst3host
{
std::string ToUtf8(const Steinberg::char16* text);
std::u16string ToUtf16(std::string_view text);
} // namespace vst3host
