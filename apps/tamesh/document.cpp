#include "tamesh/document.h"

#include "groundwork/tuexceptions.h"
#include "tabase/tadatahandlelockonly.h"
#include "tamesh/documentchunks.h"
#include "tamesh/documentwriter.h"
#include "tamesh/meshtree.h"
#include "tamesh/tameshrecord.h"

#include <array>
#include <utility>

namespace tamesh {

namespace {

    constexpr const char16_t* kGeometry = u"Geometry";
    constexpr const char16_t* kData = u"Data";

    using Parts = std::vector<TuSmartPointer<TaNode>>;

    Parts listChildren(TaNode& node)
    {
        Parts children;
        for (TaNode& child : node.GetChildren()) {
            children.emplace_back(&child);
        }
        return children;
    }

    [[noreturn]] void throwNone()
    {
        throw TuExceptionWrongFileVersion(
            TU_HERE, u"this is no document; \"tamesh pack\" makes one of a mesh");
    }

    /// Of versions 0 and 1, behind their start: in packed form where they have it so.
    TuSmartPointer<TaMeshData> readOldMesh(ChecksumReader& stream, const Progress* progress)
    {
        std::unique_ptr<ISerializable> object(stream.ReadChunk());
        if (auto* plain = dynamic_cast<TaMeshRecord*>(object.get())) {
            return TuMake<TaMeshData>(plain->TakeMesh());
        }
        if (auto* packed = dynamic_cast<TaPackedMeshRecord*>(object.get())) {
            Mesh mesh = packed->Unpack(progress);
            static_cast<void>(object.release());
            return TuMake<TaMeshData>(std::move(mesh), std::unique_ptr<TaPackedMeshRecord>(packed));
        }
        throw TuExceptionStream(TU_HERE, u"the document does not hold a mesh");
    }

    /// The end of versions 0 and 1.
    void checkOldChecksum(ChecksumReader& stream)
    {
        const std::uint32_t found = stream.GetChecksum();
        std::uint32_t stored = 0;
        stream >> stored;
        if (stored != found) {
            throw TuExceptionStream(TU_HERE, u"the checksum is wrong, so bytes have changed");
        }
    }

    /// Does what reads a chunk, and names the chunk in what is thrown.
    template <class Read> void readChunk(const ChunkBook& book, Read&& read)
    {
        const CString start = book.DescribeNext() + u": ";
        try {
            read();
        } catch (const TuExceptionOutOfMemory&) {
            throw;
        } catch (const TuExceptionStream& failure) {
            throw TuExceptionStream(TU_HERE, start + ReasonOf(failure));
        } catch (const TuExceptionWrongFileVersion& failure) {
            throw TuExceptionWrongFileVersion(TU_HERE, start + ReasonOf(failure));
        } catch (const TuException& failure) {
            throw TuException(TU_HERE, TuExceptionStream(TU_HERE, start + ReasonOf(failure)));
        }
    }

} // namespace

Document::Document()
    : m_tree(std::make_unique<TaDataManager>())
{
}

Document::Document(Mesh mesh)
    : Document()
{
    DescribeMesh(*m_tree, mesh);
    addMesh(TuMake<TaMeshData>(std::move(mesh)));
}

const Mesh& Document::GetMesh() const
{
    static const Mesh s_none;
    const TuSmartPointer<TaMeshData> data = GetMeshData();
    return data.IsNull() ? s_none : data->GetMesh();
}

TuSmartPointer<TaMeshData> Document::GetMeshData() const
{
    const TuSmartPointer<TaNode> geometry = m_tree->FindChild(kGeometry);
    const TuSmartPointer<TaNode> node = geometry.IsNull() ? geometry : geometry->FindChild(kData);
    auto* const data = dynamic_cast<TaMeshNode*>(node.Get());
    return data != nullptr ? data->GetData() : TuSmartPointer<TaMeshData>();
}

void Document::Pack(const CoordinateForm& form, Progress* progress)
{
    const TuSmartPointer<TaMeshData> data = GetMeshData();
    if (data.IsNull()) {
        throw TuException(TU_HERE);
    }
    data->Pack(form, progress);
}

const TaPackedMeshRecord* Document::GetPacked() const
{
    const TuSmartPointer<TaMeshData> data = GetMeshData();
    return data.IsNull() ? nullptr : data->GetPacked();
}

std::vector<TuSmartPointer<TaNode>> Document::TakeParts()
{
    Parts parts = listChildren(*m_tree->GetRootNode());
    for (const TuSmartPointer<TaNode>& part : parts) {
        TaDataHandleLockOnly<1> handle(*m_tree, part);
        if (!m_tree->RemoveNode(handle)) {
            throw TuException(TU_HERE);
        }
    }
    return parts;
}

void Document::Save(TuStreamWriteBinary& stream, Progress* progress) const
{
    WriteDocument(stream, *m_tree->GetRootNode(), progress);
}

void Document::Load(TuStreamReadBinary& stream, Progress* progress)
{
    ChecksumReader checked(stream, progress);
    std::array<char, kDocumentMarker.size()> marker{};
    checked.ReadExactly(marker.data(), marker.size());
    if (marker != kDocumentMarker) {
        throwNone();
    }
    const unsigned int version = checked.ReadAndCompareVersion(kDocumentVersion);
    Document document;
    if (version == kDocumentVersion) {
        document.load(checked, progress);
    } else {
        document.loadOld(checked, version, progress);
    }
    unsigned char surplus = 0;
    if (stream.ReadBuffer(&surplus, 1) != 0) {
        throw TuExceptionStream(TU_HERE, u"more bytes follow the end of the document");
    }
    document.m_tree->GetRootNode()->SetModified(false, true);
    *this = std::move(document);
}

void Document::load(ChecksumReader& stream, const Progress* progress)
{
    FrameReader frames(stream);
    ChunkBook book;
    while (!book.IsComplete()) {
        readChunk(book, [&] {
            const SFrame frame = frames.Read();
            book.Add(frame, frames.GetPayload());
            if (frame.kind == eCK_Part) {
                add(ReadPart(frames.GetPayload(), progress), m_tree->GetRootNode());
            }
        });
    }
    m_program = book.GetHead().program + u" " + book.GetHead().version;
}

void Document::loadOld(ChecksumReader& stream, unsigned int version, const Progress* progress)
{
    TuSmartPointer<TaMeshData> mesh = readOldMesh(stream, progress);
    if (version == 0) {
        DescribeMesh(*m_tree, mesh->GetMesh());
    } else {
        m_tree->Serialize(stream);
        for (const TuSmartPointer<TaNode>& part : listChildren(*m_tree->GetRootNode())) {
            if (part->IsSerializable() || part->GetName() == kGeometry) {
                throw TuExceptionStream(TU_HERE, u"the tree holds what no such document has");
            }
        }
    }
    checkOldChecksum(stream);
    addMesh(std::move(mesh));
}

void Document::add(const TuSmartPointer<TaNode>& node, const TuSmartPointer<TaNode>& parent)
{
    if (!m_tree->InsertNode(node, parent)) {
        throw TuException(TU_HERE);
    }
}

void Document::addMesh(TuSmartPointer<TaMeshData> data)
{
    const auto geometry = TuMake<TaNode>(kGeometry, true, true);
    add(geometry, m_tree->GetRootNode());
    add(TuMake<TaMeshNode>(kData, std::move(data), true, true), geometry);
}

void WriteDocument(TuStreamWriteBinary& stream, const TaNode& top, Progress* progress)
{
    DocumentWriter document;
    document.AddParts(top, progress);
    document.Write(stream, progress);
}

} // namespace tamesh
