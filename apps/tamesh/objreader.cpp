#include "tamesh/meshfailure.h"
#include "tamesh/meshlines.h"
#include "tamesh/meshreader.h"
#include "tamesh/meshwords.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace tamesh {

namespace {

    /// An OBJ file: lines that begin with a keyword, of which `v` and `f` make the mesh.
    class OBJReader
    {
    public:
        explicit OBJReader(const SMeshInput& input)
            : m_input(input)
            , m_lines(input)
        {
        }

        Mesh Read();

    private:
        /// A face may name a vertex that comes only later in the file.
        struct SForwardReference
        {
            std::uint32_t vertex;
            std::uint64_t line;
        };

        bool nextStatement();
        void readVertex(MeshWords words);
        void readFace(MeshWords words);
        std::uint32_t parseCorner(const MeshWords& words, std::string_view word);
        void checkForwardReferences() const;

        const SMeshInput& m_input;
        MeshLines m_lines;
        std::string m_joined;
        std::string_view m_statement;
        TuArray<std::uint32_t> m_corners; // of the current face
        TuArray<SForwardReference> m_forward;
        Mesh m_mesh;
    };

    Mesh OBJReader::Read()
    {
        while (nextStatement()) {
            MeshWords words(m_lines, m_statement);
            const std::string_view keyword = words.TakeWord();
            if (keyword == "v") {
                readVertex(words);
            } else if (keyword == "f") {
                readFace(words);
            }
        }
        checkForwardReferences();
        if (m_mesh.GetVertexCount() == 0) {
            throw MeshFailure(
                TU_HERE, m_input.name, 0, "there is no vertex (a line that begins with v) in it");
        }
        return std::move(m_mesh);
    }

    /// A line that ends with a backslash goes on in the next one, even if that is blank.
    bool OBJReader::nextStatement()
    {
        if (!m_lines.Next()) {
            return false;
        }
        m_statement = m_lines.GetLine();
        if (m_statement.ends_with('\\')) {
            m_joined.clear();
            bool more = true;
            while (more && m_statement.ends_with('\\')) {
                m_statement.remove_suffix(1);
                m_joined.append(m_statement).append(" ");
                more = m_lines.Continue();
                m_statement = m_lines.GetLine();
            }
            m_joined.append(m_statement);
            m_statement = m_joined;
        }
        return true;
    }

    void OBJReader::readVertex(MeshWords words)
    {
        m_mesh.AddVertex(words.TakePoint());
        words.SkipNumbers(); // a weight, or a colour
    }

    void OBJReader::readFace(MeshWords words)
    {
        m_corners.RemoveAll();
        while (!words.IsAtEnd()) {
            m_corners.Add(parseCorner(words, words.TakeWord()));
        }
        if (m_corners.GetSize() < 3) {
            m_lines.Fail(
                "a face has at least 3 corners, not " + std::to_string(m_corners.GetSize()));
        }
        m_mesh.AddFace({ m_corners.GetData(), m_corners.GetSize() });
    }

    /// `word` is "v", "v/vt", "v//vn" or "v/vt/vn"; a negative index counts back from the latest
    /// vertex.
    std::uint32_t OBJReader::parseCorner(const MeshWords& words, std::string_view word)
    {
        constexpr std::ptrdiff_t kMostSlashes = 2;
        if (std::count(word.begin(), word.end(), '/') > kMostSlashes) {
            m_lines.Fail("a corner is " + Quote(word) + ", which has more than three indices");
        }
        const std::size_t slash = word.find('/');
        const std::int64_t index = words.ParseInteger(word.substr(0, slash), "a vertex index");
        for (std::size_t begin = slash; begin != word.npos;) {
            const std::size_t end = word.find('/', ++begin);
            if (const std::string_view part = word.substr(begin, end - begin); !part.empty()) {
                words.ParseInteger(part, "an index");
            }
            begin = end;
        }

        const std::int64_t count = m_mesh.GetVertexCount();
        const std::int64_t vertex = index < 0 ? count + index : index - 1;
        if (vertex < 0 || vertex >= Mesh::kMaximumCount) {
            m_lines.Fail(index == 0 ? "the face names vertex 0, but vertices count from 1"
                                    : "the face names vertex " + std::to_string(index)
                        + ", but there are " + std::to_string(count) + " before it");
        }
        if (vertex >= count) {
            m_forward.Add({ static_cast<std::uint32_t>(vertex), m_lines.GetNumber() });
        }
        return static_cast<std::uint32_t>(vertex);
    }

    void OBJReader::checkForwardReferences() const
    {
        for (const SForwardReference& reference : m_forward) {
            if (reference.vertex >= m_mesh.GetVertexCount()) {
                throw MeshFailure(TU_HERE, m_input.name, reference.line,
                    "the face names vertex " + std::to_string(std::uint64_t{ reference.vertex } + 1)
                        + ", but there are only " + std::to_string(m_mesh.GetVertexCount()));
            }
        }
    }

} // namespace

Mesh ReadOBJ(const SMeshInput& input) { return OBJReader(input).Read(); }

} // namespace tamesh
