#pragma once
// Free lists of bucket storage, so that the turnover of buckets stays out of the allocator.
//
// There is one list of small blocks and one of the headers of large buckets, for all registers of the process. A header
// keeps its array on the list, if that is no larger than kLargestKeptArray: it needs no allocation when it is used
// again. Threads: any. Each list is guarded by a spin flag, held for a few instructions.

#include <cstddef>
#include <cstdint>

#include "tempregister/register_bucket.h"

namespace quillon {

/// Entries that each list has room for.
inline constexpr std::size_t kFreeListRoom = 0x80000;

/// An empty bucket, owned by the caller until it is freed.
///   Errors  std::bad_alloc when the list is empty and memory is out.
[[nodiscard]] SmallBucket* NewSmallBucket();
/// The same, with room for kLargeBucketStart elements at least.
[[nodiscard]] LargeBucket* NewLargeBucket();

/// Empties the bucket and puts it on its list, or gives it back to the allocator when the list is full.
void FreeBucket(SmallBucket* bucket) noexcept;
void FreeBucket(LargeBucket* bucket) noexcept;

/// Buckets on the two lists now.
[[nodiscard]] std::size_t FreeSmallBuckets();
[[nodiscard]] std::size_t FreeLargeBuckets();

/// Gives back to the allocator what is on the lists beyond about so many bytes.
void TrimFreeBuckets(std::uint64_t bytes) noexcept;

/// Gives all that is on the lists back to the allocator; the headers' own places are kept for the next ones.
void ReleaseFreeBuckets() noexcept;

} // namespace quillon
