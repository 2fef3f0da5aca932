#pragma once
// A position of a game: the board and what else decides which moves are legal. A problem knows less: there every
// castling that the board shows is possible, and nobody has just made a double step.

#include <array>
#include <vector>

#include "core/chessboard.h"
#include "core/fen.h"
#include "core/move.h"

namespace quillon {

struct TGamePosition {
    std::array<TFigure, kSquares> m_board{};
    bool m_bWhiteToMove = true;
    int m_nCastlingWhite = 0; // rights that are left (kCastlingKingSide, ...): king and rook then stand at home
    int m_nCastlingBlack = 0;
    TSquare m_nDoubleStep = kNoSquare; // where the pawn stands that has just made a double step

    friend bool operator==(const TGamePosition&, const TGamePosition&) = default;
};

struct TGameMove {
    TMove m_move{}; // byte 3 tells an en passant capture
    TGamePosition m_after;
};

/// The record of the board, with its derived fields. The board is one that RecountFigures accepts.
[[nodiscard]] TChessboard RecordOf(const TGamePosition& position);

/// Is the king of the side to move attacked?
[[nodiscard]] bool IsInCheck(const TGamePosition& position);

/// False only where no play whatever lets the side to move mate: its king is alone, or has one minor figure against a
/// lone king.
[[nodiscard]] bool HasMatingMaterial(const TGamePosition& position);

/// The legal moves of the side to move, in the order of generation, each with the position after it.
[[nodiscard]] std::vector<TGameMove> LegalMoves(const TGamePosition& position);

/// The same game with White and Black changed over, ranks reversed. Done twice it is the position again.
[[nodiscard]] TGamePosition WithColoursSwapped(const TGamePosition& position);
[[nodiscard]] TMove WithColoursSwapped(TMove move);

} // namespace quillon
