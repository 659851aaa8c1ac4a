// A few towns and the roads between them: the shortest way, and the shortest way when a road is
// closed.

#include "tabase/tagraph.h"
#include "tabase/tampgraphtoshortestpath.h"

#include <iostream>

namespace {

void addRoad(TaGraphNode& a, TaGraphNode& b, float kilometres)
{
    a.AddConnection(b, kilometres);
    b.AddConnection(a, kilometres);
}

/// The number of towns on the way, its ends included; 0 where there is none.
int show(TaGraph& graph, TaGraphNode& from, TaGraphNode& to)
{
    TaMpGraphToShortestPath search;
    search.SetInput(&graph, &from, &to);
    if (!search.Compute(TaAlgorithm::eCF_None)) {
        std::cout << "there is no way\n";
        return 0;
    }
    int towns = 0;
    TaGraphPathIterator path = search.GetOutput();
    for (const TaGraphNode& town : path) {
        std::cout << town.GetName().ToUtf8() << " at " << town.GetWeight() << " km\n";
        ++towns;
    }
    return towns;
}

} // namespace

int main()
{
    TaGraph graph;
    const auto addTown = [&graph](const char16_t* name) -> TaGraphNode& {
        auto* const town = new TaGraphNode(name);
        graph.InsertNode(town); // which takes it over
        return *town;
    };
    TaGraphNode& harbour = addTown(u"Harbour");
    TaGraphNode& mill = addTown(u"Mill");
    TaGraphNode& bridge = addTown(u"Bridge");
    TaGraphNode& castle = addTown(u"Castle");
    addRoad(harbour, mill, 4.0F);
    addRoad(mill, castle, 3.5F);
    addRoad(harbour, bridge, 6.0F);
    addRoad(bridge, castle, 6.5F);
    addRoad(mill, bridge, 1.0F);

    const bool isDirect = show(graph, harbour, castle) == 3;
    mill.RemoveConnection(castle);
    const bool isRoundabout = show(graph, harbour, castle) == 4;
    graph.RemoveNode(bridge);
    return isDirect && isRoundabout && show(graph, harbour, castle) == 0 ? 0 : 1;
}
