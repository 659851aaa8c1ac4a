#include "groundwork/tustreamreadbinary.h"
#include "tamesh/meshfailure.h"
#include "tamesh/meshlines.h"
#include "tamesh/meshreader.h"
#include "tamesh/meshwords.h"
#include "tamesh/progress.h"
#include "tamesh/vertexmerger.h"

#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <utility>

namespace tamesh {

namespace {

    constexpr std::size_t kHeadSize = 84; // 80 bytes for anything, and the number of triangles
    constexpr std::size_t kTriangleSize = 50;

    bool equalsWithoutCase(std::string_view word, std::string_view lowerCase)
    {
        for (std::size_t i = 0; i < lowerCase.size(); ++i) {
            if (i >= word.size() || (word[i] | 0x20) != lowerCase[i]) {
                return false;
            }
        }
        return word.size() == lowerCase.size();
    }

    bool startsAsText(std::string_view head)
    {
        constexpr std::string_view kKeyword = "solid";
        head = WithoutByteOrderMark(head);
        const std::size_t begin = head.find_first_not_of(" \t\r\n");
        return begin != head.npos
            && equalsWithoutCase(head.substr(begin, kKeyword.size()), kKeyword)
            && head.find('\0') == head.npos;
    }

    /// A text STL file: solids of facets, each with a loop of three vertices.
    class TextSTLReader
    {
    public:
        TextSTLReader(const SMeshInput& input, std::string_view begun)
            : m_lines(input, begun)
            , m_merger(m_mesh)
        {
        }

        Mesh Read();

    private:
        bool isNext(std::string_view keyword);
        void expect(std::string_view keyword, std::string_view second = {});
        void expectMore(std::string_view keyword);
        void readFacet();

        MeshLines m_lines;
        Mesh m_mesh;
        VertexMerger m_merger;
    };

    Mesh TextSTLReader::Read()
    {
        while (m_lines.Next(MeshLines::eC_None)) {
            expect("solid");
            for (expectMore("endsolid"); isNext("facet"); expectMore("endsolid")) {
                readFacet();
            }
            expect("endsolid");
        }
        return std::move(m_mesh);
    }

    void TextSTLReader::readFacet()
    {
        expectMore("outer loop");
        expect("outer", "loop");
        std::array<std::uint32_t, 3> corners{};
        for (std::uint32_t& corner : corners) {
            expectMore("vertex");
            expect("vertex");
            MeshWords words(m_lines);
            words.TakeWord();
            corner = m_merger.GetVertex(words.TakePoint());
            words.SkipNumbers();
        }
        expectMore("endloop");
        expect("endloop");
        expectMore("endfacet");
        expect("endfacet");
        m_mesh.AddFace(corners);
    }

    bool TextSTLReader::isNext(std::string_view keyword)
    {
        return equalsWithoutCase(MeshWords(m_lines).TakeWord(), keyword);
    }

    void TextSTLReader::expect(std::string_view keyword, std::string_view second)
    {
        MeshWords words(m_lines);
        if (!equalsWithoutCase(words.TakeWord(), keyword)
            || (!second.empty() && !equalsWithoutCase(words.TakeWord(), second))) {
            m_lines.Fail("\"" + std::string(keyword) + (second.empty() ? "" : " ")
                + std::string(second) + "\" was expected, but the line is "
                + Quote(m_lines.GetLine()));
        }
    }

    void TextSTLReader::expectMore(std::string_view keyword)
    {
        if (!m_lines.Next(MeshLines::eC_None)) {
            m_lines.Fail("the file ends where \"" + std::string(keyword) + "\" was expected");
        }
    }

    SPoint loadPoint(const unsigned char* bytes)
    {
        const auto load = [bytes](std::size_t index) {
            return static_cast<double>(TuLoadLittleEndian<float>(bytes + index * sizeof(float)));
        };
        return { load(0), load(1), load(2) };
    }

    Mesh readTriangles(const SMeshInput& input, std::uint32_t count)
    {
        constexpr std::size_t kNormalSize = 3 * sizeof(float);
        constexpr std::size_t kPointSize = 3 * sizeof(float);
        constexpr std::uint32_t kTrianglesPerReport = 4096;

        Mesh mesh;
        VertexMerger merger(mesh);
        std::array<unsigned char, kTriangleSize> bytes{};
        for (std::uint32_t i = 0; i < count; ++i) {
            input.stream.ReadExactly(bytes.data(), bytes.size());
            std::array<std::uint32_t, 3> corners{};
            for (std::size_t corner = 0; corner < corners.size(); ++corner) {
                const SPoint point = loadPoint(bytes.data() + kNormalSize + corner * kPointSize);
                if (!std::isfinite(point.x) || !std::isfinite(point.y) || !std::isfinite(point.z)) {
                    throw MeshFailure(TU_HERE, input.name, 0,
                        "a coordinate of triangle " + std::to_string(i)
                            + " (counted from 0) is not a finite number");
                }
                corners[corner] = merger.GetVertex(point);
            }
            mesh.AddFace(corners);
            if (input.progress != nullptr && i % kTrianglesPerReport == 0) {
                input.progress->Advance(kHeadSize + std::uint64_t{ i } * kTriangleSize);
            }
        }
        return mesh;
    }

} // namespace

/// A binary file may begin with the word that begins a text file, so its size decides.
Mesh ReadSTL(const SMeshInput& input)
{
    std::array<char, kHeadSize> head{};
    const auto headSize
        = static_cast<std::size_t>(input.stream.ReadBuffer(head.data(), head.size()));
    const std::string_view begun(head.data(), headSize);
    std::uint32_t count = 0;
    std::uint64_t expected = 0;
    if (headSize == kHeadSize) {
        count = TuLoadLittleEndian<std::uint32_t>(
            reinterpret_cast<const unsigned char*>(head.data()) + kHeadSize - sizeof(count));
        expected = kHeadSize + std::uint64_t{ count } * kTriangleSize;
    }
    const bool isBinary = expected != 0 && expected == input.size;
    if (isBinary && !input.isTextOnly) {
        return readTriangles(input, count);
    }
    if (!isBinary && startsAsText(begun)) {
        return TextSTLReader(input, begun).Read();
    }
    if (input.isTextOnly) {
        throw MeshFailure(TU_HERE, input.name, 0,
            "is no text STL, which begins with \"solid\"; binary STL is not read over the network");
    }
    throw MeshFailure(TU_HERE, input.name, 0,
        expected == 0
            ? "no STL file: a text file begins with \"solid\", a binary file has at least "
                + std::to_string(kHeadSize) + " bytes"
            : "no STL file: a text file begins with \"solid\", and a binary file of "
                + std::to_string(count) + " triangles has " + std::to_string(expected)
                + " bytes, not " + std::to_string(input.size));
}

} // namespace tamesh
