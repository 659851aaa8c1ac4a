#include "tamesh/tapackedmeshrecord.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tamesh/facepacking.h"
#include "tamesh/vertexpacking.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tamesh {

namespace {

    constexpr unsigned int kVersion = 0;

} // namespace

TU_DEFINE_RTTI_ROOT(TaPackedMeshRecord, &TaPackedMeshRecord::CreateByFactory, nullptr);
TU_DEFINE_EXTENSIONS(TaPackedMeshRecord, ISerializable)

TaPackedMeshRecord::TaPackedMeshRecord()
    : m_packed(std::make_unique<TaStreamWriteBinaryBuffer>())
{
}

TaPackedMeshRecord::TaPackedMeshRecord(
    const Mesh& mesh, const CoordinateForm& form, Progress* progress)
    : TaPackedMeshRecord()
{
    *m_packed << mesh.GetVertexCount() << mesh.GetFaceCount();
    form.Serialize(*m_packed);
    PackFaces(*m_packed, mesh, progress);
    PackVertices(*m_packed, mesh, form, progress, mesh.GetFaceCount());
}

void TaPackedMeshRecord::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kVersion);
    stream << static_cast<unsigned long long>(m_packed->GetSize());
    stream.WriteBuffer(m_packed->GetData(), m_packed->GetSize());
}

/// The size is only a claim: the memory grows as the bytes arrive.
void TaPackedMeshRecord::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kVersion);
    unsigned long long size = 0;
    stream >> size;
    auto packed = std::make_unique<TaStreamWriteBinaryBuffer>();
    std::array<unsigned char, 65536> bytes;
    while (size != 0) {
        const auto step = std::min<unsigned long long>(size, bytes.size());
        stream.ReadExactly(bytes.data(), step);
        packed->WriteBuffer(bytes.data(), step);
        size -= step;
    }
    m_packed = std::move(packed);
}

Mesh TaPackedMeshRecord::Unpack(const Progress* progress) const
{
    TaStreamReadBinaryBuffer stream(*m_packed);
    std::uint32_t vertexCount = 0;
    std::uint32_t faceCount = 0;
    static_cast<TuStreamReadBinary&>(stream) >> vertexCount >> faceCount;
    if (std::max(vertexCount, faceCount) > Mesh::kMaximumCount) {
        throw TuExceptionStream(TU_HERE, u"the mesh has too many vertices or faces");
    }
    const CoordinateForm form(stream);
    Mesh mesh = UnpackFaces(stream, faceCount, vertexCount, progress);
    mesh.SetVertices(UnpackVertices(stream, mesh, vertexCount, form, progress));
    if (stream.GetRemaining() != 0) {
        throw TuExceptionStream(TU_HERE, u"more bytes follow the end of the packed mesh");
    }
    return mesh;
}

std::uint64_t TaPackedMeshRecord::GetStoredSize() const
{
    return sizeof(kVersion) + sizeof(unsigned long long) + m_packed->GetSize();
}

IObject* TaPackedMeshRecord::CreateByFactory() { return new TaPackedMeshRecord; }

} // namespace tamesh
