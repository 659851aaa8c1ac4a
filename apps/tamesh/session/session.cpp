#include "tamesh/session/session.h"

#include "groundwork/tuexceptions.h"

namespace tamesh {

Session::Session(IConsole& console, Settings& settings)
    : m_settings(settings)
    , m_coordinator(m_trace)
    , m_printer(console, m_coordinator)
    , m_parts{ m_tree, console, m_coordinator }
    , m_status(m_parts, settings)
    , m_import(m_parts)
    , m_compute(m_parts)
    , m_export(m_parts)
    , m_document(m_parts, m_trace)
{
    const bool isStarted = m_coordinator.initMessageHandler() && m_status.initMessageHandler()
        && m_import.StartAndWait() && m_compute.StartAndWait() && m_export.StartAndWait()
        && m_document.StartAndWait();
    if (!isStarted) {
        throw TuException(
            TU_HERE, TuExceptionStream(TU_HERE, u"the system has no thread or no window left"));
    }
}

EExitCode Session::Execute(const SCommand& command)
{
    switch (command.id) {
    case eCI_Wait:
        return Wait();
    case eCI_Help:
        m_printer.PrintOutput(command.help);
        return eEC_Done;
    case eCI_Quit:
        return eEC_Done;
    default:
        break;
    }
    const unsigned int job = m_coordinator.Start(command, getSettings());
    return command.isBackground ? eEC_Done : m_coordinator.WaitFor(job);
}

} // namespace tamesh
