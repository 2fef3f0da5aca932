#pragma once
// TAnalysis: the record shared by all threads of one analysis.
//
// Threads: plain fields are written before the threads start and between passes. Atomics are read and written relaxed
//          by any thread, without a lock: counters for display, and the control record that pauses and stops a run.

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

#include "core/chessboard.h"
#include "core/heuristic_parameters.h"
#include "core/search_context.h"
#include "search/sort_indication.h"
#include "tempregister/temporary_register.h"

namespace quillon {

class CExpectedWhiteMoves;
class CObservedLines;
class CProofGuide;
class INodeLog;
struct TShownPass;

/// The most levels of White's moves that the scheduler may juggle.
inline constexpr int kMostSchedulerLevels = 9;

/// Values of m_nCommand.
inline constexpr std::uint8_t kNoCommand = 0;
inline constexpr std::uint8_t kPauseCommand = 1;
inline constexpr std::uint8_t kManualCommand = 2;
inline constexpr std::uint8_t kStopCommand = 3;

inline constexpr std::uint16_t kAllThreads = 65535;

/// Number of the thread that waits for the root's threads: no command is addressed to it alone.
inline constexpr std::uint32_t kNoThreadNumber = 0xFFFFFFFF;

/// Values of m_nMoveOrderAction.
inline constexpr std::uint8_t kKeepOrder = 0;
inline constexpr std::uint8_t kSwapWithNext = 1;
inline constexpr std::uint8_t kMoveToEnd = 2;

/// Values of m_nSkipAction; from 2 on it is the number of moves to skip.
inline constexpr std::uint8_t kSkipToMove = 0;
inline constexpr std::uint8_t kSkipToNext = 1;

// Bits of m_nSolveMode.
inline constexpr std::uint8_t kSingleSolution = 1; // stop at the first solution
inline constexpr std::uint8_t kAllSolutions = 2;   // passes go on after a solution

// Bits of m_nStopFlags.
inline constexpr std::uint32_t kStopOnDual = 1u << 3;
inline constexpr std::uint32_t kStopOn3Solutions = 1u << 4;
inline constexpr std::uint32_t kNoRegisterBudget = 1u << 6;
inline constexpr std::uint32_t kStopOn4Solutions = 1u << 15;

// Values of m_nHybridPhase.
inline constexpr std::uint8_t kNotHybrid = 0;
inline constexpr std::uint8_t kHybridHeuristical = 1; // first phase: a normal run up to one solution
inline constexpr std::uint8_t kHybridBruteForce = 2;  // second phase: empty mask, search for duals

/// A white move of a known variant, as far as it names a move again: figure (code with colour) and target.
struct TVariantMove {
    TFigure m_figure = kNoFigure;
    TSquare m_nTo = kNoSquare;
};

/// Figures (without the kings) and pawns of each side in the root of the problem.
struct TRootMaterial {
    std::uint8_t m_nWhiteFigures = 0, m_nBlackFigures = 0;
    std::uint8_t m_nWhitePawns = 0, m_nBlackPawns = 0;
};

struct TAnalysis : THeuristicAnalysisParameters {
    // --- What is asked
    // --------------------------------------------------------------------------------------------------
    std::uint8_t m_nSolveMode = kSingleSolution;
    std::uint32_t m_nStopFlags = 0;
    std::uint8_t m_nHybridPhase = kNotHybrid;
    std::uint32_t m_nRequiredHeuristics = 0;  // if not 0: all of it must be in the mask after the initial analysis
    bool m_bAllowForcedThreads = false;       // the driver may return a thread demand: first attempt of a start
    bool m_bThreadsForced = false;            // the demand was made in this solve, it comes once
    std::uint8_t m_nThreads = 1;              // of a group
    std::uint8_t m_nMultithreadingLevels = 1; // 1: only the first move runs in parallel
    std::uint8_t m_nForcedThreadsMode = 0;    // above 1: m_nThreads was forced at the root, and groups below it are
    std::uint8_t m_nGroupLimit = 0;           // no larger than this
    std::uint8_t m_nSchedulerLevels = 0;      // white moves below those that the scheduler juggles; 0: it is off
    bool m_bCustomScheduler = false;          // those further down are juggled too
    std::uint16_t m_nQuantumSecondMs = 1000;  // how long a second of a scheduler's quantum lasts; tests shorten it
    std::int32_t m_nThreadPriority = 0;       // of every thread created, platform/thread.h
    std::uint16_t m_nAnalysisStart = 0;       // m_nMoves of the root: a repetition cannot go back beyond it

