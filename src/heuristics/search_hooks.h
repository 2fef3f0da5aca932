#pragma once
// Where the recursion, the makers and the sorts ask the heuristics. Every question of a node has its name here; a
// question whose heuristic does not exist yet is answered "not in force", which leaves the node as it is without one.

#include <cstdint>

#include "core/chessboard.h"
#include "core/heuristic_parameters.h"
#include "core/mate_result.h"
#include "core/search_context.h"

namespace quillon {

/// Heuristics that select their own generator of white moves.
inline constexpr std::uint32_t kGeneratingHeuristics =
    SH_ZUGZWANG | SH_SEASNAKE | SH_KEYWHITEFIGURE | SH_ZUGZWANGTRIANGLES | SH_ONECOLORPLAYPOSSIBLE;
static_assert(kGeneratingHeuristics == 0x88400018);

/// Heuristics under which white nodes of middle length are not worth the full sort.
inline constexpr std::uint32_t kCheapSortHeuristics =
    SH_ASSERTBLACKKINGSURROUNDED | SH_DONTLETFIGUREUNBLOCK | SH_KEEPKINGWITHINEXTEDGE | SH_KEEPKINGONTHEEDGE;
static_assert(kCheapSortHeuristics == 0x800c4);

/// A list of white moves that a heuristic generated instead of all moves.
struct THeuristicMoves {
    int m_nCount = -1;        // -1: not in force, take all moves
    bool m_bDoubtful = false; // moves were left out, so the node cannot end as proved no mate
};

// --- Black nodes
// -------------------------------------------------------------------------------------------------------

/// At the first reply, in the ending of a single queen against a rook: notes the queen's target square in the context.
inline void NoteSingleQueenTarget(TChessboard&) {}

/// SH_ZUGZWANGTRIANGLES is in force: does the position still fit its pattern?
[[nodiscard]] inline bool StillFitsZugzwangTriangles(const TChessboard&) { return true; }

/// The heuristics' word on a black move, made in `child`, in the pass with heuristics: 0 nothing, else the negative of
/// the verdict that ends the node (1 doubtful, 2 no mate, 3 repetition). May mark `move` to defer the edge check.
[[nodiscard]] inline int VerifyBlackMove(TChessboard&, TMove&) { return 0; }

/// Takes a black bishop that cannot matter any more off the board and sets the bishop mode.
inline void DetectOppositeBishops(TChessboard&) {}

/// Did the watched figures just become blocked, so that a trial with SH_DONTLETFIGUREUNBLOCK added pays?
[[nodiscard]] inline bool AreFiguresJustBlocked(const TChessboard&) { return false; }

// --- Short-mate search
// ------------------------------------------------------------------------------------------------

/// A lone queen too far from its own king for the two to mate soon.
[[nodiscard]] inline bool IsQueenFarFromItsKing(const TChessboard&) { return false; }

/// SH_ZUGZWANG with White's first move made: is a short mate not even to be looked for?
[[nodiscard]] inline bool RefusesQuickerSearch(const TChessboard&) { return false; }

/// Does the white figure on the square (no king, no pawn) take no part in the attack?
[[nodiscard]] inline bool IsIdleFigure(const TChessboard&, TSquare) { return false; }

// --- White nodes
// -------------------------------------------------------------------------------------------------------

/// SH_KEEPKINGONTHEEDGE is in force because of such a trial (below), not as a choice of the pass.
[[nodiscard]] inline bool IsEdgeTrialRunning(const TChessboard& b) {
    return (b.m_nHeuristics & SH_KEEPKINGONTHEEDGE) != 0 && b.m_pContext->m_bEdgeTrial;
}

/// A forced win against a king on the edge, seen without search: a positive result ends the node.
[[nodiscard]] inline TMateResult ShortCutOnTheEdge(TChessboard&) { return MR_NONE; }

/// Before a white sort in the pass with heuristics: does a single white queen against a promoted one call for
/// SH_SAVEQUEENROOK from here on? Sets the bit and the signature.
inline void DetectSingleQueen(TChessboard&) {}

/// A stored tree of solved positions of this material orders the list: true if it knows a move that mates in time.
[[nodiscard]] inline bool OrderByStoredTree(TChessboard&, int, TMove*) { return false; }

/// The root's list, sorted: the test of the initial analysis may order it anew.
inline void ReorderRootMoves(TChessboard&, int, TMove*) {}

/// In a bishop mode with a white knight: is the position won at sight?
[[nodiscard]] inline bool IsWonInBishopMode(TChessboard&) { return false; }

/// The generator that a bit of kGeneratingHeuristics selects.
[[nodiscard]] inline THeuristicMoves GenerateByHeuristics(TChessboard&, TMove*) { return {}; }

/// After a white move in pass 1: the flag of the heuristic that declares it doubtful, 0 for none.
[[nodiscard]] inline std::uint32_t FindDoubtAfterWhiteMove(TChessboard&) { return 0; }

/// Should the child be tried with SH_KEEPKINGONTHEEDGE set first?
[[nodiscard]] inline bool IsEdgeTrialWorthwhile(const TChessboard&) { return false; }

/// SH_DONTRECEDEBLACKKING: a king move that increases the distance to the black king and captures nothing.
[[nodiscard]] bool RecedesFromBlackKing(const TChessboard& b, const TMove& move);

} // namespace quillon
