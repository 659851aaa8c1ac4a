#include "platform/platformregistry.h"

#include "platform/platformterminal.h"
#include "support/childprocess.h"
#include "support/environment.h"
#include "support/temporaryfolder.h"
#include "support/testrandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include "support/userrights.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using namespace platform;

using Bytes = std::vector<unsigned char>;
using Names = std::vector<std::u16string>;

std::u16string wide(const std::string& text) { return { text.begin(), text.end() }; }

bool write(std::u16string_view key, std::u16string_view name, const Bytes& data,
    ERegistryRoot root = eRo_CurrentUser)
{
    return WriteRegistry(root, key, name, ERegistryType{ 3 }, data.data(), data.size());
}

std::optional<Bytes> read(std::u16string_view key, std::u16string_view name,
    std::size_t maxBytes = 100, ERegistryRoot root = eRo_CurrentUser)
{
    Bytes data;
    return ReadRegistry(root, key, name, maxBytes, data) ? std::optional(data) : std::nullopt;
}

std::optional<Names> keysOf(std::u16string_view key)
{
    Names names;
    return ListRegistryKeys(eRo_CurrentUser, key, names) ? std::optional(names) : std::nullopt;
}

std::string s_reported;

/// Where the registry is the system's, the tests have a key of their own in it; elsewhere, a
/// folder.
class PlatformRegistryTest : public testing::Test
{
protected:
    PlatformRegistryTest()
    {
        UseFolder(m_folder);
        s_reported.clear();
        SetRegistryReport([](std::u16string_view text) { s_reported = CString(text).ToUtf8(); });
    }
    ~PlatformRegistryTest() override
    {
        static_cast<void>(RemoveRegistryKey(eRo_CurrentUser, m_key));
    }

    static void UseFolder(const TemporaryFolder& folder)
    {
        SetEnvironment("TABASE_REGISTRY_FOLDER", folder.GetPath("").string());
    }

    /// How many numbers the counters below have written for sure.
    std::uint32_t CountWritten() const
    {
        return static_cast<std::uint32_t>(m_folder.ReadAll("progress").size());
    }
    bool AwaitProgress(std::uint32_t before = 0) const
    {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (CountWritten() == before && std::chrono::steady_clock::now() < limit) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return CountWritten() != before;
    }

    TemporaryFolder m_folder;
    const std::string m_progress = m_folder.GetPath("progress").string();
    const std::string m_narrowKey = "TaBaseTest" + std::to_string(std::random_device()());
    const std::u16string m_key = wide(m_narrowKey);
    const std::u16string m_below = m_key + u"\\";
};

TEST_F(PlatformRegistryTest, KeepsTheBytesOfAValueAsTheyAre)
{
    const Bytes all{ 'a', 0, 'b', 0, 0xFF, 0xD8, 0 };
    for (const Bytes& data : { all, Bytes{}, Bytes{ 'a', 0, 'b', 0 }, Bytes(2000, 7) }) {
        for (const ERegistryType type : { eRT_Text, eRT_Number, ERegistryType{ 3 } }) {
            ASSERT_TRUE(
                WriteRegistry(eRo_CurrentUser, m_key, u"v", type, data.data(), data.size()));
            EXPECT_EQ(read(m_key, u"v", data.size()), data); // a buffer of just that size
            EXPECT_EQ(read(m_key, u"v", SIZE_MAX), data);
            if (!data.empty()) {
                EXPECT_EQ(read(m_key, u"v", data.size() - 1), std::nullopt);
            }
        }
    }
}

