#pragma once

#include <cstdint>

class TaNode;

namespace tamesh {

class HtmlText;

/// The values below a part of a document, a row for each, with the parameters that led to them.
/// Nothing where there is none. Long lists are cut, with a count; of what does not fit a mesh of so
/// many vertices stands a note. Trees below a part are gone through as deep as they are usual.
///
/// The caller has a granted handle, or nobody writes.
void AddPartTable(HtmlText& html, const TaNode& part, std::uint32_t vertexCount);

} // namespace tamesh
