#include "tabase/tastreamreadasciistring.h"

TU_DEFINE_RTTI(TaStreamReadASCIIString, TaStreamReadASCII, nullptr, nullptr);

TaStreamReadASCIIString::TaStreamReadASCIIString(const CStringA& text)
    : m_text(text)
{
}

bool TaStreamReadASCIIString::read(char& c)
{
    if (m_position >= m_text.GetLength()) {
        return true;
    }
    c = m_text[m_position++];
    return false;
}
