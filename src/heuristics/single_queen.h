#pragma once
// A white queen left alone.

#include "core/chessboard.h"

namespace quillon {

/// Before a white sort in the pass with heuristics. Black has promoted to a queen with his move before last, White has
/// one figure left and no check with it: from here on that figure must not be lost. Sets SH_SAVEQUEENROOK and the
/// signature in the position.
void DetectSingleQueen(TChessboard& b);

/// A lone queen too far from its own king for the two to mate soon.
[[nodiscard]] bool IsQueenFarFromItsKing(const TChessboard& b);

} // namespace quillon
