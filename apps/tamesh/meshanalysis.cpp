#include "tamesh/meshanalysis.h"

#include "tamesh/figurelines.h"
#include "tamesh/tameshstatistics.h"

#include <string_view>

namespace tamesh {

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
            lines.Add(name, FormatNumber(point.x, digits), FormatNumber(point.y, digits),
                FormatNumber(point.z, digits));
        };
        addPoint("lower bound", figures.lowerBound);
        addPoint("upper bound", figures.upperBound);
    }
    return lines.GetText();
}

} // namespace tamesh
