#include "tabase/tadatahandlelockonly.h"
#include "tabase/tadatamanager.h"
#include "tabase/tadatanodes.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamwritebinarybuffer.h"

#include <benchmark/benchmark.h>
#if defined(TA_PEER_QT)
#include <QReadWriteLock>
#endif
#include <malloc.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

namespace {

constexpr unsigned int kChildren = 10; // of each inner node

/// Adds nodes level by level, `kChildren` to each, until there are `count` below the top.
template <class Node, class Add> void grow(Node top, std::int64_t count, Add add)
{
    std::deque<Node> parents{ std::move(top) };
    for (std::int64_t i = 0; i < count; ++i) {
        parents.push_back(add(parents.front()));
        if (i % kChildren == kChildren - 1) {
            parents.pop_front();
        }
    }
}

class Tree
{
public:
    explicit Tree(std::int64_t count)
    {
        for (TuSmartPointer<TaNode>& half : m_halves) {
            half = insert(m_manager.GetRootNode());
            grow(half, count / 2, [this](const auto& parent) { return insert(parent); });
        }
    }
    /// The same tree for all who ask for its size.
    static Tree& Get(std::int64_t count)
    {
        static std::mutex s_lock; // the threads of a benchmark ask at once
        const std::lock_guard guard(s_lock);
        static std::map<std::int64_t, std::unique_ptr<Tree>> s_trees;
        std::unique_ptr<Tree>& tree = s_trees[count];
        if (tree == nullptr) {
            tree = std::make_unique<Tree>(count);
        }
        return *tree;
    }

    TaDataManager& GetManager() { return m_manager; }
    const TuSmartPointer<TaNode>& GetHalf(int index) const { return m_halves[index]; }

private:
    TuSmartPointer<TaNode> insert(const TuSmartPointer<TaNode>& parent)
    {
        auto node = TuMake<TaNode>(u"node", true, true);
        if (!m_manager.InsertNode(node, parent)) {
            std::abort();
        }
        return node;
    }

