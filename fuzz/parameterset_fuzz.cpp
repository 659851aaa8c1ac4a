#include "support/memorystreams.h"
#include "tabase/taclassparameterset.h"
#include "tabase/taparameterset.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

template <class Set> bool isRead(const std::vector<unsigned char>& bytes, Set& set)
{
    set.SetParameter(u"former", 1);
    try {
        ReadFromBytes(bytes, [&](auto& stream) { set.Serialize(stream); });
        return true;
    } catch (const TuException&) { // how hostile input is refused; anything else is a fault
        require(set.GetParameters().GetCount() == 1 && set.HasParameter(u"former"));
        return false;
    }
}

template <class Set> std::vector<unsigned char> writeSorted(const Set& set)
{
    return WriteToBytes([&](auto& stream) { set.SerializeSorted(stream); });
}

} // namespace

/// Reads a set. What could be read comes back, with the same values, from either form of writing,
/// and the sorted one is the same whatever the order of the set; a class parameter set reads the
/// same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::vector<unsigned char> bytes(data, data + size);
    TaParameterSet set;
    TaClassParameterSet classSet;
    const bool canBeRead = isRead(bytes, set);
    require(isRead(bytes, classSet) == canBeRead);
    if (!canBeRead) {
        return 0;
    }
    require(classSet.GetParameters() == set.GetParameters());
    const std::vector<unsigned char> sorted = writeSorted(set);
    TaParameterSet again;
    require(isRead(sorted, again));
    require(again.GetParameters() == set.GetParameters() && writeSorted(again) == sorted);
    const auto plain = WriteToBytes([&](auto& stream) { again.Serialize(stream); });
    require(isRead(plain, set));
    require(again.GetParameters() == set.GetParameters() && writeSorted(set) == sorted);
    return 0;
}
