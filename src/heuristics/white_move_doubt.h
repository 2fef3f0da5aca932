#pragma once
// What the heuristics say of a white move just made, in the pass with heuristics.

#include <cstdint>

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// The flag of the heuristic that declares the position after a white move doubtful, 0 for none. A quick test: with
/// SH_KEEPKINGONTHEEDGE, many plies left and no check, a move of the black king that the gate of black moves doubts
/// ends the line here, before all of Black's replies are generated, looked up and sorted to find the same.
///   Ends SH_SWEEPINGWHITEROOK in the subtree when a white rook leaves the first rank, or White captures anything but a
///   pawn about to promote or a figure on the first rank.
[[nodiscard]] std::uint32_t FindDoubtAfterWhiteMove(TChessboard& child);

/// SH_DONTRECEDEBLACKKING: a king move that increases the distance to the black king and captures nothing.
[[nodiscard]] bool RecedesFromBlackKing(const TChessboard& b, const TMove& move);

/// SH_SWEEPINGWHITEROOK: does the rook that sweeps along the first rank go on sweeping after White's last move?
[[nodiscard]] bool StillSweeps(const TChessboard& child);

} // namespace quillon
