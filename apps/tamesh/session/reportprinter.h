#pragma once

#include "tabase/taobserver.h"

#include <string>
#include <string_view>

namespace tamesh {

class Coordinator;
class IConsole;

/// Prints what the jobs of a session report: results, progress, and what went wrong.
///
/// Threads: the main thread.
class ReportPrinter final : public TaObserver
{
public:
    /// Both outlive it.
    ReportPrinter(IConsole& console, Coordinator& coordinator);

    /// Whether results did not arrive: a full disk, a closed pipe.
    bool IsOutputLost() const { return m_isOutputLost; }
    /// Results of the main thread itself.
    void PrintOutput(std::string_view text);
    void PrintNotice(std::string_view text);
    /// A prompt stands at the beginning of the line: what comes begins a new one.
    void SetPromptShown(bool isShown) { m_isPromptShown = isShown; }

private:
    void onNotify(
        TaObservable& observable, const TaObservableMessage& message, void* parameter) override;
    /// Calls write() where a bar of progress, or the prompt, are not in its way.
    template <class Write> void printAround(Write&& write);

    IConsole& m_console;
    std::string m_bar; // what stands in the line of the terminal; begins with a carriage return
    bool m_isPromptShown = false;
    bool m_isOutputLost = false;
};

} // namespace tamesh
