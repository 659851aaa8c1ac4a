#include "tamesh/document.h"

#include "groundwork/tuexceptions.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tamesh/checksumstreams.h"
#include "tamesh/meshtree.h"

#include <array>
#include <string_view>
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

void Document::Pack(const CoordinateForm& form, Progress* progress)
{
    m_packed = std::make_unique<TaPackedMeshRecord>(GetMesh(), form, progress);
}

void Document::Save(TuStreamWriteBinary& stream, Progress* progress) const
{
    ChecksumWriter checked(stream, progress);
    checked.WriteBuffer(kMarker.data(), kMarker.size());
    checked.WriteVersion(kFormatVersion);
    if (m_packed != nullptr) {
        checked.WriteChunk(*m_packed);
    } else {
        checked.WriteChunk(m_record);
    }
    m_tree->Serialize(checked);
    stream << checked.GetChecksum();
}

std::uint64_t Document::GetSavedSize() const
{
    // All but the record and the tree; of the chunk, the version and the length of the class name.
    constexpr std::uint64_t kAround = kMarker.size() + sizeof kFormatVersion
        + 2 * sizeof(std::uint32_t) + sizeof(std::uint32_t);
    TaStreamWriteBinaryBuffer tree;
    m_tree->Serialize(tree);
    const ISerializable& record
        = m_packed != nullptr ? static_cast<const ISerializable&>(*m_packed) : m_record;
    return kAround + std::u16string_view(record.GetClassName()).size() * sizeof(char16_t)
        + tree.GetSize()
        + (m_packed != nullptr ? m_packed->GetStoredSize()
                               : TaMeshRecord::GetStoredSize(GetMesh()));
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

    std::unique_ptr<ISerializable> object(checked.ReadChunk());
    auto* plain = dynamic_cast<TaMeshRecord*>(object.get());
    auto* packed = dynamic_cast<TaPackedMeshRecord*>(object.get());
    if (plain == nullptr && packed == nullptr) {
        throw TuExceptionStream(TU_HERE, u"the document does not hold a mesh");
    }
    auto tree = std::make_unique<TaDataManager>();
    if (version != 0) {
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
    Mesh mesh = packed != nullptr ? packed->Unpack(progress) : plain->TakeMesh();
    if (version == 0) {
        DescribeMesh(*tree, mesh);
    }
    m_record.SetMesh(std::move(mesh));
    m_packed.reset(packed);
    if (packed != nullptr) {
        static_cast<void>(object.release());
    }
    m_tree = std::move(tree);
}

} // namespace tamesh
