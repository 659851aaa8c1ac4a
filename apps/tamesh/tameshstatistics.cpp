#include "tamesh/tameshstatistics.h"

#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"
#include "tabase/taunionfind.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace tamesh {

namespace {

    constexpr unsigned int kOutputVersion = 0;

    /// How often compute() walks over all faces and over all vertices.
    constexpr std::uint64_t kFaceWalks = 4;
    constexpr std::uint64_t kVertexWalks = 5;

} // namespace

/// All sides by their smaller end: those of vertex i have their larger ends from begins[i] to
/// begins[i + 1]. The memory is not touched before the walks, which poll, get there.
struct TaMeshStatistics::SSides
{
    std::unique_ptr<std::uint32_t[]> begins;
    std::unique_ptr<std::uint32_t[]> largerEnds;
};

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

template <class Take> bool TaMeshStatistics::forEachSide(Take&& take)
{
    return forEach(m_mesh->GetFaceCount(), [&](std::uint32_t i) {
        const std::span<const std::uint32_t> face = m_mesh->GetFace(i);
        std::uint32_t previous = face.back();
        for (const std::uint32_t corner : face) {
            if (corner != previous) {
                take(std::min(corner, previous), std::max(corner, previous));
            }
            previous = corner;
        }
    });
}

bool TaMeshStatistics::collectSides(SSides& sides)
{
    const std::uint32_t vertexCount = m_mesh->GetVertexCount();
    sides.begins = std::make_unique_for_overwrite<std::uint32_t[]>(std::size_t{ vertexCount } + 1);
    std::uint32_t* const begins = sides.begins.get();
    begins[vertexCount] = 0;
    std::uint32_t sum = 0;
    if (!forEach(vertexCount, [&](std::uint32_t i) { begins[i] = 0; })
        || !forEachSide([&](std::uint32_t smaller, std::uint32_t) { ++begins[smaller]; })
        || !forEach(vertexCount, [&](std::uint32_t i) { begins[i] = sum += begins[i]; })) {
        return false;
    }
    begins[vertexCount] = sum;
    // Each begin stands at its end now, and moves to its place while the sides are put in.
    sides.largerEnds = std::make_unique_for_overwrite<std::uint32_t[]>(std::max(sum, 1u));
    return forEachSide([&](std::uint32_t smaller, std::uint32_t larger) {
        sides.largerEnds[--begins[smaller]] = larger;
    });
}

bool TaMeshStatistics::countEdges(SMeshFigures& figures)
{
    SSides sides;
    return collectSides(sides) && forEach(m_mesh->GetVertexCount(), [&](std::uint32_t i) {
        std::uint32_t* side = sides.largerEnds.get() + sides.begins[i];
        std::uint32_t* const end = sides.largerEnds.get() + sides.begins[i + 1];
        std::sort(side, end);
        while (side != end) {
            std::uint32_t* const next = std::upper_bound(side, end, *side);
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
