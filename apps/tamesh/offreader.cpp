#include "tamesh/meshfailure.h"
#include "tamesh/meshlines.h"
#include "tamesh/meshreader.h"
#include "tamesh/meshwords.h"

#include <limits>
#include <string>
#include <utility>

namespace tamesh {

namespace {

    /// An OFF file: the keyword, the counts, a line per vertex, a line per face.
    class OFFReader
    {
    public:
        explicit OFFReader(const SMeshInput& input)
            : m_lines(input)
        {
        }

        Mesh Read();

    private:
        void readHeader();
        void checkKeyword(std::string_view keyword) const;
        std::uint32_t takeCount(MeshWords& words, std::string_view what) const;
        void nextElement(std::string_view kind, std::uint32_t index, std::uint32_t count);
        void readVertex();
        void readFace();

        MeshLines m_lines;
        std::uint32_t m_vertexCount = 0;
        std::uint32_t m_faceCount = 0;
        TuArray<std::uint32_t> m_corners; // of the current face
        Mesh m_mesh;
    };

    Mesh OFFReader::Read()
    {
        readHeader();
        for (std::uint32_t i = 0; i < m_vertexCount; ++i) {
            nextElement("vertices", i, m_vertexCount);
            readVertex();
        }
        for (std::uint32_t i = 0; i < m_faceCount; ++i) {
            nextElement("faces", i, m_faceCount);
            readFace();
        }
        if (m_lines.Next()) {
            m_lines.Fail("the header announces " + std::to_string(m_vertexCount) + " vertices and "
                + std::to_string(m_faceCount) + " faces, but here is one more line");
        }
        return std::move(m_mesh);
    }

    void OFFReader::readHeader()
    {
        if (!m_lines.Next()) {
            m_lines.Fail("the file is empty; an OFF file begins with the keyword OFF");
        }
        MeshWords words(m_lines);
        checkKeyword(words.TakeWord());
        if (words.IsAtEnd()) {
            if (!m_lines.Next()) {
                m_lines.Fail("the file ends before the numbers of vertices and faces");
            }
            words = MeshWords(m_lines);
        } else if (MeshWords(words).TakeWord() == "BINARY") {
            m_lines.Fail("binary OFF files are not read; save the mesh as text");
        }
        m_vertexCount = takeCount(words, "the number of vertices");
        m_faceCount = takeCount(words, "the number of faces");
        words.SkipNumbers(); // the number of edges, which nobody keeps right
    }

    void OFFReader::checkKeyword(std::string_view keyword) const
    {
        constexpr std::string_view kKeyword = "OFF";
        const std::size_t prefix = keyword.find_first_not_of("STCN4n");
        if (prefix == keyword.npos || keyword.substr(prefix) != kKeyword) {
            m_lines.Fail("an OFF file begins with the keyword OFF, not with " + Quote(keyword));
        }
        // The other letters announce more numbers on the vertex lines; these change what the first
        // three mean.
        if (keyword.find_first_of("4n") != keyword.npos) {
            m_lines.Fail("the vertices of a file that begins with " + Quote(keyword)
                + " do not have three coordinates");
        }
    }

    std::uint32_t OFFReader::takeCount(MeshWords& words, std::string_view what) const
    {
        const std::uint64_t count = words.TakeCount(what);
        if (count > std::numeric_limits<std::uint32_t>::max()) {
            m_lines.Fail(
                std::string(what) + " is " + std::to_string(count) + ", more than a mesh can have");
        }
        return static_cast<std::uint32_t>(count);
    }

    void OFFReader::nextElement(std::string_view kind, std::uint32_t index, std::uint32_t count)
    {
        if (!m_lines.Next()) {
            m_lines.Fail("the file ends after " + std::to_string(index) + " of "
                + std::to_string(count) + " " + std::string(kind));
        }
    }

    void OFFReader::readVertex()
    {
        MeshWords words(m_lines);
        m_mesh.AddVertex(words.TakePoint());
        words.SkipNumbers();
    }

    void OFFReader::readFace()
    {
        MeshWords words(m_lines);
        const std::uint64_t count = words.TakeCount("the number of corners");
        if (count < 3) {
            m_lines.Fail("a face has at least 3 corners, not " + std::to_string(count));
        }
        m_corners.RemoveAll();
        for (std::uint64_t i = 0; i < count; ++i) {
            if (words.IsAtEnd()) {
                m_lines.Fail("the face has " + std::to_string(count) + " corners, but only "
                    + std::to_string(i) + " follow");
            }
            const std::uint64_t index = words.TakeCount("a vertex index");
            if (index >= m_vertexCount) {
                m_lines.Fail("the face names vertex " + std::to_string(index) + ", but the "
                    + std::to_string(m_vertexCount) + " vertices count from 0");
            }
            m_corners.Add(static_cast<std::uint32_t>(index));
        }
        words.SkipNumbers(); // a colour
        m_mesh.AddFace({ m_corners.GetData(), m_corners.GetSize() });
    }

} // namespace

Mesh ReadOFF(const SMeshInput& input) { return OFFReader(input).Read(); }

} // namespace tamesh
