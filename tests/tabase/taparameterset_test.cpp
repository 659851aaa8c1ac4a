#include "tabase/taparameterset.h"

#include "largestblock.h"
#include "support/expectfailure.h"
#include "support/memorystreams.h"
#include "tabase/taattributeparameter.h"
#include "tabase/taclassparameterset.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

/// What both kinds of sets promise.
template <class Set> class TaParameterSetTest : public testing::Test
{
protected:
    static constexpr bool kIsClassSet = std::is_same_v<Set, TaClassParameterSet>;
    static constexpr const char16_t* kSource = kIsClassSet
        ? u"core/talibraries/tabase/taclassparameterset"
        : u"core/talibraries/tabase/taparameterset";

    static std::vector<unsigned char> write(const Set& set)
    {
        return WriteToBytes([&](auto& stream) { set.Serialize(stream); });
    }
    static std::vector<unsigned char> writeSorted(const Set& set)
    {
        return WriteToBytes([&](auto& stream) { set.SerializeSorted(stream); });
    }
    static void read(Set& set, const std::vector<unsigned char>& bytes)
    {
        EXPECT_TRUE(ReadFromBytes(bytes, [&](auto& stream) { set.Serialize(stream); }));
    }
    /// A record of names and numbers, in this order, whatever their number is said to be.
    static std::vector<unsigned char> record(
        const std::vector<std::pair<CString, int>>& entries, unsigned int count)
    {
        return WriteToBytes([&](auto& stream) {
            stream.WriteVersion(0);
            stream.WriteVersion(0);
            stream << count;
            for (const auto& [name, value] : entries) {
                stream << name;
                TuVariant(value).Serialize(stream);
            }
        });
    }
    /// All names, in the order of iteration.
    static std::string order(const Set& set)
    {
        std::string names;
        for (const auto& [name, value] : set.GetParameters()) {
            names += name.ToUtf8();
        }
        return names;
    }
    static int get(const Set& set, const CString& name)
    {
        TuVariant value = -1;
        set.GetParameter(name, value);
        return value.ToInt();
    }
};

using Sets = testing::Types<TaParameterSet, TaClassParameterSet>;
TYPED_TEST_SUITE(TaParameterSetTest, Sets);

TYPED_TEST(TaParameterSetTest, IterationFollowsTheBucketsAndWhatWasSetLastComesFirst)
{
    TypeParam set;
    for (const char16_t* name : { u"b", u"a", u"r", u"P", u"C" }) { // a, r and P share a bucket
        set.SetParameter(name, 1);
    }
    EXPECT_EQ(this->order(set), "PrabC");
    set.SetParameter(u"a", 2);
    EXPECT_EQ(this->order(set), "aPrbC");
    set.SetConstraint(u"r", TypeParam::eConstraintMaximum, 1);
    EXPECT_THROW(set.SetParameter(u"r", 2), TuException);
    EXPECT_EQ(this->order(set), "aPrbC");

    TypeParam copy = set;
    EXPECT_EQ(this->order(copy), "rPabC");
    copy = set;
    EXPECT_EQ(this->order(copy), "rPabC");
    this->read(copy, this->write(set));
    EXPECT_EQ(this->order(copy), "rPabC");
    copy.AddGroup(u"group") = set;
    EXPECT_EQ(this->order(TypeParam(copy).GetGroup(u"group")), "aPrbC");
    EXPECT_EQ(this->order(TypeParam(std::move(set))), "aPrbC");
    EXPECT_EQ(this->order(set), "");
}

TYPED_TEST(TaParameterSetTest, ArgumentsMayBePartsOfTheSet)
{
    TypeParam set;
    set.SetParameter(u"text", u"a text that is too long to lie in its object");
    set.SetParameter(u"number", 1);
    auto& values = set.GetParameters();
    set.SetParameter(values.begin()->GetKey(), values.begin()->GetValue());
    set.SetParameter(u"number", values.GetAt(u"text"));
    EXPECT_EQ(values.GetAt(u"number"), values.GetAt(u"text"));
    set.DeleteParameter(values.begin()->GetKey());
    EXPECT_EQ(values.GetCount(), 1u);

    set.AddGroup(u"outer").AddGroup(u"inner").SetParameter(u"a", 1);
    set.AddGroup(u"outer").SetParameter(u"b", 2);
    const auto& self = set;
    set = self;
    EXPECT_EQ(this->get(set.GetGroup(u"outer"), u"b"), 2);
    set.GetGroup(u"outer").GetGroup(u"inner") = set; // a part is given the whole
    EXPECT_EQ(this->get(set.GetGroup(u"outer").GetGroup(u"inner").GetGroup(u"outer"), u"b"), 2);
    set = set.GetGroup(u"outer"); // and the whole a part
    EXPECT_EQ(this->order(set), "b");
    set = std::move(set.GetGroup(u"inner").GetGroup(u"outer").GetGroup(u"inner"));
    EXPECT_EQ(this->order(set), "a");
    EXPECT_FALSE(set.HasGroups());
}

