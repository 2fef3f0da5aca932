#pragma once
// CThreadGroup: search threads that one thread has formed and waits for.
//
//   1 Each member has a context of its own and waits, once created, until the group is told to go or to give up.
//   2 Whoever waits for the group passes on what is asked of itself: its own m_nStopRequest reaches the members within
//     kForwardMs, and their answers are verdicts only if none was asked to stop.
//   3 No member outlives the group: the destructor stops and joins what still runs.
// Threads: the group is used by the thread that formed it; members touch their own record only.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>

#include "platform/thread.h"
#include "search/analysis.h"

namespace quillon {

/// Values of a member's control byte.
inline constexpr std::uint8_t kMemberWaits = 255;
inline constexpr std::uint8_t kMemberGoes = 1;
inline constexpr std::uint8_t kMemberAbandoned = 254;

/// How long a request takes at most to reach the members.
inline constexpr int kForwardMs = 10;

class CThreadGroup {
  public:
    /// `owner` is the context of the thread that forms the group and waits for it.
    ///   pNode  where it waits, if a manual command may call it away from there to a node above: then the members are
    ///          stopped, and the owner is called back. Outlives the group.
    CThreadGroup(TAnalysis& analysis, const TSearchContext& owner, const TChessboard* pNode = nullptr)
        : m_analysis(analysis), m_owner(owner), m_pNode(pNode) {}
    CThreadGroup(const CThreadGroup&) = delete;
    CThreadGroup& operator=(const CThreadGroup&) = delete;
    ~CThreadGroup();

    /// Creates a thread that will run `body` on `context` (which must outlive the group).
    ///   nPlies   of the whole analysis, for the stack.
    ///   Returns  false when the system gives no thread; the group is as it was.
    [[nodiscard]] bool Add(TSearchContext& context, int nPlies, std::function<void()> body);

    /// Lets the members go.
    void Go();

    /// The members created so far end without having run.
    void Abandon();

    /// Waits for the next member to end, and passes requests on meanwhile.
    ///   Returns  its index in the order of creation, each once; -1 when none is left.
    ///   Errors   what the member's body threw, once the others have been stopped and joined.
    [[nodiscard]] int WaitNext();

    /// Asks all members that still run to stop. WaitNext tells of each all the same.
    void StopAll();

  private:
    struct TMember {
        TSearchContext* m_pContext = nullptr;
        std::function<void()> m_body;
        std::atomic<std::uint8_t> m_control{kMemberWaits};
        CThread m_thread;
        std::exception_ptr m_failure; // read behind the join
        bool m_bEnded = false;        // guarded by m_mutex
        bool m_bTold = false;         // WaitNext has told of it
    };

    void Run(TMember& member);
    void CountOwnerAgain();
    void Forward();
    [[nodiscard]] int NextEnded() const;
    void Control(std::uint8_t control);
    void JoinAll();

    TAnalysis& m_analysis;
    const TSearchContext& m_owner;
    const TChessboard* const m_pNode;
    std::deque<TMember> m_members;
    std::uint8_t m_forwarded = kRunRequest;
    bool m_bStopping = false;
    bool m_bOwnerWaits = false; // and is not counted as running
    std::mutex m_mutex;
    std::condition_variable m_ended;
};

} // namespace quillon
