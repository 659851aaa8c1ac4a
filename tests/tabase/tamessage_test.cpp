#include "tabase/tamessagecommand.h"
#include "tabase/tamessagecreatehwnd.h"
#include "tabase/tamessagehandler.h"
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
using NextMsgBuffered = TaWorkflowManagerBase::TaMessageWorkflowNextMsgBuffered;

template <class Message> void expectNewNumbers(const Message& message)
{
    Message copy(message);
    EXPECT_GT(copy.GetID(), message.GetID());
    const unsigned int former = copy.GetID();
    copy = message;
    EXPECT_GT(copy.GetID(), former);
}

TEST(TaMessageTest, EachIsANewOneAlsoACopyAndWhatIsAssigned)
{
    const TaMessage first;
    EXPECT_GT(first.GetID(), 0u);
    EXPECT_EQ(TaMessage().GetID(), first.GetID() + 1);
    EXPECT_EQ(TaMessage(first).GetID(), first.GetID() + 2); // drawn once, not by each base
    TaMessageHandler handler(u"handler");
    expectNewNumbers(first);
    expectNewNumbers(TaMessageString(nullptr, u"text"));
    expectNewNumbers(TaMessageCreateHWND(handler));
    expectNewNumbers(TaMessageRunnable(nullptr));
    expectNewNumbers(TaMessageShutDown());
    expectNewNumbers(TaMessageWorkflow(TaMessageWorkflow::eM_Start));
    expectNewNumbers(TaMessageCommand(5));
    expectNewNumbers(EndOfTF(EndOfTF::eM_EndOfATF));
    expectNewNumbers(NextMsgBuffered());
}

TEST(TaMessageTest, CopiesAndWhatIsAssignedCarryTheSame)
{
    struct SWork : TaRunnable
    {
        void Run() override { ++runs; }
        int runs = 0;
    };
    const auto work = TuMake<SWork>();
    const TaMessageRunnable runnable(work);
    TaMessageRunnable other(nullptr);
    other = TaMessageRunnable(runnable);
    other.GetRunnable()->Run();
    EXPECT_EQ(work->runs, 1);

    const auto window = reinterpret_cast<HWND>(std::uintptr_t{ 48 });
    TaMessageString text(nullptr, CString());
    text = TaMessageString(window, CString(u"a\0b", 3));
    EXPECT_EQ(text.GetHWND(), window);
    EXPECT_EQ(text.GetMessageString(), CString(u"a\0b", 3));

    TaMessageWindows windows(1, 2, 3);
    windows = TaMessageCommand(5);
    EXPECT_TRUE(windows == TaMessageWindows(273, 5, 0));
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
    EXPECT_TRUE(command.Is(TaMessageCommand::RTTI) && !command.Is(TaMessageWindows::RTTI));
    EXPECT_TRUE(command.IsKindOf(TaMessageWorkflowAction::RTTI));
    EXPECT_FALSE(command.IsKindOf(TaMessageShutDown::RTTI));
}

TEST(TaMessageTest, ActionsAreComparedByTheirValues)
{
    const TaMessageCommand command(5);
    const TaMessageWindows same(273, 5, 0);
    EXPECT_TRUE(command == same && same == command);
    const TaMessageWorkflowAction& action = command;
    EXPECT_TRUE(action == same && same == action);
    EXPECT_FALSE(action != same || same != action);
    EXPECT_TRUE(action != OtherAction() && OtherAction() != action);
    EXPECT_TRUE(action != TaMessageWindows(273, 5, 1));
    EXPECT_TRUE(action != TaMessageWindows(273, 6, 0));
    EXPECT_TRUE(action != TaMessageWindows(274, 5, 0));
}

TEST(TaMessageTest, TellsWhatItIsWithoutALineEnd)
{
    const auto number = [](auto value) { return static_cast<TaMessageWorkflow::EMessage>(value); };
    const auto ofTF = [](auto value) { return static_cast<EndOfTF::EMessage>(value); };
    EXPECT_EQ(TaMessage().ToString(), u"TaMessage");
    EXPECT_EQ(TaMessageCommand(5).ToString(), u"TaMessageCommand (Message 273 [5, 0])");
    EXPECT_EQ(TaMessageWindows(0xFFFFFFFFu, 0xFFFFFFFFFFFFFFFFu, -1).ToString(),
        u"TaMessageWindows (Message 4294967295 [18446744073709551615, -1])");
    const char16_t* const names[] = { u"eM_Start", u"eM_StartSleeping", u"eM_Stop", u"eM_Continue",
        u"eM_Sleep", u"eM_Break", u"eM_Reevaluate", u"eM_Dump", u"???" };
    for (int value = 0; value <= 8; ++value) {
        EXPECT_EQ(TaMessageWorkflow(number(value)).ToString(),
            CString(u"TaMessageWorkflow (") + names[value] + u")");
    }
    EXPECT_EQ(TaMessageWorkflow(number(-1)).ToString(),
        u"TaMessageWorkflow ("
        u"???"
        u")");
    const CString className = EndOfTF::RTTI.GetClassName();
    EXPECT_EQ(EndOfTF(ofTF(0)).ToString(), className + u" (eM_EndOfATF)");
    EXPECT_EQ(EndOfTF(ofTF(1)).ToString(), className + u" (eM_EndOfITF)");
    EXPECT_EQ(EndOfTF(ofTF(2)).ToString(), className + u" (eM_EndOfITFExit)");
    EXPECT_EQ(EndOfTF(ofTF(3)).ToString(),
        className
            + u" ("
              u"???"
              u")");
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
        const std::unique_ptr<const IObject> object(clone(*message));
        const auto& copy = dynamic_cast<const TaMessage&>(*object);
        EXPECT_TRUE(copy.Is(message->GetRTTI()));
        EXPECT_EQ(copy.ToString(), message->ToString());
        EXPECT_GT(copy.GetID(), message->GetID());
    }
    EXPECT_EQ(TuRTTI::getClone(TaMessageShutDown::RTTI.GetClassName()), nullptr);
}

} // namespace
