#include "tabase/tagraph.h"

#include "groundwork/tustreamwriteasciistring.h"
#include "support/allocationfailure.h"
#include "support/expectfailure.h"
#include "support/testlatch.h"
#include "support/testrandom.h"
#include "tabase/taheap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
#include <thread>
#include <vector>

namespace {

using Connection = TaGraphConnection;

TaGraphNode* insert(TaGraph& graph, const char16_t* name = u"")
{
    auto* const node = new TaGraphNode(name);
    graph.InsertNode(node);
    return node;
}

const auto expectRefusal
    = [](const auto& action) { ExpectFailure<TuExceptionPreconditionViolation>(action); };

TEST(TaGraphTest, NumbersAreStaleUntilTheTextCountsAnewAndDotTakesThemAsTheyAre)
{
    TaGraph graph;
    const auto dump = [&](int directed) {
        TuStreamWriteASCIIStringT<CString> stream;
        directed < 0 ? graph.Dump(stream) : graph.DumpDot(stream, directed != 0);
        return stream.GetText().ToUtf8();
    };
    EXPECT_EQ(dump(0) + dump(-1), "graph G {\r\n}\r\n\nDer Graph enthält 0 Knoten\n\n\n");
    TaGraphNode* const gone = insert(graph);
    TaGraphNode* const a = insert(graph, u"A");
    TaGraphNode* const b = insert(graph, u"B b");
    graph.RemoveNode(*insert(graph)); // the last one
    EXPECT_TRUE(graph.AreIndicesValid());
    graph.RemoveNode(*gone);
    EXPECT_EQ(graph.FindNode(0), nullptr);
    TaGraphNode* const c = insert(graph, u"C"); // has the number of B
    EXPECT_EQ(graph.FindNode(2), b);
    graph.RemoveNode(*insert(graph));
    EXPECT_FALSE(graph.AreIndicesValid());
    b->AddConnection(*a, 0.1F);
    a->AddConnection(*b, 2.5F);
    a->AddConnection(*a, -1.0F);
    c->AddConnection(*b, 5.0F);
    EXPECT_EQ(dump(1),
        "digraph G {\r\nA -> A [label = \"-1\"];\r\nA -> B b [label = \"2.5\"];\r\n"
        "B b -> A [label = \"0.1\"];\r\nC -> B b [label = \"5\"];\r\n}\r\n");
    EXPECT_EQ(dump(0),
        "graph G {\r\nA -- A [label = \"-1\"];\r\nA -- B b [label = \"2.5\"];\r\n"
        "C -- B b [label = \"5\"];\r\n}\r\n");
    EXPECT_EQ(dump(-1),
        "\nDer Graph enthält 3 Knoten\n\nKnoten 0:\n\tVerbindung zu Knoten 0 mit Gewicht -1\n"
        "\tVerbindung zu Knoten 1 mit Gewicht 2.5\nKnoten 1:\n\tVerbindung zu Knoten 0 mit Gewicht "
        "0.1\nKnoten 2:\n\tVerbindung zu Knoten 1 mit Gewicht 5\n\n");
    graph.RemoveNode(*a);
    graph.RemoveAllNodes();
    EXPECT_TRUE(graph.AreIndicesValid());
    EXPECT_EQ(insert(graph)->GetWeight(), 3.4028235e38F);
}

TEST(TaGraphTest, NothingLeadsToANodeOrConnectionThatIsGone)
{
    auto graph = std::make_unique<TaGraph>();
    TaGraph other;
    TaGraphNode free; // in no graph
    TaGraphNode* const a = insert(*graph);
    TaGraphNode* const b = insert(*graph);
    TaGraphNode* const c = insert(*graph);
    TaGraphNode* const d = insert(other);
    const TuSmartPointer<Connection> held(&a->AddConnection(*b, 1.0F));
    for (TaGraphNode* const end : { b, d, &free }) {
        end->AddConnection(*end, 3.0F);
        end->AddConnection(*c, 1.0F);
        c->AddConnection(*end, 2.0F);
    }
    a->SetNextNodeOnPath(b);
    b->SetNextNodeOnPath(c);
    c->SetPreviousNodeOnPath(a); // these two this way only
    a->SetPreviousNodeOnPath(b);
    graph->RemoveNode(*b);
    EXPECT_FALSE(held->IsConnected());
    expectRefusal([&] { held->GetNode(Connection::eNT_Source); });
    held->SetWeight(5.0F);
    TaGraphConnectionList own;
    own.AddConnection(held);
    const TuSmartPointer<Connection> equal(&d->AddConnection(*d, 5.0F));
    EXPECT_TRUE(*held == equal && !own.RemoveConnection(equal) && own.RemoveConnection(held));
    EXPECT_EQ(a->GetOutgoingConnections().GetCount(), 0u);
    EXPECT_EQ(c->GetOutgoingConnections().GetCount(), 2u);
    EXPECT_EQ(c->GetIncomingConnections().GetCount(), 2u);
    EXPECT_TRUE(a->GetNextNodeOnPath() == nullptr && a->GetPreviousNodeOnPath() == nullptr);
    EXPECT_EQ(c->GetPreviousNodeOnPath(), a);
    a->SetNextNodeOnPath(c);
    a->SetNextNodeOnPath(nullptr);
    EXPECT_EQ(c->GetPreviousNodeOnPath(), nullptr);
    graph.reset();
    EXPECT_EQ(d->GetOutgoingConnections().GetCount(), 2u);
    EXPECT_EQ(free.GetIncomingConnections().GetCount(), 1u);
}

TEST(TaGraphTest, MisuseAndAFailedAllocationChangeNothing)
{
    TaGraph graph;
    TaGraph other;
    TaGraphNode* const a = insert(graph);
    auto* const b = new TaGraphNode;
    const auto& connections = a->GetOutgoingConnections();
    for (unsigned int number = 1; connections.IsEmpty(); ++number) {
        const AllocationFailure failure(number);
        try {
            b->GetGraph() == nullptr ? other.InsertNode(b) : void(a->AddConnection(*b, 1.0F));
            number = 0;
        } catch (const std::exception&) {
            EXPECT_EQ(other.GetCount(), unsigned(b->GetGraph() != nullptr));
            EXPECT_TRUE(connections.IsEmpty());
        }
    }
    expectRefusal([&] { graph.InsertNode(nullptr); });
    expectRefusal([&] { graph.InsertNode(a); });
    expectRefusal([&] { other.InsertNode(a); });
    expectRefusal([&] { other.RemoveNode(*a); });
    expectRefusal([&] { other.SetBranch(*a, 1); });
    EXPECT_EQ(graph.GetCount() + other.GetCount(), 2u);
}

TEST(TaGraphTest, ManyConnectionsToOneNodeTakeTheirPlacesAtOnceInAnyOrder)
{
    constexpr int kCount = 100000;
    auto random = MakeTestRandom();
    TaGraph graph;
    TaGraphNode* const hub = insert(graph);
    std::vector<Connection*> connections;
    for (int i = 0; i != 2 * kCount; ++i) {
        const auto weight = float(i < kCount ? kCount - i : int(random() % kCount));
        connections.push_back(&insert(graph)->AddConnection(*hub, weight));
    }
    for (Connection* connection : connections) {
        connection->SetWeight(-connection->GetWeight());
    }
    const auto& list = hub->GetIncomingConnections();
    EXPECT_TRUE(std::is_sorted(list.begin(), list.end(), TaGraphConnectionLess()));
    graph.RemoveNode(*hub);
}

TEST(TaGraphTest, SeveralReadersMayBeTheFirstToLookAtAListThatHasBeenFilled)
{
    constexpr int kReaders = 4;
    auto random = MakeTestRandom();
    TaGraph graph;
    TaGraphNode* const hub = insert(graph);
    for (int round = 0; round != 40; ++round) {
        for (int count = round % 2 == 0 ? 5 : 100; count != 0; --count) {
            hub->AddConnection(*hub, float(random() % 1000));
        }
        std::atomic<int> successes = 0;
        TestLatch start(kReaders);
        std::vector<std::jthread> threads;
        for (int i = 0; i != kReaders; ++i) {
            threads.emplace_back([&] {
                start.arrive_and_wait();
                for (const auto* list :
                    { &hub->GetOutgoingConnections(), &hub->GetIncomingConnections() }) {
                    successes
                        += int(std::is_sorted(list->begin(), list->end(), TaGraphConnectionLess()));
                }
            });
        }
        threads.clear();
        ASSERT_EQ(successes, 2 * kReaders) << round;
    }
}

TEST(TaGraphTest, AttributesStayWithTheirNodesWhileTheirMemoryGrowsAndIsUsedAgain)
{
    const TaAttributePolicyConstruct zero;
    const auto added = TuMake<TaAttributeDefinition>(u"added", 13u, zero);
    TaGraph graph;
    std::vector<TaGraphNode*> nodes;
    const auto growAndCheck = [&](std::uint32_t count) {
        while (nodes.size() < count) {
            nodes.push_back(insert(graph));
            ASSERT_EQ(graph.GetBranch(*nodes.back()), 0u); // also in a slot that was in use
            graph.SetBranch(*nodes.back(), std::uint32_t(nodes.size()));
        }
        for (std::uint32_t i = 0; i != nodes.size(); ++i) {
            ASSERT_EQ(graph.GetBranch(*nodes[i]), i + 1);
        }
    };
    growAndCheck(10001);
    expectRefusal([&] { graph.Assert(*added); });
    graph.AddAttribute(added);
    for (; nodes.size() > 5000; nodes.pop_back()) {
        graph.RemoveNode(*nodes.back());
    }
    growAndCheck(25001);
    EXPECT_TRUE(graph.Has(TaGraph::eNA_Branch) && graph.Has(*added));
    graph.RemoveAllNodes();
    nodes.clear();
    growAndCheck(3);
}

TEST(TaHeapTest, TakesElementsOfItsOwnAndIsOfUseAgainWhenEmptied)
{
    TaHeap<TaHeapElementSimple<std::uint32_t, float>, TaHeapPolicyPrecedenceMin,
        TaHeapPolicyOperatorUpdatable>
        heap;
    heap.SetNodeCount(3);
    heap.PushOrUpdate(2, 5.0F);
    heap.PushOrUpdate(0, 7.0F);
    heap.PushOrUpdate(0, 4.0F);
    EXPECT_EQ(heap.GetTop().node, 0u);
    heap.RemoveAll();
    EXPECT_FALSE(heap.Contains(0) || heap.Contains(2));
    heap.PushOrUpdate(2, 9.0F);
    EXPECT_EQ(heap.Pop().key, 9.0F);

    TaHeap<TaHeapElementSimple<int, float>> own;
    own.Push({ 1, 3.0F });
    for (int i = 0; i != 100; ++i) {
        own.Push(own.GetTop()); // while the memory moves
    }
    while (!own.IsEmpty()) {
        ASSERT_EQ(own.Pop().key, 3.0F);
    }
}

} // namespace
