#pragma once

#include <string>

class TaNode;

namespace tamesh {

/// What the dump of a tree says of one node.
struct SNodeLine
{
    std::string name;
    std::string className;
    std::string value; // empty where the node has none that could be shown
};

/// The caller has a granted handle, or nobody writes. It takes as long as the nodes below are many.
SNodeLine DescribeNode(const TaNode& node);

} // namespace tamesh
