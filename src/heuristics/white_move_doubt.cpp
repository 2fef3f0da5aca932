#include "heuristics/white_move_doubt.h"

#include "core/generation.h"
#include "core/makers.h"
#include "core/search_context.h"
#include "heuristics/heuristic_moves.h"
#include "heuristics/verify_heuristics.h"

namespace quillon {

namespace {

constexpr int kQuickTestPlies = 14; // from here on Black's replies are sorted with full effort, which is worth sparing

/// Would the gate doubt one of the black king's moves?
bool IsKingMoveDoubted(TChessboard& child) {
    TMove list[kMaxMoves];
    const int count = GenerateBlackFigureMoves(child, BlackKingSquare(child), list);
    for (int i = 0; i < count; ++i) {
        TMove made = list[i], marked = list[i];
        TChessboard* const reply = CopyToChild(&child);
        if (MakeBlackMove(*reply, made, false) == kMoveStands && VerifyHeuristics(*reply, &marked) == kDoubtful)
            return true;
    }
    return false;
}

} // namespace

bool StillSweeps(const TChessboard& child) {
    const TChessboard& before = *child.m_pPrevious;
    const TMove& move = child.m_lastMove;
    const bool bLeaves =
        before.m_board[move.m_nFrom] == kWhiteRook && RankOf(move.m_nFrom) == 0 && RankOf(move.m_nTo) != 0;
    if (bLeaves)
        return false;
    const TFigure captured = WithoutMark(before.m_board[move.m_nTo]);
    const bool bSwept = RankOf(move.m_nTo) == 0 || (captured == kBlackPawn && RankOf(move.m_nTo) == 1);
    return captured == kNoFigure || bSwept;
}

std::uint32_t FindDoubtAfterWhiteMove(TChessboard& child) {
    if (child.m_nHeuristics == 0)
        return 0;
    if ((child.m_nHeuristics & SH_SWEEPINGWHITEROOK) != 0 && !StillSweeps(child))
        ClearHeuristics(child, SH_SWEEPINGWHITEROOK);
    if ((child.m_nHeuristics & SH_KEEPKINGONTHEEDGE) == 0 || child.m_nMoves < kQuickTestPlies ||
        child.m_blackChecker != kNoChecker)
        return 0;
    if (!IsKingMoveDoubted(child))
        return 0;
    const std::uint32_t cause = child.m_pContext->m_lastDoubtCause; // of the rule that doubted
    return cause != 0 ? cause : SH_KEEPKINGONTHEEDGE;
}

bool RecedesFromBlackKing(const TChessboard& b, const TMove& move) {
    const TSquare king = BlackKingSquare(b);
    return b.m_board[move.m_nFrom] == kWhiteKing && b.m_board[move.m_nTo] == kNoFigure &&
           KingSteps(move.m_nTo, king) > KingSteps(move.m_nFrom, king);
}

} // namespace quillon
