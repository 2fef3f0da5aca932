#include "heuristics/relaxation_clock.h"

#include "platform/sleep.h"
#include "search/control.h"

namespace quillon {

namespace {

/// Spin lock on a counter: it is taken by whoever raises it from zero. Held for a few instructions only.
class CCounterLock {
  public:
    explicit CCounterLock(std::atomic<std::uint16_t>& counter) : m_counter(counter) {
        constexpr int kTriesBetweenSleeps = 100;
        for (int tries = 1; m_counter.fetch_add(1, std::memory_order_acquire) != 0; ++tries) {
            m_counter.fetch_sub(1, std::memory_order_relaxed);
            if (tries % kTriesBetweenSleeps == 0)
                SleepMs(0);
        }
    }
    CCounterLock(const CCounterLock&) = delete;
    CCounterLock& operator=(const CCounterLock&) = delete;
    ~CCounterLock() { m_counter.fetch_sub(1, std::memory_order_release); }

  private:
    std::atomic<std::uint16_t>& m_counter;
};

} // namespace

void ClearRelaxationStamps(TAnalysis& analysis) {
    for (std::atomic<std::uint64_t>& stamp : analysis.m_relaxationTicks)
        stamp.store(0, std::memory_order_relaxed);
}

std::int64_t MsUntilRelaxation(TAnalysis& analysis, std::uint8_t nRelaxations) {
    std::atomic<std::uint64_t>& stamp = analysis.m_relaxationTicks[nRelaxations];
    const CCounterLock lock(analysis.m_nRelaxationLock);
    if (stamp.load(std::memory_order_relaxed) == 0)
        stamp.store(AnalysisTicks(analysis), std::memory_order_relaxed);
    return static_cast<std::int64_t>(stamp.load(std::memory_order_relaxed) -
                                     analysis.m_nStartTicks.load(std::memory_order_relaxed));
}

} // namespace quillon
