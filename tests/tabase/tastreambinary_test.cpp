#include "groundwork/tuexceptions.h"
#include "support/expectfailure.h"
#include "support/temporaryfolder.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamreadbinaryfile.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tabase/tastreamwritebinaryfile.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace {

/// One value of each primitive per line; what is read back is compared by its bits.
struct SPrimitives
{
    bool yes = true;
    bool no = false;
    signed char int8 = -128;
    unsigned char uint8 = 255;
    short int16 = -32768;
    unsigned short uint16 = 65535;
    int int32 = std::numeric_limits<int>::min();
    unsigned int uint32 = 4000000000u;
    long long int64 = std::numeric_limits<long long>::min();
    unsigned long long uint64 = 0x0123456789ABCDEFull;
    float float32 = -0.1f;
    double float64 = std::numeric_limits<double>::denorm_min();
    double notANumber = -std::numeric_limits<double>::quiet_NaN();
    CStringA narrow = CStringA("line\r\n\0end", 10);
    CString wide = CString(u"\u00e4 \U0001F600 \0 \xD800", 8);
};

void write(TuStreamWrite& stream, const SPrimitives& values)
{
    stream << values.yes << values.no << values.int8 << values.uint8 << values.int16
           << values.uint16 << values.int32 << values.uint32 << values.int64 << values.uint64
           << values.float32 << values.float64 << values.notANumber << values.narrow << values.wide;
}

SPrimitives read(TuStreamRead& stream)
{
    SPrimitives values{ .yes = false, .no = true };
    stream >> values.yes >> values.no >> values.int8 >> values.uint8 >> values.int16
        >> values.uint16 >> values.int32 >> values.uint32 >> values.int64 >> values.uint64
        >> values.float32 >> values.float64 >> values.notANumber >> values.narrow >> values.wide;
    return values;
}

void expectSame(const SPrimitives& a, const SPrimitives& b)
{
    EXPECT_EQ(a.yes, b.yes);
    EXPECT_EQ(a.no, b.no);
    EXPECT_EQ(a.int8, b.int8);
    EXPECT_EQ(a.uint8, b.uint8);
    EXPECT_EQ(a.int16, b.int16);
    EXPECT_EQ(a.uint16, b.uint16);
    EXPECT_EQ(a.int32, b.int32);
    EXPECT_EQ(a.uint32, b.uint32);
    EXPECT_EQ(a.int64, b.int64);
    EXPECT_EQ(a.uint64, b.uint64);
    EXPECT_EQ(std::bit_cast<unsigned int>(a.float32), std::bit_cast<unsigned int>(b.float32));
    EXPECT_EQ(a.float64, b.float64);
    EXPECT_EQ(std::bit_cast<unsigned long long>(a.notANumber),
        std::bit_cast<unsigned long long>(b.notANumber));
    EXPECT_EQ(a.narrow, b.narrow);
    EXPECT_EQ(a.wide, b.wide);
}

