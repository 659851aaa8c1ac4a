#include "tabase/tanode.h"

#include "support/datatreeprobe.h"
#include "support/treebytes.h"
#include "support/treelimits.h"
#include "tabase/tadatahandlelockonly.h"
#include "tabase/tadatamanager.h"
#include "tabase/tadatanodes.h"

#include <gtest/gtest.h>

#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using Pointer = TuSmartPointer<TaNode>;

Pointer makeChild(const Pointer& parent, const CString& name)
{
    const Pointer child = TuMake<TaNode>(name, true, true);
    TaDataTreeProbe::AddChild(parent, child);
    return child;
}

/// Writes down the calls of its hooks.
class HookedNode : public TaNode
{
public:
    enum EHook
    {
        eH_HandsOn,
        eH_KeepsToItself,
        eH_DoesNothing,
        eH_Throws,
    };

    HookedNode(const CString& name, std::string& calls)
        : TaNode(name, true, true)
        , m_calls(calls)
    {
    }

    EHook hook = eH_HandsOn;

protected:
    bool isModified() const override
    {
        m_calls += "?" + GetName().ToUtf8();
        return TaNode::isModified();
    }
    void setModified(bool modified, bool recursive) override
    {
        m_calls += "!" + GetName().ToUtf8();
        if (hook == eH_Throws) {
            throw std::runtime_error("this hook fails");
        }
        if (hook != eH_DoesNothing) {
            TaNode::setModified(modified, recursive && hook == eH_HandsOn);
        }
    }

private:
    std::string& m_calls;
};

TEST(TaNodeTest, APlainNodeHasNoDataAndIsItsOwnType)
{
    const Pointer node = TuMake<TaNode>();
    EXPECT_EQ(node->GetName(), u"__noname");
    EXPECT_FALSE(node->IsSerializable());
    TaDataTreeProbe::CreateData(*node, u"TuInt32"); // it has no use for it
    EXPECT_EQ(&node->GetRTTIData(), &TaNode::RTTI);
    EXPECT_EQ(node->GetClassNameData(), CString(u"TaNode"));
}

TEST(TaNodeTest, WalksItsChildrenAndFindsTheFirstOfANameInTheRightCase)
{
    const Pointer top = TuMake<TaNode>();
    EXPECT_FALSE(top->GetChildren());
    const Pointer lower = makeChild(top, u"a");
    const Pointer first = makeChild(top, u"A");
    makeChild(top, u"A");
    makeChild(first, u"Inner");
    EXPECT_EQ(top->FindChild(u"A"), first);
    EXPECT_EQ(top->FindChild(u"a"), lower);
    EXPECT_TRUE(top->FindChild(u"Inner").IsNull());
    EXPECT_EQ(std::as_const(*top).FindChild(u"A"), first.Get());

    const auto children = std::as_const(*top).GetChildren();
    EXPECT_EQ(std::distance(children.begin(), children.end()), 3);
    EXPECT_EQ(top->GetChildrenCount(), 3u);
    auto child = top->GetChildren();
    EXPECT_EQ((child++)->GetName(), u"a");
    EXPECT_EQ(child->GetName(), u"A");
    EXPECT_FALSE(top->IsDescendantOf(nullptr));
}

TEST(TaNodeTest, IsModifiedForItsOwnSakeOrForANodeBelow)
{
    const Pointer top = TuMake<TaNode>();
    const Pointer untracked = TuMake<TaNode>(u"Untracked", true, false);
    TaDataTreeProbe::AddChild(top, untracked);
    const Pointer inner = makeChild(untracked, u"Inner");
    const Pointer last = makeChild(top, u"Last");

    untracked->SetModified(true, false);
    EXPECT_FALSE(untracked->IsModified(false));
    EXPECT_FALSE(top->IsModified(true));
    for (const Pointer& node : { inner, last }) {
        node->SetModified(true, false);
        EXPECT_FALSE(top->IsModified(false));
        EXPECT_TRUE(top->IsModified(true));
        node->SetModified(false, false);
    }
    EXPECT_FALSE(top->IsModified(true));
}

TEST(TaNodeTest, TheHooksOfASubtreeAreCalledParentsFirstWhereTheyHandOn)
{
    std::string calls;
    const auto make = [&](const CString& name, const Pointer& parent = nullptr) {
        const auto node = TuMake<HookedNode>(name, calls);
        if (!parent.IsNull()) {
            TaDataTreeProbe::AddChild(parent, node);
        }
        return node;
    };
    const auto a = make(u"a");
    const auto b = make(u"b", a);
    const auto c = make(u"c", b);
    const auto d = make(u"d", a);
    const auto callsOf = [&](auto&& action) {
        calls.clear();
        action();
        EXPECT_EQ(TaDataTreeProbe::FindFault(*a), "");
        return calls;
    };
    const auto setAll
        = [&](bool modified) { return callsOf([&] { a->SetModified(modified, true); }); };
    EXPECT_EQ(callsOf([&] { EXPECT_FALSE(a->IsModified(true)); }), "?a?b?c?d");
    EXPECT_EQ(setAll(true), "!a!b!c!d");
    EXPECT_EQ(callsOf([&] { EXPECT_TRUE(a->IsModified(true)); }), "?a");
    a->SetModified(false, false);
    EXPECT_EQ(callsOf([&] { EXPECT_TRUE(a->IsModified(true)); }), "?a?b"); // the first will do

    b->hook = HookedNode::eH_KeepsToItself;
    EXPECT_EQ(setAll(false), "!a!b!d");
    EXPECT_TRUE(c->IsModified(false));
    b->hook = HookedNode::eH_DoesNothing;
    EXPECT_EQ(setAll(true), "!a!b!d");
    EXPECT_FALSE(b->IsModified(false));
    b->hook = HookedNode::eH_Throws;
    EXPECT_EQ(
        callsOf([&] { EXPECT_THROW(a->SetModified(false, true), std::runtime_error); }), "!a!b");
    EXPECT_TRUE(d->IsModified(false));
    b->hook = HookedNode::eH_HandsOn;
    EXPECT_EQ(setAll(false), "!a!b!c!d");
}

