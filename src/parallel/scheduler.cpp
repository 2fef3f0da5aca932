#include "parallel/scheduler.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <system_error>
#include <utility>

#include "parallel/search_thread.h"
#include "platform/clock.h"
#include "platform/memory_info.h"
#include "platform/sleep.h"
#include "search/analysis.h"
#include "search/control.h"

namespace quillon {

namespace {

using TClock = std::chrono::steady_clock;

constexpr int kAttempts = 3;                                      // to start a worker
constexpr TClock::duration kStep = std::chrono::milliseconds(10); // in which requests to the node reach its workers
constexpr std::uint64_t kExhaustedMs = 500; // without an attempt when there was no thread to be had

constexpr std::uint64_t kMiB = 1u << 20;
constexpr std::uint64_t kMemoryPart = 5; // a fifth of the memory

std::atomic<int> g_nSchedulerThreads{0};
std::atomic<int> g_nMostSchedulerThreads{-1}; // negative: by memory
std::atomic<std::uint64_t> g_nExhaustedMs{kExhaustedMs};
std::atomic<std::uint64_t> g_nExhaustedUntil{0}; // as TickCount64

/// Takes one of the threads that there may be: false when there is none left.
bool TakeThread() {
    if (g_nSchedulerThreads.fetch_add(1, std::memory_order_relaxed) < MostSchedulerThreads())
        return true;
    g_nSchedulerThreads.fetch_sub(1, std::memory_order_relaxed);
    return false;
}

void GiveThreadBack() { g_nSchedulerThreads.fetch_sub(1, std::memory_order_relaxed); }

/// Has the system just had no thread, or no memory for one, to give? It is not asked again at once: there are thousands
/// of nodes in a second, and each attempt costs the register part of what it knows.
bool IsSystemExhausted() { return TickCount64() < g_nExhaustedUntil.load(std::memory_order_relaxed); }

void NoteExhaustedSystem() {
    g_nExhaustedUntil.store(TickCount64() + g_nExhaustedMs.load(std::memory_order_relaxed), std::memory_order_relaxed);
}

/// 1 for the first white nodes below the multithreading levels.
int LevelOf(const TChessboard& b) {
    return (b.m_nInitialMoves - b.m_nMoves - 2 * b.m_pAnalysis->m_nMultithreadingLevels + 2) / 2;
}

/// What was learned of the moves in one context serves the next.
void KeepHints(const TSearchContext& from, TSearchContext& to) {
    to.m_hints = from.m_hints;
    to.m_answers = from.m_answers;
    to.m_refutations = from.m_refutations;
}

/// While it lives the line stands in this scheduler.
class CInnermost {
  public:
    CInnermost(TSearchContext& context, const TScheduler& scheduler)
        : m_context(context), m_pOuter(std::exchange(context.m_pScheduler, &scheduler)) {}
    ~CInnermost() { m_context.m_pScheduler = m_pOuter; }
    CInnermost(const CInnermost&) = delete;
    CInnermost& operator=(const CInnermost&) = delete;

