#include "cli/user_signals.h"

#include <chrono>
#include <utility>

#include "platform/sleep.h"

namespace quillon {

namespace {

// With the time until the signal is noticed (20 ms) a suspend takes a tenth of a second at most.
constexpr std::chrono::milliseconds kLongestFallingAsleep{75};
constexpr std::chrono::milliseconds kLongestWaking{50}; // until the signal that has continued it is counted

constexpr const char* kPausedHereMessage =
    "the process cannot be stopped here and waits instead; to go on: SIGCONT, or Ctrl+Z again";
constexpr const char* kGoingOnMessage = "going on";

template <class TCondition> void WaitUpTo(std::chrono::milliseconds time, TCondition condition) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (!condition() && std::chrono::steady_clock::now() < end)
        SleepMs(1);
}

} // namespace

CSuspension::CSuspension(TUserSignals& signals, CProgressLine& line, TPausableRun run)
    : m_signals(signals), m_line(line), m_run(std::move(run)) {
    m_signals.m_jobs.m_bWatched.store(true);
}

CSuspension::~CSuspension() { m_signals.m_jobs.m_bWatched.store(false); }

void CSuspension::Obey() {
    TJobSignals& jobs = m_signals.m_jobs;
    const bool bSuspend = jobs.m_nSuspends.exchange(0) > 0;
    if (!m_bPaused && bSuspend)
        Suspend();
    else if (m_bPaused && (bSuspend || jobs.m_nContinues.load() > 0))
        GoOn();
}

/// The run is put to sleep first, so that its clock knows of the time that passes.
void CSuspension::Suspend() {
    const auto isContinued = [this] { return m_signals.m_jobs.m_nContinues.load() > 0; };
    m_run.m_pause();
    m_bPaused = true;
    m_line.WriteMessage(m_run.m_pausedMessage);
    WaitUpTo(kLongestFallingAsleep, [&] { return m_run.m_allSleep() || isContinued(); });
    if (!isContinued())
        StopProcess();
    WaitUpTo(kLongestWaking, isContinued);
    m_signals.m_jobs.m_nSuspends.store(0); // one more while it fell asleep has had its effect
    if (isContinued())
        GoOn();
    else
        m_line.WriteMessage(kPausedHereMessage);
}

void CSuspension::GoOn() {
    m_bPaused = false;
    m_run.m_resume();
    m_line.WriteMessage(kGoingOnMessage);
}

} // namespace quillon
