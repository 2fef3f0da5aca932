#include "heuristics/find_mate_root.h"

#include <algorithm>

#include "core/generation.h"
#include "core/makers.h"
#include "core/notation.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/pass_plan.h"
#include "heuristics/thread_demand.h"
#include "platform/processors.h"
#include "search/control.h"
#include "search/find_mate.h"
#include "search/move_sort.h"

namespace quillon {

namespace {

constexpr int kShortestAnalysedPlies = 5;   // shorter problems get no initial analysis
constexpr int kShortestDemandingPlies = 13; // and up to here no demand for threads

bool IsOpen(const TRootMove& move) {
    return move.m_nResult == kRootMoveDoubtful || move.m_nResult == kRootMoveNotTried;
}

/// One run over the root: the steps of FindMateRoot.
class CRootRun {
  public:
    CRootRun(TSearchContext& context, TAnalysis& analysis, TRootRun& run, TChessboard& root)
        : m_context(context), m_analysis(analysis), m_run(run), m_root(root) {}

    void ListMoves() {
        TMove list[kMaxMoves];
        m_root.m_nHeuristics = 0; // none is chosen yet: the list is to be whole
        int count = GenerateWhiteMoves(m_root, list);
        if (m_root.m_nMoves >= 4)
            count = SortWhiteMoves(m_root, count, list, m_root.m_nMoves <= 5).m_nMoves;
        m_run.m_moves.clear();
        for (int i = 0; i < count; ++i) {
            TMove move = list[i];
            TChessboard* const child = CopyToChild(&m_root);
            if (MakeWhiteMove<kLegalityOnly>(*child, move) != 0)
                m_run.m_moves.push_back({{list[i].m_nFrom, list[i].m_nTo, list[i].m_nPromotion, 0},
                                         IsSolved(move) ? kRootMoveMates : kRootMoveNotTried});
        }
    }

    void ChooseHeuristics(bool bFirstTime) {
        if (m_root.m_nMoves > kShortestAnalysedPlies && bFirstTime) {
            const TInitialAnalysis initial = AnalyseInitialPosition(m_root);
            m_run.m_nInitialHeuristics = initial.m_nHeuristics;
            for (const TMove& move : initial.m_solvedMoves)
                AddSolution(move, {});
        }
        if (m_run.m_bNoAids)
            SwitchAidsOff();
        if (m_run.m_bChosenHeuristics)
            m_run.m_nInitialHeuristics = m_run.m_nChosenHeuristics;
        SetHeuristics(m_analysis.m_nHybridPhase == kHybridBruteForce ? 0 : m_run.m_nInitialHeuristics);
        const int planned =
            CountRelaxations(m_root) + (m_root.m_nHeuristics != 0 ? 1 : 0) + (m_context.m_bRunPass2 ? 1 : 0);
        m_analysis.m_nPassesPlanned.store(static_cast<std::uint64_t>(std::max(planned, 1)), std::memory_order_relaxed);
    }

    [[nodiscard]] bool HasRequiredHeuristics() const {
        return (m_analysis.m_nRequiredHeuristics & ~m_root.m_nHeuristics) == 0;
    }

    /// The passes, until the run is settled, stopped, or has found enough.
    int RunPasses() {
        do
            RunPass();
        while (!IsEnded() && NextPass());
        FlushPositions(m_context, m_analysis);
        m_run.m_bStopped = IsStopping(m_root) && HasOpenMoves(m_run) && !HasEnough();
        return m_run.m_solutions.empty() ? kNoSolutionFound : kSolutionsFound;
    }

  private:
    void SwitchAidsOff() {
        m_context.m_bDropBlockedFigures = false;
        m_context.m_bQueenCheckRelaxable = false;
        m_context.m_bPromotedQueenRelaxable = false;
        m_context.m_bEdgeToAssertBks = false;
    }

    /// Without heuristics there is nothing to doubt: that is pass 2, wherever it comes in the plan.
    void SetHeuristics(std::uint32_t heuristics) {
        m_root.m_nHeuristics = heuristics;
        m_root.m_byPass = heuristics != 0 ? 1 : 2;
        m_root.m_nHeurParams = ComputeHeurParams(m_root);
    }

    void RunPass() {
        m_analysis.m_pStatusText.store("", std::memory_order_relaxed);
        m_passName = PassName(m_root.m_byPass, m_context.m_nRelaxations);
        m_run.m_passes.push_back(m_passName);
        const auto open = std::count_if(m_run.m_moves.begin(), m_run.m_moves.end(), IsOpen);
        m_context.m_moveCount[m_root.m_nMoves].store(static_cast<std::uint8_t>(open), std::memory_order_relaxed);
        PublishIndex(0, 0);
        m_analysis.m_nPassIndex.store(PassIndex(m_root.m_byPass, m_context.m_nRelaxations), std::memory_order_relaxed);
        for (std::size_t i = 0, nTried = 0; i < m_run.m_moves.size() && !IsEnded(); ++i) {
            if (!IsOpen(m_run.m_moves[i]))
                continue;
            PublishIndex(i, nTried++);
            TryMove(m_run.m_moves[i]);
        }
    }

    /// The display counts the moves of this pass only. Below the root it is to see no line of the move before.
    void PublishIndex(std::size_t nMove, std::size_t nOfPass) {
        const int root = m_root.m_nMoves;
        for (int ply = root - 1; ply >= 0 && ply > root - kShownPlies; --ply)
            m_context.m_moveCount[static_cast<std::size_t>(ply)].store(0, std::memory_order_relaxed);
        m_context.m_moveIndex[m_root.m_nMoves].store(static_cast<std::uint8_t>(nMove), std::memory_order_relaxed);
        m_context.m_moveIndexShown[m_root.m_nMoves].store(static_cast<std::uint8_t>(nOfPass),
                                                          std::memory_order_relaxed);
    }

