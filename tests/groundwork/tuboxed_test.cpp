#include "groundwork/tuboxed.h"

#include "groundwork/tuexceptions.h"
#include "support/expectfailure.h"
#include "support/memorystreams.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <tuple>

namespace {

template <class Boxed> class TuBoxedTest : public testing::Test
{
};

/// A boxed class, a value that is not its default, and the size of its record behind the version.
template <class Class, auto Value, std::size_t Size> struct Case
{
    using Boxed = Class;
    static auto GetSample() { return Value; }
    static constexpr std::size_t kSize = Size;
};
template <> struct Case<TuString, 0, 8>
{
    using Boxed = TuString;
    static CString GetSample() { return u"\u00e4b"; }
    static constexpr std::size_t kSize = 8;
};

using Cases = testing::Types<Case<TuBool, true, 1>, Case<TuChar, 'c', 1>, Case<TuInt8, -7, 1>,
    Case<TuInt16, -300, 2>, Case<TuInt32, -70000, 4>, Case<TuLong, -70000L, 4>,
    Case<TuInt64, -5'000'000'000, 8>, Case<TuUInt8, 200, 1>, Case<TuUInt16, 60000, 2>,
    Case<TuUInt32, 4'000'000'000, 4>, Case<TuULong, 4'000'000'000ul, 4>,
    Case<TuUInt64, 10'000'000'000, 8>, Case<TuFloat32, 1.5f, 4>, Case<TuFloat64, -2.25, 8>,
    Case<TuString, 0, 8>>;
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
    EXPECT_NE(boxed, sample);

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
    EXPECT_EQ(dynamic_cast<const Boxed&>(*copy).GetValue(), sample.GetValue());
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

TEST(TuBoxedTest, AWrongCloneFunctionFailsInsteadOfSlicing)
{
    EXPECT_THROW(TuInt32::RTTI.GetClone()(TuInt16(3)), std::bad_cast);
}

} // namespace
