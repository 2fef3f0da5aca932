#pragma once
// The root of a solve: the loop over passes and over the root's white moves.

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "heuristics/heuristic_clauses.h"
#include "search/analysis.h"
#include "search/shown_pass.h"

namespace quillon {

class CProofGuide;
class INotifier;

/// A key that was found.
struct TSolution {
    TMove m_move{};
    std::string m_text; // long notation
    std::string m_pass; // "1", "1b", ..., "2"; empty when the initial analysis found it
};

/// State of one root move. Values above 1 do not come from the search.
inline constexpr std::uint8_t kRootMoveMates = 1;
inline constexpr std::uint8_t kRootMoveRefuted = 0;
inline constexpr std::uint8_t kRootMoveDoubtful = 255; // -1 as a byte
inline constexpr std::uint8_t kRootMoveNotTried = 254;

struct TRootMove {
    TMove m_move{};
    std::uint8_t m_nResult = kRootMoveNotTried;
};

/// What there is to tell of a pass.
struct TPassRecord {
    std::string m_name;            // "1", "1b", ..., "2"
    std::string m_heuristics;      // HeuristicsText with quick mode; empty for a pass without heuristics
    double m_seconds = 0;          // wall clock, without pauses
    int m_nKeys = 0;               // keys found in it
    bool m_bTimeDependent = false; // it took place only because the passes before it were quick
};

/// Heuristics that were chosen and are not used all the same.
struct TLeftOut {
    std::uint32_t m_nHeuristics = 0;
    const char* m_reason = "";
};

/// How a run is planned, for the user.
struct TPlanReport {
    std::vector<std::string> m_rules;   // names of the rules of the initial analysis that fired, in order
    std::string m_initialSet;           // HeuristicsText of the first pass; empty for none
    std::vector<std::string> m_leftOut; // what the engine left out of its choice, each with the reason
    std::string m_passPlan;             // ShowPassPlan
    bool m_bChosenByHand = false;
    bool m_bSafeModeForced = false;  // by the initial analysis, not the user
    bool m_bGuided = false;          // the best-first proof found a mate
    std::uint64_t m_nGuideNodes = 0; // positions that it expanded; 0: it was not tried
    bool m_bRelaxes = true, m_bRunPass2 = true;
};

/// What a run has found.
struct TRootFindings {
    std::vector<TSolution> m_solutions;           // in the order found; with threads sorted by move
    std::vector<TRootMove> m_moves;               // legal root moves of the last run
    std::vector<std::string> m_passes;            // names of the passes that were begun
    std::vector<TPassRecord> m_passRecords;       // the same passes, one record each, complete when the pass has ended
    std::vector<std::string_view> m_initialRules; // rules of the initial analysis that fired, in order
    std::uint32_t m_nInitialHeuristics = 0;
    std::uint32_t m_nOfClauses = 0;          // of these, what the problem itself asks for
    std::vector<TLeftOut> m_leftOut;         // of the choice, what the passes do without
    std::optional<std::string> m_initialSet; // text of the set that the plan starts from; none before it is planned
    bool m_bSafeModeForced = false;          // by the initial analysis or a step of the plan, not the user
    bool m_bStopped = false;                 // the user or a limit ended the run
};

/// What a run is asked and what it has found; lives as long as the solve, across its restarts.
struct TRootRun : TRootFindings {
    long m_nProblemId = 0;
    bool m_bChosenHeuristics = false; // m_nChosenHeuristics replaces the initial analysis' choice
    std::uint32_t m_nChosenHeuristics = 0;
    THeuristicClauses m_clauses;            // what the problem says about the choice
    bool m_bAnalysisOnly = false;           // stop behind the initial analysis
    bool m_bLog = false;                    // run the logging nodes
    bool m_bStopRelaxingOnSolution = false; // once there is a key, go on without heuristics
    bool m_bNoAids = false;                 // threads were refused: relax without the aids that count on them
    INotifier* m_pNotifier = nullptr;       // not owned; hears of faults in stored settings; may be null
    CProofGuide* m_pGuide = nullptr;        // not owned; null: no best-first proof is tried
    std::function<void(const TMove&, std::string_view text, long problemId, std::string_view comment)> m_sink;
    std::function<void(const TPlanReport&)> m_planSink; // hears of the plan before the first pass; may be empty

