#pragma once
// Generators: pseudo-legal moves into a caller's array, in a fixed order that a stable sort and the first-found result
// depend on. A move is proved legal only by its maker (makers.h); no generator filters pins.
//
//   list     room for kMaxMoves moves
//   returns  the number of moves written

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// Moves of the figure on the square, dispatched by its code; a queen's rook moves come first.
int GenerateWhiteFigureMoves(const TChessboard& b, TSquare square, TMove* list);
int GenerateBlackFigureMoves(const TChessboard& b, TSquare square, TMove* list);

/// Only for the side in check: king's moves, captures of the checker, interpositions from the king outwards, en
/// passant.
int GenerateWhiteEvasions(const TChessboard& b, TMove* list);
int GenerateBlackEvasions(const TChessboard& b, TMove* list);

/// The white moves that can give check, directly or by discovery; every checking move is among them.
int GenerateWhiteChecks(const TChessboard& b, TMove* list);

/// All moves of the side: the evasions if it is in check, else the figures in square order.
int GenerateWhiteMoves(const TChessboard& b, TMove* list);
int GenerateBlackMoves(const TChessboard& b, TMove* list);

/// The figure-by-figure scan, stage by stage: writes the moves of the next figure of the side that has any, from square
/// `nextSquare` on, and moves nextSquare behind it. Returns 0 when the squares are exhausted (nextSquare = 64).
int GenerateNextWhiteFigure(const TChessboard& b, int& nextSquare, TMove* list);
int GenerateNextBlackFigure(const TChessboard& b, int& nextSquare, TMove* list);

/// May this castling still be made, as far as king, rook and the history of the game say? Looks at the board, at the
/// root and at the targets of all moves since; not at the squares between, nor at attacks.
[[nodiscard]] bool HasWhiteCastlingRight(const TChessboard& b, bool bKingSide);
[[nodiscard]] bool HasBlackCastlingRight(const TChessboard& b, bool bKingSide);

} // namespace quillon
