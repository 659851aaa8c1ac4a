#include "platform/platformtext.h"

#include <gtest/gtest.h>

namespace {

TEST(PlatformTextTest, Utf8AndUtf16GoBothWaysWithSupplementaryCharacters)
{
    const std::u16string text(u"a\0\u00e4\u20ac\U0001F600", 6);
    const std::string utf8("a\0\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80", 11);
    EXPECT_EQ(platform::ToUtf8(text), utf8);
    EXPECT_EQ(platform::FromUtf8(utf8), text);
    EXPECT_EQ(platform::FromWide(platform::ToWide(text)), text);
    EXPECT_EQ(platform::FromWide(L"\u00e4\U0001F600"), u"\u00e4\U0001F600");
}

TEST(PlatformTextTest, MalformedTextBecomesReplacementCharacters)
{
    const std::u16string halves{ 0xDC00, u'a', 0xD800, u'b', 0xD83D };
    EXPECT_EQ(platform::ToUtf8(halves), "\xef\xbf\xbd\x61\xef\xbf\xbd\x62\xef\xbf\xbd");

    EXPECT_EQ(platform::FromUtf8("a\xff\x62"), u"a\uFFFDb");
    EXPECT_EQ(platform::FromUtf8("a\xf0\x9f\x98"), u"a\uFFFD"); // cut inside a character
    EXPECT_EQ(platform::FromUtf8("\xed\xa0\x80"), u"\uFFFD"); // a surrogate in UTF-8
    EXPECT_EQ(platform::FromUtf8("\xc0\x80").find(u'\0'), std::u16string::npos); // overlong zero
}

} // namespace
