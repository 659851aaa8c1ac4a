#include "platform/platformfile.h"

#include "platform/platformtext.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace platform {
namespace {

    int descriptor(std::intptr_t handle) { return static_cast<int>(handle); }

    int openFlags(EFileMode mode)
    {
        switch (mode) {
        case eFM_Read:
            return O_RDONLY | O_CLOEXEC;
        case eFM_Write:
            return O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
        case eFM_CreateNew:
            break;
        }
        return O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    }

    bool syncFolderOf(const std::string& path)
    {
        const std::size_t slash = path.rfind('/');
        const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
        const int handle = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (handle < 0) {
            return false;
        }
        // Some file systems cannot sync a folder and say so; they have no later moment either.
        const bool done = fsync(handle) == 0 || errno == EINVAL;
        close(handle);
        return done;
    }

} // namespace

File::~File() { Close(); }

File::File(File&& other) noexcept
    : m_handle(std::exchange(other.m_handle, kNoHandle))
{
}

File& File::operator=(File&& other) noexcept
{
    if (this != &other) {
        Close();
        m_handle = std::exchange(other.m_handle, kNoHandle);
    }
    return *this;
}

bool File::Open(std::u16string_view path, EFileMode mode)
{
    Close();
    m_handle = open(ToUtf8(path).c_str(), openFlags(mode), 0666);
    if (m_handle != kNoHandle && mode == eFM_Read) {
        // A folder opens well and fails at the first read; say so at once.
        struct stat status;
        if (fstat(descriptor(m_handle), &status) == 0 && S_ISDIR(status.st_mode)) {
            Close();
            errno = EISDIR;
        }
    }
    return IsOpen();
}

bool File::Read(void* data, std::size_t size, std::size_t& count)
{
    count = 0;
    while (count < size) {
        const ssize_t got
            = read(descriptor(m_handle), static_cast<char*>(data) + count, size - count);
        if (got == 0) {
            break;
        }
        if (got > 0) {
            count += static_cast<std::size_t>(got);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool File::Write(const void* data, std::size_t size)
{
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t put = write(descriptor(m_handle), next, size);
        if (put >= 0) {
            next += put;
            size -= static_cast<std::size_t>(put);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool File::GetSize(std::uint64_t& size) const
{
    struct stat status;
    if (fstat(descriptor(m_handle), &status) != 0) {
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        errno = ESPIPE;
        return false;
    }
    size = static_cast<std::uint64_t>(status.st_size);
    return true;
}

bool File::SetPosition(std::uint64_t position)
{
    return lseek(descriptor(m_handle), static_cast<off_t>(position), SEEK_SET) >= 0;
}

bool File::Sync() { return fsync(descriptor(m_handle)) == 0; }

bool File::Close()
{
    if (!IsOpen()) {
        return true;
    }
    // The descriptor is gone whatever close() answers; calling it again could hit a stranger's.
    const int result = close(descriptor(std::exchange(m_handle, kNoHandle)));
    return result == 0 || errno == EINTR;
}

bool ReplaceAtomically(std::u16string_view from, std::u16string_view to)
{
    const std::string source = ToUtf8(from);
    const std::string target = ToUtf8(to);
    // Who could read the old file can read the new one, and nobody else.
    struct stat old;
    if (stat(target.c_str(), &old) == 0 && chmod(source.c_str(), old.st_mode & 07777) != 0) {
        return false;
    }
    return rename(source.c_str(), target.c_str()) == 0 && syncFolderOf(target);
}

bool RemovePath(std::u16string_view path) { return std::remove(ToUtf8(path).c_str()) == 0; }

bool PathExists(std::u16string_view path) { return access(ToUtf8(path).c_str(), F_OK) == 0; }

bool MakeFolder(std::u16string_view path)
{
    return mkdir(ToUtf8(path).c_str(), 0777) == 0 || errno == EEXIST;
}

bool ListFolder(std::u16string_view path, std::vector<std::u16string>& names)
{
    names.clear();
    DIR* folder = opendir(ToUtf8(path).c_str());
    if (folder == nullptr) {
        return false;
    }
    errno = 0;
    while (const dirent* entry = readdir(folder)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names.push_back(FromUtf8(name));
        }
    }
    const int failure = errno;
    closedir(folder);
    std::sort(names.begin(), names.end());
    errno = failure;
    return failure == 0;
}

} // namespace platform
