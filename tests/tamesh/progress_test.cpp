#include "tamesh/progress.h"

#include "groundwork/cstring.h"
#include "tamesh/fakeconsole.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using namespace tamesh;

const std::string kTask = "reading \xC3\xBC\xC3\xBC.off";

/// A task of `seconds` that tells of its progress a thousand times.
void runTask(FakeConsole& console, std::uint64_t seconds)
{
    Progress progress(console, kTask, 1000);
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
    EXPECT_EQ(console.error, kTask + ": 25 %\n" + kTask + ": 50 %\n" + kTask + ": 75 %\n");
}

TEST(ProgressTest, ABarFitsTheTerminalAndIsTakenAway)
{
    FakeConsole console;
    console.width = 80;
    Progress(console, kTask, 0).Advance(0);
    EXPECT_EQ(console.error, ""); // too soon
    runTask(console, 1);
    EXPECT_NE(console.error.find("\r" + kTask + " [####################                    ] 50 %"),
        console.error.npos);
    EXPECT_EQ(console.error.find('\n'), console.error.npos);
    EXPECT_TRUE(console.error.ends_with(" \r"));

    // Every picture stays on its line, however narrow that is, and no character is cut.
    for (console.width = 1; console.width < 45; ++console.width) {
        console.error.clear();
        runTask(console, 1);
        for (std::size_t begin = 0; begin < console.error.size();) {
            const std::size_t end = std::min(console.error.find('\r', begin), console.error.size());
            EXPECT_LE(end - begin, std::max(console.width, 11u) - 1)
                << console.error.substr(begin, 80);
            begin = end + 1;
        }
        EXPECT_EQ(CString::FromUtf8(console.error).GetView().find(u'\uFFFD'), CString::npos);
    }
}

} // namespace
