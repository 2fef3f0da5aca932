#pragma once
// The plan of a solve: which heuristics the first pass has, and what the next pass drops. No rule that chooses or drops
// a heuristic exists yet: the engine chooses none by itself, and a set given by hand is followed by the pass without
// any.

#include <cstdint>
#include <string>
#include <vector>

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// What the initial analysis of a position found.
struct TInitialAnalysis {
    std::uint32_t m_nHeuristics = 0;  // mask of the first pass
    std::vector<TMove> m_solvedMoves; // root moves shown to mate on the way
};

/// Resets the parameters and chooses the heuristics of the first pass.
[[nodiscard]] TInitialAnalysis AnalyseInitialPosition(TChessboard& root);

/// Takes the next heuristic off the root's mask; false when there is nothing left to relax but the pass without any.
[[nodiscard]] bool TryRelaxSpecialHeuristics(TChessboard& root);

/// How many times TryRelaxSpecialHeuristics would succeed from here.
[[nodiscard]] int CountRelaxations(const TChessboard& root);

/// "1", "1b", "1c" ... by the number of relaxations, "2" for the pass without heuristics.
[[nodiscard]] std::string PassName(int nPass, int nRelaxations);

} // namespace quillon
