#include "groundwork/tucondition.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tusmartpointer.h"
#include "groundwork/tustreamwriteasciistring.h"
#include "support/expectfailure.h"

#include <gtest/gtest.h>

#include <stdexcept>

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

TEST(TuExceptionTest, KeepsTheClassOfACauseAndOfASlicedCopy)
{
    const TuExceptionStream inner(u"core/inner", 12, u"bad count");
    const TuException& asBase = inner;
    const TuException outer(u"core/outer", 34, asBase);

    EXPECT_STREQ(outer.what(),
        "TuException at core/outer(34); caused by TuExceptionStream at core/inner(12): bad count");
    EXPECT_EQ(outer.ToString().ToUtf8(), outer.what());

    const TuException sliced = inner; // NOLINT: slicing is what is tested
    EXPECT_TRUE(sliced.Is(TuException::RTTI));
    EXPECT_EQ(&sliced.GetExceptionRTTI(), &TuExceptionStream::RTTI);
}

TEST(TuExceptionTest, StandardExceptionsBecomeCausesByTheirText)
{
    const TuException failure(u"core/a", 1, std::runtime_error("disk full"));
    EXPECT_EQ(failure.GetCause(), nullptr);
    EXPECT_STREQ(failure.what(), "TuException at core/a(1): disk full");

    const TuExceptionStream ours(u"core/b", 2, std::runtime_error("torn"));
    const std::exception& hidden = ours;
    EXPECT_STREQ(TuExceptionPreconditionViolation(u"core/c", 3, hidden).what(),
        "TuExceptionPreconditionViolation at core/c(3); caused by TuExceptionStream at core/b(2): "
        "torn");
}

TEST(TuExceptionTest, ACauseThatCannotBeCopiedIsKeptAsTheNearestBaseAndStillNamesItsClass)
{
    const UncopyableFailure inner;
    const TuException outer(u"core/outer", 1, static_cast<const TuException&>(inner));
    EXPECT_STREQ(outer.what(),
        "TuException at core/outer(1); caused by UncopyableFailure at test/uncopyable(7)");
    EXPECT_EQ(&outer.GetCause()->GetRTTI(), &TuExceptionStream::RTTI);
}

TEST(TuExceptionTest, ACopyOnTheHeapCanBeShared)
{
    const TuExceptionStream caught(u"core/a", 1, u"torn");
    const TuSmartPointer<const TuException> kept(caught.Clone().release());
    const TuSmartPointer<const TuException> shared = kept;
    EXPECT_STREQ(TuException(*shared).what(), caught.what());
}

TEST(TuExceptionTest, EveryClassIsCopiedByItsOwnCloneFunction)
{
    const auto expectOwn = []<class Failure>(const Failure& failure, bool isCondition) {
        EXPECT_EQ(&failure.Clone()->GetRTTI(), &Failure::RTTI) << failure.what();
        EXPECT_TRUE(failure.IsKindOf(TuException::RTTI));
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
    EXPECT_NO_THROW(TuPreCondition<2>(u"holds", u"core/x", 5, [] { return true; }));
    ExpectFailure<TuExceptionPreconditionViolation>(
        [] { TuPreCondition<2>(u"fails", u"core/x", 5, [] { return false; }); }, u"core/x", 5);
    ExpectFailure<TuExceptionPostconditionViolation>(
        [] { TuPostCondition<2>(u"fails", u"core/x", 6, [] { return false; }); }, u"core/x", 6);
    EXPECT_NO_THROW(TuPreCondition<0>(u"never looked at", u"core/x", 7, [] { return false; }));
    EXPECT_THROW(TuPreCondition<2>(
                     u"throws", u"core/x", 8, []() -> bool { throw std::out_of_range("own"); }),
        std::out_of_range);
}

} // namespace