    // Of all starts: an observer may be reading one of them at any time.
    std::deque<TShownPass> m_shownPasses;

    // Of the root's threads, kept from pass to pass.
    std::vector<std::unique_ptr<TSearchContext>> m_threadContexts;
};

/// What the progress panel shows while the guide looks for a mate.
inline constexpr char kGuideLooking[] = "Best-first proof"; // one array: the display knows it by its address

/// A shorter run, in plies, is through before a look of the guide would pay: it asks none.
inline constexpr int kShortestGuidedRun = 7;

/// Plies, the root among them, whose moves tell how far a pass has come.
inline constexpr int kShownPlies = 4;

/// Results of FindMateRoot; a value -n from -2 down is a demand for n threads (at most 127). None is for one thread:
/// -1 is what a run with m_bAnalysisOnly returns.
inline constexpr int kNoSolutionFound = 0;
inline constexpr int kSolutionsFound = 1;
inline constexpr int kRequiredHeuristicsUnmet = 127;
inline constexpr int kInitialAnalysisOnly = -1;

/// Runs the passes over `board` (validated; White to move) with `nPlies` plies, odd.
///   bFirstTime          run the initial analysis (once a solve).
///   bAllowThreadDemand  the run may return a demand for threads instead of solving.
int FindMateRoot(TSearchContext& context, TAnalysis& analysis, const TChessboard& board, int nPlies, TRootRun& run,
                 bool bFirstTime, bool bAllowThreadDemand);

/// The root moves of one pass that are still to be tried. Threads take them one by one.
class IRootMoves {
  public:
    virtual ~IRootMoves() = default;

    /// Tries the next move on the stack of `context`, whose root slot holds the root, and notes what came of it.
    ///   Returns  false when there is none left, enough has been found, or the thread is being stopped.
    ///   Threads  any, each with a context of its own.
    [[nodiscard]] virtual bool TryNext(TSearchContext& context) = 0;

    /// Have as many solutions been found as are wanted? From any thread.
    [[nodiscard]] virtual bool IsEnough() = 0;
};

/// parallel: tries the moves on so many threads as m_nThreads says, each with a clone of `context`, and waits for them.
///   nMoves   moves to try, >= 1; there are no more threads than moves.
///   Returns  false when there are no two threads to be had: nothing has been tried.
///   Errors   what a thread threw, after the others have been stopped.
[[nodiscard]] bool TryRootMovesInThreads(TSearchContext& context, TAnalysis& analysis, TRootRun& run, IRootMoves& moves,
                                         int nMoves);

/// The same run with the root's white moves shared by the threads of the analysis.
int FindMateRootThreads(TSearchContext& context, TAnalysis& analysis, const TChessboard& board, int nPlies,
                        TRootRun& run, bool bFirstTime, bool bAllowThreadDemand);

/// What TAnalysis::m_nPassIndex holds: the number of the pass in the high half, relaxations so far in the low one.
[[nodiscard]] constexpr std::uint32_t PassIndex(int nPass, int nRelaxations) {
    return static_cast<std::uint32_t>(nPass) << 16 | static_cast<std::uint16_t>(nRelaxations);
}

/// "1", "1b", ..., "2"; empty for 0, when no pass has begun.
[[nodiscard]] std::string PassNameOf(std::uint32_t nPassIndex);

/// The number of solutions at which the run ends, by m_nSolveMode and m_nStopFlags; 0 for no limit.
[[nodiscard]] int SolutionLimit(const TAnalysis& analysis);

/// Is any root move still open: doubtful or not tried?
[[nodiscard]] bool HasOpenMoves(const TRootRun& run);

} // namespace quillon
