#pragma once

#include "tamesh/session/commandhandler.h"

namespace tamesh {

class TraceRecorder;

/// Saves meshes with all that was found in them, forgets them, and shows the data tree.
class DocumentHandler final : public CommandHandler
{
public:
    /// `trace` goes into documents; it outlives the handler.
    DocumentHandler(const SSessionParts& session, const TraceRecorder& trace);
    ~DocumentHandler() override { StopAndWait(TuEvent::kInfinite); }

private:
    void carryOut(const SJob& job) override;

    void save(const SJob& job);
    void close(const SJob& job);
    void showTree(const SJob& job);

    const TraceRecorder& m_trace;
};

} // namespace tamesh
