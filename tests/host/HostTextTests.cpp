// Text between our UTF-8 and the host's UTF-16 fields: what fits, what is cut, what is malformed.

#include "host/HostText.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace
{
TEST(HostText, WhatFitsWholeWhatIsCutAndWhatIsMalformed)
{
    // {UTF-8, units of room, what the host's field holds}
    const std::tuple<const char*, int, std::u16string> rows[] = {
        {"a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z", 32, u"a\u00E4\u20AC\U0001F600z"}, // a ä € 😀 z
        {"abcdef", 4, u"abc"},
        // Two units left, the emoji needs two plus the terminator: it is left out whole.
        {"ab\xF0\x9F\x98\x80", 4, u"ab"},
        {"x\xC3", 16, u"x\uFFFD"}, // lead byte without its continuation
        {"\xFFy", 16, u"\uFFFDy"},
    };
    Steinberg::char16 out[32];
    for (const auto& [utf8, capacity, wide] : rows)
    {
        WidenText(utf8, out, capacity);
        EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(out)), wide) << utf8;
    }
    // Back to UTF-8, stopping at the unit limit and replacing lone surrogates.
    WidenText(std::get<0>(rows[0]), out, 32);
    EXPECT_EQ(NarrowText(out, 32), std::get<0>(rows[0]));
    EXPECT_EQ(NarrowText(out, 3), "a\xC3\xA4\xE2\x82\xAC");
    Steinberg::char16 lone[] = {0xD800, u'q', 0};
    EXPECT_EQ(NarrowText(lone, 8), "\xEF\xBF\xBDq");
}
} // namespace
