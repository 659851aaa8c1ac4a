#include "tabase/tastreamreadbinaryfile.h"

#include <algorithm>
#include <cstring>

TU_DEFINE_RTTI2(TaStreamReadBinaryFile, TuStreamReadBinary, TaStreamFileBase, nullptr, nullptr);

TaStreamReadBinaryFile::TaStreamReadBinaryFile(const CString& path)
    : TaStreamFileBase(path, eOM_Read)
{
}

unsigned long long TaStreamReadBinaryFile::GetPosition() const
{
    return getFilePosition() - static_cast<unsigned long long>(getWindowEnd() - getWindow());
}

void TaStreamReadBinaryFile::Close()
{
    setWindow(nullptr, nullptr);
    closeFile();
}

unsigned long long TaStreamReadBinaryFile::read(void* data, unsigned long long size)
{
    auto* bytes = static_cast<unsigned char*>(data);
    const auto wanted = static_cast<std::size_t>(size);
    std::size_t done = takeFromWindow(bytes, wanted);
    if (wanted - done >= kBufferSize) {
        done += readBytes(bytes + done, wanted - done);
    } else if (done < wanted) {
        const std::size_t count = readBytes(getBuffer(), kBufferSize);
        setWindow(getBuffer(), getBuffer() + count);
        done += takeFromWindow(bytes + done, wanted - done);
    }
    return done;
}

std::size_t TaStreamReadBinaryFile::takeFromWindow(unsigned char* data, std::size_t size)
{
    const std::size_t step = std::min(size, static_cast<std::size_t>(getWindowEnd() - getWindow()));
    if (step != 0) {
        std::memcpy(data, getWindow(), step);
        setWindow(getWindow() + step, getWindowEnd());
    }
    return step;
}
