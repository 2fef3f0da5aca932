#pragma once
// The plan of a solve: which heuristics the next pass drops, until the last pass runs without any.
//
// Passes over the same root follow one another: 1 with the set that was chosen, then 1b, 1c, ... each with a set
// relaxed by one step, then 2 without heuristics. The steps are a fixed table of rules (relaxation_rules.h); the user
// may see them, or switch them off, but not change them.

#include <string>

#include "core/chessboard.h"

namespace quillon {

/// Results of TryRelaxSpecialHeuristics.
inline constexpr int kNothingLeftToRelax = 0; // the next pass is the one without heuristics
inline constexpr int kRelaxed = 1;            // a new set is in force
inline constexpr int kRelaxedByClock = -1;    // the same, and it is there only because the passes so far were quick

/// One step of the plan: writes the new set to m_nHeuristics, m_nHeurParams and the parameters of the context, and
/// counts the step in m_nRelaxations.
///   board    between passes; with Black to move (m_nMoves even) the step is made on its parent, and the board takes
///            over what came of it. Without a parent nothing happens.
///   Returns  kRelaxed, kRelaxedByClock, or kNothingLeftToRelax. With the user's m_bLetRelaxHeuristics off: the last,
///            with an empty set.
///   Threads  that of the context. The threads of an analysis take the same steps: where the clock decides, all of them
///            read the time that the first one has stamped.
[[nodiscard]] int TryRelaxSpecialHeuristics(TChessboard& board);

/// Before the first pass over `root`, whose mask is the one chosen: no step is made yet, no time stamped; the signature
/// is computed, the watched squares are written to the board. A plan that begins with a preliminary pass of
/// FindForcedMate puts the mask aside for it.
void BeginPassPlan(TChessboard& root);

/// How many passes with heuristics follow the one that `root` stands for, those left out that only happen when the
/// clock lets them. A step that leaves no heuristic makes the pass without them. A dry run: nothing is changed, stamped
/// or logged.
[[nodiscard]] int CountRelaxations(const TChessboard& root);

/// The plan as the user gets to see it, a paragraph for each pass with heuristics. `root` has the mask that was chosen;
/// BeginPassPlan may have been called, a step not been made. A dry run as well: what depends on the clock is listed,
/// with a star.
[[nodiscard]] std::string ShowPassPlan(const TChessboard& root);

/// "1", "1b", "1c" ... by the number of relaxations, "2" for the pass without heuristics.
[[nodiscard]] std::string PassName(int nPass, int nRelaxations);

} // namespace quillon
