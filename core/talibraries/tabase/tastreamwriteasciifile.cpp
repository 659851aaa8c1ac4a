#include "tabase/tastreamwriteasciifile.h"

#include <utility>

TU_DEFINE_RTTI2(TaStreamWriteASCIIFile, TuStreamWriteASCII, TaStreamFileBase, nullptr, nullptr);

TaStreamWriteASCIIFile::TaStreamWriteASCIIFile(const CString& path, bool separated)
    : TuStreamWriteASCII(separated)
    , TaStreamFileBase(path, eOM_Write)
{
}

TaStreamWriteASCIIFile::~TaStreamWriteASCIIFile() { closeFileAtDestruction(m_used); }

void TaStreamWriteASCIIFile::Close() { closeFile(std::exchange(m_used, 0)); }

void TaStreamWriteASCIIFile::write(const char* text) { append(text); }

void TaStreamWriteASCIIFile::write(const char16_t* text) { append(platform::ToCodePage(text)); }

void TaStreamWriteASCIIFile::append(std::string_view text)
{
    m_used = writeBytes(std::exchange(m_used, 0), text.data(), text.size());
}
