#pragma once

#include "tamesh/mesh.h"
#include "tamesh/meshlines.h"

#include <cstdint>
#include <string_view>

namespace tamesh {

/// Takes the words of one line of a text mesh, as numbers or as they are.
///
/// Numbers are those of the C locale. They are parsed here and not by the library's word reader,
/// which clamps and wraps integers, because an index that is out of range must be shown as it
/// stands in the file.
///
/// Failure: MeshFailure, for the line that the words are of.
class MeshWords
{
public:
    explicit MeshWords(const MeshLines& lines)
        : MeshWords(lines, lines.GetLine())
    {
    }
    MeshWords(const MeshLines& lines, std::string_view text)
        : m_lines(&lines)
        , m_rest(text)
    {
        skipBlanks();
    }

    bool IsAtEnd() const { return m_rest.empty(); }
    /// Empty at the end of the line.
    std::string_view TakeWord();
    /// `what` names the number in the message: "a coordinate".
    double TakeFinite(std::string_view what);
    std::uint64_t TakeCount(std::string_view what);
    /// Three coordinates.
    SPoint TakePoint();
    /// Sees that what is left of the line are numbers: colours, normals.
    void SkipNumbers();

    /// The same for a word already taken.
    std::int64_t ParseInteger(std::string_view word, std::string_view what) const;

private:
    void skipBlanks();

    const MeshLines* m_lines;
    std::string_view m_rest; // begins with a word, or is empty
};

} // namespace tamesh