    // --- What is known of the order of White's moves (move_sort.h)
    // ----------------------------------------------------------------------
    std::vector<SortIndication> m_sortIndications;
    std::uint8_t m_nSortIndicationLevels = 255;           // the first moves of a line that they are asked at
    std::vector<TVariantMove> m_mainVariant;              // White's moves of a known variant, the key first
    CExpectedWhiteMoves* m_pExpectedWhiteMoves = nullptr; // not owned; null: no order is expected
    std::uint8_t m_nStoredTreeLevels = 1;                 // White's first moves that precalculated data order

    // --- How the passes are planned
    // -------------------------------------------------------------------------------------------------
    TRootMaterial m_rootMaterial;                 // set by the initial analysis; the counts of captures start from it
    bool m_bUsePredefinedIndications = false;     // known compositions get their stored settings
    bool m_bTryRelaxSpecialHeuristicsLog = false; // write TryRelaxSpecialHeuristics.log
    const CProofGuide* m_pGuide = nullptr;        // not owned; null: no best-first proof was tried

    // Time of each relaxation step, ms as AnalysisTicks, under its number; 0: not reached. The first thread to reach a
    // step writes the stamp and the later ones read it, so that all of them decide alike.
    std::array<std::atomic<std::uint64_t>, 256> m_relaxationTicks{};
    std::atomic<std::uint16_t> m_nRelaxationLock{0};

    // --- What is shared
    // -------------------------------------------------------------------------------------------------
    ITemporaryRegister* m_pRegister = nullptr;             // not owned; null: nothing is stored
    std::uint32_t m_nRegisterScale = 0;                    // memory scale of the register, from the problem's length
    std::int64_t m_nRegisterBudget = 0;                    // bytes; 0 with kNoRegisterBudget means without limit
    INodeLog* m_pNodeLog = nullptr;                        // only the logging instantiations look at it
    void (*m_pProgressHook)(const TChessboard&) = nullptr; // called every sixteenth ply

    // --- Statistics
    // -----------------------------------------------------------------------------------------------------
    std::atomic<std::uint64_t> m_nPositions{0};      // positions with fewer than four plies left, outside trials
    std::atomic<std::uint64_t> m_nTrialPositions{0}; // the same inside the short-mate search
    std::atomic<std::uint64_t> m_nPassesPlanned{1};
    std::atomic<std::uint32_t> m_nPassIndex{0};       // the pass begun last, number and relaxations; 0: none yet
    std::atomic<std::uint64_t> m_nStartTicks{0};      // ms as AnalysisTicks
    std::atomic<const char*> m_pStatusText{""};       // what the progress panel shows; static texts only
    std::atomic<std::uint64_t> m_nProgressTicks{0};   // ms, last sign of life
    std::atomic<std::uint32_t> m_nFinishedThreads{0}; // threads of groups and schedulers that have ended

    // --- For observers
    // -----------------------------------------------------------------------------------------------------
    std::atomic<std::uint32_t> m_nRunningThreads{0};   // that search; who waits for a group of threads does not count
    std::atomic<std::uint32_t> m_nSchedulerThreads{0}; // made by the scheduler and not ended
    std::atomic<std::uint32_t> m_nSleepingThreads{0};  // in a pause
    std::atomic<const TShownPass*> m_pShownPass{nullptr}; // the pass begun last; lives as long as the solve
    CObservedLines* m_pObservedLines = nullptr;           // not owned; set before the start; null: nobody looks

