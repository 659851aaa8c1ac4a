#pragma once

class TaNode;

namespace tamesh {

class HtmlText;

/// A data tree as elements that open and close without a script. It is cut, with a count of what is
/// missing, where it is deep, where a node has many children, and where it is large.
///
/// The caller has a granted handle, or nobody writes.
void AddTree(HtmlText& html, const TaNode& root);

} // namespace tamesh
