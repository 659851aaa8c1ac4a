#include "tabase/tastreamwritebinaryfile.h"

TU_DEFINE_RTTI2(TaStreamWriteBinaryFile, TuStreamWriteBinary, TaStreamFileBase, nullptr, nullptr);

TaStreamWriteBinaryFile::TaStreamWriteBinaryFile(const CString& path, EMode mode)
    : TaStreamFileBase(path, mode == eWM_Safe ? eOM_WriteSafe : eOM_Write)
{
    setWindow(getBuffer(), getBuffer() + kBufferSize);
}

TaStreamWriteBinaryFile::~TaStreamWriteBinaryFile() { closeFileAtDestruction(takeUsed()); }

void TaStreamWriteBinaryFile::Commit()
{
    checkCommittable();
    commit(takeUsed());
}

void TaStreamWriteBinaryFile::Close() { closeFile(takeUsed()); }

void TaStreamWriteBinaryFile::write(const void* data, unsigned long long size)
{
    const std::size_t used = writeBytes(takeUsed(), data, static_cast<std::size_t>(size));
    setWindow(getBuffer() + used, getBuffer() + kBufferSize);
}

std::size_t TaStreamWriteBinaryFile::getUsed() const
{
    return getWindow() != nullptr ? static_cast<std::size_t>(getWindow() - getBuffer()) : 0;
}

/// Without a window, every later write comes to write(), where a closed or failed file refuses it.
std::size_t TaStreamWriteBinaryFile::takeUsed()
{
    const std::size_t used = getUsed();
    setWindow(nullptr, nullptr);
    return used;
}
