#pragma once

#include "tamesh/session/commandhandler.h"

namespace tamesh {

/// Draws pictures of meshes, and packs them.
class ExportHandler final : public CommandHandler
{
public:
    explicit ExportHandler(const SSessionParts& session);
    ~ExportHandler() override { StopAndWait(TuEvent::kInfinite); }

private:
    void carryOut(const SJob& job) override;

    void picture(const SJob& job);
    void pack(const SJob& job);
};

} // namespace tamesh
