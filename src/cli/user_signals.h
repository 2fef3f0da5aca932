#pragma once
// What the user asks of a long run by signals, and Ctrl+Z for any such run.

#include <atomic>
#include <cstdint>
#include <functional>

#include "cli/progress_line.h"
#include "platform/job_signals.h"

namespace quillon {

/// What signals have asked for. Above 0, interrupts stop the run, and stay.
struct TUserSignals {
    std::atomic<int> m_nInterrupts{0};
    TJobSignals m_jobs;
};

/// How a run is put to sleep.
struct TPausableRun {
    std::function<void()> m_pause, m_resume;
    std::function<bool()> m_allSleep; // nothing of the run moves any more
    const char* m_pausedMessage = ""; // told when it has been asked to pause
};

/// Puts a run to sleep when a suspend is asked for, and then stops the process; it goes on when that is continued. A
/// process that cannot be stopped stays in the pause until SIGCONT or a second suspend.
///   Threads  of the one that watches the run. While this lives, suspends are counted instead of stopping the process.
class CSuspension {
  public:
    CSuspension(TUserSignals& signals, CProgressLine& line, TPausableRun run);
    ~CSuspension();
    CSuspension(const CSuspension&) = delete;
    CSuspension& operator=(const CSuspension&) = delete;

    /// Does what signals have asked for since the last call.
    void Obey();

    [[nodiscard]] bool IsPaused() const { return m_bPaused; }

  private:
    void Suspend();
    void GoOn();

    TUserSignals& m_signals;
    CProgressLine& m_line;
    const TPausableRun m_run;
    bool m_bPaused = false;
};

} // namespace quillon
