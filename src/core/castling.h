#pragma once
// Castling rights as weights: 1 king side, 2 queen side. A position's board can claim more rights than the game has
// left.

#include "core/chessboard.h"

namespace quillon {

/// Rooks of the colour on a1 and h1 (a8 and h8), if its king stands on its home square; 0 otherwise.
[[nodiscard]] int WhiteCastlingsOnBoard(const TChessboard& b);
[[nodiscard]] int BlackCastlingsOnBoard(const TChessboard& b);

/// Castlings that the root and the moves since leave: a subset of those on the board.
[[nodiscard]] int WhiteCastlingsLeft(const TChessboard& b);
[[nodiscard]] int BlackCastlingsLeft(const TChessboard& b);

} // namespace quillon
