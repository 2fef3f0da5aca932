#pragma once
// Nets that White can draw tighter with its next move. White is to move; nothing is changed.

#include "core/chessboard.h"

namespace quillon {

/// White can still take away squares: has it a figure's move, to a square where Black does not take the figure, after
/// which the black king has at most nLimit free squares?
[[nodiscard]] bool CanTakeAwaySquares(const TChessboard& b, int nLimit);

/// Is the black king forced straight back to `home`? He has no other square as it is, or White has a check that only
/// his return answers, or that mates.
[[nodiscard]] bool IsBlackKingForcedBack(TChessboard& b, TSquare home);

} // namespace quillon
