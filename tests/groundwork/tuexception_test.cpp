#include "groundwork/tucondition.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tusmartpointer.h"
#include "groundwork/tustreamwriteasciistring.h"
#include "support/expectfailure.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

/// A subclass that forgot its clone function.
class UncopyableFailure : public TuExceptionStream
{
    TU_DECLARE_RTTI

public:
    UncopyableFailure()
        : TuExceptionStream(u"test/uncopyable", 7, RTTI)
    {
    }
};

TU_DEFINE_RTTI(UncopyableFailure, TuExceptionStream, nullptr, nullptr);

TEST(TuExceptionTest, NamesItsPlaceFromTheSourceRootWithoutExtension)
{
    const TuException failure(TU_HERE);
    EXPECT_EQ(failure.GetFile(), u"tests/groundwork/tuexception_test");
    EXPECT_EQ(failure.GetLine(), static_cast<unsigned int>(__LINE__ - 2));
    EXPECT_EQ(TuSourceName("a.b/c"), u"a.b/c");
    EXPECT_EQ(TuSourceName("a\\b.cpp"), u"a/b");
}

TEST(TuExceptionTest, NamesItsCauseAndKeepsItsClass)
{
    const auto accountOf = [](const auto& cause) {
        const TuException outer(u"core/outer", 34, cause);
        EXPECT_EQ(outer.ToString().ToUtf8(), outer.what());
        return std::string(outer.what());
    };
    const TuExceptionStream inner(u"core/inner", 12, u"bad count");
    const char* const expected
        = "TuException at core/outer(34); caused by TuExceptionStream at core/inner(12): bad count";
    EXPECT_EQ(accountOf(inner), expected);
    EXPECT_EQ(accountOf(static_cast<const std::exception&>(inner)), expected);
    EXPECT_EQ(
        accountOf(std::runtime_error("disk full")), "TuException at core/outer(34): disk full");
    EXPECT_EQ(accountOf(UncopyableFailure()),
        "TuException at core/outer(34); caused by UncopyableFailure at test/uncopyable(7)");

    const TuException sliced = inner; // NOLINT: slicing is what is tested
    EXPECT_TRUE(sliced.Is(TuException::RTTI));
    EXPECT_EQ(&sliced.GetExceptionRTTI(), &TuExceptionStream::RTTI);
}

TEST(TuExceptionTest, ACopyOnTheHeapIsOfItsOwnOrTheNearestClass)
{
    const TuSmartPointer<const TuException> kept(UncopyableFailure().Clone().release());
    EXPECT_EQ(&kept->GetRTTI(), &TuExceptionStream::RTTI);
    EXPECT_STREQ(TuException(*kept).what(), "UncopyableFailure at test/uncopyable(7)");

    const auto expectOwn = []<class Failure>(const Failure& failure, bool isCondition) {
        EXPECT_EQ(&failure.Clone()->GetRTTI(), &Failure::RTTI) << failure.what();
        EXPECT_EQ(failure.IsKindOf(TuExceptionCondition::RTTI), isCondition);
    };
    expectOwn(TuExceptionOutOfMemory(u"f", 1), false);
    expectOwn(TuExceptionPreconditionViolation(u"f", 2, u"d"), true);
    expectOwn(TuExceptionPostconditionViolation(u"f", 3), true);
    expectOwn(TuExceptionStream(u"f", 4), false);
    expectOwn(TuExceptionWrongFileVersion(u"f", 5), false);
    expectOwn(TuExceptionUnknownExtension(u"f", 6), false);
}

TEST(TuConditionTest, AFalsePredicateThrowsAndAThrowingOnePassesUnchanged)
{
    const auto yes = [] { return true; };
    const auto no = [] { return false; };
    const auto fails = []() -> bool { throw std::out_of_range("own"); };
    EXPECT_NO_THROW(TuPreCondition<2>(u"holds", u"core/x", 5, yes));
    ExpectFailure<TuExceptionPreconditionViolation>(
        [&] { TuPreCondition<2>(u"fails", u"core/x", 5, no); }, u"core/x", 5);
    ExpectFailure<TuExceptionPostconditionViolation>(
        [&] { TuPostCondition<2>(u"fails", u"core/x", 6, no); }, u"core/x", 6);
    EXPECT_NO_THROW(TuPreCondition<0>(u"never looked at", u"core/x", 7, no));
    EXPECT_THROW(TuPreCondition<2>(u"throws", u"core/x", 8, fails), std::out_of_range);
}

} // namespace
