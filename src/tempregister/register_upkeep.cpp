// What happens to an aggregate as a whole: clearing, other sizes, exchange of contents, statistics.

#include <functional>
#include <new>
#include <utility>

#include "tempregister/aggregated_register.h"
#include "tempregister/purge_progress.h"

namespace quillon {

namespace {

template <typename TValue> void SwapAtomics(std::atomic<TValue>& a, std::atomic<TValue>& b) {
    const TValue value = a.load(std::memory_order_relaxed);
    a.store(b.load(std::memory_order_relaxed), std::memory_order_relaxed);
    b.store(value, std::memory_order_relaxed);
}

template <int N> void SwapTables(TTemporaryChessboardRegister<N>& a, TTemporaryChessboardRegister<N>& b) {
    a.combinedMap.Swap(b.combinedMap);
    SwapAtomics(a.nCombinedElements, b.nCombinedElements);
}

void SwapTrees(TChessboardRegister<bool>& a, TChessboardRegister<bool>& b) {
    a.swap(b);
    SwapAtomics(a.nElements, b.nElements);
    SwapAtomics(a.nDoubtfulInTree, b.nDoubtfulInTree);
    SwapAtomics(a.bKeepShort, b.bKeepShort);
}

} // namespace

const std::function<void()>& TAggregatedTemporaryChessboardRegister::Repaint(bool bQuiet) const {
    static const std::function<void()> nothing;
    return bQuiet ? nothing : m_hooks.m_repaint;
}

void TAggregatedTemporaryChessboardRegister::Clear(int nMode, bool bQuiet) {
    const CExclusiveLock exclusive(lock);
    if (nMode >= 0) {
        const CExclusiveLock combined(combinedLock);
        CPurgeProgress progress(nCombinedElements, Repaint(bQuiet));
        nMode > 0 ? combinedMap.Clear(&progress) : combinedMap.Free(&progress);
        nCombinedElements.store(0, std::memory_order_relaxed);
        Clear();
    }
    if (nMode > 0)
        return;
    for (const auto& [heuristicsKey, known] : doubtfulRegisters)
        Purge(*known, bQuiet);
    doubtfulRegisters.clear();
    nDoubtfulElements.store(0, std::memory_order_relaxed);
    m_nDoubtfulBytes.store(0, std::memory_order_relaxed);
}

void TAggregatedTemporaryChessboardRegister::SetBucketCount(std::uint32_t nNewBuckets, bool bKeepData) {
    const CExclusiveLock exclusive(lock);
    nBuckets = nNewBuckets;
    ResizeTable(*this, nNewBuckets, bKeepData);
    for (const auto& [heuristicsKey, known] : doubtfulRegisters) {
        const std::uint32_t before = known->nCombinedElements.load(std::memory_order_relaxed);
        const std::uint64_t bytes = known->combinedMap.MemoryInUse();
        ResizeTable(*known, DoubtfulBuckets(before), bKeepData);
        nDoubtfulElements.fetch_sub(before - known->nCombinedElements.load(std::memory_order_relaxed),
                                    std::memory_order_relaxed);
        m_nDoubtfulBytes.fetch_add(known->combinedMap.MemoryInUse() - bytes, std::memory_order_relaxed);
    }
}

template <int N>
void TAggregatedTemporaryChessboardRegister::ResizeTable(TTemporaryChessboardRegister<N>& known,
                                                         std::uint32_t nNewBuckets, bool bKeepData) {
    const CExclusiveLock combined(known.combinedLock);
    CPurgeProgress progress(known.nCombinedElements, Repaint(false));
    try {
        if (!known.combinedMap.Resize(nNewBuckets, bKeepData, &progress))
            known.nCombinedElements.store(0, std::memory_order_relaxed);
    } catch (const std::bad_alloc&) {
        // A table with another number of buckets answers as well, only slower.
    }
}

void TAggregatedTemporaryChessboardRegister::Swap(TAggregatedTemporaryChessboardRegister& other) {
    if (this == &other)
        return;
    const bool bThisFirst = std::less<>()(this, &other); // one order, whichever of the two is asked
    TAggregatedTemporaryChessboardRegister& first = bThisFirst ? *this : other;
    TAggregatedTemporaryChessboardRegister& second = bThisFirst ? other : *this;
    const CExclusiveLock firstExclusive(first.lock);
    const CExclusiveLock secondExclusive(second.lock);
    const CExclusiveLock firstCombined(first.combinedLock);
    const CExclusiveLock secondCombined(second.combinedLock);

    SwapTrees(*this, other);
    SwapTables(*this, other);
    doubtfulRegisters.swap(other.doubtfulRegisters);
    doubtfulUsers.swap(other.doubtfulUsers);
    SwapAtomics(nDoubtfulElements, other.nDoubtfulElements);
    SwapAtomics(m_nDoubtfulBytes, other.m_nDoubtfulBytes);
    SwapAtomics(nLastEmptiedTicks, other.nLastEmptiedTicks);
    std::swap(problem, other.problem);
    std::swap(nBuckets, other.nBuckets);
    AdoptDoubtfulRegisters();
    other.AdoptDoubtfulRegisters();
}

void TAggregatedTemporaryChessboardRegister::AdoptDoubtfulRegisters() {
    for (const auto& [heuristicsKey, known] : doubtfulRegisters)
        known->parent = this;
}

TRegisterStatistics TAggregatedTemporaryChessboardRegister::Statistics() const {
    TRegisterStatistics statistics;
    statistics.m_nElements = GetElementsCount();
    statistics.m_nDoubtfulElements = GetDoubtfulCount();
    statistics.m_nHits = m_lookups.Hits();
    statistics.m_nLookups = statistics.m_nHits + m_lookups.Misses();
    statistics.m_nInserts = m_nInserts.load(std::memory_order_relaxed);
    statistics.m_nEvictions = m_nEvictions.load(std::memory_order_relaxed);
    statistics.m_nEvictedElements = m_nEvictedElements.load(std::memory_order_relaxed);
    statistics.m_nBytes = combinedMap.MemoryInUse() + m_nDoubtfulBytes.load(std::memory_order_relaxed);
    return statistics;
}

} // namespace quillon
