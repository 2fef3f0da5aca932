#include "heuristics/figure_exchange.h"

#include "core/attacks.h"

namespace quillon {

bool CanBeExchanged(const TChessboard& b, TSquare square) {
    if (square >= kSquares || !IsWhite(b.m_board[square]))
        return false;
    TSquare capturer;
    return FindBlackCapturer(b, FileOf(square), RankOf(square), capturer) &&
           IsAttackedByWhite(b, FileOf(square), RankOf(square));
}

} // namespace quillon
