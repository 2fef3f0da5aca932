#include "heuristics/single_queen.h"

#include <algorithm>

#include "core/generation.h"
#include "core/search_context.h"
#include "heuristics/heuristic_signature.h"

namespace quillon {

namespace {

constexpr int kFarFromKing = 4; // king's steps: two moves of the king at least before he joins in

/// Black's move before his last one.
const TChessboard* AfterBlackMoveBeforeLast(const TChessboard& b) {
    return b.m_pPrevious != nullptr ? b.m_pPrevious->m_pPrevious : nullptr;
}

bool HasBlackJustQueened(const TChessboard& b) {
    const TChessboard* const before = AfterBlackMoveBeforeLast(b);
    return before != nullptr && before->m_pPrevious != nullptr && PromotionKind(before->m_lastMove) == kQueen &&
           b.m_board[b.m_lastMove.m_nTo] != kBlackQueen && b.m_blackQueens != 0;
}

} // namespace

void DetectSingleQueen(TChessboard& b) {
    if (b.m_byPass != 1 || b.m_nHeuristics == 0 || (b.m_nHeuristics & SH_SAVEQUEENROOK) != 0 ||
        WhiteMen(b) - b.m_whitePawns != 1 || !HasBlackJustQueened(b))
        return;
    TMove checks[kMaxMoves];
    if (GenerateWhiteChecks(b, checks) != 0)
        return;
    b.m_nHeuristics |= SH_SAVEQUEENROOK;
    b.m_nHeurParams = ComputeHeurParams(b);
}

bool IsQueenFarFromItsKing(const TChessboard& b) {
    const auto queen = std::ranges::find(b.m_board, kWhiteQueen);
    return queen != b.m_board.end() &&
           KingSteps(static_cast<int>(queen - b.m_board.begin()), WhiteKingSquare(b)) >= kFarFromKing;
}

} // namespace quillon
