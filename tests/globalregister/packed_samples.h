#pragma once
// Data to pack: random, repetitive, alike what is packed in earnest, and made to meet the limits of a format.

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "support/random_positions.h"

namespace quillon {

using TBytes = std::vector<std::uint8_t>;

inline TBytes RandomBytes(std::mt19937_64& rng, std::size_t size, std::uint64_t nValues = 256) {
    TBytes bytes(size);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(reference::Draw(rng, nValues));
    return bytes;
}

/// Runs and repetitions of any length and distance between pieces that are new.
inline TBytes RepetitiveBytes(std::mt19937_64& rng, std::size_t size) {
    TBytes bytes;
    while (bytes.size() < size) {
        const std::size_t length = 1 + reference::Draw(rng, std::size_t{1} << reference::Draw(rng, 11));
        const std::uint64_t kind = bytes.empty() ? 0 : reference::Draw(rng, 3);
        const std::size_t distance = bytes.empty() ? 0 : 1 + reference::Draw(rng, bytes.size());
        for (std::size_t i = 0; i < length; ++i)
            bytes.push_back(kind == 0   ? static_cast<std::uint8_t>(reference::Draw(rng, 256))
                            : kind == 1 ? bytes[bytes.size() - distance]
                                        : bytes.back());
    }
    bytes.resize(size);
    return bytes;
}

/// Like a table of mate lengths: slow change along several periods, holes where there is no position.
inline TBytes TableBytes(std::size_t size) {
    TBytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t a = i % 10, b = i / 10 % 64, c = i / 640 % 64, d = i / 40960 % 64;
        const bool bHole = b == c || c == d || b % 8 == d % 8;
        bytes[i] = static_cast<std::uint8_t>(bHole ? 0 : 3 + (a + b % 8 + c / 8 + (b * c + d) % 5) % 30);
    }
    return bytes;
}

} // namespace quillon
