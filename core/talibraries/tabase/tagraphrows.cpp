#include "tabase/tagraphrows.h"

#include "tabase/tagraph.h"

#include <algorithm>
#include <array>
#include <new>

/// Reads rows from lists. The lists of a grown graph lie all over the memory, and reading them one
/// after the other is waiting for it: so those of several nodes are walked at once, and what will
/// be read is asked for ahead.
class TaGraphRows::Reader
{
public:
    Reader(TaGraphRows& rows, const ShallStop& shallStop)
        : m_rows(rows)
        , m_shallStop(shallStop)
    {
    }

    /// Appends the rows of these nodes; false where it was stopped.
    bool Read(std::span<TaGraphNode* const> nodes);

private:
    static constexpr std::size_t kGroup = 16; // nodes
    static constexpr std::size_t kStepsPerPoll = 2048;

    using Group = std::span<TaGraphNode* const>;

    bool fetch(Group group);
    bool collect(Group group);
    void append(Group group);
    bool isStopped()
    {
        return ++m_steps % kStepsPerPoll == 0
            && m_shallStop(static_cast<double>(m_rows.m_begins.size())
                / static_cast<double>(m_rows.m_nodes.size() + 1));
    }

    TaGraphRows& m_rows;
    const ShallStop& m_shallStop;
    std::vector<const TaGraphConnection*> m_collected;
    std::size_t m_steps = 0;
};

bool TaGraphRows::Reader::Read(std::span<TaGraphNode* const> nodes)
{
    while (!nodes.empty()) {
        const Group group = nodes.first(std::min(kGroup, nodes.size()));
        nodes = nodes.subspan(group.size());
        if (!fetch(group) || !collect(group)) {
            return false;
        }
        append(group);
    }
    return true;
}

/// Walks the lists, and asks for the connections in them.
bool TaGraphRows::Reader::fetch(Group group)
{
    std::array<const TaGraphConnectionList::Node*, kGroup> places{};
    for (std::size_t i = 0; i != group.size(); ++i) {
        places[i] = group[i]->m_outgoing.getHeadNode();
        __builtin_prefetch(places[i]);
    }
    for (bool isDone = false; !isDone;) {
        isDone = true;
        for (const TaGraphConnectionList::Node*& place : places) {
            if (place != nullptr) {
                __builtin_prefetch(&place->element->m_target);
                place = place->next;
                __builtin_prefetch(place);
                isDone = false;
            }
        }
        if (isStopped()) {
            return false;
        }
    }
    return true;
}

/// Puts the lists in order, and asks for the targets of their connections.
bool TaGraphRows::Reader::collect(Group group)
{
    m_collected.clear();
    for (TaGraphNode* node : group) {
        node->m_outgoing.settle();
        for (const TuSmartPointer<TaGraphConnection>& connection : node->m_outgoing) {
            __builtin_prefetch(&connection->m_target->m_index);
            __builtin_prefetch(&connection->m_target->m_graph);
            m_collected.push_back(connection.Get());
            if (isStopped()) {
                return false;
            }
        }
    }
    return true;
}

void TaGraphRows::Reader::append(Group group)
{
    auto next = m_collected.begin();
    for (TaGraphNode* node : group) {
        node->m_isRowChanged = false;
        for (unsigned int count = node->m_outgoing.GetCount(); count != 0; --count) {
            const TaGraphConnection& connection = **next++;
            const TaGraphNode& target = *connection.m_target;
            if (target.m_graph == &m_rows.m_graph) {
                m_rows.m_connections.push_back({ target.m_index, connection.m_weight });
                m_rows.m_hasNegativeWeights
                    = m_rows.m_hasNegativeWeights || connection.m_weight < 0.0F;
            }
        }
        m_rows.m_begins.push_back(m_rows.m_connections.size());
    }
}

void TaGraphRows::OnNodesChanged() noexcept
{
    m_areValid = false;
    m_changed.clear();
}

