#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace platform {

constexpr std::size_t kLongestRegistryPart = 255;
constexpr std::size_t kLongestRegistryName = 16383;

/// The system's texts end at a zero, so those of every other system do.
inline std::u16string_view UntilZero(std::u16string_view text)
{
    return text.substr(0, text.find(u'\0'));
}

/// Finds the parts of a key; none is the root. False for what is no key.
inline bool SplitRegistryKey(std::u16string_view key, std::vector<std::u16string_view>& parts)
{
    constexpr char16_t kSeparator = u'\\';
    parts.clear();
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
            parts.push_back(part);
        }
    }
    return true;
}

inline bool IsRegistryName(std::u16string_view name)
{
    return UntilZero(name).size() <= kLongestRegistryName;
}

} // namespace platform
