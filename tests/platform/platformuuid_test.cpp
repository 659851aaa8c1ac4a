#include "platform/platformuuid.h"

#include "support/testrandom.h"

#include <gtest/gtest.h>

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
    constexpr std::size_t kEach = 500;
    std::vector<std::u16string> made[4];
    {
        std::vector<std::jthread> threads;
        for (auto& texts : made) {
            threads.emplace_back([&texts] {
                while (texts.size() < kEach) {
                    texts.push_back(platform::FormatUuid(platform::CreateUuid().value()).value());
                }
            });
        }
    }
    std::set<std::u16string> all;
    std::set<char16_t> digits[platform::kUuidTextLength];
    for (const auto& texts : made) {
        for (const std::u16string& text : texts) {
            all.insert(text);
            for (std::size_t i = 0; i < text.size(); ++i) {
                digits[i].insert(text[i]);
            }
        }
    }
    EXPECT_EQ(all.size(), std::size(made) * kEach);
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
    EXPECT_EQ(platform::HashUuid(platform::GetNilUuid()), 0);
    EXPECT_EQ(platform::HashUuid(kKnown), 0x503B);
    // By the definition: a sum of all bytes, lowest first, and one of these sums, cut to 16 bits.
    auto random = MakeTestRandom();
    for (int i = 0; i < 10'000; ++i) {
        platform::Uuid uuid{ static_cast<std::uint32_t>(random()),
            static_cast<std::uint16_t>(random()), static_cast<std::uint16_t>(random()) };
        int sum = 0;
        int sums = 0;
        const auto add = [&](std::uint32_t number, int bytes) {
            for (; bytes != 0; --bytes, number >>= 8) {
                sum += static_cast<int>(number & 0xFF);
                sums += sum;
            }
        };
        add(uuid.Data1, 4);
        add(uuid.Data2, 2);
        add(uuid.Data3, 2);
        for (std::uint8_t& byte : uuid.Data4) {
            byte = static_cast<std::uint8_t>(i == 0 ? 0xFF : random()); // great sums, too
            add(byte, 1);
        }
        sums = static_cast<std::int16_t>(sums);
        const int high = ((sums - sum) % 255 + 255) % 255;
        const int low = (-sums % 255 + 255) % 255;
        ASSERT_EQ(platform::HashUuid(uuid), high * 256 + low) << "seed " << GetTestSeed();
    }
}

} // namespace
