#include "support/datatreeprobe.h"
#include "support/expectfailure.h"
#include "tabase/tadatanodes.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <utility>

namespace {

const CString kSource = u"core/talibraries/tabase/tadatanode";

/// A value that can be stored, made by a number only.
class Numbered : public TuReferenceCounted, public ISerializable
{
    TU_DECLARE_RTTI

public:
    explicit Numbered(int /*value*/) { ++s_living; }
    ~Numbered() override { --s_living; }
    void Serialize(TuStreamWriteBinary&) const override { }
    void Serialize(TuStreamReadBinary&) override { }

    TU_DECLARE_EXTENSIONS;

    static IObject* CreateByFactory() { return new Numbered(0); }
    static inline int s_living = 0;
};
TU_DEFINE_RTTI_ROOT(Numbered, &Numbered::CreateByFactory, nullptr);
TU_DEFINE_EXTENSIONS(Numbered, ISerializable)

IObject* throwAny() { throw std::runtime_error("nothing is made here"); }
IObject* makeNothing() { return nullptr; }
const TuRTTI s_failing(u"FailingValue", &throwAny, nullptr);
const TuRTTI s_empty(u"EmptyValue", &makeNothing, nullptr);
const TuRTTI s_abstract(u"AbstractValue", nullptr, nullptr);

unsigned int countReferences(const TuReferenceCounted& object)
{
    return object.getReferenceCounter().GetCount();
}

template <class Node, class Value> void expectClass(const CString& kind)
{
    const CString name = u"TaDataNode" + kind;
    SCOPED_TRACE(name.ToUtf8());
    static_assert(std::is_base_of_v<TaDataNode<Value>, Node>);
    ASSERT_NE(TuRTTI::getCreate(name), nullptr);
    const std::unique_ptr<IObject> made(TuRTTI::getCreate(name)());
    EXPECT_TRUE(made->Is(Node::RTTI));
    EXPECT_TRUE(made->IsKindOf(TaDataNodeRecord::RTTI));
    EXPECT_TRUE(made->IsKindOf(TaNode::RTTI));

    auto& node = dynamic_cast<Node&>(*made);
    EXPECT_EQ(node.GetName(), u"__noname");
    EXPECT_TRUE(node.IsSerializable() && node.IsSerializeLeaves() && node.IsTrackModified());
    TaDataTreeProbe::CreateData(node, u"Tu" + kind);
    EXPECT_EQ(&node.GetRTTIData(), &Value::RTTI);
    EXPECT_TRUE(*std::as_const(node).GetData() == Value());
}

TEST(TaDataNodeTest, EachBoxedClassHasANodeThatIsMadeByNameAndMakesItsValueByName)
{
    expectClass<TaDataNodeBool, TuBool>(u"Bool");
    expectClass<TaDataNodeChar, TuChar>(u"Char");
    expectClass<TaDataNodeInt8, TuInt8>(u"Int8");
    expectClass<TaDataNodeInt16, TuInt16>(u"Int16");
    expectClass<TaDataNodeInt32, TuInt32>(u"Int32");
    expectClass<TaDataNodeLong, TuLong>(u"Long");
    expectClass<TaDataNodeInt64, TuInt64>(u"Int64");
    expectClass<TaDataNodeUInt8, TuUInt8>(u"UInt8");
    expectClass<TaDataNodeUInt16, TuUInt16>(u"UInt16");
    expectClass<TaDataNodeUInt32, TuUInt32>(u"UInt32");
    expectClass<TaDataNodeULong, TuULong>(u"ULong");
    expectClass<TaDataNodeUInt64, TuUInt64>(u"UInt64");
    expectClass<TaDataNodeFloat32, TuFloat32>(u"Float32");
    expectClass<TaDataNodeFloat64, TuFloat64>(u"Float64");
    expectClass<TaDataNodeString, TuString>(u"String");
}

TEST(TaDataNodeTest, QuestionsAboutAValueThatIsNotThereFailAndADumpDoesNotAsk)
{
    const auto node = TuMake<TaDataNodeInt32>(u"Empty", nullptr, false, false);
    EXPECT_FALSE(node->IsSerializeLeaves() || node->IsTrackModified());
    ExpectFailure<TuException>([&] { node->GetRTTIData(); }, kSource, 50);
    ExpectFailure<TuException>([&] { node->IsKindOfData(TuInt32::RTTI); }, kSource, 50);
    ExpectFailure<TuException>([&] { node->GetClassNameData(); }, kSource, 50);
    EXPECT_EQ(node->ToString(), u"Empty (TaDataNodeInt32)\n");
}

TEST(TaDataNodeTest, ANodeHasOneReferenceToItsValue)
{
    const auto value = TuMake<TuInt32>(7);
    const auto node = TuMake<TaDataNodeInt32>(u"Node", value, true, true);
    EXPECT_EQ(countReferences(*value), 2u);
    TaDataTreeProbe::CreateData(*node, u"TuInt32");
    EXPECT_EQ(countReferences(*value), 1u);
    EXPECT_EQ(countReferences(*node->GetData()), 1u);
    EXPECT_EQ(node->GetClassNameData(), CString(u"TuInt32"));
}

TEST(TaDataNodeTest, AValueStaysWhereNoneOfItsClassCanBeMade)
{
    const auto value = TuMake<TuInt32>(7);
    const auto node = TuMake<TaDataNodeInt32>(u"Node", value, true, true);
    for (const CString name : { u"NoSuchClass", u"", u"tuint32", u"FailingValue", u"EmptyValue",
             u"AbstractValue", u"TuUInt32", u"Numbered" }) {
        TaDataTreeProbe::CreateData(*node, name);
        EXPECT_EQ(node->GetData(), value) << name.ToUtf8();
    }
    EXPECT_EQ(Numbered::s_living, 0); // it was made, and deleted

    // A class that is not made without arguments is not made by name either.
    const auto numbered = TuMake<TaDataNode<Numbered>>(u"Node", TuMake<Numbered>(3), true, true);
    const Numbered* const before = numbered->GetData().Get();
    TaDataTreeProbe::CreateData(*numbered, u"Numbered");
    EXPECT_EQ(numbered->GetData(), before);
    EXPECT_EQ(&numbered->GetRTTIData(), &Numbered::RTTI);
}

} // namespace
