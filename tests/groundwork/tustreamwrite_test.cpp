#include "groundwork/tustreamwriteasciistring.h"
#include "groundwork/tustreamwriteasciitrace.h"
#include "groundwork/tustreamwritebinary.h"

#include <gtest/gtest.h>

namespace {

template <class T, class Stream>
concept WritableTo = requires(Stream& stream, T value)
{
    stream << value;
};
template <class T>
concept Writable = WritableTo<T, TuStreamWrite> || WritableTo<T, TuStreamWriteBinary>;

// What would silently be written as something else does not compile.
static_assert(!Writable<const void*> && !Writable<int*> && !Writable<TuStreamWrite*>);
static_assert(!Writable<const char8_t*> && !Writable<const char32_t*> && !Writable<int CString::*>);
static_assert(!Writable<char16_t> && !Writable<wchar_t> && !Writable<char32_t>);
static_assert(Writable<const char*> && Writable<char*> && Writable<const wchar_t*>);
static_assert(Writable<bool> && Writable<char> && Writable<long> && Writable<unsigned long long>);

TEST(TuStreamWriteTest, TakesTextOfEveryKindAsText)
{
    TuStreamWriteASCIIStringT<CString> stream;
    char mutableText[] = "d";
    stream << u"a" << L"\u00e4" << "b" << CString(u"c") << mutableText << CStringA("e")
           << static_cast<const char*>(nullptr);
    EXPECT_EQ(stream.GetText(), u"a\u00e4bcde");

    TuStreamWriteASCIIStringT<CStringA> outer;
    outer << 1 << stream << true;
    EXPECT_EQ(outer.GetText(), "1" + stream.GetText().ToCodePage() + "true");
}

TEST(TuStreamWriteASCIITraceDiagnosticTest, PassesWholeLinesOnAndTheRestAtItsEnd)
{
    testing::internal::CaptureStderr();
    {
        TuStreamWriteASCIITraceDiagnostic diagnostic;
        diagnostic << u"handler " << 7 << u"\nnext";
        TuStreamWriteASCIITraceDiagnostic trace;
        trace << "between\n";
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "handler 7\nbetween\nnext");
}

TEST(TuStreamWriteASCIITraceTest, GoesToStandardErrorWhereNoDebuggerListens)
{
#if defined(_WIN32)
    GTEST_SKIP() << "Windows hands traces to the debugger, never to standard error; "
                    "WindowsPlatformTest.TracesGoToTheDebugger is the test of that";
#else
    testing::internal::CaptureStderr();
    TuStreamWriteASCIITrace() << u"\u00e4 " << 7;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "\xc3\xa4 7");
#endif
}

} // namespace
