#pragma once
// Large pages: memory that is read at random costs much less on them, since the processor remembers where a page is for
// a few thousand pages only.

#include <cstddef>
#include <new>

namespace quillon {

inline constexpr std::size_t kLargePage = std::size_t{2} << 20;

/// Asks the system to put this memory on large pages. Only a hint: nothing happens where it has none.
void PreferLargePages(void* memory, std::size_t bytes);

/// An allocator that puts what fills large pages on such.
///   Errors  std::bad_alloc
template <typename TValue> struct CLargePageAllocator {
    using value_type = TValue;

    CLargePageAllocator() = default;
    template <typename TOther> explicit CLargePageAllocator(const CLargePageAllocator<TOther>&) {}

    [[nodiscard]] TValue* allocate(std::size_t count) {
        const std::size_t bytes = count * sizeof(TValue);
        if (bytes < kLargePage)
            return static_cast<TValue*>(::operator new(bytes));
        void* memory = ::operator new (bytes, std::align_val_t{kLargePage});
        PreferLargePages(memory, bytes);
        return static_cast<TValue*>(memory);
    }

    void deallocate(TValue* memory, std::size_t count) noexcept {
        if (count * sizeof(TValue) < kLargePage)
            ::operator delete(memory);
        else
            ::operator delete (memory, std::align_val_t{kLargePage});
    }

    friend bool operator==(const CLargePageAllocator&, const CLargePageAllocator&) { return true; }
};

} // namespace quillon
