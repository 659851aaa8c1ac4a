#include "groundwork/tuexceptions.h"
#include "support/expectfailure.h"
#include "support/temporaryfolder.h"
#include "tabase/tastreamreadasciifile.h"
#include "tabase/tastreamreadasciistring.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

static_assert(!std::is_constructible_v<TaStreamReadASCIIString, CStringA&&>,
    "a reader refers to its text, which a temporary would take with it");
static_assert(!std::is_constructible_v<TaStreamReadASCIIString, const char*>);

namespace {

/// A source that reports its end together with its last byte, as a response of a server does.
class EagerSource final : public TaStreamReadASCII
{
public:
    explicit EagerSource(std::string text)
        : m_text(std::move(text))
    {
    }

private:
    bool read(char& c) override
    {
        if (m_position < m_text.size()) {
            c = m_text[m_position++];
        }
        return m_position >= m_text.size();
    }

    std::string m_text;
    std::size_t m_position = 0;
};

/// Reads one value from the front of `text`.
template <class Target> Target readFrom(std::string_view text)
{
    const CStringA source(text);
    TaStreamReadASCIIString stream(source);
    Target value{};
    stream >> value;
    return value;
}

/// Expects that `word` is refused as a Target with the stated line; the target stays, the word is
/// gone.
template <class Target> void expectRefused(std::string_view word, unsigned int line)
{
    SCOPED_TRACE(word);
    const CStringA source(std::string(word) + " 17");
    TaStreamReadASCIIString stream(source);
    Target value{ 1 };
    ExpectFailure<TuExceptionStream>(
        [&] { stream >> value; }, u"core/talibraries/tabase/tastreamreadascii", line);
    EXPECT_EQ(value, Target{ 1 });
    int next = 0;
    stream >> next;
    EXPECT_EQ(next, 17);
}

template <class Source> std::string lineFrom(Source& stream)
{
    CStringA line("stale");
    stream >> line;
    return std::string(line.GetView());
}

TEST(TaStreamReadASCIITest, WordsAndLinesShareTheirLineEnds)
{
    const CStringA text("12 34\r\nab\r\n");
    TaStreamReadASCIIString stream(text);
    int first = 0;
    int second = 0;
    stream >> first >> second;
    EXPECT_EQ(first, 12);
    EXPECT_EQ(second, 34);
    EXPECT_EQ(lineFrom(stream), "\n"); // the word took the CR with it
    EXPECT_EQ(lineFrom(stream), "ab");
    EXPECT_FALSE(stream.IsEndOfStream());
    EXPECT_EQ(lineFrom(stream), "");
    EXPECT_TRUE(stream.IsEndOfStream());
}

TEST(TaStreamReadASCIITest, ALineFeedStaysAndACarriageReturnSwallowsOneByte)
{
    const CStringA text("ab\ncd\n\rxef\r\rgh\r");
    TaStreamReadASCIIString stream(text);
    EXPECT_EQ(lineFrom(stream), "ab\n");
    EXPECT_EQ(lineFrom(stream), "cd\n");
    EXPECT_EQ(lineFrom(stream), ""); // the lone CR ends a line and takes the x
    EXPECT_EQ(lineFrom(stream), "ef");
    EXPECT_FALSE(stream.IsEndOfStream());
    EXPECT_EQ(lineFrom(stream), "gh");
    EXPECT_TRUE(stream.IsEndOfStream()); // the byte behind the CR was the end
}

TEST(TaStreamReadASCIITest, LinesHaveAnyLengthAndHoldAnyByte)
{
    for (const std::size_t length : { 0u, 1u, 126u, 127u, 128u, 253u, 254u, 255u, 1000u }) {
        std::string content(length, 'x');
        for (std::size_t i = 0; i < length; i += 3) {
            content[i] = static_cast<char>(i % 2 == 0 ? 0 : -1 - static_cast<int>(i % 50));
        }
        for (const char* end : { "\r\n", "\n", "" }) {
            const CStringA text(content + end);
            TaStreamReadASCIIString stream(text);
            EXPECT_EQ(lineFrom(stream), content + (*end == '\n' ? "\n" : "")) << length;
            EXPECT_EQ(stream.IsEndOfStream(), *end == '\0');
        }
    }
}

TEST(TaStreamReadASCIITest, WideLinesComeFromTheSystemCodePage)
{
    const CString wide(u"gr\u00fc\u00df \U0001F600");
    EXPECT_EQ(readFrom<CString>(wide.ToCodePage() + "\r\n"), wide);
    EXPECT_EQ(
        readFrom<CString>("a\xFFz"), CString::FromCodePage("a\xFFz")); // malformed, no failure
}

TEST(TaStreamReadASCIITest, NothingIsReadAfterTheEnd)
{
    constexpr char16_t kSource[] = u"core/talibraries/tabase/tastreamreadascii";
    const CStringA spaces(" \t\r\n ");
    TaStreamReadASCIIString stream(spaces);
    double number = 7.0;
    ExpectFailure<TuExceptionStream>([&] { stream >> number; }, kSource, 453);
    EXPECT_TRUE(stream.IsEndOfStream());
    ExpectFailure<TuExceptionStream>([&] { stream >> number; }, kSource, 441);
    EXPECT_EQ(number, 7.0);
    CStringA line("x");
    ExpectFailure<TuExceptionStream>([&] { stream >> line; }, kSource, 110);
    EXPECT_TRUE(line.IsEmpty());

    const CStringA last("5");
    TaStreamReadASCIIString word(last);
    int five = 0;
    word >> five; // a word that the end cuts off counts
    EXPECT_EQ(five, 5);
    EXPECT_TRUE(word.IsEndOfStream());

    TaStreamReadASCIIString copy(word);
    EXPECT_TRUE(copy.IsEndOfStream());
}

TEST(TaStreamReadASCIITest, AnEndWithTheLastByteBelongsToALineButNotToAWord)
{
    constexpr char16_t kSource[] = u"core/talibraries/tabase/tastreamreadascii";
    EagerSource lines("ab\r\ncd");
    EXPECT_EQ(lineFrom(lines), "ab");
    EXPECT_EQ(lineFrom(lines), "cd");
    EXPECT_TRUE(lines.IsEndOfStream());
    EagerSource carriageReturn("cd\r");
    EXPECT_EQ(lineFrom(carriageReturn), "cd\r"); // the end is looked at first
    EagerSource full(std::string(127, 'x') + "y");
    EXPECT_EQ(lineFrom(full), std::string(127, 'x') + "y");

    EagerSource words("12 345");
    int value = 0;
    words >> value;
    EXPECT_EQ(value, 12);
    words >> value;
    EXPECT_EQ(value, 34);
    EagerSource oneByte("12 3");
    oneByte >> value;
    ExpectFailure<TuExceptionStream>([&] { oneByte >> value; }, kSource, 453);
    EagerSource empty("");
    EXPECT_EQ(lineFrom(empty), "");
    EXPECT_TRUE(empty.IsEndOfStream());
}

TEST(TaStreamReadASCIITest, ShortIntegersAreWholeDecimalWordsInRange)
{
    EXPECT_EQ(readFrom<signed char>("-128"), -128);
    EXPECT_EQ(readFrom<signed char>("+65"), 65); // a number, not a character
    EXPECT_EQ(readFrom<short>("0032767"), 32767);
    EXPECT_EQ(readFrom<unsigned char>("255"), 255);
    EXPECT_EQ(readFrom<unsigned char>("-4294967295"), 1); // a minus wraps in 32 bits
    EXPECT_EQ(readFrom<unsigned short>("65535"), 65535);
    EXPECT_EQ(readFrom<short>("\v\f12"), 12); // no white space here, but for strtol

    expectRefused<signed char>("128", 50);
    expectRefused<signed char>("-129", 50);
    expectRefused<short>("99999999999999999999", 50);
    expectRefused<unsigned char>("256", 84);
    expectRefused<unsigned char>("-1", 84);
    expectRefused<unsigned char>("-4294967297", 84); // too large for a minus: it saturates
    expectRefused<unsigned short>("65536", 84);
    expectRefused<signed char>("300x", 43); // not a number comes before the range
    expectRefused<unsigned char>("300x", 77);
    for (const std::string_view word : { "a", "-", "+", "--1", "1.0", "0x10", "1-", "\v" }) {
        expectRefused<short>(word, 43);
        expectRefused<unsigned short>(word, 77);
        expectRefused<int>(word, 43);
        expectRefused<unsigned int>(word, 77);
    }
    expectRefused<int>(std::string_view("1\0", 2), 43);
}

TEST(TaStreamReadASCIITest, LongIntegersAreCutTo32Bits)
{
    EXPECT_EQ(readFrom<int>("3000000000"), 2147483647);
    EXPECT_EQ(readFrom<int>("99999999999"), 2147483647);
    EXPECT_EQ(readFrom<int>("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(readFrom<int>("-99999999999999999999999"), -2147483647 - 1);
    EXPECT_EQ(readFrom<int>("0010"), 10);
    EXPECT_EQ(readFrom<unsigned int>("-1"), 4294967295u);
    EXPECT_EQ(readFrom<unsigned int>("-2147483648"), 2147483648u);
    EXPECT_EQ(readFrom<unsigned int>("4294967296"), 4294967295u);
    EXPECT_EQ(readFrom<unsigned int>("-4294967296"), 4294967295u);
}

TEST(TaStreamReadASCIITest, SixtyFourBitIntegersAreReadFromTheFrontOfTheWord)
{
    EXPECT_EQ(readFrom<long long>("0x10"), 16);
    EXPECT_EQ(readFrom<long long>("-0XfFg"), -255);
    EXPECT_EQ(readFrom<long long>("12abc"), 12);
    EXPECT_EQ(readFrom<long long>("017"), 15);
    EXPECT_EQ(readFrom<long long>("08"), 0);
    EXPECT_EQ(readFrom<long long>("0x"), 0);
    EXPECT_EQ(readFrom<long long>("+5.9"), 5);
    EXPECT_EQ(readFrom<long long>("-9223372036854775808"), std::numeric_limits<long long>::min());
    EXPECT_EQ(readFrom<long long>("9223372036854775808"), std::numeric_limits<long long>::max());
    EXPECT_EQ(readFrom<long long>("-99999999999999999999"), std::numeric_limits<long long>::min());
    EXPECT_EQ(readFrom<unsigned long long>("0x10"), 0u);
    EXPECT_EQ(readFrom<unsigned long long>("010"), 10u);
    EXPECT_EQ(readFrom<unsigned long long>("18446744073709551615,"), ~0ull);
    EXPECT_EQ(readFrom<unsigned long long>("99999999999999999999"), ~0ull);
    EXPECT_EQ(readFrom<unsigned long long>("-1"), ~0ull);
    for (const std::string_view word : { "abc", "-", "+x1", "--1", "." }) {
        expectRefused<long long>(word, 352);
        expectRefused<unsigned long long>(word, 374);
    }
}

TEST(TaStreamReadASCIITest, FloatsTakeTheSyntaxOfStrtod)
{
    EXPECT_EQ(readFrom<double>("-12.5e-1"), -1.25);
    EXPECT_EQ(readFrom<double>("0x1.8p1"), 3.0);
    EXPECT_EQ(readFrom<double>("INFinity"), std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(readFrom<double>("nan(Ab_1)")));
    EXPECT_EQ(readFrom<double>(std::string(1000, '9') + "e-1000"), 1.0);
    EXPECT_EQ(readFrom<float>("1e300"), std::numeric_limits<float>::infinity());
    EXPECT_EQ(readFrom<float>("-1e-300"), 0.0f);
    // Read as a double and narrowed: at once, it would be rounded up.
    EXPECT_EQ(readFrom<float>("1.00000005960464477539062500001"), 1.0f);
    for (const std::string_view word : { "1,5", "e5", "1e", ".", "0x", "0xinf", "nan(", "1.5f" }) {
        expectRefused<double>(word, 421);
        expectRefused<float>(word, 421);
    }
}

TEST(TaStreamReadASCIITest, BoolsAreExactWords)
{
    EXPECT_TRUE(readFrom<bool>("true"));
    EXPECT_FALSE(readFrom<bool>("\t false\n"));
    for (const std::string_view word : { "True", "TRUE", "1", "0", "tru", "truer", "yes" }) {
        expectRefused<bool>(word, 212);
    }
}

TEST(TaStreamReadASCIITest, AFileReadsAsItsTextInMemory)
{
    const TemporaryFolder folder;
    std::string content;
    for (int i = 0; i < 30'000; ++i) { // several buffers
        content += std::to_string(i) + (i % 5 == 0 ? "\r\n" : " ");
    }
    folder.WriteAll("numbers", content);
    TaStreamReadASCIIFile file(folder / "numbers");
    for (int i = 0; i < 30'000; ++i) {
        int number = -1;
        file >> number;
        ASSERT_EQ(number, i);
    }
    EXPECT_EQ(file.GetPosition(), content.size());
    int none = 0;
    ExpectFailure<TuExceptionStream>([&] { file >> none; });

    folder.WriteAll("empty", "");
    TaStreamReadASCIIFile empty(folder / "empty");
    EXPECT_FALSE(empty.IsEndOfStream());
    EXPECT_EQ(lineFrom(empty), "");
    EXPECT_TRUE(empty.IsEndOfStream());
}

} // namespace
