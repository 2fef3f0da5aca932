#pragma once
// What the targets share: the way they say that the code under test broke its word.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace quillon {

/// The bytes of an input as text.
[[nodiscard]] inline std::string_view AsText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Ends the program, in release builds too, so that the fuzzer keeps the input.
inline void Require(bool bHolds, const char* promise) {
    if (bHolds)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

} // namespace quillon
