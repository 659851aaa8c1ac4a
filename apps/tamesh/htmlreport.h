#pragma once

#include "tamesh/htmltext.h"

#include <string>

namespace tamesh {

class Document;
class IConsole;

/// A page that shows a document: its picture, its figures and results, its settings, the messages
/// of the session that it comes from, and its data tree. What the document does not have is left
/// out.
///
/// The page is one file, of a size that does not grow without end with the document. It loads
/// nothing, and forbids the browser to; it can be read without its script. Whatever the document
/// holds is text in it.
///
/// `name` is what the user knows the document by.
///
/// Failure: Interrupted; what drawing the mesh throws.
HtmlText MakeReport(IConsole& console, const std::string& name, const Document& document);

} // namespace tamesh
