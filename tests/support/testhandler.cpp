#include "support/testhandler.h"

#include "groundwork/tustreamwriteasciistring.h"
#include "tabase/tamessagecreatehwnd.h"
#include "tabase/tamessageshutdown.h"

#include <chrono>
#include <thread>

TU_DEFINE_RTTI(NumberMessage, TaMessage, nullptr, nullptr);
TU_DEFINE_RTTI(DerivedMessage, NumberMessage, nullptr, nullptr);
TU_DEFINE_RTTI(OtherMessage, TaMessage, nullptr, nullptr);

namespace {

/// False where that does not come in time.
template <class Predicate> bool waitUntil(Predicate isSo)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(kPatienceMs);
    while (!isSo() && Clock::now() < end) {
        std::this_thread::yield();
    }
    return isSo();
}

} // namespace

int NumberOf(const TaMessage& message)
{
    const auto* const number = dynamic_cast<const NumberMessage*>(&message);
    return number != nullptr ? number->GetNumber() : -1;
}

void Notes::Add(const std::string& word)
{
    const std::lock_guard guard(m_lock);
    m_words.push_back(word);
}

bool Notes::WaitFor(std::size_t count)
{
    return waitUntil([&] {
        const std::lock_guard guard(m_lock);
        return m_words.size() >= count;
    });
}

std::string Notes::Take()
{
    const std::lock_guard guard(m_lock);
    std::string text;
    for (const std::string& word : std::exchange(m_words, {})) {
        text += word + ' ';
    }
    return text;
}

Handle Answering(long long result)
{
    return [result](const TaMessage&) { return result; };
}

Handle Noting(Notes& notes, const char* name)
{
    return [&notes, name](const TaMessage& message) {
        notes.Add(name + std::to_string(NumberOf(message)));
        return 0LL;
    };
}

Handle Passing(SGate& gate, long long result)
{
    return [&gate, result](const TaMessage&) {
        gate.Pass();
        return result;
    };
}

Subscribe ToCommand(unsigned long long number)
{
    return [number](TaMessageHandlerBase& handler) { handler.SubscribeCommand(number); };
}

DispatcherHandler::DispatcherHandler(const char16_t* name, Handle handle, Subscribe subscribe)
    : LocalHandler(name, std::move(handle), std::move(subscribe), false)
{
    EXPECT_EQ(TaMessageDispatcher::SendPrivateMessage(TaMessageCreateHWND(*this)), 1);
}

DispatcherHandler::~DispatcherHandler()
{
    // The window ends on its own thread.
    EXPECT_EQ(TaMessageDispatcher::SendMessage(TaMessageShutDown(), *this), 0);
}

void DispatcherHandler::onSubscribeMessages()
{
    SubscribeMessage(TaMessageShutDown());
    LocalHandler::onSubscribeMessages();
}

long long DispatcherHandler::handleMessage(const TaMessage& message)
{
    if (message.Is(TaMessageShutDown::RTTI)) {
        EXPECT_TRUE(destroyMessageHandler());
        return 0;
    }
    return LocalHandler::handleMessage(message);
}

std::vector<long long> SendToAll(const TaMessage& message)
{
    TuList<long long> results;
    TaMessageDispatcher::SendMessage(message, results);
    return { results.begin(), results.end() };
}

CString DumpOfDispatcher()
{
    TuStreamWriteASCIIStringT<CString> text;
    TaMessageDispatcher::GetInstance().Dump(text);
    return text.GetText();
}

bool WaitForDump(const CString& part)
{
    const bool isThere = waitUntil([&] { return DumpOfDispatcher().Find(part) != CString::npos; });
    EXPECT_TRUE(isThere) << DumpOfDispatcher().ToUtf8();
    return isThere;
}
