#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What a process of this test program does instead of the tests; returns its exit code.
using ChildRole = int (*)(const std::vector<std::string>& arguments);

/// To be called by an initialiser: `const bool kIsAdded = AddChildRole("reader", read);`
bool AddChildRole(const char* name, ChildRole role);
/// For `main`: plays the role that the command line names, if it does.
std::optional<int> PlayChildRole(int argc, char** argv);

/// This test program once more, in a role of its own. Words of the command line are ASCII, without
/// quotation marks.
class ChildProcess
{
public:
    explicit ChildProcess(const std::string& role, const std::vector<std::string>& arguments = {});
    /// Kills it where it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Its exit code; -1 where it was killed, now or before, for it did not end within a minute.
    int Wait();
    void Kill();

private:
    std::intptr_t m_process = 0;
};
