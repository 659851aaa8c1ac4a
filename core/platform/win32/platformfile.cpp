#include "platform/platformfile.h"

#include "platform/platformtext.h"
#include "platform/win32/platformwindows.h"

#include <aclapi.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace platform {
namespace {

    /// The path as the system takes it; false for one that holds a zero unit, where it would end
    /// early. A path that is too long for the usual rules is made one to which they do not apply.
    bool toNative(std::u16string_view path, std::wstring& native)
    {
        constexpr std::size_t kLongestUsual = MAX_PATH - 13; // a folder keeps room for a short name
        if (path.find(u'\0') != path.npos) {
            ::SetLastError(ERROR_INVALID_NAME);
            return false;
        }
        native = ToWide(path);
        if (native.size() < kLongestUsual || native.starts_with(L"\\\\?\\")) {
            return true;
        }
        std::wstring full(::GetFullPathNameW(native.c_str(), 0, nullptr, nullptr), L'\0');
        full.resize(::GetFullPathNameW(
            native.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
        if (full.empty()) {
            return false;
        }
        if (!full.starts_with(L"\\\\")) {
            native = L"\\\\?\\" + full;
        } else if (!full.starts_with(L"\\\\.\\")) {
            native = L"\\\\?\\UNC" + full.substr(1); // of another machine
        }
        return true;
    }

    HANDLE asHandle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

    DWORD chunk(std::size_t size)
    {
        constexpr std::size_t kMostBytes = 1 << 30; // a call counts in 32 bits
        return static_cast<DWORD>(std::min(size, kMostBytes));
    }

    /// Others may read, write, rename and remove the file meanwhile, as on every other system.
    std::intptr_t openFile(const std::wstring& path, DWORD access, DWORD disposition,
        DWORD flags = FILE_ATTRIBUTE_NORMAL, SECURITY_ATTRIBUTES* security = nullptr)
    {
        return reinterpret_cast<std::intptr_t>(::CreateFileW(path.c_str(), access,
            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, security, disposition, flags,
            nullptr));
    }

    bool isFolder(const std::wstring& path)
    {
        const DWORD attributes = ::GetFileAttributesW(path.c_str());
        return attributes != INVALID_FILE_ATTRIBUTES
            && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    }

    /// Who may do what with a file: a descriptor of the system.
    class Rights
    {
    public:
        Rights() = default;
        ~Rights() { ::LocalFree(m_descriptor); }
        Rights(const Rights&) = delete;
        Rights& operator=(const Rights&) = delete;

        /// Returns the system's code; none where the file system has no rights.
        DWORD Read(HANDLE file)
        {
            const DWORD code = ::GetSecurityInfo(file, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                nullptr, nullptr, nullptr, nullptr, &m_descriptor);
            return code == ERROR_NOT_SUPPORTED || code == ERROR_INVALID_FUNCTION ? ERROR_SUCCESS
                                                                                 : code;
        }
        /// Without it, the folder's rights apply as well.
        void RefuseInherited() { set(SE_DACL_PROTECTED); }
        /// Without it, rights of the folder would no longer follow the folder.
        void KeepInherited()
        {
            SECURITY_DESCRIPTOR_CONTROL control = 0;
            DWORD revision = 0;
            if (IsKnown() && ::GetSecurityDescriptorControl(m_descriptor, &control, &revision)
                && (control & SE_DACL_AUTO_INHERITED) != 0) {
                set(SE_DACL_AUTO_INHERIT_REQ);
            }
        }

        bool IsKnown() const { return m_descriptor != nullptr; }
        PSECURITY_DESCRIPTOR Get() const { return m_descriptor; }

    private:
        void set(SECURITY_DESCRIPTOR_CONTROL flag)
        {
            if (IsKnown()) {
                ::SetSecurityDescriptorControl(m_descriptor, flag, flag);
            }
        }

        PSECURITY_DESCRIPTOR m_descriptor = nullptr;
    };

    /// The rights of a file that may be replaced, not known where there is none; false for what may
    /// not.
    bool findRights(const std::wstring& path, Rights& rights)
    {
        const DWORD attributes = ::GetFileAttributesW(path.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES) {
            return true;
        }
        if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            ::SetLastError(ERROR_DIRECTORY);
            return false;
        }
        const std::intptr_t handle = openFile(path, FILE_WRITE_DATA | READ_CONTROL, OPEN_EXISTING);
        if (asHandle(handle) == INVALID_HANDLE_VALUE) {
            return false;
        }
        // A device answers to a file's name, too.
        const DWORD failure = ::GetFileType(asHandle(handle)) == FILE_TYPE_DISK
            ? rights.Read(asHandle(handle))
            : ERROR_BAD_FILE_TYPE;
        ::CloseHandle(asHandle(handle));
        ::SetLastError(failure);
        return failure == ERROR_SUCCESS;
    }

    /// Gives a file the rights and the attributes of the one whose place it is to take.
    bool takeRights(const std::wstring& path, const std::wstring& target, Rights& rights)
    {
        const DWORD attributes = ::GetFileAttributesW(target.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES
            && !::SetFileAttributesW(path.c_str(), attributes)) {
            return false;
        }
        rights.KeepInherited();
        return !rights.IsKnown()
            || ::SetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, rights.Get());
    }

