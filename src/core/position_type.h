#pragma once
// Position types: a position's material besides the kings, the key of every lookup of precalculated data.
//
//   number  figures in the order white Q R B N P, black Q R B N P; each appends one nibble (1..10; 11 and 12 stand for
//           a figure of no fixed kind in a custom data set); the finished number is doubled, so bit 0 is free.
//           0 means more than five figures, or none.
//   text    the nibbles as letters of "QRBNPqrbnpXx", first nibble first: two white rooks and a black pawn are "RRp".

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillon {

struct TChessboard;

using TPositionType = std::uint64_t;

inline constexpr int kMaxTypeMen = 5;                            // figures besides the kings
inline constexpr std::string_view kTypeLetters = "QRBNPqrbnpXx"; // nibble 1 is the first letter

/// The ten counters, in the order of the letters.
[[nodiscard]] std::array<std::uint8_t, 10> FigureCounts(const TChessboard& b);

/// From the ten counters; 0 when their sum exceeds five.
[[nodiscard]] TPositionType GetPositionType(const TChessboard& b);

/// At most seven letters; the empty string for 0 and for a number that is no type.
[[nodiscard]] std::string PositionTypeToString(TPositionType type);

/// The text without the first occurrence of the letter. Throws ChessException if it is not there.
[[nodiscard]] std::string RemoveFromPosType(std::string_view typeText, char letter);

/// The first index i such that `typeText` without its letter i equals `otherText`; -1 if there is none.
/// Throws ChessException unless `otherText` is one letter shorter.
[[nodiscard]] int GetIndexToRemoveToObtainOtherPosType(std::string_view typeText, std::string_view otherText);

} // namespace quillon
