#pragma once
// How much memory there is and how much the process holds. All in bytes.

#include <cstdint>

namespace quillon {

/// Memory the process can count on: that of the machine, or the limit of its container if that is less.
[[nodiscard]] std::uint64_t PhysicalMemory();

/// Physical memory that the process occupies now; 0 if the system does not tell.
[[nodiscard]] std::uint64_t ResidentMemory();

/// The most it has occupied so far.
[[nodiscard]] std::uint64_t PeakResidentMemory();

/// A share of so many bytes of memory.
///   Unit  nPercent: 0..100; the result in whole MiB.
[[nodiscard]] constexpr std::uint64_t ShareMB(std::uint64_t nBytes, int nPercent) {
    return (nBytes >> 20) * static_cast<std::uint64_t>(nPercent) / 100;
}

} // namespace quillon
