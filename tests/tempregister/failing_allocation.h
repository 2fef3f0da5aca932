#pragma once
// This program's operator new: it counts the allocations of each thread and can be told to fail.

namespace quillon::test {

/// Allocations that this thread has made through operator new so far.
[[nodiscard]] long AllocationsOfThisThread();

/// While it lives, every allocation of this thread after the first `nAllowed` throws std::bad_alloc.
class CFailingAllocations {
  public:
    explicit CFailingAllocations(long nAllowed = 0);
    CFailingAllocations(const CFailingAllocations&) = delete;
    CFailingAllocations& operator=(const CFailingAllocations&) = delete;
    ~CFailingAllocations();
};

} // namespace quillon::test
