#include "support/datatreeprobe.h"
#include "support/treebytes.h"
#include "support/worker.h"
#include "tabase/tadatahandlelockonly.h"
#include "tabase/tadatamanager.h"
#include "tabase/tadatanodes.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using Pointer = TuSmartPointer<TaNode>;
using Read = TaDataHandleLockOnly<0>;
using Write = TaDataHandleLockOnly<1>;
using Manager = TaDataManager;

constexpr std::size_t kNodes = 8; // 0 is the root
constexpr std::size_t kThreads = 3;
constexpr std::size_t kNone = ~std::size_t{ 0 };

/// The rules of locks, plainly: every lock is one entry of a list, and all else is counted anew
/// from that each time.
class Model
{
public:
    struct SHandle
    {
        std::size_t thread;
        std::size_t node;
        bool write;
        bool isPending = false;
        bool isGranted = false;
        bool isCounted = false; // false, too, when the node has been taken away from under it
    };

    Model() { parents.fill(kNone); }

    bool IsBelow(std::size_t node, std::size_t top) const
    {
        while (node != kNone && node != top) {
            node = parents[node];
        }
        return node == top;
    }
    bool IsInTree(std::size_t node) const { return IsBelow(node, 0); }
    SReadWriteCount Count(std::size_t node, std::size_t thread) const
    {
        SReadWriteCount count;
        for (const SHandle& handle : handles) {
            if (handle.isCounted && handle.thread == thread && IsBelow(node, handle.node)) {
                ++(handle.write ? count.write : count.read);
            }
        }
        return count;
    }
    bool IsLocking(std::size_t thread) const
    {
        return std::any_of(handles.begin(), handles.end(),
            [&](const SHandle& handle) { return handle.isGranted && handle.thread == thread; });
    }

    void Request(std::size_t thread, std::size_t node, bool write)
    {
        const SReadWriteCount own = Count(node, thread);
        const bool isCovered = write ? own.write != 0 : !own.IsZero();
        handles.push_back({ thread, node, write, !isCovered, isCovered, isCovered });
    }
    Manager::ELockStatus TryLock(std::size_t thread, bool hasTimeout)
    {
        const auto isRequest
            = [&](const SHandle& handle) { return handle.isPending && handle.thread == thread; };
        if (std::none_of(handles.begin(), handles.end(), isRequest)) {
            return Manager::eLS_NoRequests;
        }
        const bool isInvalid = std::any_of(handles.begin(), handles.end(),
            [&](const SHandle& request) { return isRequest(request) && !IsInTree(request.node); });
        const bool conflict
            = std::any_of(handles.begin(), handles.end(), [&](const SHandle& request) {
                  return isRequest(request) && isInConflict(request.node, request.write);
              });
        for (SHandle& handle : handles) {
            if (isRequest(handle)) {
                handle.isPending = false;
                handle.isGranted = handle.isCounted = !isInvalid && !conflict;
            }
        }
        return isInvalid ? Manager::eLS_InvalidHandle
            : !conflict  ? Manager::eLS_Granted
            : hasTimeout ? Manager::eLS_TimedOut
                         : Manager::eLS_Conflict;
    }
    /// Withdraws the request, or gives back the lock.
    void Release(SHandle& handle)
    {
        handle.isPending = handle.isCounted = false;
        if (std::exchange(handle.isGranted, false) && !IsLocking(handle.thread)) {
            for (SHandle& request : handles) {
                request.isPending = request.isPending && request.thread != handle.thread;
            }
        }
    }

    bool Insert(std::size_t thread, std::size_t node, std::size_t parent)
    {
        if (node == 0 || parents[node] != kNone || !mayAddTo(parent, thread)) {
            return false;
        }
        link(node, parent);
        return true;
    }
    bool Move(std::size_t thread, const SHandle& handle, std::size_t parent)
    {
        if (!handle.isCounted || !isRemovable(handle) || !mayAddTo(parent, thread)
            || IsBelow(parent, handle.node)) {
            return false;
        }
        if (parents[handle.node] != parent) {
            unlink(handle.node);
            link(handle.node, parent);
        }
        return true;
    }
    bool Remove(std::size_t thread, SHandle& handle)
    {
        if (!isRemovable(handle)) {
            return false;
        }
        if (handle.isGranted) {
            Release(handle);
        }
        releaseAll(thread);
        takeOut(handle.node);
        return true;
    }
    bool Reset(std::size_t thread)
    {
        releaseAll(thread);
        if (isInConflict(0, true)) {
            return false;
        }
        // The lock on the root that this takes is given back: the last one.
        SHandle exclusive{ thread, 0, true, false, true, false };
        Release(exclusive);
        while (!children[0].empty()) {
            takeOut(children[0].front());
        }
        return true;
    }

