#include "tempregister/aggregated_register.h"

#include <cassert>
#include <exception>
#include <string>

#include "core/fen.h"
#include "platform/clock.h"
#include "tempregister/heuristics_key.h"
#include "tempregister/register_log.h"

namespace quillon {

namespace {

// At construction the last eviction is that long ago, so that the first one is not held back.
constexpr std::uint64_t kLongAgoMs = 100;

std::string ContradictionText(std::uint16_t nMoves, const TChessboard& position, bool bThereIsMate,
                              const TCombinedLengths& lengths) {
    return WriteFEN(position, false) + "\n\nnMoves=" + std::to_string(nMoves) +
           ", bThereIsMate=" + std::to_string(bThereIsMate ? 1 : 0) +
           "\nMovesMate=" + std::to_string(lengths.nMovesMate) +
           ", MovesNoMate=" + std::to_string(lengths.nMovesNoMate);
}

} // namespace

TAggregatedTemporaryChessboardRegister::TAggregatedTemporaryChessboardRegister(std::uint64_t budget,
                                                                               std::uint32_t nBucketsOfTables)
    : TTemporaryChessboardRegister<0>(budget, nBucketsOfTables), nLastEmptiedTicks(TickCount64() - kLongAgoMs),
      nBuckets(nBucketsOfTables) {}

std::uint32_t TAggregatedTemporaryChessboardRegister::GetElementsCount() const {
    return nCombinedElements.load(std::memory_order_relaxed) + nDoubtfulElements.load(std::memory_order_relaxed) +
           nElements.load(std::memory_order_relaxed);
}

std::uint32_t TAggregatedTemporaryChessboardRegister::GetDoubtfulCount() const {
    return nDoubtfulElements.load(std::memory_order_relaxed);
}

void TAggregatedTemporaryChessboardRegister::LogMessage(std::string_view text, int nParam1, int nParam2) {
    const std::lock_guard guard(logLock);
    try {
        TTemporaryChessboardRegister<0>::LogMessage(text, nParam1, nParam2);
    } catch (const std::exception&) {
        // Logged is also what happens without memory; a line less is no failure.
    }
}

// ---- look-ups

std::int8_t TAggregatedTemporaryChessboardRegister::Find(int nMoves, const TBoardBytes& key, std::uint32_t heuristics,
                                                         std::uint32_t params) const {
    const std::uint32_t hash = BoardHash(key);
    std::int8_t found;
    {
        const CSharedLock shared(combinedLock);
        found = combinedMap.Find(nMoves, key, hash);
    }
    if (found == kRegisterUnknown && IsDoubtful(nMoves, key, hash, HeuristicsKey(heuristics, params)))
        found = kRegisterIsDoubtful;
    m_lookups.Count(found != kRegisterUnknown);
    return found;
}

std::int8_t TAggregatedTemporaryChessboardRegister::FindFinal(int nMoves, const TBoardBytes& key) const {
    const std::uint32_t hash = BoardHash(key);
    std::int8_t found;
    {
        const CSharedLock shared(combinedLock);
        found = combinedMap.Find(nMoves, key, hash);
    }
    m_lookups.Count(found != kRegisterUnknown);
    return found;
}

int TAggregatedTemporaryChessboardRegister::FindMateLength(int nMoves, const TBoardBytes& key, std::uint32_t heuristics,
                                                           std::uint32_t params) const {
    const std::int8_t found = Find(nMoves, key, heuristics, params);
    if (found <= 0)
        return found;
    while (nMoves > 1 && Find(nMoves - 2, key, heuristics, params) > 0)
        nMoves -= 2;
    return nMoves;
}

std::int8_t TAggregatedTemporaryChessboardRegister::FindRange(int n1, int n2, const TBoardBytes& key,
                                                              std::uint32_t heuristics, std::uint32_t params) const {
    assert(n1 <= n2);
    const std::uint32_t hash = BoardHash(key);
    std::int8_t found;
    {
        const CSharedLock shared(combinedLock);
        found = combinedMap.FindNotDoubtfulRange(n1, n2, key, hash);
    }
    if (found == kRegisterUnknown && IsDoubtful(n1, key, hash, HeuristicsKey(heuristics, params)))
        found = kRegisterIsDoubtful;
    m_lookups.Count(found != kRegisterUnknown);
    return found;
}

// ---- inserts of final results

std::uint64_t TAggregatedTemporaryChessboardRegister::FreeElements() const {
    const std::uint32_t held = GetElementsCount();
    return held < nMaxElements ? nMaxElements - held : 0;
}

// Counting instead of measuring: in the usual case this is a few reads.
bool TAggregatedTemporaryChessboardRegister::MakeRoom() {
    if (GetElementsCount() < nMaxElements)
        return true;
    if (nMaxElements == 0)
        return false;
    EmptySomeDataWhenRegisterFull(false);
    return GetElementsCount() < nMaxElements;
}

void TAggregatedTemporaryChessboardRegister::RecoverFromFailure(std::uint16_t nMoves, bool bValue) {
    LogMessage("Exception caught in method TChessboardRegister::Insert", nMoves, bValue ? 1 : 0);
    if (nMaxElements != 0)
        EmptySomeDataWhenRegisterFull(false);
}

TInsertOutcome TAggregatedTemporaryChessboardRegister::InsertCounted(std::uint16_t nMoves, const TBoardBytes& key,
                                                                     bool bThereIsMate, EContradiction contradiction) {
    const std::uint32_t hash = BoardHash(key);
    const CExclusiveLock exclusive(combinedLock);
    const TInsertOutcome outcome = combinedMap.Insert(nMoves, key, hash, bThereIsMate, contradiction);
    if (outcome.m_bAdded)
        nCombinedElements.fetch_add(1, std::memory_order_relaxed);
    m_nInserts.fetch_add(1, std::memory_order_relaxed);
    return outcome;
}

// reportFor: whose contradictions are shown; null repairs them.
void TAggregatedTemporaryChessboardRegister::InsertFinal(std::uint16_t nMoves, const TBoardBytes& key,
                                                         bool bThereIsMate, const TChessboard* reportFor) {
    if ((!bKeepShort.load(std::memory_order_relaxed) && nMoves < kShortestKept) || !MakeRoom())
        return;
    try {
        const EContradiction contradiction = reportFor != nullptr ? EContradiction::Report : EContradiction::Repair;
        const TInsertOutcome outcome = InsertCounted(nMoves, key, bThereIsMate, contradiction);
        if (outcome.m_bIncoherent) [[unlikely]]
            ShowContradiction(nMoves, *reportFor, bThereIsMate, outcome.m_lengths);
    } catch (const std::exception&) {
        RecoverFromFailure(nMoves, bThereIsMate);
    }
}

void TAggregatedTemporaryChessboardRegister::Insert(std::uint16_t nMoves, const TChessboard& position,
                                                    bool bThereIsMate) {
    const bool bOrdinaryPlay = position.m_byPass < 2 && !bSideAnalysis.load(std::memory_order_relaxed);
    InsertFinal(nMoves, position.m_board, bThereIsMate, bOrdinaryPlay ? nullptr : &position);
}

void TAggregatedTemporaryChessboardRegister::InsertLoaded(std::uint16_t nMoves, const TBoardBytes& key,
                                                          bool bThereIsMate) {
    InsertFinal(nMoves, key, bThereIsMate, nullptr);
}

void TAggregatedTemporaryChessboardRegister::ShowContradiction(std::uint16_t nMoves, const TChessboard& position,
                                                               bool bThereIsMate, const TCombinedLengths& lengths) {
    if (RegisterOptions().m_bCheckTempRegCoherency && m_hooks.m_showMessage)
        m_hooks.m_showMessage(ContradictionText(nMoves, position, bThereIsMate, lengths), "Error");
}

} // namespace quillon
