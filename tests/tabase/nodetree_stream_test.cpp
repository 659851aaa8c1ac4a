#include "groundwork/tuexceptions.h"
#include "support/datatreeprobe.h"
#include "support/expectfailure.h"
#include "support/temporaryfolder.h"
#include "support/treebytes.h"
#include "support/worker.h"
#include "tabase/tadatahandlelockonly.h"
#include "tabase/tadatamanager.h"
#include "tabase/tadatanodes.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

using Pointer = TuSmartPointer<TaNode>;

template <class Node, class Value, class Plain>
Pointer makeValue(const CString& name, const Plain& value, bool trackModified = true)
{
    return TuMake<Node>(name, TuMake<Value>(value), true, trackModified);
}

/// The tree of tests/data/tree_0.bin, and some nodes that are not stored.
class NodeTreeStreamTest : public testing::Test
{
protected:
    NodeTreeStreamTest()
    {
        const Pointer mesh = add(TuMake<TaNode>(u"Mesh", true, true), m_manager.GetRootNode());
        add(makeValue<TaDataNodeInt32, TuInt32>(u"LeafOfTheRoot", 1), m_manager.GetRootNode());
        add(makeValue<TaDataNodeString, TuString>(u"Name", u"caf\u00e9"), mesh);
        add(makeValue<TaDataNodeUInt32, TuUInt32>(u"Count", 12u, false), mesh);
        add(TuMake<TaDataNodeInt32>(u"Empty", nullptr, true, true), mesh);
        const Pointer bounds = add(TuMake<TaNode>(u"Bounds", false, true), mesh);
        const Pointer least = add(makeValue<TaDataNodeFloat64, TuFloat64>(u"Min", -1.5), bounds);
        add(makeValue<TaDataNodeString, TuString>(u"Unit", u"mm"), least);
        add(makeValue<TaDataNodeInt8, TuInt8>(u"Leaf", std::int8_t{ 3 }), bounds);
        add(TuMake<TaNode>(u"LeadsNowhere", true, true),
            add(TuMake<TaNode>(u"Plain", true, true), mesh));
    }

    Pointer add(const Pointer& node, const Pointer& parent)
    {
        EXPECT_TRUE(m_manager.InsertNode(node, parent));
        return node;
    }
    /// All that a tree shows, and that its books are in order.
    static std::string describe(const TaDataManager& manager)
    {
        EXPECT_EQ(TaDataTreeProbe::FindFault(manager), "");
        return manager.ToString().ToUtf8();
    }
    /// Expects that the bytes are refused by exactly this class, and leave the tree.
    template <class Exception> std::string expectRefused(const std::string& bytes)
    {
        const std::string before = describe(m_manager);
        const TaNode* const child = m_manager.FindChild(u"Mesh").Get();
        const std::string reason = ExpectFailure<Exception>([&] { LoadTree(m_manager, bytes); });
        EXPECT_EQ(describe(m_manager), before);
        EXPECT_EQ(m_manager.FindChild(u"Mesh"), child);
        return reason;
    }

    const std::string m_golden = ReadFile(TA_TEST_DATA_FOLDER "/tree_0.bin");
    TaDataManager m_manager;
};

TEST_F(NodeTreeStreamTest, WritesAndReadsTheStatedBytes)
{
    ASSERT_FALSE(m_golden.empty());
    EXPECT_TRUE(SaveTree(m_manager) == m_golden);
    TaDataManager read;
    read.GetRootNode()->SetModified(true, false);
    EXPECT_TRUE(LoadTree(read, m_golden));
    EXPECT_EQ(describe(read),
        "Root (TaNode)\n"
        " |-- Mesh (TaNode)\n"
        "     |-- Name (TaDataNodeString) = caf\u00e9\n"
        "     |-- Count (TaDataNodeUInt32) = 12\n"
        "     |-- Empty (TaDataNodeInt32)\n"
        "     |-- Bounds (TaNode)\n"
        "         |-- Min (TaDataNodeFloat64) = -1.5\n"
        "             |-- Unit (TaDataNodeString) = mm\n");
    const Pointer mesh = read.FindChild(u"Mesh");
    EXPECT_TRUE(mesh->IsSerializeLeaves() && mesh->IsTrackModified());
    EXPECT_FALSE(mesh->FindChild(u"Bounds")->IsSerializeLeaves());
    EXPECT_FALSE(mesh->FindChild(u"Count")->IsTrackModified());
    EXPECT_TRUE(SaveTree(read) == m_golden);

    // What was there before makes room; who holds it, keeps it.
    const Pointer held = m_manager.FindChild(u"Mesh");
    EXPECT_TRUE(LoadTree(m_manager, m_golden));
    EXPECT_EQ(describe(m_manager), describe(read));
    EXPECT_FALSE(held->IsManaged());
    EXPECT_TRUE(held->GetParent().IsNull());
    EXPECT_EQ(held->GetChildrenCount(), 5u);
}

