#include "platform/job_signals.h"

#include <cerrno>
#include <csignal>

namespace quillon {

namespace {

// A signal handler may touch nothing else than lock-free atomics.
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<TJobSignals*>::is_always_lock_free);

std::atomic<TJobSignals*> g_pCounts = nullptr;

extern "C" void CountJobSignal(int signal) {
    TJobSignals& counts = *g_pCounts.load();
    if (signal == SIGTSTP && !counts.m_bWatched.load()) {
        const int error = errno;
        StopProcess();
        errno = error;
        return;
    }
    if (signal == SIGTSTP)
        counts.m_nContinues.store(0); // as the system does: the later of the two holds
    std::atomic<int>& count = signal == SIGTSTP   ? counts.m_nSuspends
                              : signal == SIGCONT ? counts.m_nContinues
                                                  : counts.m_nReports;
    count.fetch_add(1);
}

void Handle(int signal) {
    struct sigaction action {};
    action.sa_handler = CountJobSignal;
    action.sa_flags = SA_RESTART; // a write of a result that is under way goes on
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

bool IsIgnored(int signal) {
    struct sigaction found {};
    return sigaction(signal, nullptr, &found) == 0 && found.sa_handler == SIG_IGN;
}

} // namespace

void InstallJobSignals(TJobSignals& counts) {
    g_pCounts = &counts;
    if (!IsIgnored(SIGTSTP))
        Handle(SIGTSTP);
    Handle(SIGCONT);
    Handle(SIGUSR1);
}

void StopProcess() {
    struct sigaction usual {};
    usual.sa_handler = SIG_DFL;
    sigemptyset(&usual.sa_mask);
    struct sigaction own {};
    sigaction(SIGTSTP, &usual, &own);
    // To this thread: it is stopped, and all others with it, before it gets any further. (A handler runs with its own
    // signal blocked.)
    std::raise(SIGTSTP);
    sigset_t suspend, before;
    sigemptyset(&suspend);
    sigaddset(&suspend, SIGTSTP);
    pthread_sigmask(SIG_UNBLOCK, &suspend, &before);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    sigaction(SIGTSTP, &own, nullptr);
}

} // namespace quillon
