#include "groundwork/tuexceptions.h"
#include "platform/platformerror.h"
#include "platform/platformfile.h"
#include "support/environment.h"
#include "support/expectfailure.h"
#include "support/temporaryfolder.h"
#include "tabase/tastreamreadasciifile.h"
#include "tabase/tastreamreadbinaryfile.h"
#include "tabase/tastreamwriteasciifile.h"
#include "tabase/tastreamwritebinaryfile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

constexpr auto kSafe = TaStreamWriteBinaryFile::eWM_Safe;

/// What a failure's account says behind the class and the place.
template <class Action> std::string reasonOf(Action&& action)
{
    const std::string account = ExpectFailure<TuExceptionStream>(action);
    return account.substr(account.find(": ") + 2);
}

TEST(TaStreamFileTest, AFailureToOpenNamesFileAndReason)
{
    const TemporaryFolder folder;
    const CString missing = folder / "no such folder/a.off";
    platform::File file;
    ASSERT_FALSE(file.Open(missing, platform::eFM_Read));
    const std::string reason = CString(platform::GetLastSystemError().text).ToUtf8();
    const std::string open = "cannot open \"" + missing.ToUtf8() + "\": " + reason;
    EXPECT_EQ(reasonOf([&] { TaStreamReadBinaryFile stream(missing); }), open);
    EXPECT_EQ(reasonOf([&] { TaStreamReadASCIIFile stream(missing); }), open);
    EXPECT_EQ(reasonOf([&] { TaStreamWriteBinaryFile stream(missing); }), open);
    EXPECT_EQ(reasonOf([&] { TaStreamWriteASCIIFile stream(missing); }), open);
    EXPECT_EQ(reasonOf([&] { TaStreamWriteBinaryFile stream(missing, kSafe); }),
        "cannot create a temporary file beside \"" + missing.ToUtf8() + "\": " + reason);
    const std::string ofFolder = reasonOf([&] { TaStreamReadBinaryFile stream(folder / ""); });
    EXPECT_TRUE(ofFolder.starts_with("cannot open ")) << ofFolder;
}

