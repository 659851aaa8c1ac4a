#pragma once

#include "tamesh/session/commandhandler.h"

namespace tamesh {

/// Opens meshes and documents.
class ImportHandler final : public CommandHandler
{
public:
    explicit ImportHandler(const SSessionParts& session);
    ~ImportHandler() override { StopAndWait(TuEvent::kInfinite); }

private:
    void carryOut(const SJob& job) override;
};

} // namespace tamesh
