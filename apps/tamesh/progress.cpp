#include "tamesh/progress.h"

#include "tamesh/displaytext.h"

#include <algorithm>
#include <utility>

namespace tamesh {

namespace {

    // In milliseconds. A person at a terminal wonders sooner than a log does.
    constexpr std::uint64_t kBarDelay = 300;
    constexpr std::uint64_t kBarInterval = 100;
    constexpr std::uint64_t kLineDelay = 3000;
    constexpr unsigned int kLineStep = 25; // in percent: at most three lines

} // namespace

void CheckInterrupt(const IConsole& console)
{
    if (console.GetInterrupt().IsSet()) {
        throw Interrupted();
    }
}

Progress::Progress(IConsole& console, std::string task, std::uint64_t total)
    : m_console(console)
    , m_task(std::move(task))
    , m_total(std::max(total, std::uint64_t{ 1 }))
    , m_startTime(console.GetMilliseconds())
    , m_terminal(console.IsErrorTerminal())
    , m_nextTime(m_startTime + (m_terminal ? kBarDelay : kLineDelay))
{
}

Progress::~Progress()
{
    if (m_barLength != 0) {
        try {
            m_console.WriteError("\r" + std::string(m_barLength, ' ') + "\r");
        } catch (const std::exception&) {
            return; // what ends the task may be that there is no memory
        }
    }
}

void Progress::Advance(std::uint64_t done)
{
    CheckInterrupt();
    show(static_cast<double>(std::min(done, m_total)) / static_cast<double>(m_total));
}

void Progress::onProgress(double fraction, [[maybe_unused]] const CString& text) { show(fraction); }

void Progress::show(double fraction)
{
    const std::uint64_t now = m_console.GetMilliseconds();
    if (now < m_nextTime || !m_console.IsProgressWanted()) {
        return;
    }
    const auto percent = static_cast<unsigned int>(fraction * 100.0);
    if (m_terminal) {
        m_nextTime = now + kBarInterval;
        showBar(percent);
    } else if (percent < 100 && percent / kLineStep > m_shownPercent / kLineStep) {
        m_shownPercent = percent;
        showLine(percent);
    }
}

void Progress::showBar(unsigned int percent)
{
    constexpr std::size_t kAround = sizeof(" [] 100 %");
    constexpr std::size_t kWidest = 40;
    constexpr std::size_t kNarrowest = 10;

    // One column stays free: some terminals go to the next line when the last one is filled.
    const std::size_t width = std::max<std::size_t>(m_console.GetErrorWidth(), 1) - 1;
    const std::string_view task
        = CutText(m_task, width > kAround + kNarrowest ? width - kAround - kNarrowest : 0);
    const std::size_t barWidth
        = std::min(kWidest, width > kAround + task.size() ? width - kAround - task.size() : 0);
    const std::size_t filled = barWidth * percent / 100;

    std::string text(task);
    text.append(" [").append(filled, '#').append(barWidth - filled, ' ').append("] ");
    text.append(std::to_string(percent)).append(" %");
    const std::size_t length = text.size();
    text.append(m_barLength > length ? m_barLength - length : 0, ' ');
    m_barLength = length;
    m_console.WriteError("\r" + text);
}

void Progress::showLine(unsigned int percent)
{
    m_console.WriteError(m_task + ": " + std::to_string(percent) + " %\n");
}

} // namespace tamesh
