#include "search/control.h"

#include "platform/sleep.h"
#include "search/analysis.h"

namespace quillon {

namespace {

bool IsAddressed(const TChessboard& b) {
    const std::uint16_t thread = b.m_pAnalysis->m_nCommandThread.load(std::memory_order_relaxed);
    return thread == kAllThreads || thread == b.m_pContext->m_nThreadNumber;
}

std::uint8_t CommandFor(const TChessboard& b) {
    const std::uint8_t command = b.m_pAnalysis->m_nCommand.load(std::memory_order_relaxed);
    return command != kNoCommand && IsAddressed(b) ? command : kNoCommand;
}

constexpr std::uint32_t kPauseStepMs = 10;

} // namespace

bool IsControlPending(const TChessboard& b) {
    return b.m_pContext->m_nStopRequest.load(std::memory_order_relaxed) != kRunRequest ||
           b.m_pAnalysis->m_nCommand.load(std::memory_order_relaxed) != kNoCommand;
}

bool IsStopping(const TChessboard& b) {
    return b.m_pContext->m_nStopRequest.load(std::memory_order_relaxed) >= kStopRequest ||
           CommandFor(b) == kStopCommand;
}

bool PauseOrStop(const TChessboard& b) {
    while (!IsStopping(b)) {
        const std::uint8_t request = b.m_pContext->m_nStopRequest.load(std::memory_order_relaxed);
        if (request != kPauseRequest && CommandFor(b) != kPauseCommand)
            return false;
        SleepMs(kPauseStepMs);
    }
    return true;
}

void GiveCommand(TAnalysis& analysis, std::uint8_t command, std::uint16_t thread) {
    while (analysis.m_nControlLock.exchange(1, std::memory_order_acquire) != 0)
        SleepMs(0);
    analysis.m_nCommandThread.store(thread, std::memory_order_relaxed);
    analysis.m_nCommand.store(command, std::memory_order_relaxed);
    analysis.m_nControlLock.store(0, std::memory_order_release);
}

} // namespace quillon