std::string readAll(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

std::string bytesOf(const TaStreamWriteBinaryBuffer& buffer)
{
    return std::string(reinterpret_cast<const char*>(buffer.GetData()), buffer.GetSize());
}

TEST(TaStreamBinaryTest, EveryPrimitiveHasTheBytesOfTheStoredFormat)
{
    const std::string golden = readAll(TA_TEST_DATA_FOLDER "/primitives.bin");
    TaStreamWriteBinaryBuffer written;
    write(written, SPrimitives());
    EXPECT_EQ(bytesOf(written), golden);

    TaStreamReadBinaryBuffer reader(golden.data(), golden.size());
    expectSame(read(reader), SPrimitives());
    EXPECT_EQ(reader.GetRemaining(), 0u);
}

TEST(TaStreamBinaryTest, EveryTypeIsWrittenAtItsOwnWidth)
{
    TaStreamWriteBinaryBuffer stream;
    const auto widthOf = [&](const auto& value) {
        stream.Clear();
        stream << value;
        return stream.GetSize();
    };
    EXPECT_EQ(widthOf('a'), 1u);
    EXPECT_EQ(widthOf(1L), sizeof(long));
    EXPECT_EQ(widthOf(1UL), sizeof(unsigned long));
    EXPECT_EQ(widthOf(std::int64_t{ 1 }), 8u);
    EXPECT_EQ(widthOf(std::size_t{ 1 }), sizeof(std::size_t));
    EXPECT_EQ(widthOf("ab"), 6u);
    EXPECT_EQ(widthOf(u"ab"), 8u);
    EXPECT_EQ(widthOf(L"\U0001F600"), 8u); // two units of UTF-16, whatever wchar_t is
    EXPECT_EQ(widthOf(static_cast<const char*>(nullptr)), 4u);
    EXPECT_FALSE(stream.IsCompressing());
}

TEST(TaStreamBinaryTest, AFileHoldsTheSameBytesAsTheBuffer)
{
    const TemporaryFolder folder;
    TaStreamWriteBinaryBuffer buffer;
    constexpr int kRounds = 2000; // several buffers of the file, cut at any place in a value
    {
        TaStreamWriteBinaryFile file(folder / "many.bin");
        for (int i = 0; i < kRounds; ++i) {
            write(file, SPrimitives());
            write(buffer, SPrimitives());
            EXPECT_EQ(file.GetPosition(), buffer.GetSize());
        }
        file.Close();
    }
    EXPECT_TRUE(folder.ReadAll("many.bin") == bytesOf(buffer));

    TaStreamReadBinaryFile file(folder / "many.bin");
    for (int i = 1; i <= kRounds; ++i) {
        const SPrimitives values = read(file);
        if (i == 1 || i == kRounds) {
            expectSame(values, SPrimitives());
        }
        EXPECT_EQ(
            file.GetPosition(), buffer.GetSize() / kRounds * static_cast<unsigned long long>(i));
    }
    unsigned char byte = 0;
    ExpectFailure<TuExceptionStream>([&] { file >> byte; });
}

TEST(TaStreamBinaryTest, RawBytesOfAnySizeMixWithValues)
{
    const TemporaryFolder folder;
    std::vector<unsigned char> bytes(300'000);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(i * 7 + i / 256);
    }
    constexpr std::size_t kSizes[] = { 0, 1, 65535, 65536, 65537, 200'000, 3 };
    {
        TaStreamWriteBinaryFile file(folder / "raw.bin");
        for (const std::size_t size : kSizes) {
            file << static_cast<unsigned int>(size);
            file.WriteBuffer(bytes.data(), size);
        }
        file.Close();
    }
    const std::string content = folder.ReadAll("raw.bin");
    TaStreamReadBinaryFile fromFile(folder / "raw.bin");
    TaStreamReadBinaryBuffer fromBuffer(content.data(), content.size());
    for (TuStreamReadBinary* stream : { static_cast<TuStreamReadBinary*>(&fromFile),
             static_cast<TuStreamReadBinary*>(&fromBuffer) }) {
        for (const std::size_t size : kSizes) {
            unsigned int stored = 0;
            *stream >> stored;
            ASSERT_EQ(stored, size);
            std::vector<unsigned char> read(size);
            ASSERT_EQ(stream->ReadBuffer(read.data(), size), size);
            EXPECT_TRUE(std::equal(read.begin(), read.end(), bytes.begin()));
        }
        // At the end there are fewer bytes than asked for: no failure, unless all are needed.
        unsigned char byte = 0;
        EXPECT_EQ(stream->ReadBuffer(&byte, 1), 0u);
        ExpectFailure<TuExceptionStream>([&] { stream->ReadExactly(&byte, 1); });
    }
}

/// Streams of the coders give some numbers a form of their own, and collect what the others write.
class ReversingWriter final : public TuStreamWriteBinary
{
public:
    using TuStreamWriteBinary::operator<<;
    TuStreamWrite& operator<<(int value) override
    {
        return TuStreamWriteBinary::operator<<(-value);
    }
    std::string bytes;

private:
    void write(const void* data, unsigned long long size) override
    {
        bytes.append(static_cast<const char*>(data), size);
    }
};

class ReversingReader final : public TuStreamReadBinary
{
public:
    explicit ReversingReader(const std::string& bytes)
        : m_bytes(bytes)
    {
    }
    using TuStreamReadBinary::operator>>;
    TuStreamRead& operator>>(int& value) override
    {
        TuStreamReadBinary::operator>>(value);
        value = -value;
        return *this;
    }

private:
    unsigned long long read(void* data, unsigned long long size) override
    {
        const std::size_t count = m_bytes.copy(static_cast<char*>(data), size, m_position);
        m_position += count;
        return count;
    }

    const std::string& m_bytes;
    std::size_t m_position = 0;
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

    ReversingReader reader(writer.bytes);
    TuStreamReadBinary& from = reader;
    unsigned int first = 0;
    int second = 0;
    int third = 0;
    CStringA text;
    bool flag = false;
    signed char letter = 0;
    from >> first >> second >> text >> flag >> letter >> third;
    EXPECT_EQ(first, 1u);
    EXPECT_EQ(second, 2);
    EXPECT_EQ(text, "text");
    EXPECT_TRUE(flag);
    EXPECT_EQ(letter, 'c');
    EXPECT_EQ(third, 3);
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
