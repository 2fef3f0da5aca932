#pragma once
// This program's operator new: it counts the allocations of each thread and can be told to fail.

#include <cstddef>
#include <functional>

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

/// While it lives, `body` is called before an object of so many bytes is deleted, on any thread. One at a time;
/// compilers need not tell sizes.
class CBeforeDelete {
  public:
    CBeforeDelete(std::size_t nBytes, std::function<void()> body);
    CBeforeDelete(const CBeforeDelete&) = delete;
    CBeforeDelete& operator=(const CBeforeDelete&) = delete;
    ~CBeforeDelete();

  private:
    const std::function<void()> m_body;
};

} // namespace quillon::test
