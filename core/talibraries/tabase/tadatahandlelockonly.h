#pragma once

#include "groundwork/tusmartpointer.h"
#include "tabase/tadatahandlebase.h"
#include "tabase/tanode.h"

#include <type_traits>

/// The handle that only locks: 0 reads, 1 writes.
///
///     TaDataHandleLockOnly<1> handle(manager, node);
///     if (manager.TryLockAndWait(kPatienceMs))
///         handle.GetNode()->SetModified(true, false);
///
/// A handle without a node is granted at once and locks nothing.
///
/// Ownership: keeps its node alive. Moved, never copied.
template <int Access> class TABASE_API TaDataHandleLockOnly : public TaDataHandleBase
{
    static_assert(Access == eAR_Read || Access == eAR_Write);

public:
    using Node = std::conditional_t<Access == eAR_Write, TaNode, const TaNode>;

    TaDataHandleLockOnly() = default;
    TaDataHandleLockOnly(TaDataManager& manager, TuSmartPointer<Node> node);
    TaDataHandleLockOnly(TaDataHandleLockOnly&& other) noexcept;
    /// Gives back what it held before.
    TaDataHandleLockOnly& operator=(TaDataHandleLockOnly&& other) noexcept;
    ~TaDataHandleLockOnly() override;

    /// Gives back a granted lock; the handle keeps its node.
    void Unlock() noexcept;
    const TuSmartPointer<Node>& GetNode() const;

protected:
    // Not inline: Windows exports no such function of a class template to classes of users.
    EAccessRights getAccessRights() override;
    bool isValid() const override;
    const TaNode* getNode() const override;

private:
    TuSmartPointer<Node> m_node;
};

template <int Access>
const TuSmartPointer<typename TaDataHandleLockOnly<Access>::Node>&
TaDataHandleLockOnly<Access>::GetNode() const
{
    return m_node;
}

extern template class TaDataHandleLockOnly<0>;
extern template class TaDataHandleLockOnly<1>;
