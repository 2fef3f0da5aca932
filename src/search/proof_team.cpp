#include "search/proof_team.h"

#include "core/search_context.h"
#include "platform/sleep.h"
#include "search/control.h"

namespace quillon {

namespace {

constexpr std::uint32_t kPauseStepMs = 10;

} // namespace

CProofTeam::CProofTeam(const TChessboard& root, int nThreads, std::uint64_t nMostNodes)
    : m_pCaller(root.m_pContext), m_nThreads(nThreads), m_nMostNodes(nMostNodes) {}

bool CProofTeam::IsOver(const TChessboard& b) {
    return Nodes() >= m_nMostNodes || m_bEnded.load(std::memory_order_relaxed) || IsCallerStopping(b) ||
           (IsControlPending(b) && PauseOrStop(b));
}

/// A request to the calling thread, as the threads that help it see it. A bound that it has set itself is none.
bool CProofTeam::IsCallerStopping(const TChessboard& b) {
    if (b.m_pContext == m_pCaller)
        return false; // it asks itself
    std::uint8_t request = m_pCaller->m_nStopRequest.load(std::memory_order_relaxed);
    while (request == kPauseRequest && !m_bEnded.load(std::memory_order_relaxed)) {
        SleepMs(kPauseStepMs);
        request = m_pCaller->m_nStopRequest.load(std::memory_order_relaxed);
    }
    return request == kStopRequest;
}

} // namespace quillon
