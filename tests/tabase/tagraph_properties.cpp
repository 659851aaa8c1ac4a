#include "tabase/tagraph.h"
#include "tabase/taheap.h"
#include "tabase/tampgraphtoshortestpath.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <random>
#include <utility>
#include <vector>

namespace {

using Connection = TaGraphConnection;

RC_GTEST_PROP(TaGraphProperties, BothListsAreInTheOrderOfABubbleSortWheneverSomebodyLooks, ())
{
    using Model = std::vector<Connection*>;
    const std::vector<float> weights{ -1, -0.0F, 0, 1, 2, 3, HUGE_VALF, NAN, NAN, NAN };
    const std::size_t weightCount = *rc::gen::element(4u, 7u, 10u);
    std::mt19937 random(*rc::gen::arbitrary<unsigned int>());
    const auto roll = [&](std::size_t count) { return std::size_t(random() % count); };
    TaGraph graph;
    const std::array<TaGraphNode*, 2> nodes{ new TaGraphNode, new TaGraphNode };
    std::for_each(nodes.begin(), nodes.end(), [&](TaGraphNode* node) { graph.InsertNode(node); });
    std::map<const TaGraphConnectionList*, Model> models;
    const auto modelsOf = [&](TaGraphNode& from, TaGraphNode& to) {
        return std::array<Model*, 2>{ &models[&from.GetOutgoingConnections()],
            &models[&to.GetIncomingConnections()] };
    };
    const auto next = [](Model& model) {
        return std::adjacent_find(model.begin(), model.end(),
            [](const auto* a, const auto* b) { return b->GetWeight() < a->GetWeight(); });
    };
    const std::size_t stepsPerLook = *rc::gen::element(1u, 6u, 50u);
    // Lists of more than 128 have an index.
    std::size_t prefill = *rc::gen::element(0u, 8u, 250u, 560u);
    for (std::size_t steps = prefill + *rc::gen::inRange(1u, 300u); steps != 0; --steps) {
        TaGraphNode& from = *nodes[roll(2)];
        TaGraphNode& to = *nodes[roll(2)];
        const float weight = weights[roll(prefill > 20 ? 7 : weightCount)];
        const std::size_t kind = prefill != 0 ? 0 : roll(8);
        prefill -= prefill != 0;
        const Model list = *modelsOf(from, to)[0];
        if (kind < 3) {
            Connection& added = from.AddConnection(to, weight);
            for (Model* const model : modelsOf(from, to)) {
                const auto last = std::find_if(model->rbegin(), model->rend(),
                    [&](const Connection* each) { return !(weight < each->GetWeight()); });
                model->insert(last.base(), &added);
            }
        } else if (kind < 6 && !list.empty()) {
            Connection& changed = *list[roll(list.size())];
            const bool isEqual = changed.GetWeight() == weight;
            changed.SetWeight(weight);
            for (Model* const model : modelsOf(from, changed.GetNode(Connection::eNT_Target))) {
                for (auto i = next(*model); !isEqual && i != model->end(); i = next(*model)) {
                    std::iter_swap(i, i + 1);
                }
            }
        } else if (kind == 7 && roll(12) == 0) {
            for (auto& [real, model] : models) {
                std::erase_if(model, [&](const Connection* each) {
                    return each->GetNode(Connection::eNT_Source) == from;
                });
            }
            from.RemoveAllConnections();
        } else {
            const auto first = std::find_if(list.begin(), list.end(),
                [&](Connection* each) { return each->GetNode(Connection::eNT_Target) == to; });
            for (Model* const model : modelsOf(from, to)) {
                std::erase(*model, first != list.end() ? *first : nullptr);
            }
            from.RemoveConnection(to);
        }
        if (steps != 1 && roll(stepsPerLook) != 0) {
            continue;
        }
        for (const auto& [real, model] : models) {
            RC_ASSERT(std::equal(model.begin(), model.end(), real->begin(), real->end(),
                [](const Connection* a, const auto& b) { return a == b.Get(); }));
        }
    }
}

RC_GTEST_PROP(
    TaHeapProperties, GivesTheLargestKeyFirst, (std::vector<std::pair<unsigned, int>> steps))
{
    TaHeap<TaHeapElementSimple<unsigned int, int>, TaHeapPolicyPrecedenceMax,
        TaHeapPolicyOperatorUpdatable>
        heap;
    heap.SetNodeCount(8);
    std::map<unsigned int, int> keys;
    for (const auto& [number, key] : steps) {
        const unsigned int node = number % 12;
        if (node < 8 && (!keys.contains(node) || key >= keys[node])) {
            heap.PushOrUpdate(node, keys[node] = key);
        } else if (!keys.empty()) {
            const auto first = heap.Pop();
            RC_ASSERT(keys[first.node] == first.key);
            RC_ASSERT(std::all_of(keys.begin(), keys.end(),
                [&](const auto& each) { return each.second <= first.key; }));
            keys.erase(first.node);
        }
        RC_ASSERT(heap.GetCount() == keys.size());
    }
}

/// The rule of the search, step by step over the lists.
struct SSearchModel
{
    using Heap = TaHeap<TaHeapElementSimple<TaGraphNode*, float>, TaHeapPolicyPrecedenceMin,
        TaHeapPolicyOperatorUpdatable>;