TEST(TaStreamFileTest, SafeModeReplacesTheFileOnCommitOnly)
{
    const TemporaryFolder folder;
    const CString path = folder / "document";
    folder.WriteAll("document", "old");
    const std::string content(100'000, 'n');
    try {
        TaStreamWriteBinaryFile closed(path, kSafe);
        closed.WriteBuffer(content.data(), content.size());
        EXPECT_EQ(folder.CountFiles(), 2);
        closed.Close(); // not committed
        EXPECT_EQ(folder.CountFiles(), 1);

        TaStreamWriteBinaryFile abandoned(path, kSafe);
        abandoned.WriteBuffer(content.data(), content.size());
        throw std::runtime_error("in the middle of saving");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(folder.ReadAll("document"), "old");
    EXPECT_EQ(folder.CountFiles(), 1);

    auto first = std::make_unique<TaStreamWriteBinaryFile>(path, kSafe);
    TaStreamWriteBinaryFile second(path, kSafe); // each has a temporary file of its own
    first->WriteBuffer(content.data(), content.size());
    *first << static_cast<signed char>('!');
    EXPECT_EQ(folder.ReadAll("document"), "old");
    first->Commit();
    EXPECT_EQ(folder.ReadAll("document"), content + '!');
    ExpectFailure<TuExceptionPreconditionViolation>([&] { first->Commit(); });
    ExpectFailure<TuExceptionStream>([&] { *first << 1; });
    EXPECT_NO_THROW(first->Close());
    TaStreamWriteBinaryFile third(path, kSafe); // has the name of the first temporary file now
    first.reset();
    second.Commit();
    EXPECT_EQ(folder.ReadAll("document"), "");
    third << 1;
    third.Commit();
    EXPECT_EQ(folder.ReadAll("document").size(), 4u);
    EXPECT_EQ(folder.CountFiles(), 1);
}

TEST(TaStreamFileTest, ACommitThatCannotReplaceLeavesNothingBehindAndARefusedOneLosesNoBytes)
{
    const TemporaryFolder folder;
    const std::string reason = "cannot replace \"" + (folder / "target").ToUtf8() + "\": ";
    TaStreamWriteBinaryFile stream(folder / "target", kSafe);
    std::filesystem::create_directories(folder.GetPath("target/inhabited"));
    EXPECT_TRUE(reasonOf([&] { stream.Commit(); }).starts_with(reason));
    EXPECT_EQ(folder.CountFiles(), 1);
    const auto openSafely
        = [&](const char* name) { TaStreamWriteBinaryFile(folder / name, kSafe); };
    EXPECT_TRUE(reasonOf([&] { openSafely("target"); }).starts_with(reason));

    // What may not be written is not replaced, either.
    folder.WriteAll("protected", "old");
    std::filesystem::permissions(folder.GetPath("protected"), std::filesystem::perms::owner_read);
    const auto isProtected = [&](TaStreamWriteBinaryFile::EMode mode) {
        try {
            TaStreamWriteBinaryFile(folder / "protected", mode);
            return false;
        } catch (const TuExceptionStream&) {
            return true;
        }
    };
    EXPECT_EQ(isProtected(kSafe), isProtected(TaStreamWriteBinaryFile::eWM_Direct));
    TaStreamWriteBinaryFile direct(folder / "direct");
    direct << 1;
    ExpectFailure<TuExceptionPreconditionViolation>([&] { direct.Commit(); });
    direct << 2;
    direct.Close();
    EXPECT_EQ(folder.ReadAll("direct").size(), 8u);
}

TEST(TaStreamFileTest, ANameThatIsNoTextIsNotReplaced)
{
#if defined(_WIN32)
    GTEST_SKIP() << "names are UTF-16 here: every one is a text";
#else
    const TemporaryFolder folder;
    folder.WriteAll("b\xff", "old");
    ASSERT_TRUE(MakeLink("b\xff", folder.GetPath("link")));
    reasonOf([&] { TaStreamWriteBinaryFile(folder / "link", kSafe); });
#endif
}

TEST(TaStreamFileTest, AFullDiskIsReportedAtTheLatestByCloseOrDestruction)
{
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "this system has no device that is always full";
    }
    constexpr std::string_view kReason = "cannot write \"/dev/full\": ";
    TaStreamWriteBinaryFile binary(u"/dev/full");
    binary << 1;
    EXPECT_TRUE(reasonOf([&] { binary.Close(); }).starts_with(kReason));
    EXPECT_NO_THROW(binary.Close()); // reported once

    // A larger amount fails earlier; then every later step fails with the same reason.
    const std::string large(100'000, 'x');
    TaStreamWriteASCIIFile text(u"/dev/full", false);
    const std::string reason = reasonOf([&] { text << large.c_str(); });
    EXPECT_TRUE(reason.starts_with(kReason));
    EXPECT_EQ(reasonOf([&] { text << 1; }), reason);
    EXPECT_EQ(reasonOf([&] { text.Close(); }), reason);

    testing::internal::CaptureStderr();
    {
        TaStreamWriteBinaryFile known(u"/dev/full");
        EXPECT_ANY_THROW(known.WriteBuffer(large.data(), large.size()));
        const TaStreamWriteBinaryFile empty(u"/dev/full");
        TaStreamWriteBinaryFile lost(u"/dev/full");
        lost << 1;
    }
    const std::string trace = testing::internal::GetCapturedStderr();
    EXPECT_NE(trace.find(kReason), std::string::npos) << trace;
    EXPECT_EQ(trace.find('\n'), trace.size() - 1) << trace; // one line, of the lost byte
}

TEST(TaStreamFileTest, SafeModeWritesUnderTheLongestNamesAndBehindALink)
{
    const auto saveANumber = [](const CString& path) {
        TaStreamWriteBinaryFile file(path, kSafe);
        file << 1;
        file.Commit();
    };
    const TemporaryFolder folder;
    const std::string longest(255, 'n');
    saveANumber(folder / longest);
    EXPECT_EQ(folder.CountFiles(), 1);
    EXPECT_TRUE(platform::RemovePath(folder / longest));

    folder.WriteAll("real.bin", "old");
    if (!MakeLink(folder.GetPath("real.bin"), folder.GetPath("link.bin"))) {
        GTEST_SKIP() << "MinGW-w64's std::filesystem makes no symbolic links";
    }
    saveANumber(folder / "link.bin");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.GetPath("link.bin")));
    EXPECT_EQ(folder.ReadAll("real.bin").size(), 4u);
}

} // namespace
