#pragma once
// The initial analysis: what the engine makes of the root position before the first pass, above all the heuristics and
// their parameters.

#include <cstdint>
#include <string_view>
#include <vector>

#include "core/chessboard.h"
#include "core/move.h"
#include "core/position_type.h"
#include "heuristics/heuristic_clauses.h"

namespace quillon {

class INotifier;

/// What the caller has settled already.
struct TInitialAnalysisRequest {
    bool m_bChosenHeuristics = false;              // a set was made by hand: nothing is chosen, its parameters stay
    std::uint32_t m_nChosenHeuristics = 0;         // that set
    const THeuristicClauses* m_pClauses = nullptr; // of the problem; not owned, null: none
    INotifier* m_pNotifier = nullptr;              // not owned; null: faults of the stored settings go unsaid
};

/// What the initial analysis of a position found.
struct TInitialAnalysis {
    std::uint32_t m_nHeuristics = 0;       // mask of the first pass
    std::uint32_t m_nOfClauses = 0;        // of these, what the problem itself asks for
    std::vector<TMove> m_solvedMoves;      // root moves shown to mate on the way
    std::vector<std::string_view> m_rules; // names of the rules that fired, in order
    bool m_bSafeModeForced = false;        // the position asked for safe mode, not the user
};

/// What the progress panel shows meanwhile.
inline constexpr const char* kInitialCheckRunning = "Initial position type check...";

/// Do precalculated data exist for what is left after some white men, not all, are taken away?
[[nodiscard]] bool IsReducibleToPrecalcData(const TChessboard& root, bool (*isAvailable)(TPositionType));

/// Resets the parameters, chooses the heuristics of the first pass, and writes mask, watched squares and signature to
/// the root. A root of at least six plies in its slot of the context's stack; once a solve.
///   A set made by hand keeps its parameters; the facts of the position are taken all the same.
[[nodiscard]] TInitialAnalysis AnalyzeInitialPosition(TChessboard& root, const TInitialAnalysisRequest& request = {});

} // namespace quillon
