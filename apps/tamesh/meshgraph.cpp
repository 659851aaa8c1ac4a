#include "tamesh/meshgraph.h"

#include "tamesh/meshsides.h"
#include "tamesh/progress.h"
#include "tamesh/unitbox.h"
#include "tamesh/vectors.h"

#include <algorithm>

namespace tamesh {

namespace {

    CString nameOf(std::uint32_t vertex)
    {
        const std::string digits = std::to_string(vertex);
        return std::u16string(digits.begin(), digits.end());
    }

    double lengthOf(const SPoint& vector) { return std::sqrt(Dot(vector, vector)); }

} // namespace

std::uint64_t MeshGraph::CountSteps(const Mesh& mesh)
{
    const std::uint64_t vertices = mesh.GetVertexCount();
    return MeshSides::kWalks * (mesh.GetFaceCount() + vertices) + 2 * vertices;
}

MeshGraph::MeshGraph(const Mesh& mesh, Progress* progress)
{
    ProgressSteps steps(progress);
    const auto forEach = [&steps](std::uint32_t count, auto&& body) {
        for (std::uint32_t i = 0; i != count; ++i) {
            body(i);
            steps.Advance();
        }
        return true; // what stops it throws
    };
    const UnitBox box(mesh);
    m_unit = box.GetUnit();
    MeshSides sides;
    sides.Collect(mesh, forEach);
    m_nodes.reserve(mesh.GetVertexCount());
    forEach(mesh.GetVertexCount(), [&](std::uint32_t i) {
        auto node = std::make_unique<TaGraphNode>(nameOf(i));
        m_graph.InsertNode(node.get());
        m_nodes.push_back(node.release());
    });
    auto nowhere = std::make_unique<TaGraphNode>();
    m_graph.InsertNode(nowhere.get());
    m_nowhere = nowhere.release();
    constexpr std::uint64_t kEdgesPerPoll = 4096; // a vertex may be an end of all of them
    std::uint64_t edges = 0;
    forEach(mesh.GetVertexCount(), [&](std::uint32_t i) {
        const SPoint from = box.Place(mesh.GetVertex(i));
        const std::span<const std::uint32_t> ends = sides.SortLargerEnds(i);
        for (auto end = ends.begin(); end != ends.end();) {
            const double length = lengthOf(box.Place(mesh.GetVertex(*end)) - from);
            m_nodes[i]->AddConnection(*m_nodes[*end], static_cast<float>(length));
            m_nodes[*end]->AddConnection(*m_nodes[i], static_cast<float>(length));
            if (++edges % kEdgesPerPoll == 0 && progress != nullptr) {
                progress->CheckInterrupt();
            }
            end = std::upper_bound(end, ends.end(), *end);
        }
    });
}

} // namespace tamesh
