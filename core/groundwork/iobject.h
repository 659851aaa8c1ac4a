#pragma once

#include "groundwork/turtti.h"

#include "platform/platformmacrospush.h"

/// The root interface of every class with a type record.
///
/// Interfaces derive from it virtually, so that a class which implements several of them is still
/// one object; derive virtually too. From an IObject back to a class leads dynamic_cast.
///
/// Ownership: deleted through any base; an object just made by a create or clone function belongs
///            to the caller and has no references yet.
/// Threads:   the type questions may be asked from any thread.
class GROUNDWORK_API IObject
{
public:
    virtual ~IObject() = default;

    /// The record of the object's own class, the most derived one.
    virtual const TuRTTI& GetRTTI() const = 0;

    /// Whether the object is of exactly this class: the same record, not the same name.
    bool Is(const TuRTTI& record) const { return &GetRTTI() == &record; }
    bool IsKindOf(const TuRTTI& record) const { return GetRTTI().IsKindOf(record); }
    const char16_t* GetClassName() const { return GetRTTI().GetClassName(); }
    PLATFORM_RENAMED(const char16_t*, GetClassName, (), const, ())

protected:
    IObject() = default;
    IObject(const IObject&) = default;
    IObject& operator=(const IObject&) = default;
};

#include "platform/platformmacrospop.h"
