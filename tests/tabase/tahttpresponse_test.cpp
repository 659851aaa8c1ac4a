#include "tabase/tahttpresponse.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

const SNetworkEnd kClosed{ eNE_Closed, {} };

struct SResult
{
    ENetworkEnd end;
    std::string body; // of an answer that is whole or broke off, else what is told of it

    bool operator==(const SResult&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const SResult& result)
{
    return stream << result.end << " " << result.body;
}

SResult resultOf(const TaHTTPResponse& response)
{
    const SNetworkEnd& end = response.GetEnd();
    if (!end.IsWhole() && end.kind != eNE_EarlyClose) {
        return { end.kind, end.text.ToUtf8() };
    }
    std::string body;
    for (const char16_t unit : response.GetBody()) {
        body += static_cast<char>(unit);
    }
    return { end.kind, body };
}

/// How an answer ends behind which the connection is closed. Whether it comes as a whole or in
/// single bytes makes no difference.
SResult parse(std::string_view text, TaHTTPResponse::EWanted wanted = TaHTTPResponse::eW_Body,
    const TaHTTPResponse::SLimits& limits = {})
{
    TaHTTPResponse whole(wanted, limits);
    const bool isWanting = whole.Take(text);
    EXPECT_EQ(isWanting, whole.GetEnd().kind == eNE_None);
    whole.End(kClosed);
    TaHTTPResponse single(wanted, limits);
    for (const char& c : text) {
        if (!single.Take({ &c, 1 })) {
            break;
        }
    }
    single.End(kClosed);
    EXPECT_EQ(resultOf(whole), resultOf(single)) << text;
    return resultOf(whole);
}

/// An answer with status 200.
SResult parseAnswer(const std::string& fields, const std::string& body)
{
    return parse("HTTP/1.1 200 OK\r\n" + fields + "\r\n" + body);
}

SResult complete(const std::string& body) { return { eNE_Complete, body }; }

TEST(TaHTTPResponseTest, ABodyHasItsStatedLengthOrGoesToTheEndOfTheConnection)
{
    EXPECT_EQ(parseAnswer("Content-Length: 5\r\n", "hello, and more"), complete("hello"));
    EXPECT_EQ(
        parseAnswer("content-length:\t4 \r\nX: \r\n", "\xFF\r\n\x80"), complete("\xFF\r\n\x80"));
    EXPECT_EQ(
        parseAnswer("Content-Length: 5, 5\r\nCONTENT-LENGTH: 05\r\n", "hello"), complete("hello"));
    EXPECT_EQ(parseAnswer("Content-Length: 0\r\n", ""), complete(""));
    EXPECT_EQ(parse("HTTP/1.0 200\nContent-Length: 1\n\nx"), complete("x"));
    EXPECT_EQ(parseAnswer("", "hello"), (SResult{ eNE_Closed, "hello" }));
    EXPECT_EQ(parseAnswer("", ""), (SResult{ eNE_Closed, "" }));
    EXPECT_EQ(parseAnswer("Content-Length:\r\n 5\r\n", "hello"), complete("hello")); // folded

    for (const char* early : { "", "HTTP/1.1 20", "HTTP/1.1 200 OK\r\n",
             "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n" }) {
        EXPECT_EQ(parse(early), (SResult{ eNE_EarlyClose, "" })) << early;
    }
    EXPECT_EQ(parseAnswer("Content-Length: 5\r\n", "hell"), (SResult{ eNE_EarlyClose, "hell" }));
}

TEST(TaHTTPResponseTest, ChunksArePutTogether)
{
    const std::string chunked = "Transfer-Encoding: Chunked\r\n";
    EXPECT_EQ(parseAnswer(chunked, "5\r\nhello\r\n00B ; a=\"b\"\r\n, all\r\n you\r\n0\r\n\r\nmore"),
        complete("hello, all\r\n you"));
    EXPECT_EQ(parseAnswer(chunked, "1\nx\n0\nTrailer: 1\n\n"), complete("x"));
    // A length beside it does not count.
    EXPECT_EQ(parseAnswer(chunked + "Content-Length: 3\r\n", "1\r\nx\r\n0\r\n\r\n"), complete("x"));
    for (const char* early : { "", "5", "5\r\nhel", "5\r\nhello", "5\r\nhello\r\n",
             "5\r\nhello\r\n0\r\n", "5\r\nhello\r\n0\r\nTrailer: 1\r\n" }) {
        EXPECT_EQ(parseAnswer(chunked, early).end, eNE_EarlyClose) << early;
    }
    for (const char* wrong :
        { "\r\n", "x\r\n", "-1\r\n", "+1\r\n", "0x1\r\n", "1 1\r\n", ";\r\n", "1\r\nxy\r\n" }) {
        EXPECT_EQ(parseAnswer(chunked, wrong).end, eNE_Malformed) << wrong;
    }
    EXPECT_EQ(parseAnswer(chunked, "1;" + std::string(10'000, 'a')).end, eNE_Malformed);
    for (const char* large : { "40000001\r\n", "FFFFFFFFFFFFFFFF\r\n", "10000000000000001\r\n" }) {
        EXPECT_EQ(parseAnswer(chunked, large).end, eNE_BodyTooLarge) << large;
    }
}

TEST(TaHTTPResponseTest, WhatIsNoAnswerOfHTTPIsMalformed)
{
    for (const char* wrong : { "\r\n", "OFF\n", "HTTP/2 200\r\n", "HTTP/1.x 200\r\n",
             "HTTP/1.1 2000\r\n", "HTTP/1.1 20\r\n", "HTTP/1.1  200\r\n", "http/1.1 200 OK\r\n",
             "HTTP/1.1 099\r\n", "HTTP/1.1\t200\r\n" }) {
        EXPECT_EQ(parse(wrong).end, eNE_Malformed) << wrong;
    }
    EXPECT_EQ(parse("\x1B[2J\n").body,
        "the answer is none of HTTP/1.1; it begins with \"?[2J\""); // harmless on a terminal
    for (const char* wrong :
        { " folded: 1\r\n", "no colon\r\n", "name : 1\r\n", ": 1\r\n", "na\x80me: 1\r\n",
            "Content-Length: \r\n", "Content-Length: -5\r\n", "Content-Length: 5x\r\n",
            "Content-Length: 5\r\nContent-Length: 6\r\n", "Content-Length: 5, 6\r\n" }) {
        EXPECT_EQ(parseAnswer(wrong, "hello").end, eNE_Malformed) << wrong;
    }
    for (const char* unread : { "Transfer-Encoding: gzip, chunked\r\n", "Content-Encoding: br\r\n",
             "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n" }) {
        EXPECT_EQ(parseAnswer(unread, "").end, eNE_Unsupported) << unread;
    }
    EXPECT_EQ(
        parseAnswer("Content-Encoding: Identity\r\nContent-Length: 1\r\n", "x"), complete("x"));
}

TEST(TaHTTPResponseTest, HeadsAndBodiesHaveLimits)
{
    // Exactly at the limit, one byte and one field above it.
    const std::string status = "HTTP/1.1 200 OK\r\n";
    const std::string head = status + "X: ";
    const std::size_t room = 65536 - head.size() - 4;
    EXPECT_EQ(parse(head + std::string(room, 'x') + "\r\n\r\n").end, eNE_Closed);
    EXPECT_EQ(parse(head + std::string(room + 1, 'x') + "\r\n\r\n"),
        (SResult{ eNE_HeadTooLarge, "the header of the answer is larger than 65536 bytes" }));
    EXPECT_EQ(parse(std::string(100'000, 'x')).end, eNE_HeadTooLarge); // without a line end
    std::string fields;
    for (int i = 0; i < 100; ++i) {
        fields += "X: 1\r\n";
    }
    EXPECT_EQ(parseAnswer(fields, "").end, eNE_Closed);
    EXPECT_EQ(parseAnswer(fields + "X: 1\r\n", "").end, eNE_HeadTooLarge);
    // Neither answers on the way nor trailers get around them.
    EXPECT_EQ(
        parse("HTTP/1.1 100\r\n" + fields + "\r\nHTTP/1.1 200\r\nX: 1\r\n").end, eNE_HeadTooLarge);
    EXPECT_EQ(
        parseAnswer("Transfer-Encoding: chunked\r\n", "0\r\n" + fields).end, eNE_HeadTooLarge);

    const auto parseSmall = [](const std::string& rest) {
        return parse("HTTP/1.1 200\r\n" + rest, TaHTTPResponse::eW_Body, { .bodySize = 4 }).end;
    };
    EXPECT_EQ(parseSmall("Content-Length: 4\r\n\r\n1234"), eNE_Complete);
    EXPECT_EQ(parseSmall("Content-Length: 5\r\n\r\n"), eNE_BodyTooLarge);
    EXPECT_EQ(parseSmall("Content-Length: 99999999999999999999\r\n\r\n"), eNE_BodyTooLarge);
    EXPECT_EQ(parseSmall("\r\n1234"), eNE_Closed);
    EXPECT_EQ(parseSmall("\r\n12345"), eNE_BodyTooLarge);
    EXPECT_EQ(parseSmall("Transfer-Encoding: chunked\r\n\r\n2\r\n12\r\n3\r\n"), eNE_BodyTooLarge);
}

TEST(TaHTTPResponseTest, OnlyTheWantedStatusIsTaken)
{
    EXPECT_EQ(parse("HTTP/1.1 404 Not\x1B"
                    "Found\r\n\r\nnothing here"),
        (SResult{ eNE_Refused, "the server answers 404 Not?Found" }));
    EXPECT_EQ(parse("HTTP/1.1 302\r\nLocation: http://a/b.off\r\n\r\n").body,
        "the server answers 302, see http://a/b.off (redirects are not followed)");
    EXPECT_EQ(parse("HTTP/1.1 206 Partial\r\nContent-Length: 1\r\n\r\nx").end, eNE_Refused);
    EXPECT_EQ(parse("HTTP/1.1 101 Switching\r\n\r\n").end, eNE_Refused);
    EXPECT_EQ(parse("HTTP/1.1 103 Early\r\nContent-Length: 7\r\nContent-Encoding: br\r\n\r\n"
                    "HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\nx"),
        complete("x"));

    constexpr auto kStatus = TaHTTPResponse::eW_Status;
    EXPECT_EQ(parse("HTTP/1.1 204 No Content\r\n\r\n", kStatus), complete(""));
    EXPECT_EQ(parse("HTTP/1.1 201 Created\r\nContent-Length: 9\r\n\r\n", kStatus), complete(""));
    EXPECT_EQ(parse("HTTP/1.1 301 Moved\r\n\r\n", kStatus).end, eNE_Refused);
}

TEST(TaHTTPResponseTest, TheEndOfTheConnectionCountsOnlyWhereTheAnswerHasNone)
{
    TaHTTPResponse response;
    EXPECT_TRUE(response.Take("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n12"));
    EXPECT_EQ(response.GetFraction(), 0.5);
    response.End({ eNE_TimedOut, u"late" });
    EXPECT_EQ(response.GetEnd().kind, eNE_TimedOut);
    EXPECT_FALSE(response.Take("34"));
    response.End(kClosed);
    EXPECT_EQ(response.GetEnd().text, u"late");
    EXPECT_EQ(response.GetBody(), u"12");
    EXPECT_EQ(response.GetStatus(), 200u);

    TaHTTPResponse endless;
    EXPECT_TRUE(endless.Take("HTTP/1.1 200 OK\r\n\r\n12"));
    endless.End({ eNE_Failed, u"reset" });
    EXPECT_EQ(endless.GetEnd().kind, eNE_Failed);
}

} // namespace
