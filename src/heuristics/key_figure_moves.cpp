#include "heuristics/key_figure_moves.h"

#include <algorithm>

#include "core/lines.h"
#include "core/search_context.h"
#include "heuristics/heuristic_moves.h"

namespace quillon {

bool HoldsKeyPin(const TChessboard& b) {
    const TSquare key = b.m_pContext->m_nKeyWhiteFigure, pinned = b.m_pContext->m_nPinnedFigure;
    if (key >= kSquares || pinned >= kSquares)
        return false;
    const TFigure figure = b.m_board[pinned];
    if (!IsBlack(figure) || KindOf(figure) == kKing)
        return false;
    const TDirection line = DirectionBetween(key, pinned);
    return line != kNoDirection && IsSliderAlong(b.m_board[key], kWhite, line) &&
           DirectionBetween(key, BlackKingSquare(b)) == line;
}

int GenerateKeyFigureMoves(const TChessboard& b, TMove* list) {
    if (!HoldsKeyPin(b))
        return -1;
    const TSquare key = b.m_pContext->m_nKeyWhiteFigure;
    TMove checks[kMaxMoves];
    const int nChecks = GenerateWhiteChecks(b, checks);
    return CollectWhiteMoves(b, list, [&](const TMove& move) {
        return move.m_nFrom != key || b.m_board[move.m_nTo] != kNoFigure ||
               std::any_of(checks, checks + nChecks, [&](const TMove& check) { return SameMove(check, move); });
    });
}

} // namespace quillon
