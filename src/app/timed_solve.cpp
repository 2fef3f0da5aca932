#include "app/timed_solve.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <utility>

#include "parallel/search_thread.h"
#include "platform/thread.h"
#include "search/control.h"

namespace quillon {

namespace {

using TDuration = std::chrono::milliseconds;

constexpr TDuration kPollStep{20};
constexpr TDuration kLongestStep{1000};

class CTimedSolve {
  public:
    CTimedSolve(const TSolveRequest& request, INotifier& notifier) : m_solve(request), m_notifier(notifier) {}

    TTimedResult Run(int nLimitSeconds, const std::atomic<bool>& bMayRun) {
        if (nLimitSeconds > 0)
            m_limit = std::chrono::seconds(nLimitSeconds);
        m_nTicks = AnalysisTicks(m_solve.Analysis());
        CThread thread(SearchStackBytes(kStackSlots), [this] { Solve(); });
        Poll(bMayRun);
        thread.Join();
        if (m_failure)
            std::rethrow_exception(m_failure);
        return std::move(m_timed);
    }

  private:
    void Solve() {
        try {
            m_timed.m_result = m_solve.StartSolving(m_notifier);
        } catch (...) {
            m_failure = std::current_exception();
        }
        const std::lock_guard lock(m_mutex);
        m_bDone = true;
        m_changed.notify_one();
    }

    void Poll(const std::atomic<bool>& bMayRun) {
        std::unique_lock lock(m_mutex);
        while (!m_changed.wait_for(lock, NextStep(), [this] { return m_bDone; })) {
            CountTime();
            if (!bMayRun.load(std::memory_order_relaxed))
                Stop(ESolveEnd::User);
            else if (m_spent >= m_limit)
                Stop(ESolveEnd::TimeLimit);
        }
    }

    /// A step that has taken far longer than it should: the process stood still, and so did the solve.
    void CountTime() {
        const std::uint64_t now = AnalysisTicks(m_solve.Analysis());
        const TDuration step{static_cast<TDuration::rep>(now - std::exchange(m_nTicks, now))};
        m_spent += std::min(step, kLongestStep);
    }

    [[nodiscard]] TDuration NextStep() const {
        if (m_timed.m_end != ESolveEnd::Itself)
            return kPollStep;
        return std::clamp(m_limit - m_spent, TDuration(1), kPollStep);
    }

    void Stop(ESolveEnd end) {
        if (m_timed.m_end == ESolveEnd::Itself)
            m_timed.m_end = end;
        m_solve.RequestStop();
    }

    CSolve m_solve;
    INotifier& m_notifier;
    TDuration m_limit = TDuration::max();
    TDuration m_spent{0};       // by the clock of the solve
    std::uint64_t m_nTicks = 0; // of that clock, when it was last looked at

    TTimedResult m_timed; // its result is the solving thread's, read behind Join
    std::exception_ptr m_failure;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_bDone = false; // guarded by m_mutex
};

} // namespace

TTimedResult SolveInTime(const TSolveRequest& request, INotifier& notifier, int nLimitSeconds,
                         const std::atomic<bool>& bMayRun) {
    return CTimedSolve(request, notifier).Run(nLimitSeconds, bMayRun);
}

} // namespace quillon
