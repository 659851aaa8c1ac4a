#include "tabase/tauniqueid.h"

#include "groundwork/tuhashkey.h"
#include "support/brokenrecords.h"
#include "support/expectfailure.h"
#include "support/testlatch.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using UUID = TaUniqueID::UUID;

constexpr char16_t kSource[] = u"core/talibraries/tabase/tauniqueid";
constexpr char16_t kText[] = u"0F8FAD5B-D9CB-469F-A165-70867728950E";
constexpr char16_t kSmallText[] = u"0f8fad5b-d9cb-469f-a165-70867728950e";

const String& textOf(const TaUniqueID& id) { return id; }

TEST(TaUniqueIDTest, AGivenTextStaysAsItIsAndOthersAreInCapitals)
{
    TaUniqueID id(kSmallText);
    const TaUniqueID copy(id);
    TaUniqueID moved(std::move(id));
    EXPECT_EQ(textOf(copy), kSmallText);
    EXPECT_EQ(textOf(moved), kSmallText);

    const UUID uuid = copy;
    EXPECT_EQ(TaUniqueID::GetUniqueID(uuid), kText);
    EXPECT_EQ(TaUniqueID::GetUniqueID(copy), kSmallText);
    moved = uuid; // empties the text
    EXPECT_EQ(textOf(moved), kText);
    moved = copy;
    moved = textOf(moved);
    EXPECT_EQ(textOf(moved), kSmallText);
    moved.Renew();
    EXPECT_TRUE(moved != copy && moved.IsValid());
    moved.Invalidate();
    EXPECT_TRUE(moved.IsInvalid() && moved == UUID());
    EXPECT_EQ(textOf(moved), u"00000000-0000-0000-0000-000000000000");
}

TEST(TaUniqueIDTest, ARefusedTextLeavesTheIdentifierAsItWas)
{
    TaUniqueID id(kSmallText);
    for (const char16_t* text :
        { u"", u"no identifier", u"{0F8FAD5B-D9CB-469F-A165-70867728950E}" }) {
        ExpectFailure<TuException>([&] { TaUniqueID refused{ String(text) }; }, kSource, 97);
        ExpectFailure<TuException>([&] { id = text; }, kSource, 97);
    }
    EXPECT_EQ(textOf(id), kSmallText);
    EXPECT_EQ(TaUniqueID::GetUniqueID(UUID(id)), kText);
}

TEST(TaUniqueIDTest, OrderPassesOverData3AndReadsData4FromItsLastByte)
{
    const UUID base{ 5, 5, 5, { 5, 5, 5, 5, 5, 5, 5, 5 } };
    UUID other = base;
    other.Data3 = 4;
    const TaUniqueID id(base);
    EXPECT_FALSE(id < other || other < id);
    EXPECT_TRUE(id <= other && id >= other);
    EXPECT_TRUE(id != other && other != id && id != TaUniqueID(other));
    EXPECT_TRUE(id == base && base == id && id == TaUniqueID(base));

    // Each of a pair outweighs all that follows.
    const UUID ascending[] = { { 5, 5, 9, { 4, 5, 5, 5, 5, 5, 5, 5 } }, base,
        { 5, 5, 0, { 0, 6, 5, 5, 5, 5, 5, 5 } }, { 5, 5, 0, { 0, 0, 0, 0, 0, 0, 0, 0x80 } },
        { 5, 0x8000, 0, {} }, { 0x80000000, 0, 0, {} } };
    for (std::size_t i = 1; i < std::size(ascending); ++i) {
        const TaUniqueID greater(ascending[i]);
        EXPECT_TRUE(greater > ascending[i - 1] && TaUniqueID(ascending[i - 1]) < greater) << i;
    }

    EXPECT_EQ(TuHashKey<TaUniqueID>::Compute(id), platform::HashUuid(base));
}

TEST(TaUniqueIDTest, IsStoredInSixteenBytes)
{
    const std::vector<unsigned char> bytes{ 0x5B, 0xAD, 0x8F, 0x0F, 0xCB, 0xD9, 0x9F, 0x46, 0xA1,
        0x65, 0x70, 0x86, 0x77, 0x28, 0x95, 0x0E };
    const TaUniqueID id(kSmallText);
    EXPECT_EQ(WriteToBytes([&](TuStreamWrite& stream) { id.Serialize(stream); }), bytes);

    TaUniqueID read = TaUniqueID::GetInvalidID();
    ExpectUnchangedByTruncatedRecords(bytes, read, TaUniqueID::GetInvalidID());
    EXPECT_TRUE(ReadFromBytes(bytes, [&](TuStreamRead& stream) { read.Serialize(stream); }));
    EXPECT_EQ(read, id);
    EXPECT_EQ(textOf(read), kText);
}

TEST(TaUniqueIDTest, TestModeCountsThroughTheProcess)
{
    static unsigned int s_count = 0; // the test may be repeated
    TaUniqueID id(kSmallText);
    TaUniqueID random;
    TaUniqueID::EnableTestMode(true);
    EXPECT_TRUE(TaUniqueID::GetInvalidID().IsInvalid()); // takes no count
    for (int i = 0; i < 12; ++i) {
        TaUniqueID::EnableTestMode(false);
        random.Renew();
        TaUniqueID::EnableTestMode(true);
        char expected[37];
#if defined(_WIN32)
        const std::string account = ExpectFailure<TuException>([&] { id.Renew(); }, kSource, 425);
        std::snprintf(expected, sizeof(expected), "7E57DA7A-1234-1234-1234-%08x", s_count++);
        EXPECT_NE(account.find('"' + std::string(expected) + '"'), std::string::npos) << account;
        EXPECT_EQ(textOf(id), kSmallText);
#else
        id.Renew();
        std::snprintf(expected, sizeof(expected), "7E57DA7A-1234-1234-1234-0000%08X", s_count++);
        EXPECT_EQ(textOf(id).ToUtf8(), expected);
#endif
    }
    TaUniqueID::EnableTestMode(false);
}

TEST(TaUniqueIDTest, ReadersOnSeveralThreadsShareOneText)
{
    for (int run = 0; run < 100; ++run) {
        const TaUniqueID id(static_cast<UUID>(TaUniqueID(kText)));
        const String* seen[4] = {};
        TestLatch start(std::size(seen));
        {
            std::vector<std::jthread> threads;
            for (const String*& text : seen) {
                threads.emplace_back([&id, &text, &start] {
                    start.arrive_and_wait();
                    EXPECT_EQ(textOf(TaUniqueID(id)), kText);
                    text = &textOf(id);
                    EXPECT_EQ(*text, kText);
                });
            }
        }
        EXPECT_EQ(std::set<const String*>(std::begin(seen), std::end(seen)).size(), 1u);
    }
}

} // namespace
