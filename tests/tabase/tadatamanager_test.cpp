#include "tabase/tadatamanager.h"

#include "groundwork/tuexceptions.h"
#include "platform/platformclock.h"
#include "support/allocationlimit.h"
#include "support/datatreeprobe.h"
#include "support/largestblock.h"
#include "support/testrandom.h"
#include "support/treebytes.h"
#include "support/worker.h"
#include "tabase/tadatahandlelockonly.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

using Pointer = TuSmartPointer<TaNode>;
using Read = TaDataHandleLockOnly<0>;
using Write = TaDataHandleLockOnly<1>;
using Manager = TaDataManager;

constexpr unsigned int kPatienceMs = 60'000; // spent in full only by a failing test

static_assert(!std::is_copy_constructible_v<Read> && !std::is_copy_assignable_v<Write>);
static_assert(std::is_nothrow_move_constructible_v<Read>);

Pointer makeNode(const CString& name) { return TuMake<TaNode>(name, true, true); }

/// The calling thread's attempt.
Manager::ELockStatus tryLock(Manager& manager, unsigned int timeout = 0)
{
    Manager::ELockStatus status = Manager::eLS_Exception;
    const bool granted = manager.TryLockAndWait(timeout, status);
    EXPECT_EQ(granted, status == Manager::eLS_Granted);
    return status;
}

/// Root - a - (aa, ab), and b. Workers come behind it, so that they end before it goes.
class TaDataManagerTest : public testing::Test
{
protected:
    explicit TaDataManagerTest(Manager::EFairness fairness = Manager::eF_None)
        : m_manager(fairness)
        , m_a(insert(u"a", m_manager.GetRootNode()))
        , m_aa(insert(u"aa", m_a))
        , m_ab(insert(u"ab", m_a))
        , m_b(insert(u"b", m_manager.GetRootNode()))
    {
        m_manager.GetRootNode()->SetModified(false, true);
    }
    ~TaDataManagerTest() override
    {
        EXPECT_EQ(findFault(), "");
        EXPECT_EQ(countRequests(), 0u);
        EXPECT_EQ(TaDataTreeProbe::GetReadCount(*m_manager.GetRootNode()), 0u);
        EXPECT_EQ(TaDataTreeProbe::GetWriteCount(*m_manager.GetRootNode()), 0u);
    }

