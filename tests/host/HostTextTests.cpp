// Text between our UTF-8 and the host's UTF-16 fields: what fits, what is cut, what is malformed.

#include "host/HostText.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
TEST(HostText, WhatFitsWholeWhatIsCutAndWhatIsMalformed)
{
    const struct
    {
        const char* utf8;
        int capacity;
        std::u16string wide;
    } rows[] = {
        {"a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z", 32, u"a\u00E4\u20AC\U0001F600z"}, // a ä € 😀 z
        {"abcdef", 4, u"abc"},
        // Two units left, the emoji needs two plus the terminator: it is left out whole.
        {"ab\xF0\x9F\x98\x80", 4, u"ab"},
        {"x\xC3", 16, u"x\uFFFD"}, // lead byte without its continuation
        {"\xFFy", 16, u"\uFFFDy"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.utf8);
        Steinberg::char16 out[32];
        WidenText(row.utf8, out, row.capacity);
        EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(out)), row.wide);
    }
    // Back to UTF-8, stopping at the unit limit and replacing lone surrogates.
    Steinberg::char16 out[32];
    WidenText(rows[0].utf8, out, 32);
    EXPECT_EQ(NarrowText(out, 32), rows[0].utf8);
    EXPECT_EQ(NarrowText(out, 3), "a\xC3\xA4\xE2\x82\xAC");
    Steinberg::char16 lone[] = {0xD800, u'q', 0};
    EXPECT_EQ(NarrowText(lone, 8), "\xEF\xBF\xBDq");
}
} // namespace
