#pragma once
// What a bucket of the hash table holds: a small block searched from end to end, or a sorted array.

#include <array>
#include <cstddef>
#include <cstdint>

#include "tempregister/large_bucket.h"
#include "tempregister/register_element.h"

namespace quillon {

inline constexpr std::size_t kSmallBucketElements = 8;

/// Elements back to back in the order they came; those from nElements on mean nothing.
struct SmallBucket {
    std::array<TCombinedElement, kSmallBucketElements> elements{};
    std::uint64_t nElements = 0;
};
static_assert(sizeof(SmallBucket) == 552);

} // namespace quillon
