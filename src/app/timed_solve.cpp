#include "app/timed_solve.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>

#include "parallel/search_thread.h"
#include "platform/thread.h"

namespace quillon {

namespace {

using TClock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr TClock::duration kPollStep = 20ms;

class CTimedSolve {
  public:
    CTimedSolve(const TSolveRequest& request, INotifier& notifier) : m_solve(request), m_notifier(notifier) {}

    TTimedResult Run(int nLimitSeconds, const std::atomic<bool>& bMayRun) {
        if (nLimitSeconds > 0)
            m_limit = TClock::now() + std::chrono::seconds(nLimitSeconds);
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
            if (!bMayRun.load(std::memory_order_relaxed))
                Stop(ESolveEnd::User);
            else if (TClock::now() >= m_limit)
                Stop(ESolveEnd::TimeLimit);
        }
    }

    [[nodiscard]] TClock::duration NextStep() const {
        if (m_timed.m_end != ESolveEnd::Itself)
            return kPollStep;
        return std::clamp(m_limit - TClock::now(), TClock::duration(1ms), kPollStep);
    }

    void Stop(ESolveEnd end) {
        if (m_timed.m_end == ESolveEnd::Itself)
            m_timed.m_end = end;
        m_solve.RequestStop();
    }

    CSolve m_solve;
    INotifier& m_notifier;
    TClock::time_point m_limit = TClock::time_point::max();

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
