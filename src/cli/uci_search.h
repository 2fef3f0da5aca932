#pragma once
// One "go": from the order to its "bestmove", of which there is exactly one.
//
// The lines it sends:
//
//   info depth D score mate N ... pv M1 M2 ...
//       Proved: M1 mates in at most N moves; D = 2N - 1. The line is legal and goes to the mate, unless that is not
//       found again in time. It shows one defence, the longest as far as is known, and may be shorter than N.
//   info depth D nodes ... nps ... time ...
//       Once a second, and when a length has been searched.
//   info string no mate in N
//       Proved.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>

#include "cli/mate_finder.h"
#include "cli/uci_notifier.h"
#include "platform/thread.h"

namespace quillon {

struct TUciOrder {
    TGamePosition m_position;
    TUciGo m_go;
    TSolveRequest m_request; // threads and memory
};

/// A legal move, whichever; "0000" if there is none.
[[nodiscard]] std::string AnyMove(const TGamePosition& position);

/// Threads: Run on a thread of the caller's choice; it makes another one for the solver. The rest from any thread.
class CUciSearch {
  public:
    CUciSearch(TUciOrder order, CUciOutput& output);
    CUciSearch(const CUciSearch&) = delete;
    CUciSearch& operator=(const CUciSearch&) = delete;

    /// Searches, sends the best move, gives memory back and returns. Without a thread for the solver the best move is
    /// any.
    void Run();

    /// The best move follows at once.
    void Stop();

    /// The move that was pondered has been made: the answer is wanted, within the limits counted from now.
    void PonderHit();

    /// The best move is sent or about to be sent: Run will not take long any more.
    [[nodiscard]] bool IsEnding() const { return m_bEnding.load(std::memory_order_relaxed); }

  private:
    using TClock = std::chrono::steady_clock;

    // The thread of Run.
    [[nodiscard]] CThread StartSolver();
    void Watch();
    [[nodiscard]] bool IsAnswerDue() const;
    void Look();
    void TellProgress();
    [[nodiscard]] TClock::time_point NextLook() const;
    void SetDeadline();

    // The solver's thread.
    void Search();
    void FindMove();
    void FindInOneGo(int nMoves);
    void FindUpwards(int nMost);
    [[nodiscard]] TMateAnswer Find(int nMoves);
    void TellNoMove();
    [[nodiscard]] bool IsImprovable(const TMateAnswer& answer, int nMoves, bool bShortest) const;
    void Improve(TMateAnswer answer, int nMoves, bool bShortest);
    void ReleaseFinder();
    void NoteReleasing(bool bReleasing);
    void AllowForImproving();
    void TellMate(const TMateAnswer& answer, int nMoves);

    [[nodiscard]] TUciInfo Progress() const;
    void StopAll();
    void NoteEnd();

    const TUciOrder m_order;
    CUciOutput& m_output;
    CUciNotifier m_notifier;
    CMateFinder m_finder;
    CMateFinder m_improver; // makes a line complete and its length exact, for a limited time

    const TClock::time_point m_start = TClock::now();
    std::atomic<int> m_nDepth{1}; // plies under search
    std::atomic<bool> m_bEnding{false};
    std::string m_bestMove; // of the solver's thread; read when it changes no more

    std::mutex m_mutex; // guards what follows
    std::condition_variable m_changed;
    bool m_bDone = false;      // the solver has ended
    bool m_bReleasing = false; // it gives memory back before it goes on
    bool m_bHeld;              // the answer has to wait for a word of the interface
    std::optional<TClock::time_point> m_deadline;
    std::optional<TClock::time_point> m_improvingEnd;
    TClock::time_point m_nextProgress;
};

} // namespace quillon
