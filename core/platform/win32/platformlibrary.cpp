#include "platform/platformlibrary.h"

#include "platform/platformtext.h"
#include "platform/win32/platformwindows.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

namespace platform {
namespace {

    HMODULE asModule(void* handle) { return static_cast<HMODULE>(handle); }

    void* asData(FARPROC function) { return reinterpret_cast<void*>(function); }

    /// A program that may run unattended must not be stopped by the system's message box.
    class WithoutMessageBox
    {
    public:
        WithoutMessageBox()
        {
            ::SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &m_former);
        }
        ~WithoutMessageBox() { ::SetThreadErrorMode(m_former, nullptr); }
        WithoutMessageBox(const WithoutMessageBox&) = delete;
        WithoutMessageBox& operator=(const WithoutMessageBox&) = delete;

    private:
        DWORD m_former = 0;
    };

} // namespace

bool SharedLibrary::Load(std::u16string_view path)
{
    Unload();
    std::wstring native = ToWide(path);
    std::replace(native.begin(), native.end(), L'/', L'\\'); // the loader knows no other separator
    const bool isPath = native.find_first_of(L"\\:") != std::wstring::npos;
    if (isPath) {
        // The system would look for a relative one in its own places, too.
        std::error_code failure;
        native = std::filesystem::absolute(native, failure).wstring();
        if (failure) {
            return false;
        }
    }
    // The libraries that this one needs lie beside it; for a bare name the system looks in its own
    // places.
    const WithoutMessageBox guard;
    m_handle
        = ::LoadLibraryExW(native.c_str(), nullptr, isPath ? LOAD_WITH_ALTERED_SEARCH_PATH : 0);
    return IsLoaded();
}

void SharedLibrary::Unload()
{
    if (IsLoaded()) {
        ::FreeLibrary(asModule(std::exchange(m_handle, nullptr)));
    }
}

void* SharedLibrary::FindFunction(const char* name) const
{
    return IsLoaded() ? asData(::GetProcAddress(asModule(m_handle), name)) : nullptr;
}

void* SharedLibrary::FindFunction(unsigned int ordinal) const
{
    // Only 16 bits tell a number from the address of a name.
    return IsLoaded() && ordinal != 0 && ordinal <= 0xFFFF
        ? asData(::GetProcAddress(asModule(m_handle), MAKEINTRESOURCEA(ordinal)))
        : nullptr;
}

} // namespace platform
