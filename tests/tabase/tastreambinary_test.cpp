#include "groundwork/tuexceptions.h"
#include "support/expectfailure.h"
#include "support/temporaryfolder.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamreadbinaryfile.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tabase/tastreamwritebinaryfile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <tuple>
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

std::string bytesOf(const TaStreamWriteBinaryBuffer& buffer)
{
    return std::string(reinterpret_cast<const char*>(buffer.GetData()), buffer.GetSize());
}

std::string bytesOf(const Primitives& values)
{
    TaStreamWriteBinaryBuffer buffer;
    write(buffer, values);
    return bytesOf(buffer);
}

TEST(TaStreamBinaryTest, EveryPrimitiveHasTheBytesOfTheStoredFormat)
{
    std::ifstream file(TA_TEST_DATA_FOLDER "/primitives.bin", std::ios::binary);
    const std::string golden(std::istreambuf_iterator<char>(file), {});
    EXPECT_EQ(bytesOf(kPrimitives), golden);

    TaStreamReadBinaryBuffer reader(golden.data(), golden.size());
    Primitives target;
    std::get<1>(target) = true;
    EXPECT_EQ(bytesOf(read(reader, target)), golden); // the same bits, of a NaN too
    EXPECT_EQ(reader.GetRemaining(), 0u);
}

TEST(TaStreamBinaryTest, EveryTypeIsWrittenAtItsOwnWidth)
{
    const auto widthOf = [](const auto& value) {
        TaStreamWriteBinaryBuffer stream;
        stream << value;
        return stream.GetSize();
    };
    // Wide text has units of UTF-16, whatever wchar_t is.
    EXPECT_EQ(
        (std::vector<std::size_t>{ widthOf('a'), widthOf(1L), widthOf(1UL), widthOf("ab"),
            widthOf(u"ab"), widthOf(L"\U0001F600"), widthOf(static_cast<const char*>(nullptr)) }),
        (std::vector<std::size_t>{ 1, sizeof(long), sizeof(unsigned long), 6, 8, 8, 4 }));
}

TEST(TaStreamBinaryTest, AFileHoldsTheSameBytesAsTheBufferRawOnesAmongThem)
{
    constexpr int kRounds = 2000; // several buffers of the file, cut at any place in a value
    const auto rawSizeOf = [](int round) {
        constexpr std::size_t kSizes[] = { 1, 65535, 65536, 65537, 200'000, 3 };
        return round % 100 == 0 ? kSizes[round / 100 % 6] : 0;
    };
    std::vector<unsigned char> raw(200'000);
    for (std::size_t i = 0; i < raw.size(); ++i) {
        raw[i] = static_cast<unsigned char>(i * 7 + i / 256);
    }
    const TemporaryFolder folder;
    TaStreamWriteBinaryBuffer buffer;
    TaStreamWriteBinaryFile file(folder / "many.bin");
    const std::initializer_list<TuStreamWriteBinary*> writers{ &buffer, &file };
    for (int round = 0; round < kRounds; ++round) {
        for (TuStreamWriteBinary* stream : writers) {
            write(*stream, kPrimitives);
            stream->WriteBuffer(raw.data(), rawSizeOf(round));
        }
        ASSERT_EQ(file.GetPosition(), buffer.GetSize());
    }
    file.Close();
    EXPECT_TRUE(folder.ReadAll("many.bin") == bytesOf(buffer));

    TaStreamReadBinaryFile fromFile(folder / "many.bin");
    TaStreamReadBinaryBuffer fromBuffer(buffer);
    const std::initializer_list<TuStreamReadBinary*> readers{ &fromFile, &fromBuffer };
    for (int round = 0; round < kRounds; ++round) {
        for (TuStreamReadBinary* stream : readers) {
            ASSERT_EQ(bytesOf(read<Primitives>(*stream)), bytesOf(kPrimitives));
            std::vector<unsigned char> bytes(rawSizeOf(round));
            ASSERT_EQ(stream->ReadBuffer(bytes.data(), bytes.size()), bytes.size());
            ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), raw.begin()));
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
}

/// Streams of the coders give some numbers a form of their own, and collect what the others write.
struct ReversingWriter final : TuStreamWriteBinary
{
    using TuStreamWriteBinary::operator<<;
    TuStreamWrite& operator<<(int value) override
    {
        return TuStreamWriteBinary::operator<<(-value);
    }
    void write(const void* data, unsigned long long size) override
    {
        bytes.append(static_cast<const char*>(data), size);
    }
    std::string bytes;
};

struct ReversingReader final : TuStreamReadBinary
{
    using TuStreamReadBinary::operator>>;
    TuStreamRead& operator>>(int& value) override
    {
        TuStreamReadBinary::operator>>(value);
        value = -value;
        return *this;
    }
    unsigned long long read(void* data, unsigned long long size) override
    {
        const std::size_t count = bytes.copy(static_cast<char*>(data), size);
        bytes.erase(0, count);
        return count;
    }
    std::string bytes;
};

TEST(TaStreamBinaryTest, AnOverriddenOperatorIsReachedThroughEveryBase)
{
    ReversingWriter writer;
    TuStreamWriteBinary& binary = writer;
    TuStreamWrite& base = writer;
    binary << 1u << 2 << "text" << true << 'c' << 3;
    base << 4;
    writer << 5 << 6u;
    EXPECT_EQ(writer.bytes,
        std::string("\1\0\0\0\xFE\xFF\xFF\xFF\4\0\0\0text\1c\xFD\xFF\xFF\xFF"
                    "\xFC\xFF\xFF\xFF\xFB\xFF\xFF\xFF\6\0\0\0",
            34));

    ReversingReader reader;
    reader.bytes = writer.bytes;
    using Values = std::tuple<unsigned int, int, CStringA, bool, signed char, int>;
    EXPECT_TRUE(read<Values>(reader) == Values(1u, 2, CStringA("text"), true, 'c', 3));
    TuStreamReadBinary& from = reader;
    int next = 0;
    from >> next;
    EXPECT_EQ(next, 4);
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
