#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tamesh {

/// The longest start of `text` (UTF-8) that has at most `bytes` bytes and ends with a whole
/// character.
std::string_view CutText(std::string_view text, std::size_t bytes);

/// Text that others wrote, made fit to be shown: without characters that steer a terminal, and not
/// longer than a person reads.
std::string MakeDisplayText(std::string_view text);

/// The last part of a path, fit to be shown.
std::string MakeDisplayName(std::string_view path);

} // namespace tamesh
