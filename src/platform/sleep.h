#pragma once
// Giving the processor to others.

#include <cstdint>

namespace quillon {

/// Suspends the calling thread for at least `milliseconds`, signals or not. 0 only yields: it stays ready.
void SleepMs(std::uint32_t milliseconds);

} // namespace quillon
