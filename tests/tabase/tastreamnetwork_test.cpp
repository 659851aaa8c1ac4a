#include "groundwork/tuexceptions.h"
#include "support/expectfailure.h"
#include "support/loopbackserver.h"
#include "support/testlatch.h"
#include "tabase/tastreamreadasciihttp.h"
#include "tabase/tastreamreadasciitcpip.h"
#include "tabase/tastreamwriteasciihttp.h"
#include "tabase/tastreamwriteasciitcpip.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

constexpr char16_t kReader[] = u"core/talibraries/tabase/tastreamreadascii";
const SNetworkWait kMoment{ 20, nullptr };

/// Sends `text` to everybody and closes.
auto sending(std::string text)
{
    return [text](LoopbackServer::Connection& connection) { connection.Send(text); };
}

/// Answers each request with `answer`.
auto answering(std::string answer)
{
    return [answer](LoopbackServer::Connection& connection) {
        connection.ReceiveUntil("\r\n\r\n");
        connection.Send(answer);
    };
}

CString addressOf(const LoopbackServer& server, std::string_view path = "/a.off")
{
    return CString::FromUtf8(server.GetAddress("http").append(path));
}

TEST(TaNetworkAddressTest, AnAddressIsTakenApart)
{
    const TaNetworkAddress plain(u"HTTP://example.org/a/b.off?c=d#part");
    EXPECT_EQ(plain.GetScheme(), TaNetworkAddress::eS_HTTP);
    EXPECT_EQ(plain.GetHost(), "example.org");
    EXPECT_EQ(plain.GetPort(), 80);
    EXPECT_EQ(plain.GetPath(), "/a/b.off?c=d");
    const TaNetworkAddress address(u"tcp://[::1]:1234");
    EXPECT_EQ(address.GetScheme(), TaNetworkAddress::eS_TCP);
    EXPECT_EQ(address.GetHost(), "::1");
    EXPECT_EQ(address.GetPort(), 1234);
    EXPECT_EQ(address.GetAuthority(), "[::1]:1234");
    EXPECT_EQ(TaNetworkAddress(u"http://a:?x").GetPath(), "/?x");
    // Nothing in it can end the request's line.
    EXPECT_EQ(TaNetworkAddress(u"http://a/\u00E4 \r\n%20").GetPath(), "/%C3%A4%20%0D%0A%20");

    for (const char16_t* wrong : { u"", u"a.off", u"ftp://a/", u"https://a/", u"http:///a",
             u"http://u:p@a/", u"http://a b/", u"http://\u00E4/", u"http://a\r\nX: 1/",
             u"http://a:0/", u"http://a:65536/", u"http://a:+1/", u"http://a:1x/", u"http://[::1/",
             u"http://[::1]x/", u"http://[]/", u"tcp://a", u"tcp://a:/b" }) {
        ExpectFailure<TuExceptionStream>([&] { TaNetworkAddress{ wrong }; });
    }
    EXPECT_TRUE(TaNetworkAddress::IsMeant(u"Https://"));
    EXPECT_FALSE(TaNetworkAddress::IsMeant(u"http:/a"));
}

TEST(TaStreamTCPIPTest, WhatIsWrittenIsReadBack)
{
    std::string received;
    {
        TestLatch served(1);
        const LoopbackServer server([&](LoopbackServer::Connection& connection) {
            received = connection.ReceiveUntil("stop\r\n");
            served.count_down();
        });
        TaSocket socket("127.0.0.1", server.GetPort());
        TaStreamWriteASCIITCPIP writer(std::move(socket));
        writer << 17 << 0.5 << u"an \u00E4" << "stop";
        writer.Flush();
        EXPECT_TRUE(writer.IsOpen());
        writer.Close();
        ExpectFailure<TuExceptionStream>([&] { writer << 1; });
        served.wait();
    }
    EXPECT_EQ(received, "17 0.5\n" + CString(u"an \u00E4").ToCodePage() + "\r\nstop\r\n");
    const LoopbackServer server(sending(received));
    TaStreamReadASCIITCPIP reader("127.0.0.1", server.GetPort());
    int number = 0;
    double real = 0.0;
    CString text;
    reader >> number >> real >> text;
    EXPECT_EQ(number, 17);
    EXPECT_EQ(real, 0.5);
    EXPECT_EQ(text, CString::FromCodePage(CString(u"an \u00E4").ToCodePage()));
    EXPECT_EQ(reader.GetEnd().kind, eNE_None);
    reader >> text >> text; // the end comes behind the last byte
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_TRUE(reader.IsEndOfStream());
    EXPECT_EQ(reader.GetEnd().kind, eNE_Closed);

    TaStreamReadASCIITCPIP closed("127.0.0.1", server.GetPort());
    closed >> number;
    closed.Close(); // with what has come and was not read
    ExpectFailure<TuExceptionStream>([&] { closed >> real; });
}

