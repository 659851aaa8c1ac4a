#include "tabase/tastreamreadasciifile.h"

TU_DEFINE_RTTI2(TaStreamReadASCIIFile, TaStreamReadASCII, TaStreamFileBase, nullptr, nullptr);

TaStreamReadASCIIFile::TaStreamReadASCIIFile(const CString& path)
    : TaStreamFileBase(path, eOM_Read)
{
}

void TaStreamReadASCIIFile::Close()
{
    m_next = m_end;
    closeFile();
}

bool TaStreamReadASCIIFile::read(char& c)
{
    if (m_next == m_end && !fill()) {
        return true;
    }
    c = static_cast<char>(*m_next++);
    return false;
}

bool TaStreamReadASCIIFile::fill()
{
    m_next = m_end = getBuffer();
    m_end += readBytes(getBuffer(), kBufferSize);
    return m_next != m_end;
}
