#pragma once
// Dynamic relaxation of the two edge heuristics: once White has won something by it - black men, or a pawn on the verge
// of promotion - the black king may leave the edge; and the event may come a few moves late (the check is deferred).
//
// A deferred check travels like this: the rule marks the move in the list (kMoveDefersEdgeCheck); the black move maker,
// making the move for good, calls ApplyDeferredEdgeCheck, which sets kEdgeRelaxed in the position, and with it the
// signature; from then on the line is checked no more until its plies left fall below m_shDeferMaxMoves. What else the
// heuristics forbid ends there too: the ban on king moves, and SH_DONTLOSEANYFIGURES if the move has captured.
//
// m_shDeferMaxMoves is one field of the thread's context and is written whenever a check is deferred. A line reads it
// only while kEdgeRelaxed is set, and below such a position no check is deferred again: so what a line reads was
// written by the very move that began it, whatever its siblings have written before. Even a wrong value could only cost
// a doubt.

#include "core/chessboard.h"
#include "heuristics/verified_move.h"

namespace quillon {

/// What the relaxation makes of a black king off the edge.
enum class EEdgeRelaxation {
    None,     // the edge heuristic stands
    Relaxed,  // it does not apply here
    Overdue,  // the check had been deferred, and the time is over
    Deferred, // a deferred check is possible: DeferEdgeCheck
};

/// Steps 1 to 4 of the relaxation, nothing marked yet: marking waits until cheaper excuses of the rule have failed.
[[nodiscard]] EEdgeRelaxation FindRelaxation(CVerifiedMove& move);

/// Marks the move and writes down how long the check is deferred. Where there is no move to mark nothing is deferred,
/// and nothing is written.
void DeferEdgeCheck(CVerifiedMove& move);

/// Black men won by White, in men, against the root: figures lost by White count against it. Pawns count only if
/// m_bRelaxCapturesInclPawns.
[[nodiscard]] int CaptureBalance(const TChessboard& b);

/// Can the balance still change: is a black man left to take, or can a white pawn reach promotion in time?
[[nodiscard]] bool CanBalanceChange(const TChessboard& b);

} // namespace quillon