    // --- Control record
    // -------------------------------------------------------------------------------------------------
    std::atomic<std::uint8_t> m_nControlLock{0};
    std::atomic<std::uint8_t> m_nCommand{kNoCommand};
    std::atomic<std::uint16_t> m_nCommandThread{kAllThreads};
    // A bit for each thread that is to stop alone, whatever command has come since. While there is one, a command is in
    // force.
    std::array<std::atomic<std::uint64_t>, (kAllThreads + 1u) / 64> m_stoppedThreads{};
    // The analysis' clock stands still while a pause of all threads is in force; both under the lock, ms.
    std::uint64_t m_nPausedMs = 0;    // of the pauses that have ended
    std::uint64_t m_nPausedSince = 0; // as TickCount64; 0: none is in force
    // Of a manual command, valid under the lock.
    std::atomic<std::uint16_t> m_nCommandPlies{0}; // m_nMoves of the node meant
    std::atomic<std::uint8_t> m_nMoveOrderAction{kKeepOrder};
    std::atomic<std::uint8_t> m_nSkipAction{kSkipToNext};
    std::atomic<std::uint32_t> m_skipTarget{0}; // the move to skip to: from, to, promotion, 8 bits each
};

/// Counts a thread for as long as it lives.
class CCountedThread {
  public:
    explicit CCountedThread(std::atomic<std::uint32_t>& count) : m_count(count) {
        m_count.fetch_add(1, std::memory_order_relaxed);
    }
    CCountedThread(const CCountedThread&) = delete;
    CCountedThread& operator=(const CCountedThread&) = delete;
    ~CCountedThread() { m_count.fetch_sub(1, std::memory_order_relaxed); }

  private:
    std::atomic<std::uint32_t>& m_count;
};

/// Positions are counted per thread and brought to the analysis' total in lots, so that threads do not fight for one
/// cache line. The total is exact once the thread has called FlushPositions.
inline constexpr std::uint32_t kCountLot = 256;

/// Takes the lot off what a bounded look has left. Once nothing is left its thread stops, unless it is told to
/// anyhow.
inline void SpendPositions(TSearchContext& context) {
    if (context.m_nPositionsLeft == TSearchContext::kNoBound)
        return;
    const std::uint64_t lot = context.m_nUncounted + context.m_nTrialPositions;
    context.m_nPositionsLeft -= std::min(lot, context.m_nPositionsLeft);
    std::uint8_t running = kRunRequest;
    if (context.m_nPositionsLeft == 0)
        context.m_nStopRequest.compare_exchange_strong(running, kBoundRequest, std::memory_order_relaxed);
}

inline void FlushPositions(TSearchContext& context, TAnalysis& analysis) {
    SpendPositions(context);
    analysis.m_nPositions.fetch_add(context.m_nUncounted, std::memory_order_relaxed);
    analysis.m_nTrialPositions.fetch_add(context.m_nTrialPositions, std::memory_order_relaxed);
    context.m_nUncounted = 0;
    context.m_nTrialPositions = 0;
}

inline void CountTrialPosition(TSearchContext& context, TAnalysis& analysis) {
    if (++context.m_nTrialPositions == kCountLot)
        FlushPositions(context, analysis);
}

inline void CountPosition(TSearchContext& context, TAnalysis& analysis) {
    if (context.m_nQuickerLevel != 0) {
        CountTrialPosition(context, analysis);
        return;
    }
    if (++context.m_nUncounted == kCountLot)
        FlushPositions(context, analysis);
}

/// Is repetition treated strictly: searched to its proof instead of cut off as doubtful?
[[nodiscard]] inline bool IsStrict(const TChessboard& b) { return b.m_byPass >= 2 || b.m_pAnalysis->m_bSafeMode; }

/// Makes `board` the root of a run: copies it to its slot of the context's stack and links context and analysis.
///   nMoves  plies, odd, at most 2 * kMaxStipulation - 1.
TChessboard* MakeRoot(TSearchContext& context, TAnalysis& analysis, const TChessboard& board, int nMoves, int nPass);

} // namespace quillon
