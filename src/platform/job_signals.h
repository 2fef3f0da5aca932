#pragma once
// What the user asks of a long run from outside: Ctrl+Z (SIGTSTP), going on (SIGCONT), a report (SIGUSR1).

#include <atomic>

namespace quillon {

/// How often each was asked for. The handlers add, the thread that watches the run takes away.
struct TJobSignals {
    std::atomic<int> m_nSuspends{0};
    std::atomic<int> m_nContinues{0};
    std::atomic<int> m_nReports{0};
    std::atomic<bool> m_bWatched{false}; // somebody looks at the counts: while nobody does, Ctrl+Z stops as usual
};

/// From now on the three signals are counted and, while the counts are watched, do nothing else. A SIGTSTP that the
/// program was started to ignore stays ignored: who started it has no way to continue it.
///   counts   must outlive the program's threads: the handlers keep a reference to it. A further call replaces it.
///   Threads  call it once, from main; the signals may arrive on any thread.
void InstallJobSignals(TJobSignals& counts);

/// Stops the process as Ctrl+Z does where nobody handles it, and returns when it has been continued. Where nobody could
/// continue it, for want of a shell with job control, the system lets it run on: then it returns at once.
void StopProcess();

} // namespace quillon