TEST(TaNodeTest, ASubtreeThatIsHeldOutlivesItsTreeWithAllBelow)
{
    Pointer child = TuMake<TaNode>(u"Child", true, true);
    const Pointer inner = makeChild(child, u"Inner");
    makeChild(inner, u"Leaf");
    {
        TaDataManager manager;
        ASSERT_TRUE(manager.InsertNode(child, manager.GetRootNode()));
    }
    EXPECT_EQ(inner->GetParent(), child);
    EXPECT_TRUE(child->GetParent().IsNull());
    EXPECT_FALSE(child->IsManaged());
    child.Reset();
    EXPECT_TRUE(inner->GetParent().IsNull());
    EXPECT_EQ(inner->GetChildrenCount(), 1u);
    EXPECT_EQ(TaDataTreeProbe::FindFault(*inner), "");
}

/// The whole life of a tree, which must neither need the stack for its depth nor look through a
/// list for each step.
void liveAndDie(bool deep, unsigned int count)
{
    TaDataManager manager;
    Pointer parent = TuMake<TaNode>(u"Top", true, true);
    ASSERT_TRUE(manager.InsertNode(parent, manager.GetRootNode()));
    Pointer middle;
    for (unsigned int i = 0; i < count; ++i) {
        const Pointer child = TuMake<TaDataNodeUInt32>(u"Node", TuMake<TuUInt32>(i), true, true);
        ASSERT_TRUE(manager.InsertNode(child, parent));
        parent = deep ? child : parent;
        middle = i == count / 2 ? child : middle;
    }
    manager.GetRootNode()->SetModified(false, true);
    EXPECT_FALSE(manager.GetRootNode()->IsModified(true));
    EXPECT_TRUE(parent->IsDescendantOf(manager.GetRootNode()));
    EXPECT_TRUE(manager.FindChild(u"Top")->FindChild(u"node").IsNull());
    {
        const TaDataHandleLockOnly<1> handle(manager, manager.GetRootNode());
        ASSERT_TRUE(manager.TryLock());
        EXPECT_EQ(TaDataTreeProbe::GetWriteCount(*parent), 1u);
    }
    EXPECT_EQ(TaDataTreeProbe::GetWriteCount(*parent), 0u);

    const std::string bytes = SaveTree(manager);
    {
        TaDataManager other;
        EXPECT_TRUE(LoadTree(other, bytes));
        EXPECT_TRUE(SaveTree(other) == bytes);
    }
    {
        TaDataHandleLockOnly<1> handle(manager, middle);
        ASSERT_TRUE(manager.TryLock());
        ASSERT_TRUE(manager.MoveNode(handle, manager.GetRootNode()));
        ASSERT_TRUE(manager.RemoveNode(handle));
    }
    EXPECT_EQ(TaDataTreeProbe::FindFault(manager), "");
    EXPECT_EQ(TaDataTreeProbe::FindFault(*middle), "");
    middle.Reset(); // the lower half goes
    parent.Reset();
    ASSERT_TRUE(manager.Reset(0));
    EXPECT_EQ(TaDataTreeProbe::FindFault(manager), "");
}

TEST(TaNodeTest, ATreeMayBeWide) { liveAndDie(false, kWideTree); }

TEST(TaNodeTest, ATreeMayBeDeep)
{
    SKIP_IF_LOCKS_PER_THREAD_ARE_FEW();
    liveAndDie(true, kDeepTree);

    Pointer bottom = TuMake<TaNode>();
    const Pointer top = bottom;
    constexpr unsigned int kDumped = 2'000; // the lines grow with the depth
    for (unsigned int i = 0; i < kDumped; ++i) {
        bottom = makeChild(bottom, u"Node");
    }
    bottom->SetModified(true, false);
    EXPECT_TRUE(top->IsModified(true));
    const std::string last = std::string((kDumped - 1) * 4, ' ') + " |-- Node (TaNode), modified\n";
    EXPECT_TRUE(top->ToString().ToUtf8().ends_with("\n" + last));
}

TEST(TaNodeTest, DumpsItsSubtreeAsAnIndentedTree)
{
    const Pointer top = TuMake<TaNode>(u"Top", true, true);
    const Pointer first = makeChild(top, u"First");
    makeChild(first, u"Inner");
    const Pointer second = makeChild(top, u"Sec\nond");
    TaDataTreeProbe::AddChild(
        second, TuMake<TaDataNodeString>(u"Text", TuMake<TuString>(u"two\nlines"), true, true));
    second->SetModified(true, false);
    EXPECT_EQ(top->ToString().ToUtf8(),
        "Top (TaNode)\n"
        " |-- First (TaNode)\n"
        " |   |-- Inner (TaNode)\n"
        " |-- Sec\\x0Aond (TaNode), modified\n"
        "     |-- Text (TaDataNodeString) = two\\x0Alines\n");
}

} // namespace
