#pragma once
// FindForcedMate: a run in which White may only check and threaten (forcing_moves.h). It reduces the tree more than any
// other heuristic; what it leaves out is doubt.
//
// A run starts behind each white root move and has nodes of its own (find_mate.h, TNodeKind::m_bForced). The short-mate
// search inside it stays the ordinary one.

#include "core/chessboard.h"
#include "core/heuristic_parameters.h"
#include "core/mate_result.h"

namespace quillon {

/// Shorter stipulations have no FindForcedMate run: plies left at the root.
inline constexpr int kFewestForcedMatePlies = 4;

/// The run for the position after a white root move, Black to move, with SH_FINDFORCEDMATE in its mask.
///   The other heuristics stay in force (KeepsOtherHeuristics), are off for the run (m_nFfmWithOther 0), or come back
///   once the line is near its end (-1). Mask, signature and context are put back on every way out.
///   Returns MR_MATE or MR_NOMATE, both proofs, else MR_DOUBTFUL; a stopped run is MR_DOUBTFUL.
///   bLog  run the nodes that tell the analysis' log.
[[nodiscard]] TMateResult FindForcedMateRoot(TChessboard& child, bool bLog = false);

/// All other heuristics stay in force in the whole run: so the user wants it, or it is the first of two cycles, or the
/// preliminary pass, in which they alone reduce the tree.
[[nodiscard]] bool KeepsOtherHeuristics(const THeuristicParameters& parameters);

/// The preliminary pass (m_bFfmPreliminary), White to move at the root: keeps its mask for the pass after it, and
/// exchanges the narrow edge heuristics for the extended edge. Nothing if none is pending.
void StartPreliminaryPass(TChessboard& root);

/// In a forced black node: heuristics that were held back come into force when the line has come near its end.
void ReleaseHeldBackHeuristics(TChessboard& b);

/// Does a white node of a run take all moves instead of the forcing ones? So it does in its first moves, the more of
/// them the deeper the code, in the preliminary pass, and where a threat has no time left.
[[nodiscard]] bool TakesAllMoves(const TChessboard& b);

} // namespace quillon
