#include "groundwork/tuexceptions.h"
#include "platform/platformerror.h"
#include "support/expectfailure.h"
#include "support/temporaryfolder.h"
#include "tabase/tastreamreadasciifile.h"
#include "tabase/tastreamreadbinaryfile.h"
#include "tabase/tastreamwriteasciifile.h"
#include "tabase/tastreamwritebinaryfile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr auto kSafe = TaStreamWriteBinaryFile::eWM_Safe;

const std::string kNothing = "nothing was thrown";

template <class Action> std::string accountOf(Action&& action)
{
    try {
        action();
    } catch (const TuExceptionStream& failure) {
        return failure.GetCauseText().ToUtf8();
    }
    return kNothing;
}

std::size_t countFiles(const TemporaryFolder& folder)
{
    const std::filesystem::directory_iterator entries(folder.GetPath(""));
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

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
    EXPECT_TRUE(
        accountOf([&] { TaStreamReadBinaryFile stream(folder / ""); }).starts_with("cannot open "));
}

TEST(TaStreamFileTest, SafeModeReplacesTheFileOnCommitOnly)
{
    const TemporaryFolder folder;
    const CString path = folder / "document";
    folder.WriteAll("document", "old");
    const std::string content(100'000, 'n');
    {
        TaStreamWriteBinaryFile closed(path, kSafe);
        closed.WriteBuffer(content.data(), content.size());
        EXPECT_EQ(countFiles(folder), 2u);
        closed.Close(); // not committed
        EXPECT_EQ(countFiles(folder), 1u);
    }
    try {
        TaStreamWriteBinaryFile abandoned(path, kSafe);
        abandoned.WriteBuffer(content.data(), content.size());
        throw std::runtime_error("in the middle of saving");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(folder.ReadAll("document"), "old");
    EXPECT_EQ(countFiles(folder), 1u);

    TaStreamWriteBinaryFile first(path, kSafe);
    TaStreamWriteBinaryFile second(path, kSafe); // each has a temporary file of its own
    first.WriteBuffer(content.data(), content.size());
    first << static_cast<signed char>('!');
    EXPECT_EQ(folder.ReadAll("document"), "old");
    first.Commit();
    EXPECT_EQ(folder.ReadAll("document"), content + '!');
    second.Commit();
    EXPECT_EQ(folder.ReadAll("document"), "");
    EXPECT_EQ(countFiles(folder), 1u);

    ExpectFailure<TuExceptionPreconditionViolation>([&] { first.Commit(); });
    ExpectFailure<TuExceptionStream>([&] { first << 1; });
    EXPECT_NO_THROW(first.Close());
}

TEST(TaStreamFileTest, ACommitThatCannotReplaceLeavesNothingBehindAndARefusedOneLosesNoBytes)
{
    const TemporaryFolder folder;
    const std::string reason = "cannot replace \"" + (folder / "target").ToUtf8() + "\": ";
    TaStreamWriteBinaryFile stream(folder / "target", kSafe);
    stream << 1;
    std::filesystem::create_directories(folder.GetPath("target/inhabited"));
    EXPECT_TRUE(accountOf([&] { stream.Commit(); }).starts_with(reason));
    EXPECT_EQ(countFiles(folder), 1u);
    const auto openSafely
        = [&](const char* name) { TaStreamWriteBinaryFile(folder / name, kSafe); };
    EXPECT_TRUE(accountOf([&] { openSafely("target"); }).starts_with(reason));

    // What may not be written is not replaced, either; nor what UTF-16 has no name for.
    folder.WriteAll("protected", "old");
    std::filesystem::permissions(folder.GetPath("protected"), std::filesystem::perms::owner_read);
    EXPECT_EQ(accountOf([&] { openSafely("protected"); }) == kNothing,
        accountOf([&] { TaStreamWriteBinaryFile(folder / "protected"); }) == kNothing);
    folder.WriteAll("b\xff", "old");
    std::filesystem::create_symlink("b\xff", folder.GetPath("link"));
    EXPECT_NE(accountOf([&] { openSafely("link"); }), kNothing);

    TaStreamWriteBinaryFile direct(folder / "direct");
    direct << 1;
    ExpectFailure<TuExceptionPreconditionViolation>([&] { direct.Commit(); });
    direct << 2;
    direct.Close();
    EXPECT_EQ(folder.ReadAll("direct").size(), 8u);
}

TEST(TaStreamFileTest, AFullDiskIsReportedAtTheLatestByCloseOrDestruction)
{
    constexpr std::string_view kReason = "cannot write \"/dev/full\": ";
    TaStreamWriteBinaryFile binary(u"/dev/full");
    binary << 1;
    EXPECT_TRUE(accountOf([&] { binary.Close(); }).starts_with(kReason));
    EXPECT_NO_THROW(binary.Close()); // reported once

    // A larger amount fails earlier; then every later step fails with the same reason.
    const std::string large(100'000, 'x');
    TaStreamWriteASCIIFile text(u"/dev/full", false);
    const std::string reason = accountOf([&] { text << large.c_str(); });
    EXPECT_TRUE(reason.starts_with(kReason));
    EXPECT_EQ(accountOf([&] { text << 1; }), reason);
    EXPECT_EQ(accountOf([&] { text.Close(); }), reason);

    const auto traceOf = [](const auto& destroy) {
        testing::internal::CaptureStderr();
        destroy();
        return testing::internal::GetCapturedStderr();
    };
    const std::string trace = traceOf([] {
        TaStreamWriteBinaryFile lost(u"/dev/full");
        lost << 1;
    });
    EXPECT_NE(trace.find(kReason), std::string::npos) << trace;
    EXPECT_EQ(trace.back(), '\n');
    EXPECT_EQ(traceOf([&] {
        TaStreamWriteBinaryFile known(u"/dev/full");
        EXPECT_ANY_THROW(known.WriteBuffer(large.data(), large.size()));
        const TaStreamWriteBinaryFile empty(u"/dev/full");
    }),
        "");
}

TEST(TaStreamFileTest, AClosedReaderFails)
{
    const TemporaryFolder folder;
    folder.WriteAll("a", "1 2 3 ");
    TaStreamReadASCIIFile text(folder / "a");
    TaStreamReadBinaryFile binary(folder / "a");
    int number = 0;
    text >> number;
    text.Close();
    binary.Close();
    EXPECT_TRUE(accountOf([&] { text >> number; }).starts_with("cannot read "));
    EXPECT_TRUE(accountOf([&] { binary >> number; }).starts_with("cannot read "));
}

TEST(TaStreamFileTest, SafeModeWritesBehindALinkAndUnderLongNames)
{
    const TemporaryFolder folder;
    folder.WriteAll("real.bin", "old");
    std::filesystem::create_symlink(folder.GetPath("real.bin"), folder.GetPath("link.bin"));
    const std::string longest(250, 'n');
    for (const std::string& name : { std::string("link.bin"), longest }) {
        TaStreamWriteBinaryFile file(folder / name, kSafe);
        file << 1;
        file.Commit();
    }
    EXPECT_TRUE(std::filesystem::is_symlink(folder.GetPath("link.bin")));
    EXPECT_EQ(folder.ReadAll("real.bin").size(), 4u);
    EXPECT_EQ(folder.ReadAll(longest).size(), 4u);
}

TEST(TaStreamFileTest, ThreadsMaySaveTheSameFileAtOnce)
{
    const TemporaryFolder folder;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([&] {
                for (int save = 0; save < 200; ++save) {
                    EXPECT_NO_THROW({
                        TaStreamWriteBinaryFile file(folder / "shared.bin", kSafe);
                        file << save;
                        file.Commit();
                    });
                }
            });
        }
    }
    EXPECT_EQ(folder.ReadAll("shared.bin").size(), 4u);
}

} // namespace
