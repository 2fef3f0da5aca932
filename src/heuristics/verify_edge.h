#pragma once
// Rules that tie the black king to a place: the edge, the line beside it, a corner.

#include "heuristics/verified_move.h"

namespace quillon {

/// SH_KEEPKINGNEARCORNER: the king is further from a corner than m_nKingNearCorner allows.
[[nodiscard]] ERuling DoubtsKingFarFromCorner(CVerifiedMove& move);

/// SH_KEEPKINGONTHEEDGE: strict, the king has moved at all; else he has left the edge.
[[nodiscard]] ERuling DoubtsKingOffEdge(CVerifiedMove& move);

/// SH_KEEPKINGWITHINEXTEDGE: the king has left the edge and the line beside it; strict, he has moved on that line.
[[nodiscard]] ERuling DoubtsKingOffExtendedEdge(CVerifiedMove& move);

/// The almost strict form: the king, not on his root square, is forced straight back to where he came from.
[[nodiscard]] bool IsExcusedByReturn(CVerifiedMove& move);

/// The king is back on his root square, and a white man that is not to be taken holds the square he has left: things
/// are as they were, and he will not get out that way again.
[[nodiscard]] bool IsBackHomeForGood(CVerifiedMove& move);

/// A watched figure made Black's move before this one and is blocked: Black's other moves are used up, and the king is
/// driven by zugzwang.
[[nodiscard]] bool IsMoveOfZugzwang(CVerifiedMove& move);

/// The counts of the initial analysis: Black stripped of queens, rooks and all minor figures but one, while White has
/// what it takes to mate a king that moves.
[[nodiscard]] bool IsBlackStripped(const TChessboard& b);

} // namespace quillon
