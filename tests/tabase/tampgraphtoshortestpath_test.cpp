#include "tabase/tampgraphtoshortestpath.h"

#include "groundwork/tuevent.h"
#include "support/expectfailure.h"
#include "tabase/tagraph.h"
#include "tabase/taprogresssink.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace {

constexpr char kNoPath[] = "TuException at core/talibraries/tabase/tampgraphtoshortestpath(162)";

/// A graph of nodes a, b, c, ..., and a search in it.
class TaMpGraphToShortestPathTest : public testing::Test, public TaProgressSink
{
protected:
    TaGraphNode& at(int name)
    {
        while (int(m_nodes.size()) <= name - 'a') {
            m_nodes.emplace_back(new TaGraphNode)->AddAttributes(1);
            m_graph.InsertNode(m_nodes.back());
        }
        return *m_nodes[std::size_t(name - 'a')];
    }
    void connect(const std::vector<std::tuple<char, char, float>>& connections)
    {
        for (const auto& [from, to, weight] : connections) {
            at(from).AddConnection(at(to), weight);
        }
    }
    /// The names along the path; or why there is none.
    std::string search(int from, int to)
    {
        m_progress = 0.0;
        m_polls = 0;
        m_search.SetInput(&m_graph, &at(from), &at(to));
        std::string path;
        if (m_search.Compute(TaAlgorithm::eCF_None)) {
            for (const TaGraphNode& node : m_search.GetOutput()) {
                path += char('a' + node.GetIndex() % 26);
            }
        } else {
            path = m_search.GetException()->what();
            ExpectFailure<TaAlgorithm::TaExceptionNoOutputData>(
                [&] { m_search.GetOutput(); }, u"core/talibraries/tabase/taalgorithm", 531);
        }
        for (TaGraphNode* node : m_nodes) {
            EXPECT_FALSE(node->HasAttributes(1));
            node->AddAttributes(1);
        }
        return path;
    }
    void onProgress(double fraction, const CString&) override
    {
        EXPECT_TRUE(m_progress <= fraction && fraction <= 1.0) << fraction;
        m_progress = fraction;
        if (2 * ++m_polls == m_last) {
            m_event.Set();
        } else if (2 * m_polls + 1 == m_last) {
            throw std::runtime_error("no more");
        }
    }

    TaGraph m_graph;
    std::vector<TaGraphNode*> m_nodes;
    TaMpGraphToShortestPath m_search;
    TuEvent m_event{ true };
    double m_progress = 0.0;
    int m_polls = 0;
    int m_last = 0; // twice the poll that ends it all, and 1 where it throws
};

TEST_F(TaMpGraphToShortestPathTest, TheFirstOfEqualWaysStaysAndTheEndOnceTakenIsTheEnd)
{
    connect({ { 'a', 'b', 1 }, { 'a', 'c', 1 }, { 'c', 'd', 1 }, { 'b', 'd', 1 }, { 'a', 'e', 2 },
        { 'e', 'd', -5 }, { 'a', 'f', 3 }, { 'f', 'e', -2 }, { 'e', 'g', 10 }, { 'h', 'h', -1 },
        { 'a', 'i', TaGraphNode::GetInitialWeight() }, { 'e', 'i', HUGE_VALF } });
    EXPECT_EQ(search('a', 'g'), "afeg"); // e is taken twice
    connect({ { 'f', 'j', -2 }, { 'j', 'e', -1 } });
    EXPECT_EQ(search('a', 'g'), "afjeg");
    EXPECT_EQ(at('e').GetPreviousNodeOnPath(), &at('j')); // although it came behind f before
    EXPECT_EQ(search('a', 'd'), "abd"); // before e comes into play
    EXPECT_EQ(search('d', 'a'), kNoPath);
    EXPECT_EQ(at('d').GetPreviousNodeOnPath(), nullptr);
    EXPECT_EQ(at('e').GetNextNodeOnPath(), &at('g')); // as it was
    EXPECT_EQ(search('a', 'i'), kNoPath);
    EXPECT_EQ(at('d').GetWeight(), -5.0F);
    EXPECT_EQ(search('h', 'h'), "h");
    EXPECT_FALSE(m_search.Compute(TaAlgorithm::eCF_None)); // once per input
    m_search.SetBreakEvent(m_event);
    m_event.Set();
    EXPECT_NE(search('h', 'h'), "h"); // however little there is to do
    TaGraphNode foreign;
    m_search.SetInput(&m_graph, &at('a'), &foreign);
    const auto compute = [&] { m_search.Compute(TaAlgorithm::eCF_Throw); };
    ExpectFailure<TuExceptionPreconditionViolation>(compute);
}

