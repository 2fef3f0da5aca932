#pragma once
// What stands on the board, in numbers. Heavy figures are queens and rooks.

#include "core/chessboard.h"

namespace quillon {

[[nodiscard]] constexpr int WhiteHeavyFigures(const TChessboard& b) { return b.m_whiteQueens + b.m_whiteRooks; }

inline constexpr int kQueenWorth = 9, kRookWorth = 5, kMinorWorth = 3, kPawnWorth = 1;

/// A king, and an empty square, is worth nothing.
[[nodiscard]] constexpr int WorthOf(TFigure figure) {
    switch (KindOf(figure)) {
    case kQueen:
        return kQueenWorth;
    case kRook:
        return kRookWorth;
    case kBishop:
    case kKnight:
        return kMinorWorth;
    case kPawn:
        return kPawnWorth;
    default:
        return 0;
    }
}

[[nodiscard]] constexpr int WhiteMaterial(const TChessboard& b) {
    return kQueenWorth * b.m_whiteQueens + kRookWorth * b.m_whiteRooks +
           kMinorWorth * (b.m_whiteBishops + b.m_whiteKnights) + kPawnWorth * b.m_whitePawns;
}
[[nodiscard]] constexpr int BlackMaterial(const TChessboard& b) {
    return kQueenWorth * b.m_blackQueens + kRookWorth * b.m_blackRooks +
           kMinorWorth * (b.m_blackBishops + b.m_blackKnights) + kPawnWorth * b.m_blackPawns;
}

} // namespace quillon
