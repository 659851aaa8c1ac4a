#include "support/childprocess.h"

#include "platform/platformfolders.h"
#include "platform/platformtext.h"

#include <map>
#include <stdexcept>

#if defined(_WIN32)
#include <windows.h>
#else
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#endif

namespace {

constexpr char kMark[] = "--child-role";
constexpr unsigned int kPatienceMs = 60'000;

std::map<std::string, ChildRole>& roles()
{
    static std::map<std::string, ChildRole> s_roles;
    return s_roles;
}

std::vector<std::string> commandLine(
    const std::string& role, const std::vector<std::string>& arguments)
{
    std::vector<std::string> words{ platform::ToUtf8(platform::GetProgramPath()), kMark, role };
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

} // namespace

bool AddChildRole(const char* name, ChildRole role) { return roles().emplace(name, role).second; }

std::optional<int> PlayChildRole(int argc, char** argv)
{
    const std::vector<std::string> words(argv, argv + argc);
    if (words.size() < 3 || words[1] != kMark) {
        return std::nullopt;
    }
    return roles().at(words[2])({ words.begin() + 3, words.end() });
}

#if defined(_WIN32)

ChildProcess::ChildProcess(const std::string& role, const std::vector<std::string>& arguments)
{
    std::string line;
    for (const std::string& word : commandLine(role, arguments)) {
        line += '"' + word + "\" ";
    }
    std::wstring wideLine = platform::ToWide(platform::FromUtf8(line));
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION made{};
    if (!::CreateProcessW(nullptr, wideLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
            &startup, &made)) {
        throw std::runtime_error("cannot start " + line);
    }
    ::CloseHandle(made.hThread);
    m_process = reinterpret_cast<std::intptr_t>(made.hProcess);
}

ChildProcess::~ChildProcess()
{
    Kill();
    ::CloseHandle(reinterpret_cast<HANDLE>(m_process));
}

int ChildProcess::Wait()
{
    const auto process = reinterpret_cast<HANDLE>(m_process);
    DWORD code = 0;
    if (::WaitForSingleObject(process, kPatienceMs) != WAIT_OBJECT_0) {
        Kill();
        return -1;
    }
    ::GetExitCodeProcess(process, &code);
    return static_cast<int>(code);
}

void ChildProcess::Kill()
{
    const auto process = reinterpret_cast<HANDLE>(m_process);
    ::TerminateProcess(process, static_cast<UINT>(-1));
    ::WaitForSingleObject(process, INFINITE);
}

#else

ChildProcess::ChildProcess(const std::string& role, const std::vector<std::string>& arguments)
{
    std::vector<std::string> words = commandLine(role, arguments);
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    pid_t process = 0;
    if (posix_spawn(&process, pointers[0], nullptr, nullptr, pointers.data(), environ) != 0) {
        throw std::runtime_error("cannot start " + words[0]);
    }
    m_process = process;
}

ChildProcess::~ChildProcess() { Kill(); }

int ChildProcess::Wait()
{
    constexpr timespec kPause{ 0, 1'000'000 };
    int status = 0;
    for (unsigned int i = 0; m_process != 0 && i < kPatienceMs; ++i) {
        if (waitpid(static_cast<pid_t>(m_process), &status, WNOHANG) != 0) {
            m_process = 0;
            return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        }
        nanosleep(&kPause, nullptr);
    }
    Kill();
    return -1;
}

void ChildProcess::Kill()
{
    if (m_process != 0) {
        kill(static_cast<pid_t>(m_process), SIGKILL);
        waitpid(static_cast<pid_t>(m_process), nullptr, 0);
        m_process = 0;
    }
}

#endif
