#include "tabase/tagraphpathiterator.h"

#include "tabase/tagraphnode.h"

TaGraphPathIterator::TaGraphPathIterator(TaGraphNode& start, TaGraphNode& end, EDirection direction)
    : m_start(&start)
    , m_end(&end)
    , m_direction(direction)
    , m_current(nullptr)
{
    Restart();
}

void TaGraphPathIterator::Restart() { m_current = m_direction == eD_Forward ? m_start : m_end; }

void TaGraphPathIterator::SetDirection(EDirection direction)
{
    m_direction = direction;
    Restart();
}

void TaGraphPathIterator::step()
{
    m_current = m_direction == eD_Forward ? m_current->GetNextNodeOnPath()
                                          : m_current->GetPreviousNodeOnPath();
}
