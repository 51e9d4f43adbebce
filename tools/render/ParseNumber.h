#pragma once
// Strict number parsing for the command line: the whole text must be one finite number.

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <string>

namespace render
{
inline bool ToNumber(const std::string& text, double& value)
{
    if (text.empty()) return false;
    char* end = nullptr;
    errno = 0;
    value = std::strtod(text.c_str(), &end);
    return errno == 0 && end == text.c_str() + text.size() && std::isfinite(value);
}
} // namespace render
