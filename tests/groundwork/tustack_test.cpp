#include "groundwork/tustack.h"

#include "groundwork/cstring.h"
#include "support/expectfailure.h"

#include <gtest/gtest.h>

namespace {

TEST(TuStackTest, GivesBackTheNewestFirst)
{
    TuStack<CString> stack;
    stack.Push(u"first");
    stack.Push(u"second");
    stack.Push(stack.GetTop());
    EXPECT_EQ(stack.GetCount(), 3u);
    EXPECT_EQ(stack.Pop(), u"second");
    EXPECT_EQ(stack.Pop(), u"second");
    stack.GetTop() += u"!";
    EXPECT_EQ(stack.Pop(), u"first!");
    EXPECT_TRUE(stack.IsEmpty());
    ExpectFailure<TuExceptionPreconditionViolation>([&] { stack.Pop(); });
    ExpectFailure<TuExceptionPreconditionViolation>([&] { stack.GetTop(); });
}

} // namespace
