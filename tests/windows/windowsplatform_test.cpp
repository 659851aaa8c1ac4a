// What the platform services promise on Windows alone.

#include "groundwork/tustreamwriteasciitrace.h"
#include "platform/platformfile.h"
#include "platform/platformtext.h"
#include "support/temporaryfolder.h"

#include <aclapi.h>
#include <gtest/gtest.h>
#include <sddl.h>
#include <windows.h>

#include <memory>
#include <string>

namespace {

std::u16string s_trace;

/// The system asks a debugger by an exception: with UTF-16, or in the code page.
LONG CALLBACK keepTrace(EXCEPTION_POINTERS* exception)
{
    constexpr DWORD kTrace = 0x40010006;
    constexpr DWORD kWideTrace = 0x4001000A;
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode != kTrace && record.ExceptionCode != kWideTrace) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    const ULONG_PTR text = record.ExceptionInformation[1];
    s_trace += record.ExceptionCode == kTrace
        ? platform::FromCodePage(reinterpret_cast<const char*>(text))
        : platform::FromWide(reinterpret_cast<const wchar_t*>(text));
    return EXCEPTION_CONTINUE_EXECUTION;
}

TEST(WindowsPlatformTest, TracesGoToTheDebugger)
{
    void* const handler = ::AddVectoredExceptionHandler(1, keepTrace);
    testing::internal::CaptureStderr();
    TuStreamWriteASCIITrace() << u"\u00e4 " << 7 << "\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    ::RemoveVectoredExceptionHandler(handler);
    EXPECT_EQ(s_trace, u"\u00e4 7\n");
}

/// The list of who may do what with a file, in the system's short form.
std::wstring rightsOf(const CString& path)
{
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    EXPECT_EQ(::GetNamedSecurityInfoW(path.ToWide().data(), SE_FILE_OBJECT,
                  DACL_SECURITY_INFORMATION, nullptr, nullptr, nullptr, nullptr, &descriptor),
        DWORD(ERROR_SUCCESS));
    wchar_t* text = nullptr;
    EXPECT_TRUE(::ConvertSecurityDescriptorToStringSecurityDescriptorW(
        descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr));
    const std::wstring rights = text != nullptr ? text : L"";
    ::LocalFree(text);
    ::LocalFree(descriptor);
    return rights;
}

/// Takes all rights of a file from everybody but its owner.
void closeToOthers(const CString& path)
{
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_TRUE(::ConvertStringSecurityDescriptorToSecurityDescriptorW(
        L"D:P(A;;FA;;;OW)(A;;FA;;;BA)", SDDL_REVISION_1, &descriptor, nullptr));
    EXPECT_TRUE(::SetFileSecurityW(path.ToWide().c_str(), DACL_SECURITY_INFORMATION, descriptor));
    ::LocalFree(descriptor);
}

TEST(WindowsPlatformTest, ANewFileIsNoMoreOpenThanTheOneItReplaces)
{
    const TemporaryFolder folder;
    folder.WriteAll("old", "");
    folder.WriteAll("other", "");
    closeToOthers(folder / "old");
    const std::wstring rights = rightsOf(folder / "old");
    if (rights == rightsOf(folder / "other")) {
        GTEST_SKIP() << "this file system keeps no lists of rights: "
                     << platform::ToUtf8(platform::FromWide(rights));
    }
    platform::File file;
    bool taken = false;
    ASSERT_TRUE(file.CreateFor(folder / "new", folder / "old", taken));
    EXPECT_EQ(rightsOf(folder / "new"), rights);
    file.Close();
    EXPECT_EQ(platform::ReplaceAtomically(folder / "new", folder / "old"), platform::eRR_Durable);
    EXPECT_EQ(rightsOf(folder / "old"), rights);
}

TEST(WindowsPlatformTest, AHiddenFileIsWrittenAndReplacedAndStaysHidden)
{
    const TemporaryFolder folder;
    folder.WriteAll("new", "new content");
    folder.WriteAll("old", "old content");
    const std::wstring path = (folder / "old").ToWide();
    ASSERT_TRUE(::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_HIDDEN));
    platform::File file;
    ASSERT_TRUE(file.Open(folder / "old", platform::eFM_Write));
    EXPECT_TRUE(file.Write("x", 1));
    file.Close();
    EXPECT_EQ(folder.ReadAll("old"), "x");
    EXPECT_EQ(platform::ReplaceAtomically(folder / "new", folder / "old"), platform::eRR_Durable);
    EXPECT_EQ(folder.ReadAll("old"), "new content");
    EXPECT_NE(::GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_HIDDEN, 0u);
}

} // namespace
