#pragma once

#include "tamesh/coloring.h"
#include "tamesh/session/sessioncommand.h"

namespace tamesh {

class IConsole;
class MeshTarget;

/// The colours that a command asks for: computed, or made of what is stored in the mesh. Throws
/// MeshFailure where that is not there.
SColoring MakeColours(IConsole& console, const MeshTarget& target, const SCommand& command);

} // namespace tamesh
