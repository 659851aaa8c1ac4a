#include "tamesh/resultvalues.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"
#include "tamesh/codednumbers.h"

#include <algorithm>

namespace tamesh {

namespace {

    constexpr unsigned int kPathVersion = 0;
    constexpr unsigned int kNumbersVersion = 0;
    constexpr unsigned int kDistanceVersion = 0;
    constexpr unsigned int kColoringVersion = 0;
    constexpr unsigned int kParameterVersion = 0;

    // What tables and lists of names have at most: they are made for people.
    constexpr std::uint32_t kMostEntries = 65536;

    std::uint32_t readCount(TuStreamReadBinary& stream)
    {
        std::uint32_t count = 0;
        stream >> count;
        if (count > kMostEntries) {
            throw TuExceptionStream(TU_HERE, u"a table of colours has too many entries");
        }
        return count;
    }

    TaColor readColor(TuStreamReadBinary& stream)
    {
        std::uint32_t word = 0;
        stream >> word;
        return TaColor::FromDword(word);
    }

    void writeTable(TuStreamWriteBinary& stream, const TaColorTable& table)
    {
        float minimum = 0.0F;
        float maximum = 0.0F;
        table.GetMinMax(minimum, maximum);
        stream << table.GetCount() << minimum << maximum;
        stream << table.GetUnderflowColor().GetDword() << table.GetOverflowColor().GetDword();
        for (std::uint32_t i = 0; i != table.GetCount(); ++i) {
            stream << table.GetEntryColor(i).GetDword();
        }
    }

    /// Null where there was none.
    TuSmartPointer<TaColorTable> readTable(TuStreamReadBinary& stream)
    {
        const std::uint32_t count = readCount(stream);
        if (count == 0) {
            return {};
        }
        float minimum = 0.0F;
        float maximum = 0.0F;
        stream >> minimum >> maximum;
        auto table = TuMake<TaColorTable>(count, minimum, maximum);
        table->SetUnderflowColor(readColor(stream));
        table->SetOverflowColor(readColor(stream));
        for (std::uint32_t i = 0; i != count; ++i) {
            table->SetEntryColor(i, readColor(stream));
        }
        return table;
    }

} // namespace

TU_DEFINE_RTTI_ROOT(TaPathData, &TaPathData::CreateByFactory, nullptr);
TU_DEFINE_EXTENSIONS(TaPathData, ISerializable)

IObject* TaPathData::CreateByFactory() { return new TaPathData; }

void TaPathData::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kPathVersion);
    stream << m_path.from << m_path.to << m_path.length;
    WriteCoded(stream, m_path.vertices);
}

void TaPathData::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kPathVersion);
    SMeshPath path;
    stream >> path.from >> path.to >> path.length;
    path.vertices = ReadCodedNumbers(stream);
    m_path = std::move(path);
}

bool TaPathData::Fits(std::uint32_t vertexCount) const
{
    return !m_path.vertices.empty()
        && std::ranges::all_of(
            m_path.vertices, [&](std::uint32_t vertex) { return vertex < vertexCount; });
}

TU_DEFINE_RTTI_ROOT(TaNumbersData, &TaNumbersData::CreateByFactory, nullptr);
TU_DEFINE_EXTENSIONS(TaNumbersData, ISerializable)

IObject* TaNumbersData::CreateByFactory() { return new TaNumbersData; }

void TaNumbersData::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kNumbersVersion);
    WriteCoded(stream, m_numbers);
}

void TaNumbersData::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kNumbersVersion);
    m_numbers = ReadCodedNumbers(stream);
}

TU_DEFINE_RTTI_ROOT(TaDistanceData, &TaDistanceData::CreateByFactory, nullptr);
TU_DEFINE_EXTENSIONS(TaDistanceData, ISerializable)

IObject* TaDistanceData::CreateByFactory() { return new TaDistanceData; }

void TaDistanceData::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kDistanceVersion);
    stream << m_from << m_unit;
    WriteCoded(stream, m_distances);
}

void TaDistanceData::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kDistanceVersion);
    TaDistanceData read;
    stream >> read.m_from >> read.m_unit;
    read.m_distances = ReadCodedFloats(stream);
    m_from = read.m_from;
    m_unit = read.m_unit;
    m_distances = std::move(read.m_distances);
}

TU_DEFINE_RTTI_ROOT(TaColoringData, &TaColoringData::CreateByFactory, nullptr);
TU_DEFINE_EXTENSIONS(TaColoringData, ISerializable)

IObject* TaColoringData::CreateByFactory() { return new TaColoringData; }

void TaColoringData::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kColoringVersion);
    stream << CString::FromUtf8(m_coloring.title) << m_coloring.lower << m_coloring.upper;
    stream << static_cast<std::uint32_t>(m_coloring.names.size());
    for (const std::string& name : m_coloring.names) {
        stream << CString::FromUtf8(name);
    }
    if (m_coloring.table.IsNull()) {
        stream << std::uint32_t{ 0 };
    } else {
        writeTable(stream, *m_coloring.table);
    }
    WriteCoded(stream, m_coloring.values);
}

void TaColoringData::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kColoringVersion);
    SColoring coloring;
    CString text;
    stream >> text >> coloring.lower >> coloring.upper;
    coloring.title = text.ToUtf8();
    for (std::uint32_t left = readCount(stream); left != 0; --left) {
        stream >> text;
        coloring.names.push_back(text.ToUtf8());
    }
    coloring.table = readTable(stream);
    coloring.values = ReadCodedFloats(stream);
    m_coloring = std::move(coloring);
}

bool TaColoringData::Fits(std::uint32_t vertexCount) const
{
    return !m_coloring.table.IsNull() && m_coloring.values.size() == vertexCount;
}

TU_DEFINE_RTTI_ROOT(TaParameterData, &TaParameterData::CreateByFactory, nullptr);
TU_DEFINE_EXTENSIONS(TaParameterData, ISerializable)

IObject* TaParameterData::CreateByFactory() { return new TaParameterData; }

void TaParameterData::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kParameterVersion);
    m_parameters.SerializeSorted(stream);
}

void TaParameterData::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kParameterVersion);
    TaParameterSet parameters;
    parameters.Serialize(stream);
    m_parameters = std::move(parameters);
}

TA_DEFINE_DATA_NODE(TaNumbersNode, TaNumbersData)
TA_DEFINE_DATA_NODE(TaPathNode, TaPathData)
TA_DEFINE_DATA_NODE(TaDistanceNode, TaDistanceData)
TA_DEFINE_DATA_NODE(TaColoringNode, TaColoringData)
TA_DEFINE_DATA_NODE(TaParameterNode, TaParameterData)

} // namespace tamesh
