#pragma once
// A solve by the passes alone, without the best-first proof: nothing tells which heuristics doubt the solution, so sets
// that do are in force as they were drawn.

#include "core/search_context.h"
#include "heuristics/find_mate_root.h"
#include "heuristics/random_set.h"
#include "heuristics/solving_driver.h"
#include "search/search_truth.h"

namespace quillon::test {

/// The modes of a request that a run over the root takes: the first solution, two, or all.
inline void StoreMode(TAnalysis& analysis, ESolveMode mode) {
    if (mode == ESolveMode::AllSolutions)
        analysis.m_nSolveMode = kAllSolutions;
    else if (mode == ESolveMode::FirstSolution)
        analysis.m_nSolveMode = kSingleSolution;
    else {
        analysis.m_nSolveMode = 0;
        analysis.m_nStopFlags = mode == ESolveMode::StopOnDual ? kStopOnDual
                                : mode == ESolveMode::StopOn3  ? kStopOn3Solutions
                                                               : kStopOn4Solutions;
    }
}

inline void StoreConditions(const TSolveRequest& request, TSearchContext& context, TAnalysis& analysis) {
    StoreMode(analysis, request.m_mode);
    analysis.m_bSafeMode = request.m_bSafeMode;
    analysis.m_shLookForQuickerMateDepth = request.m_shLookForQuickerMateDepth;
    context.m_bLetRelaxHeuristics = request.m_bLetRelaxHeuristics;
    context.m_bRunPass2 = request.m_bRunPass2;
}

/// What of a result does not come from the driver: verdict, completeness, keys and passes. There are no texts, no
/// variant, and a hybrid request is solved like any other.
[[nodiscard]] inline TSolvingResult SolveWithoutGuide(const TSolveRequest& request, const TRandomSet* set) {
    const auto context = NewSearchContext();
    TAnalysis analysis;
    StoreConditions(request, *context, analysis);
    TRootRun run;
    if (set != nullptr) {
        StoreReadHeuristics(set->m_set, request.m_board, *context, analysis);
        set->StoreRest(analysis);
        run.m_bChosenHeuristics = true;
        run.m_nChosenHeuristics = set->m_set.m_nHeuristics;
    }
    nLastRemovedLevel = 0;
    std::unique_ptr<CRealRegister> known;
    if (request.m_nMemoryBudgetMB > 0 && PliesOf(request.m_nStipulation) >= 10) {
        known = request.m_nMemoryBudgetMB == 1 ? std::make_unique<CRealRegister>(64 << 10, 256)
                                               : std::make_unique<CRealRegister>();
        known->m_bWriteDown = false;
        analysis.m_pRegister = known.get();
    }
    (void)FindMateRoot(*context, analysis, request.m_board, PliesOf(request.m_nStipulation), run, true, false);
    nLastRemovedLevel = 0;

    TSolvingResult result;
    result.m_solutions = run.m_solutions;
    result.m_passes = run.m_passes;
    result.m_bStopped = run.m_bStopped;
    result.m_bComplete = !run.m_bStopped && !HasOpenMoves(run);
    result.m_verdict = !run.m_solutions.empty() ? EVerdict::Mate
                       : result.m_bComplete     ? EVerdict::NoMate
                                                : EVerdict::Doubtful;
    result.m_register.m_nHits = known ? known->m_nAnswers : 0;
    return result;
}

} // namespace quillon::test
