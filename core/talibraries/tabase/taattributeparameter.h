#pragma once

#include "groundwork/ireferencecounted.h"
#include "groundwork/iserializable.h"
#include "tabase/tabaseapi.h"

#include <cstdint>

/// The base of the parameter objects that attribute containers attach to their attributes: shared,
/// stored, and valid until somebody says otherwise.
///
/// Ownership: as TuReferenceCounted; it has a counter of its own.
/// Threads:   counting is safe on any thread, the rest belongs to one at a time.
class TABASE_API TaAttributeParameter : public virtual IReferenceCounted, public ISerializable
{
    TU_DECLARE_RTTI

public:
    TaAttributeParameter() = default;
    /// A copy takes the validity over, and starts with no references.
    TaAttributeParameter(const TaAttributeParameter& other) noexcept;
    TaAttributeParameter& operator=(const TaAttributeParameter& other) noexcept;
    ~TaAttributeParameter() override = default;

    bool IsValid() const { return m_isValid; }
    /// What the object counts for, in bytes: always 104, on every system. Totals that were stored
    /// are compared with it.
    unsigned long long GetMemoryUsage() const { return kMemoryUsage; }

    const TuReferenceCounter<unsigned int>& getReferenceCounter() const final { return m_counter; }

    /// Version 0, and nothing else.
    void Serialize(TuStreamWriteBinary& stream) const override;
    void Serialize(TuStreamReadBinary& stream) override;

    TU_DECLARE_EXTENSIONS;

protected:
    void setValid(bool isValid) { m_isValid = isValid; }

private:
    static constexpr unsigned long long kMemoryUsage = 104;

    static IObject* CreateByFactory();
    static IObject* CloneByFactory(const IObject& object);

    TuReferenceCounter<unsigned int> m_counter;

protected:
    // For subclasses; a copy does not take them over.
    std::uintptr_t m_firstWord = 0;
    std::uintptr_t m_secondWord = 0;

private:
    bool m_isValid = true;
};
