#pragma once

#include "support/allocationfailure.h"
#include "support/memorystreams.h"
#include "tabase/taalgorithm.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// Counts the polls of a run, and sets its event at one of them.
class BreakAtPoll final : public TaProgressSink
{
public:
    /// Counted from 1; 0 for never.
    explicit BreakAtPoll(unsigned int poll)
        : m_poll(poll)
    {
    }
    void onProgress(double, const CString&) override
    {
        if (++m_polls == m_poll) {
            m_event.Set();
        }
    }
    unsigned int GetPolls() const { return m_polls; }
    const TuEvent& GetEvent() const { return m_event; }

private:
    TuEvent m_event{ true };
    unsigned int m_poll;
    unsigned int m_polls = 0;
};

inline std::string GetFailureText(const TaAlgorithm& algorithm)
{
    const TuSmartPointer<const TuException> failure = algorithm.GetException();
    return failure.IsNull() ? "nothing was kept" : failure->what();
}

/// Expects of an algorithm whose run ended early that it has no result, and that it comes to the
/// right one when it is run again; returns what it comes to, as it is recorded.
inline std::vector<unsigned char> ExpectGoodRun(TaAlgorithm& algorithm)
{
    EXPECT_FALSE(algorithm.IsCalculated());
    algorithm.SetProgressSink(nullptr);
    algorithm.ClearBreakEvent();
    EXPECT_TRUE(algorithm.Compute(TaAlgorithm::eCF_None)) << GetFailureText(algorithm);
    EXPECT_TRUE(algorithm.IsCalculated());
    EXPECT_TRUE(algorithm.GetException().IsNull());
    return WriteToBytes([&](auto& stream) { algorithm.SerializeUnitTestOutput(stream); });
}

/// Runs an algorithm once per poll with the break set there, and once per allocation (see
/// AllocationFailure) with a failure there.
///
/// `makeAlgorithm` returns a pointer to a new one, ready to run, that polls and records its output;
/// `checkUnchangedInputs` is handed it after the run that ended early.
template <class Make, class Check>
void InjectCancels(const Make& makeAlgorithm, const Check& checkUnchangedInputs)
{
    const std::vector<unsigned char> result = ExpectGoodRun(*makeAlgorithm());
    BreakAtPoll counter(0);
    const auto counted = makeAlgorithm();
    counted->SetProgressSink(&counter);
    ASSERT_TRUE(counted->Compute(TaAlgorithm::eCF_None)) << GetFailureText(*counted);
    ASSERT_GT(counter.GetPolls(), 0u);

    for (unsigned int poll = 1; poll <= counter.GetPolls(); ++poll) {
        SCOPED_TRACE("the break comes at poll " + std::to_string(poll));
        const auto algorithm = makeAlgorithm();
        BreakAtPoll sink(poll);
        algorithm->SetProgressSink(&sink);
        algorithm->SetBreakEvent(sink.GetEvent());
        EXPECT_FALSE(algorithm->Compute(TaAlgorithm::eCF_None));
        EXPECT_LE(sink.GetPolls(), poll + 1);
        const TuSmartPointer<const TuException> failure = algorithm->GetException();
        ASSERT_FALSE(failure.IsNull());
        EXPECT_TRUE(failure->Is(TuExceptionPostconditionViolation::RTTI)) << failure->what();
        EXPECT_EQ(failure->GetLine(), 394u);
        checkUnchangedInputs(*algorithm);
        EXPECT_EQ(ExpectGoodRun(*algorithm), result);
    }

    for (unsigned int number = 1;; ++number) {
        SCOPED_TRACE("allocation " + std::to_string(number) + " fails");
        const auto algorithm = makeAlgorithm();
        bool hasSucceeded = false;
        {
            const AllocationFailure failure(number);
            hasSucceeded = algorithm->Compute(TaAlgorithm::eCF_None);
            if (!failure.HasHappened()) {
                break;
            }
        }
        ASSERT_FALSE(hasSucceeded);
        EXPECT_FALSE(algorithm->GetException().IsNull());
        checkUnchangedInputs(*algorithm);
        EXPECT_EQ(ExpectGoodRun(*algorithm), result);
    }
}
