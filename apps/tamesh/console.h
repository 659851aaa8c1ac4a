#pragma once

#include "groundwork/tuevent.h"

#include <cstdint>
#include <string_view>

namespace tamesh {

/// Where a command's words go. Text is UTF-8.
class IConsole
{
public:
    virtual ~IConsole() = default;

    /// Results. False when they do not arrive: a full disk, a closed pipe.
    [[nodiscard]] virtual bool WriteOutput(std::string_view text) = 0;
    /// What went wrong, and progress.
    virtual void WriteError(std::string_view text) = 0;

    /// Whether a person watches what goes to WriteError, and on how many columns.
    virtual bool IsErrorTerminal() const = 0;
    virtual unsigned int GetErrorWidth() const = 0;
    /// Whether the user wants to be told how far long work is.
    virtual bool IsProgressWanted() const { return true; }
    /// How long to wait for the other side of a connection, in milliseconds.
    virtual unsigned int GetNetworkTimeout() const { return 30'000; }
    /// From a clock that never goes back.
    virtual std::uint64_t GetMilliseconds() const = 0;
    /// Set, once and for all, when the user wants the program to stop.
    virtual const TuEvent& GetInterrupt() const = 0;
};

/// The standard streams of the process.
class StandardConsole final : public IConsole
{
public:
    bool WriteOutput(std::string_view text) override;
    void WriteError(std::string_view text) override;
    bool IsErrorTerminal() const override;
    unsigned int GetErrorWidth() const override;
    bool IsProgressWanted() const override { return m_isProgressWanted; }
    unsigned int GetNetworkTimeout() const override { return m_networkTimeout; }
    std::uint64_t GetMilliseconds() const override;
    const TuEvent& GetInterrupt() const override { return m_interrupt; }

    /// For programs that go on after an interrupt: they clear it.
    TuEvent& GetInterruptToClear() { return m_interrupt; }

    void SetProgressWanted(bool isWanted) { m_isProgressWanted = isWanted; }
    void SetNetworkTimeout(unsigned int milliseconds) { m_networkTimeout = milliseconds; }
    /// What Ctrl-C does. A second one, later than a second after the first, ends the program where
    /// it stands. (What sends the signal to a program and to its group sends it twice at once.)
    /// One thread at a time.
    void Interrupt();

private:
    bool m_isProgressWanted = true;
    unsigned int m_networkTimeout = 30'000;
    TuEvent m_interrupt{ true };
    std::uint64_t m_interruptTime = 0;
};

} // namespace tamesh
