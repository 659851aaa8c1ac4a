#include "groundwork/tuexceptions.h"
#include "support/bufferbytes.h"
#include "support/expectfailure.h"
#include "support/memorystreams.h"
#include "support/temporaryfolder.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamreadbinaryfile.h"
#include "tabase/tastreamwritebinaryfile.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace {

using Primitives = std::tuple<bool, bool, signed char, unsigned char, short, unsigned short, int,
    unsigned int, long long, unsigned long long, float, double, double, CStringA, CString>;

/// The values of the golden file.
const Primitives kPrimitives(true, false, -128, 255, -32768, 65535, std::numeric_limits<int>::min(),
    4000000000u, std::numeric_limits<long long>::min(), 0x0123456789ABCDEFull, -0.1f,
    std::numeric_limits<double>::denorm_min(), -std::numeric_limits<double>::quiet_NaN(),
    CStringA("line\r\n\0end", 10), CString(u"\u00e4 \U0001F600 \0 \xD800", 8));

void write(TuStreamWrite& stream, const Primitives& values)
{
    std::apply([&](const auto&... value) { (stream << ... << value); }, values);
}

template <class Values> Values read(TuStreamRead& stream, Values values = Values())
{
    std::apply([&](auto&... value) { (stream >> ... >> value); }, values);
    return values;
}

std::string bytesOf(const Primitives& values)
{
    return BytesOf([&](auto& stream) { write(stream, values); });
}

TEST(TaStreamBinaryTest, EveryPrimitiveHasTheBytesOfTheStoredFormat)
{
    const std::string golden = ReadFile(TA_TEST_DATA_FOLDER "/primitives.bin");
    EXPECT_EQ(bytesOf(kPrimitives), golden);

    TaStreamReadBinaryBuffer reader(golden.data(), golden.size());
    Primitives target;
    std::get<1>(target) = true;
    EXPECT_EQ(bytesOf(read(reader, target)), golden); // the same bits, of a NaN too
    EXPECT_EQ(reader.GetRemaining(), 0u);
}

TEST(TaStreamBinaryTest, EveryTypeIsWrittenAtItsOwnWidth)
{
    const auto widthOf
        = [](const auto& value) { return BytesOf([&](auto& stream) { stream << value; }).size(); };
    // Wide text has units of UTF-16, whatever wchar_t is.
    EXPECT_EQ((std::vector<std::size_t>{ widthOf('a'), widthOf("ab"), widthOf(u"ab"),
                  widthOf(L"\U0001F600"), widthOf(static_cast<const char*>(nullptr)) }),
        (std::vector<std::size_t>{ 1, 6, 8, 8, 4 }));

    // A long is the number of a fixed width that has its size, for both operators of each stream.
    using Fixed = std::conditional_t<sizeof(long) == sizeof(int), int, long long>;
    using Longs = std::tuple<long, unsigned long>;
    const Longs longs(std::numeric_limits<long>::min(), std::numeric_limits<unsigned long>::max());
    const std::string bytes = BytesOf([&](auto& stream) {
        const auto& [low, high] = longs;
        stream << Fixed{ low } << std::make_unsigned_t<Fixed>{ high };
        static_cast<TuStreamWrite&>(stream) << low << high;
    });
    TaStreamReadBinaryBuffer reader(bytes.data(), bytes.size());
    Longs direct;
    reader >> std::get<0>(direct) >> std::get<1>(direct);
    EXPECT_EQ(direct, longs);
    EXPECT_EQ(read<Longs>(reader), longs);
}

