#include "tabase/taparameterset.h"

#include "groundwork/tucondition.h"
#include "support/expectfailure.h"
#include "support/largestblock.h"
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

using Bytes = std::vector<unsigned char>;

/// A record of numbers under these names, in this order, whatever their count is said to be.
Bytes makeRecord(const std::vector<std::pair<CString, int>>& entries, unsigned int count)
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

template <class Set> Bytes write(const Set& set)
{
    return WriteToBytes([&](auto& stream) { set.Serialize(stream); });
}

template <class Set> Bytes writeSorted(const Set& set)
{
    return WriteToBytes([&](auto& stream) { set.SerializeSorted(stream); });
}

template <class Set> void read(Set& set, const Bytes& bytes)
{
    EXPECT_TRUE(ReadFromBytes(bytes, [&](auto& stream) { set.Serialize(stream); }));
}

/// All names, in the order of iteration.
template <class Set> std::string getOrder(const Set& set)
{
    std::string names;
    for (const auto& [name, value] : set.GetParameters()) {
        names += name.ToUtf8();
    }
    return names;
}

template <class Set> int get(const Set& set, const CString& name)
{
    TuVariant value = -1;
    set.GetParameter(name, value);
    return value.ToInt();
}

/// What both kinds of sets promise.
template <class Set> class TaParameterSetTest : public testing::Test
{
};
using Sets = testing::Types<TaParameterSet, TaClassParameterSet>;
TYPED_TEST_SUITE(TaParameterSetTest, Sets);

TYPED_TEST(TaParameterSetTest, IterationFollowsTheBucketsAndWhatWasSetLastComesFirst)
{
    TypeParam set;
    for (const char16_t* name : { u"b", u"a", u"r", u"P", u"C" }) { // a, r and P share a bucket
        set.SetParameter(name, 1);
    }
    EXPECT_EQ(getOrder(set), "PrabC");
    set.SetConstraint(u"r", TypeParam::eConstraintMaximum, 1);
    EXPECT_THROW(set.SetParameter(u"r", 2), TuException);
    set.SetParameter(u"a", 2);
    EXPECT_EQ(getOrder(set), "aPrbC");

    TypeParam copy = set;
    EXPECT_EQ(getOrder(copy), "rPabC");
    copy = set;
    EXPECT_EQ(getOrder(copy), "rPabC");
    read(copy, write(set));
    EXPECT_EQ(getOrder(copy), "rPabC");
    copy.AddGroup(u"group") = set;
    EXPECT_EQ(getOrder(TypeParam(copy).GetGroup(u"group")), "aPrbC");
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
    EXPECT_EQ(get(set.GetGroup(u"outer"), u"b"), 2);
    set.GetGroup(u"outer").GetGroup(u"inner") = set; // a part is given the whole
    set = set.GetGroup(u"outer"); // and the whole a part
    EXPECT_EQ(getOrder(set), "b");
    set = std::move(set.GetGroup(u"inner").GetGroup(u"outer").GetGroup(u"inner"));
    EXPECT_EQ(getOrder(set), "a");
    EXPECT_FALSE(set.HasGroups());
}

TYPED_TEST(TaParameterSetTest, LimitsAreInclusiveAndOnlySettingLooksAtThem)
{
    constexpr bool kIsClassSet = std::is_same_v<TypeParam, TaClassParameterSet>;
    const CString source = kIsClassSet ? u"core/talibraries/tabase/taclassparameterset"
                                       : u"core/talibraries/tabase/taparameterset";
    TypeParam set;
    set.SetConstraint(u"a", TypeParam::eConstraintMaximum, 5);
    set.SetParameter(u"a", 5);
    ExpectFailure<TuException>(
        [&] { set.SetParameter(u"a", 5.5); }, source, kIsClassSet ? 191 : 182);
    EXPECT_EQ(get(set, u"a"), 5);

    set.SetConstraint(u"a", TypeParam::eConstraintMinimum, 7);
    set.SetConstraint(u"a", TypeParam::eConstraintMaximum, 8);
    set.SetConstraint(u"a", TypeParam::eConstraintOther, 0);
    EXPECT_EQ(get(set, u"a"), 5);
    EXPECT_EQ(set.IsInLimits(u"a", 7), 1);
    EXPECT_EQ(set.IsInLimits(u"A", 5), 1);
    EXPECT_EQ(set.IsInLimits(u"a", std::numeric_limits<double>::quiet_NaN()), 0);
    TypeParam copy = set;
    EXPECT_EQ(copy.IsInLimits(u"a", 5), 0);
    copy.DeleteConstraint(u"a", TypeParam::eConstraintMinimum);
    copy.DeleteParameter(u"a");
    EXPECT_EQ(copy.GetConstraint(u"a", TypeParam::eConstraintOther), 0);
    ExpectFailure<TuException>(
        [&] { copy.GetConstraint(u"a", TypeParam::eConstraintMinimum); }, source, 301);
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
}

