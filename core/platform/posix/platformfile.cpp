#include "platform/platformfile.h"

#include "platform/platformtext.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace platform {
namespace {

    /// The path as the system takes it; false for one that holds a zero unit, where it would end
    /// early.
    bool toNative(std::u16string_view path, std::string& native)
    {
        if (path.find(u'\0') != path.npos) {
            errno = EINVAL;
            return false;
        }
        native = ToUtf8(path);
        return true;
    }

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

    /// The rights that a file has as long as it is not known to be for fewer readers.
    constexpr mode_t kUsualRights = 0666;

    int openFile(const std::string& path, int flags, mode_t rights)
    {
        int handle = -1;
        do {
            handle = open(path.c_str(), flags, rights);
        } while (handle < 0 && errno == EINTR);
        return handle;
    }

    /// The rights of a file that may be replaced, unchanged where there is none; false for what may
    /// not.
    bool findRights(const std::string& path, mode_t& rights)
    {
        struct stat status;
        if (stat(path.c_str(), &status) != 0) {
            return true;
        }
        if (!S_ISREG(status.st_mode)) {
            errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
            return false;
        }
        rights = status.st_mode & 0777;
        return access(path.c_str(), W_OK) == 0;
    }

    std::string folderOf(const std::string& path)
    {
        const std::size_t slash = path.rfind('/');
        return slash == std::string::npos ? "." : path.substr(0, slash + 1);
    }

} // namespace

bool File::Open(std::u16string_view path, EFileMode mode)
{
    Close();
    std::string native;
    if (!toNative(path, native)) {
        return false;
    }
    m_handle = openFile(native, openFlags(mode), kUsualRights);
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

bool File::CreateFor(std::u16string_view path, std::u16string_view target, bool& taken)
{
    Close();
    taken = false;
    std::string native;
    std::string nativeTarget;
    if (!toNative(path, native) || !toNative(target, nativeTarget)) {
        return false;
    }
    mode_t rights = kUsualRights;
    if (!findRights(nativeTarget, rights)) {
        return false;
    }
    m_handle = openFile(native, openFlags(eFM_CreateNew), rights);
    taken = !IsOpen() && errno == EEXIST;
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
        if (put > 0) {
            next += put;
            size -= static_cast<std::size_t>(put);
        } else if (put == 0) {
            errno = EIO; // a device that takes nothing would be asked for ever
            return false;
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

bool MayBeReplaced(std::u16string_view path)
{
    std::string native;
    mode_t rights = kUsualRights;
    return toNative(path, native) && findRights(native, rights);
}

EReplaceResult ReplaceAtomically(std::u16string_view from, std::u16string_view to)
{
    std::string source;
    std::string target;
    if (!toNative(from, source) || !toNative(to, target)) {
        return eRR_Failed;
    }
    // Asked once: another program may put its file there between two looks.
    constexpr mode_t kNoFile = static_cast<mode_t>(-1);
    mode_t rights = kNoFile;
    if (!findRights(target, rights) || (rights != kNoFile && chmod(source.c_str(), rights) != 0)) {
        return eRR_Failed;
    }
    // Opened first, so that a folder which cannot be found leaves the old file.
    const int folder = openFile(folderOf(target), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
    if (folder < 0 && errno != EACCES) {
        return eRR_Failed;
    }
    EReplaceResult result = eRR_Failed;
    if (rename(source.c_str(), target.c_str()) == 0) {
        // Some file systems cannot sync a folder and say EINVAL; they have no later moment either.
        const bool synced = folder < 0 || fsync(folder) == 0 || errno == EINVAL;
        result = synced ? eRR_Durable : eRR_Replaced;
    }
    if (folder >= 0) {
        const int failure = errno;
        close(folder);
        errno = failure;
    }
    return result;
}

bool ResolveLinks(std::u16string_view path, std::u16string& target)
{
    std::string name;
    if (!toNative(path, name)) {
        return false;
    }
    target = path;
    struct stat status;
    if (lstat(name.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
        return true;
    }
    const std::unique_ptr<char, void (*)(void*)> resolved(
        realpath(name.c_str(), nullptr), std::free);
    if (resolved == nullptr) {
        return errno == ENOENT; // the file behind the link is to be made
    }
    target = FromUtf8(resolved.get());
    if (ToUtf8(target) != resolved.get()) {
        errno = EILSEQ; // the name of another file stands in UTF-16 for one that is no UTF-8
        return false;
    }
    return true;
}

bool RemovePath(std::u16string_view path)
{
    std::string native;
    return toNative(path, native) && std::remove(native.c_str()) == 0;
}

bool PathExists(std::u16string_view path)
{
    std::string native;
    return toNative(path, native) && access(native.c_str(), F_OK) == 0;
}

bool MakeFolder(std::u16string_view path)
{
    std::string native;
    if (!toNative(path, native)) {
        return false;
    }
    if (mkdir(native.c_str(), 0777) == 0) {
        return true;
    }
    const int failure = errno;
    struct stat status;
    const bool isFolder = stat(native.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    errno = failure;
    return failure == EEXIST && isFolder;
}

bool ListFolder(std::u16string_view path, std::vector<std::u16string>& names)
{
    names.clear();
    std::string native;
    if (!toNative(path, native)) {
        return false;
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(native.c_str()), closedir);
    if (folder == nullptr) {
        return false;
    }
    // readdir tells the end from a failure by errno alone.
    for (errno = 0; const dirent* entry = readdir(folder.get()); errno = 0) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names.push_back(FromUtf8(name));
        }
    }
    if (errno != 0) {
        return false;
    }
    std::sort(names.begin(), names.end());
    return true;
}

} // namespace platform
