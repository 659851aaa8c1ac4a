#include "tabase/tanode.h"

#include "support/datatreeprobe.h"
#include "support/treebytes.h"
#include "support/treelimits.h"
#include "tabase/tadatahandlelockonly.h"
#include "tabase/tadatamanager.h"
#include "tabase/tadatanodes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

/// As a user derives it.
class CountNode : public TaDataNodeInt32
{
public:
    explicit CountNode(std::int32_t count)
        : TaDataNodeInt32(u"Count", TuMake<TuInt32>(count), true, true)
    {
    }
};

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

TEST(TaNodeTest, StartsWithoutParentChildrenAndMarks)
{
    const Pointer node = TuMake<TaNode>();
    EXPECT_EQ(node->GetName(), u"__noname");
    EXPECT_TRUE(node->IsSerializeLeaves());
    EXPECT_TRUE(node->IsTrackModified());
    EXPECT_FALSE(node->IsModified(true));
    EXPECT_FALSE(node->IsManaged());
    EXPECT_FALSE(node->IsSerializable());
    EXPECT_TRUE(node->GetParent().IsNull());
    EXPECT_FALSE(node->HasChildren());
    EXPECT_EQ(&node->GetRTTIData(), &TaNode::RTTI);
    TaDataTreeProbe::CreateData(*node, u"TuInt32"); // a plain node has no use for it
    EXPECT_EQ(node->GetClassNameData(), CString(u"TaNode"));
    EXPECT_EQ(TaNode::RTTI.GetFirstBase(), nullptr);
    EXPECT_EQ(TaNode::RTTI.GetCreate(), nullptr);

    const Pointer other = TuMake<TaNode>(u"Other", false, false);
    EXPECT_EQ(other->GetName(), u"Other");
    EXPECT_FALSE(other->IsSerializeLeaves());
    EXPECT_FALSE(other->IsTrackModified());
}

TEST(TaNodeTest, FindsTheFirstDirectChildOfANameInTheRightCase)
{
    const Pointer top = TuMake<TaNode>();
    const Pointer lower = makeChild(top, u"a");
    const Pointer first = makeChild(top, u"A");
    makeChild(top, u"A");
    makeChild(first, u"Inner");
    EXPECT_EQ(top->FindChild(u"A"), first);
    EXPECT_EQ(top->FindChild(u"a"), lower);
    EXPECT_TRUE(top->FindChild(u"Inner").IsNull());
    EXPECT_TRUE(top->FindChild(u"").IsNull());
    EXPECT_EQ(std::as_const(*top).FindChild(u"A"), first.Get());
}

TEST(TaNodeTest, IsADescendantOfItsAncestorsAlone)
{
    const Pointer top = TuMake<TaNode>();
    const Pointer child = makeChild(top, u"Child");
    const Pointer inner = makeChild(child, u"Inner");
    const Pointer sibling = makeChild(top, u"Sibling");
    EXPECT_TRUE(inner->IsDescendantOf(child));
    EXPECT_TRUE(inner->IsDescendantOf(top));
    EXPECT_FALSE(inner->IsDescendantOf(sibling));
    EXPECT_FALSE(inner->IsDescendantOf(inner));
    EXPECT_FALSE(top->IsDescendantOf(inner));
    EXPECT_FALSE(inner->IsDescendantOf(nullptr));
    EXPECT_FALSE(top->IsDescendantOf(nullptr));
}

TEST(TaNodeTest, ChildrenAreWalkedInTheOrderInWhichTheyCame)
{
    const Pointer top = TuMake<TaNode>();
    EXPECT_FALSE(top->GetChildren());
    const std::string letters = "abcdefghijklmnopqrstuvwxyz"; // more than a block of the list
    for (const char letter : letters) {
        makeChild(top, CString(std::u16string(1, static_cast<char16_t>(letter))));
    }
    std::string names;
    for (TaNode& child : top->GetChildren()) {
        names += child.GetName().ToUtf8();
    }
    EXPECT_EQ(names, letters);
    const auto children = std::as_const(*top).GetChildren();
    EXPECT_EQ(std::distance(children.begin(), children.end()), 26);
    EXPECT_EQ(top->GetChildrenCount(), 26u);
    auto child = top->GetChildren();
    EXPECT_EQ((child++)->GetName(), u"a");
    EXPECT_EQ(child->GetName(), u"b");
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

    top->SetModified(true, true);
    EXPECT_TRUE(top->IsModified(false));
    EXPECT_TRUE(inner->IsModified(false));
    top->SetModified(false, false);
    EXPECT_TRUE(last->IsModified(false));
    top->SetModified(false, true);
    EXPECT_FALSE(top->IsModified(true));
}

TEST(TaNodeTest, TheHooksOfASubtreeAreCalledParentsFirstWhereTheyHandOn)
{
    std::string calls;
    const auto make = [&](const Pointer& parent, const CString& name) {
        const auto node = TuMake<HookedNode>(name, calls);
        if (!parent.IsNull()) {
            TaDataTreeProbe::AddChild(parent, node);
        }
        return node;
    };
    const auto a = make(nullptr, u"a");
    const auto b = make(a, u"b");
    const auto c = make(b, u"c");
    const auto d = make(a, u"d");
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
    EXPECT_EQ(callsOf([&] { a->SetModified(false, false); }), "!a");
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
    Pointer child;
    Pointer inner;
    {
        TaDataManager manager;
        child = TuMake<TaNode>(u"Child", true, true);
        ASSERT_TRUE(manager.InsertNode(child, manager.GetRootNode()));
        inner = TuMake<TaNode>(u"Inner", true, true);
        ASSERT_TRUE(manager.InsertNode(inner, child));
        makeChild(inner, u"Leaf");
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

    const Pointer top = TuMake<TaNode>();
    Pointer bottom = top;
    constexpr unsigned int kDumped = 2'000; // the lines grow with the depth
    for (unsigned int i = 0; i < kDumped; ++i) {
        bottom = makeChild(bottom, u"Node");
    }
    bottom->SetModified(true, false);
    EXPECT_TRUE(top->IsModified(true));
    const std::string text = top->ToString().ToUtf8();
    const std::string last = std::string((kDumped - 1) * 4, ' ') + " |-- Node (TaNode), modified\n";
    EXPECT_TRUE(text.ends_with("\n" + last));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), kDumped + 1);
}

TEST(TaNodeTest, DumpsItsSubtreeAsAnIndentedTree)
{
    const auto top = TuMake<TaNode>(u"Top", true, true);
    const auto first = TuMake<TaNode>(u"First", true, true);
    TaDataTreeProbe::AddChild(top, first);
    TaDataTreeProbe::AddChild(first, TuMake<CountNode>(-7));
    TaDataTreeProbe::AddChild(first, TuMake<TaNode>(u"Inner", true, true));
    const auto second = TuMake<TaNode>(u"Second", true, true);
    TaDataTreeProbe::AddChild(top, second);
    TaDataTreeProbe::AddChild(
        second, TuMake<TaDataNodeString>(u"Text", TuMake<TuString>(u"two\nlines"), true, true));
    second->SetModified(true, false);
    EXPECT_EQ(top->ToString().ToUtf8(),
        "Top (TaNode)\n"
        " |-- First (TaNode)\n"
        " |   |-- Count (TaDataNodeInt32) = -7\n"
        " |   |-- Inner (TaNode)\n"
        " |-- Second (TaNode), modified\n"
        "     |-- Text (TaDataNodeString) = two\\x0Alines\n");
}

} // namespace
