#include "tabase/taattributedefinition.h"

#include "groundwork/tucondition.h"

#include <utility>

TaAttributeDefinition::TaAttributeDefinition(
    CString name, std::size_t size, const TaAttributePolicyConstruct& policy)
    : m_name(std::move(name))
    , m_size(size)
    , m_policy(policy)
{
    TuPreCondition<2>(u"the value of an attribute has 1 to 65536 bytes", TU_HERE,
        [size] { return size != 0 && size <= 65536; });
}
