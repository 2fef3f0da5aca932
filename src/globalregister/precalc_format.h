#pragma once
// What stands in the files of a table: its flags, its elements, and the form of a plain file.
//
// Element 0 names no position, so its place holds the flags:
//   bit  mask  meaning
//   0    1     pawns count 48 squares; set in all new files with pawns
//   1    2     groups of equal pieces are combinations
//   2    4     elements have two bytes; honoured for types of at least four men besides the kings
//
// Elements: 0 no mate; n White, to move, mates in n; unknown are 255 in one byte, 32768 and above in two.
//
// Bit data: two bits an index, lowest first, in files of types of six and more men and of "PPp". Bit 0 of a pair:
// White, to move, mates; the lengths are in the details file, a table of elements as above.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "globalregister/position_indexing.h"

namespace quillon {

inline constexpr std::uint16_t kFlagPawnRanks48 = 1;
inline constexpr std::uint16_t kFlagCombinations = 2;
inline constexpr std::uint16_t kFlagWideElements = 4;

inline constexpr std::uint8_t kUnknownElement = 255;
inline constexpr std::uint16_t kFirstUnknownWord = 0x8000; // from here on no number of half-moves stands for a length
inline constexpr std::uint16_t kUnknownHalfMoves = 65535;

/// While a table is made, an element holds the length below its highest bit, all of those bits set where nothing is
/// settled, and a mark about Black in the highest. What is less than this has settled plainly.
inline constexpr std::uint16_t kFirstUnsettledByte = 127;
inline constexpr std::uint16_t kFirstUnsettledWord = 32767;

/// Half-moves to mate with White to move: 0 no mate, kUnknownHalfMoves, otherwise odd.
[[nodiscard]] constexpr std::uint16_t HalfMovesOfByte(std::uint8_t element) {
    if (element == kUnknownElement)
        return kUnknownHalfMoves;
    return static_cast<std::uint16_t>(element == 0 ? 0 : 2 * element - 1);
}
[[nodiscard]] constexpr std::uint16_t HalfMovesOfWord(std::uint16_t element) {
    if (element >= kFirstUnknownWord)
        return kUnknownHalfMoves;
    return static_cast<std::uint16_t>(element == 0 ? 0 : 2 * element - 1);
}

inline constexpr std::uint64_t kPairsOfAByte = 4;

/// The pair of an index in bit data: 0 to 3.
[[nodiscard]] constexpr std::uint8_t BitPair(const std::uint8_t* data, std::uint64_t index) {
    return data[index / 4] >> (2 * (index % 4)) & 3;
}

/// Sets the bits of `value` (0 to 3) in the pair of an index; none is cleared.
constexpr void AddToBitPair(std::uint8_t* data, std::uint64_t index, std::uint8_t value) {
    data[index / 4] = static_cast<std::uint8_t>(data[index / 4] | value << (2 * (index % 4)));
}

/// The flags that a new file of this type has.
[[nodiscard]] std::uint16_t FlagsOf(const TPositionIndexing& indexing, bool bWideElements);

/// Bytes of an element of this type's tables: 1 or 2.
[[nodiscard]] std::size_t ElementSize(const TPositionIndexing& indexing, std::uint16_t wFlags);

/// Numbers positions as a file with these flags does.
///   Errors  false: memory is short for the combinations.
[[nodiscard]] bool ApplyFlags(TPositionIndexing& indexing, std::uint16_t wFlags);

/// True if the depths of this type stand in a details file beside bit data.
[[nodiscard]] bool UsesBitData(const TPositionIndexing& indexing);

enum class EPlainForm : std::uint8_t {
    BitData,  // two bits an index
    Elements, // of ElementSize bytes
    Wrong,    // neither: foreign, cut, or with other flags
};

/// What a plain file of this size holds, `indexing` being numbered by the file's flags.
[[nodiscard]] EPlainForm PlainFormOf(const TPositionIndexing& indexing, std::uint16_t wFlags, std::uint64_t nFileSize);

/// The first byte of a plain or details file, which is where the flags are.
[[nodiscard]] std::optional<std::uint8_t> ReadFlags(const std::filesystem::path& path);

/// The warning about a file that is there, or has to be, and cannot be read, whatever its size.
[[nodiscard]] std::string UnreadableWarning(const std::filesystem::path& path);

/// The warning about a plain file of form Wrong.
[[nodiscard]] std::string FileSizeWarning(const std::filesystem::path& path, std::uint64_t nFileSize,
                                          std::uint64_t nExpectedSize);

} // namespace quillon
