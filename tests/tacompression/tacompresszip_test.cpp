#include "tacompression/tacompresszip.h"

#include "support/allocationlimit.h"
#include "support/memoryblocks.h"
#include "tacompression/tadecompresszip.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <limits>
#include <string>
#include <utility>

namespace {

std::string zip(const std::string& data)
{
    TaCompressZIP coder;
    EXPECT_EQ(coder.Compress(DataOf(data), LengthOf(data)), 1);
    return OutputOf(coder);
}

int unzip(TaDecompressZIP& coder, const std::string& stream, unsigned long expectedSize)
{
    return coder.Decompress(DataOf(stream), LengthOf(stream), expectedSize);
}

TEST(TaCompressZIPTest, WritesWhatZlibReadsAndReadsIt)
{
    for (const std::string& data : { std::string(), std::string(100000, 'b'), MakeNoise(100000) }) {
        const std::string stream = zip(data);
        std::string back(data.size() + 1, '?');
        auto length = static_cast<uLongf>(back.size());
        ASSERT_EQ(uncompress(reinterpret_cast<Bytef*>(back.data()), &length, DataOf(stream),
                      LengthOf(stream)),
            Z_OK);
        back.resize(length);
        EXPECT_TRUE(back == data) << data.size() << " bytes";

        TaDecompressZIP coder;
        EXPECT_EQ(unzip(coder, stream, LengthOf(data) + 1), 1);
        EXPECT_TRUE(OutputOf(coder) == data) << data.size() << " bytes";
    }
    EXPECT_EQ(zip("").size(), 8u);
}

TEST(TaCompressZIPTest, TheExpectedSizeBoundsTheDataAndDamageLeavesNothing)
{
    const std::string stream = zip("compressed");
    std::string wrong = stream;
    wrong.back() = static_cast<char>(wrong.back() ^ 1); // of the checksum
    TaDecompressZIP coder;
    ASSERT_EQ(unzip(coder, stream, 1000), 1);
    EXPECT_EQ(unzip(coder, stream, 0), 0);
    EXPECT_EQ(OutputOf(coder), "compressed") << "without an expectation nothing is touched";
    for (const auto& [damaged, size] : { std::pair(stream, 9u), std::pair(wrong, 10u),
             std::pair(stream.substr(0, stream.size() - 1), 10u), std::pair(std::string(), 10u) }) {
        ASSERT_EQ(unzip(coder, stream, 10), 1);
        EXPECT_EQ(unzip(coder, damaged, size), 0);
        EXPECT_EQ(coder.GetOutputSize(), 0u);
        EXPECT_EQ(coder.GetOutputBuffer(), nullptr);
    }
}

TEST(TaCompressZIPTest, WhatCannotBeHeldIsRefused)
{
    const std::string data = MakeNoise(1000);
    const std::string stream = zip(data);
    TaCompressZIP zipper;
    TaDecompressZIP unzipper;
    // The room for the output would take more than 32 bits can count; the source is not looked at.
    constexpr unsigned long kMost = std::numeric_limits<unsigned long>::max();
    for (const unsigned long length : { 4000000000ul, kMost }) {
        ASSERT_EQ(zipper.Compress(DataOf(data), 10), 1);
        EXPECT_EQ(zipper.Compress(DataOf(data), length), 0);
        EXPECT_EQ(zipper.GetOutputSize(), 0u);
    }
    ASSERT_EQ(zipper.Compress(DataOf(data), 10), 1);
    ASSERT_EQ(unzip(unzipper, stream, 1000), 1);
    if (sizeof(kMost) > sizeof(unsigned int)) {
        EXPECT_EQ(unzip(unzipper, stream, kMost), 0);
        EXPECT_EQ(unzipper.GetOutputSize(), 0u);
    }
    const AllocationLimit limit(0);
    EXPECT_EQ(zipper.Compress(DataOf(data), 1000), 0);
    EXPECT_EQ(limit.GetLargest(), 1112u) << "a tenth more, and 12";
    EXPECT_EQ(zipper.GetOutputSize(), 0u);
    EXPECT_EQ(unzip(unzipper, stream, 5000), 0);
    EXPECT_EQ(limit.GetLargest(), 5000u);
}

TEST(TaCompressZIPTest, CopiesHaveTheirOwnOutput)
{
    TaDecompressZIP coder;
    ASSERT_EQ(unzip(coder, zip("the first"), 9), 1);
    const TaDecompressZIP copy = coder;
    EXPECT_EQ(unzip(coder, zip("another"), 7), 1);
    EXPECT_EQ(OutputOf(copy), "the first");
    EXPECT_EQ(OutputOf(coder), "another");
}

} // namespace