    TaDataManager m_manager;
    TuSmartPointer<TaNode> m_halves[2];
};

void readAndRelease(TaDataManager& manager, const TuSmartPointer<TaNode>& node)
{
    const TaDataHandleLockOnly<0> handle(manager, node);
    if (!manager.TryLock()) {
        std::abort();
    }
}

void BM_TaDataManager_OneNode(benchmark::State& state)
{
    TaDataManager manager;
    const auto node = TuMake<TaNode>(u"node", true, true);
    manager.InsertNode(node, manager.GetRootNode()).MarkRead();
    for (auto _ : state) {
        readAndRelease(manager, node);
    }
}
BENCHMARK(BM_TaDataManager_OneNode);

void BM_StdSharedMutex_OneNode(benchmark::State& state)
{
    std::shared_mutex mutex;
    for (auto _ : state) {
        mutex.lock_shared();
        benchmark::ClobberMemory();
        mutex.unlock_shared();
    }
}
BENCHMARK(BM_StdSharedMutex_OneNode);

void BM_TaDataManager_Subtree(benchmark::State& state)
{
    Tree& tree = Tree::Get(state.range(0));
    for (auto _ : state) {
        readAndRelease(tree.GetManager(), tree.GetManager().GetRootNode());
    }
}
BENCHMARK(BM_TaDataManager_Subtree)->Arg(1000)->Arg(100'000)->Arg(1'000'000)->Arg(10'000'000);

/// Two threads that read at once, again and again: each its own half of the tree, or both all.
void BM_TaDataManager_TwoThreadsDisjoint(benchmark::State& state)
{
    Tree& tree = Tree::Get(state.range(0));
    for (auto _ : state) {
        readAndRelease(tree.GetManager(), tree.GetHalf(state.thread_index()));
    }
}
BENCHMARK(BM_TaDataManager_TwoThreadsDisjoint)->Arg(100'000)->Threads(2)->UseRealTime();

void BM_TaDataManager_TwoThreadsOverlapping(benchmark::State& state)
{
    Tree& tree = Tree::Get(state.range(0));
    for (auto _ : state) {
        readAndRelease(tree.GetManager(), tree.GetManager().GetRootNode());
    }
}
BENCHMARK(BM_TaDataManager_TwoThreadsOverlapping)->Arg(100'000)->Threads(2)->UseRealTime();

/// A tree of plain nodes with a lock each.
template <class Lock> struct PlainNode
{
    std::u16string name = u"node";
    std::vector<std::unique_ptr<PlainNode>> children;
    Lock lock;

    void Enter()
    {
        lock.Enter();
        for (const auto& child : children) {
            child->Enter();
        }
    }
    void Leave()
    {
        for (const auto& child : children) {
            child->Leave();
        }
        lock.Leave();
    }
};

template <class Lock> PlainNode<Lock>& getPlainTree(std::int64_t count)
{
    static std::mutex s_lock;
    const std::lock_guard guard(s_lock);
    static std::map<std::int64_t, std::unique_ptr<PlainNode<Lock>>> s_trees;
    std::unique_ptr<PlainNode<Lock>>& top = s_trees[count];
    if (top == nullptr) {
        top = std::make_unique<PlainNode<Lock>>();
        for (int half = 0; half < 2; ++half) {
            top->children.push_back(std::make_unique<PlainNode<Lock>>());
            grow(top->children.back().get(), count / 2, [](PlainNode<Lock>* parent) {
                parent->children.push_back(std::make_unique<PlainNode<Lock>>());
                return parent->children.back().get();
            });
        }
    }
    return *top;
}

template <class Lock> void enterAndLeave(benchmark::State& state, PlainNode<Lock>& top)
{
    for (auto _ : state) {
        top.Enter();
        benchmark::ClobberMemory();
        top.Leave();
    }
}

struct AtomicCount
{
    std::atomic<std::uint32_t> count{ 0 };

    void Enter() { count.fetch_add(1); }
    void Leave() { count.fetch_sub(1); }
};

/// The limit: one atomic operation a node each way.
void BM_AtomicPerNode_Subtree(benchmark::State& state)
{
    enterAndLeave(state, getPlainTree<AtomicCount>(state.range(0)));
}
BENCHMARK(BM_AtomicPerNode_Subtree)->Arg(1000)->Arg(100'000)->Arg(1'000'000)->Arg(10'000'000);

#if defined(TA_PEER_QT)
struct QtLock
{
    QReadWriteLock lock;

    void Enter() { lock.lockForRead(); }
    void Leave() { lock.unlock(); }
};

void BM_QReadWriteLock_Subtree(benchmark::State& state)
{
    enterAndLeave(state, getPlainTree<QtLock>(state.range(0)));
}
BENCHMARK(BM_QReadWriteLock_Subtree)->Arg(1000)->Arg(100'000)->Arg(1'000'000)->Arg(10'000'000);

void BM_QReadWriteLock_TwoThreadsDisjoint(benchmark::State& state)
{
    auto& top = getPlainTree<QtLock>(state.range(0));
    enterAndLeave(state, *top.children[static_cast<std::size_t>(state.thread_index())]);
}
BENCHMARK(BM_QReadWriteLock_TwoThreadsDisjoint)->Arg(100'000)->Threads(2)->UseRealTime();

void BM_QReadWriteLock_TwoThreadsOverlapping(benchmark::State& state)
{
    enterAndLeave(state, getPlainTree<QtLock>(state.range(0)));
}
BENCHMARK(BM_QReadWriteLock_TwoThreadsOverlapping)->Arg(100'000)->Threads(2)->UseRealTime();
#endif

// Building and searching.

/// Nodes are made and go with it: what a user pays for a tree.
void BM_TaDataManager_Build(benchmark::State& state)
{
    for (auto _ : state) {
        const Tree tree(state.range(0));
    }
}
BENCHMARK(BM_TaDataManager_Build)->Arg(1000)->Arg(100'000)->Arg(1'000'000);

void BM_PlainNode_Build(benchmark::State& state)
{
    for (auto _ : state) {
        PlainNode<AtomicCount> top;
        grow(&top, state.range(0), [](PlainNode<AtomicCount>* parent) {
            parent->children.push_back(std::make_unique<PlainNode<AtomicCount>>());
            return parent->children.back().get();
        });
    }
}
BENCHMARK(BM_PlainNode_Build)->Arg(1000)->Arg(100'000)->Arg(1'000'000);

std::u16string nameOf(std::int64_t index)
{
    const std::string digits = std::to_string(index);
    return u"child " + std::u16string(digits.begin(), digits.end());
}

/// The last of so many children.
void BM_TaNode_FindChild(benchmark::State& state)
{
    TaDataManager manager;
    const auto parent = manager.GetRootNode();
    CString name;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        name = nameOf(i);
        manager.InsertNode(TuMake<TaNode>(name, true, true), parent).MarkRead();
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(parent->FindChild(name));
    }
}
BENCHMARK(BM_TaNode_FindChild)->Arg(10)->Arg(100)->Arg(1000);

void BM_PlainNode_FindChild(benchmark::State& state)
{
    PlainNode<AtomicCount> parent;
    std::u16string name;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        name = nameOf(i);
        parent.children.push_back(std::make_unique<PlainNode<AtomicCount>>());
        parent.children.back()->name = name;
    }
    for (auto _ : state) {
        for (const auto& child : parent.children) {
            if (child->name == name) {
                benchmark::DoNotOptimize(child.get());
                break;
            }
        }
    }
}
BENCHMARK(BM_PlainNode_FindChild)->Arg(10)->Arg(100)->Arg(1000);

// The stored form.

/// `count` numbers below `count / kChildren` plain nodes.
void fill(TaDataManager& manager, std::int64_t count)
{
    const auto top = TuMake<TaNode>(u"Values", true, true);
    manager.InsertNode(top, manager.GetRootNode()).MarkRead();
    TuSmartPointer<TaNode> parent;
    for (std::int64_t i = 0; i < count; ++i) {
        if (i % kChildren == 0) {
            parent = TuMake<TaNode>(u"Group", true, true);
            manager.InsertNode(parent, top).MarkRead();
        }
        const auto value = TuMake<TuInt32>(static_cast<std::int32_t>(i));
        manager.InsertNode(TuMake<TaDataNodeInt32>(u"Value", value, true, true), parent).MarkRead();
    }
}

void BM_TaDataManager_Save(benchmark::State& state)
{
    TaDataManager manager;
    fill(manager, state.range(0));
    std::int64_t bytes = 0;
    for (auto _ : state) {
        TaStreamWriteBinaryBuffer stream;
        manager.Serialize(stream);
        bytes += static_cast<std::int64_t>(stream.GetSize());
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_TaDataManager_Save)->Arg(1000)->Arg(100'000)->Arg(1'000'000);

void BM_TaDataManager_Load(benchmark::State& state)
{
    TaDataManager manager;
    fill(manager, state.range(0));
    TaStreamWriteBinaryBuffer written;
    manager.Serialize(written);
    std::int64_t bytes = 0;
    for (auto _ : state) {
        TaStreamReadBinaryBuffer stream(written.GetData(), written.GetSize());
        TaDataManager loaded;
        loaded.Serialize(stream);
        bytes += static_cast<std::int64_t>(written.GetSize());
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_TaDataManager_Load)->Arg(1000)->Arg(100'000)->Arg(1'000'000);

// Memory: what the allocator hands out for a node in a large tree, places in lists included.

template <class Make> void measureMemory(benchmark::State& state, Make make)
{
    constexpr std::int64_t kNodes = 100'000;
    double bytes = 0;
    for (auto _ : state) {
        const std::size_t before = mallinfo2().uordblks;
        TaDataManager manager;
        grow(manager.GetRootNode(), kNodes, [&](const TuSmartPointer<TaNode>& parent) {
            TuSmartPointer<TaNode> node = make();
            manager.InsertNode(node, parent).MarkRead();
            return node;
        });
        bytes = static_cast<double>(mallinfo2().uordblks - before);
    }
    state.counters["bytes"] = bytes / static_cast<double>(kNodes);
}

void BM_TaNode_Memory(benchmark::State& state)
{
    measureMemory(state, [] { return TuMake<TaNode>(); });
}
BENCHMARK(BM_TaNode_Memory);

void BM_TaDataNode_Memory(benchmark::State& state)
{
    measureMemory(state, [] {
        return TuSmartPointer<TaNode>(
            TuMake<TaDataNodeInt32>(u"Value", TuMake<TuInt32>(1), true, true));
    });
}
BENCHMARK(BM_TaDataNode_Memory);

} // namespace

BENCHMARK_MAIN();
