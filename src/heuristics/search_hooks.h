#pragma once
// Where the recursion, the makers and the sorts ask the heuristics. Each theme has a header of its own; here are those
// that the nodes include together, the questions of no single theme, and the questions that are answered "no" on
// purpose.

#include <cstdint>

#include "core/chessboard.h"
#include "core/heuristic_parameters.h"
#include "core/mate_result.h"
#include "core/search_context.h"
#include "heuristics/dynamic_blocking.h"
#include "heuristics/edge_trial.h"
#include "heuristics/heuristic_moves.h"
#include "heuristics/idle_figures.h"
#include "heuristics/one_colour_play.h"
#include "heuristics/single_queen.h"
#include "heuristics/white_move_doubt.h"
#include "heuristics/zugzwang_return.h"
#include "heuristics/zugzwang_triangles.h"

namespace quillon {

/// Heuristics under which white nodes of middle length are not worth the full sort.
inline constexpr std::uint32_t kCheapSortHeuristics =
    SH_ASSERTBLACKKINGSURROUNDED | SH_DONTLETFIGUREUNBLOCK | SH_KEEPKINGWITHINEXTEDGE | SH_KEEPKINGONTHEEDGE;
static_assert(kCheapSortHeuristics == 0x800c4);

/// The heuristics' word on a black move, made in `child`, in the pass with heuristics: 0 nothing, else the negative of
/// the verdict that ends the node (1 doubtful, 2 no mate, 3 repetition). May mark `move` to defer the edge check.
[[nodiscard]] int VerifyBlackMove(TChessboard& child, TMove& move);

// --- Answered "no" on purpose
// ------------------------------------------------------------------------------------------

/// A forced win against a king on the edge, seen without search; a positive result would end the node. None: what ends
/// a node has to be a proof, and the node above has just looked for one (short mates, checks that leave no way out).
[[nodiscard]] inline TMateResult ShortCutOnTheEdge(const TChessboard&) { return MR_NONE; }

/// In a bishop mode with a white knight: is the position won at sight? Never: the mode is entered without knights,
/// since a knight could not move without entering squares of the bishop.
[[nodiscard]] inline bool IsWonInBishopMode(const TChessboard&) { return false; }

/// At the first reply, in the ending of a single queen against a rook: the queen's target square. Not noted: a queen
/// that mates soon behind such a reply is found by the short-mate search at no price. What else is done about such an
/// ending, one thread for a line, does not depend on it.
inline void NoteSingleQueenTarget(const TChessboard&) {}

/// The root's list, sorted: a test of the initial analysis may order it anew. The list stands: of a wide root with few
/// figures nothing is known that the scores do not say.
inline void ReorderRootMoves(const TChessboard&, int, TMove*) {}

} // namespace quillon
