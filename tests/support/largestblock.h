#pragma once

#include <atomic>
#include <cstddef>

/// The largest block that operator new has been asked for in this program since the test set it to
/// 0: what a hostile count makes the library take.
extern std::atomic<std::size_t> s_largestBlock;

/// While true, operator new fails on this thread.
extern thread_local bool s_isMemoryGone;
