#include "heuristics/edge_trial.h"

#include "core/attacks.h"
#include "core/mask_attacks.h"
#include "heuristics/heuristic_signature.h"

namespace quillon {

namespace {

constexpr std::uint32_t kEdgeHeuristics = SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE;
constexpr int kLastTriedPlies = 3; // played: White's second move

/// A free square of the king that is not on the edge; he is not in check, so no slider looks through him.
bool HasFreeSquareOffEdge(const TChessboard& b) {
    const TMask black = BlackFigures(b.m_board.data());
    for (TMask left = KingAttacks(BlackKingSquare(b)) & ~black; left != 0;) {
        const int square = TakeSquare(left);
        if (RingOf(FileOf(square), RankOf(square)) != 0 && !IsAttackedByWhite(b, FileOf(square), RankOf(square)))
            return true;
    }
    return false;
}

} // namespace

bool IsEdgeTrialWorthwhile(const TChessboard& child) {
    return child.m_byPass == 1 && child.m_nHeuristics != 0 && (child.m_nHeuristics & kEdgeHeuristics) == 0 &&
           child.m_nInitialMoves - child.m_nMoves <= kLastTriedPlies && BlackRing(child) == 0 &&
           child.m_blackChecker == kNoChecker && child.m_whiteQueens + child.m_whiteRooks != 0 &&
           child.m_pContext->m_nQuickerLevel == 0 && !HasFreeSquareOffEdge(child);
}

CEdgeTrial::CEdgeTrial(TChessboard& child)
    : m_child(child), m_nHeuristics(child.m_nHeuristics), m_nHeurParams(child.m_nHeurParams),
      m_bEdgeTrial(child.m_pContext->m_bEdgeTrial) {
    child.m_pContext->m_bEdgeTrial = true;
    child.m_nHeuristics |= SH_KEEPKINGONTHEEDGE;
    child.m_nHeurParams = ComputeHeurParams(child);
}

CEdgeTrial::~CEdgeTrial() {
    m_child.m_pContext->m_bEdgeTrial = m_bEdgeTrial;
    m_child.m_nHeuristics = m_nHeuristics;
    m_child.m_nHeurParams = m_nHeurParams;
}

} // namespace quillon
