#pragma once

#include "groundwork/cstring.h"
#include "groundwork/groundworkapi.h"

#include <atomic>
#include <type_traits>

#include "platform/platformmacrospush.h"

class IObject;

/// The type record of a class: its name, its registered bases, and how to make and copy an object.
///
/// Each registered class holds one as the static member `RTTI`, made by TU_DEFINE_RTTI. A record
/// enters the table of its process when its library is loaded and leaves it when the library is
/// unloaded. Of several records of one name the first is the one that is found; the others are
/// reported once through the duplicate hook, in debug builds; until somebody sets another, the hook
/// writes them to the log. When the found one leaves, the next takes its place.
///
/// Ownership: a record refers to its base records, which must outlive it; it is never copied.
/// Threads:   records do not change after they are made; look-ups may run on any thread. While a
///            library that holds a record is being unloaded, nobody may use its classes.
/// Failure:   none.
class GROUNDWORK_API TuRTTI
{
public:
    using CreateFunction = IObject* (*)();
    using CloneFunction = IObject* (*)(const IObject&);
    /// Is told of two records of one name; called with no lock held.
    using DuplicateHook = void (*)(const TuRTTI& found, const TuRTTI& hidden);

    TuRTTI(const CString& name, CreateFunction create, CloneFunction clone);
    TuRTTI(const CString& name, const TuRTTI& base, CreateFunction create, CloneFunction clone);
    TuRTTI(const CString& name, const TuRTTI& firstBase, const TuRTTI& secondBase,
        CreateFunction create, CloneFunction clone);
    ~TuRTTI();
    TuRTTI(const TuRTTI&) = delete;
    TuRTTI& operator=(const TuRTTI&) = delete;

    /// Whether this record is `record` or has it among its bases, through both base slots.
    bool IsKindOf(const TuRTTI& record) const
    {
        if (this == &record || m_firstBase == &record) {
            return true; // most questions end here
        }
        const TuRTTI* const* ancestor = m_ancestors.load(std::memory_order_acquire);
        if (ancestor == nullptr) {
            return isKindOfUnlisted(record);
        }
        for (; *ancestor != nullptr; ++ancestor) {
            if (*ancestor == &record) {
                return true;
            }
        }
        return false;
    }

    /// Zero-terminated; lives as long as the record.
    const char16_t* GetClassName() const { return m_name.GetString(); }
    PLATFORM_RENAMED(const char16_t*, GetClassName, (), const, ())
    const TuRTTI* GetFirstBase() const { return m_firstBase; }
    const TuRTTI* GetSecondBase() const { return m_secondBase; }
    /// Null for a class that is never made by name, or never copied.
    CreateFunction GetCreate() const { return m_create; }
    CloneFunction GetClone() const { return m_clone; }

    /// The functions registered under a class name; null for an unknown name, or where the class
    /// has none.
    static CreateFunction getCreate(const CString& name);
    static CloneFunction getClone(const CString& name);

    /// Returns the former hook; null turns the report off. Duplicates that were there before are
    /// reported at the next look-up.
    static DuplicateHook SetDuplicateHook(DuplicateHook hook);

private:
    friend class TuRTTITable;

    TuRTTI(const CString& name, const TuRTTI* firstBase, const TuRTTI* secondBase,
        CreateFunction create, CloneFunction clone);
    bool isKindOfUnlisted(const TuRTTI& record) const;
    bool hasBase(const TuRTTI& record) const;
    bool isComplete() const;
    void listAncestors() const;

    const CString m_name;
    const TuRTTI* const m_firstBase;
    const TuRTTI* const m_secondBase;
    const CreateFunction m_create;
    const CloneFunction m_clone;
    /// All bases in walking order, ended by null. While a record is made only the address of its
    /// base may be used (the base may lie in a source whose statics come later), so the first
    /// question that finds all of them made lists them; its release store pairs with the acquire
    /// load in IsKindOf.
    mutable std::atomic<const TuRTTI* const*> m_ancestors{ nullptr };
    std::atomic<bool> m_made{ false }; // set last; false, too, before a static record is made
};

/// Declares what a registered class has: its record and the answer to GetRTTI(). Stands first in
/// the class; what follows is private.
#define TU_DECLARE_RTTI                                                                            \
public:                                                                                            \
    static const TuRTTI RTTI;                                                                      \
    const TuRTTI& GetRTTI() const override { return RTTI; }                                        \
                                                                                                   \
private:

/// Define the record of `Class` in its source; nested classes are named with the class around them.
/// TU_DEFINE_RTTI2 names two registered bases.
#define TU_DEFINE_RTTI_ROOT(Class, create, clone)                                                  \
    const TuRTTI Class::RTTI(u"" #Class, create, clone)
#define TU_DEFINE_RTTI(Class, Base, create, clone)                                                 \
    static_assert(std::is_base_of_v<Base, Class>, "the named base is no base of this class");      \
    const TuRTTI Class::RTTI(u"" #Class, Base::RTTI, create, clone)
#define TU_DEFINE_RTTI2(Class, FirstBase, SecondBase, create, clone)                               \
    static_assert(std::is_base_of_v<FirstBase, Class> && std::is_base_of_v<SecondBase, Class>,     \
        "a named base is no base of this class");                                                  \
    const TuRTTI Class::RTTI(u"" #Class, FirstBase::RTTI, SecondBase::RTTI, create, clone)

#include "platform/platformmacrospop.h"
