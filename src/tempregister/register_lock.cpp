#include "tempregister/register_lock.h"

#include "platform/clock.h"
#include "platform/sleep.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace quillon {

namespace {

// A holder that runs is through long before that many rounds; one that does not run needs the processor.
constexpr int kSpinRounds = 64000;

// How long a waiting reader only yields. After that it sleeps: what it waits for is a sweep over the whole register.
constexpr std::uint64_t kYieldMs = 256;

// Tells the processor that this is a spin, so that a thread on the same core gets its share.
void Pause() {
#if defined(__SSE2__)
    _mm_pause();
#elif defined(__aarch64__)
    __asm__ __volatile__("yield");
#endif
}

// Spins until `done()`, and after so many rounds gives the processor away between the tries.
template <typename TDone> void SpinThenYield(int rounds, TDone done) {
    for (int round = 0; round < rounds; ++round) {
        if (done())
            return;
        Pause();
    }
    while (!done())
        SleepMs(0);
}

// The same for readers, whose tries after the spinning become rare.
template <typename TDone> void SpinThenSleep(TDone done) {
    for (int round = 0; round < kSpinRounds; ++round) {
        if (done())
            return;
        Pause();
    }
    const std::uint64_t start = TickCount64();
    while (!done())
        SleepMs(TickCount64() - start < kYieldMs ? 0 : 1);
}

} // namespace

std::uint32_t detail::AssignThreadNumber() {
    static constinit std::atomic<std::uint32_t> last = 0;
    t_nThreadNumber = last.fetch_add(1, std::memory_order_relaxed) + 1;
    return t_nThreadNumber;
}

void TRegisterLock::WaitForExclusive() {
    SpinThenYield(kSpinRounds, [this] { return TryWriter(); });
    m_nOwner.store(ThisThreadNumber(), std::memory_order_relaxed);
    // Readers that have not announced themselves yet see this and stay out without touching the count.
    m_nPendingWriters.fetch_add(1, std::memory_order_relaxed);
    SpinThenYield(kSpinRounds + 1, [this] { return m_nReaders.load(std::memory_order_seq_cst) == 0; });
    m_nPendingWriters.fetch_sub(1, std::memory_order_relaxed);
}

void TRegisterLock::WaitForShared() {
    SpinThenSleep([this] { return TryShared(); });
}

} // namespace quillon
