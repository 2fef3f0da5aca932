#pragma once
// Lines and rays on the byte board: directions between squares and walks along them.

#include <array>
#include <cstdint>

#include "core/chessboard.h"

namespace quillon {

/// Directions, straight ones first: up, down, right, left, then the diagonals. The order is the order of generation.
using TDirection = std::uint8_t;
inline constexpr TDirection kNoDirection = 8;
inline constexpr int kDirections = 8;
inline constexpr int kStraightDirections = 4; // 0..3 straight, 4..7 diagonal
inline constexpr std::array<std::int8_t, kDirections> kSteps{8, -8, 1, -1, 9, 7, -7, -9};

[[nodiscard]] constexpr bool IsStraight(TDirection direction) { return direction < kStraightDirections; }

namespace lines_detail {

inline constexpr std::array<std::int8_t, kDirections> kFileSteps{0, 0, 1, -1, 1, -1, 1, -1};
inline constexpr std::array<std::int8_t, kDirections> kRankSteps{1, -1, 0, 0, 1, 1, -1, -1};

constexpr auto MakeSquaresToEdge() {
    std::array<std::array<std::uint8_t, kSquares>, kDirections> table{};
    for (std::size_t d = 0; d < kDirections; ++d)
        for (int s = 0; s < kSquares; ++s) {
            int n = 0;
            for (int f = FileOf(s) + kFileSteps[d], r = RankOf(s) + kRankSteps[d]; IsOnBoard(f, r);
                 f += kFileSteps[d], r += kRankSteps[d])
                ++n;
            table[d][static_cast<std::size_t>(s)] = static_cast<std::uint8_t>(n);
        }
    return table;
}

constexpr auto MakeDirections() {
    std::array<std::array<TDirection, kSquares>, kSquares> table{};
    for (auto& row : table)
        row.fill(kNoDirection);
    for (std::size_t d = 0; d < kDirections; ++d)
        for (int s = 0; s < kSquares; ++s)
            for (int f = FileOf(s) + kFileSteps[d], r = RankOf(s) + kRankSteps[d]; IsOnBoard(f, r);
                 f += kFileSteps[d], r += kRankSteps[d])
                table[static_cast<std::size_t>(s)][SquareAt(f, r)] = static_cast<TDirection>(d);
    return table;
}

} // namespace lines_detail

/// Squares from a square to the edge in a direction, 0..7.
inline constexpr auto kSquaresToEdge = lines_detail::MakeSquaresToEdge();

/// Direction from one square to another on the same line; kNoDirection for others and for equal squares.
inline constexpr auto kDirectionBetween = lines_detail::MakeDirections();

[[nodiscard]] inline TDirection DirectionBetween(int from, int to) {
    return kDirectionBetween[static_cast<std::size_t>(from)][static_cast<std::size_t>(to)];
}

/// First occupied square from `from` (exclusive) in a direction; kNoSquare if the ray is empty.
[[nodiscard]] inline TSquare FirstOnRay(const TChessboard& b, int from, TDirection direction) {
    const int step = kSteps[direction];
    int square = from;
    for (int n = kSquaresToEdge[direction][static_cast<std::size_t>(from)]; n > 0; --n) {
        square += step;
        if (b.m_board[static_cast<std::size_t>(square)] != kNoFigure)
            return static_cast<TSquare>(square);
    }
    return kNoSquare;
}

/// Are all squares strictly between two squares of one line, `direction` leading from the first to the second, empty?
[[nodiscard]] inline bool IsEmptyBetween(const TChessboard& b, int from, int to, TDirection direction) {
    const int step = kSteps[direction];
    for (int square = from + step; square != to; square += step)
        if (b.m_board[static_cast<std::size_t>(square)] != kNoFigure)
            return false;
    return true;
}

/// Does a figure of this kind slide along this direction?
[[nodiscard]] constexpr bool SlidesAlong(TFigure figure, TDirection direction) {
    return (figure & (IsStraight(direction) ? kRook : kBishop)) != 0;
}

/// Sliders of a colour that move along this direction.
[[nodiscard]] constexpr bool IsSliderAlong(TFigure figure, TFigure colour, TDirection direction) {
    return (figure & colour) != 0 && SlidesAlong(figure, direction);
}

/// Has the colour any slider along this direction on the board?
[[nodiscard]] constexpr bool HasWhiteSlider(const TChessboard& b, TDirection direction) {
    return b.m_whiteQueens != 0 || (IsStraight(direction) ? b.m_whiteRooks : b.m_whiteBishops) != 0;
}
[[nodiscard]] constexpr bool HasBlackSlider(const TChessboard& b, TDirection direction) {
    return b.m_blackQueens != 0 || (IsStraight(direction) ? b.m_blackRooks : b.m_blackBishops) != 0;
}

} // namespace quillon
