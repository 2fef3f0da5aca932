#pragma once
// A solve on a thread of its own, under observation.

#include <atomic>

#include "parallel/observer.h"
#include "parallel/threaded_solve.h"
#include "platform/sleep.h"

namespace quillon::test {

/// It is stopped at the end, if it still runs, and leaves nothing behind.
class CObservedSolve {
  public:
    CObservedSolve(const TSolveRequest& request, int nLevels) : m_solve(request), m_observer(m_solve, nLevels) {
        m_thread = CThread(std::size_t{64} << 20, [this] {
            m_result = m_solve.StartSolving(m_notifier);
            m_bDone = true;
        });
    }
    ~CObservedSolve() { m_solve.RequestStop(); }
    CObservedSolve(const CObservedSolve&) = delete;
    CObservedSolve& operator=(const CObservedSolve&) = delete;

    /// Up to a minute, and no longer than the solve runs.
    template <class TCondition> bool WaitUntil(TCondition condition) {
        for (int n = 0; n < 12000 && !m_bDone; ++n, SleepMs(5))
            if (condition())
                return true;
        return condition();
    }

    template <class TCondition> bool WaitForState(TCondition condition) {
        return WaitUntil([&] { return condition(m_observer.Read()); });
    }

    const CNothingLeft m_nothing;
    CAgreeing m_notifier;
    CSolve m_solve;
    CObserver m_observer;
    TSolvingResult m_result;
    std::atomic<bool> m_bDone{false};
    CThread m_thread; // joined first
};

} // namespace quillon::test
