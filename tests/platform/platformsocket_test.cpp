#include "platform/platformsocket.h"

#include "platform/platformerror.h"
#include "support/loopbackserver.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

namespace {

using namespace platform;

const SSocketWait kPatience{ 60'000, {} };
const SSocketWait kMoment{ 20, {} };

/// Two ends of one connection.
struct SPair
{
    SPair()
    {
        EXPECT_TRUE(listener.Listen(0));
        EXPECT_NE(listener.GetPort(), 0);
        EXPECT_EQ(near.Connect("127.0.0.1", listener.GetPort(), kPatience), eSR_Done);
        EXPECT_EQ(listener.Accept(far, kPatience), eSR_Done);
    }

    Socket listener;
    Socket near;
    Socket far;
};

std::string receiveAll(Socket& socket, ESocketResult& end)
{
    std::string text;
    char buffer[1000];
    std::size_t count = 0;
    while ((end = socket.Receive(buffer, sizeof(buffer), count, kPatience)) == eSR_Done) {
        text.append(buffer, count);
    }
    EXPECT_EQ(count, 0u);
    return text;
}

TEST(PlatformSocketTest, BothSidesSendUntilTheyShutDown)
{
    SPair pair;
    ESocketResult end = eSR_Failed;
    ASSERT_EQ(pair.near.Send("ask", 3, kPatience), eSR_Done);
    ASSERT_TRUE(pair.near.ShutDownSending());
    EXPECT_EQ(receiveAll(pair.far, end), "ask");
    EXPECT_EQ(end, eSR_Ended);
    std::string text(20'000'000, 'x'); // more than the system keeps on the way
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<char>(i % 251);
    }
    std::thread sender([&] {
        EXPECT_EQ(pair.far.Send(text.data(), text.size(), kPatience), eSR_Done);
        pair.far.Close();
    });
    EXPECT_TRUE(receiveAll(pair.near, end) == text);
    EXPECT_EQ(end, eSR_Ended);
    sender.join();
}

TEST(PlatformSocketTest, EveryWaitEndsInTime)
{
    SPair pair;
    char unit = '\0';
    std::size_t count = 1;
    EXPECT_EQ(pair.near.Receive(&unit, 1, count, kMoment), eSR_TimedOut);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(pair.near.Receive(&unit, 1, count, { 0, {} }), eSR_TimedOut);
    Socket another;
    EXPECT_EQ(pair.listener.Accept(another, kMoment), eSR_TimedOut);
    // The other side takes nothing: what is on the way is full at some time.
    const std::string text(50'000'000, 'x');
    EXPECT_EQ(pair.near.Send(text.data(), text.size(), kMoment), eSR_TimedOut);
}

TEST(PlatformSocketTest, AnotherThreadEndsAWait)
{
    SPair pair;
    std::atomic<bool> isStopped{ false };
    std::atomic<int> asked{ 0 };
    const SSocketWait wait{ kWaitForever, [&] {
                               ++asked;
                               return isStopped.load();
                           } };
    std::thread stopper([&] {
        while (asked < 3) { // the wait is under way
            std::this_thread::yield();
        }
        isStopped = true;
    });
    char unit = '\0';
    std::size_t count = 0;
    EXPECT_EQ(pair.near.Receive(&unit, 1, count, wait), eSR_Stopped);
    stopper.join();
    // From now on nothing is waited for, even where it would be done at once.
    EXPECT_EQ(pair.near.Send("x", 1, wait), eSR_Stopped);
    EXPECT_EQ(pair.listener.Accept(pair.far, wait), eSR_Stopped);
    EXPECT_EQ(pair.near.Connect("127.0.0.1", pair.listener.GetPort(), wait), eSR_Stopped);
    EXPECT_FALSE(pair.near.IsOpen());
}

TEST(PlatformSocketTest, WhatFailsSaysWhy)
{
    Socket socket;
    EXPECT_EQ(socket.Connect("no.such.host.invalid", 80, kPatience), eSR_UnknownHost);
    EXPECT_EQ(socket.Connect("", 80, kPatience), eSR_UnknownHost);
    EXPECT_EQ(socket.Connect({ "127.0.0.1\0.org", 14 }, 80, kPatience), eSR_UnknownHost);

    SPair pair;
    const std::uint16_t port = pair.listener.GetPort();
    EXPECT_FALSE(socket.Listen(port)); // taken
    EXPECT_FALSE(socket.IsOpen());
    pair.listener.Close();
    SetLastSystemError(0);
    EXPECT_EQ(socket.Connect("127.0.0.1", port, kPatience), eSR_Failed);
    const SSystemError error = GetLastSystemError();
    EXPECT_NE(error.number, 0u);
    EXPECT_FALSE(error.text.empty());

    // A side that has closed resets the connection when more comes. No signal is raised.
    pair.far.Close();
    ESocketResult result = eSR_Done;
    while (result == eSR_Done) {
        result = pair.near.Send("x", 1, kPatience);
    }
    EXPECT_EQ(result, eSR_Failed);

    char unit = '\0';
    std::size_t count = 0;
    Socket none;
    EXPECT_EQ(none.Receive(&unit, 1, count, kPatience), eSR_Failed);
    EXPECT_EQ(none.Send("x", 1, kPatience), eSR_Failed);
    EXPECT_EQ(none.Accept(socket, kPatience), eSR_Failed);
    EXPECT_FALSE(none.ShutDownSending());
    EXPECT_EQ(none.GetPort(), 0);
}

TEST(PlatformSocketTest, AHostIsFoundByItsName)
{
    // The name may have an IPv6 address, too, where nobody listens: all are tried.
    const LoopbackServer server([](LoopbackServer::Connection& connection) {
        connection.Send(connection.ReceiveUntil("\n"));
    });
    Socket socket;
    ASSERT_EQ(socket.Connect("localhost", server.GetPort(), kPatience), eSR_Done);
    ASSERT_EQ(socket.Send("hello\n", 6, kPatience), eSR_Done);
    ESocketResult end = eSR_Failed;
    EXPECT_EQ(receiveAll(socket, end), "hello\n");
}

} // namespace