TEST_F(NodeTreeStreamTest, ATreeCutAnywhereIsRefused)
{
    for (std::size_t size = 0; size < m_golden.size(); ++size) {
        SCOPED_TRACE(size);
        expectRefused<TuExceptionStream>(m_golden.substr(0, size));
    }
}

TEST_F(NodeTreeStreamTest, ATreeWithAnyByteFlippedIsAnotherOneOrRefused)
{
    const std::string before = describe(m_manager);
    int read = 0;
    int refused = 0;
    for (std::size_t place = 0; place < m_golden.size(); ++place) {
        for (const int bits : { 0x01, 0x80, 0xFF }) {
            SCOPED_TRACE(place);
            std::string bytes = m_golden;
            bytes[place] = static_cast<char>(bytes[place] ^ bits);
            try {
                TaDataManager other;
                LoadTree(other, bytes);
                EXPECT_EQ(TaDataTreeProbe::FindFault(other), "");
                TaDataManager again;
                EXPECT_TRUE(LoadTree(again, SaveTree(other)));
                ++read;
            } catch (const TuException& failure) {
                const std::string reason = failure.what();
                EXPECT_TRUE(failure.Is(TuExceptionStream::RTTI)
                    || failure.Is(TuExceptionWrongFileVersion::RTTI)
                    || (failure.Is(TuException::RTTI) && reason.find('"') != reason.npos))
                    << reason;
                EXPECT_THROW(LoadTree(m_manager, bytes), TuException);
                EXPECT_EQ(describe(m_manager), before);
                ++refused;
            }
        }
    }
    EXPECT_GT(read, 0);
    EXPECT_GT(refused, read);
}

/// The record of a tree with one node, which can be read as it is.
struct STreeRecord
{
    unsigned int version = 0;
    unsigned int nodeVersion = 0;
    int flags = 7;
    CString nodeClass = u"TaDataNodeInt8";
    CString valueClass = u"TuInt8";
    unsigned int valueVersion = 0;
};

std::string bytesOf(const STreeRecord& tree)
{
    return BytesOf([&](auto& stream) {
        stream << tree.version << 1u << tree.nodeVersion << u"Node"
               << static_cast<unsigned char>(tree.flags) << tree.nodeClass << tree.valueClass
               << tree.valueVersion << std::int8_t{ 1 } << 0u;
    });
}

TEST_F(NodeTreeStreamTest, AVersionOrAFlagThatIsNotKnownIsRefused)
{
    TaDataManager other;
    EXPECT_TRUE(LoadTree(other, bytesOf({})));
    for (const unsigned int newer : { 1u, ~0u }) {
        expectRefused<TuExceptionWrongFileVersion>(bytesOf({ .version = newer }));
        expectRefused<TuExceptionWrongFileVersion>(bytesOf({ .nodeVersion = newer }));
        expectRefused<TuExceptionWrongFileVersion>(bytesOf({ .valueVersion = newer }));
    }
    expectRefused<TuExceptionStream>(bytesOf({ .flags = 8 + 7 }));
    expectRefused<TuExceptionStream>(bytesOf({ .flags = 0x80 + 7 }));
}

TEST_F(NodeTreeStreamTest, AClassThatIsNotKnownOrDoesNotFitIsNamed)
{
    const auto expectNamed = [&](const CString& name, const STreeRecord& tree) {
        const std::string reason = expectRefused<TuException>(bytesOf(tree));
        EXPECT_NE(reason.find('"' + name.ToUtf8() + '"'), reason.npos) << reason;
    };
    // Of no class, of one that has no create function, and of one that is none of nodes.
    for (const CString name : { u"NoSuchNode", u"", u"TaNode", u"TuInt8" }) {
        expectNamed(name, { .nodeClass = name });
    }
    for (const CString name : { u"NoSuchValue", u"TuUInt32", u"TaDataNodeInt8", u"TaNode" }) {
        expectNamed(name, { .valueClass = name });
    }
}