TYPED_TEST(TaParameterSetTest, NamesAreSortedByUnit)
{
    TypeParam set;
    for (const char16_t* name : { u"b", u"\uFF5E", u"B", u"\U0001F600", u"a" }) {
        set.SetParameter(name, 0);
        set.AddGroup(name);
    }
    const CString sorted[] = { u"B", u"a", u"b", u"\U0001F600", u"\uFF5E" };
    TuArrayManaged<CString> names;
    names.Add(u"before");
    set.GetParameterKeys(names);
    EXPECT_TRUE(std::equal(names.begin(), names.end(), std::begin(sorted), std::end(sorted)));
    set.GetGroupNames(names);
    EXPECT_TRUE(std::equal(names.begin(), names.end(), std::begin(sorted), std::end(sorted)));
}

TYPED_TEST(TaParameterSetTest, GroupsAreMadeOnceAndCopiedDeeply)
{
    TypeParam set;
    TypeParam& group = set.AddGroup(u"group");
    group.SetParameter(u"a", 1);
    EXPECT_EQ(&set.AddGroup(u"group"), &group);
    set.SetExtension(u"a", u"text");
    const TypeParam copy = set;
    group.SetParameter(u"a", 2);
    EXPECT_EQ(get(copy.GetGroup(u"group"), u"a"), 1);
    EXPECT_EQ(copy.GetExtension(u"a"), u"text");
    EXPECT_THROW(copy.GetGroup(u"Group"), TuExceptionPreconditionViolation);
    set.SetParameter(u"a", 1);
    set.SetConstraint(u"a", TypeParam::eConstraintMaximum, 1);
    set.ResetAll();
    EXPECT_FALSE(set.HasGroups() || set.HasExtension(u"a") || set.HasParameter(u"a"));
    EXPECT_FALSE(set.HasConstraint(u"a", TypeParam::eConstraintMaximum));
    const TypeParam moved = std::move(set);
    EXPECT_FALSE(set.HasGroups());
    set.AddGroup(u"again");
    set.RemoveGroup(u"again");
    EXPECT_FALSE(set.HasGroups());
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
    const auto toBytes = [](const std::string& text) { return Bytes(text.begin(), text.end()); };
    EXPECT_EQ(write(set), toBytes(head + r + a));
    EXPECT_EQ(writeSorted(set), toBytes(head + a + r));
}

TYPED_TEST(TaParameterSetTest, ReadingReplacesTheValuesAloneOrChangesNothing)
{
    TypeParam set;
    set.SetParameter(u"former", 1);
    set.SetExtension(u"a", u"text");
    set.SetConstraint(u"a", TypeParam::eConstraintMaximum, 1);
    set.AddGroup(u"group");

    const Bytes whole = makeRecord({ { u"a", 1 }, { u"r", 2 }, { u"a", 3 }, { u"b", 4 } }, 4);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + std::ptrdiff_t(size));
        EXPECT_THROW(read(set, cut), TuExceptionStream) << size;
    }
    s_largestBlock = 0;
    EXPECT_THROW(read(set, makeRecord({ { u"a", 1 } }, ~0u)), TuExceptionStream);
    EXPECT_LE(s_largestBlock, 65536u);
    for (const std::size_t version : { 0u, 4u }) {
        Bytes newer = whole;
        newer[version] = 1;
        EXPECT_THROW(read(set, newer), TuExceptionWrongFileVersion);
    }
    EXPECT_EQ(getOrder(set), "former");

    read(set, whole);
    EXPECT_EQ(getOrder(set), "arb"); // of a name that is there twice the last value counts
    EXPECT_EQ(get(set, u"a"), 3); // beyond its limit
    EXPECT_TRUE(set.HasExtension(u"a") && set.IsGroup(u"group"));
    EXPECT_TRUE(set.HasConstraint(u"a", TypeParam::eConstraintMaximum));
}

