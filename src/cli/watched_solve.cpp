#include "cli/watched_solve.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>

#include "cli/console_notifier.h"
#include "parallel/observer.h"
#include "parallel/search_thread.h"
#include "parallel/status_texts.h"
#include "platform/terminal.h"
#include "platform/thread.h"

namespace quillon {

namespace {

using TClock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr int kObserverLevels = 6; // plies whose moves a report shows

constexpr auto kWatchStep = 20ms;     // a signal is noticed within this time
constexpr auto kProgressStep = 250ms; // between two states of the live line

constexpr const char* kPausedMessage = "paused, clock and time limit stand still; to go on: fg, or SIGCONT";

class CWatchedSolve {
  public:
    CWatchedSolve(const TSolveRequest& request, CProgressLine& line, TUserSignals& signals,
                  const std::function<void(const TPlanReport&)>& planSink)
        : m_solve(request), m_observer(m_solve, kObserverLevels), m_line(line), m_bLog(!IsTerminal(EStream::Error)),
          m_notifier(line), m_signals(signals), m_suspension(signals, line,
                                                             {[this] { m_solve.Pause(); }, [this] { m_solve.Resume(); },
                                                              [this] { return AllSleep(); }, kPausedMessage}) {
        m_solve.SetPlanSink([this, planSink](const TPlanReport& plan) {
            m_plan = plan;
            if (planSink)
                planSink(plan);
        });
    }

    CWatchedSolve(const CWatchedSolve&) = delete;
    CWatchedSolve& operator=(const CWatchedSolve&) = delete;

    TWatchedResult Run(std::optional<double> secondsLimit) {
        m_nextProgress = TClock::now() + kProgressStep;
        m_secondsLimit = secondsLimit;
        {
            CThread thread(SearchStackBytes(kStackSlots), [this] { Solve(); });
            try {
                Watch();
            } catch (...) { // the thread is joined on the way
                m_solve.RequestStop();
                m_solve.Resume();
                throw;
            }
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

    void Watch() {
        while (!WaitForEnd(NextLook())) {
            if (m_signals.m_nInterrupts.load(std::memory_order_relaxed) > 0)
                Stop(EStopCause::Interrupt);
            else if (m_secondsLimit && m_observer.Seconds() >= *m_secondsLimit)
                Stop(EStopCause::TimeLimit);
            ObeySignals();
            if (m_line.IsShown() && TClock::now() >= m_nextProgress)
                ShowProgress();
        }
    }

    [[nodiscard]] bool WaitForEnd(TClock::duration time) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, time, [this] { return m_bDone; });
    }

    [[nodiscard]] TClock::duration NextLook() const {
        if (!m_secondsLimit || m_cause != EStopCause::None || m_suspension.IsPaused())
            return kWatchStep;
        const std::chrono::duration<double> left(*m_secondsLimit - m_observer.Seconds());
        return left < kWatchStep ? std::chrono::ceil<TClock::duration>(left) : TClock::duration(kWatchStep);
    }

    void Stop(EStopCause cause) {
        if (m_cause == EStopCause::None)
            m_cause = cause;
        m_solve.RequestStop();
    }

    // ---- signals

    void ObeySignals() {
        if (m_signals.m_jobs.m_nReports.exchange(0) > 0)
            m_line.WriteReport(ProgressReport(m_observer));
        m_suspension.Obey();
    }

    [[nodiscard]] bool AllSleep() const {
        const TAnalysis& analysis = m_solve.Analysis();
        return analysis.m_nSleepingThreads.load(std::memory_order_relaxed) >=
               analysis.m_nRunningThreads.load(std::memory_order_relaxed) +
                   analysis.m_nSchedulerThreads.load(std::memory_order_relaxed);
    }

    // ---- progress

    /// A terminal has one line that lives; what goes to a file is the shorter line of logs.
    void ShowProgress() {
        const TProgressState state = m_observer.Read();
        if (m_bLog)
            WriteToLog(state);
        else
            m_line.Show(LiveLine(state));
        m_nextProgress = TClock::now() + kProgressStep;
    }

    [[nodiscard]] static std::string LiveLine(const TProgressState& state) {
        const std::string time = " " + WithoutEnd(WaitLine(state));
        const std::size_t width = CProgressLine::Width();
        return StatusLine(state, width > time.size() ? width - time.size() : 0) + time;
    }

    void WriteToLog(const TProgressState& state) {
        m_line.Write(RootLine(state));
        const auto seconds = static_cast<std::int64_t>(state.m_seconds);
        if (seconds != m_nToldSeconds)
            m_line.Write(WaitLine(state));
        m_nToldSeconds = seconds;
    }

    CSolve m_solve;
    CObserver m_observer;
    CProgressLine& m_line;
    const bool m_bLog;
    CConsoleNotifier m_notifier;
    TUserSignals& m_signals;
    CSuspension m_suspension;

    TClock::time_point m_nextProgress{};
    std::int64_t m_nToldSeconds = 0; // in the log
    std::optional<double> m_secondsLimit;
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
                            TUserSignals& signals, const std::function<void(const TPlanReport&)>& planSink) {
    return CWatchedSolve(request, line, signals, planSink).Run(secondsLimit);
}

} // namespace quillon
