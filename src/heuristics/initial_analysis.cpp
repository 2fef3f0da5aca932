#include "heuristics/initial_analysis.h"

#include <algorithm>
#include <cstddef>

#include "core/precalc_at_hand.h"
#include "core/queries.h"
#include "heuristics/choose_edge.h"
#include "heuristics/choose_forced_mate.h"
#include "heuristics/choose_miniature.h"
#include "heuristics/choose_patterns.h"
#include "heuristics/data_reduction.h"
#include "heuristics/heuristic_set.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/known_compositions.h"
#include "heuristics/position_class.h"
#include "heuristics/solved_moves.h"
#include "heuristics/watched_set.h"

namespace quillon {

namespace {

/// A set made by hand comes with its parameters; only what earlier passes left behind goes.
void ResetPlanState(THeuristicParameters& p) {
    const THeuristicParameters fresh;
    p.m_nRelaxations = 0;
    p.m_bBlockedFiguresParked = p.m_bKeyFigureSwapPending = p.m_bFallbackPending = false;
    p.m_bDropBlockedFigures = p.m_bDlfuDynamic = false;
    p.m_nDropThreshold = 0;
    p.m_nDropCount = p.m_nPreviousBlockedCount = 0;
    p.m_DropList = fresh.m_DropList;
    p.m_bQueenCheckRelaxable = p.m_bPromotedQueenRelaxable = p.m_bEdgeToAssertBks = false;
    p.m_bSeaSnakeKeepQuick = false;
}

/// What the engine's own choice starts from, beyond the values of the start of a solve: fields that are kept there
/// because a person may have set them. The depth of the short-mate search stays: it is set for every solve anew, and
/// what the solve was asked for with it holds for the choice too.
void ResetEngineChoice(THeuristicParameters& p) {
    const THeuristicParameters fresh;
    ResetHeuristicParameters(p);
    p.m_BlockedFigures = p.m_BlockedFiguresNow = kNoBlockedSquares;
    p.m_bBlockedFiguresEff = false;
    p.m_nKeyWhiteFigure = p.m_nPinnedFigure = kNoSquare;
    p.m_bKeyFigureIsRook = false;
    p.m_bSeaSnake = false;
    p.m_nSeaSnakeApproach = p.m_nSeaSnakeTurnBack = kNoSquare;
    p.m_nSeaSnakePendulum1 = p.m_nSeaSnakePendulum2 = kNoSquare;
    p.m_nFfmDepth = p.m_nFfmStartDepth = fresh.m_nFfmDepth;
    p.m_nFfmRelaxations = p.m_nFfmCycleRelaxations = 0;
    p.m_bFfmPreliminary = p.m_bFfmCycleTwice = false;
    p.m_nFfmSavedHeuristics = 0;
}

void ResetRootMarks(TSearchMarks& marks) {
    marks.m_nKingsNearBonus = 0;
    marks.m_nEdgeHeavyFigures = marks.m_nEdgeMinorFigures = 0;
}

// The step list of the choice; the numbers stand in ChooseHeuristics.
//    1 reset                        9 what holds the black king
//    2 data at hand                10 figures that cannot be spared
//    3 facts of the position       11 patterns
//    4 main diagonal               12 key figure and watched figures together
//    5 sea snake                   13 quick mode
//    6 mate in three               14 known compositions
//    7 few figures                 15 signature
//    8 forced play
void ChooseHeuristics(TChoice& choice) {
    ChooseMainDiagonal(choice);   // 4
    ChooseSeaSnake(choice);       // 5
    choice.Set(SH_3MOVESTOMATE);  // 6
    ChooseForMiniature(choice);   // 7
    ChooseWatchedFigures(choice); // 7
    ChooseForcedMate(choice);     // 8
    ChooseEdge(choice);           // 9
    ChooseSavedFigures(choice);   // 10
    ChoosePatterns(choice);       // 11
    RebuildKeyFigure(choice);     // 12
    if ((choice.m_root.m_byPass > 1 || choice.m_analysis.m_bSafeMode) && DependsOnHeavyFigure(choice))
        choice.Set(SH_SAVEQUEENROOK); // 13
}

/// The set is complete: what the search reads of it is written to the root. A rule that takes heuristics off again
/// belongs before this.
void FinishRoot(TChessboard& root) {
    WriteWatchedSquares(root, *root.m_pContext);
    root.m_nHeurParams = ComputeHeurParams(root);
}

} // namespace

bool IsReducibleToPrecalcData(const TChessboard& root, bool (*isAvailable)(TPositionType)) {
    TChessboard reduced = root;
    return LowerCountersToData(reduced, isAvailable);
}

TInitialAnalysis AnalyzeInitialPosition(TChessboard& root, const TInitialAnalysisRequest& request) {
    TSearchContext& context = *root.m_pContext;
    TAnalysis& analysis = *root.m_pAnalysis;
    analysis.m_pStatusText.store(kInitialCheckRunning, std::memory_order_relaxed);
    TInitialAnalysis result;

    ResetPlanState(context); // 1
    ResetRootMarks(context);
    root.m_nHeuristics = root.m_nHeurParams = 0;
    if (!request.m_bChosenHeuristics) {
        ResetEngineChoice(context);
        analysis.m_seaSnakeAfterMoves.clear();
        analysis.m_zugzwangPositions.clear();
    }
    const TPositionFacts facts =
        TakePositionFacts(root); // 3: what the checks and the plan of passes ask, whoever chose
    StorePositionFacts(root, facts, context, analysis);

    result.m_solvedMoves = FindSolvedMoves(root);
    TChoice choice{root, context, analysis, facts};
    choice.m_bRootMoveSolved = !result.m_solvedMoves.empty();
    if (request.m_bChosenHeuristics)
        choice.m_nMask = request.m_nChosenHeuristics;
    else if ((root.m_wKingState & kNoPrecalcData) == 0 && IsReducibleToPrecalcData(root, IsPrecalcDataAvailable)) // 2
        choice.m_nMask = SH_REDUCTIONTOGLOBREGPOS;
    if (!request.m_bChosenHeuristics && !HasOnlyTwinBishops(root))
        ChooseHeuristics(choice); // 4 to 13

    root.m_nHeuristics = choice.m_nMask;
    if (analysis.m_bUsePredefinedIndications) // 14
        ApplyPredefinedAdditionalHeuristics(root, request.m_pNotifier);
    if (request.m_pClauses != nullptr) // the problem's own word is the last
        result.m_nOfClauses = ApplyHeuristicClauses(root, *request.m_pClauses);
    FinishRoot(root); // 15
    result.m_nHeuristics = root.m_nHeuristics;
    result.m_bSafeModeForced = choice.m_bSafeModeForced;
    result.m_rules = std::move(choice.m_fired);
    return result;
}

} // namespace quillon
