#include "platform/platformfile.h"

#include "groundwork/tulatesterror.h"
#include "platform/platformerror.h"
#include "support/environment.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

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
    const TuLatestError error;
    EXPECT_FALSE(file.Open(folder / "", platform::eFM_Read)); // a folder
    EXPECT_EQ(error.GetNumber(), 2u); // on every system
    EXPECT_TRUE(error.GetMessageText().ToUtf8().starts_with(std::system_category().message(2)));
    // Each thread has its own.
    platform::SetLastSystemError(13);
    std::jthread([] { EXPECT_NE(TuLatestError().GetNumber(), 13u); }).join();
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

TEST(PlatformFileTest, AFileReplacesAnotherInOneStep)
{
    const TemporaryFolder folder;
    folder.WriteAll("old", "old content");
    ASSERT_TRUE(platform::MakeFolder(folder / "folder"));

    File file;
    bool taken = true;
    ASSERT_TRUE(file.CreateFor(folder / "new", folder / "old", taken));
    EXPECT_FALSE(taken);
    EXPECT_TRUE(file.Write("new content", 11));
    EXPECT_FALSE(file.CreateFor(folder / "new", folder / "old", taken));
    EXPECT_TRUE(taken);

    EXPECT_FALSE(platform::MayBeReplaced(folder / "folder"));
    EXPECT_EQ(platform::ReplaceAtomically(folder / "new", folder / "folder"), platform::eRR_Failed);
    EXPECT_EQ(platform::ReplaceAtomically(folder / "new", folder / "old"), platform::eRR_Durable);
    EXPECT_EQ(platform::ReplaceAtomically(folder / "new", folder / "old"), platform::eRR_Failed);
    EXPECT_EQ(folder.ReadAll("old"), "new content");
    EXPECT_FALSE(platform::PathExists(folder / "new"));
}

TEST(PlatformFileTest, ADeviceIsNeverReplaced)
{
    const TemporaryFolder folder;
#if defined(_WIN32)
    const CString device(u"NUL");
#else
    // Through a link: where the check fails, the device of this machine must not be lost.
    const CString device = folder / "device";
    ASSERT_TRUE(MakeLink("/dev/null", folder.GetPath("device")));
#endif
    folder.WriteAll("new", "");
    EXPECT_FALSE(platform::MayBeReplaced(device));
    EXPECT_EQ(platform::ReplaceAtomically(folder / "new", device), platform::eRR_Failed);
    File file;
    ASSERT_TRUE(file.Open(device, platform::eFM_Write));
    EXPECT_TRUE(file.Write("x", 1));
    std::uint64_t size = 0;
    EXPECT_FALSE(file.GetSize(size));
}

TEST(PlatformFileTest, ANewFileIsNoMoreOpenThanTheOneItReplaces)
{
#if defined(_WIN32)
    GTEST_SKIP() << "Windows has no mode bits; the same promise for its lists of rights is "
                    "WindowsPlatformTest.ANewFileIsNoMoreOpenThanTheOneItReplaces";
#else
    using std::filesystem::perms;
    const TemporaryFolder folder;
    const auto permissionsOf = [&folder](const char* name) {
        return std::filesystem::status(folder.GetPath(name)).permissions();
    };
    const perms ofGroup
        = perms::owner_read | perms::owner_write | perms::group_read | perms::group_write;
    folder.WriteAll("old", "");
    std::filesystem::permissions(folder.GetPath("old"), ofGroup);

    File file;
    bool taken = false;
    ASSERT_TRUE(file.CreateFor(folder / "new", folder / "old", taken));
    EXPECT_EQ(permissionsOf("new") & ~ofGroup, perms::none);
    EXPECT_EQ(platform::ReplaceAtomically(folder / "new", folder / "old"), platform::eRR_Durable);
    EXPECT_EQ(permissionsOf("old"), ofGroup);
#endif
}

TEST(PlatformFileTest, PathsMayBeLong)
{
    const TemporaryFolder folder;
    CString path = folder / "";
    const CString name(std::u16string(200, u'n'));
    for (int depth = 0; depth < 3; ++depth) {
        path += u"/" + name;
        ASSERT_TRUE(platform::MakeFolder(path));
    }
    File file;
    ASSERT_TRUE(file.Open(path + u"/file", platform::eFM_CreateNew));
    EXPECT_TRUE(file.Close());
    std::vector<std::u16string> names;
    EXPECT_TRUE(platform::ListFolder(path, names));
    EXPECT_EQ(names, std::vector<std::u16string>{ u"file" });
    // From the inside out: not every standard library can remove such a path.
    EXPECT_TRUE(platform::RemovePath(path + u"/file"));
    for (; path.GetLength() > (folder / "").GetLength(); path = path.Left(path.GetLength() - 201)) {
        EXPECT_TRUE(platform::RemovePath(path));
    }
}

} // namespace
