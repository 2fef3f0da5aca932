#pragma once
// The key of a register of doubtful results.

#include <cstdint>

namespace quillon {

/// The heuristics word in the low half, the word of their parameters in the high half.
[[nodiscard]] constexpr std::uint64_t HeuristicsKey(std::uint32_t heuristics, std::uint32_t params) {
    constexpr int kHalf = 32;
    return std::uint64_t{params} << kHalf | heuristics;
}

} // namespace quillon
