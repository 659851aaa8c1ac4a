#include "tabase/tagraphconnection.h"

#include "tabase/tagraphnode.h"

#include <utility>

TaGraphConnection::TaGraphConnection(TaGraphNode& source, TaGraphNode& target, float weight)
    : m_source(&source)
    , m_target(&target)
    , m_weight(weight)
{
}

TaGraphConnection::~TaGraphConnection() = default;

TaGraphNode& TaGraphConnection::GetNode(ENodeType type) const
{
    if (!IsConnected()) {
        throw TuExceptionPreconditionViolation(TU_HERE, u"the connection has not been removed");
    }
    return type == eNT_Source ? *m_source : *m_target;
}

void TaGraphConnection::SetWeight(float weight)
{
    if (weight == m_weight) {
        return;
    }
    if (!IsConnected()) {
        m_weight = weight;
        return;
    }
    m_source->m_outgoing.beforeChange(m_placeAtSource);
    m_target->m_incoming.beforeChange(m_placeAtTarget);
    m_weight = weight;
    m_source->m_outgoing.afterChange(m_placeAtSource);
    m_target->m_incoming.afterChange(m_placeAtTarget);
    m_source->onConnectionsChanged();
}

TaGraphConnection& TaGraphConnection::connect(
    TaGraphNode& source, TaGraphNode& target, float weight)
{
    TuSmartPointer<TaGraphConnection> owner(new TaGraphConnection(source, target, weight));
    TaGraphConnection& connection = *owner;
    connection.m_placeAtSource = source.m_outgoing.append(owner);
    try {
        connection.m_placeAtTarget = target.m_incoming.append(std::move(owner));
    } catch (...) {
        source.m_outgoing.remove(connection.m_placeAtSource);
        throw;
    }
    source.onConnectionsChanged();
    return connection;
}

void TaGraphConnection::disconnect(TaGraphConnection& connection)
{
    const TuSmartPointer<TaGraphConnection> keep(&connection);
    connection.m_source->m_outgoing.remove(connection.m_placeAtSource);
    connection.m_target->m_incoming.remove(connection.m_placeAtTarget);
    connection.m_source->onConnectionsChanged();
    connection.m_source = nullptr;
    connection.m_target = nullptr;
}
