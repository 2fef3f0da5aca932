#include "heuristics/figure_origin.h"

#include "core/search_context.h"

namespace quillon {

namespace {

/// The square before the black move that led to `b`.
TSquare BeforeMove(const TChessboard& b, TSquare square) {
    const TMove& move = b.m_lastMove;
    if (move.m_nTo == square)
        return move.m_nFrom;
    const bool bCastling =
        b.m_board[move.m_nTo] == kBlackKing && move.m_nFrom == kE8 && AbsDiff(move.m_nFrom, move.m_nTo) == 2;
    if (bCastling && square == (move.m_nFrom + move.m_nTo) / 2)
        return move.m_nTo == kG8 ? kH8 : kA8;
    return square;
}

/// Goes back to the root: the square there, and the root.
TSquare TraceBack(const TChessboard*& b, TSquare square) {
    for (; b->m_pPrevious != nullptr; b = b->m_pPrevious)
        if (IsWhiteToMove(*b)) // Black has moved
            square = BeforeMove(*b, square);
    return square;
}

} // namespace

TSquare OriginOfBlackFigure(const TChessboard& b, TSquare square) {
    const TChessboard* root = &b;
    return TraceBack(root, square);
}

bool IsPromotedBlackFigure(const TChessboard& b, TSquare square) {
    if ((b.m_wBlackState & kBlackPromotionsMask) == 0)
        return false;
    const TChessboard* root = &b;
    const TSquare origin = TraceBack(root, square);
    return WithoutMark(root->m_board[origin]) == kBlackPawn;
}

bool HasWhiteLostHeavyFigure(const TChessboard& b) {
    const int count = (b.m_bySideState & kWhiteCapturesMask) >> kWhiteCapturesShift;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
        if ((b.m_pContext->m_capturedWhite[i].m_figure & kRook) != 0)
            return true;
    return false;
}

} // namespace quillon
