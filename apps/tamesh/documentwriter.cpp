#include "tamesh/documentwriter.h"

#include "groundwork/tuexceptions.h"
#include "tabase/tanode.h"
#include "tabase/tanodetreewriter.h"
#include "tamesh/progress.h"

#include <utility>

namespace tamesh {

namespace {

    /// Counts what is written, and forgets it.
    class ByteCounter final : public TuStreamWriteBinary
    {
    public:
        explicit ByteCounter(const Progress* progress)
            : m_progress(progress)
        {
        }
        std::uint64_t GetCount() const { return m_count; }

    private:
        void write(const void*, unsigned long long size) override
        {
            if (m_progress != nullptr) {
                m_progress->CheckInterrupt();
            }
            m_count += size;
        }

        const Progress* m_progress;
        std::uint64_t m_count = 0;
    };

    template <class Write>
    std::uint64_t countBytes(const Write& write, const Progress* progress = nullptr)
    {
        ByteCounter counter(progress);
        write(counter);
        return counter.GetCount();
    }

    /// What is written of a node without anything below it that is stored.
    constexpr std::uint64_t kNothing = sizeof TaNodeTreeWriter::kVersion + sizeof(std::uint32_t);

} // namespace

DocumentWriter::DocumentWriter(const CString& version) { m_head.version = version; }

void DocumentWriter::AddParts(const TaNode& top, const Progress* progress)
{
    for (const TaNode& node : top.GetChildren()) {
        if (node.IsSerializable()) {
            throw TuException(TU_HERE,
                TuExceptionStream(
                    TU_HERE, u"\"" + node.GetName() + u"\" is a value where a part should be"));
        }
        const auto writeTree
            = [&node](TuStreamWriteBinary& stream) { TaNodeTreeWriter(stream).Write(node); };
        const std::uint64_t treeSize = countBytes(writeTree, progress);
        if (treeSize != kNothing) {
            const auto writeName
                = [name = node.GetName()](TuStreamWriteBinary& stream) { stream << name; };
            m_head.parts.push_back(node.GetName());
            m_parts.push_back({ countBytes(writeName) + treeSize,
                [writeName, writeTree](TuStreamWriteBinary& stream) {
                    writeName(stream);
                    writeTree(stream);
                } });
        }
    }
}

void DocumentWriter::AddStored(const CString& name, std::span<const unsigned char> payload)
{
    m_head.parts.push_back(name);
    m_parts.push_back({ payload.size(), [payload](TuStreamWriteBinary& stream) {
                           stream.WriteBuffer(payload.data(), payload.size());
                       } });
}

std::uint64_t DocumentWriter::GetSize() const
{
    const auto writeHead = [this](TuStreamWriteBinary& stream) { m_head.Write(stream); };
    std::vector<SChunkEntry> directory{ { {}, kHeadName } };
    std::uint64_t size = kDocumentStartSize + countBytes(writeHead);
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        directory.push_back({ {}, m_head.parts[i] });
        size += m_parts[i].length;
    }
    const auto writeEnd = [&](TuStreamWriteBinary& stream) { WriteDirectory(stream, directory); };
    return size + countBytes(writeEnd) + (m_parts.size() + 2) * kFrameOverhead;
}

void DocumentWriter::Write(TuStreamWriteBinary& stream, Progress* progress) const
{
    FrameWriter frames(stream, progress);
    std::vector<SChunkEntry> directory;
    const auto writeHead = [this](TuStreamWriteBinary& head) { m_head.Write(head); };
    directory.push_back({ frames.Write(eCK_Head, countBytes(writeHead), writeHead), kHeadName });
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        directory.push_back(
            { frames.Write(eCK_Part, m_parts[i].length, m_parts[i].write), m_head.parts[i] });
    }
    const auto writeEnd = [&](TuStreamWriteBinary& end) { WriteDirectory(end, directory); };
    frames.Write(eCK_End, countBytes(writeEnd), writeEnd);
}

} // namespace tamesh
