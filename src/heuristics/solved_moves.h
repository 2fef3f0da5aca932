#pragma once
// Moves of the root that are keys at sight.

#include <vector>

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// White's moves, in the order of generation, that mate at once, or that the precalculated data prove to mate within
/// the plies of the root, if they know the root itself. Each is a proof; what is not among them may mate all the same.
///   root  White to move, in its slot of the context's stack; the slots below are used.
[[nodiscard]] std::vector<TMove> FindSolvedMoves(TChessboard& root);

} // namespace quillon
