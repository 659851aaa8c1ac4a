#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tureferencecounted.h"
#include "tabase/tabaseapi.h"

#include <cstddef>
#include <cstring>

/// How the value of an attribute begins. The usual policy makes all its bytes 0.
class TABASE_API TaAttributePolicyConstruct
{
public:
    TaAttributePolicyConstruct() = default;
    virtual ~TaAttributePolicyConstruct() = default;

    virtual void Construct(void* value, std::size_t size) const noexcept
    {
        std::memset(value, 0, size);
    }

protected:
    TaAttributePolicyConstruct(const TaAttributePolicyConstruct&) = default;
    TaAttributePolicyConstruct& operator=(const TaAttributePolicyConstruct&) = default;
};

/// What an attribute is: a name, for people, and the size of its value in the element of each
/// object that has it. Values are copied byte by byte and never destroyed.
///
/// Ownership: shared through TuSmartPointer. It refers to its policy, which outlives all containers
///            that use the definition.
class TABASE_API TaAttributeDefinition : public TuReferenceCounted
{
public:
    /// `size` in bytes. Values begin at multiples of 8.
    TaAttributeDefinition(CString name, std::size_t size, const TaAttributePolicyConstruct& policy);

    const CString& GetName() const { return m_name; }
    std::size_t GetSize() const { return m_size; }
    const TaAttributePolicyConstruct& GetPolicy() const { return m_policy; }

private:
    const CString m_name;
    const std::size_t m_size;
    const TaAttributePolicyConstruct& m_policy;
};
