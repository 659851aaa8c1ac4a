#include "tamesh/tameshstatistics.h"

#include "support/cancelinjection.h"
#include "tamesh/meshgenerator.h"

#include <gtest/gtest.h>

namespace {

using namespace tamesh;

TEST(TaMeshStatisticsTest, ABreakOrAFailedAllocationAnywhereLeavesItAsItWas)
{
    const Mesh mesh = MakeSphere(40, nullptr); // several polls in each walk
    const auto makeStatistics = [&mesh] {
        auto statistics = TuMake<TaMeshStatistics>();
        statistics->SetMesh(mesh);
        return statistics;
    };
    InjectCancels(makeStatistics, [](const TaMeshStatistics& statistics) {
        EXPECT_THROW(statistics.GetFigures(), TaAlgorithm::TaExceptionNoOutputData);
    });
}

TEST(TaMeshStatisticsTest, ProgressGoesFromTheStartToTheEnd)
{
    class Sink : public TaProgressSink
    {
    public:
        void onProgress(double fraction, const CString&) override
        {
            EXPECT_GT(fraction, last);
            EXPECT_LT(fraction, last + 0.05); // a walk is a tenth or more of it all
            EXPECT_LE(fraction, 1.0);
            last = fraction;
        }
        double last = 0.0;
    } sink;
    const Mesh mesh = MakeTerrain(100, nullptr);
    TaMeshStatistics statistics;
    EXPECT_FALSE(statistics.IsComputable());
    statistics.SetMesh(mesh);
    statistics.SetProgressSink(&sink);
    statistics.Compute(TaAlgorithm::eCF_Throw);
    EXPECT_EQ(sink.last, 1.0);
}

TEST(TaMeshStatisticsTest, WhatWasReadIsLetGoOf)
{
    const Mesh mesh = MakeSphere(3, nullptr);
    TaMeshStatistics statistics;
    statistics.SetMesh(mesh);
    statistics.Compute(TaAlgorithm::eCF_Throw);
    const auto recorded = WriteToBytes([&](auto& stream) { statistics.Serialize(stream); });

    TaMeshStatistics replayed;
    EXPECT_TRUE(ReadFromBytes(recorded, [&](auto& stream) { replayed.Serialize(stream); }));
    EXPECT_EQ(replayed.RunUnitTest(), TaUnitTest::eR_Passed);
    replayed.ReleaseUnitTestOutput();
    EXPECT_FALSE(replayed.CompareResult());
    replayed.ReleaseUnitTestInput();
    EXPECT_FALSE(replayed.IsComputable());
    EXPECT_FALSE(replayed.IsCalculated());

    statistics.ReleaseUnitTestInput(); // its mesh was not read
    EXPECT_TRUE(statistics.IsComputable());
}

} // namespace