TEST_F(TaMpGraphToShortestPathTest, OnlyACycleThatIsGoneRoundForEverIsRefused)
{
    connect({ { 'a', 'b', 1 }, { 'b', 'c', -2 }, { 'c', 'b', 1 }, { 'a', 'd', 100 },
        { 'e', 'e', -1 }, { 'f', 'g', 1 }, { 'g', 'h', -HUGE_VALF }, { 'h', 'g', 1 },
        { 'h', 'i', 1 }, { 'a', 'j', 0 } });
    // Away from the start, through it, and one that ends the search, but not the way back.
    for (const std::string ends : { "ad", "bd", "ea", "fi" }) {
        EXPECT_NE(search(ends[0], ends[1]).find("cycle"), std::string::npos) << ends;
    }
    EXPECT_EQ(search('a', 'j'), "aj"); // the end comes first

    // Each has a step straight on, and a costly one that turns out cheaper, after all behind it.
    constexpr int kDiamonds = 11;
    for (int i = 0; i != kDiamonds; ++i) {
        const float costly = float(1 << (2 * (kDiamonds - i)));
        const float gain = float(1 << (kDiamonds - i));
        at('l' + 2 * i).AddConnection(at('l' + 2 * i + 2), 0.0F);
        at('l' + 2 * i).AddConnection(at('l' + 2 * i + 1), costly);
        at('l' + 2 * i + 1).AddConnection(at('l' + 2 * i + 2), -costly - gain);
    }
    at('l').AddConnection(at('k'), 1e9F);
    EXPECT_EQ(search('l', 'k'), "lk");
    EXPECT_EQ(at('l' + 2 * kDiamonds).GetWeight(), float(2 - (2 << kDiamonds)));
}

TEST_F(TaMpGraphToShortestPathTest, ABreakOrFailureAnywhereIsNoResultAndProgressOnlyGrows)
{
    constexpr int kLast = 'a' + 20000;
    for (int i = 'a'; i != kLast; ++i) {
        at(i).AddConnection(at(i + 1), i == 5000 ? -1.0F : 1.0F);
    }
    const TuSmartPointer<TaGraphConnection> altered(
        at(kLast - 1).GetOutgoingConnections().GetHead());
    const TuSmartPointer<TaGraphConnection> before(
        at(kLast - 2).GetOutgoingConnections().GetHead());
    m_search.SetBreakEvent(m_event);
    m_search.SetProgressSink(this);
    search('a', kLast);
    const int polls = m_polls;
    EXPECT_TRUE(polls >= 15 && m_progress > 0.95);
    for (int i = 4; i < 4 * polls + 4; ++i) {
        const int last = i / 2;
        m_last = last;
        altered->SetWeight(float(last));
        before->SetWeight(float(i));
        if (i % 2 == 0) {
            m_graph.InsertNode(m_nodes.emplace_back(new TaGraphNode)); // so that all is done anew
        } else {
            for (int each = kLast; each != kLast - 2400; --each) { // so that many rows are merged
                i % 4 == 1 ? void(at(each).AddConnection(at('a'), 1.0F))
                           : at(each).RemoveConnection(at('a'));
            }
        }
        EXPECT_TRUE(search('a', kLast) != kNoPath) << last;
        EXPECT_EQ(m_search.IsCalculated(), m_polls < last / 2) << last;
        m_last = 0;
        m_event.Reset();
        at(kLast - 2000).AddConnection(at('a'), 1.0F);
        altered->SetWeight(float(last + 1));
        search('a', kLast);
        EXPECT_EQ(at(kLast).GetWeight(), float(19997 + last + i));
    }
}

} // namespace
