#pragma once

#include "groundwork/tucriticalsection.h"
#include "platform/platformthreadsafety.h"
#include "tabase/tadatamanager.h"
#include "tamesh/tameshdata.h"

#include <string>
#include <string_view>
#include <vector>

namespace tamesh {

/// The names of the parts of a mesh: children of its node in a session, and of the root in a
/// document. Each is a plain node with what was found below it.
struct SPartNames
{
    static constexpr const char16_t* kMesh = u"Mesh"; // what is known of it from its file
    static constexpr const char16_t* kGeometry = u"Geometry"; // the mesh itself, in kData
    static constexpr const char16_t* kFigures = u"Figures";
    static constexpr const char16_t* kComponents = u"Components";
    static constexpr const char16_t* kPath = u"Path";
    static constexpr const char16_t* kDistance = u"Distance";
    static constexpr const char16_t* kColours = u"Colours";
    static constexpr const char16_t* kPicture = u"Picture";
    static constexpr const char16_t* kSettings = u"Settings";
    static constexpr const char16_t* kTrace = u"Trace";

    static constexpr const char16_t* kData = u"Data"; // in a part: its value
    static constexpr const char16_t* kParameters = u"Parameters"; // in a part: how it came about
};

/// The data tree of a session: below its root a node for each mesh that is open, below that the
/// parts.
///
/// Which meshes there are is kept beside the tree, too, under a lock of its own: so nobody has to
/// wait for the commands that hold parts of the tree just to find a mesh by its name.
///
/// Threads: any; of the tree itself as TaDataManager says.
class SessionTree
{
public:
    SessionTree();

    TaDataManager& GetManager() { return m_manager; }

    /// A name that no mesh has, as near to `wish` as possible; it is taken until Release.
    std::string Reserve(std::string_view wish);
    /// The node of the name that was reserved is in the tree.
    void Announce(const std::string& name);
    void Release(const std::string& name);
    /// Of meshes that are open, in the order in which they were opened.
    std::vector<std::string> GetNames() const;
    /// The name that the user means: an empty one is that of the only mesh. Throws MeshFailure
    /// where it is not open, or there are several.
    std::string FindName(const std::string& name) const;
    /// Throws MeshFailure where it has gone.
    TuSmartPointer<TaNode> GetMesh(const std::string& name);

private:
    struct SName
    {
        std::string name;
        bool isOpen; // else only reserved
    };

    TaDataManager m_manager;
    mutable TuCriticalSection m_lock;
    std::vector<SName> m_names TU_GUARDED_BY(m_lock);
};

/// The value in a part of a mesh; null where there is none of that class. The caller holds a lock.
template <class Value>
TuSmartPointer<const Value> FindValue(
    const TaNode& mesh, const CString& part, const CString& name = SPartNames::kData)
{
    const TuSmartPointer<const TaNode> node = mesh.FindChild(part);
    const TuSmartPointer<const TaNode> data = node.IsNull() ? node : node->FindChild(name);
    const auto* const found = dynamic_cast<const TaDataNode<Value>*>(data.Get());
    return found != nullptr ? found->GetData() : TuSmartPointer<const Value>();
}

} // namespace tamesh
