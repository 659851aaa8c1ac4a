#include "tamesh/networkmesh.h"

#include "support/loopbackserver.h"
#include "tamesh/commands.h"
#include "tamesh/fakeconsole.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

namespace {

using namespace tamesh;
using Connection = LoopbackServer::Connection;

const std::string kMesh = "OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";

std::string answerWith(const std::string& body)
{
    return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// What `tamesh info` makes of a server.
class NetworkMeshTest : public testing::Test
{
protected:
    /// Over HTTP where the server is to be asked first.
    EExitCode info(const std::string& scheme, std::function<void(Connection&)> serve,
        const std::string& path = "/a.off")
    {
        m_console.output.clear();
        m_console.error.clear();
        const LoopbackServer server([&](Connection& connection) {
            if (scheme == "http") {
                connection.ReceiveUntil("\r\n\r\n");
            }
            serve(connection);
        });
        m_name = server.GetAddress(scheme) + path;
        return ShowMeshes(m_console, { m_name });
    }

    EExitCode infoOf(
        const std::string& scheme, const std::string& text, const std::string& path = "/a.off")
    {
        return info(
            scheme, [&](Connection& connection) { connection.Send(text); }, path);
    }

    void expectFailure(EExitCode code, const std::string& text)
    {
        EXPECT_EQ(code, eEC_Failed);
        EXPECT_EQ(m_console.error, m_name + ": " + text + "\n");
        EXPECT_EQ(m_console.output, "");
    }

    void expectTriangle(EExitCode code)
    {
        EXPECT_EQ(code, eEC_Done) << m_console.error;
        EXPECT_TRUE(m_console.output.starts_with(m_name + " (")) << m_console.output;
        EXPECT_NE(m_console.output.find("vertices             3\n"), std::string::npos);
        EXPECT_NE(m_console.output.find("upper bound          1 1 0\n"), std::string::npos);
    }

    FakeConsole m_console;
    std::string m_name;
};

TEST_F(NetworkMeshTest, AMeshIsReadOverBothWithItsLastByte)
{
    const std::string withoutEnd = kMesh.substr(0, kMesh.size() - 1);
    std::string withReturns = kMesh;
    std::ranges::replace(withReturns, '\n', '\r');
    for (const std::string& mesh : { kMesh, withoutEnd, withReturns }) {
        expectTriangle(infoOf("http", answerWith(mesh)));
        expectTriangle(infoOf("tcp", mesh));
    }
    expectTriangle(infoOf("http", "HTTP/1.0 200\n\n" + kMesh)); // to the end of the connection
    expectTriangle(infoOf("tcp", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3", "/a.obj"));
    const std::string solid = "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\n"
                              "vertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\nendsolid a";
    expectTriangle(infoOf("http", answerWith(solid), "/a.stl"));
}

TEST_F(NetworkMeshTest, WhatDoesNotComeWholeIsRefusedWithItsReason)
{
    const std::string begun = answerWith(kMesh).substr(0, answerWith(kMesh).size() - 4);
    expectFailure(infoOf("http", begun),
        "the server closed the connection after " + std::to_string(kMesh.size() - 4) + " of "
            + std::to_string(kMesh.size()) + " bytes");
    expectFailure(infoOf("http", "HTTP/1.1 200 OK\r\nX: " + std::string(65536, 'x')),
        "the header of the answer is larger than 65536 bytes");
    expectFailure(
        infoOf("http", "HTTP/1.1 404 Not Found\r\n\r\n"), "the server answers 404 Not Found");
    expectFailure(infoOf("http", kMesh), "the answer is none of HTTP/1.1; it begins with \"OFF\"");

    m_console.timeout = 20;
    const auto faltering = [](const std::string& text) {
        return [text](Connection& connection) {
            connection.Send(text);
            connection.AwaitEnd();
        };
    };
    const std::string late = "the other side did not answer for 20 ms";
    expectFailure(info("http", faltering(begun)), late);
    // Be it in the middle, or where the mesh could be complete.
    expectFailure(info("tcp", faltering(kMesh.substr(0, 20))), late);
    expectFailure(info("tcp", faltering(kMesh)), late);

    // What comes whole is looked at as a file is.
    m_console.timeout = 30'000;
    EXPECT_EQ(infoOf("tcp", kMesh.substr(0, 16)), eEC_Failed);
    EXPECT_TRUE(m_console.error.starts_with(m_name + ":3: the file ends after")) << m_console.error;
    EXPECT_EQ(infoOf("http", answerWith("")), eEC_Failed);
    EXPECT_TRUE(m_console.error.starts_with(m_name + ":1: the file is empty")) << m_console.error;
}

TEST_F(NetworkMeshTest, WhatIsNotReadOverTheNetworkIsRefused)
{
    const std::string refusal
        = "is no text STL, which begins with \"solid\"; binary STL is not read "
          "over the network";
    std::string binary(84 + 50, '\0');
    for (const char* head : { "", "solid" }) {
        binary.replace(0, 5, std::string(head) + std::string(5 - std::string(head).size(), ' '));
        binary[80] = 1;
        expectFailure(infoOf("http", answerWith(binary), "/a.stl"), refusal);
        expectFailure(infoOf("tcp", binary, "/a.stl"), refusal);
    }
    const auto expectNobodyAsked = [&](const std::string& name, const std::string& text) {
        m_console.error.clear();
        EXPECT_EQ(ShowMeshes(m_console, { name }), eEC_Failed);
        EXPECT_EQ(m_console.error, name + ": " + text + "\n");
    };
    expectNobodyAsked("https://127.0.0.1:1/a.off",
        "https is not read, for there is no encryption here; fetch it by other means");
    expectNobodyAsked("tcp://127.0.0.1/a.off", "the port is missing");
    expectNobodyAsked("http://127.0.0.1:1/a.ply",
        "unknown format; the name of a mesh ends in .off, .obj or .stl");
    expectNobodyAsked("http://127.0.0.1:1/\xFF.off", "the name is not valid UTF-8");
}

TEST_F(NetworkMeshTest, AnInterruptEndsTheWait)
{
    const auto interrupting = [&](Connection& connection) {
        connection.Send("HTTP/1.1 200 OK\r\n\r\nOFF\n");
        m_console.interrupt.Set();
        connection.AwaitEnd();
    };
    for (const char* scheme : { "http", "tcp" }) { // whose text is none that can be read
        m_console.interrupt.Reset();
        EXPECT_EQ(info(scheme, interrupting), eEC_Interrupted);
        EXPECT_EQ(m_console.error, m_name + ": interrupted\n");
    }
}

} // namespace
