#include "platform/platformregistry.h"

#include "platform/platformtext.h"
#include "platform/registrypath.h"
#include "platform/win32/platformwindows.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>

namespace platform {
namespace {

    static_assert(eRT_Text == REG_SZ && eRT_Number == REG_DWORD);

    constexpr std::size_t kMostBytes = std::numeric_limits<DWORD>::max();

    struct SKeyCloser
    {
        void operator()(HKEY key) const { ::RegCloseKey(key); }
    };
    using Key = std::unique_ptr<std::remove_pointer_t<HKEY>, SKeyCloser>;

    HKEY rootKey(ERegistryRoot root)
    {
        switch (root) {
        case eRo_ClassesRoot:
            return HKEY_CLASSES_ROOT;
        case eRo_CurrentUser:
            return HKEY_CURRENT_USER;
        case eRo_LocalMachine:
            return HKEY_LOCAL_MACHINE;
        case eRo_Users:
            return HKEY_USERS;
        case eRo_CurrentConfig:
            return HKEY_CURRENT_CONFIG;
        }
        return nullptr; // no function of the system takes it
    }

    /// The key as the system takes it; false where it would take more than every other system.
    bool toNative(std::u16string_view key, std::wstring& native)
    {
        std::u16string normal;
        const bool isKey = NormaliseRegistryKey(key, normal);
        native = ToWide(normal);
        return isKey;
    }

    Key openKey(ERegistryRoot root, std::u16string_view key, REGSAM rights)
    {
        std::wstring path;
        HKEY opened = nullptr;
        if (!toNative(key, path)
            || ::RegOpenKeyExW(rootKey(root), path.c_str(), 0, rights, &opened) != ERROR_SUCCESS) {
            return nullptr;
        }
        return Key(opened);
    }

    bool readValue(HKEY key, const std::wstring& name, std::size_t maxBytes,
        std::vector<unsigned char>& data, DWORD& type)
    {
        // Most values are small, and `maxBytes` may be more than there is memory.
        constexpr std::size_t kUsualBytes = 512;
        maxBytes = std::min(maxBytes, kMostBytes);
        data.resize(std::min(maxBytes, kUsualBytes));
        for (;;) {
            // The system would only tell the size where there is no buffer.
            unsigned char none = 0;
            auto size = static_cast<DWORD>(data.size());
            const LSTATUS status = ::RegQueryValueExW(
                key, name.c_str(), nullptr, &type, data.empty() ? &none : data.data(), &size);
            if (status == ERROR_SUCCESS) {
                // A terminator that the system has put behind the text is not counted.
                data.resize(std::min<std::size_t>(size, data.size()));
                return true;
            }
            if (status != ERROR_MORE_DATA || size > maxBytes || size <= data.size()) {
                return false;
            }
            data.resize(size);
        }
    }

    bool isText(ERegistryType type)
    {
        return type == DWORD{ REG_SZ } || type == DWORD{ REG_EXPAND_SZ }
        || type == DWORD{ REG_MULTI_SZ };
    }

} // namespace

bool ReadRegistry(ERegistryRoot root, std::u16string_view key, std::u16string_view name,
    std::size_t maxBytes, std::vector<unsigned char>& data, ERegistryType* type)
{
    const Key opened = openKey(root, key, KEY_QUERY_VALUE);
    DWORD found = 0;
    if (opened == nullptr || !IsRegistryName(name)
        || !readValue(opened.get(), ToWide(UntilZero(name)), maxBytes, data, found)) {
        return false;
    }
    if (type != nullptr) {
        *type = static_cast<ERegistryType>(found);
    }
    return true;
}

bool WriteRegistry(ERegistryRoot root, std::u16string_view key, std::u16string_view name,
    ERegistryType type, const void* data, std::size_t size)
{
    std::wstring path;
    if (size > kMostBytes || !IsRegistryName(name) || !toNative(key, path)) {
        return false;
    }
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::vector<unsigned char> padded;
    if (isText(type)) {
        // The system looks at the unit behind a text, and stores it, too, where it is a zero.
        padded.assign(bytes, bytes + size);
        padded.insert(padded.end(), 2 * sizeof(wchar_t), 0xFF);
        bytes = padded.data();
    }
    HKEY created = nullptr;
    if (::RegCreateKeyExW(rootKey(root), path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
            KEY_WRITE, nullptr, &created, nullptr)
        != ERROR_SUCCESS) {
        return false;
    }
    const Key opened(created);
    return ::RegSetValueExW(
               created, ToWide(UntilZero(name)).c_str(), 0, type, bytes, static_cast<DWORD>(size))
        == ERROR_SUCCESS;
}

bool ListRegistryKeys(
    ERegistryRoot root, std::u16string_view key, std::vector<std::u16string>& names)
{
    names.clear();
    const Key opened = openKey(root, key, KEY_ENUMERATE_SUB_KEYS);
    if (opened == nullptr) {
        return false;
    }
    wchar_t name[2 * (kLongestRegistryPart + 1)];
    for (DWORD i = 0;; ++i) {
        auto length = static_cast<DWORD>(std::size(name));
        const LSTATUS status
            = ::RegEnumKeyExW(opened.get(), i, name, &length, nullptr, nullptr, nullptr, nullptr);
        if (status != ERROR_SUCCESS) {
            std::sort(names.begin(), names.end());
            return status == ERROR_NO_MORE_ITEMS;
        }
        names.push_back(FromWide({ name, length }));
    }
}

bool ListRegistryValues(
    ERegistryRoot root, std::u16string_view key, std::vector<SRegistryValue>& values)
{
    values.clear();
    const Key opened = openKey(root, key, KEY_QUERY_VALUE);
    if (opened == nullptr) {
        return false;
    }
    std::wstring name(kLongestRegistryName + 1, L'\0');
    for (DWORD i = 0;; ++i) {
        auto length = static_cast<DWORD>(name.size());
        const LSTATUS status = ::RegEnumValueW(
            opened.get(), i, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (status != ERROR_SUCCESS) {
            std::sort(values.begin(), values.end(),
                [](const SRegistryValue& a, const SRegistryValue& b) { return a.name < b.name; });
            return status == ERROR_NO_MORE_ITEMS;
        }
        SRegistryValue value{ FromWide({ name.data(), length }), {}, {} };
        DWORD type = 0; // read with the data, so that they agree
        // One that has gone meanwhile is left out.
        if (readValue(opened.get(), name.substr(0, length), kMostBytes, value.data, type)) {
            value.type = static_cast<ERegistryType>(type);
            values.push_back(std::move(value));
        }
    }
}

bool RemoveRegistryKey(ERegistryRoot root, std::u16string_view key)
{
    std::wstring path;
    return toNative(key, path) && !path.empty()
        && ::RegDeleteTreeW(rootKey(root), path.c_str()) == ERROR_SUCCESS;
}

} // namespace platform
