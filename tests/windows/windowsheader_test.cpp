// Compiled four times: with windows.h before our headers and after them, with and without UNICODE.

#if defined(TA_WINDOWS_FIRST)
#include <windows.h>
#endif

#include "allheaders.h"

#if !defined(TA_WINDOWS_FIRST)
#include <windows.h>
#endif

#include <gtest/gtest.h>

#include <string_view>
#include <type_traits>

namespace {

// The macros of windows.h still name the system's functions.
#if defined(UNICODE)
#define TA_IS_UNTOUCHED(name) std::is_same_v<decltype(&name), decltype(&name##W)>
#else
#define TA_IS_UNTOUCHED(name) std::is_same_v<decltype(&name), decltype(&name##A)>
#endif
static_assert(TA_IS_UNTOUCHED(CreateEvent) && TA_IS_UNTOUCHED(DispatchMessage));
static_assert(TA_IS_UNTOUCHED(GetClassName) && TA_IS_UNTOUCHED(GetMessage));
static_assert(TA_IS_UNTOUCHED(PostMessage) && TA_IS_UNTOUCHED(SendMessage));
#if !defined(GetClassName) || !defined(CreateWindowA) || !defined(CreateWindow)
#error "a macro of windows.h is gone"
#endif

TEST(TA_SUITE, MembersWhoseNamesAreMacrosAreCalledAsEverywhere)
{
    const TuInt32 number(7);
    const IObject& object = number;
    EXPECT_EQ(std::u16string_view(object.GetClassName()), u"TuInt32");
    EXPECT_EQ(object.GetClassNameA(), object.GetClassNameW());
    EXPECT_EQ(TuInt32::RTTI.GetClassName(), object.GetClassName());
    TaObservable().SendMessage(TaObservableMessage(TaObservableMessage::eMT_1, nullptr), nullptr);
    const TaMessageWorkflow message(TaMessageWorkflow::eM_Stop);
    EXPECT_EQ(message.GetMessage(), TaMessageWorkflow::eM_Stop);
    TuList<long long> results;
    TaMessageDispatcher::SendMessage(message, results);
    TaMessageDispatcher::SendMessage(u"here", 1, message);
    TaMessageDispatcher::PostMessage(TuMake<TaMessageWorkflow>(message));
    EXPECT_TRUE(results.IsEmpty()); // nobody has subscribed
    EXPECT_EQ(TaMessageCommand(5).GetMessageID(), UINT{ WM_COMMAND });
    // Something of each library, so that both are linked.
    TaUnionFind sets;
    EXPECT_EQ(TaStreamReadBinaryFile::RTTI.GetClassName(),
        std::u16string_view(u"TaStreamReadBinaryFile"));
}

} // namespace
