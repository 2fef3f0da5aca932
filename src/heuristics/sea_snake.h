#pragma once
// SH_SEASNAKE: a problem in which White's queen winds her way to the black king, and back, over the whole board while
// Black can do nothing but swing one figure to and fro. Only the queen's moves matter.

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// Does the heuristic still apply at this white node? It has ended in this line, and its bit is cleared with the
/// signature, when
///   - few plies are left: the mate itself is near, and any move may be part of it;
///   - a capture has taken White's last queen;
///   - White has taken the last black pawn of a file, and a white pawn behind it now has its way free.
/// Without clearing the bit it does not apply before one of the moves that it is limited to.
[[nodiscard]] bool AppliesSeaSnake(TChessboard& b);

/// The queen's moves, those to the approach and turn-back squares first, checks, and captures of a black queen; -1 if
/// there are none.
int GenerateSeaSnakeMoves(const TChessboard& b, TMove* list);

} // namespace quillon