TYPED_TEST(TaParameterSetTest, ALongRecordIsReadCopiedAndSortedInReasonableTime)
{
    // With a look-up in one of 17 buckets for each it would take minutes, and does in a debug
    // build, whose assertions look.
    const int count = TuIsConditionChecked<1>() ? 3'000 : 300'000;
    std::vector<std::pair<CString, int>> entries;
    for (int i = 0; i <= count; ++i) {
        entries.emplace_back(CString::FromUtf8(std::to_string(i % count)), i);
    }
    TypeParam set;
    read(set, makeRecord(entries, static_cast<unsigned int>(entries.size())));
    EXPECT_EQ(set.GetParameters().GetCount(), static_cast<unsigned int>(count));
    EXPECT_EQ(get(set, u"0"), count);
    EXPECT_EQ(writeSorted(TypeParam(set)), writeSorted(set));
}

TEST(TaClassParameterSetTest, IdentifiersOfNamesToDisplayAreNotCopiedThoseOfDescriptionsAre)
{
    TaClassParameterSet set;
    set.SetResourceID(u"a", static_cast<unsigned long>(0xA'FFFF'FFFFull)); // 32 bits count
    set.SetDescriptionID(u"a", 2);
    set.AddGroup(u"group").SetResourceID(u"b", 3);
    set.GetGroup(u"group").SetDescriptionID(u"b", 4);
    TaClassParameterSet copy = set;
    EXPECT_EQ(copy.GetResourceID(u"a"), 0u);
    EXPECT_FALSE(copy.GetGroup(u"group").HasResourceID(u"b"));
    EXPECT_EQ(copy.GetGroup(u"group").GetDescriptionID(u"b"), 4u);

    copy.SetResourceID(u"own", 5);
    copy.SetDescriptionID(u"own", 6);
    copy = set;
    EXPECT_FALSE(copy.HasResourceID(u"a") || copy.HasDescriptionID(u"own"));
    EXPECT_EQ(copy.GetDescriptionID(u"a"), 2u);
    copy = TaClassParameterSet(); // nor those of a temporary
    EXPECT_FALSE(copy.HasDescriptionID(u"a"));
    TaClassParameterSet other;
    swap(copy, other);
    EXPECT_FALSE(copy.HasResourceID(u"own"));
    EXPECT_EQ(other.GetResourceID(u"own"), 5u);

    TaClassParameterSet taken = std::move(set);
    EXPECT_EQ(taken.GetResourceID(u"a"), 0xFFFF'FFFFul);
    taken.ResetAll();
    EXPECT_FALSE(taken.HasResourceID(u"a") || taken.HasDescriptionID(u"a"));
}

TEST(TaAttributeParameterTest, CountsForAFixedSizeAndIsStoredAsAVersion)
{
    class Invalid : public TaAttributeParameter
    {
    public:
        Invalid() { setValid(false); }
    };
    const std::unique_ptr<IObject> made(TuRTTI::getCreate(u"TaAttributeParameter")());
    auto& object = dynamic_cast<TaAttributeParameter&>(*made);
    EXPECT_TRUE(object.IsValid());
    EXPECT_EQ(object.GetMemoryUsage(), 104u);
    EXPECT_EQ(write(object), Bytes(4));
    read(object, Bytes(4));

    const TuSmartPointer<Invalid> invalid(new Invalid);
    const std::unique_ptr<IObject> clone(TaAttributeParameter::RTTI.GetClone()(*invalid));
    auto& copy = dynamic_cast<TaAttributeParameter&>(*clone);
    EXPECT_FALSE(copy.IsValid());
    EXPECT_EQ(copy.getReferenceCounter().GetCount(), 0u);
    copy = object;
    EXPECT_TRUE(copy.IsValid());
}

} // namespace
