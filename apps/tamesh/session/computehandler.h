#pragma once

#include "tamesh/session/commandhandler.h"

namespace tamesh {

class MeshTarget;

/// Finds things in meshes, and puts what it finds into the tree. While it computes it reads the
/// geometry and, for a search, writes into the graph; only to store its result does it need the
/// mesh for itself.
class ComputeHandler final : public CommandHandler
{
public:
    explicit ComputeHandler(const SSessionParts& session);
    ~ComputeHandler() override { StopAndWait(TuEvent::kInfinite); }

private:
    void carryOut(const SJob& job) override;

    static void info(const SJob& job, MeshTarget& target);
    static void components(const SJob& job, MeshTarget& target);
    static void path(const SJob& job, MeshTarget& target);
    static void distance(const SJob& job, MeshTarget& target);
    static void color(const SJob& job, MeshTarget& target);
};

} // namespace tamesh
