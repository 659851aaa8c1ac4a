#include "groundwork/tucheckreturn.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

namespace {

int s_complaints = 0;

struct CountingPolicy
{
    static void OnUnread() { ++s_complaints; }
};

using Result = TuCheckReturn<bool, CountingPolicy>;

TEST(TuCheckReturnTest, ComplainsOnceForEachResultThatNobodyLookedAt)
{
    s_complaints = 0;
    {
        const Result read = true;
        EXPECT_TRUE(read);
        const Result marked = false;
        marked.MarkRead();
        const Result copied = true; // the copy takes the duty over, and is looked at
        const Result copy = copied; // NOLINT: the copy is what is tested
        EXPECT_TRUE(copy.GetValue());
    }
    try {
        const Result unread = true; // the exception on its way is the greater news
        throw std::runtime_error("failure");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(s_complaints, 0);
    {
        const Result dropped = true;
        Result first = true;
        const Result second = std::move(first);
        Result overwritten = true;
        overwritten = second;
        EXPECT_EQ(s_complaints, 1); // the overwritten one
    }
    EXPECT_EQ(s_complaints, 3);
}

} // namespace
