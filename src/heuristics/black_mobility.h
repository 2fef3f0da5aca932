#pragma once
// What Black could do if the move were his: how far he is tied up, and what his king has to gain. For the plan of
// passes, which asks of a root with White to move.
//
// White must not be in check in the position asked about: it is Black who would capture the king then. Such a position
// counts as one with no moves for Black.

#include "core/chessboard.h"

namespace quillon {

/// Legal black moves.
[[nodiscard]] int CountBlackMoves(const TChessboard& b);

/// The black men other than the king that have a legal move.
[[nodiscard]] int CountMobileBlackMen(const TChessboard& b);

/// Stalemate play: nobody but the king can move, so what takes his squares without a check stalemates.
[[nodiscard]] bool IsStalematePosition(const TChessboard& b);

/// Stalemate trap: at most one man besides the king can move. White may not take it, nor take all its squares.
[[nodiscard]] bool IsStalemateTrap(const TChessboard& b);

/// A black queen, rook, bishop or knight has a check on a square that White does not attack: Black answers threats with
/// checks, and a threat has to be deeper to count.
[[nodiscard]] bool DefendsByChecks(const TChessboard& b);

/// Is Black ahead in material once his king has taken the most that he can take? False if the king can take nothing.
[[nodiscard]] bool IsBlackAheadAfterKingCapture(const TChessboard& b);

/// Has the king moves, and is every one of them the capture of a pawn?
[[nodiscard]] bool TakesOnlyPawnsWithKing(const TChessboard& b);

/// Can a black pawn step forward? The step itself counts, not whether it is legal.
[[nodiscard]] bool HasMobileBlackPawn(const TChessboard& b);

} // namespace quillon