    std::array<std::size_t, kNodes> parents;
    std::array<std::vector<std::size_t>, kNodes> children;
    std::vector<SHandle> handles;

private:
    bool isInConflict(std::size_t top, bool write) const
    {
        for (std::size_t node = 0; node < kNodes; ++node) {
            for (std::size_t thread = 0; IsBelow(node, top) && thread < kThreads; ++thread) {
                const SReadWriteCount count = Count(node, thread);
                if (count.write != 0 || (write && count.read != 0)) {
                    return true;
                }
            }
        }
        return false;
    }
    bool mayAddTo(std::size_t parent, std::size_t thread) const
    {
        bool othersLock = false;
        for (std::size_t other = 0; other < kThreads; ++other) {
            othersLock = othersLock || (other != thread && IsLocking(other));
        }
        return IsInTree(parent) && (!othersLock || Count(parent, thread).write != 0);
    }
    bool isRemovable(const SHandle& handle) const
    {
        return handle.write && handle.node != 0 && IsInTree(handle.node);
    }
    void releaseAll(std::size_t thread)
    {
        for (SHandle& handle : handles) {
            if (handle.isGranted && handle.thread == thread) {
                Release(handle);
            }
        }
    }
    void link(std::size_t node, std::size_t parent)
    {
        parents[node] = parent;
        children[parent].push_back(node);
    }
    void unlink(std::size_t node)
    {
        std::erase(children[parents[node]], node);
        parents[node] = kNone;
    }
    void takeOut(std::size_t top)
    {
        unlink(top);
        for (SHandle& handle : handles) {
            handle.isCounted = handle.isCounted && !IsBelow(handle.node, top);
        }
    }
};

/// A tree and its model, which take the same steps.
class Pair
{
public:
    explicit Pair(const std::vector<std::size_t>& parents)
    {
        m_nodes[0] = m_manager.GetRootNode();
        for (std::size_t node = 1; node < kNodes; ++node) {
            m_nodes[node] = TuMake<TaNode>(u"node", true, true);
            // Some wait outside, with or without a tree of their own.
            if (parents[node] < node) {
                RC_ASSERT(bool(m_manager.InsertNode(m_nodes[node], m_nodes[parents[node]]))
                    == m_model.Insert(0, node, parents[node]));
            }
        }
    }

    void Step(std::size_t thread, unsigned int kind, std::size_t a, std::size_t b)
    {
        int wanted = -1;
        int got = -1;
        bool isLocking = false;
        m_workers[thread].Do([&] {
            std::tie(wanted, got) = take(thread, kind, a, b);
            isLocking = m_manager.IsCurrentThreadLocking();
        });
        RC_ASSERT(got == wanted);
        RC_ASSERT(isLocking == m_model.IsLocking(thread));
        compare();
    }

private:
    std::pair<int, int> take(std::size_t thread, unsigned int kind, std::size_t a, std::size_t b)
    {
        const Pointer& first = m_nodes[a % kNodes];
        const Pointer& second = m_nodes[b % kNodes];
        const std::size_t which = m_handles.empty() ? kNone : a % m_handles.size();
        switch (kind) {
        case 0:
        case 1:
        case 2:
            m_model.Request(thread, a % kNodes, b % 2 != 0);
            if (b % 2 != 0) {
                m_handles.push_back(std::make_unique<Write>(m_manager, first));
            } else {
                m_handles.push_back(std::make_unique<Read>(m_manager, first));
            }
            return {};
        case 3:
        case 4:
        case 5: {
            const unsigned int timeout = b % 16 == 0 ? 1 : 0;
            const int wanted = m_model.TryLock(thread, timeout != 0);
            Manager::ELockStatus status = Manager::eLS_Exception;
            m_manager.TryLockAndWait(timeout, status).MarkRead();
            return { wanted, status };
        }
        case 6:
        case 7:
            return { m_model.Insert(thread, a % kNodes, b % kNodes),
                m_manager.InsertNode(first, second) };
        case 8:
            return b % 4 == 0 ? std::pair<int, int>(m_model.Reset(thread), m_manager.Reset(0))
                              : std::pair<int, int>();
        default:
            break;
        }
        if (which == kNone) {
            return {};
        }
        Model::SHandle& handle = m_model.handles[which];
        switch (kind) {
        case 9:
        case 10:
            m_model.Release(handle);
            m_model.handles.erase(m_model.handles.begin() + std::ptrdiff_t(which));
            m_handles.erase(m_handles.begin() + std::ptrdiff_t(which));
            return {};
        case 11:
            return { m_model.Remove(thread, handle), m_manager.RemoveNode(*m_handles[which]) };
        default:
            return handle.thread != thread
                ? std::pair<int, int>()
                : std::pair<int, int>(m_model.Move(thread, handle, b % kNodes),
                    m_manager.MoveNode(*m_handles[which], second));
        }
    }

