#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

constexpr std::size_t kLongestRegistryPart = 255;
constexpr std::size_t kLongestRegistryName = 16383;

/// The system's texts end at a zero, so those of every other system do.
inline std::u16string_view UntilZero(std::u16string_view text)
{
    return text.substr(0, text.find(u'\0'));
}

/// Makes one spelling of all those of a key: no empty parts. False for what is no key.
inline bool NormaliseRegistryKey(std::u16string_view key, std::u16string& normal)
{
    constexpr char16_t kSeparator = u'\\';
    normal.clear();
    key = UntilZero(key);
    if (key.starts_with(kSeparator)) {
        return false;
    }
    while (!key.empty()) {
        const std::u16string_view part = key.substr(0, key.find(kSeparator));
        key.remove_prefix(part.size() < key.size() ? part.size() + 1 : part.size());
        if (part.size() > kLongestRegistryPart) {
            return false;
        }
        if (!part.empty()) {
            if (!normal.empty()) {
                normal += kSeparator;
            }
            normal += part;
        }
    }
    return true;
}

inline bool IsRegistryName(std::u16string_view name)
{
    return UntilZero(name).size() <= kLongestRegistryName;
}

} // namespace platform
