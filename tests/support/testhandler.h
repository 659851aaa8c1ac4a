#pragma once

#include "tabase/tamessagedispatcher.h"

#include <gtest/gtest.h>

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

// What tests of messages and handlers share.

constexpr unsigned int kPatienceMs = 60'000; // spent in full only by a failing test

class NumberMessage : public TaMessage
{
    TU_DECLARE_RTTI

public:
    explicit NumberMessage(int number)
        : m_number(number)
    {
    }
    int GetNumber() const { return m_number; }

private:
    int m_number;
};

class DerivedMessage : public NumberMessage
{
    TU_DECLARE_RTTI

public:
    using NumberMessage::NumberMessage;
};

class OtherMessage : public TaMessage
{
    TU_DECLARE_RTTI
};

/// Of a NumberMessage; -1 for all others.
int NumberOf(const TaMessage& message);

/// What happened, in words that any thread adds.
class Notes
{
public:
    void Add(const std::string& word);
    /// False where they have not come in time.
    bool WaitFor(std::size_t count);
    /// All words since the last time, a space behind each.
    std::string Take();

private:
    std::mutex m_lock; // guards the words
    std::vector<std::string> m_words;
};

/// Where a handler stays until the test lets it go.
struct SGate
{
    void Pass()
    {
        entered.Set();
        EXPECT_EQ(go.Wait(kPatienceMs), TuEvent::eWR_Signaled);
    }
    bool WaitUntilEntered() const { return entered.Wait(kPatienceMs) == TuEvent::eWR_Signaled; }

    TuEvent entered{ true };
    TuEvent go{ true };
};

/// What a handler does with a message.
using Handle = std::function<long long(const TaMessage&)>;
Handle Answering(long long result);
/// Notes its number, behind `name`.
Handle Noting(Notes& notes, const char* name = "");
Handle Passing(SGate& gate, long long result = 0);

using Subscribe = std::function<void(TaMessageHandlerBase&)>;
inline void ToNothing(TaMessageHandlerBase&) { }
inline void ToNumbers(TaMessageHandlerBase& handler) { handler.SubscribeMessage(NumberMessage(0)); }
inline void ToOthers(TaMessageHandlerBase& handler) { handler.SubscribeMessage(OtherMessage()); }
Subscribe ToCommand(unsigned long long number);

/// A handler that does what its test says.
template <class Base> class TestHandlerOf : public Base
{
public:
    template <class... Args>
    explicit TestHandlerOf(Handle handle, Subscribe subscribe, Args&&... args)
        : Base(std::forward<Args>(args)...)
        , m_handle(std::move(handle))
        , m_subscribe(std::move(subscribe))
    {
    }

protected:
    void onSubscribeMessages() override { m_subscribe(*this); }
    long long handleMessage(const TaMessage& message) override
    {
        return m_handle ? m_handle(message) : Base::handleMessage(message);
    }

private:
    Handle m_handle;
    Subscribe m_subscribe;
};

/// On the thread that calls initMessageHandler, which the constructor does where it is told to.
class LocalHandler : public TestHandlerOf<TaMessageHandler>
{
public:
    explicit LocalHandler(const char16_t* name, Handle handle = {}, Subscribe subscribe = ToNumbers,
        bool isStarted = true)
        : TestHandlerOf(std::move(handle), std::move(subscribe), name)
    {
        EXPECT_TRUE(!isStarted || initMessageHandler());
    }
    ~LocalHandler() override { destroyMessageHandler().MarkRead(); }
};

/// On the thread of the dispatcher.
class DispatcherHandler : public LocalHandler
{
public:
    DispatcherHandler(const char16_t* name, Handle handle, Subscribe subscribe = ToNumbers);
    ~DispatcherHandler() override;

protected:
    void onSubscribeMessages() override;
    long long handleMessage(const TaMessage& message) override;
};

/// On a thread of its own, which the constructor starts.
class ThreadedHandler final : public TestHandlerOf<TaMessageHandlerThreaded>
{
public:
    explicit ThreadedHandler(
        const char16_t* name, Handle handle = {}, Subscribe subscribe = ToNumbers)
        : TestHandlerOf(std::move(handle), std::move(subscribe), name, eTP_Normal)
    {
        EXPECT_TRUE(StartAndWait());
    }
    ~ThreadedHandler() override { StopAndWait(kPatienceMs); }
};

inline void Post(int number) { TaMessageDispatcher::PostMessage(TuMake<NumberMessage>(number)); }
inline long long SendTo(const TaMessageHandlerBase& target, int number)
{
    return TaMessageDispatcher::SendMessage(NumberMessage(number), target);
}
/// To all; returns the results.
std::vector<long long> SendToAll(const TaMessage& message);
/// What has been posted and sent by now, not by the dispatcher's own thread, is with its
/// subscribers, or their queues.
inline void WaitForDispatcher() { TaMessageDispatcher::SendMessage(TaMessage()); }

/// Returns when the dispatcher's account of itself has this in it; false where that does not come.
bool WaitForDump(const CString& part);
CString DumpOfDispatcher();
