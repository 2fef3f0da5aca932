#pragma once
// The tagged word of a bucket; its picture is told by combined_map.h. For the files of TRegisterCombinedMap.

#include <cassert>
#include <cstdint>

#include "tempregister/register_bucket.h"

namespace quillon {

inline constexpr std::uint64_t kLargeBit = std::uint64_t{1} << 63;
inline constexpr std::uint64_t kPointerMask = (std::uint64_t{1} << 48) - 1;

[[nodiscard]] inline bool IsLarge(std::uint64_t word) { return (word & kLargeBit) != 0; }

template <typename TBucket> [[nodiscard]] TBucket* PointerOf(std::uint64_t word) {
    constexpr int kOtherBits = 16;
    const std::int64_t address = static_cast<std::int64_t>(word << kOtherBits) >> kOtherBits;
    return reinterpret_cast<TBucket*>(static_cast<std::intptr_t>(address));
}

[[nodiscard]] inline std::uint64_t WithPointer(std::uint64_t word, const void* bucket, bool bLarge) {
    const std::uint64_t address = reinterpret_cast<std::uintptr_t>(bucket);
    assert(PointerOf<const void>(address) == bucket);
    return (word & ~(kLargeBit | kPointerMask)) | (address & kPointerMask) | (bLarge ? kLargeBit : 0);
}

[[nodiscard]] inline std::uint64_t WithoutBucket(std::uint64_t word) { return WithPointer(word, nullptr, false); }

inline constexpr std::int64_t kSmallBytes = sizeof(SmallBucket);

/// Bytes of a large bucket with its array.
[[nodiscard]] inline std::int64_t BytesOf(const LargeBucket& bucket) {
    return static_cast<std::int64_t>(sizeof bucket + bucket.Capacity() * sizeof(TCombinedElement));
}

} // namespace quillon
