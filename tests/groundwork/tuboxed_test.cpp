#include "groundwork/tuboxed.h"

#include "groundwork/tuexceptions.h"
#include "support/expectfailure.h"
#include "support/memorystreams.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>

namespace {

template <class Boxed> class TuBoxedTest : public testing::Test
{
};

/// A boxed class, what it stores, and the size of its record behind the version.
template <class Class, class Stored, std::size_t Size> struct Case
{
    using Boxed = Class;
    static constexpr std::size_t kSize = Size;

    static auto GetSample()
    {
        if constexpr (std::is_same_v<Stored, CString>) {
            return CString(u"\u00e4b");
        } else {
            return std::numeric_limits<Stored>::max();
        }
    }
};

using Cases = testing::Types<Case<TuBool, bool, 1>, Case<TuChar, char, 1>,
    Case<TuInt8, std::int8_t, 1>, Case<TuInt16, std::int16_t, 2>, Case<TuInt32, std::int32_t, 4>,
    Case<TuLong, std::int32_t, 4>, Case<TuInt64, std::int64_t, 8>, Case<TuUInt8, std::uint8_t, 1>,
    Case<TuUInt16, std::uint16_t, 2>, Case<TuUInt32, std::uint32_t, 4>,
    Case<TuULong, std::uint32_t, 4>, Case<TuUInt64, std::uint64_t, 8>, Case<TuFloat32, float, 4>,
    Case<TuFloat64, double, 8>, Case<TuString, CString, 8>>;
TYPED_TEST_SUITE(TuBoxedTest, Cases);

TYPED_TEST(TuBoxedTest, IsMadeByNameWithTheDefaultValueAndReadsBackWhatItWrote)
{
    using Boxed = typename TypeParam::Boxed;
    using Value = decltype(std::declval<const Boxed&>().GetValue());

    const Boxed sample(static_cast<Value>(TypeParam::GetSample()));
    const CString name = sample.GetClassName();
    EXPECT_TRUE(sample.Is(Boxed::RTTI));
    ASSERT_NE(TuRTTI::getCreate(name), nullptr) << name.ToUtf8();

    const std::unique_ptr<IObject> made(TuRTTI::getCreate(name)());
    auto& boxed = dynamic_cast<Boxed&>(*made);
    EXPECT_EQ(boxed.GetValue(), Value());

    const std::vector<unsigned char> bytes
        = WriteToBytes([&](TuStreamWriteBinary& stream) { stream.WriteChunk(sample); });
    PlainStreamRead stream(bytes);
    const std::unique_ptr<ISerializable> back(stream.ReadChunk());
    EXPECT_TRUE(stream.IsAtEnd());
    EXPECT_EQ(dynamic_cast<const Boxed&>(*back), sample);

    const std::vector<unsigned char> record = WriteToBytes([&](TuStreamWriteBinary& plain) {
        static_cast<const ISerializable&>(sample).Serialize(plain);
    });
    EXPECT_EQ(record.size(), 4 + TypeParam::kSize);

    const std::unique_ptr<IObject> copy(TuRTTI::getClone(name)(sample));
    EXPECT_EQ(dynamic_cast<const Boxed&>(*copy), sample);
    ExpectFailure<TuExceptionPreconditionViolation>(
        [&] { TuRTTI::getClone(name)(TuException(TU_HERE)); }); // and no slice
}

TEST(TuBoxedTest, LongsHoldThirtyTwoBitsOnEverySystem)
{
    TuLong number(-2147483647L - 1);
    TuULong natural(4294967295ul);
    if (sizeof(long) > 4) {
        ExpectFailure<TuExceptionPreconditionViolation>(
            [&] { number.SetValue(std::numeric_limits<long>::max()); });
        ExpectFailure<TuExceptionPreconditionViolation>(
            [&] { natural.SetValue(std::numeric_limits<unsigned long>::max()); });
    }
    EXPECT_EQ(number.GetValue(), -2147483647L - 1);
    EXPECT_EQ(natural.GetValue(), 4294967295ul);
}

} // namespace
