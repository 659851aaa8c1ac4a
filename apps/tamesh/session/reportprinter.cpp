#include "tamesh/session/reportprinter.h"

#include "tamesh/console.h"
#include "tamesh/session/coordinator.h"
#include "tamesh/session/jobreport.h"

#include <utility>

namespace tamesh {

ReportPrinter::ReportPrinter(IConsole& console, Coordinator& coordinator)
    : m_console(console)
{
    Observe(coordinator.GetReports(), Coordinator::kReported);
}

void ReportPrinter::onNotify([[maybe_unused]] TaObservable& observable,
    [[maybe_unused]] const TaObservableMessage& message, void* parameter)
{
    const auto& report = *static_cast<const JobReport*>(parameter);
    switch (report.GetKind()) {
    case JobReport::eK_Output:
        return PrintOutput(report.GetText());
    case JobReport::eK_Notice:
        return PrintNotice(report.GetText());
    case JobReport::eK_Ended:
        return;
    }
}

void ReportPrinter::PrintOutput(std::string_view text)
{
    printAround([&] { m_isOutputLost = !m_console.WriteOutput(text) || m_isOutputLost; });
}

void ReportPrinter::PrintNotice(std::string_view text)
{
    if (!text.starts_with('\r')) {
        printAround([&] { m_console.WriteError(text); });
        return;
    }
    // Progress writes a bar over the one before, and takes it away at the end.
    m_console.WriteError(text);
    m_bar = text.ends_with('\r') ? std::string() : std::string(text);
}

template <class Write> void ReportPrinter::printAround(Write&& write)
{
    if (std::exchange(m_isPromptShown, false)) {
        m_console.WriteError("\n");
    }
    if (m_bar.empty()) {
        write();
        return;
    }
    m_console.WriteError("\r" + std::string(m_bar.size() - 1, ' ') + "\r");
    write();
    m_console.WriteError(m_bar);
}

} // namespace tamesh