    Pointer insert(const CString& name, const Pointer& parent)
    {
        const Pointer node = makeNode(name);
        EXPECT_TRUE(m_manager.InsertNode(node, parent));
        return node;
    }
    /// Of the calling thread.
    unsigned int countRequests() const
    {
        return TaDataTreeProbe::GetPendingCount(m_manager, platform::GetCurrentThreadId());
    }
    std::string findFault() const { return TaDataTreeProbe::FindFault(m_manager); }
    Manager::ELockStatus lock(unsigned int timeout = 0)
    {
        const Manager::ELockStatus status = tryLock(m_manager, timeout);
        EXPECT_EQ(findFault(), "");
        return status;
    }
    /// What an attempt of the calling thread comes to that asks for this node alone, and then lets
    /// it go.
    template <class Handle>
    Manager::ELockStatus lockFor(const Pointer& node, unsigned int timeout = 0)
    {
        const Handle handle(m_manager, node);
        return lock(timeout);
    }
    template <class Handle> Manager::ELockStatus lockFor(Worker& worker, const Pointer& node)
    {
        Manager::ELockStatus status = Manager::eLS_Exception;
        worker.Do([&] { status = lockFor<Handle>(node); });
        return status;
    }
    /// A lock that is the worker's.
    template <class Handle> Handle granted(Worker& worker, const Pointer& node)
    {
        Handle handle;
        worker.Do([&] {
            handle = Handle(m_manager, node);
            if (!handle.IsAccessGranted()) {
                EXPECT_EQ(lock(), Manager::eLS_Granted);
            }
        });
        return handle;
    }
    /// Starts an attempt of the worker, and returns when that waits.
    template <class Handle>
    void beginToWait(Worker& worker, const Pointer& node, Manager::ELockStatus& status,
        unsigned int timeout = kPatienceMs)
    {
        const std::size_t before = TaDataTreeProbe::GetWaitingThreads(m_manager);
        worker.Begin([this, node, &status, timeout] {
            const Handle handle(m_manager, node);
            status = tryLock(m_manager, timeout);
        });
        waitForWaiters(before + 1);
    }
    /// What becomes of an attempt that has to wait until `action`.
    template <class Handle, class Action>
    Manager::ELockStatus waitUntil(
        const Pointer& node, Action&& action, unsigned int timeout = kPatienceMs)
    {
        Worker waiter;
        Manager::ELockStatus status = Manager::eLS_Exception;
        beginToWait<Handle>(waiter, node, status, timeout);
        action();
        waiter.Finish();
        return status;
    }
    void waitForWaiters(std::size_t count)
    {
        for (int i = 0; TaDataTreeProbe::GetWaitingThreads(m_manager) < count; ++i) {
            ASSERT_LT(i, 60'000) << "the worker does not wait";
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    Manager m_manager;
    const Pointer m_a;
    const Pointer m_aa;
    const Pointer m_ab;
    const Pointer m_b;
};

/// A handle that has lost its node.
class InvalidHandle : public Write
{
public:
    using Write::Write;

protected:
    bool isValid() const override { return false; }
};

TEST_F(TaDataManagerTest, AnInvalidHandleDropsTheRequests)
{
    const Read good(m_manager, m_b);
    const InvalidHandle bad(m_manager, m_a);
    EXPECT_EQ(lock(kPatienceMs), Manager::eLS_InvalidHandle);
    EXPECT_FALSE(good.IsAccessGranted());
    EXPECT_EQ(lock(), Manager::eLS_NoRequests);
}

TEST_F(TaDataManagerTest, TheAccountNamesEachLockAndRequestAndWhatIsInTheWay)
{
    Worker other;
    const Write obstacle = granted<Write>(other, m_ab);
    const Read own(m_manager, m_b);
    EXPECT_EQ(lock(), Manager::eLS_Granted);
    const Read waiting(m_manager, m_a);
    const Write upgrade(m_manager, m_b); // a thread's own locks are in its way, too
    const Read free(m_manager, m_aa);
    const std::string self = "thread " + std::to_string(platform::GetCurrentThreadId());
    const std::string holder
        = "thread " + std::to_string(other.GetThreadId()) + " writes Root/a/ab\n";
    const std::string text = m_manager.ToString().ToUtf8();
    EXPECT_TRUE(text.starts_with("Root (TaNode)\n |-- a (TaNode)\n |   |-- aa (TaNode)\n")) << text;
    for (const std::string& line :
        { "\n" + holder, "\n" + self + " reads Root/b\n", self + " asks to read Root/a/aa\n",
            self + " asks to read Root/a; in the way:\n    " + holder,
            self + " asks to write Root/b; in the way:\n    " + self + " reads Root/b itself\n" }) {
        EXPECT_NE(text.find(line), text.npos) << line << text;
    }
    EXPECT_EQ(lock(1), Manager::eLS_TimedOut);
}

TEST_F(TaDataManagerTest, AWriterWaitsForTheLastReader)
{
    Worker first;
    Worker second;
    Read outer = granted<Read>(first, m_a);
    Read inner = granted<Read>(second, m_aa);
    const auto release = [&] {
        outer.Unlock();
        EXPECT_EQ(TaDataTreeProbe::GetWaitingThreads(m_manager), 1u);
        EXPECT_EQ(findFault(), "");
        inner.Unlock();
    };
    EXPECT_EQ(waitUntil<Write>(m_a, release), Manager::eLS_Granted);
}

TEST_F(TaDataManagerTest, AReaderIsLetInWhereTheWriterOnlyReadsOn)
{
    Worker writer;
    Write writing = granted<Write>(writer, m_a);
    const Read reading = granted<Read>(writer, m_a);
    EXPECT_EQ(waitUntil<Read>(m_aa, [&] { writing.Unlock(); }), Manager::eLS_Granted);
}

TEST_F(TaDataManagerTest, ANodeInNoTreeIsNotLocked)
{
    const Pointer node = makeNode(u"new");
    EXPECT_EQ(lockFor<Read>(node), Manager::eLS_InvalidHandle);
    EXPECT_EQ(TaDataTreeProbe::GetReadCount(*node), 0u);

    // Nor one that is taken out while somebody waits for it.
    Worker holder;
    Write removing = granted<Write>(holder, m_a);
    const auto remove = [&] { EXPECT_TRUE(m_manager.RemoveNode(removing)); };
    EXPECT_EQ(waitUntil<Read>(m_aa, remove), Manager::eLS_InvalidHandle);
}

/// Without being told it would sleep until its obstacle goes, or its time is over.
TEST_F(TaDataManagerTest, AWaiterIsToldWhenOthersChangeItsRequests)
{
    Worker holder;
    Worker waiter;
    const Write obstacle = granted<Write>(holder, m_a);
    std::optional<Write> requested;
    Read last = granted<Read>(waiter, m_b);
    const auto expectTold = [&](auto&& change) {
        Manager::ELockStatus status = Manager::eLS_Exception;
        waiter.Do([&] { requested.emplace(m_manager, m_aa); });
        waiter.Begin([&] { status = tryLock(m_manager, kPatienceMs); });
        waitForWaiters(1);
        change();
        waiter.Finish();
        EXPECT_EQ(status, Manager::eLS_NoRequests);
    };
    expectTold([&] { requested.reset(); });
    expectTold([&] { last.Unlock(); }); // its thread's last one
}

TEST_F(TaDataManagerTest, AWaiterGoesOnWhenItsObstacleLeavesTheTree)
{
    Worker holder;
    const Read obstacle = granted<Read>(holder, m_aa);
    const auto remove = [&] {
        Write handle(m_manager, m_aa); // not granted, which is not asked
        EXPECT_TRUE(m_manager.RemoveNode(handle));
    };
    EXPECT_EQ(waitUntil<Write>(m_a, remove), Manager::eLS_Granted);

    // The same where the node is moved away by whoever holds it.
    Write moved = granted<Write>(holder, m_ab);
    const Write target = granted<Write>(holder, m_b);
    const auto move = [&] { holder.Do([&] { EXPECT_TRUE(m_manager.MoveNode(moved, m_b)); }); };
    EXPECT_EQ(waitUntil<Read>(m_a, move), Manager::eLS_Granted);
}

TEST_F(TaDataManagerTest, ATimeOutIsOneDeadlineHoweverOftenTheWaiterIsWoken)
{
    constexpr unsigned int kTimeOutMs = 200;
    Worker waiter;
    std::optional<Write> first(std::in_place, m_manager, m_aa);
    EXPECT_EQ(lock(), Manager::eLS_Granted);
    std::atomic<bool> done = false;
    Manager::ELockStatus status = Manager::eLS_Exception;
    std::chrono::steady_clock::duration waited{};
    waiter.Begin([&] {
        const auto start = std::chrono::steady_clock::now();
        const Write handle(m_manager, m_a);
        status = tryLock(m_manager, kTimeOutMs);
        waited = std::chrono::steady_clock::now() - start;
        done = true;
    });
    // One of the children is always held, and each hand-over wakes the waiter.
    const auto start = std::chrono::steady_clock::now();
    while (!done && std::chrono::steady_clock::now() - start < std::chrono::minutes(1)) {
        std::optional<Write> second(std::in_place, m_manager, m_ab);
        EXPECT_EQ(tryLock(m_manager), Manager::eLS_Granted);
        first.reset();
        first.emplace(m_manager, m_aa);
        EXPECT_EQ(tryLock(m_manager), Manager::eLS_Granted);
    }
    EXPECT_TRUE(done);
    first.reset();
    waiter.Finish();
    EXPECT_EQ(status, Manager::eLS_TimedOut);
    EXPECT_GE(waited, std::chrono::milliseconds(kTimeOutMs));
}

TEST_F(TaDataManagerTest, TheLongestTimeOutsDoNotEndAtOnce)
{
    for (const unsigned int timeout : { TuEvent::kInfinite, 0xFFFFFFFEu, 0x80000001u }) {
        std::optional<Write> first(std::in_place, m_manager, m_aa);
        EXPECT_EQ(lock(), Manager::eLS_Granted);
        const auto handOver = [&] {
            const Write second(m_manager, m_ab);
            EXPECT_EQ(lock(), Manager::eLS_Granted);
            first.reset(); // wakes it, in vain
        };
        EXPECT_EQ(waitUntil<Write>(m_a, handOver, timeout), Manager::eLS_Granted) << timeout;
    }
}

TEST_F(TaDataManagerTest, WaitingTakesNoProcessorTime)
{
    constexpr unsigned int kTimeOutMs = 1'000;
    const Write writing(m_manager, m_a);
    EXPECT_EQ(lock(), Manager::eLS_Granted);
    const std::uint64_t start = platform::GetProcessorTime();
    // The last read lock goes while the write lock stays.
    const auto readOnce = [&] { static_cast<void>(Read(m_manager, m_a)); };
    EXPECT_EQ(waitUntil<Read>(m_a, readOnce, kTimeOutMs), Manager::eLS_TimedOut);
    EXPECT_LT(platform::GetProcessorTime() - start, kTimeOutMs / 2 * 1'000'000ull);
}

TEST_F(TaDataManagerTest, AHandleWithoutANodeIsGrantedAndLocksNothing)
{
    Write nothing(m_manager, nullptr);
    EXPECT_TRUE(nothing.IsAccessGranted());
    EXPECT_FALSE(nothing.IsValid() || m_manager.IsCurrentThreadLocking());
    EXPECT_EQ(lock(), Manager::eLS_NoRequests);
    EXPECT_FALSE(m_manager.RemoveNode(nothing));
    EXPECT_FALSE(m_manager.MoveNode(nothing, m_a));
    const Write moved(std::move(nothing));
    EXPECT_TRUE(moved.IsAccessGranted());
    EXPECT_FALSE(Read().IsAccessGranted() || Read().IsValid());
}

TEST_F(TaDataManagerTest, ALockIsGivenBackOnceAndARequestByItsEndAlone)
{
    Write first(m_manager, m_a);
    EXPECT_EQ(lock(), Manager::eLS_Granted);
    const Write second(m_manager, m_a);
    first.Unlock();
    EXPECT_FALSE(first.IsAccessGranted());
    EXPECT_TRUE(first.IsValid());
    first.Unlock();
    EXPECT_EQ(TaDataTreeProbe::GetWriteCount(*m_aa), 1u);
    Read request(m_manager, m_b);
    request.Unlock(); // there is no lock to give back; the request stays
    EXPECT_EQ(countRequests(), 1u);
}

TEST_F(TaDataManagerTest, AMovedHandleTakesItsRequestOrLockAlong)
{
    Write pending(m_manager, m_a);
    Write second(m_manager, m_ab);
    Write target;
    {
        const AllocationLimit none(0);
        target = std::move(pending);
    }
    EXPECT_FALSE(pending.IsValid()); // NOLINT(bugprone-use-after-move): that is the question
    EXPECT_EQ(lock(), Manager::eLS_Granted);
    EXPECT_TRUE(target.IsAccessGranted());
    EXPECT_FALSE(pending.IsAccessGranted());
    pending.Unlock();

    // What was held before is given back; the last lock, too.
    second = Write();
    Write other(m_manager, m_b);
    EXPECT_EQ(lock(), Manager::eLS_Granted);
    {
        const AllocationLimit none(0);
        other = std::move(target);
    }
    EXPECT_EQ(findFault(), "");
    EXPECT_EQ(TaDataTreeProbe::GetWriteCount(*m_b), 0u);
    EXPECT_EQ(other.GetNode(), m_a);
    Write& itself = other;
    other = std::move(itself);
    EXPECT_TRUE(other.IsAccessGranted());
    other = Write();
    EXPECT_FALSE(m_manager.IsCurrentThreadLocking());
}

TEST_F(TaDataManagerTest, ALockStaysItsThreadsWhereverTheHandleGoesAndWhenTheThreadEnds)
{
    std::optional<Worker> owner(std::in_place);
    Worker other;
    std::optional<Write> handle(granted<Write>(*owner, m_a));
    other.Do([&] {
        EXPECT_FALSE(m_manager.IsCurrentThreadLocking());
        handle.reset();
    });
    owner->Do([&] { EXPECT_FALSE(m_manager.IsCurrentThreadLocking()); });

    // A request stays its thread's, too.
    owner->Do([&] { handle.emplace(m_manager, m_a); });
    Write moved(std::move(*handle));
    EXPECT_EQ(lock(), Manager::eLS_NoRequests);
    owner->Do([&] { EXPECT_EQ(lock(), Manager::eLS_Granted); });
    EXPECT_TRUE(moved.IsAccessGranted());

    owner.reset();
    EXPECT_EQ(findFault(), "");
    EXPECT_EQ(lockFor<Read>(other, m_aa), Manager::eLS_Conflict);
    moved.Unlock();
    EXPECT_EQ(lockFor<Read>(other, m_aa), Manager::eLS_Granted);
}

TEST_F(TaDataManagerTest, AHandleMayOutliveItsManager)
{
    auto manager = std::make_unique<Manager>();
    const Pointer node = makeNode(u"node");
    ASSERT_TRUE(manager->InsertNode(node, manager->GetRootNode()));
    Read held(*manager, node);
    EXPECT_EQ(tryLock(*manager), Manager::eLS_Granted);
    const Write pending(*manager, node);
    Read none(*manager, nullptr);
    EXPECT_THROW(Read(m_manager, node), TuExceptionPreconditionViolation);
    manager.reset();
    EXPECT_FALSE(held.IsAccessGranted() || pending.IsAccessGranted() || none.IsAccessGranted());
    EXPECT_EQ(held.GetNode(), node.Get());
    EXPECT_EQ(TaDataTreeProbe::FindFault(*node), "");
    held.Unlock();
    none = std::move(held);
    EXPECT_TRUE(m_manager.InsertNode(node, m_a)); // it is free for another tree
}

/// What the scripts of random steps do not try.
TEST_F(TaDataManagerTest, OnlyAFreeTreeComesIntoThisTreeAndTheParentsAreMarkedAsModified)
{
    const Pointer root = m_manager.GetRootNode();
    const Pointer node = makeNode(u"node");
    const Pointer inner = makeNode(u"inner");
    TaDataTreeProbe::AddChild(node, inner);
    Manager other;
    Write handle(m_manager, m_aa);
    EXPECT_FALSE(m_manager.MoveNode(handle, m_b));
    EXPECT_EQ(lock(), Manager::eLS_Granted);
    for (const Pointer& parent :
        { Pointer(), makeNode(u"alone"), other.GetRootNode(), node, inner }) {
        EXPECT_FALSE(m_manager.InsertNode(node, parent));
        EXPECT_FALSE(m_manager.MoveNode(handle, parent));
    }
    for (const Pointer& child : { Pointer(), inner, m_ab, root, other.GetRootNode() }) {
        EXPECT_FALSE(m_manager.InsertNode(child, m_b));
    }
    EXPECT_FALSE(other.RemoveNode(handle));
    EXPECT_TRUE(m_manager.MoveNode(handle, m_a)); // where it is
    EXPECT_EQ(m_a->GetChildren()->GetName(), u"aa");
    EXPECT_FALSE(root->IsModified(true));

    EXPECT_TRUE(m_manager.InsertNode(node, m_aa));
    EXPECT_EQ(TaDataTreeProbe::GetWriteCount(*inner), 1u);
    EXPECT_TRUE(m_aa->IsModified(false));
    EXPECT_FALSE(m_a->IsModified(false) || node->IsModified(true));
    EXPECT_TRUE(m_manager.MoveNode(handle, m_b));
    EXPECT_TRUE(m_a->IsModified(false) && m_b->IsModified(false));
    m_b->SetModified(false, false);
    EXPECT_TRUE(m_manager.RemoveNode(handle));
    EXPECT_TRUE(m_b->IsModified(false));
    EXPECT_FALSE(root->IsModified(false));
}

TEST_F(TaDataManagerTest, StoringTheTreeLeavesTheRequestsOfTheThreadAlone)
{
    const Read request(m_manager, m_a);
    EXPECT_FALSE(SaveTree(m_manager).empty());
    EXPECT_EQ(findFault(), "");
    EXPECT_EQ(lock(), Manager::eLS_Granted);
}

TEST_F(TaDataManagerTest, AHandleOfAnotherManagerRemovesNothing)
{
    Manager other;
    const Pointer node = makeNode(u"node");
    Write handle(other, node);
    EXPECT_TRUE(m_manager.InsertNode(node, m_a));
    EXPECT_FALSE(m_manager.RemoveNode(handle));
}

TEST_F(TaDataManagerTest, AHandleThatLostItsLockWithItsNodeMovesNothing)
{
    Worker worker;
    Write stale = granted<Write>(worker, m_aa);
    const Write target = granted<Write>(worker, m_b);
    Write handle(m_manager, m_aa); // not granted, which is not asked
    EXPECT_TRUE(m_manager.RemoveNode(handle));
    worker.Do([&] {
        EXPECT_TRUE(m_manager.InsertNode(m_aa, m_a));
        EXPECT_FALSE(m_manager.MoveNode(stale, m_b));
    });
    EXPECT_EQ(m_aa->GetParent(), m_a);
}

TEST_F(TaDataManagerTest, ResetWaitsUntilNobodyLooks)
{
    Worker worker;
    std::optional<Read> obstacle(granted<Read>(worker, m_aa));
    const Write own(m_manager, m_b);
    EXPECT_EQ(lock(), Manager::eLS_Granted);
    EXPECT_FALSE(m_manager.Reset(1));
    EXPECT_FALSE(own.IsAccessGranted());
    EXPECT_FALSE(m_manager.GetRootNode()->IsModified(true));
    EXPECT_EQ(countRequests(), 0u);
    worker.Begin([&] { obstacle.reset(); });
    EXPECT_TRUE(m_manager.Reset(kPatienceMs));
    worker.Finish();
    EXPECT_FALSE(m_manager.GetRootNode()->HasChildren());
    EXPECT_TRUE(m_manager.GetRootNode()->IsModified(false));
    EXPECT_FALSE(m_a->IsManaged());
}

class FairManagerTest : public TaDataManagerTest
{
protected:
    FairManagerTest()
        : TaDataManagerTest(Manager::eF_WritersFirst)
    {
    }
};

TEST_F(FairManagerTest, AWaitingWriterHoldsBackReadersThatHoldNoLock)
{
    std::array<Worker, 3> workers;
    Read reading(m_manager, m_aa);
    EXPECT_EQ(lock(), Manager::eLS_Granted);
    Manager::ELockStatus writer = Manager::eLS_Exception;
    Manager::ELockStatus reader = Manager::eLS_Exception;
    beginToWait<Write>(workers[0], m_a, writer);
    for (const Pointer& node : { m_manager.GetRootNode(), m_a, m_aa }) {
        EXPECT_EQ(lockFor<Read>(workers[1], node), Manager::eLS_Conflict);
    }
    const Read elsewhere = granted<Read>(workers[1], m_b);
    EXPECT_EQ(lockFor<Read>(workers[1], m_aa), Manager::eLS_Granted); // it holds a lock already
    EXPECT_EQ(lockFor<Read>(m_a), Manager::eLS_Granted); // so does this thread
    beginToWait<Read>(workers[2], m_a, reader);
    reading.Unlock(); // first the writer, then the reader behind it
    workers[0].Finish();
    workers[2].Finish();
    EXPECT_EQ(writer, Manager::eLS_Granted);
    EXPECT_EQ(reader, Manager::eLS_Granted);

    // A writer that gives up lets in whom it has held back.
    reading = Read(m_manager, m_a);
    EXPECT_EQ(lock(), Manager::eLS_Granted);
    beginToWait<Write>(workers[0], m_a, writer, 100);
    workers[2].Begin([&] {
        const Read handle(m_manager, m_a);
        reader = tryLock(m_manager, kPatienceMs);
    });
    workers[0].Finish();
    workers[2].Finish();
    EXPECT_EQ(writer, Manager::eLS_TimedOut);
    EXPECT_EQ(reader, Manager::eLS_Granted);
}

TEST_F(TaDataManagerTest, WithoutMemoryNothingHasChanged)
{
    // Two more threads read a node, so that a third counter there needs memory.
    Worker first;
    Worker second;
    const Pointer node = makeNode(u"node");
    TaDataTreeProbe::AddChild(node, makeNode(u"below"));
    Read firstLock = granted<Read>(first, m_b);
    Read secondLock = granted<Read>(second, m_b);

    const auto failEach = [&](auto&& action) {
        const std::string before = m_manager.ToString().ToUtf8();
        const unsigned int requests = countRequests();
        const unsigned int failures = FailEachAllocation([&](unsigned int allowed) {
            try {
                const AllocationLimit limit(allowed);
                action();
                return true;
            } catch (const TuExceptionOutOfMemory&) {
            }
            EXPECT_EQ(m_manager.ToString().ToUtf8(), before) << allowed;
            EXPECT_EQ(findFault(), "") << allowed;
            EXPECT_EQ(node->IsManaged(), !node->GetParent().IsNull());
            EXPECT_EQ(countRequests(), requests) << allowed;
            return false;
        });
        EXPECT_EQ(findFault(), "");
        return failures;
    };
    std::optional<Read> reading;
    std::optional<Write> writing;
    failEach([&] { reading.emplace(m_manager, m_b); });
    EXPECT_GT(failEach([&] { writing.emplace(m_manager, m_aa); }), 0u);
    const unsigned int failures = failEach([&] {
        Manager::ELockStatus status = Manager::eLS_Granted;
        if (!m_manager.TryLockAndWait(kPatienceMs, status)) {
            EXPECT_EQ(status, Manager::eLS_Exception);
            throw TuExceptionOutOfMemory(TU_HERE);
        }
    });
    EXPECT_GT(failures, 0u);
    EXPECT_TRUE(reading->IsAccessGranted() && writing->IsAccessGranted());
    EXPECT_GT(failEach([&] { EXPECT_TRUE(m_manager.InsertNode(node, m_aa)); }), 1u);

    Write moving(m_manager, m_ab);
    EXPECT_EQ(lock(), Manager::eLS_Granted);
    const Pointer leaf = insert(u"leaf", m_aa);
    m_manager.GetRootNode()->SetModified(false, true);
    EXPECT_GT(failEach([&] { EXPECT_TRUE(m_manager.MoveNode(moving, leaf)); }), 0u);
    failEach([&] { EXPECT_TRUE(m_manager.RemoveNode(moving)); });

    // The first link to a node is no container's block. (A library on Windows has an operator new
    // of its own, which does not fail.)
    firstLock.Unlock();
    secondLock.Unlock();
    const Write target(m_manager, m_b);
    EXPECT_EQ(lock(), Manager::eLS_Granted);
    const std::string before = m_manager.ToString().ToUtf8();
    bool isInserted = false;
    s_isMemoryGone = true;
    try {
        isInserted = m_manager.InsertNode(moving.GetNode(), m_b);
    } catch (const std::bad_alloc&) { // nothing has changed then
    }
    s_isMemoryGone = false;
    EXPECT_EQ(isInserted, m_manager.ToString().ToUtf8() != before);
    EXPECT_EQ(isInserted, !moving.GetNode()->GetParent().IsNull());
}

TEST_F(TaDataManagerTest, AWaitThatHasNoMemoryKeepsTheRequests)
{
    Worker other;
    std::optional<Write> obstacle(granted<Write>(other, m_a));
    const Write handle(m_manager, m_a);
    EXPECT_GT(FailEachAllocation([&](unsigned int allowed) {
        Manager::ELockStatus status = Manager::eLS_Granted;
        {
            const AllocationLimit limit(allowed);
            EXPECT_FALSE(m_manager.TryLockAndWait(1, status));
        }
        EXPECT_EQ(findFault(), "");
        EXPECT_EQ(TaDataTreeProbe::GetWaitingThreads(m_manager), 0u);
        return status == Manager::eLS_TimedOut;
    }),
        0u);
}

/// Without a lock it is outdated at once what one sees of a tree, but the tree never looks broken.
TEST_F(TaDataManagerTest, ATreeMayBeLookedAtWhileItsNodesMove)
{
    const Pointer root = m_manager.GetRootNode();
    insert(u"behind", m_a);
    insert(u"behind", m_b);
    insert(u"below", m_aa);
    std::atomic<bool> done = false;
    std::vector<std::jthread> watchers;
    watchers.emplace_back([&] {
        while (!done) {
            EXPECT_FALSE(m_ab->IsDescendantOf(m_aa));
            EXPECT_TRUE(m_aa->FindChild(u"behind").IsNull());
            EXPECT_TRUE(root->ToString().ToUtf8().starts_with("Root (TaNode)"));
        }
    });
    watchers.emplace_back([&] {
        while (!done) {
            root->IsModified(true);
            root->SetModified(false, true);
        }
    });
    for (int i = 0; i < 3'000; ++i) {
        const Write a(m_manager, m_a);
        const Write b(m_manager, m_b);
        EXPECT_EQ(tryLock(m_manager), Manager::eLS_Granted);
        Write node(m_manager, m_aa);
        EXPECT_TRUE(m_manager.MoveNode(node, i % 2 == 0 ? m_b : m_a));
        Write other(m_manager, m_ab);
        EXPECT_TRUE(m_manager.RemoveNode(other)); // gives back the locks
        EXPECT_TRUE(m_manager.InsertNode(m_ab, m_a));
    }
    done = true;
}

/// Threads that lock, change and hand over at random what is a small tree.
class Stress
{
public:
    static constexpr unsigned int kThreads = 8;
    static constexpr unsigned int kRounds = 6;
    static constexpr unsigned int kSteps = 150;
    static constexpr unsigned int kNodes = 40; // the depth, too, for the thread sanitizer's sake

    explicit Stress(Manager::EFairness fairness)
        : m_manager(fairness)
    {
        for (unsigned int i = 0; i < kNodes; ++i) {
            m_nodes.push_back(makeNode(u"node"));
        }
    }

    void Run()
    {
        for (unsigned int round = 0; round < kRounds; ++round) {
            std::array<std::deque<Read>, kThreads> held;
            std::vector<std::jthread> threads;
            for (unsigned int i = 0; i < kThreads; ++i) {
                threads.emplace_back([this, round, i, &mine = held[i]] {
                    std::mt19937_64 random(GetTestSeed() + round * kThreads + i);
                    for (unsigned int done = 0; done < kSteps; ++done) {
                        step(random, mine);
                    }
                });
            }
            threads.clear();
            EXPECT_EQ(TaDataTreeProbe::FindFault(m_manager), ""); // while locks are held
        }
        m_shared.clear();
        EXPECT_EQ(TaDataTreeProbe::FindFault(m_manager), "");
        EXPECT_FALSE(m_manager.ToString().ToUtf8().find("thread") != std::string::npos);
        for (const Pointer& node : m_nodes) {
            if (!node->IsManaged() && node->GetParent().IsNull()) {
                EXPECT_EQ(TaDataTreeProbe::FindFault(*node), "");
            }
        }
        EXPECT_GT(m_changes, 0u);
    }

private:
    const Pointer& pick(std::mt19937_64& random) { return m_nodes[random() % kNodes]; }
    const Pointer& pickParent(std::mt19937_64& random)
    {
        return random() % 4 == 0 ? m_root : pick(random);
    }
    void count(bool changed) { m_changes += changed ? 1 : 0; }

    void step(std::mt19937_64& random, std::deque<Read>& held)
    {
        const auto timeout = static_cast<unsigned int>(random() % 3);
        switch (random() % 8) {
        case 0:
            count(m_manager.InsertNode(pick(random), pickParent(random)));
            break;
        case 1:
        case 2: { // change what is locked
            Write node(m_manager, pick(random));
            const Write parent(m_manager, pickParent(random));
            if (m_manager.TryLockAndWait(timeout)) {
                count(m_manager.MoveNode(node, parent.GetNode()));
                count(m_manager.InsertNode(pick(random), parent.GetNode()));
                node.GetNode()->SetModified(true, true);
                if (random() % 4 == 0) {
                    count(m_manager.RemoveNode(node));
                }
            }
            break;
        }
        case 3:
        case 4: { // keep it for a while
            held.emplace_back(m_manager, pick(random));
            m_manager.TryLockAndWait(timeout).MarkRead();
            while (held.size() > 3) {
                held.pop_front();
            }
            break;
        }
        case 5: // another thread gives it back
            if (!held.empty()) {
                const TuCriticalSectionAuto guard(m_sharedLock);
                m_shared.push_back(std::move(held.front()));
                held.pop_front();
                if (m_shared.size() > kThreads) {
                    m_shared.pop_front();
                }
            }
            break;
        case 6:
            held.clear();
            break;
        default: // what one sees without a lock is outdated at once, but never broken
            if (const Pointer parent = pick(random)->GetParent(); !parent.IsNull()) {
                parent->IsModified(true);
                parent->SetModified(false, true);
                EXPECT_TRUE(parent->FindChild(u"none").IsNull());
                parent->IsDescendantOf(pick(random));
                EXPECT_TRUE(m_root->ToString().ToUtf8().starts_with("Root (TaNode)"));
                m_manager.ToString();
            }
        }
    }

    Manager m_manager;
    const Pointer m_root = m_manager.GetRootNode();
    std::vector<Pointer> m_nodes;
    TuCriticalSection m_sharedLock;
    std::deque<Read> m_shared;
    std::atomic<unsigned int> m_changes = 0;
};

TEST(TaDataManagerStress, EightThreadsLeaveTheBooksInOrder)
{
    Stress(Manager::eF_None).Run();
    Stress(Manager::eF_WritersFirst).Run();
}

} // namespace
