#include "tabase/tamessagecommand.h"
#include "tabase/tamessagerunnable.h"
#include "tabase/tamessageshutdown.h"
#include "tabase/tamessagestring.h"
#include "tabase/tamessageworkflow.h"
#include "tabase/taworkflowmanagerbase.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <memory>

namespace {

using EndOfTF = TaWorkflowManagerBase::TaMessageWorkflowEndOfTF;

TEST(TaMessageTest, ACopyAndWhatIsAssignedCarryTheSameUnderANewNumber)
{
    const TaMessage first;
    EXPECT_GT(first.GetID(), 0u);
    EXPECT_EQ(TaMessage(first).GetID(), first.GetID() + 1); // drawn once, not by each base

    const auto window = reinterpret_cast<HWND>(std::uintptr_t{ 48 });
    const TaMessageString copy(TaMessageString(window, CString(u"a\0b", 3)));
    TaMessageString text(nullptr, CString());
    EXPECT_EQ(text.GetID(), copy.GetID() + 1);
    text = copy;
    EXPECT_EQ(text.GetID(), copy.GetID() + 2);
    EXPECT_EQ(text.GetHWND(), window);
    EXPECT_EQ(text.GetMessageString(), CString(u"a\0b", 3));

    struct SWork : TaRunnable
    {
        void Run() override { }
    };
    const TaMessageRunnable runnable(TuMake<SWork>());
    EXPECT_EQ(TaMessageRunnable(runnable).GetRunnable(), runnable.GetRunnable());
}

/// An action that is no window message.
class OtherAction : public TaMessageWorkflowAction
{
    TU_DECLARE_RTTI

public:
    using TaMessageWorkflowAction::operator==;
    bool operator==(const TaMessageWorkflowAction& other) const override { return &other == this; }
};

TU_DEFINE_RTTI(OtherAction, TaMessageWorkflowAction, nullptr, nullptr);

TEST(TaMessageTest, AMessageIsThePatternOfItsClassAndOfThoseThatDeriveFromIt)
{
    const TaMessageCommand command(5);
    const TaMessageWindows window(1, 2, 3);
    const TaMessageShutDown shutDown;
    const TaMessage& anyCommand = command;
    const TaMessage& anyWindow = window;
    EXPECT_TRUE(anyWindow == anyCommand);
    EXPECT_FALSE(anyCommand == anyWindow);
    EXPECT_TRUE(TaMessage() == anyCommand);
    EXPECT_FALSE(anyCommand == static_cast<const TaMessage&>(shutDown));
}

TEST(TaMessageTest, ActionsAreComparedByTheirValues)
{
    const TaMessageCommand command(5);
    const TaMessageWindows same(273, 5, 0);
    EXPECT_TRUE(command == same && same == command);
    const TaMessageWorkflowAction& action = command;
    EXPECT_TRUE(action == same && same == action);
    EXPECT_FALSE(action != same || same != action);
    EXPECT_TRUE(action != OtherAction());
    EXPECT_TRUE(action != TaMessageWindows(273, 5, 1));
    EXPECT_TRUE(action != TaMessageWindows(273, 6, 0));
    EXPECT_TRUE(action != TaMessageWindows(274, 5, 0));
}

TEST(TaMessageTest, TellsWhatItIsWithoutALineEnd)
{
    EXPECT_EQ(TaMessage().ToString(), u"TaMessage");
    EXPECT_EQ(TaMessageCommand(5).ToString(), u"TaMessageCommand (Message 273 [5, 0])");
    EXPECT_EQ(TaMessageWindows(0xFFFFFFFFu, 0xFFFFFFFFFFFFFFFFu, -1).ToString(),
        u"TaMessageWindows (Message 4294967295 [18446744073709551615, -1])");
    int number = -1; // those before and behind the names, too
    for (const CString name : { u"???", u"eM_Start", u"eM_StartSleeping", u"eM_Stop",
             u"eM_Continue", u"eM_Sleep", u"eM_Break", u"eM_Reevaluate", u"eM_Dump", u"???" }) {
        const auto message = static_cast<TaMessageWorkflow::EMessage>(number++);
        EXPECT_EQ(TaMessageWorkflow(message).ToString(), u"TaMessageWorkflow (" + name + u")");
    }
    number = 0;
    for (const CString name : { u"eM_EndOfATF", u"eM_EndOfITF", u"eM_EndOfITFExit", u"???" }) {
        const auto message = static_cast<EndOfTF::EMessage>(number++);
        EXPECT_EQ(
            EndOfTF(message).ToString(), EndOfTF::RTTI.GetClassName() + (u" (" + name) + u")");
    }
}

TEST(TaMessageTest, ThoseThatAreMadeByTypeAreMadeFromAnother)
{
    const TaMessageString text(nullptr, u"text");
    const TaMessageWindows window(1, 2, 3);
    const TaMessageCommand command(5);
    for (const TaMessage* message :
        std::initializer_list<const TaMessage*>{ &text, &window, &command }) {
        EXPECT_EQ(TuRTTI::getCreate(message->GetClassName()), nullptr);
        const TuRTTI::CloneFunction clone = TuRTTI::getClone(message->GetClassName());
        ASSERT_NE(clone, nullptr);
        const std::unique_ptr<const IObject> copy(clone(*message));
        EXPECT_EQ(dynamic_cast<const TaMessage&>(*copy).ToString(), message->ToString());
    }
    EXPECT_EQ(TuRTTI::getClone(TaMessageShutDown::RTTI.GetClassName()), nullptr);
}

} // namespace
