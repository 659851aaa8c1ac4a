#include "groundwork/cstring.h"

#include <gtest/gtest.h>

#include <string>

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
    CString text = null;
    EXPECT_TRUE(text == null);
    text += null;
    text += L"b";
    text += u'c';
    EXPECT_EQ(text, std::u16string(u"bc"));
    EXPECT_GT(text, null);
    EXPECT_GT(text.Compare(null), 0);
    EXPECT_TRUE(CString(static_cast<const wchar_t*>(nullptr)).IsEmpty());
    EXPECT_EQ(text.Find(null), 0u);
    EXPECT_EQ(CString(std::wstring(L"a\U0001F600")).Find(L"\U0001F600"), 1u);
}

} // namespace
