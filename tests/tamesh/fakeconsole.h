#pragma once

#include "tamesh/console.h"

#include <string>

/// Keeps what is written, and has the clock and the terminal that a test wants.
class FakeConsole final : public tamesh::IConsole
{
public:
    bool WriteOutput(std::string_view text) override
    {
        output += text;
        return true;
    }
    void WriteError(std::string_view text) override { error += text; }
    bool IsErrorTerminal() const override { return width != 0; }
    unsigned int GetErrorWidth() const override { return width; }
    std::uint64_t GetMilliseconds() const override { return now += pace; }
    unsigned int GetNetworkTimeout() const override { return timeout; }
    const TuEvent& GetInterrupt() const override { return interrupt; }

    std::string output;
    std::string error;
    unsigned int timeout = 30'000;
    unsigned int width = 0; // of the terminal; 0 for none
    mutable std::uint64_t now = 1000;
    std::uint64_t pace = 0; // what passes between two looks at the clock
    TuEvent interrupt{ true };
};
