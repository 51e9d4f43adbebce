#include "host/HostText.h"

namespace
{
// Next code point of UTF-8 text from pos; pos moves on. Malformed bytes give 0xFFFD, one byte each.
char32_t DecodeUtf8(std::string_view text, size_t& pos)
{
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(pos);
    int extra = 0;
    char32_t cp = 0;
    if (lead < 0x80)
    {
        ++pos;
        return lead;
    }
    if ((lead & 0xE0) == 0xC0)
    {
        extra = 1;
        cp = lead & 0x1F;
    }
    else if ((lead & 0xF0) == 0xE0)
    {
        extra = 2;
        cp = lead & 0x0F;
    }
    else if ((lead & 0xF8) == 0xF0)
    {
        extra = 3;
        cp = lead & 0x07;
    }
    else
    {
        ++pos;
        return 0xFFFD;
    }
    if (pos + static_cast<size_t>(extra) >= text.size())
    {
        ++pos;
        return 0xFFFD;
    }
    for (int i = 1; i <= extra; ++i)
    {
        const unsigned char next = byte(pos + static_cast<size_t>(i));
        if ((next & 0xC0) != 0x80)
        {
            ++pos;
            return 0xFFFD;
        }
        cp = (cp << 6) | (next & 0x3F);
    }
    pos += static_cast<size_t>(extra) + 1;
    return cp > 0x10FFFF ? 0xFFFD : cp;
}

void AppendUtf8(std::string& out, char32_t cp)
{
    if (cp < 0x80)
        out += static_cast<char>(cp);
    else if (cp < 0x800)
    {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
    else if (cp < 0x10000)
    {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
    else
    {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}
} // namespace

void WidenText(std::string_view text, Steinberg::char16* dst, int capacity)
{
    if (!dst || capacity <= 0) return;
    int used = 0;
    size_t pos = 0;
    while (pos < text.size())
    {
        const char32_t cp = DecodeUtf8(text, pos);
        if (cp == 0) break;
        const int units = cp >= 0x10000 ? 2 : 1;
        if (used + units > capacity - 1) break;
        if (units == 2)
        {
            const char32_t v = cp - 0x10000;
            dst[used++] = static_cast<Steinberg::char16>(0xD800 + (v >> 10));
            dst[used++] = static_cast<Steinberg::char16>(0xDC00 + (v & 0x3FF));
        }
        else
            dst[used++] = static_cast<Steinberg::char16>(cp);
    }
    dst[used] = 0;
}

std::string NarrowText(const Steinberg::char16* src, int maxUnits)
{
    std::string out;
    if (!src) return out;
    for (int i = 0; i < maxUnits && src[i] != 0; ++i)
    {
        char32_t cp = src[i];
        if (cp >= 0xD800 && cp < 0xDC00 && i + 1 < maxUnits && src[i + 1] >= 0xDC00 && src[i + 1] < 0xE000)
        {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (static_cast<char32_t>(src[i + 1]) - 0xDC00);
            ++i;
        }
        else if (cp >= 0xD800 && cp < 0xE000)
            cp = 0xFFFD;
        AppendUtf8(out, cp);
    }
    return out;
}
