#include "tabase/tarandomsource.h"

// Needed where the class is exported: there, MinGW-w64 does not take it as inline.
constexpr unsigned int TaRandomSource::kGreatest;

unsigned int TaRandomSource::GetNext()
{
    m_state = m_state * 1103515245u + 12345u;
    return (m_state / 65536u) % (kGreatest + 1);
}