TEST(TaStreamTCPIPTest, ASourceKnowsWhyItEnded)
{
    CStringA line;
    TuEvent sent(false);
    TuEvent stop(true);
    const LoopbackServer server([&](LoopbackServer::Connection& connection) {
        connection.Send("half a li");
        sent.Set();
        if (connection.ReceiveUntil("!") == "stop!") {
            stop.Set();
        }
        connection.AwaitEnd();
    });
    {
        TaStreamReadASCIITCPIP late("127.0.0.1", server.GetPort(), kMoment);
        EXPECT_EQ(sent.Wait(60'000), TuEvent::eWR_Signaled); // else that is what is late
        late >> line;
        EXPECT_EQ(line, "half a li"); // is not lost
        EXPECT_TRUE(late.IsEndOfStream());
        EXPECT_EQ(late.GetEnd().kind, eNE_TimedOut);
        EXPECT_EQ(late.GetEnd().text, u"the other side did not answer for 20 ms");
    }
    {
        TaSocket socket("127.0.0.1", server.GetPort(), { .stop = &stop });
        EXPECT_TRUE(socket.Send("stop!", 5));
        TaStreamReadASCIITCPIP interrupted(std::move(socket));
        interrupted >> line;
        EXPECT_TRUE(interrupted.IsEndOfStream());
        EXPECT_EQ(interrupted.GetEnd().kind, eNE_Interrupted);
    }
    const LoopbackServer closing([](LoopbackServer::Connection&) {});
    TaSocket socket("127.0.0.1", closing.GetPort());
    while (socket.Send("x", 1)) { // until the system finds out
    }
    EXPECT_EQ(socket.GetEnd().kind, eNE_Failed);
    EXPECT_FALSE(socket.GetEnd().text.IsEmpty());
    char unit = '\0';
    EXPECT_EQ(socket.Receive(&unit, 1), 0u);

    TaStreamWriteASCIITCPIP writer(std::move(socket));
    writer << "lost";
    ExpectFailure<TuExceptionStream>([&] { writer.Flush(); });
}

TEST(TaStreamTCPIPTest, WithoutAConnectionThereIsNoStream)
{
    platform::Socket listener;
    ASSERT_TRUE(listener.Listen(0));
    const std::uint16_t port = listener.GetPort();
    listener.Close();
    const std::string account
        = ExpectFailure<TuExceptionStream>([&] { TaStreamReadASCIITCPIP("127.0.0.1", port); });
    EXPECT_NE(account.find("cannot connect to 127.0.0.1, port " + std::to_string(port) + ": "),
        account.npos)
        << account;
    ExpectFailure<TuExceptionStream>(
        [&] { TaStreamReadASCIIHTTP(u"http://no.such.host.invalid/"); });
    ExpectFailure<TuExceptionStream>([&] { TaStreamReadASCIIHTTP(u"tcp://127.0.0.1:1/a.off"); });
}

TEST(TaStreamHTTPTest, TheEndComesWithTheLastByte)
{
    std::string request;
    std::string authority;
    const auto fetch = [&] {
        const LoopbackServer server([&](LoopbackServer::Connection& connection) {
            request = connection.ReceiveUntil("\r\n\r\n");
            connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\n12 \xFF"
                            "45");
        });
        authority = server.GetAddress("http").substr(7);
        return TaStreamReadASCIIHTTP(addressOf(server, "/a b.off?c"));
    };
    TaStreamReadASCIIHTTP words = fetch();
    EXPECT_EQ(request,
        "GET /a%20b.off?c HTTP/1.1\r\nHost: " + authority
            + "\r\nUser-Agent: TaBase\r\nAccept: */*\r\nAccept-Encoding: identity\r\n"
              "Connection: close\r\n\r\n");
    EXPECT_EQ(words.GetText(), u"12 \u00FF45"); // a byte in each unit
    EXPECT_EQ(words.GetEnd().kind, eNE_Complete);
    int number = 0;
    CStringA line;
    words >> number >> line;
    EXPECT_EQ(number, 12);
    EXPECT_EQ(line,
        "\xFF"
        "45"); // a line takes the last byte in
    EXPECT_TRUE(words.IsEndOfStream());

    const auto read = [](const char* body) {
        TaHTTPResponse response;
        EXPECT_TRUE(response.Take("HTTP/1.1 200 OK\r\n\r\n"));
        EXPECT_TRUE(response.Take(body));
        response.End({ eNE_Closed, {} });
        return TaStreamReadASCIIHTTP(std::move(response));
    };
    TaStreamReadASCIIHTTP broken = read("7 345");
    broken >> number >> number;
    EXPECT_EQ(number, 34); // a word does not
    TaStreamReadASCIIHTTP empty = read("");
    empty >> line;
    EXPECT_TRUE(line.IsEmpty());
    ExpectFailure<TuExceptionStream>([&] { empty >> line; }, kReader, 110);
    ExpectFailure<TuExceptionStream>([&] { read("") >> number; }, kReader, 453);
}

TEST(TaStreamHTTPTest, ASourceKnowsWhyItsAnswerIsNotWhole)
{
    const auto endOf = [](auto serve, const SNetworkWait& wait = {}) {
        const LoopbackServer server(serve);
        return TaStreamReadASCIIHTTP(addressOf(server), wait).GetEnd();
    };
    const std::string begun = "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n1234";
    SNetworkEnd end = endOf(answering(begun));
    EXPECT_EQ(end.kind, eNE_EarlyClose);
    EXPECT_EQ(end.text, u"the server closed the connection after 4 of 10 bytes");
    const auto falteringAfter = [](const std::string& text) {
        return [text](LoopbackServer::Connection& connection) {
            connection.Send(text);
            connection.AwaitEnd();
        };
    };
    EXPECT_EQ(endOf(falteringAfter(begun), kMoment).kind, eNE_TimedOut);
    EXPECT_EQ(endOf(falteringAfter(""), kMoment).kind, eNE_TimedOut);
    TuEvent stop(true);
    end = endOf(
        [&](LoopbackServer::Connection& connection) {
            connection.ReceiveUntil("\r\n\r\n"); // the connection is there
            connection.Send(begun);
            stop.Set();
            connection.AwaitEnd();
        },
        { .stop = &stop });
    EXPECT_EQ(end.kind, eNE_Interrupted);
    EXPECT_EQ(endOf(answering("HTTP/1.1 404 Not Found\r\n\r\nno")).kind, eNE_Refused);
    EXPECT_EQ(endOf(answering("HTTP/1.1 200 OK\r\nX: " + std::string(65536, 'x'))).kind,
        eNE_HeadTooLarge);
}

TEST(TaStreamHTTPTest, WhatIsSentIsWhatWasWritten)
{
    std::vector<std::string> requests;
    {
        const LoopbackServer server([&](LoopbackServer::Connection& connection) {
            requests.push_back(connection.ReceiveUntil("\r\n\r\n"));
            requests.back() += connection.Receive(5005);
            connection.Send(requests.size() == 1
                    ? "HTTP/1.1 500 Full\r\n\r\n"
                    : "HTTP/1.1 201 Created\r\nContent-Length: 2\r\n\r\n");
        });
        TaStreamWriteASCIIHTTP writer(addressOf(server));
        writer << 17 << CString(std::u16string(5000, u'x')); // longer than a conversion at a time
        const std::string account = ExpectFailure<TuExceptionStream>([&] { writer.Send(); });
        EXPECT_NE(account.find("cannot send: the server answers 500 Full"), account.npos)
            << account;
        EXPECT_EQ(writer.GetStatus(), 500u);
        writer.Send(); // it has been kept
        EXPECT_EQ(writer.GetEnd().kind, eNE_Complete);
    }
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0], requests[1]);
    const std::string& request = requests[1];
    EXPECT_TRUE(request.starts_with("PUT /a.off HTTP/1.1\r\n")) << request;
    EXPECT_TRUE(request.ends_with(
        "\r\nContent-Length: 5005\r\n\r\n17\n" + std::string(5000, 'x') + "\r\n"));
}

} // namespace
