#include "platform/large_pages.h"

#include <cstdint>
#include <sys/mman.h>

namespace quillon {

void PreferLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t bytes) {
#if defined(MADV_HUGEPAGE)
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = (address + kLargePage - 1) / kLargePage * kLargePage;
    const std::uintptr_t end = (address + bytes) / kLargePage * kLargePage;
    if (first < end)
        (void)madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
#endif
}

} // namespace quillon
