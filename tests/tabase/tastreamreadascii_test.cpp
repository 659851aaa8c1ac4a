#include "groundwork/tuexceptions.h"
#include "support/eagersource.h"
#include "support/expectfailure.h"
#include "support/temporaryfolder.h"
#include "tabase/tastreamreadasciifile.h"
#include "tabase/tastreamreadasciistring.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr char16_t kSource[] = u"core/talibraries/tabase/tastreamreadascii";

template <class Target> Target readFrom(std::string_view text)
{
    const CStringA source(text);
    TaStreamReadASCIIString stream(source);
    Target value{};
    stream >> value;
    return value;
}

using Words = std::vector<std::string_view>;

template <class Target>
void expectReads(std::initializer_list<std::pair<std::string_view, Target>> cases)
{
    for (const auto& [word, value] : cases) {
        EXPECT_EQ(readFrom<Target>(word), value) << word;
    }
}

/// Expects that the words are refused as a Target with the stated line; the target stays, the word
/// is gone.
template <class Target> void expectRefused(unsigned int line, const Words& words)
{
    for (const std::string_view word : words) {
        SCOPED_TRACE(word);
        const CStringA source(std::string(word) + " 17");
        TaStreamReadASCIIString stream(source);
        Target value{ 1 };
        ExpectFailure<TuExceptionStream>([&] { stream >> value; }, kSource, line);
        EXPECT_EQ(value, Target{ 1 });
        int next = 0;
        stream >> next;
        EXPECT_EQ(next, 17);
    }
}

using Lines = std::vector<std::string>;

/// The lines up to the one that meets the end.
Lines linesOf(TaStreamReadASCII&& stream)
{
    Lines lines;
    while (!stream.IsEndOfStream()) {
        CStringA line("stale");
        stream >> line;
        lines.emplace_back(line.GetView());
    }
    return lines;
}

Lines linesOf(const std::string& content)
{
    const CStringA text(content);
    return linesOf(TaStreamReadASCIIString(text));
}

TEST(TaStreamReadASCIITest, WordsAndLinesShareTheirLineEnds)
{
    const CStringA text("12 34\r\nab\r\n");
    TaStreamReadASCIIString stream(text);
    int number = 0;
    stream >> number >> number;
    EXPECT_EQ(number, 34);
    // The word took the CR with it.
    EXPECT_EQ(linesOf(std::move(stream)), (Lines{ "\n", "ab", "" }));
    // A line feed stays, a carriage return swallows one byte.
    // The lone CR ends a line and takes the x; the byte behind the last CR is the end.
    EXPECT_EQ(linesOf("ab\ncd\n\rxef\r\rgh\r"), (Lines{ "ab\n", "cd\n", "", "ef", "gh" }));
}

TEST(TaStreamReadASCIITest, LinesHaveAnyLengthAndHoldAnyByte)
{
    for (const std::size_t length : { 0u, 1u, 126u, 127u, 128u, 253u, 254u, 255u, 1000u }) {
        std::string content(length, 'x');
        for (std::size_t i = 0; i < length; i += 3) {
            content[i] = static_cast<char>(i % 2 == 0 ? 0 : -1 - static_cast<int>(i % 50));
        }
        EXPECT_EQ(linesOf(content + "\r\n"), (Lines{ content, "" })) << length;
        EXPECT_EQ(linesOf(content + "\n"), (Lines{ content + "\n", "" })) << length;
        EXPECT_EQ(linesOf(content), Lines{ content }) << length;
    }
    // Wide ones come from the system code page; what is malformed in it is no failure.
    EXPECT_EQ(readFrom<CString>("a\xFFz"), CString::FromCodePage("a\xFFz"));
}

TEST(TaStreamReadASCIITest, NothingIsReadAfterTheEnd)
{
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
    EXPECT_EQ(readFrom<int>("5"), 5); // a word that the end cuts off counts
}

TEST(TaStreamReadASCIITest, ACopyStandsAtTheSamePlaceWithItsEnd)
{
    EagerSource source("1 2 ");
    EagerSource copy(source);
    int number = 0;
    copy >> number >> number;
    EXPECT_TRUE(EagerSource(copy).IsEndOfStream());
    EXPECT_FALSE(source.IsEndOfStream());
    source = copy;
    EXPECT_TRUE(source.IsEndOfStream());
}

TEST(TaStreamReadASCIITest, AnEndWithTheLastByteBelongsToALineButNotToAWord)
{
    EXPECT_EQ(linesOf(EagerSource("ab\r\ncd")), (Lines{ "ab", "cd" }));
    EXPECT_EQ(linesOf(EagerSource("ab\r\n")), Lines{ "ab" }); // the byte that the CR swallows
    EXPECT_EQ(linesOf(EagerSource("cd\r")), Lines{ "cd\r" }); // the end is looked at first
    EXPECT_EQ(linesOf(EagerSource("")), Lines{ "" });
    const std::string longer = std::string(127, 'x') + 'y';
    EXPECT_EQ(linesOf(EagerSource(longer)), Lines{ longer });

    int number = 0;
    EagerSource("12 345") >> number >> number;
    EXPECT_EQ(number, 34);
    EagerSource oneByte("12 3");
    oneByte >> number;
    ExpectFailure<TuExceptionStream>([&] { oneByte >> number; }, kSource, 453);
}

