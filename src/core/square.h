#pragma once
// Squares: one byte, rank * 8 + file, a1 = 0, h1 = 7, a8 = 56, h8 = 63.

#include <cstdint>

namespace quillon {

using TSquare = std::uint8_t;

inline constexpr TSquare kNoSquare = 255;
inline constexpr int kSquares = 64;

inline constexpr TSquare kA1 = 0, kC1 = 2, kD1 = 3, kE1 = 4, kF1 = 5, kG1 = 6, kH1 = 7;
inline constexpr TSquare kA8 = 56, kC8 = 58, kD8 = 59, kE8 = 60, kF8 = 61, kG8 = 62, kH8 = 63;

[[nodiscard]] constexpr int FileOf(int square) { return square & 7; }
[[nodiscard]] constexpr int RankOf(int square) { return square >> 3; }
[[nodiscard]] constexpr TSquare SquareAt(int file, int rank) { return static_cast<TSquare>(rank * 8 + file); }
[[nodiscard]] constexpr bool IsOnBoard(int file, int rank) { return ((file | rank) & ~7) == 0; }

/// 0 for a dark square (a1), 1 for a light one.
[[nodiscard]] constexpr int ColourOf(int square) { return ((square >> 3) + square) & 1; }

[[nodiscard]] constexpr int AbsDiff(int a, int b) { return a < b ? b - a : a - b; }

/// Distance in king steps.
[[nodiscard]] constexpr int KingSteps(int a, int b) {
    const int files = AbsDiff(FileOf(a), FileOf(b));
    const int ranks = AbsDiff(RankOf(a), RankOf(b));
    return files > ranks ? files : ranks;
}

/// Distance of a file or rank index to its nearer edge.
inline constexpr int kEdgeDistance[8] = {0, 1, 2, 3, 3, 2, 1, 0};

/// Ring of a square: its distance to the edge of the board, 0 (edge) to 3.
[[nodiscard]] constexpr int RingOf(int file, int rank) {
    return kEdgeDistance[file] < kEdgeDistance[rank] ? kEdgeDistance[file] : kEdgeDistance[rank];
}

} // namespace quillon
