#include "tamesh/tameshdata.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"
#include "tamesh/interruptiblereader.h"
#include "tamesh/tameshrecord.h"

namespace tamesh {

namespace {

    constexpr unsigned int kVersion = 0;

} // namespace

TU_DEFINE_RTTI_ROOT(TaMeshData, &TaMeshData::CreateByFactory, nullptr);
TU_DEFINE_EXTENSIONS(TaMeshData, ISerializable)

IObject* TaMeshData::CreateByFactory() { return new TaMeshData; }

void TaMeshData::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kVersion);
    stream << (m_packed != nullptr);
    if (m_packed != nullptr) {
        m_packed->Serialize(stream);
    } else {
        TaMeshRecord::Write(stream, m_mesh);
    }
}

void TaMeshData::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kVersion);
    bool isPacked = false;
    stream >> isPacked;
    if (isPacked) {
        auto packed = std::make_unique<TaPackedMeshRecord>();
        packed->Serialize(stream);
        const auto* interruptible = dynamic_cast<const InterruptibleReader*>(&stream);
        m_mesh = packed->Unpack(interruptible != nullptr ? interruptible->GetProgress() : nullptr);
        m_packed = std::move(packed);
    } else {
        TaMeshRecord plain;
        plain.Serialize(stream);
        m_mesh = plain.TakeMesh();
        m_packed.reset();
    }
}

void TaMeshData::Pack(const CoordinateForm& form, Progress* progress)
{
    m_packed = std::make_unique<TaPackedMeshRecord>(m_mesh, form, progress);
}

TA_DEFINE_DATA_NODE(TaMeshNode, TaMeshData)

} // namespace tamesh
