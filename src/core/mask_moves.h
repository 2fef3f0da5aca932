#pragma once
// Moves made on figure masks (mask_attacks.h): a copy of some fifty bytes and a few operations. Legality is the
// caller's question: IsWhiteKingAttacked, WhiteCheckers (mate_test.h).

#include "core/mask_attacks.h"

namespace quillon {

namespace mask_detail {

/// Takes whatever stands on these squares off all masks of kinds.
inline void ClearKinds(TFigureMasks& m, TMask squares) {
    m.m_pawns &= ~squares;
    m.m_knights &= ~squares;
    m.m_diagonalSliders &= ~squares;
    m.m_straightSliders &= ~squares;
}

/// Puts a figure of this kind there; kings have no mask.
inline void SetKind(TFigureMasks& m, TMask square, TFigure kind) {
    if (kind == kPawn)
        m.m_pawns |= square;
    else if (kind == kKnight)
        m.m_knights |= square;
    if ((kind & kBishop) != 0)
        m.m_diagonalSliders |= square;
    if ((kind & kRook) != 0)
        m.m_straightSliders |= square;
}

inline void MoveWhiteKing(TFigureMasks& m, int from, int to) {
    m.m_nWhiteKing = to;
    if (AbsDiff(from, to) != 2)
        return;
    const int base = to & 56;
    const bool bKingSide = FileOf(to) == 6;
    const TMask rookFrom = MaskOf(base + (bKingSide ? 7 : 0)), rookTo = MaskOf(base + (bKingSide ? 5 : 3));
    m.m_white = (m.m_white & ~rookFrom) | rookTo;
    m.m_straightSliders = (m.m_straightSliders & ~rookFrom) | rookTo;
}

} // namespace mask_detail

/// White's move: kind is what stands on the target afterwards; a king's move of two squares castles.
[[nodiscard]] inline TFigureMasks WithWhiteMove(const TFigureMasks& m, int from, int to, TFigure kind,
                                                bool bEnPassant = false) {
    TFigureMasks after = m;
    const TMask source = MaskOf(from), target = MaskOf(to);
    const TMask gone = source | target | (bEnPassant ? target >> 8 : 0);
    after.m_white = (after.m_white & ~source) | target;
    after.m_black &= ~gone;
    mask_detail::ClearKinds(after, gone);
    mask_detail::SetKind(after, target, kind);
    if (kind == kKing)
        mask_detail::MoveWhiteKing(after, from, to);
    return after;
}

/// Black's move, no castling, no en passant.
[[nodiscard]] inline TFigureMasks WithBlackMove(const TFigureMasks& m, int from, int to, TFigure kind) {
    TFigureMasks after = m;
    const TMask source = MaskOf(from), target = MaskOf(to);
    after.m_black = (after.m_black & ~source) | target;
    after.m_white &= ~target;
    mask_detail::ClearKinds(after, source | target);
    mask_detail::SetKind(after, target, kind);
    if (kind == kKing)
        after.m_nBlackKing = to;
    return after;
}

} // namespace quillon
