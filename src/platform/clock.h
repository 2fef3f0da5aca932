#pragma once
// Clocks: a steady one for time limits and time stamps, and the processor time of the process.

#include <cstdint>

namespace quillon {

/// Milliseconds of a clock that is never set back. Its zero is arbitrary: only differences mean something.
[[nodiscard]] std::uint64_t TickCount64();

/// The same clock as the system's last tick left it, some milliseconds ago: much cheaper to ask.
[[nodiscard]] std::uint64_t CoarseTickCount64();

/// Seconds of processor time that all threads of the process have used so far.
[[nodiscard]] double ProcessCpuSeconds();

} // namespace quillon
