#include "groundwork/tuexceptions.h"
#include "platform/platformerror.h"
#include "support/expectfailure.h"
#include "support/temporaryfolder.h"
#include "tabase/tastreamreadasciifile.h"
#include "tabase/tastreamreadbinaryfile.h"
#include "tabase/tastreamwriteasciifile.h"
#include "tabase/tastreamwritebinaryfile.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr auto kSafe = TaStreamWriteBinaryFile::eWM_Safe;

std::string accountOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const TuExceptionStream& failure) {
        return failure.GetCauseText().ToUtf8();
    }
    return "nothing was thrown";
}

std::size_t countFiles(const TemporaryFolder& folder)
{
    const std::filesystem::directory_iterator entries(folder.GetPath(""));
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

/// A device that takes no byte, as a full disk does.
bool hasFullDevice() { return std::filesystem::exists("/dev/full"); }

TEST(TaStreamFileTest, AFailureToOpenNamesFileAndReason)
{
    const TemporaryFolder folder;
    const CString missing = folder / "no such folder/a.off";
    platform::File file;
    ASSERT_FALSE(file.Open(missing, platform::eFM_Read));
    const std::string reason = CString(platform::GetLastSystemError().text).ToUtf8();
    const std::string open = "cannot open \"" + missing.ToUtf8() + "\": " + reason;
    EXPECT_EQ(accountOf([&] { TaStreamReadBinaryFile stream(missing); }), open);
    EXPECT_EQ(accountOf([&] { TaStreamReadASCIIFile stream(missing); }), open);
    EXPECT_EQ(accountOf([&] { TaStreamWriteBinaryFile stream(missing); }), open);
    EXPECT_EQ(accountOf([&] { TaStreamWriteASCIIFile stream(missing); }), open);
    EXPECT_EQ(accountOf([&] { TaStreamWriteBinaryFile stream(missing, kSafe); }),
        "cannot create a temporary file beside \"" + missing.ToUtf8() + "\": " + reason);
}

TEST(TaStreamFileTest, SafeModeReplacesTheFileOnCommitOnly)
{
    const TemporaryFolder folder;
    const CString path = folder / "document";
    folder.WriteAll("document", "old");

    const auto write = [](TaStreamWriteBinaryFile& stream) {
        const std::string content(100'000, 'n');
        stream.WriteBuffer(content.data(), content.size());
        stream << static_cast<signed char>('!');
    };
    {
        TaStreamWriteBinaryFile stream(path, kSafe);
        write(stream);
        EXPECT_EQ(stream.GetPosition(), 100'001u);
        EXPECT_EQ(countFiles(folder), 2u);
        stream.Close(); // not committed
        EXPECT_EQ(countFiles(folder), 1u);
    }
    try {
        TaStreamWriteBinaryFile stream(path, kSafe);
        write(stream);
        throw std::runtime_error("in the middle of saving");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(folder.ReadAll("document"), "old");
    EXPECT_EQ(countFiles(folder), 1u);

    TaStreamWriteBinaryFile first(path, kSafe);
    TaStreamWriteBinaryFile second(path, kSafe); // each has a temporary file of its own
    write(first);
    EXPECT_EQ(folder.ReadAll("document"), "old");
    first.Commit();
    EXPECT_EQ(folder.ReadAll("document"), std::string(100'000, 'n') + '!');
    second.Commit();
    EXPECT_EQ(folder.ReadAll("document"), "");
    EXPECT_EQ(countFiles(folder), 1u);

    ExpectFailure<TuExceptionPreconditionViolation>([&] { first.Commit(); });
    ExpectFailure<TuExceptionStream>([&] { first << 1; });
    EXPECT_NO_THROW(first.Close());
}

TEST(TaStreamFileTest, ACommitThatCannotReplaceLeavesNothingBehind)
{
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.GetPath("target/inhabited"));
    TaStreamWriteBinaryFile stream(folder / "target", kSafe);
    stream << 1;
    EXPECT_EQ(accountOf([&] {
        stream.Commit();
    }).find("cannot replace \"" + (folder / "target").ToUtf8() + "\": "),
        0u);
    EXPECT_EQ(countFiles(folder), 1u);

    TaStreamWriteBinaryFile direct(folder / "direct");
    ExpectFailure<TuExceptionPreconditionViolation>([&] { direct.Commit(); });
}

TEST(TaStreamFileTest, AFullDiskIsReportedAtTheLatestByClose)
{
    if (!hasFullDevice()) {
        GTEST_SKIP() << "this system has no /dev/full";
    }
    constexpr std::string_view kReason = "cannot write \"/dev/full\": ";
    TaStreamWriteBinaryFile binary(u"/dev/full");
    binary << 1;
    EXPECT_TRUE(accountOf([&] { binary.Close(); }).starts_with(kReason));
    EXPECT_NO_THROW(binary.Close()); // reported once

    TaStreamWriteASCIIFile text(u"/dev/full");
    text << 1;
    EXPECT_TRUE(accountOf([&] { text.Close(); }).starts_with(kReason));

    // A larger amount fails earlier; then every later step fails with the same reason.
    TaStreamWriteBinaryFile large(u"/dev/full");
    const std::vector<char> bytes(100'000);
    const std::string reason = accountOf([&] { large.WriteBuffer(bytes.data(), bytes.size()); });
    EXPECT_TRUE(reason.starts_with(kReason));
    EXPECT_EQ(accountOf([&] { large << 1; }), reason);
    EXPECT_EQ(accountOf([&] { large.Close(); }), reason);
}

TEST(TaStreamFileTest, ALossAtDestructionIsReportedToTheDiagnosticTraceUnlessItWasThrown)
{
    if (!hasFullDevice()) {
        GTEST_SKIP() << "this system has no /dev/full";
    }
    testing::internal::CaptureStderr();
    {
        TaStreamWriteBinaryFile lost(u"/dev/full");
        lost << 1;
    }
    const std::string trace = testing::internal::GetCapturedStderr();
    EXPECT_NE(trace.find("cannot write \"/dev/full\": "), std::string::npos) << trace;
    EXPECT_EQ(trace.back(), '\n');

    testing::internal::CaptureStderr();
    {
        TaStreamWriteASCIIFile known(u"/dev/full", false);
        EXPECT_ANY_THROW(known << std::string(100'000, 'x').c_str());
        const TaStreamWriteBinaryFile empty(u"/dev/full");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(TaStreamFileTest, AClosedReaderFailsAndAFolderIsNoFile)
{
    const TemporaryFolder folder;
    folder.WriteAll("a", "1 2 3 ");
    TaStreamReadASCIIFile text(folder / "a");
    int number = 0;
    text >> number;
    EXPECT_EQ(text.GetPosition(), 2u);
    EXPECT_EQ(text.GetPath(), folder / "a");
    text.Close();
    EXPECT_FALSE(text.IsOpen());
    EXPECT_EQ(accountOf([&] { text >> number; }).find("cannot read "), 0u);

    TaStreamReadBinaryFile binary(folder / "a");
    binary.Close();
    EXPECT_EQ(accountOf([&] { binary >> number; }).find("cannot read "), 0u);
    EXPECT_EQ(
        accountOf([&] { TaStreamReadBinaryFile stream(folder / ""); }).find("cannot open "), 0u);

    EXPECT_TRUE(text.IsKindOf(TaStreamFileBase::RTTI));
    EXPECT_TRUE(text.IsKindOf(TaStreamReadASCII::RTTI));
    EXPECT_TRUE(binary.IsKindOf(TuStreamReadBinary::RTTI));
}

TEST(TaStreamFileTest, ARefusedCommitLosesNoBytes)
{
    const TemporaryFolder folder;
    TaStreamWriteBinaryFile file(folder / "direct.bin");
    file << 1;
    ExpectFailure<TuExceptionPreconditionViolation>([&] { file.Commit(); });
    file << 2;
    file.Close();
    EXPECT_EQ(folder.ReadAll("direct.bin").size(), 8u);
}

TEST(TaStreamFileTest, SafeModeWritesBehindALinkAndUnderLongNames)
{
    const TemporaryFolder folder;
    folder.WriteAll("real.bin", "old");
    std::filesystem::create_symlink(folder.GetPath("real.bin"), folder.GetPath("link.bin"));
    const std::string longest(250, 'n');
    for (const std::string& name : { std::string("link.bin"), longest }) {
        TaStreamWriteBinaryFile file(folder / name, TaStreamWriteBinaryFile::eWM_Safe);
        file << 1;
        file.Commit();
    }
    EXPECT_TRUE(std::filesystem::is_symlink(folder.GetPath("link.bin")));
    EXPECT_EQ(folder.ReadAll("real.bin").size(), 4u);
    EXPECT_EQ(folder.ReadAll(longest).size(), 4u);
}

TEST(TaStreamFileTest, ThreadsMaySaveTheSameFileAtOnce)
{
    constexpr int kThreads = 3;
    constexpr int kSaves = 200;
    const TemporaryFolder folder;
    const CString path = folder / "shared.bin";
    std::atomic<int> failures{ 0 };
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&] {
                for (int save = 0; save < kSaves; ++save) {
                    try {
                        TaStreamWriteBinaryFile file(path, TaStreamWriteBinaryFile::eWM_Safe);
                        file << save;
                        file.Commit();
                    } catch (const TuException&) {
                        ++failures;
                    }
                }
            });
        }
    }
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(folder.ReadAll("shared.bin").size(), 4u);
}

} // namespace