    void compare()
    {
        RC_ASSERT(TaDataTreeProbe::FindFault(m_manager) == "");
        for (std::size_t node = 0; node < kNodes; ++node) {
            const Pointer& real = m_nodes[node];
            const std::size_t parent = m_model.parents[node];
            RC_ASSERT(real->GetParent() == (parent != kNone ? m_nodes[parent] : Pointer()));
            RC_ASSERT(real->IsManaged() == m_model.IsInTree(node));
            std::vector<std::size_t> children;
            for (TaNode& child : real->GetChildren()) {
                children.push_back(std::size_t(
                    std::find(m_nodes.begin(), m_nodes.end(), &child) - m_nodes.begin()));
            }
            RC_ASSERT(children == m_model.children[node]);
            for (std::size_t other = 0; other < kNodes; ++other) {
                RC_ASSERT(real->IsDescendantOf(m_nodes[other])
                    == (node != other && m_model.IsBelow(node, other)));
            }
            for (std::size_t thread = 0; thread < kThreads; ++thread) {
                const SReadWriteCount count
                    = TaDataTreeProbe::GetCount(*real, m_workers[thread].GetThreadId());
                const SReadWriteCount wanted = m_model.Count(node, thread);
                RC_ASSERT(count.read == wanted.read);
                RC_ASSERT(count.write == wanted.write);
            }
        }
        for (std::size_t i = 0; i < m_handles.size(); ++i) {
            RC_ASSERT(m_handles[i]->IsAccessGranted() == m_model.handles[i].isGranted);
        }
    }

    Model m_model;
    Manager m_manager;
    std::array<Pointer, kNodes> m_nodes;
    std::vector<std::unique_ptr<TaDataHandleBase>> m_handles;
    std::array<Worker, kThreads> m_workers;
};

RC_GTEST_PROP(DataTreeProperties, LocksAndChangesFollowTheModel, ())
{
    using Step = std::tuple<std::size_t, unsigned int, std::size_t, std::size_t>;
    const auto number = rc::gen::inRange<std::size_t>(0, 1'000);
    const auto parents = *rc::gen::container<std::vector<std::size_t>>(
        kNodes, rc::gen::inRange<std::size_t>(0, kNodes));
    const auto steps = *rc::gen::container<std::vector<Step>>(rc::gen::tuple(
        rc::gen::inRange<std::size_t>(0, kThreads), rc::gen::inRange(0u, 14u), number, number));
    Pair pair(parents);
    for (const auto& [thread, kind, a, b] : steps) {
        pair.Step(thread, kind, a, b);
    }
}

RC_GTEST_PROP(DataTreeProperties, ATreeThatWasStoredComesBack, (const std::vector<int>& values))
{
    Manager manager;
    const Pointer top = TuMake<TaNode>(u"Top", true, true);
    RC_ASSERT(bool(manager.InsertNode(top, manager.GetRootNode())));
    std::vector<Pointer> nodes{ top };
    for (const int value : values) {
        const Pointer parent = nodes[*rc::gen::inRange<std::size_t>(0, nodes.size())];
        nodes.push_back(
            TuMake<TaDataNodeInt32>(u"n\u00f6de", TuMake<TuInt32>(value), true, value % 2 == 0));
        RC_ASSERT(bool(manager.InsertNode(nodes.back(), parent)));
    }
    manager.GetRootNode()->SetModified(false, true);
    const std::string bytes = SaveTree(manager);
    Manager read;
    RC_ASSERT(LoadTree(read, bytes));
    RC_ASSERT(TaDataTreeProbe::FindFault(read) == "");
    RC_ASSERT(SaveTree(read) == bytes);
    // A plain node that leads to nothing is left out.
    RC_ASSERT(
        read.ToString() == (values.empty() ? CString(u"Root (TaNode)\n") : manager.ToString()));
}

} // namespace
