#pragma once
// Text between our UTF-8 strings and the host's UTF-16 fields (String128 and the like).
// Pure functions, any thread, no allocation beyond the returned string.

#include "pluginterfaces/base/ftypes.h"

#include <string>
#include <string_view>

// Writes text into dst, at most capacity - 1 UTF-16 units and a terminator; a character that would
// not fit whole is left out, as is malformed UTF-8.
void WidenText(std::string_view text, Steinberg::char16* dst, int capacity);

// Reads at most maxUnits UTF-16 units of src (up to its terminator) as UTF-8.
std::string NarrowText(const Steinberg::char16* src, int maxUnits);
