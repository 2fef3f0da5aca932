#pragma once
// A line of white moves told in advance, move by move: sort indications that name the number of their move, or the main
// variant of the problem.

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// Is White's next move, in `b`, told, and were all of its moves so far those that were told?
[[nodiscard]] bool FollowsNumberedLine(const TChessboard& b);

/// Is `move` the one that is told for White's next move in `b`?
[[nodiscard]] bool IsNumberedLineMove(const TChessboard& b, const TMove& move);

} // namespace quillon
