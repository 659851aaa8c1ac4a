#pragma once

#include "tamesh/tatracedata.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tamesh {

/// The way of one message to one handler, put together from the steps of a trace. Each time is in
/// microseconds since the session began, and missing where the trace does not tell.
struct SMessageSpan
{
    std::uint32_t messageID = 0;
    std::string messageClass;
    std::string handler; // empty where it is not known
    std::string command; // what the user asked for; empty for other messages
    bool isSend = false; // else it was posted
    bool isDropped = false; // it ended without an answer
    bool isPassedOn = false; // it ended when the dispatcher queued it for the handlers
    std::uint32_t threadID = 0; // of the thread that handled it; 0 where it is not known
    std::optional<std::uint64_t> queued;
    std::optional<std::uint64_t> delivered;
    std::optional<std::uint64_t> ended;
    std::uint64_t traceEnd = 0; // one without an end had none yet

    std::uint64_t GetStart() const
    {
        return queued.value_or(delivered.value_or(ended.value_or(0)));
    }
    /// What is not over lasts to the end of the trace.
    std::uint64_t GetEnd() const { return std::max(GetStart(), ended.value_or(traceEnd)); }
};

constexpr std::size_t kMostTracedSteps = 30000;

/// In the order in which the messages turn up, at most so many, of the first kMostTracedSteps
/// steps. A trace may begin and end amid the way of a message, and may be anybody's.
std::vector<SMessageSpan> FindMessageSpans(const SMessageHistory& history, std::size_t most);

} // namespace tamesh
