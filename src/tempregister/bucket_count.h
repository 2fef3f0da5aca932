#pragma once
// How many buckets the registers of an analysis get.

#include <cstdint>

namespace quillon {

inline constexpr std::uint32_t kShortAnalysisBuckets = 16384;
inline constexpr std::uint32_t kUsualBuckets = 0x80000;
inline constexpr std::uint32_t kManyBuckets = 0x400000;
inline constexpr std::uint32_t kFewestBuckets = 256;

/// The memory scale of a problem: the buckets that its length asks for. A large budget pays for more of them.
[[nodiscard]] std::uint32_t BucketsByLength(int nPlies, std::uint64_t nBudgetMB);

/// That scale, or less where the budget does not bear it. A power of two, from the plies of the problem's stipulation
/// (2n - 1) and the budget of its register in MB.
[[nodiscard]] std::uint32_t BucketCount(int nPlies, std::uint64_t nBudgetMB);

} // namespace quillon
