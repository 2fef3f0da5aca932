#include "tempregister/chessboard_register.h"

#include <algorithm>
#include <cassert>
#include <exception>

#include "core/chess_exception.h"
#include "platform/memory_info.h"
#include "tempregister/register_log.h"

namespace quillon {

namespace {

using TInfo = TSubproblemRegisterInfo<bool>;

bool IsMateLength(int nMoves) { return (nMoves & 1) != 0; }

// What an entry says holds for all longer lengths (a mate; that there is no defence) or for all shorter ones.
bool HoldsForLonger(int nMoves, bool bValue) { return IsMateLength(nMoves) == bValue; }

bool Answers(const TInfo& info, int nMoves) {
    return HoldsForLonger(info.nMoves, info.bValue) ? info.nMoves <= nMoves : info.nMoves >= nMoves;
}

std::uint64_t MemoryForElements(std::uint64_t limit) {
    return limit / 100 * kPercentForElements + limit % 100 * kPercentForElements / 100; // no product overflows
}

std::uint32_t ElementsIn(std::uint64_t bytes) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(std::min(bytes / kBytesPerElement, kMost));
}

} // namespace

// What an insert is about.
struct TChessboardRegister<bool>::TEntry {
    std::uint16_t m_nMoves;
    const TBoardBytes& m_key;
    bool m_bValue;
    const std::uint32_t* m_pMove; // may be null
};

TChessboardRegister<bool>::TChessboardRegister(std::uint64_t budget)
    : nMemoryLimit(std::min(PhysicalMemory(), budget)), nMemoryForElements(MemoryForElements(nMemoryLimit)),
      nMaxElements(ElementsIn(nMemoryForElements)) {}

void TChessboardRegister<bool>::LogMessage(std::string_view text, int nParam1, int nParam2) {
    AppendRegisterLog({text, nParam1, nParam2, nElements.load(std::memory_order_relaxed), GetDoubtfulCount()});
}

const TInfo* TChessboardRegister<bool>::FindEntry(bool bMates, std::uint16_t nMoves, const TBoardBytes& key) const {
    for (const auto& [length, entries] : *this) {
        if (IsMateLength(length) != bMates)
            continue;
        const auto entry = entries.find(TChessboardRegisterItem{key});
        if (entry != entries.end() && Answers(entry->second, nMoves))
            return &entry->second;
    }
    return nullptr;
}

std::uint8_t TChessboardRegister<bool>::FindMate(std::uint16_t nMoves, const TBoardBytes& key) const {
    const CSharedLock shared(lock);
    const TInfo* info = FindEntry(true, nMoves, key);
    return info == nullptr ? kTreeUnknown : info->bValue ? kTreeYes : kTreeNo;
}

std::uint8_t TChessboardRegister<bool>::FindDefence(std::uint16_t nMoves, const TBoardBytes& key,
                                                    std::uint32_t* pMove) const {
    const CSharedLock shared(lock);
    const TInfo* info = FindEntry(false, nMoves, key);
    if (info == nullptr)
        return kTreeUnknown;
    if (pMove != nullptr)
        *pMove = info->nMove;
    return info->bValue ? kTreeYes : kTreeNo;
}

bool TChessboardRegister<bool>::HasRoom() {
    if (Owner().GetElementsCount() < nMaxElements)
        return true;
    if (nMaxElements == 0)
        return false;
    Owner().EmptySomeDataWhenRegisterFull(false);
    return Owner().GetElementsCount() < nMaxElements;
}

bool TChessboardRegister<bool>::IsImplied(const TEntry& entry) const {
    const std::uint8_t known = IsMateLength(entry.m_nMoves) ? FindMate(entry.m_nMoves, entry.m_key)
                                                            : FindDefence(entry.m_nMoves, entry.m_key, nullptr);
    if (known == kTreeUnknown)
        return false;
    if ((known == kTreeYes) != entry.m_bValue)
        throw ChessException("Incoherent information in TChessboardRegister::Insert()");
    return true;
}

// True if the entry is new.
bool TChessboardRegister<bool>::Store(const TEntry& entry) {
    TInfo info;
    info.nMoves = entry.m_nMoves;
    info.nMove = entry.m_pMove != nullptr ? *entry.m_pMove : 0;
    info.bValue = entry.m_bValue;
    return (*this)[entry.m_nMoves].try_emplace(TChessboardRegisterItem{entry.m_key}, info).second;
}

// Deletes what the new entry implies; returns how many.
std::uint32_t TChessboardRegister<bool>::RemoveSubsumed(const TEntry& entry) {
    const bool bLonger = HoldsForLonger(entry.m_nMoves, entry.m_bValue);
    const auto first = bLonger ? upper_bound(entry.m_nMoves) : begin();
    const auto last = bLonger ? end() : lower_bound(entry.m_nMoves);
    std::uint32_t removed = 0;
    for (auto level = first; level != last; ++level) {
        if (IsMateLength(level->first) != IsMateLength(entry.m_nMoves))
            continue;
        const auto redundant = level->second.find(TChessboardRegisterItem{entry.m_key});
        if (redundant == level->second.end() || redundant->second.bValue != entry.m_bValue)
            continue;
        level->second.erase(redundant);
        ++removed;
    }
    return removed;
}

void TChessboardRegister<bool>::InsertCounted(const TEntry& entry) {
    const CExclusiveLock exclusive(lock);
    if (!Store(entry))
        return;
    ++nElements;
    if (bRemoveSubsumed)
        nElements -= RemoveSubsumed(entry);
}

void TChessboardRegister<bool>::Insert(std::uint16_t nMoves, const TBoardBytes& key, bool bValue,
                                       const std::uint32_t* pMove, bool bSaveToFile) {
    assert(IsMateLength(nMoves));
    const TEntry entry{nMoves, key, bValue, pMove};
    if ((!bKeepShort && nMoves < kShortestKept) || !HasRoom() || IsImplied(entry))
        return;
    try {
        InsertCounted(entry);
        if (bSaveToFile)
            SaveSubproblems();
    } catch (const std::exception&) { // out of memory: the entry is lost, the analysis goes on
        Owner().LogMessage("Exception caught in method TChessboardRegister::Insert", nMoves, bValue ? 1 : 0);
        Owner().EmptySomeDataWhenRegisterFull(false);
    }
}

void TChessboardRegister<bool>::InsertDefence(std::uint16_t nMoves, const TBoardBytes& key, bool bValue,
                                              const std::uint32_t* pMove, bool bSaveToFile) {
    assert(!IsMateLength(nMoves));
    const TEntry entry{nMoves, key, bValue, pMove};
    if ((!bKeepShort && nMoves < kShortestKept) || !HasRoom())
        return;
    {
        const CExclusiveLock exclusive(lock);
        if (IsImplied(entry) || !Store(entry))
            return;
        if (bRemoveSubsumed)
            (void)RemoveSubsumed(entry); // defences are not counted
    }
    if (bSaveToFile)
        SaveSubproblems();
}

void TChessboardRegister<bool>::Clear() {
    const CExclusiveLock exclusive(lock);
    clear();
    nElements = 0;
    nDoubtfulInTree = 0;
    bKeepShort = true;
}

} // namespace quillon
