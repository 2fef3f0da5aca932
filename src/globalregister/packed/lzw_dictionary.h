#pragma once
// What coder and decoder of LZW blocks share: how codes are numbered, how wide they are, and the strings that each
// block begins with. T is the element: std::uint8_t or std::uint16_t.
//
//   plain  all single elements in ascending order, 256 of one byte, 1024 (0 to 1023) of two
//   rich   for each of these values v the single v, and for v from 1 to 20 also the pair (v, E), where E is the
//   greatest
//          value of an element; then, of two bytes, the single E; then runs of E of lengths 2 to 128. In old files
//          only.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace quillon {

inline constexpr std::size_t kMaxLzwString = 255; // elements

/// Codes of a block of 8192 or 16384 elements.
[[nodiscard]] constexpr std::uint32_t MaxLzwEntries(std::size_t nBlockElements) {
    return nBlockElements == 8192 ? 2048 : 4096;
}

/// The number of codes given out so far, and the width of a code that follows from it.
struct TLzwCodes {
    std::uint32_t nMaxEntries;
    std::uint32_t nEntries = 0; // also the next code
    std::uint32_t nCodeBits = 0;
    std::uint32_t nNextWidthAt = 1; // the number of entries at which the width grows

    /// A string of this length becomes an entry if there is room for one.
    ///
    /// The strings of a block share 32768 units of the size of an element, in blocks of 16384 elements 65536, and each
    /// takes three bytes or two words beside its elements. No block reaches that: the strings that it adds have its own
    /// elements at most, and one more each. With the rich dictionary, whose strings are the most, these are
    ///   bytes  9760 + 8192 + 1645 * 4 = 24532   in larger blocks  9760 + 16384 + 3693 * 4 = 40916
    ///   words  11664 + 8192 + 876 * 3 = 22484                     11664 + 16384 + 2924 * 3 = 36820
    /// units: of the initial strings, of the block, of the entries that are left.
    [[nodiscard]] bool HasRoomFor(std::size_t nLength) const {
        return nEntries < nMaxEntries && nLength <= kMaxLzwString;
    }

    void Add() {
        if (++nEntries == nNextWidthAt)
            nNextWidthAt = 1u << ++nCodeBits;
    }
};

/// The strings of the initial dictionary by code.
template <class T> [[nodiscard]] std::vector<std::vector<T>> InitialLzwStrings(bool bPlain) {
    constexpr T kGreatest = std::numeric_limits<T>::max();
    constexpr std::uint32_t kSingles = sizeof(T) == 1 ? 256 : 1024;
    constexpr std::uint32_t kPairedFrom = 1, kPairedTo = 20;
    constexpr std::size_t kLongestRun = 128;
    std::vector<std::vector<T>> strings;
    for (std::uint32_t value = 0; value < kSingles; ++value) {
        strings.push_back({static_cast<T>(value)});
        if (!bPlain && value >= kPairedFrom && value <= kPairedTo)
            strings.push_back({static_cast<T>(value), kGreatest});
    }
    if (bPlain)
        return strings;
    for (std::size_t length = sizeof(T) == 1 ? 2 : 1; length <= kLongestRun; ++length)
        strings.emplace_back(length, kGreatest);
    return strings;
}

} // namespace quillon
