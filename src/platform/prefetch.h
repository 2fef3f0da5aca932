#pragma once
// A hint to the processor: this memory will be read soon. Nothing happens on a compiler that has no such hint.

namespace quillon {

inline void Prefetch([[maybe_unused]] const void* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address);
#endif
}

} // namespace quillon
