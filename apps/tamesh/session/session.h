#pragma once

#include "groundwork/tuevent.h"
#include "tamesh/session/computehandler.h"
#include "tamesh/session/coordinator.h"
#include "tamesh/session/documenthandler.h"
#include "tamesh/session/exporthandler.h"
#include "tamesh/session/importhandler.h"
#include "tamesh/session/reportprinter.h"
#include "tamesh/session/sessiontree.h"
#include "tamesh/session/statushandler.h"
#include "tamesh/session/tracerecorder.h"

namespace tamesh {

/// A session: meshes in a data tree, handlers on threads of their own that work on them, and the
/// main thread, which posts the commands of the user and prints what becomes of them.
///
/// Threads: the one that makes it is its main thread.
/// Failure: TuException where the system refuses threads or windows.
class Session
{
public:
    /// Both outlive it.
    Session(IConsole& console, Settings& settings);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Carries out one command. Where it is not one for the background, returns when it has ended,
    /// with its code.
    EExitCode Execute(const SCommand& command);
    /// Returns when all that goes on in the background has ended, with the first code of those that
    /// did not end well since the last time.
    EExitCode Wait() { return m_coordinator.WaitForAll(); }
    bool IsIdle() const { return m_coordinator.IsIdle(); }

    SessionTree& GetTree() { return m_tree; }
    Coordinator& GetCoordinator() { return m_coordinator; }
    ReportPrinter& GetPrinter() { return m_printer; }
    const ReportPrinter& GetPrinter() const { return m_printer; }

private:
    SCommandSettings getSettings() const
    {
        return { m_settings.GetDigits(), m_settings.GetTreeDepth(), m_settings.IsProgressShown(),
            m_settings.GetNetworkTimeout() };
    }

    Settings& m_settings;
    SessionTree m_tree;
    TraceRecorder m_trace;
    Coordinator m_coordinator;
    ReportPrinter m_printer;
    const SSessionParts m_parts;
    StatusHandler m_status;
    ImportHandler m_import;
    ComputeHandler m_compute;
    ExportHandler m_export;
    DocumentHandler m_document;
};

} // namespace tamesh
