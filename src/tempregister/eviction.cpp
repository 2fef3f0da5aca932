// The policy that bounds the memory of a register.

#include <algorithm>
#include <mutex>
#include <new>

#include "platform/clock.h"
#include "tempregister/aggregated_register.h"
#include "tempregister/bucket_pool.h"

namespace quillon {

namespace {

// One eviction at a time in the process; outermost of all locks.
std::mutex g_evictionLock;

// Threads that meet a full register together ask together: one eviction is enough for them.
constexpr std::uint64_t kThrottleMs = 16;

// A sweep frees more buckets than the next inserts need, and what waits on the free lists counts for nobody.
constexpr std::uint64_t kPartForFreeBuckets = 32;

// So many times as long as it took is searched before another periodic call is heeded: between a fifth and a quarter
// free, the next one would find little to remove.
constexpr std::uint64_t kWorkBehindEarly = 32;

constexpr std::uint32_t kEnoughUnusedEarly = 0x40000;
constexpr std::uint32_t kEnough = 4096;
constexpr int kShortestLevel = 3;
constexpr int kFirstLevel = 5;
constexpr int kLastLevel = 255;

// Does the process get memory at all? The counters do not know.
bool IsMemoryThere() {
    constexpr std::size_t kProbe = 1024;
    void* volatile probe = ::operator new(kProbe, std::nothrow); // volatile: the pair must not be optimised away
    ::operator delete(probe);
    return probe != nullptr;
}

int StartLevel() {
    constexpr int kStepsBackFrom = 6; // deeper than that, the step before is tried again
    const int last = nLastRemovedLevel.load(std::memory_order_relaxed);
    return last > kStepsBackFrom ? last - 2 : kFirstLevel;
}

// How many elements a sweep has to free.
std::uint32_t Threshold(bool bEarly, std::uint32_t nMaxElements) {
    constexpr std::uint32_t kLeastEarly = 0x80000;
    return bEarly ? std::max(nMaxElements / 12, kLeastEarly) : std::max(nMaxElements / 25, kEnough);
}

} // namespace

std::uint32_t TAggregatedTemporaryChessboardRegister::RemoveFinalNMovers(int nMoves) {
    LogMessage("TTemporaryChessboardRegister::RemoveNMovers start.", nMoves, 0);
    std::uint32_t removed;
    {
        const CExclusiveLock exclusive(combinedLock);
        removed = combinedMap.RemoveNMovers(nMoves, nMoves);
        nCombinedElements.fetch_sub(removed, std::memory_order_relaxed);
    }
    LogMessage("TTemporaryChessboardRegister::RemoveNMovers complete.", nMoves, 0);
    return removed;
}

std::uint32_t TAggregatedTemporaryChessboardRegister::RemoveNMovers(int nMoves) {
    LogMessage("TAggregatedTemporaryChessboardRegister::RemoveNMovers start.", nMoves, 0);
    std::uint32_t removed = RemoveFinalNMovers(nMoves);
    {
        const CExclusiveLock exclusive(lock);
        for (const auto& [heuristicsKey, known] : doubtfulRegisters)
            removed += RemoveDoubtfulNMovers(*known, nMoves);
    }
    LogMessage("TAggregatedTemporaryChessboardRegister::RemoveNMovers complete.", nMoves, 0);
    return removed;
}

void TAggregatedTemporaryChessboardRegister::EmptySomeDataWhenRegisterFull(bool bEarly) {
    LogMessage("EmptySomeDataWhenRegisterFull started", bEarly ? 1 : 0, 0);
    const std::lock_guard guard(g_evictionLock);
    if (!IsEvictionDue(bEarly))
        return;
    const std::uint64_t start = TickCount64();
    if (m_hooks.m_autoSave)
        m_hooks.m_autoSave(); // the engine holds off at the moment anyway
    const std::uint32_t freed = Evict(bEarly);
    TrimFreeBuckets(nMemoryLimit / kPartForFreeBuckets);
    m_nEvictions.fetch_add(1, std::memory_order_relaxed);
    m_nEvictedElements.fetch_add(freed, std::memory_order_relaxed);
    LogMessage("EmptySomeDataWhenRegisterFull complete", bEarly ? 1 : 0, 0);
    const std::uint64_t end = TickCount64();
    nLastEmptiedTicks.store(end, std::memory_order_relaxed);
    if (bEarly) { // calls may have come together, and the shorter sweep be the later
        const std::uint64_t from = end + (end - start) * kWorkBehindEarly;
        m_nEarlyFrom.store(std::max(m_nEarlyFrom.load(std::memory_order_relaxed), from), std::memory_order_relaxed);
    }
}

void TAggregatedTemporaryChessboardRegister::MakeRoomEarly() {
    if (IsNearlyFull() && TickCount64() >= m_nEarlyFrom.load(std::memory_order_relaxed))
        EmptySomeDataWhenRegisterFull(true);
}

bool TAggregatedTemporaryChessboardRegister::IsEvictionDue(bool bEarly) const {
    if (TickCount64() - nLastEmptiedTicks.load(std::memory_order_relaxed) <= kThrottleMs)
        return false;
    return !bEarly || IsNearlyFull();
}

// 1 unused doubt  2 the shortest subproblems, and no more of them from now on  3 level by level. Returns what was
// freed.
std::uint32_t TAggregatedTemporaryChessboardRegister::Evict(bool bEarly) {
    std::uint32_t freed = RemoveUnusedDoubtful();
    bool bEnough = freed > (bEarly ? kEnoughUnusedEarly : kEnough);
    if (!bEnough && bKeepShort.load(std::memory_order_relaxed)) {
        freed = DropShortest(freed);
        bEnough = freed > kEnough;
    }
    return RemoveByLevels(bEarly, bEnough, freed);
}

std::uint32_t TAggregatedTemporaryChessboardRegister::DropShortest(std::uint32_t freed) {
    freed += RemoveNMovers(kShortestLevel);
    if (freed < nMaxElements / 3)
        StopKeepingShort();
    return freed;
}

void TAggregatedTemporaryChessboardRegister::StopKeepingShort() {
    const CExclusiveLock exclusive(lock);
    bKeepShort.store(false, std::memory_order_relaxed);
    for (const auto& [heuristicsKey, known] : doubtfulRegisters)
        known->bKeepShort.store(false, std::memory_order_relaxed);
}

std::uint32_t TAggregatedTemporaryChessboardRegister::RemoveByLevels(bool bEarly, bool bEnough, std::uint32_t freed) {
    for (int level = StartLevel();; level += 2) {
        if (bEnough && IsMemoryThere())
            return freed;
        freed += RemoveNMovers(level);
        freed += RemoveNMovers(level - 1);
        nLastRemovedLevel.store(static_cast<std::uint16_t>(level), std::memory_order_relaxed);
        bEnough = bEnough || freed > Threshold(bEarly, nMaxElements) || FreeElements() * 5 >= nMaxElements;
        if (level >= kLastLevel) {
            LogMessage("!!!! EmptySomeDataWhenRegisterFull failed.", level, 0);
            return freed;
        }
    }
}

} // namespace quillon