    /// The path without the mark that the system puts before the paths it finds itself.
    std::u16string withoutMark(const std::wstring& path)
    {
        constexpr std::wstring_view kMark = L"\\\\?\\";
        constexpr std::wstring_view kMarkOfMachine = L"\\\\?\\UNC\\";
        if (path.starts_with(kMarkOfMachine)) {
            return u"\\\\" + FromWide(path.substr(kMarkOfMachine.size()));
        }
        return FromWide(path.starts_with(kMark) ? path.substr(kMark.size()) : path);
    }

} // namespace

bool File::Open(std::u16string_view path, EFileMode mode)
{
    Close();
    std::wstring native;
    if (!toNative(path, native)) {
        return false;
    }
    switch (mode) {
    case eFM_Read:
        m_handle = openFile(native, GENERIC_READ, OPEN_EXISTING);
        break;
    case eFM_CreateNew:
        m_handle = openFile(native, GENERIC_WRITE, CREATE_NEW);
        break;
    case eFM_Write:
        // Cut afterwards: the disposition that does both refuses hidden files.
        m_handle = openFile(native, GENERIC_WRITE, OPEN_ALWAYS);
        if (IsOpen() && ::GetLastError() == ERROR_ALREADY_EXISTS
            && ::GetFileType(asHandle(m_handle)) == FILE_TYPE_DISK
            && !::SetEndOfFile(asHandle(m_handle))) {
            const DWORD failure = ::GetLastError();
            Close();
            ::SetLastError(failure);
        }
        break;
    }
    return IsOpen();
}

bool File::CreateFor(std::u16string_view path, std::u16string_view target, bool& taken)
{
    Close();
    taken = false;
    std::wstring native;
    std::wstring nativeTarget;
    Rights rights;
    if (!toNative(path, native) || !toNative(target, nativeTarget)
        || !findRights(nativeTarget, rights)) {
        return false;
    }
    rights.RefuseInherited();
    SECURITY_ATTRIBUTES security{ sizeof(SECURITY_ATTRIBUTES), rights.Get(), FALSE };
    m_handle = openFile(native, GENERIC_WRITE, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, &security);
    taken = !IsOpen() && ::GetLastError() == ERROR_FILE_EXISTS;
    return IsOpen();
}

bool File::Read(void* data, std::size_t size, std::size_t& count)
{
    count = 0;
    while (count < size) {
        DWORD got = 0;
        if (!::ReadFile(asHandle(m_handle), static_cast<char*>(data) + count, chunk(size - count),
                &got, nullptr)) {
            return ::GetLastError() == ERROR_BROKEN_PIPE; // the other side has said all
        }
        if (got == 0) {
            break;
        }
        count += got;
    }
    return true;
}

bool File::Write(const void* data, std::size_t size)
{
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        DWORD put = 0;
        if (!::WriteFile(asHandle(m_handle), next, chunk(size), &put, nullptr)) {
            return false;
        }
        if (put == 0) {
            ::SetLastError(ERROR_WRITE_FAULT); // what takes nothing would be asked for ever
            return false;
        }
        next += put;
        size -= put;
    }
    return true;
}

bool File::GetSize(std::uint64_t& size) const
{
    if (::GetFileType(asHandle(m_handle)) != FILE_TYPE_DISK) {
        ::SetLastError(ERROR_SEEK_ON_DEVICE);
        return false;
    }
    LARGE_INTEGER found{};
    if (!::GetFileSizeEx(asHandle(m_handle), &found)) {
        return false;
    }
    size = static_cast<std::uint64_t>(found.QuadPart);
    return true;
}

