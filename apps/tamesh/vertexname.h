#pragma once

#include "tamesh/mesh.h"

#include <optional>
#include <string_view>
#include <variant>

namespace tamesh {

class Progress;

/// How the user names a vertex: by its number, or by a point, to which it is the nearest.
using VertexName = std::variant<std::uint32_t, SPoint>;

/// Of "17" or "1.5,0,-2"; nothing for what is neither.
std::optional<VertexName> ParseVertexName(std::string_view text);

/// Of vertices that are as near, the first. Nothing for a number that no vertex has. Progress comes
/// to the number of vertices, for a point. Failure: Interrupted, where there is a progress.
std::optional<std::uint32_t> FindVertex(
    const Mesh& mesh, const VertexName& name, Progress* progress = nullptr);

} // namespace tamesh
