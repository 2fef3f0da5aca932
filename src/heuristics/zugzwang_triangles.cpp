#include "heuristics/zugzwang_triangles.h"

#include <algorithm>

#include "core/search_context.h"
#include "heuristics/heuristic_moves.h"

namespace quillon {

namespace {

/// A corner of the triangle: one of the two squares, or a square next to both.
bool IsCorner(const THeuristicParameters& p, int square) {
    return square == p.m_nZugzwangTriangle1 || square == p.m_nZugzwangTriangle2 ||
           (KingSteps(square, p.m_nZugzwangTriangle1) == 1 && KingSteps(square, p.m_nZugzwangTriangle2) == 1);
}

bool IsPawn(TFigure figure) { return KindOf(figure) == kPawn; }

} // namespace

bool StillFitsZugzwangTriangles(const TChessboard& b) {
    const TChessboard& root = *b.m_pContext->m_pRoot;
    if (WhiteMen(b) != WhiteMen(root) || BlackMen(b) != BlackMen(root))
        return false;
    return std::equal(b.m_board.begin(), b.m_board.end(), root.m_board.begin(), [](TFigure now, TFigure then) {
        return (!IsPawn(now) && !IsPawn(then)) || WithoutMark(now) == WithoutMark(then);
    });
}

int GenerateTriangleMoves(const TChessboard& b, TMove* list) {
    const TSearchContext& context = *b.m_pContext;
    if (context.m_nZugzwangTriangle1 == context.m_nZugzwangTriangle2)
        return -1;
    TMove checks[kMaxMoves];
    const int nChecks = GenerateWhiteChecks(b, checks);
    bool bStep = false;
    const int count = CollectWhiteMoves(b, list, [&](const TMove& move) {
        const bool bCorner = b.m_board[move.m_nFrom] == kWhiteKing && IsCorner(context, move.m_nTo);
        bStep = bStep || bCorner;
        return bCorner || SameMove(move, context.m_zugzwangMove) ||
               std::any_of(checks, checks + nChecks, [&](const TMove& check) { return SameMove(check, move); });
    });
    return bStep ? count : -1;
}

} // namespace quillon
