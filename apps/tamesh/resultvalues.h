#pragma once

#include "groundwork/iserializable.h"
#include "groundwork/tureferencecounted.h"
#include "tabase/tadatanode.h"
#include "tabase/taparameterset.h"
#include "tamesh/coloring.h"
#include "tamesh/meshpath.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace tamesh {

// What commands find in a mesh, as values of the data tree. docs/format.md states their records
// byte by byte.
//
// Ownership: counted; each owns what it was made of.
// Failure:   reading throws TuExceptionStream for a damaged record and TuExceptionWrongFileVersion
//            for one of a later version; the value is then as it was. A record knows nothing of its
//            mesh: whether a path or colours fit one is for the user of the value to ask.

/// A path.
class TaPathData final : public TuReferenceCounted, public ISerializable
{
    TU_DECLARE_RTTI

public:
    TaPathData() = default;
    explicit TaPathData(SMeshPath path)
        : m_path(std::move(path))
    {
    }

    TU_DECLARE_EXTENSIONS;
    void Serialize(TuStreamWriteBinary& stream) const override;
    void Serialize(TuStreamReadBinary& stream) override;

    const SMeshPath& GetPath() const { return m_path; }
    /// Whether all its vertices are in a mesh of so many, and there is one.
    bool Fits(std::uint32_t vertexCount) const;

private:
    static IObject* CreateByFactory();

    SMeshPath m_path;
};

/// A row of numbers.
class TaNumbersData final : public TuReferenceCounted, public ISerializable
{
    TU_DECLARE_RTTI

public:
    TaNumbersData() = default;
    explicit TaNumbersData(std::vector<std::uint32_t> numbers)
        : m_numbers(std::move(numbers))
    {
    }

    TU_DECLARE_EXTENSIONS;
    void Serialize(TuStreamWriteBinary& stream) const override;
    void Serialize(TuStreamReadBinary& stream) override;

    const std::vector<std::uint32_t>& GetNumbers() const { return m_numbers; }

private:
    static IObject* CreateByFactory();

    std::vector<std::uint32_t> m_numbers;
};

/// The distances of all vertices from one.
class TaDistanceData final : public TuReferenceCounted, public ISerializable
{
    TU_DECLARE_RTTI

public:
    TaDistanceData() = default;
    /// `unit` is the length in the mesh of what has distance 1.
    TaDistanceData(std::uint32_t from, double unit, std::vector<float> distances)
        : m_from(from)
        , m_unit(unit)
        , m_distances(std::move(distances))
    {
    }

    TU_DECLARE_EXTENSIONS;
    void Serialize(TuStreamWriteBinary& stream) const override;
    void Serialize(TuStreamReadBinary& stream) override;

    std::uint32_t GetFrom() const { return m_from; }
    double GetUnit() const { return m_unit; }
    const std::vector<float>& GetDistances() const { return m_distances; }

private:
    static IObject* CreateByFactory();

    std::uint32_t m_from = 0;
    double m_unit = 1.0;
    std::vector<float> m_distances;
};

/// The colours of a mesh.
class TaColoringData final : public TuReferenceCounted, public ISerializable
{
    TU_DECLARE_RTTI

public:
    TaColoringData() = default;
    explicit TaColoringData(SColoring coloring)
        : m_coloring(std::move(coloring))
    {
    }

    TU_DECLARE_EXTENSIONS;
    void Serialize(TuStreamWriteBinary& stream) const override;
    void Serialize(TuStreamReadBinary& stream) override;

    const SColoring& GetColoring() const { return m_coloring; }
    /// Whether there is a value for each of so many vertices, and a table.
    bool Fits(std::uint32_t vertexCount) const;

private:
    static IObject* CreateByFactory();

    SColoring m_coloring;
};

/// Parameters of a command, or settings.
class TaParameterData final : public TuReferenceCounted, public ISerializable
{
    TU_DECLARE_RTTI

public:
    TaParameterData() = default;
    explicit TaParameterData(TaParameterSet parameters)
        : m_parameters(std::move(parameters))
    {
    }

    TU_DECLARE_EXTENSIONS;
    void Serialize(TuStreamWriteBinary& stream) const override;
    void Serialize(TuStreamReadBinary& stream) override;

    const TaParameterSet& GetParameters() const { return m_parameters; }

private:
    static IObject* CreateByFactory();

    TaParameterSet m_parameters;
};

TA_DECLARE_DATA_NODE(, TaNumbersNode, TaNumbersData);
TA_DECLARE_DATA_NODE(, TaPathNode, TaPathData);
TA_DECLARE_DATA_NODE(, TaDistanceNode, TaDistanceData);
TA_DECLARE_DATA_NODE(, TaColoringNode, TaColoringData);
TA_DECLARE_DATA_NODE(, TaParameterNode, TaParameterData);

} // namespace tamesh
