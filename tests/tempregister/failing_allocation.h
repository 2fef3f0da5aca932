#pragma once
// This program's operator new: it counts the allocations of each thread and can be told to fail.

#include <cstddef>

namespace quillon::test {

/// Allocations that this thread has made through operator new so far.
[[nodiscard]] long AllocationsOfThisThread();

/// While it lives, every allocation of this thread after the first `nAllowed`, if it is of at least `nLeastBytes`,
/// throws std::bad_alloc.
class CFailingAllocations {
  public:
    explicit CFailingAllocations(long nAllowed = 0, std::size_t nLeastBytes = 0);
    CFailingAllocations(const CFailingAllocations&) = delete;
    CFailingAllocations& operator=(const CFailingAllocations&) = delete;
    ~CFailingAllocations();
};

} // namespace quillon::test
