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

TEST(TaCompressZIPTest, WritesWhatZlibReads)
{
    for (const std::string& data :
        { std::string(), std::string("a"), std::string(100000, 'b'), MakeNoise(100000) }) {
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

TEST(TaCompressZIPTest, ReadsAStreamOfAnyZlib)
{
    const std::string stream("\x78\x9c\x4b\x04\x00\x00\x62\x00\x62", 9);
    TaDecompressZIP coder;
    ASSERT_EQ(unzip(coder, stream, 1), 1);
    EXPECT_EQ(OutputOf(coder), "a");
}

TEST(TaCompressZIPTest, TheExpectedSizeBoundsTheData)
{
    const std::string stream = zip("compressed");
    TaDecompressZIP coder;
    ASSERT_EQ(unzip(coder, stream, 1000), 1);
    EXPECT_EQ(OutputOf(coder), "compressed") << "the data are as long as they are";
    EXPECT_EQ(unzip(coder, stream, 0), 0);
    EXPECT_EQ(OutputOf(coder), "compressed") << "without an expectation nothing is touched";
    EXPECT_EQ(unzip(coder, stream, 9), 0);
    EXPECT_EQ(coder.GetOutputSize(), 0u);
    EXPECT_EQ(unzip(coder, stream, 10), 1);
    EXPECT_EQ(OutputOf(coder), "compressed");
}

TEST(TaCompressZIPTest, DamagedDataLeaveNothing)
{
    const std::string data = MakeNoise(100);
    const std::string stream = zip(data);
    TaDecompressZIP coder;
    for (std::size_t length = 0; length < stream.size(); ++length) {
        ASSERT_EQ(unzip(coder, stream, 100), 1);
        EXPECT_EQ(unzip(coder, stream.substr(0, length), 100), 0) << "of the first " << length;
        EXPECT_EQ(coder.GetOutputSize(), 0u);
    }
    std::string wrong = stream;
    wrong.back() = static_cast<char>(wrong.back() ^ 1); // of the checksum
    EXPECT_EQ(unzip(coder, wrong, 100), 0);
    EXPECT_EQ(coder.GetOutputSize(), 0u);
}

TEST(TaCompressZIPTest, WhatCannotBeHeldIsRefused)
{
    const std::string data = MakeNoise(1000);
    const std::string stream = zip(data);
    TaCompressZIP zipper;
    TaDecompressZIP unzipper;
    const auto hold = [&] {
        ASSERT_EQ(zipper.Compress(DataOf(data), 10), 1);
        ASSERT_EQ(unzip(unzipper, stream, 1000), 1);
    };
    hold();
    // The room for the output would take more than 32 bits can count; the source is not looked at.
    EXPECT_EQ(zipper.Compress(DataOf(data), 4000000000u), 0);
    EXPECT_EQ(zipper.GetOutputSize(), 0u);
    constexpr unsigned long kMost = std::numeric_limits<unsigned long>::max();
    EXPECT_EQ(zipper.Compress(DataOf(data), kMost), 0);
    if (sizeof(kMost) > sizeof(unsigned int)) {
        EXPECT_EQ(unzip(unzipper, stream, kMost), 0);
        EXPECT_EQ(unzipper.GetOutputSize(), 0u);
    }

    hold();
    const AllocationLimit limit(0);
    EXPECT_EQ(zipper.Compress(DataOf(data), 1000), 0);
    EXPECT_EQ(limit.GetLargest(), 1112u) << "a tenth more, and 12";
    EXPECT_EQ(zipper.GetOutputSize(), 0u);
    EXPECT_EQ(unzip(unzipper, stream, 5000), 0);
    EXPECT_EQ(limit.GetLargest(), 5000u);
    EXPECT_EQ(unzipper.GetOutputSize(), 0u);
}

TEST(TaCompressZIPTest, CopiesHaveTheirOwnOutput)
{
    const std::string stream = zip("the first");
    TaDecompressZIP coder;
    ASSERT_EQ(unzip(coder, stream, 9), 1);
    TaDecompressZIP copy = coder;
    TaDecompressZIP moved = std::move(coder);
    EXPECT_EQ(unzip(moved, zip("another"), 7), 1);
    EXPECT_EQ(OutputOf(copy), "the first");
    EXPECT_EQ(OutputOf(moved), "another");
    EXPECT_EQ(coder.GetOutputSize(), 0u); // NOLINT(bugprone-use-after-move): empty after a move
    copy = moved;
    EXPECT_EQ(unzip(moved, stream, 1), 0);
    EXPECT_EQ(OutputOf(copy), "another");
}

} // namespace