bool File::SetPosition(std::uint64_t position)
{
    LARGE_INTEGER wanted{};
    wanted.QuadPart = static_cast<LONGLONG>(position);
    return ::SetFilePointerEx(asHandle(m_handle), wanted, nullptr, FILE_BEGIN) != 0;
}

bool File::Sync() { return ::FlushFileBuffers(asHandle(m_handle)) != 0; }

bool File::Close()
{
    return !IsOpen() || ::CloseHandle(asHandle(std::exchange(m_handle, kNoHandle))) != 0;
}

bool MayBeReplaced(std::u16string_view path)
{
    std::wstring native;
    Rights rights;
    return toNative(path, native) && findRights(native, rights);
}

EReplaceResult ReplaceAtomically(std::u16string_view from, std::u16string_view to)
{
    std::wstring source;
    std::wstring target;
    Rights rights;
    if (!toNative(from, source) || !toNative(to, target) || !findRights(target, rights)
        || !takeRights(source, target, rights)) {
        return eRR_Failed;
    }
    // ReplaceFileW would keep more of the old file, but may stop half way, with no file of that
    // name left.
    return ::MoveFileExW(
               source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)
        ? eRR_Durable
        : eRR_Failed;
}

bool ResolveLinks(std::u16string_view path, std::u16string& target)
{
    std::wstring native;
    if (!toNative(path, native)) {
        return false;
    }
    target = path;
    const DWORD attributes = ::GetFileAttributesW(native.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return true;
    }
    const std::intptr_t handle = openFile(native, 0, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    if (asHandle(handle) == INVALID_HANDLE_VALUE) {
        // The file behind the link is to be made.
        return ::GetLastError() == ERROR_FILE_NOT_FOUND || ::GetLastError() == ERROR_PATH_NOT_FOUND;
    }
    std::wstring found(
        ::GetFinalPathNameByHandleW(asHandle(handle), nullptr, 0, VOLUME_NAME_DOS), L'\0');
    const DWORD length = ::GetFinalPathNameByHandleW(
        asHandle(handle), found.data(), static_cast<DWORD>(found.size()), VOLUME_NAME_DOS);
    const DWORD failure = ::GetLastError();
    ::CloseHandle(asHandle(handle));
    ::SetLastError(failure);
    if (length == 0 || length >= found.size()) {
        return false;
    }
    found.resize(length);
    target = withoutMark(found);
    return true;
}

bool RemovePath(std::u16string_view path)
{
    std::wstring native;
    if (!toNative(path, native)) {
        return false;
    }
    return isFolder(native) ? ::RemoveDirectoryW(native.c_str()) : ::DeleteFileW(native.c_str());
}

bool PathExists(std::u16string_view path)
{
    std::wstring native;
    return toNative(path, native)
        && ::GetFileAttributesW(native.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool MakeFolder(std::u16string_view path)
{
    std::wstring native;
    if (!toNative(path, native)) {
        return false;
    }
    if (::CreateDirectoryW(native.c_str(), nullptr)) {
        return true;
    }
    const DWORD failure = ::GetLastError();
    const bool isThere = failure == ERROR_ALREADY_EXISTS && isFolder(native);
    ::SetLastError(failure);
    return isThere;
}

bool ListFolder(std::u16string_view path, std::vector<std::u16string>& names)
{
    names.clear();
    std::wstring native;
    // The search would list the root of the drive for an empty path.
    if (path.empty() || !toNative(std::u16string(path) + u"\\*", native)) {
        ::SetLastError(ERROR_PATH_NOT_FOUND);
        return false;
    }
    WIN32_FIND_DATAW entry;
    const std::unique_ptr<void, decltype(&::FindClose)> search(
        ::FindFirstFileW(native.c_str(), &entry), ::FindClose);
    if (search.get() == INVALID_HANDLE_VALUE) {
        return false;
    }
    do {
        const std::wstring_view name = entry.cFileName;
        if (name != L"." && name != L"..") {
            names.push_back(FromWide(name));
        }
    } while (::FindNextFileW(search.get(), &entry));
    if (::GetLastError() != ERROR_NO_MORE_FILES) {
        return false;
    }
    std::sort(names.begin(), names.end());
    return true;
}

} // namespace platform