TYPED_TEST(TaParameterSetTest, LimitsAreInclusiveAndOnlySettingLooksAtThem)
{
    TypeParam set;
    set.SetConstraint(u"a", TypeParam::eConstraintMaximum, 5);
    EXPECT_FALSE(set.HasParameter(u"a"));
    set.SetParameter(u"a", 5);
    const unsigned int line = this->kIsClassSet ? 191 : 182;
    ExpectFailure<TuException>([&] { set.SetParameter(u"a", 5.5); }, this->kSource, line);
    EXPECT_THROW(set.SetParameter(u"a", u"text"), TuException); // texts come after all numbers
    EXPECT_EQ(this->get(set, u"a"), 5);

    set.SetConstraint(u"a", TypeParam::eConstraintMinimum, 7);
    set.SetConstraint(u"a", TypeParam::eConstraintMaximum, 8);
    set.SetConstraint(u"a", TypeParam::eConstraintOther, 0);
    EXPECT_EQ(this->get(set, u"a"), 5);
    EXPECT_EQ(set.IsInLimits(u"a", 5), 0);
    EXPECT_EQ(set.IsInLimits(u"a", 7), 1);
    EXPECT_EQ(set.IsInLimits(u"A", 5), 1);
    EXPECT_EQ(set.IsInLimits(u"a", std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(set.GetConstraint(u"a", TypeParam::eConstraintOther), 0);
    TypeParam copy = set;
    copy.DeleteConstraint(u"a", TypeParam::eConstraintMinimum);
    ExpectFailure<TuException>(
        [&] { copy.GetConstraint(u"a", TypeParam::eConstraintMinimum); }, this->kSource, 301);
    copy.SetParameter(u"a", 6);
    copy.DeleteParameter(u"a");
    EXPECT_TRUE(copy.HasConstraint(u"a", TypeParam::eConstraintMaximum));
    EXPECT_TRUE(set.HasConstraint(u"a", TypeParam::eConstraintMinimum));
}

TYPED_TEST(TaParameterSetTest, WhatIsMissingHasADefaultOrIsEmpty)
{
    TypeParam set;
    set.SetParameter(u"Size", 1);
    set.SetParameter(u"Size", u"large");
    TuVariant value = 7;
    EXPECT_EQ(set.GetParameter(u"size", value), 0);
    EXPECT_EQ(set.GetParameter(u"size", value, value), 0);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(set.GetParameter(u"Size", value, value), 1);
    EXPECT_EQ(value, u"large");
    EXPECT_EQ(set.GetExtension(u"Size"), u"");
    set.SetExtension(u"nothing else", u"text");
    EXPECT_EQ(TypeParam(set).GetExtension(u"nothing else"), u"text");
    EXPECT_FALSE(set.HasExtension(u"Size"));

    for (const char16_t* name : { u"b", u"\uFF5E", u"B", u"\U0001F600", u"a" }) {
        set.SetParameter(name, 0);
        set.AddGroup(name);
    }
    set.DeleteParameter(u"Size");
    const CString sorted[] = { u"B", u"a", u"b", u"\U0001F600", u"\uFF5E" };
    TuArrayManaged<CString> names;
    names.Add(u"before");
    set.GetParameterKeys(names);
    EXPECT_TRUE(std::equal(names.begin(), names.end(), std::begin(sorted), std::end(sorted)));
    names.Add(u"before");
    set.GetGroupNames(names);
    EXPECT_TRUE(std::equal(names.begin(), names.end(), std::begin(sorted), std::end(sorted)));
}

TYPED_TEST(TaParameterSetTest, GroupsAreMadeOnceAndCopiedDeeply)
{
    TypeParam set;
    TypeParam& group = set.AddGroup(u"group");
    group.AddGroup(u"inner").SetParameter(u"a", 1);
    EXPECT_EQ(&set.AddGroup(u"group"), &group);
    const TypeParam copy = set;
    group.GetGroup(u"inner").SetParameter(u"a", 2);
    EXPECT_EQ(this->get(copy.GetGroup(u"group").GetGroup(u"inner"), u"a"), 1);
    EXPECT_THROW(copy.GetGroup(u"Group"), TuExceptionPreconditionViolation);
    EXPECT_FALSE(copy.IsGroup(u"Group"));
    set.RemoveGroup(u"Group");
    EXPECT_TRUE(set.HasGroups());
    set.RemoveGroup(u"group");
    EXPECT_FALSE(set.HasGroups());

    set = copy;
    set.SetExtension(u"a", u"text");
    set.SetConstraint(u"a", TypeParam::eConstraintOther, 1);
    set.ResetAll();
    EXPECT_FALSE(set.HasGroups() || set.HasExtension(u"a"));
    EXPECT_FALSE(set.HasConstraint(u"a", TypeParam::eConstraintOther));
    set = TypeParam();
    set.AddGroup(u"again");
    EXPECT_TRUE(set.HasGroups());
}

TYPED_TEST(TaParameterSetTest, ARecordHoldsTheValuesAloneInTheOrderOfIterationOrSorted)
{
    TypeParam set;
    set.SetParameter(u"a", 5);
    set.SetParameter(u"r", true);
    set.SetExtension(u"a", u"text");
    set.AddGroup(u"group");
    const std::string head("\0\0\0\0\0\0\0\0\2\0\0\0", 12); // two versions, the count
    const std::string a("\1\0\0\0a\0\0\0\0\0\2\5\0\0\0", 15); // name; version, kind and value
    const std::string r("\1\0\0\0r\0\0\0\0\0\1\1", 12);
    const auto bytes = [](const std::string& text) {
        return std::vector<unsigned char>(text.begin(), text.end());
    };
    EXPECT_EQ(this->write(set), bytes(head + r + a));
    EXPECT_EQ(this->writeSorted(set), bytes(head + a + r));
    EXPECT_EQ(this->writeSorted(TypeParam(set)), bytes(head + a + r));
    this->read(set, bytes(head + a + r));
    EXPECT_EQ(this->order(set), "ra");
}

TYPED_TEST(TaParameterSetTest, ReadingReplacesTheValuesAlone)
{
    TypeParam source;
    source.SetParameter(u"a", 5);
    TypeParam set;
    set.SetParameter(u"former", 1);
    set.SetExtension(u"a", u"text");
    set.SetConstraint(u"a", TypeParam::eConstraintMaximum, 1);
    set.AddGroup(u"group");
    this->read(set, this->write(source));
    EXPECT_EQ(this->order(set), "a"); // beyond its limit
    EXPECT_TRUE(set.HasExtension(u"a") && set.IsGroup(u"group"));
    EXPECT_TRUE(set.HasConstraint(u"a", TypeParam::eConstraintMaximum));

    // Of a name that is there twice the last value counts.
    this->read(set, this->record({ { u"a", 1 }, { u"r", 2 }, { u"a", 3 }, { u"b", 4 } }, 4));
    EXPECT_EQ(this->order(set), "arb");
    EXPECT_EQ(this->get(set, u"a"), 3);
}

TYPED_TEST(TaParameterSetTest, ADamagedRecordChangesNothingAndTakesNoMemory)
{
    TypeParam set;
    set.SetParameter(u"former", 1);
    const std::vector<unsigned char> whole = this->record({ { u"a", 1 }, { u"b", 2 } }, 2);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::vector<unsigned char> cut(whole.begin(), whole.begin() + std::ptrdiff_t(size));
        EXPECT_THROW(this->read(set, cut), TuExceptionStream) << size;
    }
    s_largestBlock = 0;
    EXPECT_THROW(this->read(set, this->record({ { u"a", 1 } }, ~0u)), TuExceptionStream);
    EXPECT_LE(s_largestBlock, 65536u);
    for (const std::size_t version : { 0u, 4u }) {
        std::vector<unsigned char> newer = whole;
        newer[version] = 1;
        EXPECT_THROW(this->read(set, newer), TuExceptionWrongFileVersion);
    }
    EXPECT_EQ(this->order(set), "former");
}

TYPED_TEST(TaParameterSetTest, ALongRecordIsReadCopiedAndSortedInReasonableTime)
{
    // With a look-up in one of 17 buckets for each it would take minutes.
    std::vector<std::pair<CString, int>> entries;
    for (int i = 0; i < 300'000; ++i) {
        entries.emplace_back(CString::FromUtf8(std::to_string(i % 299'999)), i);
    }
    TypeParam set;
    this->read(set, this->record(entries, 300'000));
    EXPECT_EQ(set.GetParameters().GetCount(), 299'999u);
    EXPECT_EQ(this->get(set, u"0"), 299'999);
    EXPECT_EQ(this->writeSorted(TypeParam(set)), this->writeSorted(set));
}

TEST(TaClassParameterSetTest, IdentifiersOfNamesToDisplayAreNotCopiedThoseOfDescriptionsAre)
{
    TaClassParameterSet set;
    set.SetResourceID(u"a", 1);
    set.SetDescriptionID(u"a", 2);
    set.AddGroup(u"group").SetResourceID(u"b", 3);
    set.GetGroup(u"group").SetDescriptionID(u"b", 4);
    const TaClassParameterSet copy = set;
    EXPECT_FALSE(copy.HasResourceID(u"a") || copy.GetGroup(u"group").HasResourceID(u"b"));
    EXPECT_EQ(copy.GetDescriptionID(u"a"), 2u);
    EXPECT_EQ(copy.GetGroup(u"group").GetDescriptionID(u"b"), 4u);

    TaClassParameterSet target;
    target.SetResourceID(u"own", 5);
    target.SetDescriptionID(u"own", 6);
    target = set;
    EXPECT_EQ(target.GetResourceID(u"own"), 5u);
    EXPECT_FALSE(target.HasResourceID(u"a") || target.HasDescriptionID(u"own"));
    EXPECT_EQ(target.GetDescriptionID(u"a"), 2u);

    const TaClassParameterSet moved = std::move(set);
    EXPECT_EQ(moved.GetResourceID(u"a"), 1u);
    EXPECT_FALSE(set.HasGroups());
    set = moved;
    target.ResetAll();
    EXPECT_FALSE(target.HasResourceID(u"own") || target.HasDescriptionID(u"a"));
}

TEST(TaClassParameterSetTest, AnUnknownNameHasTheIdentifier0AndGetsNoEntry)
{
    TaClassParameterSet set;
    EXPECT_EQ(set.GetResourceID(u"a") + set.GetDescriptionID(u"a"), 0u);
    EXPECT_FALSE(set.HasResourceID(u"a") || set.HasDescriptionID(u"a"));
    set.SetResourceID(u"a", static_cast<unsigned long>(0xA'FFFF'FFFFull));
    EXPECT_EQ(set.GetResourceID(u"a"), 0xFFFF'FFFFul);
}

TEST(TaAttributeParameterTest, CountsForAFixedSizeAndIsStoredAsAVersion)
{
    class Invalid : public TaAttributeParameter
    {
    public:
        Invalid() { setValid(false); }
    };
    const TaAttributeParameter fresh;
    EXPECT_TRUE(fresh.IsValid());
    EXPECT_EQ(fresh.GetMemoryUsage(), 104u);
    const TuSmartPointer<Invalid> invalid(new Invalid);
    TaAttributeParameter copy(*invalid);
    EXPECT_FALSE(copy.IsValid());
    EXPECT_EQ(copy.getReferenceCounter().GetCount(), 0u);
    copy = fresh;
    EXPECT_TRUE(copy.IsValid());

    const auto bytes = WriteToBytes([&](auto& stream) { fresh.Serialize(stream); });
    EXPECT_EQ(bytes, std::vector<unsigned char>(4));
    const TuRTTI::CreateFunction create = TuRTTI::getCreate(u"TaAttributeParameter");
    ASSERT_NE(create, nullptr);
    const std::unique_ptr<IObject> made(create());
    auto& object = dynamic_cast<TaAttributeParameter&>(*made);
    EXPECT_TRUE(ReadFromBytes(bytes, [&](auto& stream) { object.Serialize(stream); }));
    const std::unique_ptr<IObject> clone(TaAttributeParameter::RTTI.GetClone()(*invalid));
    EXPECT_FALSE(dynamic_cast<TaAttributeParameter&>(*clone).IsValid());
    EXPECT_NE(object.GetExtension(ISerializable::kExtensionName, true), nullptr);
}

} // namespace
