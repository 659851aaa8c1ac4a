#include "platform/platformuuid.h"

#include <gtest/gtest.h>

#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>
#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

constexpr platform::Uuid kKnown{ 0x0F8FAD5B, 0xD9CB, 0x469F,
    { 0xA1, 0x65, 0x70, 0x86, 0x77, 0x28, 0x95, 0x0E } };
constexpr char16_t kKnownText[] = u"0F8FAD5B-D9CB-469F-A165-70867728950E";

TEST(PlatformUuidTest, NewOnesAreRandomInAllBitsButVersionAndVariant)
{
    std::mutex lock; // guards the texts
    std::set<std::u16string> all;
    std::vector<std::jthread> threads(4);
    for (std::jthread& thread : threads) {
        thread = std::jthread([&] {
            for (int i = 0; i < 500; ++i) {
                const platform::Uuid made = platform::CreateUuid().value();
                const std::lock_guard guard(lock);
                all.insert(platform::FormatUuid(made).value());
            }
        });
    }
    threads.clear();
    EXPECT_EQ(all.size(), 2000u);
    std::set<char16_t> digits[platform::kUuidTextLength];
    for (const std::u16string& text : all) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            digits[i].insert(text[i]);
        }
    }
    for (const int i : { 0, 7, 9, 12, 15, 17, 20, 22, 24, 35 }) {
        EXPECT_EQ(digits[i].size(), 16u) << i;
    }
    EXPECT_EQ(digits[14], (std::set<char16_t>{ u'4' }));
    EXPECT_EQ(digits[19], (std::set<char16_t>{ u'8', u'9', u'A', u'B' }));
}

#if !defined(_WIN32) // no fork there
TEST(PlatformUuidTest, AForkedChildGoesOnWithOthersThanItsParent)
{
    EXPECT_TRUE(platform::CreateUuid()); // so that there is something to go on with
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const platform::Uuid made = platform::CreateUuid().value();
        ::_exit(::write(ends[1], &made, sizeof(made)) == sizeof(made) ? 0 : 1);
    }
    ::close(ends[1]);
    platform::Uuid ofChild;
    EXPECT_EQ(::read(ends[0], &ofChild, sizeof(ofChild)), ssize_t(sizeof(ofChild)));
    ::close(ends[0]);
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
    EXPECT_NE(platform::CreateUuid(), ofChild);
}
#endif

TEST(PlatformUuidTest, OnlyTheStrictFormIsAnIdentifier)
{
    const std::u16string known = kKnownText;
    EXPECT_EQ(platform::FormatUuid(kKnown), known);
    EXPECT_EQ(platform::ParseUuid(known), kKnown);
    EXPECT_EQ(platform::ParseUuid(u"0f8fad5b-d9cb-469f-a165-70867728950e"), kKnown);
    for (std::size_t i = 0; i < known.size(); ++i) {
        EXPECT_TRUE(i == 32 || !platform::ParseUuid(known.substr(0, i))) << i; // 32: see below
        for (const char16_t unit : std::u16string(u"\0 +-/:@G`gx{\u0141\u3041\uFF11", 15)) {
            std::u16string changed = known;
            changed[i] = unit;
            EXPECT_EQ(platform::ParseUuid(changed).has_value(), changed == known)
                << i << ", " << static_cast<unsigned int>(unit);
        }
    }
    for (const std::u16string& text :
        { known + u'0', known + u'\0', u'{' + known + u'}', u' ' + known, known + u' ' }) {
        EXPECT_FALSE(platform::ParseUuid(text));
    }
}

TEST(PlatformUuidTest, AShortLastGroupIsFilledUpOnTheLeftButNotOnWindows)
{
    const auto uuid = platform::ParseUuid(u"7E57DA7A-1234-5678-9abc-0000dE0f");
#if defined(_WIN32)
    EXPECT_FALSE(uuid);
#else
    EXPECT_EQ(platform::FormatUuid(uuid.value()), u"7E57DA7A-1234-5678-9ABC-00000000DE0F");
    EXPECT_FALSE(platform::ParseUuid(u"7E57DA7A-1234-5678-9abc-0000dE0g"));
    EXPECT_FALSE(platform::ParseUuid(u"7E57DA7A-1234-56789-abc-0000dE0f"));
#endif
}

TEST(PlatformUuidTest, HashesAreTheSameOnEverySystem)
{
    const auto hashOf = [](std::u16string_view text) {
        return platform::HashUuid(platform::ParseUuid(text).value());
    };
    EXPECT_EQ(platform::HashUuid(platform::GetNilUuid()), 0);
    EXPECT_EQ(hashOf(kKnownText), 0x503B);
    EXPECT_EQ(hashOf(u"01020304-0506-0708-090A-0B0C0D0E0F10"), 0xB6C0);
    EXPECT_EQ(hashOf(u"FEDCBA98-7654-3210-F0E1-D2C3B4A59687"), 0xC31E);
    // 16 bits do not hold the sum of these sums.
    EXPECT_EQ(hashOf(u"FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF"), 0xFE01);
}

} // namespace
