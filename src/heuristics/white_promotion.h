#pragma once
// White pawns on their way to promotion, with White to move. Pure functions of the position.

#include "core/chessboard.h"

namespace quillon {

/// Does a white pawn stand so close to promotion that `nMoves` white moves would take it there, were nothing in its
/// way?
[[nodiscard]] bool HasPawnInReachOfPromotion(const TChessboard& b, int nMoves);

/// Advanced pawn: a white pawn on the sixth or seventh rank with a move forward. It binds Black, so that much else
/// becomes possible.
[[nodiscard]] bool HasAdvancedPawn(const TChessboard& b);

/// Promotion with effect: a pawn on the seventh rank can become a queen that is not simply taken, or a figure that
/// checks or mates.
[[nodiscard]] bool CanPromoteWithEffect(TChessboard& b);

/// Does a white pawn remain that has come at least as far as `square` and still has a move forward?
[[nodiscard]] bool HasPawnAsFarAs(const TChessboard& b, TSquare square);

} // namespace quillon
