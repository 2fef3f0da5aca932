#include "globalregister/verification/check_index.h"

#include <algorithm>
#include <thread>

#include "platform/sleep.h"

namespace quillon {

namespace {

constexpr std::uint64_t kChunk = 1024; // indices that a thread takes at a time
constexpr std::uint32_t kPauseMs = 100;
constexpr std::uint32_t kWatchMs = 20;
constexpr std::uint32_t kFirstLooksMs = 1; // a short run is not to wait for the watch
constexpr int kFirstLooks = 20;

/// What to tell of bit data whose pair and details differ: the one of them that is wrong.
int StoredApart(const CTableLengths& own, std::uint64_t index, int nComputed) {
    if (own.PairSaysMate(index))
        return kUnknownLength;
    const int nLooked = own.HalfMoves(index); // what neighbours see: pairs that are in memory go first
    if (nLooked != nComputed)
        return nLooked;
    return nComputed == 0 ? own.DetailHalfMoves(index) : 0;
}

} // namespace

void CIndexChecker::CheckIndex(std::uint64_t index) {
    if (!m_expected.SetPosition(index))
        return;
    const CTableLengths& own = m_tables.Own();
    int nStored = own.HalfMoves(index);
    const int nComputed = m_expected.ComputeExpected();
    if (m_nLimit != 0 && nComputed >= m_nLimit && own.SaysNoMate(index))
        return;
    const bool bPairAgrees = own.PairAgrees(index);
    if (bPairAgrees && nComputed == nStored)
        return;
    if (!bPairAgrees)
        nStored = StoredApart(own, index, nComputed);
    m_faults.push_back({index, TablePositionFEN(m_expected.Position()), nStored, nComputed});
}

CCheckLoop::CCheckLoop(const COneMoveTables& tables, int nLimit, int nThreads) {
    for (int i = 0; i < nThreads; ++i)
        m_checkers.push_back(std::make_unique<CIndexChecker>(tables, nLimit));
}

std::vector<TPrecalcFault> CCheckLoop::Run(std::uint64_t nFirst, std::uint64_t nLast,
                                           std::span<const std::uint64_t> indexes,
                                           const std::function<ERunState()>& askState) {
    const TPart part{nLast, indexes};
    m_nNext.store(nFirst);
    m_state.store(askState()); // before threads begin: a stop that was asked for meanwhile costs no index
    {
        std::vector<std::jthread> threads;
        try {
            for (const auto& checker : m_checkers) {
                m_nWorking.fetch_add(1);
                threads.emplace_back([this, &checker, &part] { Work(*checker, part); });
            }
        } catch (...) { // those that have been started are waited for on the way
            m_state.store(ERunState::Break);
            throw;
        }
        Watch(askState);
    }
    std::vector<TPrecalcFault> faults;
    for (const auto& checker : m_checkers) {
        std::ranges::move(checker->m_faults, std::back_inserter(faults));
        checker->m_faults.clear();
    }
    std::ranges::sort(faults, {}, &TPrecalcFault::m_nIndex);
    return faults;
}

void CCheckLoop::Watch(const std::function<ERunState()>& askState) {
    for (int i = 0; m_nWorking.load() > 0; ++i) {
        if (!IsBroken())
            m_state.store(askState());
        SleepMs(i < kFirstLooks ? kFirstLooksMs : kWatchMs);
    }
}

void CCheckLoop::Work(CIndexChecker& checker, const TPart& part) {
    try {
        bool bGoOn = true;
        while (bGoOn) {
            const std::uint64_t nFirst = m_nNext.fetch_add(kChunk);
            bGoOn = nFirst < part.m_nLast && CheckChunk(checker, part, nFirst);
        }
    } catch (...) {
        const std::lock_guard lock(m_failureLock);
        if (!m_failure)
            m_failure = std::current_exception();
        m_bFailed.store(true);
    }
    m_nWorking.fetch_sub(1);
}

bool CCheckLoop::CheckChunk(CIndexChecker& checker, const TPart& part, std::uint64_t nFirst) {
    const std::uint64_t nLast = std::min(nFirst + kChunk, part.m_nLast);
    for (std::uint64_t i = nFirst; i < nLast; ++i) {
        if (!MayGoOn()) {
            m_nChecked.fetch_add(i - nFirst, std::memory_order_relaxed);
            return false;
        }
        checker.CheckIndex(part.m_indexes.empty() ? i : part.m_indexes[i]);
    }
    m_nChecked.fetch_add(nLast - nFirst, std::memory_order_relaxed);
    return true;
}

/// Waits while the run is paused.
bool CCheckLoop::MayGoOn() const {
    while (m_state.load(std::memory_order_relaxed) == ERunState::Pause && !m_bFailed.load(std::memory_order_relaxed))
        SleepMs(kPauseMs);
    return !IsBroken() && !m_bFailed.load(std::memory_order_relaxed);
}

} // namespace quillon
