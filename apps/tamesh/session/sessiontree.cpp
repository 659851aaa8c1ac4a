#include "tamesh/session/sessiontree.h"

#include "groundwork/cstring.h"
#include "tamesh/displaytext.h"
#include "tamesh/meshfailure.h"

#include <algorithm>

namespace tamesh {

// A waiting writer goes first: else pictures after pictures could keep a mesh from being closed.
SessionTree::SessionTree()
    : m_manager(TaDataManager::eF_WritersFirst)
{
}

std::string SessionTree::Reserve(std::string_view wish)
{
    // As a node can have it: names that are no text would else be two here, and one in the tree.
    const std::string text = CString::FromUtf8(wish).ToUtf8();
    const std::string base = text.empty() ? "mesh" : MakeDisplayText(text);
    const TuCriticalSectionAuto guard(m_lock);
    std::string name = base;
    for (unsigned int number = 2; std::ranges::count(m_names, name, &SName::name) != 0; ++number) {
        name = base + "-" + std::to_string(number);
    }
    m_names.push_back({ name, false });
    return name;
}

void SessionTree::Announce(const std::string& name)
{
    const TuCriticalSectionAuto guard(m_lock);
    const auto place = std::ranges::find(m_names, name, &SName::name);
    place->isOpen = true;
    std::rotate(place, place + 1, m_names.end()); // the order is that of opening
}

void SessionTree::Release(const std::string& name)
{
    const TuCriticalSectionAuto guard(m_lock);
    std::erase_if(m_names, [&](const SName& entry) { return entry.name == name; });
}

std::vector<std::string> SessionTree::GetNames() const
{
    const TuCriticalSectionAuto guard(m_lock);
    std::vector<std::string> names;
    for (const SName& entry : m_names) {
        if (entry.isOpen) {
            names.push_back(entry.name);
        }
    }
    return names;
}

std::string SessionTree::FindName(const std::string& name) const
{
    const std::vector<std::string> names = GetNames();
    if (name.empty() && names.size() == 1) {
        return names.front();
    }
    std::string list;
    for (const std::string& open : names) {
        if (open == name) {
            return name;
        }
        list += (list.empty() ? "" : ", ") + open;
    }
    const std::string what = name.empty() && !names.empty() ? "say which mesh is meant: "
        : list.empty() ? "no mesh is open; 'open FILE' opens one"
                       : "no such mesh is open, but: ";
    throw MeshFailure(TU_HERE, name.empty() ? "session" : name, 0, what + list);
}

TuSmartPointer<TaNode> SessionTree::GetMesh(const std::string& name)
{
    TuSmartPointer<TaNode> node = m_manager.FindChild(CString::FromUtf8(name));
    if (node.IsNull()) {
        throw MeshFailure(TU_HERE, name, 0, "has been closed meanwhile");
    }
    return node;
}

} // namespace tamesh
