#pragma once

#include <string_view>

namespace platform {

/// Tells whom SetRegistryReport has named. To be called with no lock held.
void ReportOnRegistry(std::u16string_view text);

} // namespace platform
