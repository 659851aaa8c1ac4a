#pragma once

#include "groundwork/tuarray.h"
#include "groundwork/tulist.h"
#include "tabase/tabaseapi.h"
#include "tabase/taobservablemessage.h"

#include <cstdint>

#include "platform/platformmacrospush.h"

class TaObserver;
struct SObservableElement;

/// An object that tells others, at once and on the same thread, what happens to it.
///
/// For each type of message it keeps a list of the TaObservers that want that type, and calls them
/// one after the other in the order in which they came. They subscribe and unsubscribe themselves:
///
///     class Shape : public TaObservable
///     {
///     public:
///         static constexpr auto kMoved = TaObservableMessage::eMT_1;
///         void Move(Vector by) { m_place += by; NotifyObservers(kMoved, &by); }
///
/// During a notification observers may come and go, further messages may be sent, and observers as
/// well as the observable itself may be destroyed:
///
/// - An observer that comes waits for the next message. So one that subscribes anew each time it is
///   called, as one-shot observers may, is not called for ever.
/// - An observer that goes is not called any more. Its entry loses the pointer to it at once, and
///   the list at the end of the outermost notification of this observable, where that is of the
///   entry's type; otherwise at the end of the next that is. Until then it counts.
/// - When the observable is destroyed, the observers that have not been called yet get nothing but
///   eMT_Destroyed.
///
/// The last message, eMT_Destroyed, comes from the destructor of this class: what its derived
/// classes had is gone already.
///
/// Ownership: none, on either side; whichever dies first takes its subscriptions along. Copies are
///            not made of it: a derived class that can be copied begins its copies with a new
///            TaObservable(), which nobody observes.
/// Threads:   an observable and its observers belong to one thread.
/// Failure:   TuExceptionPreconditionViolation for a type beyond the last. What an observer throws
///            is dropped, and the next one is called.
class TABASE_API TaObservable
{
public:
    using EMessageType = TaObservableMessage::EMessageType;

    /// An entry of a list.
    struct TaObserverInfo
    {
        TaObserver* observer = nullptr; // null: it has gone
        void* userData = nullptr; // for each message that NotifyObservers makes
        int oneShot = 0; // other than 0: the first such message is the last
    };
    using ObserverList = TuList<TaObserverInfo>;

    TaObservable() = default;
    TaObservable(const TaObservable&) = delete;
    TaObservable& operator=(const TaObservable&) = delete;
    virtual ~TaObservable();

    /// Each observer gets a message with its own user data. A one-shot observer is unsubscribed
    /// from the type just before.
    void NotifyObservers(EMessageType type, void* parameter);
    /// Each observer gets this very message; user data and one-shot flags of entries do not count.
    void SendMessage(const TaObservableMessage& message, void* parameter);
    PLATFORM_RENAMED(void, SendMessage, (const TaObservableMessage& message, void* parameter), ,
        (message, parameter))

    /// 1 or 0.
    int IsObserver(const TaObserver& observer) const;
    int IsObserver(const TaObserver& observer, EMessageType type) const;
    /// Of the entries, those without an observer included.
    unsigned long GetObserverCount(EMessageType type) const;
    const ObserverList& GetObserverList(EMessageType type) const;
    /// In bytes: of this class and its lists, without unused room in their blocks.
    std::uint64_t GetMemoryUsage() const;

    /// Whether it is the same object.
    bool operator==(const TaObservable& other) const { return this == &other; }

private:
    friend class TaObserver;
    class Notification;

    // The observable's half of TaObserver's operations.

    /// Enters a new record, and appends an entry for its observer unless that has one. Nothing has
    /// changed where it fails.
    void addObserver(SObservableElement& record);
    /// Removes the record's entry, where it has one; the record is its observer's to remove.
    void removeObserver(SObservableElement& record) noexcept;
    /// Makes all observers forget this object.
    void removeObservers() noexcept;

    template <class Call> void notify(EMessageType type, Call&& call);
    void makeLists();
    void removeEmptyEntries(EMessageType type) noexcept;

    TuArray<ObserverList> m_lists; // one per type; none before the first observer comes
    std::uint32_t m_notifyDepth = 0; // of notifications in progress
    std::uint32_t m_emptied = 0; // a bit for each type whose list has entries without an observer
    Notification* m_innermost = nullptr; // of those in progress
    // All subscriptions, those without an entry included.
    SObservableElement* m_firstRecord = nullptr;
    SObservableElement* m_lastRecord = nullptr;
    unsigned int m_recordCount = 0;
};

#include "platform/platformmacrospop.h"
