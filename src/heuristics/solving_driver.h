#pragma once
// The front end of a solve: prepares the analysis, runs the root, and tells what came of it.
//
// Threads: StartSolving runs on a thread of the caller's choice and returns when the solve has ended. Another thread
//          may meanwhile read the analysis' atomics and the context's move counters, and give commands
//          (CSolve::RequestStop, CSolve::Pause).

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/notifier.h"
#include "heuristics/find_mate_root.h"
#include "heuristics/heuristic_text_reader.h"
#include "search/control.h"

namespace quillon {

class CExpectedWhiteMoves;
class CProofGuide;
class CSearchRegister;
class TAggregatedTemporaryChessboardRegister;

/// How many solutions are looked for.
enum class ESolveMode { FirstSolution, StopOnDual, StopOn3, StopOn4, AllSolutions };

/// A problem with its run options.
struct TSolveRequest {
    TChessboard m_board = {}; // validated (RecountFigures), White to move, Black not in check
    int m_nStipulation = 0;   // mate in n moves, 1..kMaxStipulation
    long m_nProblemId = 0;
    std::string m_description; // for the log
    ESolveMode m_mode = ESolveMode::FirstSolution;
    bool m_bHybrid = false;     // a normal run for one solution, then brute force for the others
    bool m_bBruteForce = false; // no heuristics at all
    bool m_bSafeMode = false;
    bool m_bLetRelaxHeuristics = true;
    bool m_bStopRelaxingOnSolution = false; // behind a pass with a key comes the one without heuristics
    bool m_bRunPass2 = true;
    std::optional<TReadHeuristics> m_heuristics; // this set instead of the engine's choice
    THeuristicClauses m_heuristicClauses;        // changes to the engine's choice that the problem asks for
    bool m_bUsePredefinedIndications = false;    // known compositions get their stored settings
    bool m_bRelaxationLog = false;               // write TryRelaxSpecialHeuristics.log in the working folder
    std::uint32_t m_nRequiredHeuristics = 0;
    std::int16_t m_shLookForQuickerMateDepth = kDefaultQuickerMateDepth;
    int m_nThreads = 1;                  // that share the moves of a node, 1..255
    int m_nMultithreadingLevels = 1;     // white moves of a line that are shared so, the key first
    int m_nSchedulerLevels = 0;          // white moves below those whose moves take turns, 0..kMostSchedulerLevels
    bool m_bCustomScheduler = false;     // and those further down; without effect where there are no levels
    int m_nQuantumSecondMs = 1000;       // how long a second of a scheduler's quantum lasts, 1..60000
    bool m_bAllowThreadDemand = false;   // the user may be asked for more threads
    std::int64_t m_nMemoryBudgetMB = -1; // of the register; 0: none; negative: a share of the physical memory
    int m_nMemoryShare = 20;             // that share, in percent
    bool m_bClearRegister = true;        // a further start begins with an empty register, not with what is known
    bool m_bLog = false;

    // Data from outside the search: who provides it asks here how far this solve may use it.
    bool m_bUsePrecalculatedData = true;        // false: none answer, even if others of this process are used
    std::int64_t m_nPrecalculatedBudgetMB = -1; // negative: that of the process
    int m_nLichessLevels = 0;                   // White's first moves that may be asked of the online tablebase

    std::vector<SortIndication> m_sortIndications; // the user's word on the order of White's moves
    std::vector<TVariantMove> m_mainVariant;       // White's moves of a known variant, tried first; empty for none

    // A regression's test of the sort (search/expected_white_moves.h): White's moves of a line that are to be sorted
    // first; empty for no such test. A run for the test alone ends with it, and has one thread whatever is asked for.
    std::vector<TMove> m_expectedWhiteMoves;
    bool m_bExpectedWhiteMovesOnly = false;
};

/// What the register of solved positions holds and has done. All zero without a register.
struct TRegisterFigures {
    bool m_bInUse = false; // there is a register
    std::uint64_t m_nElements = 0;
    std::uint64_t m_nDoubtfulElements = 0; // of m_nElements, those that hold only under certain heuristics
    std::uint64_t m_nLookups = 0;
    std::uint64_t m_nHits = 0;
    std::uint64_t m_nEvictions = 0; // how often room was made
    std::uint64_t m_nEvictedElements = 0;
    std::uint64_t m_nMegabytes = 0; // in use, rounded up
};

enum class EVerdict {
    Mate,     // at least one key
    NoMate,   // proved: no key exists
    Doubtful, // the passes ended without a proof
    Stopped,  // ended by the user or a limit before a proof, no key found
};

struct TSolvingResult {
    EVerdict m_verdict = EVerdict::Doubtful;
    bool m_bComplete = false;               // the list of keys is proved complete
    bool m_bStopped = false;                // the user or a limit ended the run early
    std::vector<TSolution> m_solutions;     // in the order found; with threads sorted by move
    std::vector<std::string> m_variant;     // main variant in long notation, key first; empty if it was not finished
    std::vector<std::string> m_passes;      // names of the passes that were run
    std::vector<TPassRecord> m_passRecords; // the same passes with what there is to tell of them
    std::uint64_t m_nPositions = 0;         // with fewer than four plies left, outside the short-mate search
    std::uint64_t m_nTrialPositions = 0;    // and inside it
    double m_seconds = 0;                   // wall clock, without pauses
    TRegisterFigures m_register;