    std::vector<float> weights;
    std::vector<TaGraphNode*> path; // empty where there is none
    bool hasCycle = false;

    SSearchModel(const TaGraph& graph, TaGraphNode* start, TaGraphNode* end)
        : weights(graph.GetCount(), TaGraphNode::GetInitialWeight())
    {
        std::vector<TaGraphNode*> predecessors(weights.size());
        const auto walkBack = [&](TaGraphNode* node) {
            path.clear();
            for (; node != nullptr && !hasCycle; node = predecessors[node->GetIndex()]) {
                path.insert(path.begin(), node);
                hasCycle = path.size() > weights.size();
            }
        };
        std::size_t relaxations = 0;
        Heap heap;
        heap.SetNodeCount(weights.size());
        weights[start->GetIndex()] = 0.0F;
        heap.Push({ start, 0.0F });
        while (!heap.IsEmpty() && heap.GetTop().node != end) {
            TaGraphNode* const node = heap.Pop().node;
            for (const auto& connection : node->GetOutgoingConnections()) {
                TaGraphNode* const target = &connection->GetNode(Connection::eNT_Target);
                const float sum = weights[node->GetIndex()] + connection->GetWeight();
                if (target->GetGraph() != &graph || !(weights[target->GetIndex()] > sum)) {
                    continue;
                }
                weights[target->GetIndex()] = sum;
                predecessors[target->GetIndex()] = node;
                heap.PushOrUpdate(target, sum);
                if (++relaxations % weights.size() == 0) {
                    std::for_each(graph.GetNodes().begin(), graph.GetNodes().end(), walkBack);
                    if (hasCycle) {
                        return;
                    }
                }
            }
        }
        predecessors[start->GetIndex()] = nullptr;
        walkBack(weights[end->GetIndex()] != TaGraphNode::GetInitialWeight() ? end : nullptr);
    }
};

RC_GTEST_PROP(TaMpGraphToShortestPathProperties, SearchesByItsRuleAlsoInAGraphThatChanges, ())
{
    const int firstNegative = *rc::gen::element(0, 10, 20); // round that may add weights below 0
    const std::size_t size = *rc::gen::element(60u, 250u, 500u);
    std::mt19937 random(*rc::gen::arbitrary<unsigned int>());
    const auto roll = [&](std::size_t count) { return std::size_t(random() % count); };
    int round = 0;
    const auto makeWeight = [&] {
        return roll(20) == 0 ? NAN : float(int(roll(8)) - (round < firstNegative ? 0 : 2));
    };
    TaGraph other;
    TaGraph graph;
    std::vector<TaGraphNode*> nodes; // of both; the first is the other graph's
    std::map<const TaGraphNode*, float> weights; // which stay while the graph changes
    const auto insert = [&](TaGraph& into) {
        into.InsertNode(nodes.emplace_back(new TaGraphNode));
        weights[nodes.back()] = TaGraphNode::GetInitialWeight();
    };
    insert(other);
    insert(graph);
    TaMpGraphToShortestPath search;
    for (; round != 20; ++round) {
        // Few rows change, or more than an eighth; with the same nodes, or with others.
        const bool doNodesChange = roll(3) == 0;
        const std::size_t most = round == 0 ? size : *rc::gen::element(4u, 4u, 30u);
        for (std::size_t change = roll(most); change != 0; --change) {
            TaGraphNode* const node = nodes[roll(1 + roll(nodes.size()))]; // some change often
            const TaGraphConnectionList& list = node->GetOutgoingConnections();
            const std::size_t kind = round == 0 ? roll(20) : doNodesChange ? roll(10) : 2 + roll(8);
            if (kind == 0 || kind > 15) {
                insert(graph);
            } else if (kind == 1 && node->GetGraph() == &graph && graph.GetCount() > 1) {
                std::erase(nodes, node);
                weights.erase(node);
                graph.RemoveNode(*node);
            } else if (kind < 4 && !list.IsEmpty()) {
                node->RemoveConnection(list.GetTail()->GetNode(Connection::eNT_Target));
            } else if (kind > 3 && kind < 7 && !list.IsEmpty()) {
                TuSmartPointer<Connection>(roll(2) != 0 ? list.GetHead() : list.GetTail())
                    ->SetWeight(makeWeight());
            } else {
                node->AddConnection(*nodes[roll(nodes.size())], makeWeight());
            }
        }
        if (roll(2) != 0) {
            graph.CreateIndices();
        }
        for (TaGraphNode* node : nodes) {
            RC_ASSERT(node->GetWeight() == weights[node]);
            node->AddAttributes(std::uint32_t(2 + roll(2)));
        }
        TaGraphNode* const start = nodes[1 + roll(nodes.size() - 1)];
        TaGraphNode* const end = nodes[1 + roll(nodes.size() - 1)];
        search.SetInput(&graph, start, end);
        const bool isFound = search.Compute(TaAlgorithm::eCF_None);
        const SSearchModel model(graph, start, end);
        for (const TaGraphNode* node : graph.GetNodes()) {
            RC_ASSERT(node->GetWeight() == model.weights[node->GetIndex()]);
            RC_ASSERT(!node->HasAttributes(1) && node->HasAttributes(2));
            weights[node] = node->GetWeight();
        }
        graph.RemoveAttributes(2);
        RC_ASSERT(!start->HasAttributes(2));
        RC_ASSERT(isFound == (!model.path.empty() && !model.hasCycle));
        // The textbook, for weights that are not negative: as many rounds as there are nodes.
        std::vector<double> sums(graph.GetCount(), HUGE_VAL);
        sums[start->GetIndex()] = 0.0;
        for (std::size_t i = 0; i != sums.size() * sums.size(); ++i) {
            const TaGraphNode& node
                = **std::next(graph.GetNodes().begin(), std::ptrdiff_t(i % sums.size()));
            for (const auto& connection : node.GetOutgoingConnections()) {
                const TaGraphNode& target = connection->GetNode(Connection::eNT_Target);
                const double sum = sums[node.GetIndex()] + double(connection->GetWeight());
                double& best = sums[target.GetIndex()];
                best = target.GetGraph() == &graph && sum < best ? sum : best;
            }
        }
        const double sum = std::min(sums[end->GetIndex()], double(TaGraphNode::GetInitialWeight()));
        RC_ASSERT(round >= firstNegative || double(end->GetWeight()) == sum);
        if (isFound) {
            TaGraphPathIterator output = search.GetOutput();
            const auto isNext = [&](TaGraphNode* node) { return &output.NextElement() == node; };
            RC_ASSERT(std::all_of(model.path.begin(), model.path.end(), isNext));
            RC_ASSERT_THROWS_AS(output.NextElement(), TuExceptionPreconditionViolation);
            output.SetDirection(TaGraphPathIterator::eD_Backward);
            RC_ASSERT(std::all_of(model.path.rbegin(), model.path.rend(), isNext));
        }
        if (roll(4) == 0) {
            graph.ResetWeights();
            for (const TaGraphNode* node : graph.GetNodes()) {
                weights[node] = TaGraphNode::GetInitialWeight();
            }
        }
        for (TaGraphNode* node : { start, nodes[roll(nodes.size())] }) {
            node->SetWeight(weights[node] = float(round));
        }
    }
}

} // namespace
