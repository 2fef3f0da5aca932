#include "search/control.h"

#include <algorithm>
#include <bit>
#include <optional>

#include "platform/clock.h"
#include "platform/sleep.h"
#include "search/analysis.h"

namespace quillon {

namespace {

constexpr std::uint32_t kPauseStepMs = 10;

/// The control record's spin lock.
class CControlLock {
  public:
    explicit CControlLock(TAnalysis& analysis) : m_lock(analysis.m_nControlLock) {
        while (m_lock.exchange(1, std::memory_order_acquire) != 0)
            SleepMs(0);
    }
    ~CControlLock() { m_lock.store(0, std::memory_order_release); }
    CControlLock(const CControlLock&) = delete;
    CControlLock& operator=(const CControlLock&) = delete;

  private:
    std::atomic<std::uint8_t>& m_lock;
};

// A thread that is to stop alone has its bit in a row of words.
constexpr std::uint64_t BitOf(std::uint32_t thread) { return std::uint64_t{1} << thread % 64; }

bool IsToStopAlone(const TAnalysis& analysis, std::uint32_t thread) {
    return thread < kAllThreads &&
           (analysis.m_stoppedThreads[thread / 64].load(std::memory_order_relaxed) & BitOf(thread)) != 0;
}

/// The lowest number of those that are to stop alone, kAllThreads for none.
std::uint16_t FirstStoppedThread(const TAnalysis& analysis) {
    std::uint32_t first = 0;
    for (const auto& word : analysis.m_stoppedThreads) {
        if (const std::uint64_t bits = word.load(std::memory_order_relaxed); bits != 0)
            return static_cast<std::uint16_t>(first + static_cast<std::uint32_t>(std::countr_zero(bits)));
        first += 64;
    }
    return kAllThreads;
}

bool IsAddressed(const TChessboard& b) {
    const std::uint16_t thread = b.m_pAnalysis->m_nCommandThread.load(std::memory_order_relaxed);
    return thread == kAllThreads || thread == b.m_pContext->m_nThreadNumber;
}

std::uint8_t CommandFor(const TChessboard& b) {
    const std::uint8_t command = b.m_pAnalysis->m_nCommand.load(std::memory_order_relaxed);
    return command != kNoCommand && IsAddressed(b) ? command : kNoCommand;
}

/// A manual command means a node above: this one is to be left. One above the node that the thread begins with cannot
/// be met.
void NoteCallBack(const TChessboard& b) {
    const std::uint16_t plies = b.m_pAnalysis->m_nCommandPlies.load(std::memory_order_relaxed);
    if (CommandFor(b) == kManualCommand && IsInMainLine(b) && b.m_nMoves < plies &&
        plies <= b.m_pContext->m_nThreadPlies)
        b.m_pContext->m_nCalledBackTo = plies;
}

bool IsStoppedByCommand(const TChessboard& b) {
    const TAnalysis& analysis = *b.m_pAnalysis;
    return analysis.m_nCommand.load(std::memory_order_relaxed) != kNoCommand &&
           (CommandFor(b) == kStopCommand || IsToStopAlone(analysis, b.m_pContext->m_nThreadNumber));
}

/// A stop by command is confirmed under the lock, for command and addressee are two fields, and then stands in the
/// context: what the thread returns from now on is no verdict, whatever command comes next.
bool TakeStopCommand(const TChessboard& b) {
    const CControlLock lock(*b.m_pAnalysis);
    if (!IsStoppedByCommand(b))
        return false;
    AskThread(*b.m_pContext, kStopRequest);
    return true;
}

bool IsCalledBack(const TChessboard& b) { return b.m_nMoves < b.m_pContext->m_nCalledBackTo; }

/// Stops the analysis' clock, or lets it go on. Under the lock.
void SetClock(TAnalysis& analysis, bool bStands) {
    const bool bStood = analysis.m_nPausedSince != 0;
    if (bStands == bStood)
        return;
    const std::uint64_t now = TickCount64();
    if (bStood)
        analysis.m_nPausedMs += now - analysis.m_nPausedSince;
    analysis.m_nPausedSince = bStands ? now : 0;
}

// All that follows under the lock.

bool AreAllStopped(const TAnalysis& analysis) {
    return analysis.m_nCommand.load(std::memory_order_relaxed) == kStopCommand &&
           analysis.m_nCommandThread.load(std::memory_order_relaxed) == kAllThreads;
}

void Put(TAnalysis& analysis, std::uint8_t command, std::uint16_t thread) {
    SetClock(analysis, command == kPauseCommand && thread == kAllThreads);
    analysis.m_nCommandThread.store(thread, std::memory_order_relaxed);
    analysis.m_nCommand.store(command, std::memory_order_relaxed);
}

bool IsInForceFor(const TAnalysis& analysis, std::uint16_t thread) {
    return analysis.m_nCommand.load(std::memory_order_relaxed) != kNoCommand &&
           analysis.m_nCommandThread.load(std::memory_order_relaxed) == thread;
}

/// The command has been obeyed or is over. Threads that are to stop alone are still to.
void EndCommand(TAnalysis& analysis) {
    const std::uint16_t stopped = FirstStoppedThread(analysis);
    if (stopped != kAllThreads)
        Put(analysis, kStopCommand, stopped);
    else
        Put(analysis, kNoCommand, analysis.m_nCommandThread.load(std::memory_order_relaxed));
}

/// A thread, or each, is no longer to stop alone.
void UnmarkStopped(TAnalysis& analysis, std::uint16_t thread) {
    if (thread != kAllThreads)
        analysis.m_stoppedThreads[thread / 64].fetch_and(~BitOf(thread), std::memory_order_relaxed);
    else
        for (auto& word : analysis.m_stoppedThreads)
            word.store(0, std::memory_order_relaxed);
}

/// Takes back what was asked of one thread, or all that was asked: stops, too.
void TakeBack(TAnalysis& analysis, std::uint16_t thread) {
    UnmarkStopped(analysis, thread);
    if (thread == kAllThreads || IsInForceFor(analysis, thread))
        EndCommand(analysis);
}

void Store(TAnalysis& analysis, std::uint8_t command, std::uint16_t thread) {
    if (command == kNoCommand) {
        TakeBack(analysis, thread);
        return;
    }
    if (AreAllStopped(analysis))
        return;
    if (command == kStopCommand && thread != kAllThreads)
        analysis.m_stoppedThreads[thread / 64].fetch_or(BitOf(thread), std::memory_order_relaxed);
    Put(analysis, command, thread);
}

std::uint32_t Packed(const TMove& move) {
    return move.m_nFrom | static_cast<std::uint32_t>(move.m_nTo) << 8 |
           static_cast<std::uint32_t>(PromotionKind(move)) << 16;
}

int NextIndex(const TAnalysis& analysis, const TMove* list, int nMoves, int i) {
    const int action = analysis.m_nSkipAction.load(std::memory_order_relaxed);
    if (action == kSkipToNext)
        return i;
    if (action != kSkipToMove)
        return std::max(i, std::min(i + action - 1, nMoves - 1));
    const std::uint32_t target = analysis.m_skipTarget.load(std::memory_order_relaxed);
    const TMove* const found =
        std::find_if(list + i, list + nMoves, [&](const TMove& move) { return Packed(move) == target; });
    return found == list + nMoves ? i : static_cast<int>(found - list);
}

/// The move in analysis, list[i - 1], has been left.
void Rearrange(const TAnalysis& analysis, TMove* list, int nMoves, int& i, int& nSkipped) {
    const int current = i - 1;
    switch (analysis.m_nMoveOrderAction.load(std::memory_order_relaxed)) {
    case kSwapWithNext:
        if (i < nMoves)
            std::swap(list[current], list[i]);
        i = current;
        break;
    case kMoveToEnd:
        std::rotate(list + current, list + current + 1, list + nMoves);
        i = current;
        break;
    default:
        i = NextIndex(analysis, list, nMoves, i);
        nSkipped = i - current;
        break;
    }
}

} // namespace

bool IsInMainLine(const TChessboard& b) {
    const TSearchContext& context = *b.m_pContext;
    return context.m_nQuickerLevel == 0 && context.m_nSortNesting == 0 &&
           context.m_nPositionsLeft == TSearchContext::kNoBound;
}

bool IsControlPending(const TChessboard& b) {
    return b.m_pContext->m_nStopRequest.load(std::memory_order_relaxed) != kRunRequest ||
           b.m_pAnalysis->m_nCommand.load(std::memory_order_relaxed) != kNoCommand ||
           b.m_pContext->m_nCalledBackTo != 0;
}

bool IsStopping(const TChessboard& b) {
    return b.m_pContext->m_nStopRequest.load(std::memory_order_relaxed) >= kStopRequest || IsCalledBack(b) ||
           (IsStoppedByCommand(b) && TakeStopCommand(b));
}

bool IsLeaving(const TChessboard& b) {
    if (!IsControlPending(b))
        return false;
    NoteCallBack(b);
    return IsStopping(b);
}

bool PauseOrStop(const TChessboard& b) {
    NoteCallBack(b);
    std::optional<CCountedThread> sleeping;
    while (!IsStopping(b)) {
        const std::uint8_t request = b.m_pContext->m_nStopRequest.load(std::memory_order_relaxed);
        if (request != kPauseRequest && CommandFor(b) != kPauseCommand)
            return false;
        if (!sleeping)
            sleeping.emplace(b.m_pAnalysis->m_nSleepingThreads);
        if (request == kPauseRequest && b.m_pContext->m_bRequestsReach)
            b.m_pContext->m_nStopRequest.wait(kPauseRequest, std::memory_order_relaxed);
        else
            SleepMs(kPauseStepMs);
    }
    return true;
}

void AskThread(TSearchContext& context, std::uint8_t request) {
    std::uint8_t seen = context.m_nStopRequest.load(std::memory_order_relaxed);
    while ((seen < kStopRequest || (seen == kBoundRequest && request >= kStopRequest)) &&
           !context.m_nStopRequest.compare_exchange_weak(seen, request, std::memory_order_relaxed)) {
    }
    context.m_nStopRequest.notify_all();
}

void GiveCommand(TAnalysis& analysis, std::uint8_t command, std::uint16_t thread) {
    const CControlLock lock(analysis);
    Store(analysis, command, thread);
}

std::uint64_t AnalysisTicks(TAnalysis& analysis) {
    const CControlLock lock(analysis);
    const std::uint64_t now = analysis.m_nPausedSince != 0 ? analysis.m_nPausedSince : TickCount64();
    return now - analysis.m_nPausedMs;
}

void PauseAll(TAnalysis& analysis) { GiveCommand(analysis, kPauseCommand, kAllThreads); }

void ResumeAll(TAnalysis& analysis) {
    const CControlLock lock(analysis);
    if (analysis.m_nCommand.load(std::memory_order_relaxed) == kPauseCommand && IsInForceFor(analysis, kAllThreads))
        EndCommand(analysis);
}

void ClearManualCommand(TAnalysis& analysis) {
    const CControlLock lock(analysis);
    if (analysis.m_nCommand.load(std::memory_order_relaxed) == kManualCommand)
        EndCommand(analysis);
}

std::uint8_t RequestFor(TAnalysis& analysis, const TSearchContext& context) {
    const std::uint8_t seen = context.m_nStopRequest.load(std::memory_order_relaxed);
    const std::uint8_t asked = seen == kBoundRequest ? kRunRequest : seen; // that it has asked itself
    if (asked >= kStopRequest || analysis.m_nCommand.load(std::memory_order_relaxed) == kNoCommand)
        return std::min(asked, kStopRequest);
    const CControlLock lock(analysis);
    if (IsToStopAlone(analysis, context.m_nThreadNumber))
        return kStopRequest;
    const std::uint16_t thread = analysis.m_nCommandThread.load(std::memory_order_relaxed);
    if (thread != kAllThreads && thread != context.m_nThreadNumber)
        return asked;
    const std::uint8_t command = analysis.m_nCommand.load(std::memory_order_relaxed);
    return command == kStopCommand ? kStopRequest : command == kPauseCommand ? kPauseRequest : asked;
}

void GiveManualCommand(TAnalysis& analysis, const TManualCommand& command) {
    const CControlLock lock(analysis);
    analysis.m_nCommandPlies.store(command.m_nPlies, std::memory_order_relaxed);
    analysis.m_nMoveOrderAction.store(command.m_nMoveOrderAction, std::memory_order_relaxed);
    analysis.m_nSkipAction.store(command.m_nSkipAction, std::memory_order_relaxed);
    analysis.m_skipTarget.store(Packed(command.m_skipTarget), std::memory_order_relaxed);
    Store(analysis, kManualCommand, command.m_nThread);
}

bool ObeyManualCommand(const TChessboard& b, TMove* list, int nMoves, int& i, int& nSkipped) {
    TAnalysis& analysis = *b.m_pAnalysis;
    const bool bCalledBack = b.m_pContext->m_nCalledBackTo == b.m_nMoves && b.m_nMoves != 0;
    if (bCalledBack)
        b.m_pContext->m_nCalledBackTo = 0;
    const auto isMeant = [&] {
        return CommandFor(b) == kManualCommand && IsInMainLine(b) &&
               analysis.m_nCommandPlies.load(std::memory_order_relaxed) == b.m_nMoves;
    };
    nSkipped = 0;
    const int current = bCalledBack && i > 0 ? i - 1 : i;
    if (isMeant()) {
        const CControlLock lock(analysis);
        if (isMeant()) {
            EndCommand(analysis);
            if (!bCalledBack || i == 0)
                return false; // nothing of this list has been left for it: the answers stand
            Rearrange(analysis, list, nMoves, i, nSkipped);
            return true;
        }
    }
    i = current; // obeyed by another thread meanwhile: the move left for it is tried again
    return bCalledBack;
}

void DropOwnCommand(TAnalysis& analysis, std::uint32_t thread) {
    if (thread >= kAllThreads || analysis.m_nCommand.load(std::memory_order_relaxed) == kNoCommand)
        return;
    const CControlLock lock(analysis);
    const auto number = static_cast<std::uint16_t>(thread);
    UnmarkStopped(analysis, number);
    if (IsInForceFor(analysis, number))
        EndCommand(analysis);
}

void DropCommandsOfSolve(TAnalysis& analysis) {
    const CControlLock lock(analysis);
    UnmarkStopped(analysis, kAllThreads);
    const bool bPauseOfAll =
        analysis.m_nCommand.load(std::memory_order_relaxed) == kPauseCommand && IsInForceFor(analysis, kAllThreads);
    if (!bPauseOfAll)
        EndCommand(analysis);
}

} // namespace quillon
