#include "platform/platformfolders.h"

#include "platform/platformtext.h"
#include "platform/win32/platformwindows.h"

#include <objbase.h>
#include <shlobj.h>

namespace platform {
namespace {

    /// Asks a function that fills a buffer and says how many units it needs, or would need.
    template <class Function> std::wstring readText(Function&& function)
    {
        std::wstring text(MAX_PATH, L'\0');
        for (;;) {
            const DWORD length = function(text.data(), static_cast<DWORD>(text.size()));
            if (length < text.size()) {
                text.resize(length);
                return text;
            }
            // One function says how much it wants, the other only that it was too little.
            text.resize(length > text.size() ? length : text.size() * 2);
        }
    }

    std::u16string withoutSeparator(std::wstring path)
    {
        while (path.size() > 1 && path.back() == L'\\' && path[path.size() - 2] != L':') {
            path.pop_back();
        }
        return FromWide(path);
    }

} // namespace

std::u16string GetTemporaryFolder()
{
    return withoutSeparator(
        readText([](wchar_t* text, DWORD size) { return ::GetTempPathW(size, text); }));
}

std::u16string GetUserConfigFolder()
{
    wchar_t* folder = nullptr;
    const bool known = SUCCEEDED(
        ::SHGetKnownFolderPath(FOLDERID_RoamingAppData, KF_FLAG_DONT_VERIFY, nullptr, &folder));
    const std::wstring path = known ? folder : L"";
    ::CoTaskMemFree(folder); // in every case, says the function
    return path.empty() ? GetTemporaryFolder() : withoutSeparator(path);
}

std::u16string GetProgramPath()
{
    return FromWide(readText(
        [](wchar_t* text, DWORD size) { return ::GetModuleFileNameW(nullptr, text, size); }));
}

char16_t GetPathSeparator() { return u'\\'; }

std::u16string ToSystemPath(std::u16string_view path)
{
    std::u16string text(path);
    for (std::size_t at = text.find(u"::"); at != std::u16string::npos; at = text.find(u"::", at)) {
        text.replace(at, 2, u"__");
    }
    return text;
}

} // namespace platform
