#pragma once

#include <string>

class TaNode;

namespace tamesh {

/// A data tree, which may be anybody's, a line for each node down to a depth. The caller has a
/// granted handle, or nobody writes.
std::string FormatTree(const TaNode& root, int depth);

} // namespace tamesh
