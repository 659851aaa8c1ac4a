#pragma once

#include <cstdint>

namespace platform {

/// Gives the thread `id` a priority of the ladder (see Thread::SetPriority); false, with errno set
/// and nothing changed, for another value or without the right.
[[nodiscard]] bool ApplyThreadPriority(std::uint32_t id, int priority);

} // namespace platform
