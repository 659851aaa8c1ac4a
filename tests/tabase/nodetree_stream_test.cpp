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

#include <memory>
#include <string>

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

TEST_F(NodeTreeStreamTest, AVersionOrAFlagThatIsNotKnownIsRefused)
{
    const auto tree = [](unsigned int version, unsigned int nodeVersion, unsigned int valueVersion,
                          int flags) {
        return BytesOf([&](auto& stream) {
            stream << version << 1u << nodeVersion << u"Node" << static_cast<unsigned char>(flags);
            stream << u"TaDataNodeInt8" << u"TuInt8" << valueVersion << std::int8_t{ 1 } << 0u;
        });
    };
    TaDataManager other;
    EXPECT_TRUE(LoadTree(other, tree(0, 0, 0, 7)));
    for (const unsigned int newer : { 1u, ~0u }) {
        expectRefused<TuExceptionWrongFileVersion>(tree(newer, 0, 0, 7));
        expectRefused<TuExceptionWrongFileVersion>(tree(0, newer, 0, 7));
        expectRefused<TuExceptionWrongFileVersion>(tree(0, 0, newer, 7));
    }
    expectRefused<TuExceptionStream>(tree(0, 0, 0, 8 + 7));
    expectRefused<TuExceptionStream>(tree(0, 0, 0, 0x80 + 7));
}

TEST_F(NodeTreeStreamTest, AClassThatIsNotKnownOrDoesNotFitIsNamed)
{
    const auto tree = [](const CString& nodeClass, const CString& valueClass) {
        return BytesOf([&](auto& stream) {
            stream << 0u << 1u << 0u << u"Node" << static_cast<unsigned char>(7);
            stream << nodeClass << valueClass << 0u << 1 << 0u;
        });
    };
    TaDataManager other;
    EXPECT_TRUE(LoadTree(other, tree(u"TaDataNodeInt32", u"TuInt32")));
    const auto expectNamed
        = [&](const CString& nodeClass, const CString& valueClass, const char* name) {
              const std::string reason = expectRefused<TuException>(tree(nodeClass, valueClass));
              EXPECT_NE(reason.find('"' + std::string(name) + '"'), reason.npos) << reason;
          };
    expectNamed(u"NoSuchNode", u"TuInt32", "NoSuchNode");
    expectNamed(u"", u"TuInt32", "");
    expectNamed(u"TaNode", u"TuInt32", "TaNode"); // has no create function
    expectNamed(u"TuInt32", u"TuInt32", "TuInt32"); // is none of nodes
    expectNamed(u"TaDataNodeInt32", u"NoSuchValue", "NoSuchValue");
    expectNamed(u"TaDataNodeInt32", u"TuUInt32", "TuUInt32");
    expectNamed(u"TaDataNodeInt32", u"TaDataNodeInt32", "TaDataNodeInt32");
    expectNamed(u"TaDataNodeInt32", u"TaNode", "TaNode");
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
    const auto unmakeable = TuMake<UnmakeableValue>();
    for (const Pointer& node : { Pointer(TuMake<Nameless>(u"Node", TuMake<TuInt32>(1), true, true)),
             Pointer(TuMake<UnmakeableValueNode>(u"Node", unmakeable, true, true)) }) {
        TaDataManager manager;
        EXPECT_TRUE(manager.InsertNode(node, manager.GetRootNode()));
        EXPECT_EQ(SaveTree(manager).size(), 8u); // a leaf of the root is left out
        const Pointer mesh = TuMake<TaNode>(u"Mesh", true, true);
        EXPECT_TRUE(manager.InsertNode(mesh, manager.GetRootNode()));
        {
            TaDataHandleLockOnly<1> handle(manager, node);
            EXPECT_TRUE(manager.TryLock());
            EXPECT_TRUE(manager.MoveNode(handle, mesh));
        }
        TaStreamWriteBinaryBuffer stream;
        const std::string reason = ExpectFailure<TuException>([&] { manager.Serialize(stream); });
        const bool isNameless = node->Is(TaDataNodeRecord::RTTI);
        EXPECT_NE(reason.find(isNameless ? "\"TaDataNode\"" : "\"UnmakeableValue\""), reason.npos)
            << reason;
        EXPECT_EQ(stream.GetSize(), 0u);
        EXPECT_EQ(TaDataTreeProbe::FindFault(manager), "");
    }
}

TEST_F(NodeTreeStreamTest, LocksOfOtherThreadsForbidStoringAndReplacing)
{
    Worker worker;
    const std::string before = describe(m_manager);
    const auto withLock = [&](auto handle, const Pointer& node, auto&& action) {
        worker.Do([&] {
            handle = decltype(handle)(m_manager, node);
            EXPECT_TRUE(m_manager.TryLock());
        });
        action();
    };
    const Pointer mesh = m_manager.FindChild(u"Mesh");
    const Pointer inner = mesh->FindChild(u"Count");
    withLock(TaDataHandleLockOnly<1>(), inner, [&] {
        EXPECT_THROW(SaveTree(m_manager), TuException);
        EXPECT_THROW(LoadTree(m_manager, m_golden), TuException);
    });
    EXPECT_EQ(describe(m_manager), before);
    withLock(TaDataHandleLockOnly<0>(), inner, [&] {
        EXPECT_TRUE(SaveTree(m_manager) == m_golden);
        EXPECT_THROW(LoadTree(m_manager, m_golden), TuException);
    });
    EXPECT_EQ(describe(m_manager), before);

    // One's own do not.
    std::string after;
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
    EXPECT_FALSE(m_manager.IsCurrentThreadLocking());
}

} // namespace