    std::vector<TMove> m_expectedWhiteMoves;    // of the request; what was not sorted first is marked
    bool m_bExpectedWhiteMovesCompared = false; // at least one of them
    bool m_bStoppedByExpectation = false;       // the test of the sort has ended the run, not the user or a limit

    std::string m_text;  // the result text for the user
    std::string m_title; // and the title it goes under
    std::string m_logLine;
};

/// A solve: its analysis, its context, and the controls that another thread may use while it runs.
class CSolve {
  public:
    ///   Errors  ChessException: the set of heuristics does not fit the position.
    explicit CSolve(TSolveRequest request);
    ~CSolve();

    /// Runs the solve to its end. May be called again: each start begins with the request as it was given. A stop ends
    /// with the start that it was given in; one that comes before a start ends that at once.
    ///   Errors  ChessException for a request that cannot be run: stipulation out of range, Black in check.
    [[nodiscard]] TSolvingResult StartSolving(INotifier& notifier);

    // From any thread, not from a signal handler: there is a lock in the control record.
    // A stop reaches every thread at its next node, and ends a pause.
    void RequestStop();
    // A pause of all threads, in which the clock of the solve stands still. It does not undo a stop: nodes that have
    // obeyed it have returned no verdict, and those above them must know. The two are never in force together: a stop
    // ends the pause that it finds for good, and behind one a pause has no effect, on the next start neither.
    void Pause() { PauseAll(m_analysis); }
    void Resume() { ResumeAll(m_analysis); }

    /// Called for each solution as it is found, on the thread that found it, one at a time. Set before the start.
    void SetSink(decltype(TRootRun::m_sink) sink) { m_run.m_sink = std::move(sink); }

    /// Called once the passes are planned, on the solving thread. Set before the start.
    void SetPlanSink(decltype(TRootRun::m_planSink) sink) { m_run.m_planSink = std::move(sink); }

    [[nodiscard]] TAnalysis& Analysis() { return m_analysis; }
    [[nodiscard]] const TAnalysis& Analysis() const { return m_analysis; }
    [[nodiscard]] const TSearchContext& Context() const { return *m_context; }

    /// As they are now. From any thread.
    [[nodiscard]] TRegisterFigures RegisterFigures() const;

    /// The box "Main settings of current analysis". On the solving thread or before the start.
    [[nodiscard]] std::string ShowAnalysisSettings() const;

  private:
    void TakeRequest();
    void Prepare(INotifier& notifier);
    void SetMode();
    void SetOneThread();
    void SetRegisterMemory();
    void PrepareRegister(INotifier& notifier);
    void PrepareGuide();
    void PrepareExpectedWhiteMoves();
    [[nodiscard]] bool IsRegisterWorthwhile() const;
    [[nodiscard]] int RunRoot(INotifier& notifier);
    [[nodiscard]] int RunOnce(bool bFirstTime);
    void TakeChosenHeuristics();
    void SwitchToBruteForce();
    [[nodiscard]] TSolvingResult Collect(double seconds);
    void TakeExpectedWhiteMoves(TSolvingResult& result);
    void FillTexts(TSolvingResult& result) const;
    [[nodiscard]] std::string InitialSetText() const;
    [[nodiscard]] TMove KeyOfVariant() const;
    [[nodiscard]] std::vector<std::string> VariantTexts();

    TSolveRequest m_request;
    TAnalysis m_analysis;
    std::unique_ptr<TSearchContext> m_context;
    TRootRun m_run;

    std::unique_ptr<CProofGuide> m_guide;
    std::unique_ptr<CExpectedWhiteMoves> m_expectedWhiteMoves; // null: no order of White's moves is expected

    // Both live as long as the solve: the progress display may look at them at any time.
    std::unique_ptr<TAggregatedTemporaryChessboardRegister> m_register;
    std::unique_ptr<CSearchRegister> m_searchRegister;
    std::atomic<const TAggregatedTemporaryChessboardRegister*> m_pShownRegister{nullptr}; // null until it is made
};

/// Plies of mate in n moves.
[[nodiscard]] constexpr int PliesOf(int nStipulation) { return 2 * nStipulation - 1; }

} // namespace quillon
