#pragma once
// Attacks on masks (figure_masks.h): figure steps by table, sliders by subtracting the slider's bit from the occupied
// squares of its line, once forward and once with the board upside down.
// Source: the o ^ (o - 2r) method ("hyperbola quintessence") of the chess programming literature.

#include <array>

#include "core/figure_masks.h"
#include "core/lines.h"

namespace quillon {

inline constexpr TMask kFileA = 0x0101010101010101u;
inline constexpr TMask kFileH = 0x8080808080808080u;
inline constexpr TMask kRank1 = 0xffu;
inline constexpr TMask kRank3 = kRank1 << 16;
inline constexpr TMask kRank6 = kRank1 << 40;
inline constexpr TMask kRank8 = kRank1 << 56;

namespace mask_detail {

constexpr TMask SquaresAt(int square, const int (&steps)[8][2]) {
    TMask mask = 0;
    for (const auto& step : steps)
        if (IsOnBoard(FileOf(square) + step[0], RankOf(square) + step[1]))
            mask |= MaskOf(SquareAt(FileOf(square) + step[0], RankOf(square) + step[1]));
    return mask;
}

constexpr auto MakeSteps(const int (&steps)[8][2]) {
    std::array<TMask, kSquares> table{};
    for (int s = 0; s < kSquares; ++s)
        table[static_cast<std::size_t>(s)] = SquaresAt(s, steps);
    return table;
}

inline constexpr int kKingStepList[8][2] = {{0, 1}, {1, 1}, {1, 0}, {1, -1}, {0, -1}, {-1, -1}, {-1, 0}, {-1, 1}};
inline constexpr int kKnightStepList[8][2] = {{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};

/// The whole line of a square in two opposite directions, the square itself excluded.
constexpr TMask LineThrough(int square, TDirection a, TDirection b) {
    TMask mask = 0;
    for (const TDirection d : {a, b})
        for (int s = square, n = kSquaresToEdge[d][static_cast<std::size_t>(square)]; n > 0; --n)
            mask |= MaskOf(s += kSteps[d]);
    return mask;
}

struct TLines {
    TMask m_file, m_diagonal, m_antiDiagonal;
};

constexpr auto MakeLines() {
    std::array<TLines, kSquares> table{};
    for (int s = 0; s < kSquares; ++s)
        table[static_cast<std::size_t>(s)] = {LineThrough(s, 0, 1), LineThrough(s, 4, 7), LineThrough(s, 5, 6)};
    return table;
}

/// Attacks along a rank for each file of the slider and each pattern of the six inner squares.
constexpr auto MakeRankAttacks() {
    std::array<std::array<std::uint8_t, 64>, 8> table{};
    for (int file = 0; file < 8; ++file)
        for (int inner = 0; inner < 64; ++inner) {
            const int occupied = inner << 1;
            int attacks = 0;
            for (int f = file + 1; f < 8; ++f) {
                attacks |= 1 << f;
                if ((occupied >> f) & 1)
                    break;
            }
            for (int f = file - 1; f >= 0; --f) {
                attacks |= 1 << f;
                if ((occupied >> f) & 1)
                    break;
            }
            table[static_cast<std::size_t>(file)][static_cast<std::size_t>(inner)] = static_cast<std::uint8_t>(attacks);
        }
    return table;
}

inline constexpr auto kLines = MakeLines();
inline constexpr auto kRankAttacks = MakeRankAttacks();

/// The board upside down: rank 1 becomes rank 8.
[[nodiscard]] constexpr TMask UpsideDown(TMask mask) {
#if defined(__GNUC__)
    return __builtin_bswap64(mask);
#else
    mask = ((mask >> 8) & 0x00ff00ff00ff00ffu) | ((mask & 0x00ff00ff00ff00ffu) << 8);
    mask = ((mask >> 16) & 0x0000ffff0000ffffu) | ((mask & 0x0000ffff0000ffffu) << 16);
    return (mask >> 32) | (mask << 32);
#endif
}

[[nodiscard]] constexpr TMask AlongLine(TMask occupied, TMask line, TMask slider) {
    TMask forward = occupied & line;
    TMask backward = UpsideDown(forward);
    forward -= slider;
    backward -= UpsideDown(slider);
    return (forward ^ UpsideDown(backward)) & line;
}

} // namespace mask_detail

inline constexpr auto kKingSteps = mask_detail::MakeSteps(mask_detail::kKingStepList);
inline constexpr auto kKnightSteps = mask_detail::MakeSteps(mask_detail::kKnightStepList);

[[nodiscard]] constexpr TMask KingAttacks(int square) { return kKingSteps[static_cast<std::size_t>(square)]; }
[[nodiscard]] constexpr TMask KnightAttacks(int square) { return kKnightSteps[static_cast<std::size_t>(square)]; }

/// Squares a slider on `square` attacks, the first occupied one of each ray included. `occupied` may hold the square.
[[nodiscard]] constexpr TMask BishopAttacks(int square, TMask occupied) {
    const auto& lines = mask_detail::kLines[static_cast<std::size_t>(square)];
    const TMask slider = MaskOf(square);
    return mask_detail::AlongLine(occupied, lines.m_diagonal, slider) |
           mask_detail::AlongLine(occupied, lines.m_antiDiagonal, slider);
}
[[nodiscard]] constexpr TMask RookAttacks(int square, TMask occupied) {
    const auto& lines = mask_detail::kLines[static_cast<std::size_t>(square)];
    const int shift = square & 56;
    const auto inner = static_cast<std::size_t>((occupied >> (shift + 1)) & 63);
    const TMask rank = mask_detail::kRankAttacks[static_cast<std::size_t>(FileOf(square))][inner];
    return mask_detail::AlongLine(occupied, lines.m_file, MaskOf(square)) | rank << shift;
}

[[nodiscard]] constexpr TMask WhitePawnAttacks(TMask pawns) {
    return ((pawns & ~kFileA) << 7) | ((pawns & ~kFileH) << 9);
}
[[nodiscard]] constexpr TMask BlackPawnAttacks(TMask pawns) {
    return ((pawns & ~kFileA) >> 9) | ((pawns & ~kFileH) >> 7);
}

/// Squares strictly between two squares of one line; empty for two squares of no common line.
[[nodiscard]] constexpr TMask SquaresBetween(int a, int b) {
    const TMask ends = MaskOf(a) | MaskOf(b);
    const TDirection direction = kDirectionBetween[static_cast<std::size_t>(a)][static_cast<std::size_t>(b)];
    if (direction == kNoDirection)
        return 0;
    return IsStraight(direction) ? RookAttacks(a, ends) & RookAttacks(b, ends)
                                 : BishopAttacks(a, ends) & BishopAttacks(b, ends);
}

/// All figures of a position as masks.
struct TFigureMasks {
    TMask m_white, m_black;         // all figures of the colour, kings included
    TMask m_pawns, m_knights;       // of both colours
    TMask m_diagonalSliders;        // bishops and queens of both colours
    TMask m_straightSliders;        // rooks and queens of both colours
    int m_nWhiteKing, m_nBlackKing; // squares

    [[nodiscard]] TMask Occupied() const { return m_white | m_black; }
};

[[nodiscard]] inline TFigureMasks TakeMasks(const TChessboard& b) {
    const CBoardPlanes planes(b.m_board.data());
    return {planes.Plane<6>(), planes.Plane<7>(), planes.Plane<1>(),  planes.Plane<4>(),
            planes.Plane<2>(), planes.Plane<3>(), WhiteKingSquare(b), BlackKingSquare(b)};
}

} // namespace quillon
