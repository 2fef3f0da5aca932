#include "cli/watched_solve.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>

#include "cli/console_notifier.h"
#include "cli/progress_text.h"
#include "platform/thread.h"

namespace quillon {

namespace {

using TClock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// The longest search recurses 600 plies deep, with lists of moves in every node and short searches inside long ones.
constexpr std::size_t kSearchStackBytes = std::size_t{64} << 20;

constexpr auto kWatchStep = 50ms;     // an interrupt is noticed within this time
constexpr auto kProgressStep = 250ms; // between two states of the live line

class CWatchedSolve {
  public:
    CWatchedSolve(const TSolveRequest& request, CProgressLine& line,
                  const std::function<void(const TPlanReport&)>& planSink)
        : m_solve(request), m_line(line), m_notifier(line), m_nRootPly(PliesOf(request.m_nStipulation)) {
        m_solve.SetPlanSink([this, planSink](const TPlanReport& plan) {
            m_plan = plan;
            if (planSink)
                planSink(plan);
        });
    }

    TWatchedResult Run(std::optional<double> secondsLimit, const std::atomic<int>& interrupts) {
        m_start = TClock::now();
        m_nextProgress = m_start + kProgressStep;
        if (secondsLimit)
            m_deadline =
                m_start + std::chrono::duration_cast<TClock::duration>(std::chrono::duration<double>(*secondsLimit));
        {
            CThread thread(kSearchStackBytes, [this] { Solve(); });
            Watch(interrupts);
            thread.Join();
        }
        m_line.Erase();
        if (m_failure)
            std::rethrow_exception(m_failure);
        return {std::move(m_result), std::move(m_plan), m_cause};
    }

  private:
    void Solve() {
        try {
            m_result = m_solve.StartSolving(m_notifier);
        } catch (...) {
            m_failure = std::current_exception();
        }
        const std::lock_guard lock(m_mutex);
        m_bDone = true;
        m_changed.notify_one();
    }

    void Watch(const std::atomic<int>& interrupts) {
        std::unique_lock lock(m_mutex);
        while (!m_changed.wait_until(lock, NextLook(), [this] { return m_bDone; })) {
            if (interrupts.load(std::memory_order_relaxed) > 0)
                Stop(EStopCause::Interrupt);
            else if (m_deadline && TClock::now() >= *m_deadline)
                Stop(EStopCause::TimeLimit);
            if (m_line.IsShown() && TClock::now() >= m_nextProgress)
                ShowProgress();
        }
    }

    [[nodiscard]] TClock::time_point NextLook() const {
        const TClock::time_point next = TClock::now() + kWatchStep;
        return m_deadline && m_cause == EStopCause::None ? std::min(next, *m_deadline) : next;
    }

    void Stop(EStopCause cause) {
        if (m_cause == EStopCause::None)
            m_cause = cause;
        m_solve.RequestStop();
    }

    void ShowProgress() {
        const double seconds = std::chrono::duration<double>(TClock::now() - m_start).count();
        m_line.Show(ProgressText(ReadProgress(m_solve, m_nRootPly, seconds)));
        m_nextProgress = TClock::now() + kProgressStep;
    }

    CSolve m_solve;
    CProgressLine& m_line;
    CConsoleNotifier m_notifier;
    const int m_nRootPly;

    TClock::time_point m_start{}, m_nextProgress{};
    std::optional<TClock::time_point> m_deadline;
    EStopCause m_cause = EStopCause::None;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_bDone = false;         // guarded by m_mutex
    TPlanReport m_plan;           // as m_result
    TSolvingResult m_result;      // of the solving thread; read behind Join
    std::exception_ptr m_failure; // the same
};

} // namespace

TWatchedResult SolveWatched(const TSolveRequest& request, CProgressLine& line, std::optional<double> secondsLimit,
                            const std::atomic<int>& interrupts,
                            const std::function<void(const TPlanReport&)>& planSink) {
    return CWatchedSolve(request, line, planSink).Run(secondsLimit, interrupts);
}

} // namespace quillon