  private:
    TSearchContext& m_context;
    const TScheduler* const m_pOuter;
};

} // namespace

int SchedulerThreads() { return g_nSchedulerThreads.load(std::memory_order_relaxed); }

int MostSchedulerThreads() {
    static const int byMemory = static_cast<int>(PhysicalMemory() / kMiB / kMemoryPart);
    const int most = g_nMostSchedulerThreads.load(std::memory_order_relaxed);
    return most < 0 ? byMemory : most;
}

void SetMostSchedulerThreads(int nMost) { g_nMostSchedulerThreads.store(nMost, std::memory_order_relaxed); }

void SetExhaustedMs(std::uint64_t nMs) {
    g_nExhaustedMs.store(nMs, std::memory_order_relaxed);
    g_nExhaustedUntil.store(0, std::memory_order_relaxed);
}

TScheduler::TScheduler(TChessboard& position, const TScheduler* pParent, int nCustomFrom)
    : m_position(position), m_context(*position.m_pContext), m_nDepth(pParent != nullptr ? pParent->CustomDepth() : 0),
      m_nNesting(pParent != nullptr ? pParent->Nesting() + 1 : 1), m_nLevel(LevelOf(position)),
      m_nCustomFrom(nCustomFrom), m_bInRange(m_nLevel <= position.m_pAnalysis->m_nSchedulerLevels),
      m_passedOn(kRunRequest) {}

TScheduler::~TScheduler() { StopWorkers(); }

void TScheduler::TakeMoves(const TMove* list, int nMoves) {
    m_slots.resize(static_cast<std::size_t>(nMoves));
    for (TSlot& slot : m_slots)
        slot.m_move = *list++;
    if (!m_bInRange)
        m_nCustomFrom = nMoves;
}

TMateResult TScheduler::Run(TNodeFunction pNode) {
    m_pNode = pNode;
    while (MayGoOn() && GiveNextTurn())
        WatchTurn();
    StopWorkers();
    return Conclude();
}

/// Is the node to be left, or has it mated?
bool TScheduler::IsEnded() const {
    if (IsLeaving(m_position))
        return true;
    const std::lock_guard lock(m_mutex);
    return m_bMated;
}

/// Sleeps while the node is paused: true if a turn may begin.
bool TScheduler::MayGoOn() const { return !(IsControlPending(m_position) && PauseOrStop(m_position)) && !IsEnded(); }

/// Every move gets a first turn, then those that have not ended get theirs by what they have had. false: all have
/// ended.
bool TScheduler::GiveNextTurn() {
    if (m_nNext < m_slots.size()) { // no worker has the turn: none takes a slot
        if (!StartWorker())
            SearchHere();
        return true;
    }
    const int slot = NextSlotToResume(Times(), false);
    if (slot < 0)
        return false;
    const std::lock_guard lock(m_mutex);
    TWorker* const worker = m_slots[static_cast<std::size_t>(slot)].m_pWorker;
    if (worker != nullptr)
        Resume(*worker);
    return true;
}

// --- Workers

/// At the limit of their number nothing is freed, and no further attempt made: that ends no thread, the limit may be
/// reached for hours, and each move of each node would have the register emptied.
bool TScheduler::StartWorker() {
    if (m_workers.size() >= kMostWorkers || IsSystemExhausted())
        return false;
    EStart start = TryStartWorker();
    if (start == EStart::AtLimit)
        return false;
    for (int attempt = 1; start != EStart::Started && attempt < kAttempts; ++attempt) {
        FreeMemory();
        SleepMs(0);
        start = TryStartWorker();
    }
    if (start == EStart::NoThread || start == EStart::NoMemory)
        NoteExhaustedSystem();
    return start == EStart::Started;
}

void TScheduler::FreeMemory() const {
    if (ITemporaryRegister* const known = m_position.m_pAnalysis->m_pRegister)
        known->FreeMemory();
}

TScheduler::EStart TScheduler::TryStartWorker() {
    if (!TakeThread())
        return EStart::AtLimit;
    const std::size_t slot = m_nNext, workers = m_workers.size();
    try {
        TWorker& worker = m_workers.emplace_back();
        PrepareShare(m_position, worker.m_share, m_context.m_nThreadNumber);
        worker.m_share.m_context->m_pScheduler = this;
        worker.m_share.m_context->m_bRequestsReach = true;
        (void)TakeSlot(worker);
        worker.m_thread = CThread(SearchStackBytes(m_position.m_nInitialMoves), [this, &worker] { Work(worker); });
        m_pTurn = &worker;
    } catch (const std::bad_alloc&) {
        Forget(slot, workers);
        return EStart::NoMemory;
    } catch (const std::system_error&) {
        Forget(slot, workers);
        return EStart::NoThread;
    }
    m_passedOn = kRunRequest;
    return EStart::Started;
}

/// Back to so many workers, the slot not begun: there is no thread.
void TScheduler::Forget(std::size_t slot, std::size_t nWorkers) {
    GiveThreadBack();
    m_slots[slot].m_pWorker = nullptr;
    m_nNext = slot;
    while (m_workers.size() > nWorkers)
        m_workers.pop_back();
}

/// The first slot not begun, if there is one. Under the lock, or while no worker has the turn.
bool TScheduler::TakeSlot(TWorker& worker) {
    if (m_nNext == m_slots.size())
        return false;
    worker.m_nSlot = m_nNext;
    TSlot& slot = m_slots[m_nNext++];
    slot.m_pWorker = &worker;
    worker.m_share.m_moves.assign(1, slot.m_move);
    return true;
}

/// A worker's thread.
void TScheduler::Work(TWorker& worker) {
    TAnalysis& analysis = *m_position.m_pAnalysis;
    worker.m_failure = RunSearchThread(analysis, *worker.m_share.m_context, [&] {
        const CCountedThread counted(analysis.m_nSchedulerThreads);
        while (EndSlot(worker, SearchShare(worker.m_share, m_pNode))) {
        }
    });
    GiveThreadBack();
    const std::lock_guard lock(m_mutex);
    worker.m_bEnded = true;
    m_ended.notify_one();
}

/// Notes the verdict on the worker's slot: true if the worker has got another.
bool TScheduler::EndSlot(TWorker& worker, const TShareVerdict& verdict) {
    const std::lock_guard lock(m_mutex);
    TSlot& slot = m_slots[worker.m_nSlot];
    slot.m_verdict = verdict;
    slot.m_bEnded = true;
    if (verdict.m_result == MR_MATE && !m_bMated) {
        m_bMated = true;
        m_pMated = &worker;
    }
    return !m_bMated && !m_bStopping && worker.m_bHasTurn && !IsStopping(*worker.m_share.m_pPosition) &&
           TakeSlot(worker);
}

/// The next move in the node's own thread, as without a scheduler.
void TScheduler::SearchHere() {
    TSlot& slot = m_slots[m_nNext++];
    m_context.m_byResumeList = 2;
    m_context.m_nResumeCount = 1;
    m_context.m_pResumeList = &slot.m_move;
    const CInnermost innermost(m_context, *this);
    const TMateResult result = m_pNode(&m_position);
    const std::lock_guard lock(m_mutex);                      // a worker that was paused may end a move yet
    slot.m_verdict = {result, 0, m_context.m_lastDoubtCause}; // the mark is the node's own already
    slot.m_bEnded = true;
    m_bMated = m_bMated || result == MR_MATE;
}

// --- The worker that has the turn

/// Returns when its turn is over: it is paused, or it has ended, or the node is to be left.
void TScheduler::WatchTurn() {
    if (m_pTurn == nullptr)
        return;
    TTurn turn = Turn();
    for (;;) {
        const TClock::time_point from = TClock::now();
        const bool bEnded = WaitForEnd(std::min(turn.m_left, kStep));
        const bool bRan = PassOnRequests();
        if (bEnded || IsEnded())
            break;
        if (SlotInTurn() != turn.m_nSlot) {
            turn = Turn();
            continue;
        }
        if (bRan) // a pause of the node costs the slot nothing
            turn.m_left -= TClock::now() - from;
        if (turn.m_left > TClock::duration::zero())
            continue;
        if (IsSwitchDue(turn)) {
            Pause();
            break;
        }
        turn = Turn();
    }
    m_pTurn = nullptr;
    Reap();
}

/// A quantum for the slot that the worker is in.
TScheduler::TTurn TScheduler::Turn() const {
    TTurn turn;
    turn.m_nSlot = SlotInTurn();
    turn.m_nQuantum = Quantum(Times(), static_cast<int>(turn.m_nSlot));
    turn.m_left = std::chrono::milliseconds(QuantumMs(turn.m_nQuantum, m_position.m_pAnalysis->m_nQuantumSecondMs));
    return turn;
}

std::size_t TScheduler::SlotInTurn() const {
    const std::lock_guard lock(m_mutex);
    return m_pTurn->m_nSlot;
}

/// Waits so long, or until the worker that has the turn has ended: true if it has.
bool TScheduler::WaitForEnd(TClock::duration time) {
    std::unique_lock lock(m_mutex);
    return m_ended.wait_for(lock, time, [this] { return m_pTurn->m_bEnded; });
}

/// What is asked of the node's thread is asked of the worker, a pause for as long as it lasts: true if it is to run.
bool TScheduler::PassOnRequests() {
    TAnalysis& analysis = *m_position.m_pAnalysis;
    const std::uint8_t request = RequestFor(analysis, m_context);
    PassOn(request);
    if (request != kPauseRequest)
        return true;
    (void)PauseOrStop(m_position);
    PassOn(RequestFor(analysis, m_context));
    return false;
}

void TScheduler::PassOn(std::uint8_t request) {
    if (request == m_passedOn)
        return;
    m_passedOn = request;
    AskThread(*m_pTurn->m_share.m_context, request);
}

/// Charges the quantum that the turn's slot has used up. Is another slot to have the next?
bool TScheduler::IsSwitchDue(const TTurn& turn) {
    {
        const std::lock_guard lock(m_mutex);
        m_slots[turn.m_nSlot].m_nTime += QuantumUnits(turn.m_nQuantum);
        if (m_nNext < m_slots.size())
            return true;
    }
    const int next = NextSlotToResume(Times(), true);
    return next >= 0 && next != static_cast<int>(turn.m_nSlot);
}

/// The worker may end its move at the same moment: then it ends too.
void TScheduler::Pause() {
    const std::lock_guard lock(m_mutex);
    m_pTurn->m_bHasTurn = false;
    AskThread(*m_pTurn->m_share.m_context, kPauseRequest);
}

/// Under the lock.
void TScheduler::Resume(TWorker& worker) {
    worker.m_bHasTurn = true;
    if (!worker.m_bEnded)
        AskThread(*worker.m_share.m_context, kRunRequest);
    m_pTurn = &worker;
    m_passedOn = kRunRequest;
}

/// Lets go of the workers that have ended.
void TScheduler::Reap() {
    for (TWorker& worker : m_workers) {
        bool bMated = false;
        {
            const std::lock_guard lock(m_mutex);
            if (!worker.m_bEnded || !worker.m_thread.IsJoinable())
                continue;
            bMated = &worker == m_pMated;
        }
        worker.m_thread.Join();
        if (worker.m_failure)
            std::rethrow_exception(worker.m_failure);
        KeepHints(*worker.m_share.m_context, m_context);
        if (!bMated)
            worker.m_share.m_context.reset();
    }
}

void TScheduler::StopWorkers() {
    {
        const std::lock_guard lock(m_mutex);
        m_bStopping = true;
        for (const TWorker& worker : m_workers)
            if (worker.m_share.m_context != nullptr)
                AskThread(*worker.m_share.m_context, kStopRequest);
    }
    for (TWorker& worker : m_workers)
        worker.m_thread.Join();
}

// --- The verdict

TMateResult TScheduler::Conclude() {
    if (m_pMated != nullptr)
        TakeMateFrom(m_position, m_pMated->m_share);
    if (m_bMated)
        return MR_MATE;
    CNodeVerdict verdict(m_position);
    for (const TSlot& slot : m_slots)
        verdict.Add(slot.m_bEnded ? slot.m_verdict : TShareVerdict{MR_DOUBTFUL});
    return verdict.Result();
}

TSlotTimes TScheduler::Times() const {
    TSlotTimes times;
    times.m_nLevel = m_nLevel - m_nDepth;
    times.m_nSchedulerLevels = m_position.m_pAnalysis->m_nSchedulerLevels;
    times.m_nCustomFrom = m_nCustomFrom;
    const std::lock_guard lock(m_mutex);
    for (const TSlot& slot : m_slots)
        times.m_slots.push_back({slot.m_pWorker != nullptr && !slot.m_bEnded, slot.m_nTime});
    return times;
}

} // namespace quillon
