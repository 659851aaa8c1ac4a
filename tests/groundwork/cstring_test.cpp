#include "groundwork/cstring.h"

#include <gtest/gtest.h>

namespace {

TEST(CStringTest, OrdersByUnitSoThatSurrogatesComeBeforeTheLastOfThePlane)
{
    const CString emoji = u"\U0001F600";
    const CString wave = u"\uFF5E";
    EXPECT_EQ(emoji.GetLength(), 2u);
    EXPECT_LT(emoji, wave);
    EXPECT_LT(emoji.Compare(wave), 0);
    EXPECT_LT(CStringA("z"), CStringA("\xe4")); // bytes are unsigned
}

TEST(CStringTest, WideTextIsTheSameText)
{
    EXPECT_EQ(CString(L"Gr\u00f6\u00dfe \U0001F600"), u"Gr\u00f6\u00dfe \U0001F600");
    const std::wstring wide = CString(u"a\U0001F600").ToWide();
    EXPECT_EQ(wide, L"a\U0001F600");
    EXPECT_EQ(CString(wide).Find(L"\U0001F600"), 1u);
    EXPECT_EQ(CString::FromUtf8("\xc3\xa4").ToCodePage(), "\xc3\xa4");
    EXPECT_TRUE(CString(static_cast<const wchar_t*>(nullptr)).IsEmpty());
}

TEST(CStringTest, AppendsItselfAndCutsWithoutReadingBeyondItsEnds)
{
    CString text = u"abc";
    text += text;
    EXPECT_EQ(text, u"abcabc");
    EXPECT_EQ(text.Mid(4), u"bc");
    EXPECT_TRUE(text.Mid(6).IsEmpty() && text.Mid(100, 5).IsEmpty());
    EXPECT_EQ(text.Left(100), text);
    EXPECT_EQ(CString(u"a\0b", 3).GetLength(), 3u);
}

TEST(CStringTest, NullIsTheEmptyTextEverywhere)
{
    const char16_t* null = nullptr;
    CString text = u"a";
    text += null;
    text += L"b";
    text += u'c';
    EXPECT_EQ(text, std::u16string(u"abc"));
    EXPECT_FALSE(text == null);
    EXPECT_TRUE(CString() == null);
    EXPECT_GT(text, null);
    EXPECT_GT(text.Compare(null), 0);
    EXPECT_EQ(text.Find(null), 0u);
}

} // namespace
