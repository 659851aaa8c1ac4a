#include "tamesh/progress.h"

#include "tamesh/fakeconsole.h"

#include <gtest/gtest.h>

namespace {

using namespace tamesh;

/// A task of `seconds` that tells of its progress a thousand times.
void runTask(FakeConsole& console, std::uint64_t seconds)
{
    Progress progress(console, "reading a.off", 1000);
    for (std::uint64_t step = 1; step <= 1000; ++step) {
        console.now += seconds;
        progress.Advance(step);
    }
}

TEST(ProgressTest, OnlyALongTaskWritesAFewPlainLinesWhereNobodyWatches)
{
    FakeConsole console;
    runTask(console, 2);
    EXPECT_EQ(console.error, "");
    runTask(console, 60);
    EXPECT_EQ(console.error, "reading a.off: 25 %\nreading a.off: 50 %\nreading a.off: 75 %\n");
}

TEST(ProgressTest, ABarFitsTheTerminalAndIsTakenAway)
{
    FakeConsole console;
    console.width = 80;
    Progress(console, "reading a.off", 0).Advance(0);
    EXPECT_EQ(console.error, ""); // too soon
    runTask(console, 1);
    EXPECT_NE(console.error.find("\rreading a.off [####################                    ] 50 %"),
        console.error.npos);
    EXPECT_EQ(console.error.find('\n'), console.error.npos);
    EXPECT_TRUE(console.error.ends_with(" \r"));

    // Every picture stays on its line, however narrow that is.
    for (const unsigned int width : { 1u, 5u, 12u, 20u, 40u }) {
        console.error.clear();
        console.width = width;
        runTask(console, 1);
        for (std::size_t begin = 0; begin < console.error.size();) {
            const std::size_t end = std::min(console.error.find('\r', begin), console.error.size());
            EXPECT_LE(end - begin, std::max(width, 11u) - 1) << console.error.substr(begin, 80);
            begin = end + 1;
        }
    }
}

} // namespace