void TaGraphRows::OnConnectionsChanged(TaGraphNode& source) noexcept
{
    if (!m_areValid || source.m_isRowChanged) {
        return;
    }
    // Where much has changed, reading all in order is quicker than many rows by themselves.
    if (m_changed.size() >= m_nodes.size() / 8 + 1) {
        OnNodesChanged();
        return;
    }
    try {
        m_changed.push_back(&source);
        source.m_isRowChanged = true;
    } catch (const std::bad_alloc&) {
        OnNodesChanged();
    }
}

bool TaGraphRows::Update(const ShallStop& shallStop)
{
    if (m_areValid && m_changed.empty()) {
        return true;
    }
    const bool wasValid = m_areValid;
    m_areValid = false; // unless what follows comes to its end
    m_areValid = wasValid ? readChanged(shallStop) : readAll(shallStop);
    m_changed.clear();
    return m_areValid;
}

bool TaGraphRows::readAll(const ShallStop& shallStop)
{
    m_nodes.assign(m_graph.m_nodes.begin(), m_graph.m_nodes.end());
    m_begins.assign(1, 0);
    m_begins.reserve(m_nodes.size() + 1);
    m_connections.clear();
    m_hasNegativeWeights = false;
    return Reader(*this, shallStop).Read(m_nodes);
}

bool TaGraphRows::readChanged(const ShallStop& shallStop)
{
    std::vector<std::uint32_t> indices; // so that sorting need not look at the nodes
    indices.reserve(m_changed.size());
    for (const TaGraphNode* node : m_changed) {
        indices.push_back(node->m_index);
    }
    std::sort(indices.begin(), indices.end());
    TaGraphRows changed(m_graph);
    for (const std::uint32_t index : indices) {
        changed.m_nodes.push_back(m_nodes[index]);
    }
    changed.m_begins.assign(1, 0);
    if (!Reader(changed, shallStop).Read(changed.m_nodes)) {
        return false;
    }
    m_hasNegativeWeights = m_hasNegativeWeights || changed.m_hasNegativeWeights;
    return replaceRows(changed, shallStop);
}

/// The nodes of `rows` are in the order of their numbers.
bool TaGraphRows::replaceRows(const TaGraphRows& rows, const ShallStop& shallStop)
{
    bool haveSizesChanged = false;
    for (std::uint32_t i = 0; i != rows.m_nodes.size(); ++i) {
        const std::uint32_t index = rows.m_nodes[i]->m_index;
        haveSizesChanged = haveSizesChanged || rows.GetRow(i).size() != GetRow(index).size();
    }
    if (haveSizesChanged) {
        return mergeRows(rows, shallStop);
    }
    for (std::uint32_t i = 0; i != rows.m_nodes.size(); ++i) {
        const std::span<const SConnection> row = rows.GetRow(i);
        std::copy(row.begin(), row.end(), // there may be none at all
            m_connections.data() + m_begins[rows.m_nodes[i]->m_index]);
    }
    return true;
}

bool TaGraphRows::mergeRows(const TaGraphRows& rows, const ShallStop& shallStop)
{
    constexpr std::size_t kNodesPerPoll = 8192;
    TaGraphRows merged(m_graph);
    merged.m_begins.reserve(m_begins.size());
    merged.m_begins.push_back(0);
    merged.m_connections.reserve(m_connections.size() + rows.m_connections.size());
    std::uint32_t next = 0;
    for (std::uint32_t i = 0; i != m_nodes.size(); ++i) {
        const bool hasChanged = next != rows.m_nodes.size() && rows.m_nodes[next]->m_index == i;
        const std::span<const SConnection> row = hasChanged ? rows.GetRow(next++) : GetRow(i);
        merged.m_connections.insert(merged.m_connections.end(), row.begin(), row.end());
        merged.m_begins.push_back(merged.m_connections.size());
        if (i % kNodesPerPoll == 0 && shallStop(1.0)) {
            return false;
        }
    }
    m_begins.swap(merged.m_begins);
    m_connections.swap(merged.m_connections);
    return true;
}
