#include "Utf16.h"

namespace vst3host
{
namespace
{
void AppendUtf8(std::string& out, char32_t c)
{
    if (c < 0x80)
        out += static_cast<char>(c);
    else if (c < 0x800)
    {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
    else if (c < 0x10000)
    {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
    else
    {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}
} // namespace

std::string ToUtf8(const Steinberg::char16* text)
{
    std::string out;
    for (const Steinberg::char16* p = text; p && *p; ++p)
    {
        char32_t c = static_cast<char16_t>(*p);
        if (c >= 0xD800 && c < 0xDC00 && p[1] >= 0xDC00 && p[1] < 0xE000)
        {
            c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char16_t>(p[1]) - 0xDC00);
            ++p;
        }
        AppendUtf8(out, c);
    }
    return out;
}

std::u16string ToUtf16(std::string_view text)
{
    std::u16string out;
    for (size_t i = 0; i < text.size();)
    {
        const auto lead = static_cast<unsigned char>(text[i]);
        const int extra = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        char32_t c = extra == 0 ? lead : lead & (0x3F >> extra);
        for (int k = 1; k <= extra && i + k < text.size(); ++k)
            c = (c << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
        i += static_cast<size_t>(extra) + 1;
        if (c >= 0x10000)
        {
            out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
        else
            out += static_cast<char16_t>(c);
    }
    return out;
}
} // namespace vst3host
