#pragma once

#include "tabase/taattributecontainer.h"
#include "tabase/tagraphnode.h"
#include "tabase/tagraphregionmanager.h"

#include <cstdint>
#include <memory>

class TaGraphSearch;
class TuStreamWriteASCII;

/// A directed graph whose nodes and connections have weights, with room for attributes.
///
///     TaGraph graph;
///     auto* const a = new TaGraphNode(u"A");
///     auto* const b = new TaGraphNode(u"B");
///     graph.InsertNode(a);
///     graph.InsertNode(b);
///     a->AddConnection(*b, 1.5F);
///
/// Nodes are numbered in the order of their insertion. Removing any but the last one leaves the
/// numbers as they are, until CreateIndices() numbers anew; meanwhile they are stale, and a node
/// that is inserted gets a number that another one may have.
///
/// TaMpGraphToShortestPath searches it; docs/graphs.md shows the whole.
///
/// Ownership: of its nodes, which are made with `new`, and of what comes with them. A class that
///            overrides deleteNode() calls RemoveAllNodes() in its own destructor.
/// Threads:   many readers, or one writer; a search writes. Graphs that connections join count as
///            one.
/// Failure:   TuExceptionPreconditionViolation for a null node, one that has a graph already, and
///            one of another graph; TuExceptionOutOfMemory, also as std::bad_alloc. Nothing has
///            changed then.
class TABASE_API TaGraph : public TaAttributeContainer
{
public:
    static constexpr unsigned int kNodeBlockSize = 10;
    static constexpr unsigned int kElementBlockSize = 10000;
    /// Of the places in the lists of connections, which all nodes of a graph share.
    static constexpr unsigned int kConnectionBlockSize = 1000;

    /// The attributes that each node of a graph has.
    enum ENodeAttribute
    {
        /// A number that callers give to the branch on which the node lies; 0 at first.
        eNA_Branch = 0,
    };

    TaGraph();
    ~TaGraph() override;

    /// Takes the node over.
    void InsertNode(TaGraphNode* node);
    /// Deletes the node, and the connections that begin or end there.
    void RemoveNode(TaGraphNode& node);
    void RemoveAllNodes();
    std::uint32_t GetCount() const { return m_nodes.GetCount(); }
    const TuList<TaGraphNode*>& GetNodes() const { return m_nodes; }

    /// Numbers the nodes in their order, unless the numbers are valid; returns how many there are.
    std::uint32_t CreateIndices();
    bool AreIndicesValid() const { return m_areIndicesValid; }
    /// The first node that has this number, stale or not; null where none has. A linear search.
    TaGraphNode* FindNode(std::uint32_t index) const;

    /// Gives each node its initial weight.
    void ResetWeights();
    /// Takes the marks of `mask` from each node.
    void RemoveAttributes(std::uint32_t mask);

    using TaAttributeContainer::Assert;
    using TaAttributeContainer::Has;
    bool Has(ENodeAttribute attribute) const { return Has(*getDefinition(attribute)); }
    void Assert(ENodeAttribute attribute) const { Assert(*getDefinition(attribute)); }
    /// The value of eNA_Branch of a node of this graph.
    std::uint32_t GetBranch(const TaGraphNode& node) const { return *branchOf(node); }
    void SetBranch(TaGraphNode& node, std::uint32_t branch) { *branchOf(node) = branch; }

    /// Writes nodes and outgoing connections as text, in German; numbers the nodes first.
    void Dump(TuStreamWriteASCII& stream);
    /// To the trace stream.
    void Dump();
    /// Writes the graph in the DOT language, in which tools draw graphs. Names of nodes stand there
    /// as they are: let them be words. Not directed, a connection is written at the node with the
    /// smaller number, or where numbers are equal; nothing is numbered anew.
    void DumpDot(TuStreamWriteASCII& stream, bool directed);

protected:
    void onInitContainer(void* block, std::size_t stride) override;
    void onCopyContainer(const void* oldBlock, std::size_t oldStride, void* newBlock,
        std::size_t newStride) override;
    void onDeleteContainer() override;
    /// Destroys a node that is in no list any more.
    virtual void deleteNode(TaGraphNode* node);

private:
    friend class TaGraphConnection;
    friend class TaGraphNode;
    friend class TaGraphRows;
    friend class TaMpGraphToShortestPath;

    const Definition& getDefinition(ENodeAttribute attribute) const;
    std::uint32_t* branchOf(const TaGraphNode& node) const;
    // What searches remember of the graph no longer holds.
    void onNodesChanged() noexcept;
    void onConnectionsChanged(TaGraphNode& source) noexcept;
    TaGraphSearch& getSearch();
    /// Brings the weights of the last search into the nodes. Before a number changes.
    void takeWeights();
    void clearLinksTo(const TaGraphNode& node);

    TuList<TaGraphNode*> m_nodes;
    bool m_areIndicesValid = true;
    TaAttributePolicyConstruct m_attributePolicy;
    TaGraphRegionManager m_regionManager;
    Definition m_branch;

    TuSmartPointer<TaGraphConnectionList::PlexManager> m_connectionNodes;
    std::unique_ptr<TaGraphSearch> m_search; // made by the first search
    /// The weights of all nodes, by their numbers, from a search until nodes come or go. Bringing
    /// them into the nodes, all over the memory, would take a third of the time of a search.
    float* m_searchWeights = nullptr;
    std::uint32_t m_attributesInUse = 0; // marks that some node may have
};
