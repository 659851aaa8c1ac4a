#include "tacompression/tacompresslzma.h"

#include "support/allocationlimit.h"
#include "support/environment.h"
#include "support/expectfailure.h"
#include "support/memoryblocks.h"
#include "support/temporaryfolder.h"
#include "tacompression/tadecompresslzma.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <string>
#include <utility>

namespace {

/// Makes a folder the current one for a while.
class CurrentFolder
{
public:
    explicit CurrentFolder(const std::filesystem::path& folder)
    {
        std::filesystem::current_path(folder);
    }
    ~CurrentFolder() { std::filesystem::current_path(m_former); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    std::filesystem::path m_former = std::filesystem::current_path();
};

/// A coder of the library in `folder`.
template <class Coder> Coder makeCoder(const char* folder)
{
    const CurrentFolder current(folder);
    return Coder();
}

void expectFailures(const std::filesystem::path& folder, unsigned int line)
{
    const CurrentFolder current(folder);
    ExpectFailure<TuException>(
        [] { TaCompressLZMA(); }, u"core/talibraries/tacompression/tacompresslzma", line);
    ExpectFailure<TuException>(
        [] { TaDecompressLZMA(); }, u"core/talibraries/tacompression/tadecompresslzma", line);
}

template <class Coder> int decode(Coder& coder, const std::string& block)
{
    return coder.Decompress(DataOf(block), LengthOf(block));
}

TEST(TaCompressLZMATest, TheLibraryComesFromTheCurrentFolderAlone)
{
    const TemporaryFolder folder;
    const char* const path = std::getenv("PATH");
    const std::string former = path != nullptr ? path : "";
    SetEnvironment("PATH", std::filesystem::absolute(TA_STORING_FOLDER).string());
    expectFailures(folder.GetPath("."), 54);
    SetEnvironment("PATH", former);
    // Not even that which is loaded already from another folder, under the same name.
    const auto coder = makeCoder<TaCompressLZMA>(TA_STORING_FOLDER);
    expectFailures(folder.GetPath("."), 54);
    expectFailures(TA_EMPTY_FOLDER, 61);
    folder.WriteAll("VelCompress.dll", "no library");
    expectFailures(folder.GetPath("."), 54);
}

TEST(TaCompressLZMATest, TheLibraryIsCalledAsItExpects)
{
    auto coder = makeCoder<TaCompressLZMA>(TA_STORING_FOLDER);
    for (const auto& [length, capacity] :
        { std::pair(0u, "\0\0\1\0"), std::pair(19u, "\0\0\1\0"), std::pair(20u, "\25\0\1\0") }) {
        const std::string data = MakeNoise(length);
        ASSERT_EQ(coder.Compress(DataOf(data), length, 77), 1);
        const std::string block = OutputOf(coder);
        // The reserved argument and the room for the output, little-endian.
        EXPECT_EQ(block.substr(0, 6), std::string("S\0", 2) + std::string(capacity, 4));
        auto decoder = makeCoder<TaDecompressLZMA>(TA_STORING_FOLDER);
        ASSERT_EQ(decode(decoder, block), 1);
        EXPECT_EQ(OutputOf(decoder), data);
    }
}

TEST(TaCompressLZMATest, AFailedCompressionLeavesNothing)
{
    auto coder = makeCoder<TaCompressLZMA>(TA_STORING_FOLDER);
    const auto compress = [&coder](const std::string& data, unsigned long length) {
        EXPECT_EQ(coder.Compress(DataOf("held"), 4, 0), 1);
        const int result = coder.Compress(DataOf(data), length, 0);
        EXPECT_EQ(coder.GetOutputSize(), 0u);
        EXPECT_EQ(coder.GetOutputBuffer(), nullptr);
        return result;
    };
    EXPECT_EQ(compress("fail", 4), 0);
    EXPECT_EQ(compress("more", 4), 0) << "a size beyond the buffer";
    // The room for the output, or the source itself, takes more than 32 bits can count.
    EXPECT_EQ(compress("", 4200000000u), 0);
    EXPECT_EQ(compress("", std::numeric_limits<unsigned long>::max()), 0);
    const AllocationLimit limit(0);
    EXPECT_EQ(coder.Compress(DataOf("none"), 4, 0), 0);
}

TEST(TaCompressLZMATest, AFailedDecompressionKeepsWhatItHasNotBegunToReplace)
{
    auto coder = makeCoder<TaDecompressLZMA>(TA_STORING_FOLDER);
    ASSERT_EQ(decode(coder, "S.....first"), 1);
    const unsigned char* const held = coder.GetOutputBuffer();
    EXPECT_EQ(decode(coder, "N.....second"), 0) << "0 is no answer to the question for the size";
    EXPECT_EQ(decode(coder, "S"), 0);
    EXPECT_EQ(coder.GetOutputBuffer(), held);
    EXPECT_EQ(OutputOf(coder), "first");

    for (const char* block : { "F.....second", "M.....second" }) {
        ASSERT_EQ(decode(coder, "S.....first"), 1);
        EXPECT_EQ(decode(coder, block), 0) << block;
        EXPECT_EQ(coder.GetOutputSize(), 0u);
        EXPECT_NE(coder.GetOutputBuffer(), nullptr);
    }
    EXPECT_EQ(decode(coder, "L.....less"), 1);
    EXPECT_EQ(OutputOf(coder), "les");
    const AllocationLimit limit(0);
    try {
        decode(coder, "H.....second");
        ADD_FAILURE() << "nothing was thrown";
    } catch (const char* text) {
        EXPECT_STREQ(text, "Can not allocate memory");
    }
    EXPECT_EQ(coder.GetOutputSize(), 0u);
    EXPECT_EQ(coder.GetOutputBuffer(), nullptr);
}

TEST(TaCompressLZMATest, CopiesHaveTheirOwnOutputAndKeepTheLibrary)
{
    auto copy = makeCoder<TaDecompressLZMA>(TA_STORING_FOLDER);
    {
        auto coder = makeCoder<TaDecompressLZMA>(TA_STORING_FOLDER);
        ASSERT_EQ(decode(coder, "S.....first"), 1);
        copy = coder;
        ASSERT_EQ(decode(coder, "S.....other"), 1);
    }
    EXPECT_EQ(OutputOf(copy), "first");
    const TaDecompressLZMA moved = std::move(copy);
    EXPECT_EQ(OutputOf(moved), "first");
    ASSERT_EQ(decode(copy, "S.....again"), 1); // NOLINT(bugprone-use-after-move): usable
}

#if defined(TA_VELCOMPRESS_FOLDER)

TEST(VelCompressTest, CompressesAndReadsAnyBlock)
{
    auto coder = makeCoder<TaCompressLZMA>(TA_VELCOMPRESS_FOLDER);
    auto decoder = makeCoder<TaDecompressLZMA>(TA_VELCOMPRESS_FOLDER);
    for (const std::string& data :
        { std::string(), std::string(1000000, 'b'), MakeNoise(200000) }) {
        ASSERT_EQ(coder.Compress(DataOf(data), LengthOf(data), 0), 1);
        EXPECT_LT(coder.GetOutputSize(), data[0] == 'b' ? 1000u : 200200u);
        ASSERT_EQ(decode(decoder, OutputOf(coder)), 1);
        EXPECT_TRUE(OutputOf(decoder) == data) << data.size() << " bytes";
    }
}

/// What the program `xz` writes for "abc".
const std::string kStream("\xfd\x37\x7a\x58\x5a\x00\x00\x01\x69\x22\xde\x36\x02\x00\x21\x01\x16\x00"
                          "\x00\x00\x74\x2f\xe5\xa3\x01\x00\x02\x61\x62\x63\x00\x00\xc2\x41\x24\x35"
                          "\x00\x01\x17\x03\x07\x60\x0c\xbc\x90\x42\x99\x0d\x01\x00\x00\x00\x00\x01"
                          "\x59\x5a",
    56);

TEST(VelCompressTest, ReadsAStreamFromElsewhereUnlessItIsDamaged)
{
    auto decoder = makeCoder<TaDecompressLZMA>(TA_VELCOMPRESS_FOLDER);
    ASSERT_EQ(decode(decoder, kStream), 1);
    EXPECT_EQ(OutputOf(decoder), "abc");
    EXPECT_EQ(decode(decoder, kStream + kStream), 0) << "one stream is a block";
    EXPECT_EQ(decode(decoder, kStream + std::string(4, '\0')), 0);
    for (std::size_t i = 0; i < kStream.size(); ++i) {
        EXPECT_EQ(decode(decoder, kStream.substr(0, i)), 0) << "of the first " << i;
        std::string wrong = kStream;
        wrong[i] = static_cast<char>(wrong[i] ^ 0x10);
        EXPECT_EQ(decode(decoder, wrong), 0) << "at " << i;
    }
}

TEST(VelCompressTest, ATinyBlockClaimsNoHugeData)
{
    auto decoder = makeCoder<TaDecompressLZMA>(TA_VELCOMPRESS_FOLDER);
    const auto claim = [](const char* size, const char* checksum) { // of the data, and of that
        return kStream.substr(0, 39) + std::string(size, 5) + std::string(checksum, 4)
            + std::string("\x3e\x30\x0d\x8b\x02\0\0\0\0\1YZ", 12);
    };
    // 100,000 bytes are believed, and then not found; 4 GiB are not believed.
    EXPECT_EQ(decode(decoder, claim("\xa0\x8d\x06\0\0", "\x3c\x6b\x1f\xb6")), 0);
    EXPECT_NE(decoder.GetOutputBuffer(), nullptr);
    const AllocationLimit limit(0);
    EXPECT_EQ(decode(decoder, claim("\xff\xff\xff\xff\x0f", "\x8d\xf3\xe4\x74")), 0);
    EXPECT_EQ(limit.GetLargest(), 0u);
}

#endif

} // namespace
