#pragma once

#include "tabase/taprogresssink.h"
#include "tamesh/console.h"

#include <cstdint>
#include <exception>
#include <string>

namespace tamesh {

/// What Progress throws when the user wants the program to stop.
class Interrupted final : public std::exception
{
public:
    const char* what() const noexcept override { return "interrupted"; }
};

/// Throws Interrupted when it is.
void CheckInterrupt(const IConsole& console);

/// Shows how far a long task is: a bar on a terminal, a few plain lines elsewhere, and nothing for
/// a task that is soon done. As a sink it does so for an algorithm.
///
///     Progress progress(console, "reading a.off", size);
///     while (more())
///         progress.Advance(bytesRead);
///
/// Threads: one thread at a time.
/// Failure: Interrupted, from Advance, when the console is. (An algorithm has its break event.) A
///          console that cannot be written to does not stop the task.
class Progress final : public TaProgressSink
{
public:
    /// `task` says what is done; `total` is what Advance comes to in the end.
    Progress(IConsole& console, std::string task, std::uint64_t total);
    /// Takes the bar away.
    ~Progress() override;
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// `done` of the total. Cheap enough for every few thousand steps.
    void Advance(std::uint64_t done);
    /// Throws Interrupted when the console is; shows nothing.
    void CheckInterrupt() const { tamesh::CheckInterrupt(m_console); }
    /// Of an algorithm that has no steps to count; the total does not matter.
    void onProgress(double fraction, const CString& text) override;

private:
    void show(double fraction);
    void showBar(unsigned int percent);
    void showLine(unsigned int percent);

    IConsole& m_console;
    const std::string m_task;
    const std::uint64_t m_total;
    const std::uint64_t m_startTime;
    const bool m_terminal;
    std::uint64_t m_nextTime; // nothing is shown before
    unsigned int m_shownPercent = 0;
    std::size_t m_barLength = 0; // in columns; 0 while no bar stands there
};

/// Counts the steps of a task and now and then tells its progress, where there is one. Cheap enough
/// for every step.
class ProgressSteps
{
public:
    /// `progress` outlives the steps.
    explicit ProgressSteps(Progress* progress)
        : m_progress(progress)
    {
    }

    void Advance()
    {
        constexpr std::uint64_t kStepsPerReport = 4096;
        if (++m_done % kStepsPerReport == 0 && m_progress != nullptr) {
            m_progress->Advance(m_done);
        }
    }

private:
    Progress* m_progress;
    std::uint64_t m_done = 0;
};

} // namespace tamesh
