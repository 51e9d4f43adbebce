// Text between our UTF-8 and the host's UTF-16 fields: what fits, what is cut, what is malformed.

#include "host/HostText.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::u16string Read(const Steinberg::char16* s)
{
    return std::u16string(reinterpret_cast<const char16_t*>(s));
}

TEST(HostText, WidensOneTwoThreeAndFourByteCharacters)
{
    Steinberg::char16 out[32];
    WidenText("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z", out, 32); // a ä € 😀 z
    EXPECT_EQ(Read(out), u"a\u00E4\u20AC\U0001F600z");
    EXPECT_EQ(NarrowText(out, 32), "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z");
}

TEST(HostText, CutsAtCapacityWithoutSplittingACharacter)
{
    Steinberg::char16 out[4];
    WidenText("abcdef", out, 4);
    EXPECT_EQ(Read(out), u"abc");
    // Two units left, the emoji needs two plus the terminator: it is left out whole.
    WidenText("ab\xF0\x9F\x98\x80", out, 4);
    EXPECT_EQ(Read(out), u"ab");
    WidenText("anything", out, 1);
    EXPECT_EQ(out[0], 0);
    // NarrowText stops at its unit limit as well as at the terminator.
    Steinberg::char16 wide[] = u"hello";
    EXPECT_EQ(NarrowText(wide, 3), "hel");
}

TEST(HostText, MalformedInputBecomesReplacementCharacters)
{
    Steinberg::char16 out[16];
    WidenText("x\xC3", out, 16); // lead byte without its continuation
    EXPECT_EQ(Read(out), u"x\uFFFD");
    WidenText("\xFFy", out, 16);
    EXPECT_EQ(Read(out), u"\uFFFDy");
    Steinberg::char16 lone[] = {0xD800, u'q', 0};
    EXPECT_EQ(NarrowText(lone, 8), "\xEF\xBF\xBDq");
}
} // namespace
