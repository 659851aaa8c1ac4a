#include "tamesh/document.h"

#include "groundwork/tuexceptions.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tamesh/checksumstreams.h"
#include "tamesh/meshtree.h"

#include <array>
#include <utility>

namespace tamesh {

namespace {

    // As in other formats, the line ends show whether the file went through a program that takes it
    // for text, and the control character ends it for one that prints it.
    constexpr std::array<char, 8> kMarker{ 'T', 'A', 'D', 'O', 'C', '\r', '\n', '\x1A' };
    constexpr unsigned int kFormatVersion = 1; // 0 had no tree

} // namespace

Document::Document()
    : m_tree(std::make_unique<TaDataManager>())
{
}

Document::Document(Mesh mesh)
    : Document()
{
    m_record.SetMesh(std::move(mesh));
    DescribeMesh(*m_tree, GetMesh());
}

void Document::Save(TuStreamWriteBinary& stream, Progress* progress) const
{
    ChecksumWriter checked(stream, progress);
    checked.WriteBuffer(kMarker.data(), kMarker.size());
    checked.WriteVersion(kFormatVersion);
    checked.WriteChunk(m_record);
    m_tree->Serialize(checked);
    stream << checked.GetChecksum();
}

std::uint64_t Document::GetSavedSize() const
{
    constexpr std::uint64_t kAround = 60; // all but the arrays of the mesh and the tree
    const Mesh& mesh = GetMesh();
    TaStreamWriteBinaryBuffer tree;
    m_tree->Serialize(tree);
    return kAround + tree.GetSize() + std::uint64_t{ mesh.GetVertexCount() } * sizeof(SPoint)
        + (std::uint64_t{ mesh.GetFaceCount() } + mesh.GetCornerCount()) * sizeof(std::uint32_t);
}

void Document::Load(TuStreamReadBinary& stream, Progress* progress)
{
    ChecksumReader checked(stream, progress);
    std::array<char, kMarker.size()> marker{};
    checked.ReadExactly(marker.data(), marker.size());
    if (marker != kMarker) {
        throw TuExceptionWrongFileVersion(
            TU_HERE, u"this is no document; \"tamesh pack\" makes one of a mesh");
    }
    const unsigned int version = checked.ReadAndCompareVersion(kFormatVersion);

    const std::unique_ptr<ISerializable> object(checked.ReadChunk());
    auto* record = dynamic_cast<TaMeshRecord*>(object.get());
    if (record == nullptr) {
        throw TuExceptionStream(TU_HERE, u"the document does not hold a mesh");
    }
    auto tree = std::make_unique<TaDataManager>();
    if (version == 0) {
        DescribeMesh(*tree, record->GetMesh());
    } else {
        tree->Serialize(checked);
    }
    std::uint32_t checksum = 0;
    stream >> checksum;
    if (checksum != checked.GetChecksum()) {
        throw TuExceptionStream(TU_HERE, u"the checksum is wrong, so bytes have changed");
    }
    unsigned char surplus = 0;
    if (stream.ReadBuffer(&surplus, 1) != 0) {
        throw TuExceptionStream(TU_HERE, u"more bytes follow the end of the document");
    }
    m_record.SetMesh(record->TakeMesh());
    m_tree = std::move(tree);
}

} // namespace tamesh
