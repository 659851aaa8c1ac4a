#pragma once

#include "groundwork/tulist.h"
#include "tabase/tabaseapi.h"
#include "tabase/taobservable.h"
#include "tabase/taobservablemessage.h"

/// A subscription, as its observer keeps it: the arguments of Observe, and what finds the rest.
///
/// The entry of the observable belongs to one record. An observer that subscribes to a type again
/// gets a further record without an entry; the entry stays that of the first one, with the user
/// data and flag of that.
struct SObservableElement
{
    using Entry = TaObservable::ObserverList::iterator;

    bool HasEntry() const { return entry != Entry(); }

    TaObservable* observable;
    void* userData;
    TaObservable::EMessageType type;
    int oneShot;

    TaObserver* observer;
    Entry entry{}; // of the observable
    TuList<SObservableElement>::iterator place{}; // in the observer's list
    SObservableElement* previous = nullptr; // in the observable's list
    SObservableElement* next = nullptr;
};

/// An object that wants to know what happens to others, its TaObservables.
///
/// It subscribes to types of messages of an observable, and is called for each of them:
///
///     class View : public TaObserver
///     {
///     public:
///         explicit View(Shape& shape) { Observe(shape, Shape::kMoved); }
///
///     protected:
///         void onNotify(TaObservable&, const TaObservableMessage&, void*) override { Paint(); }
///
/// It may be destroyed at any time, within its own onNotify, too. Its subscriptions end when this
/// base goes: a derived class whose destructor may bring about messages calls Unobserve() first.
///
/// Ownership: none, as TaObservable says. Copies are not made of it: which subscriptions would be
///            theirs?
/// Threads:   an observable and its observers belong to one thread.
/// Failure:   where there is no memory for a subscription Observe throws TuExceptionOutOfMemory
///            (std::bad_alloc from the standard allocator), and has subscribed to none of the
///            types; TuExceptionPreconditionViolation for a type beyond the last.
class TABASE_API TaObserver
{
public:
    using EMessageType = TaObservable::EMessageType;

    TaObserver();
    TaObserver(const TaObserver&) = delete;
    TaObserver& operator=(const TaObserver&) = delete;
    virtual ~TaObserver();

protected:
    /// `parameter` is that of NotifyObservers, or SendMessage.
    virtual void onNotify(
        TaObservable& observable, const TaObservableMessage& message, void* parameter)
        = 0;

public:
    /// Subscribes; one-shot, where the flag is not 0, to the next message of the type alone. Where
    /// this object is an observer of the type already, its former user data and flag stay, and the
    /// subscription counts nevertheless.
    void Observe(TaObservable& observable, EMessageType type, void* userData, int oneShot = 0);
    void Observe(TaObservable& observable, EMessageType type, int oneShot = 0)
    {
        Observe(observable, type, nullptr, oneShot);
    }
    /// To all types.
    void Observe(TaObservable& observable, void* userData, int oneShot = 0);
    void Observe(TaObservable& observable, int oneShot = 0)
    {
        Observe(observable, nullptr, oneShot);
    }
    /// A number is no type, and 0 would become null user data for all types: name the type.
    void Observe(TaObservable& observable, int type, int oneShot) = delete;

    /// Ends one subscription, and with the first of several to be an observer of the type. False
    /// where there is none.
    bool Unobserve(TaObservable& observable, EMessageType type);
    /// All subscriptions to the type.
    bool Unobserve(EMessageType type);
    /// All subscriptions to the observable.
    bool Unobserve(TaObservable& observable);
    /// All.
    bool Unobserve();

    /// Of the subscriptions: one for each type of an observable, and for each time that it was
    /// subscribed to.
    unsigned int GetObservableCount() const { return m_records.GetCount(); }

private:
    friend class TaObservable;

    /// The record with the entry, if there is one; else one without; else null.
    SObservableElement* findRecord(const TaObservable& observable, EMessageType type);
    /// Calls `use` for each record of the observable, which it may remove, until it answers false.
    template <class Use> void forRecordsOf(const TaObservable& observable, Use&& use);
    void remove(SObservableElement& record) noexcept;

    TuList<SObservableElement> m_records;
};
