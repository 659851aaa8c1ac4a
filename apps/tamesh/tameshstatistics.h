#pragma once

#include "tabase/taalgorithmfamilies.h"
#include "tamesh/meshanalysis.h"
#include "tamesh/tameshrecord.h"

#include <cstdint>
#include <optional>

namespace tamesh {

/// Computes the figures of a mesh, in n log n steps.
///
///     TaMeshStatistics statistics;
///     statistics.SetMesh(mesh);
///     statistics.SetBreakEvent(interrupt);
///     statistics.Compute(TaAlgorithm::eCF_Throw);
///     Show(statistics.GetFigures());
///
/// Its recordings hold the mesh and the figures; docs/format.md states them byte by byte.
///
/// Ownership: refers to the mesh, which outlives the computation; owns one that was read from a
///            recording.
class TaMeshStatistics final : public TaMpAlgorithm
{
    TU_DECLARE_RTTI

public:
    TaMeshStatistics() = default;
    TaMeshStatistics(const TaMeshStatistics&) = delete;
    TaMeshStatistics& operator=(const TaMeshStatistics&) = delete;

    void SetMesh(const Mesh& mesh);
    /// TaExceptionNoOutputData where they have not been computed.
    const SMeshFigures& GetFigures() const;

protected:
    void serializeUnitTestInput(TuStreamWriteBinary& stream) const override;
    void serializeUnitTestInput(TuStreamReadBinary& stream) override;
    void serializeUnitTestOutput(TuStreamWriteBinary& stream) const override;
    void serializeUnitTestOutput(TuStreamReadBinary& stream) override;
    void releaseUnitTestInput() override;
    void releaseUnitTestOutput() override { m_expected.reset(); }
    bool compareUnitTestResult() const override { return m_expected == m_figures; }

    bool checkPreConditions() const override { return m_mesh != nullptr; }
    void compute() override;
    bool checkPostConditions() const override { return !wasBroken(); }

private:
    static IObject* CreateByFactory();

    /// Calls body(i) for each of `count`, with a poll now and then; false where that found a break.
    template <class Body> bool forEach(std::uint32_t count, Body&& body);
    bool countEdges(SMeshFigures& figures);
    bool countDegenerateFaces(SMeshFigures& figures);
    bool countComponents(SMeshFigures& figures);
    bool findBounds(SMeshFigures& figures);

    const Mesh* m_mesh = nullptr;
    TaMeshRecord m_readMesh;
    SMeshFigures m_figures;
    std::optional<SMeshFigures> m_expected;
    std::uint64_t m_stepsDone = 0;
};

} // namespace tamesh