TEST_F(PlatformRegistryTest, KeysAndNamesIgnoreCaseAndKeepTheirFirstSpelling)
{
    EXPECT_TRUE(write(m_below + u"Größe\\Ёж", u"Wert Ä", { 1 }));
    EXPECT_TRUE(write(m_below + u"GRÖßE\\ёЖ", u"WERT ä", { 2 }));
    EXPECT_EQ(read(m_below + u"größe\\ёж", u"wert ä"), Bytes{ 2 });
    EXPECT_EQ(keysOf(m_key), Names{ u"Größe" });
    EXPECT_EQ(keysOf(m_below + u"größe"), Names{ u"Ёж" });

    std::vector<SRegistryValue> values;
    EXPECT_TRUE(write(m_below + u"größe\\ёж", u"", { 3 })); // a name like any other
    ASSERT_TRUE(ListRegistryValues(eRo_CurrentUser, m_below + u"Größe\\ёж", values));
    ASSERT_EQ(values.size(), 2U);
    EXPECT_EQ(values[0].name, u"");
    EXPECT_EQ(values[1].name, u"Wert Ä");
    EXPECT_EQ(values[1].data, Bytes{ 2 });
    EXPECT_EQ(static_cast<int>(values[1].type), 3);
}

TEST_F(PlatformRegistryTest, AKeyIsAPathOfParts)
{
    EXPECT_TRUE(write(m_below + u"b\\\\c\\", u"v", { 1 }));
    EXPECT_EQ(read(m_below + u"b\\c", u"v"), Bytes{ 1 });
    EXPECT_EQ(read(m_below + u"\\b\\\\\\c\\\\", u"v"), Bytes{ 1 });
    EXPECT_EQ(read(m_below + u"b", u"v"), std::nullopt);
    EXPECT_FALSE(write(u"\\" + m_key, u"v", { 1 }));
    EXPECT_EQ(read(u"\\" + m_below + u"b\\c", u"v"), std::nullopt);

    // A zero unit ends what a caller of the system could say.
    EXPECT_EQ(
        read(m_below + std::u16string(u"b\\c\0d", 5), std::u16string(u"v\0w", 3)), Bytes{ 1 });

    EXPECT_TRUE(write(m_below + std::u16string(255, u'k'), std::u16string(16383, u'n'), { 1 }));
    EXPECT_EQ(read(m_below + std::u16string(255, u'k'), std::u16string(16383, u'n')), Bytes{ 1 });
    EXPECT_FALSE(write(m_below + std::u16string(256, u'k'), u"v", { 1 }));
    EXPECT_FALSE(write(m_key, std::u16string(16384, u'n'), { 1 }));
    for (const int number : { -1, 5, 1000 }) {
        const auto root = static_cast<ERegistryRoot>(number);
        Names names;
        EXPECT_FALSE(write(m_key, u"v", { 1 }, root));
        EXPECT_EQ(read(m_key, u"v", 100, root), std::nullopt);
        EXPECT_FALSE(ListRegistryKeys(root, u"", names));
    }
}

TEST_F(PlatformRegistryTest, AKeyIsRemovedWithAllBelowItAndNothingElse)
{
    for (const char16_t* const key : { u"a", u"a\\b\\c", u"A\\d", u"ab", u"a]", u"b\\a" }) {
        EXPECT_TRUE(write(m_below + key, u"v", { 1 }));
    }
    EXPECT_EQ(keysOf(m_key), (Names{ u"a", u"a]", u"ab", u"b" }));
    EXPECT_TRUE(RemoveRegistryKey(eRo_CurrentUser, m_below + u"a"));
    EXPECT_FALSE(RemoveRegistryKey(eRo_CurrentUser, m_below + u"a"));
    EXPECT_FALSE(RemoveRegistryKey(eRo_CurrentUser, u"")); // that would be everything
    EXPECT_EQ(keysOf(m_key), (Names{ u"a]", u"ab", u"b" }));
    EXPECT_EQ(keysOf(m_below + u"b"), Names{ u"a" });
    EXPECT_EQ(read(m_below + u"a\\b\\c", u"v"), std::nullopt);
    EXPECT_EQ(read(m_below + u"a]", u"v"), Bytes{ 1 });
    EXPECT_TRUE(write(m_below + u"a", u"w", { 1 })); // does not bring back what was below
    EXPECT_EQ(keysOf(m_below + u"a"), Names{});
}

