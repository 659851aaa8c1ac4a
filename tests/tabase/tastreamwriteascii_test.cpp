#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamwriteasciistring.h"
#include "support/expectfailure.h"
#include "support/temporaryfolder.h"
#include "tabase/tastreamreadasciistring.h"
#include "tabase/tastreamwriteasciifile.h"

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <limits>
#include <locale>
#include <string>

namespace {

using StringStream = TuStreamWriteASCIIStringT<CStringA>;

/// Makes every C++ stream that takes the global locale write 1234,5 as 1.234,5.
class CommaPunctuation : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(TuStreamWriteASCIITest, ASeparatedStreamKeepsShortestNumbersTextsAndLinesApart)
{
    StringStream stream(true);
    stream << true << 'a' << static_cast<unsigned char>(200)
           << std::numeric_limits<long long>::min() << "a text" << u"" << false << "next"
           << "last" << 3u;
    EXPECT_EQ(stream.GetText(),
        "true 97 200 -9223372036854775808\na text\r\n\r\nfalse\nnext\r\nlast\r\n3");
    // The shortest form that reads back to the same bits.
    StringStream reals(true);
    reals << 0.1f << 0.1 << 1.0 / 3.0 << -0.0 << -std::numeric_limits<double>::max()
          << std::numeric_limits<double>::infinity();
    EXPECT_EQ(reals.GetText(), "0.1 0.1 0.3333333333333333 -0 -1.7976931348623157e+308 inf");
    // By way of double, as the reader goes, the shortest form of this one is its neighbour.
    StringStream rounded(true);
    rounded << std::bit_cast<float>(0x95AE43FDu);
    EXPECT_EQ(rounded.GetText(), "-7.03853069e-26");

    StringStream plain;
    plain << 1 << " is " << 2.5 << u"\r\n" << true << reals;
    EXPECT_EQ(plain.GetText().Left(18), "1 is 2.5\r\ntrue0.1 ");

    stream << 4;
    TuExceptionStream(u"core/a", 5, u"torn").Dump(stream);
    stream << 6;
    const std::string behind(stream.GetText().GetView());
    EXPECT_TRUE(behind.ends_with("3 4\nTuExceptionStream at core/a(5): torn\r\n6")) << behind;
}

TEST(TuStreamWriteASCIITest, TheProcessLocaleIsIgnoredInBothDirections)
{
    const std::locale before
        = std::locale::global(std::locale(std::locale(), new CommaPunctuation));
    const std::string cBefore = std::setlocale(LC_NUMERIC, nullptr);
    for (const char* name : { "de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "German" }) {
        if (std::setlocale(LC_NUMERIC, name) != nullptr) {
            break; // a decimal comma in the C library too, where the system has one
        }
    }
    StringStream writer(true);
    writer << 1234567.5 << 1234567;
    double real = 0.0;
    int whole = 0;
    TaStreamReadASCIIString(writer.GetText()) >> real >> whole;
    std::setlocale(LC_NUMERIC, cBefore.c_str());
    std::locale::global(before);

    EXPECT_EQ(writer.GetText(), "1234567.5 1234567");
    EXPECT_EQ(real, 1234567.5);
    EXPECT_EQ(whole, 1234567);
}

TEST(TuStreamWriteASCIITest, ASeparatedStreamRefusesWhatItsReaderWouldMisread)
{
    StringStream stream(true);
    stream << 1;
    for (const CStringA& text : { CStringA("a\rb"), CStringA("\n"), CStringA("a\0", 2) }) {
        ExpectFailure<TuExceptionPreconditionViolation>([&] { stream << text; });
    }
    ExpectFailure<TuExceptionPreconditionViolation>([&] { stream << u"a\nb"; });
    ExpectFailure<TuExceptionPreconditionViolation>([&] { stream << CString(u"\0", 1); });
    EXPECT_EQ(stream.GetText(), "1");
}

TEST(TaStreamWriteASCIIFileTest, WritesBytesAsTheyAreAndWideTextInTheCodePage)
{
    const TemporaryFolder folder;
    TaStreamWriteASCIIFile stream(folder / "a.txt", false);
    const CString wide(u"\u00e4\U0001F600");
    std::string expected;
    for (int i = 0; i < 40'000; ++i) { // several buffers, cut within characters
        stream << "\xE4" << wide;
        expected += "\xE4" + wide.ToCodePage();
        ASSERT_EQ(stream.GetPosition(), expected.size());
    }
    stream.Close();
    EXPECT_TRUE(folder.ReadAll("a.txt") == expected);
    ExpectFailure<TuExceptionStream>([&] { stream << 1; });
}

} // namespace
