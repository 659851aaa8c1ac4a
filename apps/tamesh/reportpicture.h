#pragma once

#include <string>

namespace tamesh {

class Document;
class HtmlText;
class IConsole;

/// The mesh of a document as it was drawn last: with the colours, the path and the options of its
/// picture. Where there is no picture, it has the colours that are stored, or those of heights.
/// Nothing where there is no mesh; of what does not fit it stands a note.
///
/// Failure: Interrupted; what DrawMesh throws.
void AddPicture(
    HtmlText& html, IConsole& console, const std::string& name, const Document& document);

} // namespace tamesh
