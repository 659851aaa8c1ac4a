// A tree that two threads share: one builds and changes it under write locks, the other reads it,
// and what they made is stored and read back.

#include "tabase/tadatahandlelockonly.h"
#include "tabase/tadatamanager.h"
#include "tabase/tadatanodes.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamwritebinarybuffer.h"

#include <cstdio>
#include <thread>

namespace {

constexpr unsigned int kPatienceMs = 10'000;

/// A smoother that counts its steps in the tree.
bool Smooth(TaDataManager& manager, const TuSmartPointer<TaDataNodeInt32>& steps)
{
    for (int i = 0; i < 100; ++i) {
        const TaDataHandleLockOnly<1> handle(manager, steps);
        if (!manager.TryLockAndWait(kPatienceMs)) {
            return false;
        }
        steps->GetData()->SetValue(steps->GetData()->GetValue() + 1);
    }
    return true;
}

/// What somebody sees who looks while that goes on.
int Look(TaDataManager& manager, const TuSmartPointer<TaDataNodeInt32>& steps)
{
    const TaDataHandleLockOnly<0> handle(manager, steps);
    return manager.TryLockAndWait(kPatienceMs) ? steps->GetData()->GetValue() : -1;
}

/// Reads one node and changes what is below another: both locks are granted, or none.
bool Report(TaDataManager& manager, const TuSmartPointer<TaDataNodeInt32>& steps,
    const TuSmartPointer<TaNode>& results)
{
    const TaDataHandleLockOnly<0> source(manager, steps);
    const TaDataHandleLockOnly<1> target(manager, results);
    if (!manager.TryLockAndWait(kPatienceMs)) {
        return false;
    }
    const auto count = TuMake<TuInt32>(steps->GetData()->GetValue());
    return manager.InsertNode(
        TuMake<TaDataNodeInt32>(u"Count", count, true, true), target.GetNode());
} // the handles go, and with them the locks

/// Takes a node out of the tree, with all below it.
bool Remove(TaDataManager& manager, const TuSmartPointer<TaNode>& node)
{
    TaDataHandleLockOnly<1> handle(manager, node);
    return manager.TryLockAndWait(kPatienceMs) && manager.RemoveNode(handle);
}

} // namespace

int main()
{
    TaDataManager manager;
    const auto smoother = TuMake<TaNode>(u"Smoother", true, true);
    const auto steps = TuMake<TaDataNodeInt32>(u"Steps", TuMake<TuInt32>(0), true, true);
    const auto results = TuMake<TaNode>(u"Results", true, true);
    // Nobody else sees the tree yet, so it can be built without a lock.
    bool done = manager.InsertNode(smoother, manager.GetRootNode())
        && manager.InsertNode(steps, smoother)
        && manager.InsertNode(results, manager.GetRootNode());

    int seen = 0;
    std::thread reader([&] { seen = Look(manager, steps); });
    done = Smooth(manager, steps) && done;
    reader.join();
    done = Report(manager, steps, results) && done;
    if (!done || seen < 0 || seen > 100) {
        return 1;
    }

    TaStreamWriteBinaryBuffer written;
    manager.Serialize(written);
    TaStreamReadBinaryBuffer stored(written.GetData(), written.GetSize());
    TaDataManager again;
    again.Serialize(stored);
    std::printf("%s", again.GetRootNode()->ToString().ToUtf8().c_str());
    const bool isStored = !again.FindChild(u"Results")->FindChild(u"Count").IsNull();
    return isStored && Remove(again, again.FindChild(u"Results")) ? 0 : 1;
}
