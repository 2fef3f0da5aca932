#include "heuristics/dynamic_blocking.h"

#include <algorithm>

#include "core/generation.h"
#include "core/search_context.h"
#include "heuristics/figure_origin.h"
#include "heuristics/heuristic_signature.h"

namespace quillon {

namespace {

bool IsWatchable(TFigure figure) { return IsBlack(figure) && KindOf(figure) != kKing && KindOf(figure) != kPawn; }

/// At most one field to go to; a capture is none.
bool IsBlocked(const TChessboard& b, TSquare square) {
    TMove list[kMaxMoves];
    const int count = GenerateBlackFigureMoves(b, square, list);
    return std::count_if(list, list + count, [&](const TMove& move) { return b.m_board[move.m_nTo] == kNoFigure; }) <=
           1;
}

bool IsAllowed(const TChessboard& child) {
    const TSearchContext& context = *child.m_pContext;
    const bool bDynamic = context.m_bApplyDlfuDynamically && context.m_bDlfuDynamic;
    return child.m_byPass == 1 && child.m_nHeuristics != 0 && (child.m_nHeuristics & SH_DONTLETFIGUREUNBLOCK) == 0 &&
           (bDynamic || context.m_bFallbackPending || context.m_bBlockedSubtreeTrial);
}

} // namespace

bool AreFiguresJustBlocked(const TChessboard& child) {
    if (!IsAllowed(child) || child.m_board[child.m_lastMove.m_nTo] != kBlackKing || IsNullMove(child.m_lastMove))
        return false;
    int blocked = 0;
    for (int s = 0; s < kSquares; ++s) {
        const auto square = static_cast<TSquare>(s);
        if (!IsWatchable(child.m_board[square]))
            continue;
        if (++blocked > kMaxBlockedFigures || !IsBlocked(child, square))
            return false;
    }
    return blocked > 0;
}

CDynamicBlocking::CDynamicBlocking(TChessboard& child)
    : m_child(child), m_nHeuristics(child.m_nHeuristics), m_nHeurParams(child.m_nHeurParams),
      m_onBoard(child.m_blockedFigures), m_inRoot(child.m_pContext->m_BlockedFigures),
      m_now(child.m_pContext->m_BlockedFiguresNow), m_nBlockedFigures(child.m_pContext->m_nBlockedFigures),
      m_bByHand(child.m_pContext->m_bBlockedFiguresByHand) {
    TSearchContext& context = *child.m_pContext;
    context.m_bBlockedFiguresByHand = false;
    context.m_BlockedFigures = context.m_BlockedFiguresNow = child.m_blockedFigures = kNoBlockedSquares;
    std::size_t count = 0;
    for (int s = 0; s < kSquares && count < kMaxBlockedFigures; ++s) {
        const auto square = static_cast<TSquare>(s);
        if (!IsWatchable(child.m_board[square]))
            continue;
        context.m_BlockedFigures[count] = OriginOfBlackFigure(child, square);
        context.m_BlockedFiguresNow[count] = child.m_blockedFigures[count] = square;
        ++count;
    }
    context.m_nBlockedFigures = static_cast<std::int8_t>(count);
    child.m_nHeuristics |= SH_DONTLETFIGUREUNBLOCK;
    child.m_nHeurParams = ComputeHeurParams(child);
}

CDynamicBlocking::~CDynamicBlocking() {
    TSearchContext& context = *m_child.m_pContext;
    context.m_BlockedFigures = m_inRoot;
    context.m_BlockedFiguresNow = m_now;
    context.m_nBlockedFigures = m_nBlockedFigures;
    context.m_bBlockedFiguresByHand = m_bByHand;
    m_child.m_blockedFigures = m_onBoard;
    m_child.m_nHeuristics = m_nHeuristics;
    m_child.m_nHeurParams = m_nHeurParams;
}

bool AreAllFiguresUnblocked(const TChessboard& b) {
    return (b.m_nHeuristics & SH_DONTLETFIGUREUNBLOCK) != 0 && b.m_pContext->m_nBlockedFigures > 0 &&
           b.m_blockedFigures == kNoBlockedSquares;
}

} // namespace quillon
