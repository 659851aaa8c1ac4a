#include "groundwork/tucheckreturn.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

int s_complaints = 0;

struct CountingPolicy
{
    static void OnUnread() { ++s_complaints; }
};

using Result = TuCheckReturn<bool, CountingPolicy>;

TEST(TuCheckReturnTest, ComplainsOnceForEachResultThatNobodyLookedAt)
{
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
        const Result copy = dropped; // NOLINT: drops what it took over
        Result overwritten = true;
        overwritten = copy;
        EXPECT_EQ(s_complaints, 1); // the overwritten one, which has the duty of the copy now
    }
    EXPECT_EQ(s_complaints, 2);
}

} // namespace
