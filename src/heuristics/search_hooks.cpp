#include "heuristics/search_hooks.h"

#include "core/queries.h"

namespace quillon {

bool RecedesFromBlackKing(const TChessboard& b, const TMove& move) {
    const TSquare king = BlackKingSquare(b);
    return b.m_board[move.m_nFrom] == kWhiteKing && b.m_board[move.m_nTo] == kNoFigure &&
           KingSteps(move.m_nTo, king) > KingSteps(move.m_nFrom, king);
}

// The makers' questions. None of the heuristics behind them can be switched on yet.
bool IsForbiddenToWhiteKing(const TChessboard&, TSquare) { return false; }
bool IsRefusedByBishopMode(const TChessboard&, const TMove&) { return false; }
void CorrectBishopMode(TChessboard&) {}
void ApplyDeferredEdgeCheck(TChessboard&) {}

} // namespace quillon
