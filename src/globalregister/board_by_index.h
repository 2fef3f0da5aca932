#pragma once
// Putting the men of an index onto a board.

#include "core/chessboard.h"

namespace quillon {

/// Writes the board byte, for kings also their file and rank; counters and lists are left to RecountFigures.
///   Result  false if the square is occupied or no square for this man: a pawn on the first or last rank.
[[nodiscard]] inline bool PlacePiece(TChessboard& b, TSquare square, TFigure figure) {
    if (b.m_board[square] != kNoFigure)
        return false;
    b.m_board[square] = figure;
    const auto file = static_cast<std::int8_t>(FileOf(square)), rank = static_cast<std::int8_t>(RankOf(square));
    if (figure == kWhiteKing) {
        b.m_whiteKingFile = file;
        b.m_whiteKingRank = rank;
    } else if (figure == kBlackKing) {
        b.m_blackKingFile = file;
        b.m_blackKingRank = rank;
    }
    return KindOf(figure) != kPawn || (rank != 0 && rank != 7);
}

} // namespace quillon
