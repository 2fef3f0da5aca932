#pragma once
// CHelperThreads: threads that help one thread with a look aside, each on a clone of its context.
//
//   1 All clones are made before a thread starts: none reads the caller's context while he searches.
//   2 Commands reach the helpers as they reach everybody. What is asked of the caller alone he passes on, as long as he
//     waits for them; before, he has to look at himself. A bound that he has set himself is his alone.
//   3 No helper outlives the object.
// Threads: the object is used by the thread that it helps.

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "core/chessboard.h"
#include "core/search_context.h"
#include "platform/thread.h"

namespace quillon {

struct TAnalysis;

/// Threads that a look is worth sharing among, the calling one counted: those asked for, as far as there are processors
/// for them. Looks that several threads are in at a time cost more than they would one after the other.
[[nodiscard]] int ThreadsForLook(const TAnalysis& analysis);

/// Can helpers be given the position? Only one in the main stack has its like in a clone.
[[nodiscard]] bool IsInMainStack(const TChessboard& b);

class CHelperThreads {
  public:
    CHelperThreads() = default;
    CHelperThreads(const CHelperThreads&) = delete;
    CHelperThreads& operator=(const CHelperThreads&) = delete;
    ~CHelperThreads() { End(); }

    /// Once: starts up to `nHelpers` threads, fewer where the system gives no more. Each runs `body` on its own copy of
    /// `b`, which is in the main stack. No bound is in force in a clone, and it begins with no positions counted.
    ///   Returns  how many run.
    int Start(const TChessboard& b, int nHelpers, std::function<void(TChessboard&)> body);

    /// Waits until the helpers have ended. Meanwhile they are counted as running, and the caller is not.
    ///   Errors  what a body threw, when all have.
    void Join();

    /// The same, but asks them to stop. The destructor does so, too, and keeps what they threw to itself.
    void Stop();

  private:
    void MakeClones(const TSearchContext& caller, std::size_t nCount);
    void StartThreads(const TChessboard& b);
    void Help(TChessboard& b);
    void Ask(std::uint8_t request);
    void End();
    void Tell();

    const TChessboard* m_pCallers = nullptr; // the position, in the caller's stack
    std::function<void(TChessboard&)> m_body;
    std::vector<std::unique_ptr<TSearchContext>> m_contexts;

    // Guarded by m_mutex while threads run.
    std::size_t m_nEnded = 0;
    std::exception_ptr m_failure; // the first

    std::mutex m_mutex;
    std::condition_variable m_ended;
    std::vector<CThread> m_threads; // end before all that they use
};

} // namespace quillon
