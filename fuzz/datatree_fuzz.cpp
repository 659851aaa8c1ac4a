#include "groundwork/tuexceptions.h"
#include "support/datatreeprobe.h"
#include "support/treebytes.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

} // namespace

/// Reads a tree. What could be read is written, and must come back from that; a failed read leaves
/// the former tree.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    TaDataManager manager;
    const TuSmartPointer<TaNode> former = TuMake<TaNode>(u"Former", true, true);
    require(manager.InsertNode(former, manager.GetRootNode()));
    TaStreamReadBinaryBuffer stream(data, size);
    try {
        manager.Serialize(stream);
    } catch (const TuException&) { // how hostile input is refused; anything else is a fault
        require(manager.FindChild(u"Former") == former && former->IsManaged());
        require(TaDataTreeProbe::FindFault(manager).empty());
        return 0;
    }
    require(!former->IsManaged());
    require(TaDataTreeProbe::FindFault(manager).empty());
    // A node may have lost its leaves, and be itself a leaf now that is left out the next time: so
    // each record is shorter than the one before, or the same, and then the same for ever.
    std::string before;
    for (std::string bytes = SaveTree(manager); bytes != before; bytes = SaveTree(manager)) {
        require(before.empty() || bytes.size() < before.size());
        before = bytes;
        require(LoadTree(manager, bytes));
        require(TaDataTreeProbe::FindFault(manager).empty());
    }
    return 0;
}
