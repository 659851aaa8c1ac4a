#include "tabase/tanodetreereader.h"

#include "groundwork/iserializable.h"
#include "groundwork/tuarray.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamreadbinary.h"
#include "tabase/tanodetreewriter.h"

#include <memory>

namespace {

[[noreturn]] void throwUnknown(const CString& what)
{
    throw TuException(TU_HERE, TuExceptionStream(TU_HERE, what));
}

TuSmartPointer<TaNode> makeNode(const CString& className)
{
    const TuRTTI::CreateFunction create = TuRTTI::getCreate(className);
    if (create == nullptr) {
        throwUnknown(u"the tree holds a node of the class \"" + className
            + u"\", which is not known here; load the library that has it");
    }
    std::unique_ptr<IObject> object(create());
    auto* const node = dynamic_cast<TaNode*>(object.get());
    if (node == nullptr) {
        throwUnknown(
            u"the tree holds a node of the class \"" + className + u"\", which is none of nodes");
    }
    static_cast<void>(object.release());
    return TuSmartPointer<TaNode>(node);
}

} // namespace

// In a loop: the depth of the tree is the writer's choice.
void TaNodeTreeReader::Read(const TuSmartPointer<TaNode>& top)
{
    struct SOpen
    {
        TaNode* node;
        std::uint32_t childrenLeft;
    };
    m_stream.ReadAndCompareVersion(TaNodeTreeWriter::kVersion);
    std::uint32_t count = 0;
    m_stream >> count;
    TuArray<SOpen> open;
    open.Add({ top.Get(), count });
    while (!open.IsEmpty()) {
        if (open.GetLast().childrenLeft == 0) {
            open.RemoveLast();
            continue;
        }
        --open.GetLast().childrenLeft;
        const TuSmartPointer<TaNode> node = readNode(count);
        TaNode* const parent = open.GetLast().node;
        node->setParent(parent);
        parent->addChild(node);
        if (count != 0) {
            open.Add({ node.Get(), count });
        }
    }
}

TuSmartPointer<TaNode> TaNodeTreeReader::readNode(std::uint32_t& childrenCount)
{
    m_stream.ReadAndCompareVersion(TaNodeTreeWriter::kNodeVersion);
    CString name;
    unsigned char flags = 0;
    m_stream >> name >> flags;
    if ((flags & ~TaNodeTreeWriter::eF_All) != 0) {
        throw TuExceptionStream(TU_HERE, u"a stored node has flags that mean nothing");
    }
    TuSmartPointer<TaNode> node;
    if ((flags & TaNodeTreeWriter::eF_Data) != 0) {
        CString className;
        m_stream >> className;
        node = makeNode(className);
        readData(*node);
    } else {
        node = TuMake<TaNode>();
    }
    node->setName(std::move(name));
    node->m_serializeLeaves = (flags & TaNodeTreeWriter::eF_SerializeLeaves) != 0;
    node->m_trackModified = (flags & TaNodeTreeWriter::eF_TrackModified) != 0;
    m_stream >> childrenCount;
    return node;
}

void TaNodeTreeReader::readData(TaNode& node)
{
    CString className;
    m_stream >> className;
    if (className.IsEmpty()) {
        return;
    }
    if (TuRTTI::getCreate(className) == nullptr) {
        throwUnknown(u"the tree holds a value of the class \"" + className
            + u"\", which is not known here; load the library that has it");
    }
    node.CreateData(className);
    ISerializable* const data = node.getData();
    if (data == nullptr || data->GetClassName() != className) {
        throwUnknown(u"a node of the class \"" + CString(node.GetClassName())
            + u"\" cannot hold a value of the class \"" + className + u"\"");
    }
    data->Serialize(m_stream);
}
