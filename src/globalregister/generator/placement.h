#pragma once
// TPlacement: a position as the generator of endgame data plays on it: figure masks (core/mask_attacks.h) and the
// square of each man of its material (material.h). There is no side to move, no castling and no history.

#include <array>
#include <cstddef>

#include "core/mask_moves.h"
#include "core/mate_test.h"

namespace quillon {

inline constexpr std::size_t kMostMen = 30; // besides the kings

struct TPlacement : TFigureMasks {
    std::array<TSquare, kMostMen + 2> m_men{}; // in the order of the material; entries beyond it mean nothing
};

/// No man of the material: a king, or nobody.
inline constexpr std::size_t kNoMan = 255;

/// Squares that a man other than a pawn attacks.
[[nodiscard]] inline TMask AttacksOf(TFigure kind, int square, TMask occupied) {
    switch (kind) {
    case kKing:
        return KingAttacks(square);
    case kKnight:
        return KnightAttacks(square);
    case kBishop:
        return BishopAttacks(square, occupied);
    case kRook:
        return RookAttacks(square, occupied);
    default:
        return BishopAttacks(square, occupied) | RookAttacks(square, occupied);
    }
}

/// Squares straight ahead of a pawn, promotion squares too.
[[nodiscard]] inline TMask WhitePawnSteps(int square, TMask occupied) {
    const TMask once = MaskOf(square) << 8 & ~occupied;
    return once | ((once & kRank3) << 8 & ~occupied);
}
[[nodiscard]] inline TMask BlackPawnSteps(int square, TMask occupied) {
    const TMask once = MaskOf(square) >> 8 & ~occupied;
    return once | ((once & kRank6) >> 8 & ~occupied);
}

/// Squares that a pawn came from, moving straight ahead.
[[nodiscard]] inline TMask WhitePawnUnsteps(int square, TMask occupied) {
    constexpr TMask kRank4 = kRank1 << 24;
    const TMask once = MaskOf(square) >> 8 & ~occupied & ~kRank1;
    return once | ((MaskOf(square) & kRank4) >> 16 & once >> 8 & ~occupied);
}
[[nodiscard]] inline TMask BlackPawnUnsteps(int square, TMask occupied) {
    constexpr TMask kRank5 = kRank1 << 32;
    const TMask once = MaskOf(square) << 8 & ~occupied & ~kRank8;
    return once | ((MaskOf(square) & kRank5) << 16 & once << 8 & ~occupied);
}

/// The squares beside a square on its rank.
[[nodiscard]] inline TMask SquaresBeside(int square) {
    return ((MaskOf(square) & ~kFileA) >> 1) | ((MaskOf(square) & ~kFileH) << 1);
}

[[nodiscard]] inline TMask PawnsOf(const TFigureMasks& m, TMask colour) { return m.m_pawns & colour; }

/// A white pawn's double step to `to` after which Black may be able to capture it in passing.
[[nodiscard]] inline bool InvitesEnPassant(const TFigureMasks& m, int to) {
    return (SquaresBeside(to) & PawnsOf(m, m.m_black)) != 0;
}

} // namespace quillon
