#pragma once

#include <cstddef>
#include <string>

namespace platform {

/// Takes the next line, without its end, from what standard input has brought so far;
/// `readInput(bytes, size)` brings more, or returns 0 at the end. False where nothing is left. A
/// line of more than 64 MiB comes in pieces.
template <class ReadInput> bool TakeLine(std::string& line, ReadInput&& readInput)
{
    constexpr std::size_t kLongest = std::size_t{ 64 } << 20;
    static std::string s_pending;
    std::size_t looked = 0;
    std::size_t end = s_pending.npos;
    while ((end = s_pending.find('\n', looked)) == s_pending.npos && s_pending.size() < kLongest) {
        looked = s_pending.size();
        char bytes[4096];
        const std::size_t got = readInput(bytes, sizeof bytes);
        if (got == 0) {
            break;
        }
        s_pending.append(bytes, got);
    }
    if (s_pending.empty()) {
        return false;
    }
    line = s_pending.substr(0, end);
    s_pending.erase(0, end == s_pending.npos ? end : end + 1);
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return true;
}

} // namespace platform