TEST(TaStreamBinaryTest, AFileHoldsTheSameBytesAsTheBufferRawOnesAmongThem)
{
    constexpr int kRounds = 2000; // several buffers of the file, cut at any place in a value
    std::string raw(200'000, '\0');
    for (std::size_t i = 0; i < raw.size(); ++i) {
        raw[i] = static_cast<char>(i * 7 + i / 256);
    }
    const auto rawSizeOf = [](int round) {
        constexpr std::size_t kSizes[] = { 1, 65535, 65536, 65537, 200'000, 3 };
        return round % 100 == 0 ? kSizes[round / 100 % 6] : 0;
    };
    const TemporaryFolder folder;
    TaStreamWriteBinaryFile file(folder / "many.bin");
    TaStreamWriteBinaryBuffer buffer;
    const std::initializer_list<TuStreamWriteBinary*> writers{ &buffer, &file };
    for (int round = 0; round < kRounds; ++round) {
        for (TuStreamWriteBinary* stream : writers) {
            write(*stream, kPrimitives);
            stream->WriteBuffer(raw.data(), rawSizeOf(round));
        }
        ASSERT_EQ(file.GetPosition(), buffer.GetSize());
    }
    file.Close();

    TaStreamReadBinaryFile fromFile(folder / "many.bin");
    TaStreamReadBinaryBuffer fromBuffer(buffer);
    const std::initializer_list<TuStreamReadBinary*> readers{ &fromFile, &fromBuffer };
    for (int round = 0; round < kRounds; ++round) {
        for (TuStreamReadBinary* stream : readers) {
            ASSERT_EQ(bytesOf(read<Primitives>(*stream)), bytesOf(kPrimitives));
            std::string read(rawSizeOf(round), '\0');
            ASSERT_EQ(stream->ReadBuffer(read.data(), read.size()), read.size());
            ASSERT_TRUE(raw.starts_with(read));
        }
        ASSERT_EQ(fromFile.GetPosition(), fromBuffer.GetPosition());
    }
    for (TuStreamReadBinary* stream : readers) {
        // At the end there are fewer bytes than asked for: no failure, unless all are needed.
        unsigned char byte = 0;
        EXPECT_EQ(stream->ReadBuffer(&byte, 1), 0u);
        ExpectFailure<TuExceptionStream>([&] { stream->ReadExactly(&byte, 1); });
        ExpectFailure<TuExceptionStream>([&] { *stream >> byte; });
    }
    TaStreamReadBinaryFile closed(folder / "many.bin");
    closed.Close();
    ExpectFailure<TuExceptionStream>([&] { closed.ReadExactly(raw.data(), 1); });
}

/// Streams of the coders give some numbers a form of their own, and collect what the others write.
struct ReversingWriter final : PlainStreamWrite
{
    using PlainStreamWrite::operator<<;
    TuStreamWrite& operator<<(int value) override { return PlainStreamWrite::operator<<(-value); }
};

struct ReversingReader final : PlainStreamRead
{
    using PlainStreamRead::PlainStreamRead;
    using PlainStreamRead::operator>>;
    TuStreamRead& operator>>(int& value) override
    {
        PlainStreamRead::operator>>(value);
        value = -value;
        return *this;
    }
};

TEST(TaStreamBinaryTest, AnOverriddenOperatorIsReachedThroughEveryBase)
{
    ReversingWriter writer;
    TuStreamWriteBinary& binary = writer;
    binary << 1u << 2 << "text" << true << 3;
    static_cast<TuStreamWrite&>(writer) << 4;
    writer << 5 << 6u;
    using Values = std::tuple<unsigned int, int, CStringA, bool, int, int, int, unsigned int>;
    PlainStreamRead plain(writer.bytes);
    EXPECT_EQ(read<Values>(plain), Values(1u, -2, CStringA("text"), true, -3, -4, -5, 6u));

    ReversingReader reader(writer.bytes);
    TuStreamReadBinary& from = reader;
    unsigned int first = 0;
    int second = 0;
    from >> first >> second;
    EXPECT_EQ(second, 2);
}

TEST(TaStreamBinaryTest, ShortOrMalformedInputFailsAndKeepsTheTarget)
{
    const unsigned char bytes[] = { 2, 1, 2, 3 };
    TaStreamReadBinaryBuffer stream(bytes, sizeof(bytes));
    bool flag = true;
    ExpectFailure<TuExceptionStream>([&] { stream >> flag; });
    EXPECT_TRUE(flag);
    EXPECT_EQ(stream.GetPosition(), 1u);
    EXPECT_EQ(stream.GetRemaining(), 3u);
    int number = 42;
    ExpectFailure<TuExceptionStream>([&] { stream >> number; });
    EXPECT_EQ(number, 42);

    TaStreamReadBinaryBuffer empty(nullptr, 0);
    EXPECT_EQ(empty.ReadBuffer(nullptr, 0), 0u);
    ExpectFailure<TuExceptionStream>([&] { empty >> number; });
}

} // namespace
