#include "tabase/taaalgorithm.h"

#include "groundwork/tuboxed.h"
#include "support/expectfailure.h"
#include "support/samplealgorithm.h"
#include "support/testlatch.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace {

TEST(TaAAlgorithmTest, AnIndexOutOfRangeFailsAtTheLineOfItsQuery)
{
    using Algorithm = const SampleAlgorithm&;
    const struct
    {
        unsigned int line;
        std::function<void(Algorithm)> query;
    } rows[] = {
        { 103, [](Algorithm a) { SampleAlgorithm(a).SetFlag(1, 0, true); } },
        { 104, [](Algorithm a) { SampleAlgorithm(a).SetFlag(0, 2, true); } },
        { 125, [](Algorithm a) { a.IsFlagSet(1, 2); } },
        { 126, [](Algorithm a) { a.IsFlagSet(0, 2); } },
        { 160, [](Algorithm a) { a.GetFlagTypeName(1); } },
        { 176, [](Algorithm a) { a.GetFlagCount(1); } },
        { 195, [](Algorithm a) { a.GetFlagName(1, 2); } },
        { 196, [](Algorithm a) { a.GetFlagName(0, 2); } },
        { 226, [](Algorithm a) { a.GetParameterName(1); } },
        { 242, [](Algorithm a) { a.GetParameterRTTI(1); } },
        { 272, [](Algorithm a) { a.GetInputTypeName(~0u); } },
        { 290, [](Algorithm a) { a.GetInputCount(2); } },
        { 307, [](Algorithm a) { a.GetInputName(2, 2); } },
        { 308, [](Algorithm a) { a.GetInputName(0, 2); } },
        { 325, [](Algorithm a) { a.GetInputRTTI(2, 0); } },
        { 326, [](Algorithm a) { a.GetInputRTTI(1, 0); } },
        { 374, [](Algorithm a) { a.GetOutputName(1); } },
        { 390, [](Algorithm a) { a.GetOutputRTTI(~0u); } },
    };
    const SampleAlgorithm algorithm;
    for (const auto& row : rows) {
        ExpectFailure<TuException>(
            [&] { row.query(algorithm); }, u"core/talibraries/tabase/taaalgorithm", row.line);
    }
}

TEST(TaAAlgorithmTest, QueriesAnswerInTheOrderOfDeclaration)
{
    const SampleAlgorithm algorithm;
    const auto* const described = dynamic_cast<const IAlgorithm*>(
        static_cast<const TaAlgorithm&>(algorithm).GetExtension(IAlgorithm::kExtensionName, true));
    ASSERT_NE(described, nullptr);
    EXPECT_EQ(described->GetFlagTypeCount() + described->GetParameterCount(), 2u);
    EXPECT_EQ(described->GetInputTypeCount() + described->GetOutputCount(), 3u);
    EXPECT_EQ(CString(described->GetInputName(0, 1)), u"Last");
    EXPECT_EQ(described->GetInputCount(1), 0u);
    EXPECT_EQ(&described->GetParameterRTTI(0), &TuUInt32::RTTI);
    EXPECT_EQ(&described->GetOutputRTTI(0), &TuInt64::RTTI);
    EXPECT_EQ(SampleAlgorithm().GetExtension("unknown", false), nullptr);
    EXPECT_THROW(SampleAlgorithm().GetExtension("unknown", true), TuExceptionUnknownExtension);
}

TEST(TaAAlgorithmTest, FlagsAreThoseOfTheAlgorithmAlsoInACopy)
{
    SampleAlgorithm algorithm;
    algorithm.SetFlag(0, 0, true);
    algorithm.SetFlag(0, 1, true);
    SampleAlgorithm copy = algorithm;
    copy.SetFlag(0, 1, false);
    EXPECT_EQ(copy.GetFlags(), SampleAlgorithm::eF_RecordUnitTest);
    EXPECT_TRUE(algorithm.IsFlagSet(0, 1));
    algorithm = copy;
    algorithm.SetFlag(0, 0, false);
    EXPECT_EQ(algorithm.GetFlags(), 0u);
    EXPECT_TRUE(copy.IsFlagSet(0, 0));
}

TEST(TaAAlgorithmTest, TheDescriptionIsMadeOnceWhenItIsFirstAskedFor)
{
    SampleAlgorithm algorithm;
    int made = 0; // under the lock of the algorithm
    algorithm.onStage = [&](SampleAlgorithm::EStage) {
        EXPECT_EQ(algorithm.GetParameterCount(), 1u); // what has been defined so far
        EXPECT_EQ(algorithm.GetOutputCount(), 0u);
        ++made;
        return true;
    };
    TestLatch start(4);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            EXPECT_EQ(algorithm.GetOutputCount(), 1u);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(made, 1);
}

TEST(TaAAlgorithmTest, ADescriptionThatFailsIsMadeAnew)
{
    SampleAlgorithm algorithm;
    algorithm.onStage = [](SampleAlgorithm::EStage) -> bool { throw std::runtime_error("no"); };
    EXPECT_THROW(algorithm.GetParameterCount(), std::runtime_error);
    algorithm.onStage = [](SampleAlgorithm::EStage) { return true; };
    EXPECT_EQ(algorithm.GetParameterCount(), 1u);
    EXPECT_EQ(algorithm.GetOutputCount(), 1u);

    TaAAlgorithm::InterfaceDescription description(algorithm);
    EXPECT_THROW(description.DefineInput(u"a", TuInt32::RTTI), TuExceptionPreconditionViolation);
    EXPECT_THROW(description.DefineFlag(u"a", 1), TuExceptionPreconditionViolation);
    EXPECT_THROW(description.DefineFlagType(u"a", nullptr), TuExceptionPreconditionViolation);
}

} // namespace
