#pragma once

#include "platform/platformsocket.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

/// A server on this machine, on a thread of its own: it does with each connection what a test says,
/// one after the other, and then closes it.
class LoopbackServer
{
public:
    class Connection
    {
    public:
        Connection(platform::Socket&& socket, const platform::SSocketWait& wait)
            : m_socket(std::move(socket))
            , m_wait(wait)
        {
        }

        /// The bytes up to and with `end`, or to the end of the connection.
        std::string ReceiveUntil(std::string_view end)
        {
            std::string text;
            char unit = '\0';
            std::size_t count = 0;
            while (!text.ends_with(end)
                && m_socket.Receive(&unit, 1, count, m_wait) == platform::eSR_Done) {
                text += unit;
            }
            return text;
        }
        std::string Receive(std::size_t size)
        {
            std::string text(size, '\0');
            std::size_t done = 0;
            std::size_t count = 0;
            while (done < size
                && m_socket.Receive(text.data() + done, size - done, count, m_wait)
                    == platform::eSR_Done) {
                done += count;
            }
            text.resize(done);
            return text;
        }
        /// Returns when the other side has closed.
        void AwaitEnd()
        {
            char unit = '\0';
            std::size_t count = 0;
            while (m_socket.Receive(&unit, 1, count, m_wait) == platform::eSR_Done) { }
        }
        bool Send(std::string_view text)
        {
            return m_socket.Send(text.data(), text.size(), m_wait) == platform::eSR_Done;
        }

    private:
        platform::Socket m_socket;
        const platform::SSocketWait& m_wait;
    };

    explicit LoopbackServer(std::function<void(Connection&)> serve)
        : m_serve(std::move(serve))
        , m_isListening(m_listener.Listen(0))
        , m_port(m_listener.GetPort())
        , m_thread([this] { run(); })
    {
    }
    /// Ends what the server still waits for.
    ~LoopbackServer()
    {
        m_isStopped = true;
        m_thread.join();
    }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    std::uint16_t GetPort() const { return m_port; }
    /// "http://127.0.0.1:1234"
    std::string GetAddress(std::string_view scheme) const
    {
        return std::string(scheme) + "://127.0.0.1:" + std::to_string(m_port);
    }

private:
    void run()
    {
        const platform::SSocketWait wait{ platform::kWaitForever,
            [this] { return m_isStopped.load(); } };
        platform::Socket socket;
        while (m_isListening && m_listener.Accept(socket, wait) == platform::eSR_Done) {
            Connection connection(std::move(socket), wait);
            m_serve(connection);
        }
    }

    const std::function<void(Connection&)> m_serve;
    platform::Socket m_listener;
    const bool m_isListening;
    const std::uint16_t m_port;
    std::atomic<bool> m_isStopped{ false };
    std::thread m_thread; // last: it uses all of the others
};
