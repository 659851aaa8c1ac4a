#pragma once

#include "groundwork/tuexceptions.h"

#include <gtest/gtest.h>

#include <string>

/// Expects that `action` throws exactly an `Exception`, not a class derived from it, and returns
/// its account. `file` and `line`, where given, are the place that the contract states.
template <class Exception, class Action>
std::string ExpectFailure(Action&& action, const CString& file = CString(), unsigned int line = 0)
{
    try {
        action();
    } catch (const TuException& failure) {
        EXPECT_TRUE(failure.Is(Exception::RTTI)) << failure.what();
        if (!file.IsEmpty()) {
            EXPECT_EQ(failure.GetFile().ToUtf8(), file.ToUtf8());
            EXPECT_EQ(failure.GetLine(), line);
        }
        return failure.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}
