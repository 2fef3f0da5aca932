// The doubtful registers of an aggregate: one for each set of heuristics.

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "tempregister/aggregated_register.h"
#include "tempregister/bucket_count.h"
#include "tempregister/heuristics_key.h"
#include "tempregister/purge_progress.h"

namespace quillon {

namespace {

/// Keeps a sum of bytes in step with what happens to one table while this lives, failures included.
class CByteAccount {
  public:
    CByteAccount(const TRegisterCombinedMap& table, std::atomic<std::uint64_t>& sum)
        : m_table(table), m_sum(sum), m_before(table.MemoryInUse()) {}
    CByteAccount(const CByteAccount&) = delete;
    CByteAccount& operator=(const CByteAccount&) = delete;
    ~CByteAccount() { m_sum.fetch_add(m_table.MemoryInUse() - m_before, std::memory_order_relaxed); }

  private:
    const TRegisterCombinedMap& m_table;
    std::atomic<std::uint64_t>& m_sum;
    std::uint64_t m_before;
};

} // namespace

// The caller holds a side of `lock`.
TAggregatedTemporaryChessboardRegister::TDoubtfulRegister*
TAggregatedTemporaryChessboardRegister::DoubtfulRegister(TKey heuristicsKey) const {
    const auto found = doubtfulRegisters.find(heuristicsKey);
    return found == doubtfulRegisters.end() ? nullptr : found->second.get();
}

bool TAggregatedTemporaryChessboardRegister::IsDoubtful(int nMoves, const TBoardBytes& key, std::uint32_t hash,
                                                        TKey heuristicsKey) const {
    const CSharedLock shared(lock);
    const TDoubtfulRegister* known = DoubtfulRegister(heuristicsKey);
    if (known == nullptr)
        return false;
    const CSharedLock combined(known->combinedLock);
    return known->combinedMap.FindDoubtful(nMoves, key, hash) == kRegisterDoubtful;
}

std::int8_t TAggregatedTemporaryChessboardRegister::FindNotDoubtful(int n1, int n2, const TBoardBytes& key,
                                                                    std::uint32_t heuristics,
                                                                    std::uint32_t params) const {
    const CSharedLock shared(lock);
    const TDoubtfulRegister* known = DoubtfulRegister(HeuristicsKey(heuristics, params));
    if (known == nullptr)
        return -1;
    const CSharedLock combined(known->combinedLock);
    const std::int8_t found = known->combinedMap.FindWithNotDoubtful(n1, n2, key, BoardHash(key));
    return found == kRegisterUnknown ? std::int8_t{-1} : found;
}

// ---- size of the tables

// A solve has a doubtful register for each of its many sets of heuristics, most of them small: an array of full size
// for each would be more than what they hold. A table gets few buckets and grows as it is filled.
std::uint32_t TAggregatedTemporaryChessboardRegister::DoubtfulBuckets(std::uint32_t nHeld) const {
    constexpr std::uint32_t kShareAtStart = 16;
    constexpr std::uint32_t kGrowth = 4;
    std::uint32_t n = std::min(nBuckets, std::max(nBuckets / kShareAtStart, kFewestBuckets));
    while (n < nBuckets && nHeld >= n * std::uint64_t{kSmallBucketElements})
        n = std::min(nBuckets, n * kGrowth);
    return n;
}

// The caller holds the table's lock exclusively.
void TAggregatedTemporaryChessboardRegister::GrowTable(TDoubtfulRegister& known) {
    const std::uint32_t held = known.nCombinedElements.load(std::memory_order_relaxed);
    const std::uint32_t wanted = DoubtfulBuckets(held);
    if (wanted <= known.combinedMap.BucketCount()) [[likely]]
        return;
    try {
        if (known.combinedMap.Resize(wanted, true))
            return;
        nDoubtfulElements.fetch_sub(held, std::memory_order_relaxed); // there was no memory to move them
        known.nCombinedElements.store(0, std::memory_order_relaxed);
    } catch (const std::bad_alloc&) {
        // A crowded table answers as well, only slower.
    }
}

// ---- inserts

void TAggregatedTemporaryChessboardRegister::InsertInto(TDoubtfulRegister& known, std::uint16_t nMoves,
                                                        const TBoardBytes& key, bool bDoubtful) {
    const std::lock_guard guard(doubtfulLock);
    const CExclusiveLock exclusive(known.combinedLock);
    const CByteAccount account(known.combinedMap, m_nDoubtfulBytes);
    m_nInserts.fetch_add(1, std::memory_order_relaxed);
    if (known.combinedMap.InsertDoubtful(nMoves, key, BoardHash(key), !bDoubtful)) {
        known.nCombinedElements.fetch_add(1, std::memory_order_relaxed);
        nDoubtfulElements.fetch_add(1, std::memory_order_relaxed);
        GrowTable(known);
    }
}

// False if there is no register for these heuristics.
bool TAggregatedTemporaryChessboardRegister::InsertIntoExisting(std::uint16_t nMoves, const TBoardBytes& key,
                                                                TKey heuristicsKey, bool bDoubtful) {
    const CSharedLock shared(lock);
    TDoubtfulRegister* known = DoubtfulRegister(heuristicsKey);
    if (known == nullptr)
        return false;
    InsertInto(*known, nMoves, key, bDoubtful);
    return true;
}

// The caller holds the exclusive side of `lock`.
TAggregatedTemporaryChessboardRegister::TDoubtfulRegister&
TAggregatedTemporaryChessboardRegister::NewDoubtfulRegister(TKey heuristicsKey) {
    auto known = std::make_unique<TDoubtfulRegister>(nMemoryLimit, DoubtfulBuckets(0));
    known->parent = this;
    known->bKeepShort.store(bKeepShort.load(std::memory_order_relaxed), std::memory_order_relaxed);
    return *doubtfulRegisters.emplace(heuristicsKey, std::move(known)).first->second;
}

void TAggregatedTemporaryChessboardRegister::InsertIntoNew(std::uint16_t nMoves, const TBoardBytes& key,
                                                           TKey heuristicsKey, bool bDoubtful) {
    const CExclusiveLock exclusive(lock);
    TDoubtfulRegister* known = DoubtfulRegister(heuristicsKey); // another thread may have made it meanwhile
    InsertInto(known != nullptr ? *known : NewDoubtfulRegister(heuristicsKey), nMoves, key, bDoubtful);
}

void TAggregatedTemporaryChessboardRegister::InsertDoubtfulState(std::uint16_t nMoves, const TBoardBytes& key,
                                                                 std::uint32_t heuristics, std::uint32_t params,
                                                                 bool bDoubtful) {
    if (!MakeRoom())
        return;
    if (bDoubtful && nMoves < kShortestKept && !bKeepShort.load(std::memory_order_relaxed))
        return;
    try {
        const TKey heuristicsKey = HeuristicsKey(heuristics, params);
        if (!InsertIntoExisting(nMoves, key, heuristicsKey, bDoubtful))
            InsertIntoNew(nMoves, key, heuristicsKey, bDoubtful);
    } catch (const std::exception&) {
        RecoverFromFailure(nMoves, bDoubtful);
    }
}

void TAggregatedTemporaryChessboardRegister::InsertDoubtful(std::uint16_t nMoves, const TBoardBytes& key,
                                                            std::uint32_t heuristics, std::uint32_t params) {
    InsertDoubtfulState(nMoves, key, heuristics, params, true);
}

// ---- users

void TAggregatedTemporaryChessboardRegister::AddDoubtfulUser(std::uint32_t heuristics, std::uint32_t params) {
    const CExclusiveLock exclusive(lock);
    ++doubtfulUsers[HeuristicsKey(heuristics, params)];
}

std::uint32_t TAggregatedTemporaryChessboardRegister::RemoveDoubtful(std::uint32_t heuristics, std::uint32_t params) {
    return RemoveDoubtful(HeuristicsKey(heuristics, params));
}

std::uint32_t TAggregatedTemporaryChessboardRegister::RemoveDoubtful(TKey heuristicsKey) {
    const CExclusiveLock exclusive(lock);
    const auto users = doubtfulUsers.find(heuristicsKey);
    if (users != doubtfulUsers.end() && users->second > 0) {
        --users->second;
        return 0;
    }
    TDoubtfulRegister* known = DoubtfulRegister(heuristicsKey);
    return known == nullptr ? 0 : Purge(*known, false);
}

void TAggregatedTemporaryChessboardRegister::ReleaseDoubtfulUser(std::uint32_t heuristics, std::uint32_t params) {
    const CExclusiveLock exclusive(lock);
    const TKey heuristicsKey = HeuristicsKey(heuristics, params);
    RemoveDoubtful(heuristicsKey);
    if (doubtfulUsers[heuristicsKey] == 0)
        RemoveDoubtful(heuristicsKey);
    for (const auto& [otherKey, known] : doubtfulRegisters)
        doubtfulUsers.try_emplace(otherKey, 0); // unused, as eviction sees it
}

std::uint32_t TAggregatedTemporaryChessboardRegister::RemoveUnusedDoubtful() {
    const CExclusiveLock exclusive(lock);
    std::uint32_t removed = 0;
    for (const auto& [heuristicsKey, users] : doubtfulUsers)
        if (users == 0)
            removed += RemoveDoubtful(heuristicsKey);
    return removed;
}

// Empties a doubtful register and gives its array back; it stays in the set. The caller holds `lock` exclusively.
std::uint32_t TAggregatedTemporaryChessboardRegister::Purge(TDoubtfulRegister& known, bool bQuiet) {
    const std::uint32_t removed = known.nCombinedElements.load(std::memory_order_relaxed);
    nDoubtfulElements.fetch_sub(removed, std::memory_order_relaxed);
    {
        const CExclusiveLock exclusive(known.combinedLock);
        const CByteAccount account(known.combinedMap, m_nDoubtfulBytes);
        CPurgeProgress progress(known.nCombinedElements, Repaint(bQuiet));
        known.combinedMap.Free(&progress);
        (void)known.combinedMap.Resize(DoubtfulBuckets(0), false); // without an array: the number alone
        known.nCombinedElements.store(0, std::memory_order_relaxed);
    }
    known.Clear();
    known.bKeepShort.store(bKeepShort.load(std::memory_order_relaxed), std::memory_order_relaxed);
    return removed;
}

std::uint32_t TAggregatedTemporaryChessboardRegister::RemoveDoubtfulNMovers(TDoubtfulRegister& known, int nMoves) {
    LogMessage("TTemporaryChessboardRegister::RemoveNMovers start.", nMoves, 0);
    std::uint32_t removed;
    {
        const CExclusiveLock exclusive(known.combinedLock);
        const CByteAccount account(known.combinedMap, m_nDoubtfulBytes);
        removed = known.combinedMap.RemoveNMovers(nMoves, nMoves < 2 ? 0 : nMoves - 2);
        known.nCombinedElements.fetch_sub(removed, std::memory_order_relaxed);
        nDoubtfulElements.fetch_sub(removed, std::memory_order_relaxed);
    }
    LogMessage("TTemporaryChessboardRegister::RemoveNMovers complete.", nMoves, 0);
    return removed;
}

} // namespace quillon
