// Two sides of a connection: one measures and writes its numbers as text, the other reads them as
// it would from a file, and asks in the end whether all have come.
//
// Here both are one program, and the server has a thread of its own.

#include "groundwork/tuexceptions.h"
#include "groundwork/tuthread.h"
#include "tabase/tastreamreadasciitcpip.h"
#include "tabase/tastreamwriteasciitcpip.h"

#include <iostream>
#include <utility>

namespace {

/// Serves one connection.
class Server
{
public:
    ~Server() { Finish(); }

    bool Start() { return m_listener.Listen(0) && m_thread.StartAndWait(); }
    bool Finish()
    {
        return m_thread.WaitUntilTerminate(TuEvent::kInfinite) && m_thread.IsSuccessful();
    }
    std::uint16_t GetPort() const { return m_listener.GetPort(); }

private:
    TuCheckReturn<bool> serve()
    {
        platform::Socket accepted;
        if (m_listener.Accept(accepted, { 10'000, {} }) != platform::eSR_Done) {
            return false;
        }
        TaStreamWriteASCIITCPIP stream{ TaSocket(std::move(accepted)) };
        stream << u"Temperatures of the week" << 7;
        for (int day = 0; day < 7; ++day) {
            stream << 18.5 + 0.25 * day;
        }
        stream.Close(); // throws where the numbers could not be sent
        return true;
    }

    platform::Socket m_listener;
    TuThread<Server> m_thread{ *this, &Server::serve, u"Server", eTP_Normal };
};

} // namespace

int main()
{
    Server server;
    if (!server.Start()) {
        std::cerr << "network: this machine lets nobody listen\n";
        return 1;
    }
    try {
        TaStreamReadASCIITCPIP stream("127.0.0.1", server.GetPort(), { .milliseconds = 10'000 });
        CString title;
        int count = 0;
        stream >> title >> count;
        std::cout << title.ToUtf8() << ":";
        for (int i = 0; i < count; ++i) {
            double value = 0.0;
            stream >> value;
            std::cout << ' ' << value;
        }
        std::cout << '\n';
        if (!stream.GetEnd().IsWhole()) { // the last word has taken the reader to the end
            std::cerr << "network: " << stream.GetEnd().text.ToUtf8() << '\n';
            return 1;
        }
    } catch (const TuExceptionStream& failure) {
        std::cerr << "network: " << failure.what() << '\n';
        return 1;
    }
    return server.Finish() ? 0 : 1;
}
