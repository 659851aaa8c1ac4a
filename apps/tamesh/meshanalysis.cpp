#include "tamesh/meshanalysis.h"

#include "groundwork/tustreamwriteasciistring.h"
#include "tamesh/tameshstatistics.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace tamesh {

namespace {

    CStringA formatCoordinate(double value, int digits)
    {
        char text[32]; // the longest has 17 digits, a sign, a point and an exponent
        const auto result = digits == 0 ? std::to_chars(std::begin(text), std::end(text), value)
                                        : std::to_chars(std::begin(text), std::end(text), value,
                                            std::chars_format::general, digits);
        return CStringA(text, static_cast<std::size_t>(result.ptr - text));
    }

    class FigureLines
    {
    public:
        template <class... Values> void Add(std::string_view name, const Values&... values)
        {
            constexpr std::size_t kNameWidth = 22;
            std::string start = "  " + std::string(name);
            start.resize(std::max(kNameWidth, start.size()), ' ');
            m_text << CStringA(start);
            ((m_text << " " << values), ...);
            m_text << "\n";
        }
        std::string GetText() const { return std::string(m_text.GetText().GetView()); }

    private:
        TuStreamWriteASCIIStringT<CStringA> m_text;
    };

} // namespace

SMeshFigures AnalyseMesh(const Mesh& mesh)
{
    TaMeshStatistics statistics;
    statistics.SetMesh(mesh);
    statistics.Compute(TaAlgorithm::eCF_Throw);
    return statistics.GetFigures();
}

std::string FormatFigures(const SMeshFigures& figures, int digits)
{
    FigureLines lines;
    lines.Add("vertices", figures.vertices);
    lines.Add("faces", figures.faces);
    lines.Add("edges", figures.edges);
    lines.Add("boundary edges", figures.boundaryEdges);
    lines.Add("non-manifold edges", figures.nonManifoldEdges);
    lines.Add("degenerate faces", figures.degenerateFaces);
    lines.Add("components", figures.components);
    lines.Add("isolated vertices", figures.isolatedVertices);
    lines.Add("Euler characteristic", figures.eulerCharacteristic);
    if (figures.vertices != 0) {
        const auto addPoint = [&](std::string_view name, const SPoint& point) {
            lines.Add(name, formatCoordinate(point.x, digits), formatCoordinate(point.y, digits),
                formatCoordinate(point.z, digits));
        };
        addPoint("lower bound", figures.lowerBound);
        addPoint("upper bound", figures.upperBound);
    }
    return lines.GetText();
}

} // namespace tamesh
