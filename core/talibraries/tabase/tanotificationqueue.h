#pragma once

#include "groundwork/tucriticalsection.h"
#include "groundwork/tulist.h"
#include "platform/platformwindow.h"

/// The notifications of one kind that wait for a handler, in the order in which they came.
///
/// Ownership: of the notifications.
/// Threads:   everything under the lock.
template <class Notification> struct TaNotificationQueue
{
    static constexpr unsigned int kBlockSize = 10;

    mutable TuCriticalSection lock;
    TuList<Notification> records TU_GUARDED_BY(lock){ kBlockSize };
    bool isOpen TU_GUARDED_BY(lock) = false; // while the handler has a window
    platform::EPost signal TU_GUARDED_BY(lock) = platform::eP_Posted; // what the last one came to
};
