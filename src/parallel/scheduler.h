#pragma once
// TScheduler: time-slicing of the moves of one white node.
//
// Below the multithreading levels a node works through its moves one at a time, and a first move that needs days would
// starve one that was sorted as almost as good. The scheduler lets a worker thread try the moves, the best first; when
// the quantum of a move is over the worker is paused in it, and another goes on with the next move.
//
//   1 One worker at a time has the turn. Pausing is cooperative, so for some moments two may run. A worker that has
//     ended its move while it has the turn goes on with the next: a move that ends within its quantum costs no thread.
//   2 A worker may schedule nodes of its own: pause and stop reach whatever runs below it.
//   3 Where no thread is to be had the move is searched in the node's thread: the same verdict, sooner or later.
//   4 No worker outlives the scheduler, and a scheduler not its node.
// Threads: a scheduler is used by the thread of its node. The workers take and end slots under m_mutex.

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <vector>

#include "core/chessboard.h"
#include "core/mate_result.h"
#include "core/move.h"
#include "parallel/node_share.h"
#include "parallel/quantum.h"
#include "platform/thread.h"

namespace quillon {

/// Workers of a scheduler, those that have ended counted; moves that find none are searched in the node's thread.
inline constexpr int kMostWorkers = 248;

/// Schedulers that a line may stand in at a time.
inline constexpr int kMostNestedSchedulers = 12;

/// The workers that exist in this process now.
[[nodiscard]] int SchedulerThreads();

/// How many there may be: a fifth of the physical memory in MiB, for a sleeping one holds about so much.
[[nodiscard]] int MostSchedulerThreads();

/// Another limit; negative: that by memory again.
void SetMostSchedulerThreads(int nMost);

/// How long no thread is asked for when the system had none, or no memory for one; what it had not is forgotten.
void SetExhaustedMs(std::uint64_t nMs);

class TScheduler {
  public:
    /// A scheduler for moves of the white node `position`.
    ///   pParent      the innermost scheduler that its line stands in, null for none.
    ///   nCustomFrom  so many moves at the head of the list were sorted among the best. Outside the range, where a turn
    ///                is short for every move, none of them counts as late.
    TScheduler(TChessboard& position, const TScheduler* pParent, int nCustomFrom);
    TScheduler(const TScheduler&) = delete;
    TScheduler& operator=(const TScheduler&) = delete;
    ~TScheduler();

    /// The moves, once, before Run.
    ///   Errors  std::bad_alloc.
    void TakeMoves(const TMove* list, int nMoves);

    /// The verdict on the moves, each of them searched by pNode.
    ///   Returns  MR_MATE, or what the moves leave behind (CNodeVerdict). Nothing of it is one while the node is
    ///            being stopped.
    ///   Errors   what a worker threw, after the others have been stopped.
    [[nodiscard]] TMateResult Run(TNodeFunction pNode);

    /// Levels of scheduling outside the range, down to this one.
    [[nodiscard]] int CustomDepth() const { return m_nDepth + (m_bInRange ? 0 : 1); }

    /// Schedulers that the line stands in, this one counted.
    [[nodiscard]] int Nesting() const { return m_nNesting; }

    /// Is this the scheduler of a node within the levels told, not of one further down?
    [[nodiscard]] bool IsInRange() const { return m_bInRange; }

    /// What the moves have had so far.
    [[nodiscard]] TSlotTimes Times() const;

  private:
    struct TWorker {
        TNodeShare m_share;
        std::size_t m_nSlot = 0; // that it is in
        bool m_bHasTurn = true;
        bool m_bEnded = false;
        std::exception_ptr m_failure;
        CThread m_thread;
    };

    struct TSlot {
        TMove m_move;
        TWorker* m_pWorker = nullptr; // null: not begun
        bool m_bEnded = false;
        std::uint32_t m_nTime = 0; // used up, in units of 100 ms
        TShareVerdict m_verdict;
    };

    /// A slot's quantum and what is left of it.
    struct TTurn {
        std::size_t m_nSlot = 0;
        int m_nQuantum = 0;
        std::chrono::steady_clock::duration m_left{};
    };

    enum class EStart { Started, AtLimit, NoThread, NoMemory };

    [[nodiscard]] bool IsEnded() const;
    [[nodiscard]] bool MayGoOn() const;
    [[nodiscard]] bool GiveNextTurn();

    [[nodiscard]] bool StartWorker();
    [[nodiscard]] EStart TryStartWorker();
    void FreeMemory() const;
    void Forget(std::size_t slot, std::size_t nWorkers);
    [[nodiscard]] bool TakeSlot(TWorker& worker);
    void Work(TWorker& worker);
    [[nodiscard]] bool EndSlot(TWorker& worker, const TShareVerdict& verdict);
    void SearchHere();

    void WatchTurn();
    [[nodiscard]] TTurn Turn() const;
    [[nodiscard]] std::size_t SlotInTurn() const;
    [[nodiscard]] bool WaitForEnd(std::chrono::steady_clock::duration time);
    [[nodiscard]] bool PassOnRequests();
    void PassOn(std::uint8_t request);
    [[nodiscard]] bool IsSwitchDue(const TTurn& turn);
    void Pause();
    void Resume(TWorker& worker);
    void Reap();
    void StopWorkers();

    [[nodiscard]] TMateResult Conclude();

    TChessboard& m_position;
    TSearchContext& m_context;
    TNodeFunction m_pNode = nullptr;
    int m_nDepth;   // levels of scheduling outside the range above this one
    int m_nNesting; // 1 for the first of a line
    int m_nLevel;   // of the node: 1 below the multithreading levels
    int m_nCustomFrom;
    bool m_bInRange;
    std::uint8_t m_passedOn; // what was asked of the workers last

    TWorker* m_pTurn = nullptr;    // the worker that has the turn
    std::deque<TWorker> m_workers; // one that has ended and was let go of is without context

    // Guarded by m_mutex while workers run.
    std::vector<TSlot> m_slots;
    std::size_t m_nNext = 0; // the first slot not begun
    bool m_bMated = false;
    const TWorker* m_pMated = nullptr; // who found it, null: the node's own thread
    bool m_bStopping = false;

    mutable std::mutex m_mutex;
    std::condition_variable m_ended; // a worker has
};

} // namespace quillon