TEST(TaStreamReadASCIITest, IntegersAreWholeDecimalWordsInRangeIfShort)
{
    expectReads<signed char>({ { "-128", -128 }, { "+65", 65 } }); // a number, not a character
    // Vertical tab and form feed are no white space here, but for strtol.
    expectReads<short>({ { "0032767", 32767 }, { "\v\f12", 12 } });
    // A minus wraps in 32 bits.
    expectReads<unsigned char>({ { "255", 255 }, { "-4294967295", 1 } });
    expectReads<unsigned short>({ { "65535", 65535 } });

    expectRefused<signed char>(50, { "128", "-129" });
    expectRefused<short>(50, { "99999999999999999999" });
    // The last is too large for a minus: it saturates.
    expectRefused<unsigned char>(84, { "256", "300", "-1", "-4294967297" });
    expectRefused<unsigned short>(84, { "65536" });
    expectRefused<signed char>(43, { "300x" }); // not a number comes before the range
    expectRefused<unsigned char>(77, { "300x" });
    const Words notNumbers{ "a", "-", "+", "--1", "1.0", "0x10", "12abc", "1-", "\v",
        { "1\0", 2 } };
    expectRefused<short>(43, notNumbers);
    expectRefused<unsigned short>(77, notNumbers);
    expectRefused<int>(43, notNumbers);
    expectRefused<unsigned int>(77, notNumbers);

    // Long ones are cut to 32 bits.
    constexpr int kMin = std::numeric_limits<int>::min();
    constexpr int kMax = std::numeric_limits<int>::max();
    expectReads<int>({ { "3000000000", kMax }, { "99999999999", kMax }, { "-2147483648", kMin },
        { "-99999999999999999999999", kMin }, { "0010", 10 } });
    expectReads<unsigned int>({ { "-1", 4294967295u }, { "-2147483648", 2147483648u },
        { "4294967296", 4294967295u }, { "-4294967296", 4294967295u } });
}

TEST(TaStreamReadASCIITest, SixtyFourBitIntegersAreReadFromTheFrontOfTheWord)
{
    constexpr auto kMin = std::numeric_limits<long long>::min();
    constexpr auto kMax = std::numeric_limits<long long>::max();
    expectReads<long long>({ { "0x10", 16 }, { "-0XfFg", -255 }, { "12abc", 12 }, { "017", 15 },
        { "08", 0 }, { "0x", 0 }, { "+5.9", 5 }, { "-9223372036854775808", kMin },
        { "9223372036854775808", kMax }, { "-99999999999999999999", kMin } });
    expectReads<unsigned long long>({ { "0x10", 0u }, { "010", 10u }, { "12abc", 12u },
        { "18446744073709551615,", ~0ull }, { "99999999999999999999", ~0ull }, { "-1", ~0ull } });
    expectRefused<long long>(352, { "abc", "-", "+x1", "--1", "." });
    expectRefused<unsigned long long>(374, { "abc", "-", "+x1", "--1", "." });
}

TEST(TaStreamReadASCIITest, FloatsAreNarrowedDoublesAndBoolsExactWords)
{
    expectReads<double>({ { "0x1.8p1", 3.0 }, { std::string(1000, '9') + "e-1000", 1.0 } });
    expectRefused<double>(421, { "1,5", "e5", "1e", ".", "0x", "0xinf", "nan(", "1.5f" });
    // The last is read as a double and narrowed: at once, it would be rounded up.
    expectReads<float>({ { "1e300", std::numeric_limits<float>::infinity() }, { "-1e-300", 0.0f },
        { "1.00000005960464477539062500001", 1.0f } });
    expectRefused<float>(421, { "1.5f" });

    expectReads<bool>({ { "true", true }, { "\t false\n", false } });
    expectRefused<bool>(212, { "True", "TRUE", "1", "0", "tru", "truer", "yes" });
}

TEST(TaStreamReadASCIITest, AFileReadsAsItsTextInMemory)
{
    const TemporaryFolder folder;
    std::string content;
    for (int i = 0; i < 30'000; ++i) { // several buffers
        content += std::to_string(i) + (i % 5 == 0 ? "\r\n" : " \n");
    }
    folder.WriteAll("numbers", content);
    EXPECT_TRUE(linesOf(TaStreamReadASCIIFile(folder / "numbers")) == linesOf(content));
    folder.WriteAll("empty", "");
    EXPECT_EQ(linesOf(TaStreamReadASCIIFile(folder / "empty")), Lines{ "" });

    TaStreamReadASCIIFile file(folder / "numbers");
    int number = -1;
    file >> number;
    EXPECT_EQ(file.GetPosition(), 2u);
    file.Close();
    ExpectFailure<TuExceptionStream>([&] { file >> number; });
}

} // namespace
