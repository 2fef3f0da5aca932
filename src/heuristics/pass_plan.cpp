#include "heuristics/pass_plan.h"

#include "core/notation.h"
#include "heuristics/forced_mate.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/heuristic_text.h"
#include "heuristics/relaxation_clock.h"
#include "heuristics/relaxation_log.h"
#include "heuristics/relaxation_rules.h"
#include "heuristics/watched_set.h"
#include "search/analysis.h"

namespace quillon {

namespace {

constexpr std::string_view kNoHeuristics = "No heuristics selected.";
constexpr std::string_view kClockNote =
    "\n\n* time-dependent relaxation (non-deterministic) - possible, but actually occurs only if all previous passes "
    "are completed in a short time";

ERelaxation ApplyRules(TRelaxation& r) {
    for (const TRelaxationRule& rule : kRelaxationRules)
        if (const ERelaxation outcome = rule.m_pApply(r); outcome != ERelaxation::NotMine)
            return outcome;
    return ERelaxation::Done; // the last rule always decides
}

int ResultOf(ERelaxation outcome, std::uint32_t mask) {
    if (outcome == ERelaxation::NextPass)
        return kRelaxed;
    if (mask == 0)
        return kNothingLeftToRelax;
    return outcome == ERelaxation::ByClock ? kRelaxedByClock : kRelaxed;
}

/// One step on a board with White to move; safe mode and clock are the caller's.
int Relax(TChessboard& board, bool& bSafeMode, ERelaxationClock clock) {
    THeuristicParameters& p = *board.m_pContext;
    p.m_bFallbackPending = false;
    if (!p.m_bLetRelaxHeuristics) {
        board.m_nHeuristics = board.m_nHeurParams = 0;
        return kNothingLeftToRelax;
    }
    ++p.m_nRelaxations;
    TRelaxation step{board, p, bSafeMode, clock};
    const ERelaxation outcome = ApplyRules(step);
    board.m_nHeurParams = ComputeHeurParams(board);
    return ResultOf(outcome, board.m_nHeuristics);
}

/// Quick mode has no part in a signature: what it has doubted, a repetition, stands in the register under sets that the
/// passes to come have as well. They are safe, and search repetitions.
void ForgetDoubtOfQuickMode(TAnalysis& analysis) {
    if (analysis.m_pRegister != nullptr)
        analysis.m_pRegister->ForgetDoubt();
}

/// Has the plan put the mask aside for its preliminary pass already?
bool IsPreliminaryPass(const TChessboard& root) {
    const THeuristicParameters& p = *root.m_pContext;
    constexpr std::uint32_t kNarrow = SH_KEEPKINGONTHEEDGE | SH_ASSERTBLACKKINGSURROUNDED;
    return p.m_bFfmPreliminary && p.m_nRelaxations == 0 &&
           root.m_nHeuristics == ((p.m_nFfmSavedHeuristics & ~kNarrow) | SH_KEEPKINGWITHINEXTEDGE);
}

/// A copy of the root to try the plan on. The context's parameters are put back at the end.
class CPlanTrial {
  public:
    explicit CPlanTrial(const TChessboard& root)
        : m_board(root), m_context(*root.m_pContext), m_kept(m_context), m_analysis(*root.m_pAnalysis) {
        m_board.m_byPass = 1;
    }
    CPlanTrial(const CPlanTrial&) = delete;
    CPlanTrial& operator=(const CPlanTrial&) = delete;
    ~CPlanTrial() { static_cast<THeuristicParameters&>(m_context) = m_kept; }

    [[nodiscard]] TChessboard& Board() { return m_board; }

    /// A step that asks for a pass but has left no heuristic makes the pass without them: the list ends.
    [[nodiscard]] int Step(ERelaxationClock clock) {
        const int result = Relax(m_board, m_analysis.m_bSafeMode, clock);
        return m_board.m_nHeuristics != 0 ? result : kNothingLeftToRelax;
    }

    /// The set of the pass, with the moves that sea snake needs to have been played.
    [[nodiscard]] std::string PassText() const {
        std::string text = HeuristicsText(m_board, true, m_analysis);
        if ((m_board.m_nHeuristics & SH_SEASNAKE) == 0 || m_analysis.m_seaSnakeAfterMoves.empty())
            return text;
        std::string moves;
        for (const TMove& move : m_analysis.m_seaSnakeAfterMoves)
            moves += (moves.empty() ? "" : ", ") + WriteMove(move, m_board);
        return text + ", SH_SEASNAKE(after " + moves + " only)";
    }

  private:
    TChessboard m_board;
    TSearchContext& m_context;
    const THeuristicParameters m_kept;
    THeuristicAnalysisParameters m_analysis;
};

} // namespace

int TryRelaxSpecialHeuristics(TChessboard& board) {
    if (!IsWhiteToMove(board)) {
        if (board.m_pPrevious == nullptr)
            return kNothingLeftToRelax;
        const int result = TryRelaxSpecialHeuristics(*board.m_pPrevious);
        board.m_nHeuristics = board.m_pPrevious->m_nHeuristics;
        board.m_nHeurParams = ComputeHeurParams(board);
        return result;
    }
    TAnalysis& analysis = *board.m_pAnalysis;
    const bool bWasSafe = analysis.m_bSafeMode;
    LogRelaxation(board, RelaxationLogLine(board));
    const int result = Relax(board, analysis.m_bSafeMode, ERelaxationClock::Stamp);
    LogRelaxation(board, RelaxationLogLine(board));
    if (analysis.m_bSafeMode && !bWasSafe)
        ForgetDoubtOfQuickMode(analysis);
    return result;
}

void BeginPassPlan(TChessboard& root) {
    THeuristicParameters& p = *root.m_pContext;
    p.m_nRelaxations = 0;
    if ((root.m_nHeuristics & SH_DONTLETFIGUREUNBLOCK) != 0)
        WriteWatchedSquares(root, p);
    if ((root.m_nHeuristics & SH_FINDFORCEDMATE) != 0)
        StartPreliminaryPass(root);
    root.m_nHeurParams = ComputeHeurParams(root);
}

int CountRelaxations(const TChessboard& root) {
    CPlanTrial trial(root);
    int count = 0;
    while (trial.Step(ERelaxationClock::NeverQuick) != kNothingLeftToRelax)
        ++count;
    return count;
}

std::string ShowPassPlan(const TChessboard& root) {
    if (root.m_nHeuristics == 0)
        return std::string(kNoHeuristics);
    CPlanTrial trial(root);
    if (!IsPreliminaryPass(root))
        BeginPassPlan(trial.Board());
    std::string text = "Pass 1: " + trial.PassText();
    bool bClock = false;
    for (int result; (result = trial.Step(ERelaxationClock::AlwaysQuick)) != kNothingLeftToRelax;) {
        text += "\n\nPass " + PassName(1, trial.Board().m_pContext->m_nRelaxations);
        text += (result < 0 ? "*: " : ": ") + trial.PassText();
        bClock = bClock || result < 0;
    }
    return bClock ? text + std::string(kClockNote) : text;
}

std::string PassName(int nPass, int nRelaxations) {
    if (nPass >= 2)
        return std::to_string(nPass);
    std::string name = std::to_string(nPass);
    if (nRelaxations > 0)
        name += nRelaxations <= 25 ? std::string(1, static_cast<char>('a' + nRelaxations))
                                   : "+" + std::to_string(nRelaxations);
    return name;
}

} // namespace quillon
