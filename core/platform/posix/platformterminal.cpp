#include "platform/platformterminal.h"

#include "platform/inputlines.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace platform {
namespace {

    /// 0 at the end, and where nothing can be read.
    std::size_t readInput(char* bytes, std::size_t size)
    {
        for (;;) {
            const ssize_t got = read(STDIN_FILENO, bytes, size);
            if (got >= 0) {
                return static_cast<std::size_t>(got);
            }
            if (errno == EAGAIN) {
                pollfd more{ STDIN_FILENO, POLLIN, 0 };
                (void)poll(&more, 1, -1);
            } else if (errno != EINTR) {
                return 0;
            }
        }
    }

} // namespace

void SecureStandardStreams()
{
    for (const int stream : { STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO }) {
        if (fcntl(stream, F_GETFD) == -1 && errno == EBADF) {
            // Each opens at the lowest number that is free, which is this one. Nobody reads what
            // can only be written, and the other way round.
            (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

void SurviveFailingWrites()
{
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

bool IsTerminal(EStandardStream stream) { return isatty(stream) == 1; }

unsigned int GetTerminalWidth(EStandardStream stream)
{
    constexpr unsigned int kUsualWidth = 80;
    winsize size{};
    const bool known = ioctl(stream, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : kUsualWidth;
}

bool WriteStandard(EStandardStream stream, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t put = write(stream, text.data(), text.size());
        if (put > 0) {
            text.remove_prefix(static_cast<std::size_t>(put));
        } else if (put < 0 && errno == EAGAIN) {
            // Whoever started the program may have made the stream one that does not wait.
            pollfd room{ stream, POLLOUT, 0 };
            (void)poll(&room, 1, -1);
        } else if (put == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool IsInputTerminal() { return isatty(STDIN_FILENO) == 1; }

bool ReadStandardLine(std::string& line) { return TakeLine(line, readInput); }

void WriteTrace(std::string_view text) { WriteStandard(eSS_Error, text); }

} // namespace platform
