#include "search/move_sort.h"

#include <algorithm>

#include "core/generation.h"
#include "core/search_context.h"

namespace quillon {

bool FindHint(const TChessboard& b, TMove& hint) {
    const TMove wanted = b.m_pContext->m_hints[b.m_nMoves];
    if (IsNullMove(wanted))
        return false;
    const bool bWhite = IsWhiteToMove(b);
    const TFigure figure = b.m_board[wanted.m_nFrom];
    if (!(bWhite ? IsWhite(figure) : IsBlack(figure)))
        return false;
    TMove list[kMaxMoves];
    const int count =
        bWhite ? GenerateWhiteFigureMoves(b, wanted.m_nFrom, list) : GenerateBlackFigureMoves(b, wanted.m_nFrom, list);
    const TMove* const found =
        std::find_if(list, list + count, [&](const TMove& move) { return SameMove(move, wanted); });
    hint = wanted;
    return found != list + count;
}

void PutHintFirst(const TChessboard& b, int nMoves, TMove* list) {
    const TMove wanted = b.m_pContext->m_hints[b.m_nMoves];
    TMove* const found = std::find_if(list, list + nMoves, [&](const TMove& move) { return SameMove(move, wanted); });
    if (found != list + nMoves)
        std::rotate(list, found, found + 1);
}

void KeepHint(const TChessboard& b, const TMove& move) {
    b.m_pContext->m_hints[b.m_nMoves] = {move.m_nFrom, move.m_nTo, PromotionKind(move), 0};
}

} // namespace quillon
