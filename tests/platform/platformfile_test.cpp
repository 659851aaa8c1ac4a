#include "platform/platformfile.h"

#include "groundwork/tulatesterror.h"
#include "platform/platformerror.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using platform::File;

TEST(PlatformFileTest, WritesReadsAndMovesTheHandle)
{
    const TemporaryFolder folder;
    const CString path = folder / "\xc3\xa4 name.bin";
    File writer;
    ASSERT_TRUE(writer.Open(path, platform::eFM_Write));
    ASSERT_TRUE(writer.Write("hello", 5));
    EXPECT_TRUE(writer.Sync());
    File moved = std::move(writer);
    EXPECT_FALSE(writer.IsOpen()); // NOLINT(bugprone-use-after-move): closed after a move
    ASSERT_TRUE(moved.Write(" world", 6));
    EXPECT_TRUE(moved.Close());
    EXPECT_EQ(folder.ReadAll("\xc3\xa4 name.bin"), "hello world");

    File reader;
    ASSERT_TRUE(reader.Open(path, platform::eFM_Read));
    std::uint64_t size = 0;
    EXPECT_TRUE(reader.GetSize(size));
    EXPECT_EQ(size, 11u);
    ASSERT_TRUE(reader.SetPosition(6));
    char text[16];
    std::size_t count = 0;
    ASSERT_TRUE(reader.Read(text, sizeof(text), count));
    EXPECT_EQ(std::string(text, count), "world");
}

TEST(PlatformFileTest, RefusesWhatIsNotThereOrThereAlreadyOrNoFile)
{
    const TemporaryFolder folder;
    folder.WriteAll("a", "old");
    File file;
    EXPECT_FALSE(file.Open(folder / "missing", platform::eFM_Read));
    std::jthread([] { platform::SetLastSystemError(EACCES); }).join(); // each thread has its own
    const TuLatestError error;
    EXPECT_FALSE(file.Open(folder / "", platform::eFM_Read)); // a folder
    EXPECT_EQ(error.GetNumber(), static_cast<unsigned int>(ENOENT));
    EXPECT_EQ(error.GetMessageText().ToUtf8(), std::generic_category().message(ENOENT));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_FALSE(file.Open(folder / "a", platform::eFM_CreateNew));
    // The system would cut the path.
    EXPECT_FALSE(file.Open((folder / "a") + CString(u"\0b", 2), platform::eFM_Read));
    EXPECT_FALSE(platform::MakeFolder(folder / "a"));
    EXPECT_EQ(folder.ReadAll("a"), "old");
}

TEST(PlatformFileTest, ListsAndRemovesWhatIsInAFolder)
{
    const TemporaryFolder folder;
    for (const char* name : { "b", "a", "c" }) {
        folder.WriteAll(name, "");
    }
    EXPECT_TRUE(platform::MakeFolder(folder / "d"));
    EXPECT_TRUE(platform::MakeFolder(folder / "d")); // there already
    std::vector<std::u16string> names;
    ASSERT_TRUE(platform::ListFolder(folder / "", names));
    EXPECT_EQ(names, (std::vector<std::u16string>{ u"a", u"b", u"c", u"d" }));
    EXPECT_TRUE(platform::RemovePath(folder / "a"));
    EXPECT_FALSE(platform::RemovePath(folder / "a"));
    EXPECT_FALSE(platform::ListFolder(folder / "missing", names));
    EXPECT_TRUE(names.empty());
}

TEST(PlatformFileTest, AFileReplacesAnotherInOneStepAndIsNoMoreOpenThanThat)
{
    using std::filesystem::perms;
    const TemporaryFolder folder;
    const auto permissionsOf = [&folder](const char* name) {
        return std::filesystem::status(folder.GetPath(name)).permissions();
    };
    const perms ofGroup
        = perms::owner_read | perms::owner_write | perms::group_read | perms::group_write;
    folder.WriteAll("old", "old content");
    std::filesystem::permissions(folder.GetPath("old"), ofGroup);
    std::filesystem::create_symlink("/dev/null", folder.GetPath("device"));

    File file;
    bool taken = true;
    ASSERT_TRUE(file.CreateFor(folder / "new", folder / "old", taken));
    EXPECT_FALSE(taken);
    EXPECT_TRUE(file.Write("new content", 11));
    EXPECT_EQ(permissionsOf("new") & ~ofGroup, perms::none);
    EXPECT_FALSE(file.CreateFor(folder / "new", folder / "old", taken));
    EXPECT_TRUE(taken);

    EXPECT_EQ(platform::ReplaceAtomically(folder / "new", folder / "device"), platform::eRR_Failed);
    EXPECT_EQ(platform::ReplaceAtomically(folder / "new", folder / "old"), platform::eRR_Durable);
    EXPECT_EQ(platform::ReplaceAtomically(folder / "new", folder / "old"), platform::eRR_Failed);
    EXPECT_EQ(folder.ReadAll("old"), "new content");
    EXPECT_EQ(permissionsOf("old"), ofGroup);
    EXPECT_FALSE(platform::PathExists(folder / "new"));
}

} // namespace
