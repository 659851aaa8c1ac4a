#pragma once

#include "platform/platformregistry.h"

#include <string>
#include <string_view>

namespace tamesh {

/// One persistent option, with its place.
struct SOption
{
    platform::ERegistryRoot root = platform::eRo_CurrentUser;
    std::u16string key;
    platform::SRegistryValue value;
};

/// The roots by the names that users give them: user, users, machine, classes, config.
platform::ERegistryRoot GetOptionRoot(std::string_view name);
std::string_view GetOptionRootName(platform::ERegistryRoot root);

/// The value as a person reads it: a number, a text in quotes, bytes.
std::string FormatOptionValue(const platform::SRegistryValue& value);

/// An exported option, a line without its end: root, key, name, type and data, with tabs between
/// them. README.md describes it.
std::string FormatOption(const SOption& option);
/// Throws std::invalid_argument, with what is wrong, for a line that is no option.
SOption ParseOption(std::string_view line);

/// A value of 32 bits, where the text is a whole number that fits, and else the text.
platform::SRegistryValue MakeOptionValue(std::string_view name, std::string_view text);
platform::SRegistryValue MakeTextOptionValue(std::string_view name, std::string_view text);

} // namespace tamesh
