#include "tamesh/session/newpart.h"

#include "groundwork/tuexceptions.h"
#include "tabase/tadatahandlelockonly.h"

namespace tamesh {

/// Until it is finished there are two of the name, of which the older is found: it comes first.
NewPart::NewPart(TaDataManager& manager, const TuSmartPointer<TaNode>& mesh, const CString& name)
    : m_manager(manager)
    , m_former(mesh->FindChild(name))
    , m_part(TuMake<TaNode>(name, true, true))
{
    insert(m_part, mesh);
}

NewPart::~NewPart()
{
    if (!m_isFinished) {
        try {
            remove(m_part);
        } catch (const std::exception&) {
            return; // without memory for a handle it stays, behind the older one
        }
    }
}

void NewPart::insert(const TuSmartPointer<TaNode>& node, const TuSmartPointer<TaNode>& parent)
{
    if (!m_manager.InsertNode(node, parent)) {
        throw TuException(TU_HERE);
    }
}

void NewPart::Finish()
{
    m_isFinished = true;
    if (!m_former.IsNull()) {
        remove(m_former);
    }
}

void NewPart::remove(const TuSmartPointer<TaNode>& part)
{
    TaDataHandleLockOnly<1> handle(m_manager, part); // granted at once, by the lock on the mesh
    if (!m_manager.RemoveNode(handle)) {
        throw TuException(TU_HERE);
    }
}

} // namespace tamesh
