#include "tabase/tanodetreewriter.h"

#include "groundwork/iserializable.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamwritebinary.h"
#include "tabase/tanode.h"

// Windows exports the constants of a class where a source repeats them.
constexpr unsigned int TaNodeTreeWriter::kVersion;
constexpr unsigned int TaNodeTreeWriter::kNodeVersion;

namespace {

/// Better not to store a tree than to store one that cannot be read.
void checkCanBeMade(const IObject& object)
{
    if (object.GetRTTI().GetCreate() == nullptr) {
        throw TuException(TU_HERE,
            TuExceptionStream(TU_HERE,
                u"objects of the class \"" + CString(object.GetClassName())
                    + u"\" cannot be stored in a tree: its type record has no create function"));
    }
}

} // namespace

void TaNodeTreeWriter::Write(const TaNode& top)
{
    listNodes(top);
    choose();
    m_stream.WriteVersion(kVersion);
    m_stream << m_entries[0].childrenWritten;
    for (unsigned int i = 1; i < m_entries.GetSize(); ++i) {
        if (m_entries[i].isWritten) {
            writeNode(m_entries[i]);
        }
    }
}

void TaNodeTreeWriter::listNodes(const TaNode& top)
{
    m_entries.RemoveAll();
    m_entries.Add({ &top, 0, 0, true });
    std::uint32_t last = 0;
    for (const TaNode* node = top.getNext(top); node != nullptr; node = node->getNext(top)) {
        // The parent is the node before, or one above that.
        while (m_entries[last].node != node->getParentNode()) {
            last = m_entries[last].parent;
        }
        m_entries.Add({ node, last, 0, false });
        last = m_entries.GetSize() - 1;
    }
}

/// Children first, so that it is known of a plain node whether it leads to anything.
void TaNodeTreeWriter::choose()
{
    for (unsigned int i = m_entries.GetSize() - 1; i != 0; --i) {
        SEntry& entry = m_entries[i];
        SEntry& parent = m_entries[entry.parent];
        const TaNode& node = *entry.node;
        const bool isLeftOut = !parent.node->IsSerializeLeaves() && !node.HasChildren();
        entry.isWritten = !isLeftOut && (node.IsSerializable() || entry.childrenWritten != 0);
        if (!entry.isWritten) {
            continue;
        }
        ++parent.childrenWritten;
        if (node.IsSerializable()) {
            checkCanBeMade(node);
            if (const ISerializable* const data = node.getData(); data != nullptr) {
                checkCanBeMade(*data);
            }
        }
    }
}

void TaNodeTreeWriter::writeNode(const SEntry& entry)
{
    const TaNode& node = *entry.node;
    const bool hasData = node.IsSerializable();
    const int flags = (node.IsSerializeLeaves() ? eF_SerializeLeaves : 0)
        | (node.IsTrackModified() ? eF_TrackModified : 0) | (hasData ? eF_Data : 0);
    m_stream.WriteVersion(kNodeVersion);
    m_stream << node.GetName() << static_cast<unsigned char>(flags);
    if (hasData) {
        const ISerializable* const data = node.getData();
        m_stream << node.GetClassName() << (data != nullptr ? data->GetClassName() : u"");
        if (data != nullptr) {
            data->Serialize(m_stream);
        }
    }
    m_stream << entry.childrenWritten;
}