    void TryMove(TRootMove& root) {
        if (IsControlPending(m_root) && PauseOrStop(m_root))
            return;
        RepetitionMarkOfRoot() = 0;
        TMove move = root.m_move;
        TChessboard* const child = CopyToChild(&m_root);
        if (MakeWhiteMove(*child, move) == 0) { // legal, but mate is impossible after it
            root.m_nResult = kRootMoveRefuted;
            return;
        }
        const TMateResult result = m_run.m_bLog ? FindMateBlack<kLoggingNode>(child) : FindMateBlack<kPlainNode>(child);
        if (result == MR_MATE) {
            root.m_nResult = kRootMoveMates;
            AddSolution(root.m_move, m_passName);
        } else if (!IsStopping(m_root)) {
            root.m_nResult = JudgeRootMove(result);
        }
    }

    /// A line that went back to the root itself has gained White nothing; in quick mode that is doubt, as everywhere.
    [[nodiscard]] std::uint8_t JudgeRootMove(TMateResult result) const {
        if (result == MR_NOMATE || result == MR_NONE)
            return kRootMoveRefuted;
        if (result == MR_REPETITION && IsStrict(m_root))
            return kRootMoveRefuted;
        return kRootMoveDoubtful;
    }

    /// After a pass that left doubt: the next heuristic is dropped, or all of them for the last pass.
    bool NextPass() {
        if (m_root.m_byPass >= 2)
            return false;
        // A run that looks for duals and has a key goes straight to the proof.
        const bool bOnlyDualsWanted = !m_run.m_solutions.empty() && (m_analysis.m_nSolveMode & kAllSolutions) == 0;
        if (m_context.m_bLetRelaxHeuristics && !bOnlyDualsWanted && TryRelaxSpecialHeuristics(m_root)) {
            ++m_context.m_nRelaxations;
            return true;
        }
        if (!m_context.m_bRunPass2)
            return false;
        SetHeuristics(0);
        return true;
    }

    [[nodiscard]] bool HasEnough() const {
        const int limit = SolutionLimit(m_analysis);
        return limit != 0 && static_cast<int>(m_run.m_solutions.size()) >= limit;
    }

    [[nodiscard]] bool IsEnded() const { return IsStopping(m_root) || HasEnough() || !HasOpenMoves(m_run); }

    [[nodiscard]] bool IsSolved(const TMove& move) const {
        return std::any_of(m_run.m_solutions.begin(), m_run.m_solutions.end(),
                           [&](const TSolution& known) { return SameMove(known.m_move, move); });
    }

    void AddSolution(const TMove& move, const std::string& pass) {
        if (IsSolved(move))
            return;
        m_run.m_solutions.push_back({move, WriteMove(move, m_root), pass});
        if (m_run.m_sink)
            m_run.m_sink(move, m_run.m_solutions.back().m_text, m_run.m_nProblemId, pass);
    }

    std::uint16_t& RepetitionMarkOfRoot() { return m_context.m_repetition[m_root.m_nMoves + 1u]; }

    TSearchContext& m_context;
    TAnalysis& m_analysis;
    TRootRun& m_run;
    TChessboard& m_root;
    std::string m_passName;
};

/// How many threads the root wants; no sort tells good moves from others yet, so only the number of moves counts.
int DemandedThreads(const TAnalysis& analysis, const TRootRun& run, const TChessboard& b) {
    TThreadDemandInput input{};
    input.m_nThreads = analysis.m_nThreads;
    input.m_nMoves = static_cast<int>(run.m_moves.size());
    input.m_nProcessors = UsableProcessors();
    input.m_bPawnsOnly = WhiteMen(b) + BlackMen(b) == b.m_whitePawns + b.m_blackPawns;
    return ComputeThreadDemand(input);
}

} // namespace

int SolutionLimit(const TAnalysis& analysis) {
    if ((analysis.m_nSolveMode & kSingleSolution) != 0)
        return 1;
    if ((analysis.m_nStopFlags & kStopOnDual) != 0)
        return 2;
    if ((analysis.m_nStopFlags & kStopOn3Solutions) != 0)
        return 3;
    if ((analysis.m_nStopFlags & kStopOn4Solutions) != 0)
        return 4;
    return 0;
}

std::string PassNameOf(std::uint32_t nPassIndex) {
    return nPassIndex == 0 ? std::string() : PassName(static_cast<int>(nPassIndex >> 16), nPassIndex & 0xffff);
}

bool HasOpenMoves(const TRootRun& run) { return std::any_of(run.m_moves.begin(), run.m_moves.end(), IsOpen); }

int FindMateRoot(TSearchContext& context, TAnalysis& analysis, const TChessboard& board, int nPlies, TRootRun& run,
                 bool bFirstTime, bool bAllowThreadDemand) {
    TChessboard& root = *MakeRoot(context, analysis, board, nPlies, 1);
    if (analysis.m_nCommand.load(std::memory_order_relaxed) == kManualCommand)
        GiveCommand(analysis, kNoCommand, kAllThreads);
    CRootRun driver(context, analysis, run, root);
    driver.ListMoves();
    if (nPlies > kShortestDemandingPlies && bAllowThreadDemand && !analysis.m_bThreadsForced &&
        !context.m_bNoThreadDemand) {
        if (const int demand = DemandedThreads(analysis, run, root)) {
            analysis.m_bThreadsForced = true;
            return -demand;
        }
    }
    driver.ChooseHeuristics(bFirstTime);
    if (!driver.HasRequiredHeuristics())
        return kRequiredHeuristicsUnmet;
    if (run.m_bAnalysisOnly)
        return kInitialAnalysisOnly;
    return driver.RunPasses();
}

} // namespace quillon
