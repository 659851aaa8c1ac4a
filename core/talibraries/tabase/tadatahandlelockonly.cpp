#include "tabase/tadatahandlelockonly.h"

#include <utility>

template <int Access>
TaDataHandleLockOnly<Access>::TaDataHandleLockOnly(
    TaDataManager& manager, TuSmartPointer<Node> node)
    : TaDataHandleBase(manager)
    , m_node(std::move(node))
{
    requestLock();
}

template <int Access>
TaDataHandleLockOnly<Access>::TaDataHandleLockOnly(TaDataHandleLockOnly&& other) noexcept
    // The other one keeps its node, too, until the books name this handle.
    : m_node(other.m_node) // NOLINT(performance-move-constructor-init)
{
    takeOver(other);
    other.m_node.Reset();
}

template <int Access>
TaDataHandleLockOnly<Access>& TaDataHandleLockOnly<Access>::operator=(
    TaDataHandleLockOnly&& other) noexcept
{
    if (this != &other) {
        leaveManager();
        m_node = other.m_node;
        takeOver(other);
        other.m_node.Reset();
    }
    return *this;
}

// Here, and not in the base: other threads ask the handle for its node until it is out of the
// manager's books.
template <int Access> TaDataHandleLockOnly<Access>::~TaDataHandleLockOnly() { leaveManager(); }

template <int Access> void TaDataHandleLockOnly<Access>::Unlock() noexcept { releaseLock(); }

template <int Access>
TaDataHandleBase::EAccessRights TaDataHandleLockOnly<Access>::getAccessRights()
{
    return static_cast<EAccessRights>(Access);
}

template <int Access> bool TaDataHandleLockOnly<Access>::isValid() const
{
    return !m_node.IsNull();
}

template <int Access> const TaNode* TaDataHandleLockOnly<Access>::getNode() const
{
    return m_node.Get();
}

template class TaDataHandleLockOnly<0>;
template class TaDataHandleLockOnly<1>;
