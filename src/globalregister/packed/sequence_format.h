#pragma once
// What coder and decoder of the packed block format (packed_block.h) share: the numbers of a sequence.

#include <cstddef>

namespace quillon {

inline constexpr unsigned kNibbleFull = 15;         // a length goes on in bytes of its own
inline constexpr unsigned kExtensionFull = 255;     // such a byte is followed by another one
inline constexpr unsigned kLongExtensionMask = 127; // the first such byte of a match in the long form
inline constexpr unsigned kLongOffsetMark = 128;    // and the bit beside it: the offset has three bytes

inline constexpr std::size_t kMinMatch = 4;
inline constexpr std::size_t kMinOffset = 4;
inline constexpr std::size_t kOverlapOffset = 16; // a match from nearer than this is no longer than its offset

inline constexpr std::size_t kShortOffsetBytes = 2;
inline constexpr std::size_t kLongOffsetBytes = 3;
inline constexpr std::size_t kShortWindow = 0x10000; // offsets are below it
inline constexpr std::size_t kLongWindow = 0x1000000;

/// The shortest match with an offset of three bytes: only a full nibble has room for the mark.
inline constexpr std::size_t kMinFarMatch = kNibbleFull + kMinMatch;

} // namespace quillon
