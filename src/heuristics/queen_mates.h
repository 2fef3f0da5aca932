#pragma once
// What White's queen can do to the black king at once: her checks, the squares she would mate from. For the plan of
// passes; White is to move.

#include "core/chessboard.h"

namespace quillon {

/// Squares from which the queen would mate if she stood there, whether she can get there or not: her mating routes. Her
/// own square counts; with several queens the one on the lowest square is meant. 0 without a queen.
[[nodiscard]] int CountQueenMatingSquares(const TChessboard& b);

/// Has a white queen a legal check?
[[nodiscard]] bool HasQueenCheck(const TChessboard& b);

/// A single black rook beside the king is all that guards him against the queen, who has at most two other figures with
/// her: without the rook White mates on the move, with it she does not.
[[nodiscard]] bool GuardsKingAlone(const TChessboard& b);

} // namespace quillon