TEST_F(PlatformRegistryTest, ReadingCreatesNothing)
{
    std::vector<SRegistryValue> values;
    EXPECT_EQ(read(m_below + u"b", u"v"), std::nullopt);
    EXPECT_FALSE(ListRegistryValues(eRo_CurrentUser, m_key, values));
    EXPECT_FALSE(RemoveRegistryKey(eRo_CurrentUser, m_key));
    EXPECT_EQ(keysOf(m_key), std::nullopt);
    EXPECT_EQ(m_folder.CountFiles(), 0);
    EXPECT_TRUE(ListRegistryValues(eRo_CurrentUser, u"", values)); // the root is there
}

// Several processes.

/// Arguments: key, first letter of the names, how many.
int writeValues(const std::vector<std::string>& arguments)
{
    const auto count = static_cast<unsigned char>(std::stoi(arguments[2]));
    for (unsigned char i = 0; i < count; ++i) {
        const std::string name = arguments[1] + std::to_string(i);
        if (!write(wide(arguments[0]), wide(name), { i })
            || !write(wide(arguments[0]), u"shared", Bytes(i, i))) {
            return 1;
        }
    }
    return 0;
}
const bool kHasWriter = AddChildRole("registry-writer", writeValues);

TEST_F(PlatformRegistryTest, ProcessesAndThreadsWriteAtOnceAndLoseNothing)
{
    constexpr unsigned char kCount = 60;
    // The first write of each makes the file, too.
    ChildProcess first("registry-writer", { m_narrowKey, "a", std::to_string(kCount) });
    ChildProcess second("registry-writer", { m_narrowKey, "b", std::to_string(kCount) });
    std::vector<std::jthread> threads;
    for (const std::u16string name : { u"one", u"two", u"three" }) {
        threads.emplace_back([this, name] {
            for (unsigned char i = 0; i < 25; ++i) {
                EXPECT_TRUE(write(m_below + name, u"v", Bytes(i, i)));
                EXPECT_EQ(read(m_below + name, u"v"), Bytes(i, i));
            }
        });
    }
    EXPECT_EQ(first.Wait(), 0);
    EXPECT_EQ(second.Wait(), 0);
    for (unsigned char i = 0; i < kCount; ++i) {
        EXPECT_EQ(read(m_key, wide("a" + std::to_string(i))), Bytes{ i });
        EXPECT_EQ(read(m_key, wide("b" + std::to_string(i))), Bytes{ i });
    }
    EXPECT_EQ(read(m_key, u"shared"), Bytes(kCount - 1, kCount - 1));
}

/// A value that shows whether it is whole: the number, 1 to 300 times.
std::vector<std::uint32_t> valueOf(std::uint32_t number)
{
    return std::vector<std::uint32_t>(number % 300 + 1, number);
}

/// Writes numbers into a value, one after the other, until it is killed. Arguments: key, file that
/// has a byte for each number that is written, root.
int count(const std::vector<std::string>& arguments)
{
    const auto root = static_cast<ERegistryRoot>(std::stoi(arguments[2]));
    std::ofstream progress(arguments[1], std::ios::binary | std::ios::app);
    for (auto number = std::filesystem::file_size(arguments[1]) + 1; progress; ++number) {
        const std::vector<std::uint32_t> value = valueOf(static_cast<std::uint32_t>(number));
        if (!WriteRegistry(root, wide(arguments[0]), u"v", ERegistryType{ 3 }, value.data(),
                value.size() * sizeof(value[0]))) {
            return 1;
        }
        progress.put('.').flush();
    }
    return 1;
}
const bool kHasCounter = AddChildRole("registry-counter", count);

TEST_F(PlatformRegistryTest, AWriterThatIsKilledLeavesTheLastValueItWroteOrTheNext)
{
    auto random = MakeTestRandom();
    ASSERT_TRUE(write(m_key, u"v", Bytes(sizeof(std::uint32_t), 0)));
    for (int i = 0; i < 200; ++i) {
        const std::uint32_t before = CountWritten();
        ChildProcess counter("registry-counter", { m_narrowKey, m_progress, "1" });
        // Now and then while it starts, mostly while it writes.
        ASSERT_TRUE(i % 4 == 0 || AwaitProgress(before));
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 8000));
        counter.Kill();

        const std::uint32_t written = CountWritten();
        const Bytes found = read(m_key, u"v", 10'000).value_or(Bytes());
        const auto is = [&](std::uint32_t number) {
            const std::vector<std::uint32_t> value = valueOf(number);
            return found.size() == value.size() * sizeof(number)
                && std::memcmp(found.data(), value.data(), found.size()) == 0;
        };
        ASSERT_TRUE(is(written) || is(written + 1)) << "kill " << i << " at " << written;
    }
    EXPECT_EQ(s_reported, "");
}

