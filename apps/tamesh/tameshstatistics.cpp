#include "tamesh/tameshstatistics.h"

#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"
#include "tabase/taunionfind.h"
#include "tamesh/meshsides.h"

#include <algorithm>
#include <vector>

namespace tamesh {

namespace {

    constexpr unsigned int kOutputVersion = 0;

    /// How often compute() walks over all faces and over all vertices.
    constexpr std::uint64_t kFaceWalks = 4;
    constexpr std::uint64_t kVertexWalks = 5;

} // namespace

TU_DEFINE_RTTI(TaMeshStatistics, TaMpAlgorithm, &TaMeshStatistics::CreateByFactory, nullptr);

IObject* TaMeshStatistics::CreateByFactory() { return new TaMeshStatistics; }

void TaMeshStatistics::SetMesh(const Mesh& mesh)
{
    m_mesh = &mesh;
    setInputChanged();
}

const SMeshFigures& TaMeshStatistics::GetFigures() const
{
    checkOutputData();
    return m_figures;
}

void TaMeshStatistics::compute()
{
    SMeshFigures figures;
    m_stepsDone = 0;
    figures.vertices = m_mesh->GetVertexCount();
    figures.faces = m_mesh->GetFaceCount();
    const bool isComplete = countEdges(figures) && countDegenerateFaces(figures)
        && countComponents(figures) && findBounds(figures);
    if (isComplete) {
        figures.eulerCharacteristic = static_cast<std::int64_t>(figures.vertices)
            - static_cast<std::int64_t>(figures.edges) + static_cast<std::int64_t>(figures.faces);
        m_figures = figures;
    }
}

template <class Body> bool TaMeshStatistics::forEach(std::uint32_t count, Body&& body)
{
    constexpr std::uint32_t kStepsPerPoll = 4096;
    const std::uint64_t total = kFaceWalks * m_mesh->GetFaceCount()
        + kVertexWalks * std::uint64_t{ m_mesh->GetVertexCount() };
    for (std::uint32_t begin = 0; begin != count;) {
        const std::uint32_t end = begin + std::min(kStepsPerPoll, count - begin);
        for (std::uint32_t i = begin; i != end; ++i) {
            body(i);
        }
        m_stepsDone += end - begin;
        begin = end;
        setProgress(static_cast<double>(m_stepsDone) / static_cast<double>(total));
        if (isBreak()) {
            return false;
        }
    }
    return true;
}

bool TaMeshStatistics::countEdges(SMeshFigures& figures)
{
    MeshSides sides;
    const auto collectBy
        = [this](std::uint32_t count, auto&& body) { return forEach(count, body); };
    return sides.Collect(*m_mesh, collectBy)
        && forEach(m_mesh->GetVertexCount(), [&](std::uint32_t i) {
               const std::span<const std::uint32_t> ends = sides.SortLargerEnds(i);
               for (auto side = ends.begin(); side != ends.end();) {
                   const auto next = std::upper_bound(side, ends.end(), *side);
                   ++figures.edges;
                   figures.boundaryEdges += next - side == 1;
                   figures.nonManifoldEdges += next - side > 2;
                   side = next;
               }
           });
}

bool TaMeshStatistics::countDegenerateFaces(SMeshFigures& figures)
{
    std::vector<std::uint32_t> sorted;
    return forEach(m_mesh->GetFaceCount(), [&](std::uint32_t i) {
        const std::span<const std::uint32_t> face = m_mesh->GetFace(i);
        sorted.assign(face.begin(), face.end());
        std::sort(sorted.begin(), sorted.end());
        if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) {
            ++figures.degenerateFaces;
        }
    });
}

bool TaMeshStatistics::countComponents(SMeshFigures& figures)
{
    TaUnionFind sets(m_mesh->GetVertexCount());
    std::vector<bool> used(m_mesh->GetVertexCount());
    return forEach(m_mesh->GetFaceCount(), [&](std::uint32_t i) {
        const std::span<const std::uint32_t> face = m_mesh->GetFace(i);
        for (const std::uint32_t corner : face) {
            sets.AddPair(face.front(), corner);
            used[corner] = true;
        }
    }) && forEach(m_mesh->GetVertexCount(), [&](std::uint32_t i) {
        figures.components += sets.GetSetNumber(i) == i; // the root of a set
        figures.isolatedVertices += !used[i];
    });
}

bool TaMeshStatistics::findBounds(SMeshFigures& figures)
{
    if (m_mesh->GetVertexCount() == 0) {
        return true;
    }
    SBounds bounds{ m_mesh->GetVertex(0), m_mesh->GetVertex(0) };
    const bool isComplete = forEach(m_mesh->GetVertexCount(),
        [&](std::uint32_t i) { ExtendBounds(bounds, m_mesh->GetVertex(i)); });
    figures.lowerBound = bounds.lower;
    figures.upperBound = bounds.upper;
    return isComplete;
}

void TaMeshStatistics::serializeUnitTestInput(TuStreamWriteBinary& stream) const
{
    TaMpAlgorithm::serializeUnitTestInput(stream);
    TaMeshRecord::Write(stream, *m_mesh);
}

void TaMeshStatistics::serializeUnitTestInput(TuStreamReadBinary& stream)
{
    TaMpAlgorithm::serializeUnitTestInput(stream);
    m_readMesh.Serialize(stream);
    SetMesh(m_readMesh.GetMesh());
}

void TaMeshStatistics::serializeUnitTestOutput(TuStreamWriteBinary& stream) const
{
    TaMpAlgorithm::serializeUnitTestOutput(stream);
    stream.WriteVersion(kOutputVersion);
    ForEachFigure(GetFigures(), [&stream](const auto& figure) { stream << figure; });
}

void TaMeshStatistics::serializeUnitTestOutput(TuStreamReadBinary& stream)
{
    TaMpAlgorithm::serializeUnitTestOutput(stream);
    stream.ReadAndCompareVersion(kOutputVersion);
    SMeshFigures expected;
    ForEachFigure(expected, [&stream](auto& figure) { stream >> figure; });
    m_expected = expected;
}

void TaMeshStatistics::releaseUnitTestInput()
{
    if (m_mesh == &m_readMesh.GetMesh()) {
        m_mesh = nullptr;
        setInputChanged();
    }
    m_readMesh.SetMesh(Mesh());
}

} // namespace tamesh
