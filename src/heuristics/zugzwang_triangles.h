#pragma once
// SH_ZUGZWANGTRIANGLES: White has a position in which Black, if only it were his turn, would have to give way. The
// white king loses a move by a walk over three squares, two of which the parameters name.

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// Does the position, White to move, still fit the pattern: since the root nothing was captured and no pawn has moved?
[[nodiscard]] bool StillFitsZugzwangTriangles(const TChessboard& b);

/// King's steps within the triangle, checks, and the winning move that the context remembers. -1 if the king has no
/// such step: then all moves are wanted.
int GenerateTriangleMoves(const TChessboard& b, TMove* list);

} // namespace quillon
