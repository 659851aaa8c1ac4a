#pragma once

#include "groundwork/tucriticalsection.h"
#include "platform/blockrow.h"
#include "platform/platformwindow.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

/// The notifications of one kind that wait for a handler, in the order in which they came.
///
/// They stand in two rows: the handler's thread takes from the one, and when that is empty, the
/// whole other one takes its place. So who adds and who takes seldom meet at a lock.
///
/// Ownership: of the notifications.
/// Threads:   the handler's thread takes; any thread may do the rest.
template <class Notification> struct TaNotificationQueue
{
    using Row = platform::BlockRow<Notification, 10>;
    static constexpr std::uint64_t kNone = std::numeric_limits<std::uint64_t>::max();

    /// The first one, where its ticket is below `limit`.
    std::optional<Notification> Take(std::uint64_t limit = kNone) noexcept
    {
        const TuCriticalSectionAuto guard(takenLock);
        if (!hasFirst() || taken.GetFirst().GetTicket() >= limit) {
            return std::nullopt;
        }
        std::optional<Notification> first(taken.TakeFirst());
        if (!taken.IsEmpty()) {
            taken.GetFirst().Prefetch();
        }
        return first;
    }
    /// Of the first one; kNone where nothing waits.
    std::uint64_t GetFirstTicket() noexcept
    {
        const TuCriticalSectionAuto guard(takenLock);
        return hasFirst() ? taken.GetFirst().GetTicket() : kNone;
    }
    std::size_t GetCount() const
    {
        const TuCriticalSectionAuto takenGuard(takenLock);
        const TuCriticalSectionAuto guard(lock);
        return taken.GetCount() + records.GetCount();
    }
    /// False where nothing waits; for who can live with it that something comes just now.
    bool MayHaveAny() const noexcept { return isUsed.load(); }
    /// Drops those for which `isMeant(notification)` is true. The end of a message is a user's
    /// code: it runs without the locks.
    template <class Predicate> void Drop(Predicate isMeant) noexcept
    {
        bool isDone = false;
        while (!isDone) {
            isDone = true;
            Row dropped;
            std::optional<Notification> last; // without memory, one at a time
            const auto keeps = [&](Notification& record) {
                if (!isMeant(std::as_const(record))) {
                    return true;
                }
                if (!dropped.Add(std::move(record))) {
                    isDone = isDone && !last.has_value();
                    if (last.has_value()) {
                        return true;
                    }
                    // NOLINTNEXTLINE(bugprone-use-after-move): what was not added was not moved
                    last.emplace(std::move(record));
                }
                return false;
            };
            const TuCriticalSectionAuto takenGuard(takenLock);
            taken.Filter(keeps);
            const TuCriticalSectionAuto guard(lock);
            records.Filter(keeps);
        }
    }

    mutable TuCriticalSection lock;
    Row records TU_GUARDED_BY(lock);
    std::atomic<bool> isUsed{ false }; // written under both locks, or true under the first
    bool isOpen TU_GUARDED_BY(lock) = false; // while the handler has a window
    platform::EPost signal TU_GUARDED_BY(lock) = platform::eP_Posted; // what the last one came to

    mutable TuCriticalSection takenLock; // before the other one
    Row taken TU_GUARDED_BY(takenLock);

private:
    bool hasFirst() noexcept TU_REQUIRES(takenLock)
    {
        if (taken.IsEmpty()) {
            const TuCriticalSectionAuto guard(lock);
            taken.Swap(records);
            if (taken.IsEmpty()) {
                isUsed.store(false, std::memory_order_relaxed);
            }
        }
        return !taken.IsEmpty();
    }
};
