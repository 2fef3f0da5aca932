#pragma once
// The black king and the edge of the board, as the edge heuristics see it.

#include "core/chessboard.h"
#include "core/search_context.h"
#include "heuristics/heuristic_set.h"

namespace quillon {

[[nodiscard]] constexpr bool IsBlackKingInCorner(const TChessboard& b) {
    return kEdgeDistance[b.m_blackKingFile] + kEdgeDistance[b.m_blackKingRank] == 0;
}

/// The squares b2, b7, g2, g7: beside a corner a king is hardly freer than on the edge.
[[nodiscard]] constexpr bool IsBlackKingBesideCorner(const TChessboard& b) {
    return kEdgeDistance[b.m_blackKingFile] == 1 && kEdgeDistance[b.m_blackKingRank] == 1;
}

/// Ring of the black king; with m_bEdgeInclCornerSquares the squares beside the corners count as edge.
[[nodiscard]] inline int EdgeRing(const TChessboard& b) {
    return b.m_pContext->m_bEdgeInclCornerSquares && IsBlackKingBesideCorner(b) ? 0 : BlackRing(b);
}

/// The second of two FindForcedMate cycles is running: the tightest heuristics had their turn in the first.
[[nodiscard]] inline bool IsSecondForcedMateCycle(const TChessboard& b) {
    const TSearchContext& context = *b.m_pContext;
    return context.m_bFFM && !context.m_bFfmCycleTwice && context.m_nFfmCycleRelaxations != 0;
}

/// SH_KEEPKINGONTHEEDGE forbids every move of the black king, not only those off the edge.
[[nodiscard]] inline bool IsStrictEdge(const TChessboard& b) {
    return b.m_pContext->m_bDontLetKingMove && (b.m_wBlackState & kKingMoveBanSuspended) == 0 &&
           !IsSecondForcedMateCycle(b);
}

} // namespace quillon
