#pragma once
// Where a figure comes from: its way is traced back through the line to the root.

#include "core/chessboard.h"

namespace quillon {

/// Square in the root of the run from which the black figure on `square` has come.
[[nodiscard]] TSquare OriginOfBlackFigure(const TChessboard& b, TSquare square);

/// Was the black figure on `square` a pawn in the root?
[[nodiscard]] bool IsPromotedBlackFigure(const TChessboard& b, TSquare square);

/// Was one of White's queens or rooks captured in this line? Only the first three captures are remembered.
[[nodiscard]] bool HasWhiteLostHeavyFigure(const TChessboard& b);

} // namespace quillon
