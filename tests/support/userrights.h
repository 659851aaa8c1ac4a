#pragma once

#include <fstream>
#include <string>

#if !defined(_WIN32)
#include <grp.h>
#include <unistd.h>
#endif

/// Whether this process may raise priorities: everybody on Windows, elsewhere who has the right.
inline bool MayRaisePriorities()
{
#if defined(_WIN32)
    return true;
#else
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("CapEff:")) {
            constexpr int kSysNice = 23;
            return (std::stoull(line.substr(7), nullptr, 16) >> kSysNice & 1) != 0;
        }
    }
    return false;
#endif
}

#if !defined(_WIN32)
/// Makes the process an ordinary user's; true, too, where it is one.
inline bool BecomeOrdinaryUser()
{
    constexpr unsigned int kNobody = 65534;
    return geteuid() != 0
        || (setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0);
}
#endif
