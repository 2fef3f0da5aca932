#include "platform/interrupt.h"

#include <csignal>
#include <unistd.h>

namespace quillon {

namespace {

// A signal handler may touch nothing else than lock-free atomics.
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<std::atomic<int>*>::is_always_lock_free);

std::atomic<std::atomic<int>*> g_pCount = nullptr;

extern "C" void CountInterrupt(int) {
    if (g_pCount.load()->fetch_add(1) > 0)
        _exit(kInterruptedStatus);
}

} // namespace

void InstallInterruptHandler(std::atomic<int>& count) {
    g_pCount = &count;
    struct sigaction action {};
    action.sa_handler = CountInterrupt;
    action.sa_flags = SA_RESTART; // a write of a result that is under way goes on
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

} // namespace quillon