/// A value whose class has no create function, and a node for it that has one.
class UnmakeableValue : public TuReferenceCounted, public ISerializable
{
    TU_DECLARE_RTTI

public:
    void Serialize(TuStreamWriteBinary&) const override { }
    void Serialize(TuStreamReadBinary&) override { }

    TU_DECLARE_EXTENSIONS;
};
TU_DEFINE_RTTI_ROOT(UnmakeableValue, nullptr, nullptr);
TU_DEFINE_EXTENSIONS(UnmakeableValue, ISerializable)

class UnmakeableValueNode : public TaDataNode<UnmakeableValue>
{
    TU_DECLARE_RTTI

public:
    using TaDataNode::TaDataNode;
    static IObject* CreateByFactory() { return new UnmakeableValueNode; }
};
TU_DEFINE_RTTI(UnmakeableValueNode, TaDataNode<UnmakeableValue>,
    &UnmakeableValueNode::CreateByFactory, nullptr);

TEST_F(NodeTreeStreamTest, WhatCouldNotBeReadBackIsRefusedBeforeAByteIsWritten)
{
    using Nameless = TaDataNode<TuInt32>; // its instances have the record of them all
    const auto expectNotStored = [](const Pointer& node, const char* name) {
        TaDataManager manager;
        EXPECT_TRUE(manager.InsertNode(node, manager.GetRootNode()));
        EXPECT_EQ(SaveTree(manager).size(), 8u); // a leaf of the root is left out
        EXPECT_TRUE(manager.InsertNode(TuMake<TaNode>(u"Child", true, true), node));
        TaStreamWriteBinaryBuffer stream;
        const std::string reason = ExpectFailure<TuException>([&] { manager.Serialize(stream); });
        EXPECT_NE(reason.find(name), reason.npos) << reason;
        EXPECT_EQ(stream.GetSize(), 0u);
        EXPECT_EQ(TaDataTreeProbe::FindFault(manager), "");
    };
    expectNotStored(TuMake<Nameless>(u"Node", TuMake<TuInt32>(1), true, true), "\"TaDataNode\"");
    expectNotStored(TuMake<UnmakeableValueNode>(u"Node", TuMake<UnmakeableValue>(), true, true),
        "\"UnmakeableValue\"");
}

TEST_F(NodeTreeStreamTest, LocksOfOtherThreadsForbidStoringAndReplacing)
{
    Worker worker;
    const std::string before = describe(m_manager);
    const Pointer inner = m_manager.FindChild(u"Mesh")->FindChild(u"Count");
    const auto lockElsewhere = [&](auto& handle) {
        worker.Do([&] {
            handle = std::decay_t<decltype(handle)>(m_manager, inner);
            EXPECT_TRUE(m_manager.TryLock());
        });
    };
    {
        TaDataHandleLockOnly<1> writing;
        lockElsewhere(writing);
        EXPECT_THROW(SaveTree(m_manager), TuException);
        EXPECT_THROW(LoadTree(m_manager, m_golden), TuException);
    }
    {
        TaDataHandleLockOnly<0> reading;
        lockElsewhere(reading);
        EXPECT_TRUE(SaveTree(m_manager) == m_golden);
        EXPECT_THROW(LoadTree(m_manager, m_golden), TuException);
    }
    EXPECT_EQ(describe(m_manager), before);

    // One's own do not.
    {
        const TaDataHandleLockOnly<1> root(m_manager, m_manager.GetRootNode());
        const TaDataHandleLockOnly<1> count(m_manager, inner);
        EXPECT_TRUE(m_manager.TryLock());
        EXPECT_TRUE(SaveTree(m_manager) == m_golden);
        EXPECT_TRUE(LoadTree(m_manager, m_golden));
        describe(m_manager);
        EXPECT_EQ(TaDataTreeProbe::GetWriteCount(*m_manager.FindChild(u"Mesh")), 1u);
    }
    EXPECT_EQ(describe(m_manager).find("thread"), std::string::npos);
}

} // namespace