#if !defined(_WIN32)

// What is a file where the system has no registry.

constexpr char kUserFile[] = "user.registry";

/// Closes the files, so that all of their content is in them alone.
void settle()
{
    const std::string folder = getenv("TABASE_REGISTRY_FOLDER");
    SetEnvironment("TABASE_REGISTRY_FOLDER", "/nowhere");
    EXPECT_EQ(read(u"k", u"v"), std::nullopt);
    EXPECT_EQ(read(u"k", u"v", 100, eRo_LocalMachine), std::nullopt);
    SetEnvironment("TABASE_REGISTRY_FOLDER", folder);
}

/// Runs `action` in a forked process and returns whether it was true there.
template <class Action> bool inChild(Action action)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);
        _exit(action() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_F(PlatformRegistryTest, RootsAreTreesByThemselvesInTwoFiles)
{
    const std::vector<ERegistryRoot> roots{ eRo_ClassesRoot, eRo_CurrentUser, eRo_LocalMachine,
        eRo_Users, eRo_CurrentConfig };
    for (const ERegistryRoot root : roots) {
        const bool isOfUser = root == eRo_CurrentUser || root == eRo_Users;
        EXPECT_TRUE(write(u"k", u"v", { static_cast<unsigned char>(root) }, root));
        EXPECT_NE(m_folder.ReadAll(isOfUser ? kUserFile : "machine.registry"), "");
    }
    for (const ERegistryRoot root : roots) {
        EXPECT_EQ(read(u"k", u"v", 100, root), Bytes{ static_cast<unsigned char>(root) });
    }
    SetEnvironment("TABASE_REGISTRY_FOLDER", "relative"); // another one after each chdir
    EXPECT_FALSE(write(u"k", u"v", { 1 }));

    SetEnvironment("TABASE_REGISTRY_FOLDER", "");
    SetEnvironment("XDG_CONFIG_HOME", m_folder.GetPath("made/above").string());
    EXPECT_TRUE(write(u"k", u"v", { 9 }));
    EXPECT_NE(m_folder.ReadAll("made/above/tabase/user.registry"), "");
}

TEST_F(PlatformRegistryTest, FollowsTheFileAtItsPlace)
{
    TemporaryFolder other;
    UseFolder(other);
    ASSERT_TRUE(write(u"k", u"new", Bytes(3000, 2)));
    settle();

    // Values in the journal, which another process keeps there.
    UseFolder(m_folder);
    ASSERT_TRUE(write(u"k", u"old", { 1 }));
    ChildProcess holder("registry-counter", { "other", m_progress, "1" });
    ASSERT_TRUE(AwaitProgress());
    const TemporaryFolder third;
    UseFolder(third);
    EXPECT_TRUE(write(u"k", u"v", { 1 })); // leaves those of the other folder alone
    UseFolder(m_folder);
    ASSERT_EQ(read(u"k", u"old"), Bytes{ 1 });
    std::filesystem::rename(other.GetPath(kUserFile), m_folder.GetPath(kUserFile));
    EXPECT_EQ(read(u"k", u"new", 3000), Bytes(3000, 2));
    EXPECT_EQ(read(u"k", u"old"), std::nullopt);
    EXPECT_TRUE(write(u"k", u"newer", { 3 }));
    holder.Kill();
    settle();
    EXPECT_EQ(read(u"k", u"newer"), Bytes{ 3 });

    std::filesystem::remove(m_folder.GetPath(kUserFile));
    EXPECT_EQ(read(u"k", u"new"), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(m_folder.GetPath(kUserFile)));
    EXPECT_TRUE(write(u"k", u"newest", { 4 }));
    EXPECT_EQ(read(u"k", u"newest"), Bytes{ 4 });
    EXPECT_EQ(s_reported, "");
}

TEST_F(PlatformRegistryTest, WhatCannotBeReadIsSetAsideAndTold)
{
    for (int i = 0; i < 40; ++i) {
        ASSERT_TRUE(write(u"k" + std::u16string(1, char16_t(u'a' + i)), u"v", Bytes(500, 1)));
    }
    settle();
    const std::string good = m_folder.ReadAll(kUserFile);
    std::string damaged = good;
    std::fill(damaged.begin() + 8192, damaged.begin() + 8292, '\x5A'); // the head of a page
    std::string foreign = good;
    foreign.replace(68, 4, "mine"); // which application's it is
    const std::string cut = good.substr(0, 10'000);
    int number = 0;
    for (const std::string& content :
        { std::string("garbage"), std::string(5000, 'x'), damaged, foreign, cut }) {
        s_reported.clear();
        m_folder.WriteAll(kUserFile, content);
        const std::string aside = "user.registry.unreadable-" + std::to_string(++number);
        if (number % 2 == 0) {
            EXPECT_EQ(read(u"ka", u"v"), std::nullopt);
        }
        EXPECT_TRUE(write(u"k", u"v", { 1 }));
        EXPECT_EQ(read(u"k", u"v"), Bytes{ 1 });
        EXPECT_EQ(m_folder.ReadAll(aside), content);
        EXPECT_NE(s_reported.find(aside), s_reported.npos) << s_reported;
        settle();
    }

    m_folder.WriteAll(kUserFile, "garbage");
    m_folder.WriteAll("user.registry-wal", "of the same file");
    EXPECT_TRUE(write(u"k", u"v", { 1 }));
    EXPECT_EQ(m_folder.ReadAll("user.registry.unreadable-6-wal"), "of the same file");
    settle();

    // Two that meet it at once: the one does not set aside the new file of the other.
    m_folder.WriteAll(kUserFile, "garbage");
    ChildProcess first("registry-writer", { "k", "a", "10" });
    ChildProcess second("registry-writer", { "k", "b", "10" });
    EXPECT_EQ(first.Wait(), 0);
    EXPECT_EQ(second.Wait(), 0);
    EXPECT_EQ(read(u"k", u"a9"), Bytes{ 9 });
    EXPECT_EQ(read(u"k", u"b0"), Bytes{ 0 });
    EXPECT_FALSE(std::filesystem::exists(m_folder.GetPath("user.registry.unreadable-8")));

    // What is only too new stays.
    settle();
    std::string newer = good;
    newer[63] = 2;
    m_folder.WriteAll(kUserFile, newer);
    EXPECT_FALSE(write(u"k", u"v", { 1 }));
    EXPECT_NE(s_reported.find("later version"), s_reported.npos) << s_reported;
    s_reported.clear();
    EXPECT_EQ(read(u"ka", u"v"), std::nullopt);
    EXPECT_EQ(keysOf(u""), std::nullopt); // it was an empty list
    EXPECT_EQ(s_reported, ""); // once is enough
    EXPECT_EQ(m_folder.ReadAll(kUserFile), newer);

    m_folder.WriteAll(kUserFile, ""); // and an empty file is a new one
    EXPECT_EQ(read(u"k", u"v"), std::nullopt);
    EXPECT_TRUE(write(u"k", u"v", { 1 }));
}

TEST_F(PlatformRegistryTest, AFullDiskRefusesAndChangesNothing)
{
    ASSERT_TRUE(write(u"k", u"v", { 1 }));
    EXPECT_TRUE(inChild([] {
        SurviveFailingWrites();
        bool isGood = write(u"k", u"v", { 2 });
        const rlimit full{ 100'000, 100'000 };
        isGood &= setrlimit(RLIMIT_FSIZE, &full) == 0;
        isGood &= !write(u"k", u"v", Bytes(500'000, 3));
        isGood &= read(u"k", u"v") == Bytes{ 2 };
        isGood &= !write(u"new", u"v", Bytes(500'000, 3));
        isGood &= keysOf(u"") == Names{ u"k" };
        return isGood && write(u"k", u"small", { 4 }); // there is room for that
    }));
    EXPECT_EQ(read(u"k", u"v"), Bytes{ 2 });
    EXPECT_EQ(read(u"k", u"small"), Bytes{ 4 });
    EXPECT_TRUE(write(u"k", u"v", Bytes(500'000, 3)));
}

TEST_F(PlatformRegistryTest, WhoMayNotWriteMayRead)
{
    using std::filesystem::permissions;
    using std::filesystem::perms;
    const std::filesystem::path folder = m_folder.GetPath("");
    ASSERT_TRUE(write(u"k", u"v", { 1 }, eRo_LocalMachine));
    const auto reads = [] {
        return BecomeOrdinaryUser() && read(u"k", u"v", 100, eRo_LocalMachine) == Bytes{ 1 };
    };
    const auto readsOnly = [reads] {
        return reads() && !write(u"k", u"v", { 2 }, eRo_LocalMachine) && !write(u"k", u"v", { 2 });
    };
    permissions(folder, perms(0711)); // others may pass through it only, and cannot lock it
    EXPECT_TRUE(inChild(reads));
    const bool isRoot = geteuid() == 0; // else the files are the ordinary user's own
    permissions(folder, perms(isRoot ? 0755 : 0555));
    permissions(m_folder.GetPath("machine.registry"), perms(isRoot ? 0644 : 0444));
    EXPECT_TRUE(inChild(readsOnly)); // nobody has it open
    EXPECT_EQ(read(u"k", u"v", 100, eRo_LocalMachine), Bytes{ 1 });
    if (isRoot) { // somebody writes it
        ChildProcess holder("registry-counter", { "other", m_progress, "2" });
        ASSERT_TRUE(AwaitProgress());
        EXPECT_TRUE(inChild(readsOnly));
    }
    permissions(folder, perms(0755));
    EXPECT_EQ(s_reported, "");
}

TEST_F(PlatformRegistryTest, FilesHaveTheirRightsWhateverIsUsual)
{
    SetEnvironment("TABASE_REGISTRY_FOLDER", m_folder.GetPath("new").string());
    const mode_t usual = umask(0077);
    EXPECT_TRUE(write(u"k", u"v", { 1 }, eRo_LocalMachine) && write(u"k", u"v", { 1 }));
    umask(usual);
    const auto rightsOf = [this](const std::string& name) {
        return std::filesystem::status(m_folder.GetPath("new/" + name)).permissions();
    };
    EXPECT_EQ(rightsOf(""), std::filesystem::perms(0755));
    for (const char* beside : { "", "-wal", "-shm" }) {
        EXPECT_EQ(rightsOf(std::string("user.registry") + beside), std::filesystem::perms(0600));
        EXPECT_EQ(rightsOf(std::string("machine.registry") + beside), std::filesystem::perms(0644));
    }
}

TEST_F(PlatformRegistryTest, AProgramThatEndsLeavesAllInTheFileAlone)
{
    // The connection stayed open, and all values in the journal, without which a copy was empty.
    EXPECT_EQ(ChildProcess("registry-writer", { "k", "a", "3" }).Wait(), 0);
    const TemporaryFolder copy;
    std::filesystem::copy_file(m_folder.GetPath(kUserFile), copy.GetPath(kUserFile));
    UseFolder(copy);
    EXPECT_EQ(read(u"k", u"a2"), Bytes{ 2 });
}

TEST_F(PlatformRegistryTest, AForkedProcessHasItsOwn)
{
    ASSERT_TRUE(write(u"k", u"v", { 1 }));
    EXPECT_TRUE(inChild([] {
        return read(u"k", u"v") == Bytes{ 1 } && write(u"k", u"v", { 2 })
            && inChild([] { return write(u"k", u"w", { 3 }); });
    }));
    EXPECT_EQ(read(u"k", u"v"), Bytes{ 2 });
    EXPECT_EQ(read(u"k", u"w"), Bytes{ 3 });
    EXPECT_TRUE(write(u"k", u"v", { 4 }));
}

#endif

} // namespace
