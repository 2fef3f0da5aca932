#include "heuristics/idle_figures.h"

#include "core/mask_attacks.h"

namespace quillon {

bool IsIdleFigure(const TChessboard& b, TSquare square) {
    if (b.m_nHeuristics == 0)
        return false;
    const TFigure figure = b.m_board[square];
    const TFigureMasks masks = TakeMasks(b);
    TMask looksAt = 0;
    if (KindOf(figure) == kKnight)
        looksAt = KnightAttacks(square);
    if ((figure & kBishop) != 0)
        looksAt |= BishopAttacks(square, masks.Occupied());
    if ((figure & kRook) != 0)
        looksAt |= RookAttacks(square, masks.Occupied());
    return (looksAt & (KingAttacks(masks.m_nBlackKing) | MaskOf(masks.m_nBlackKing))) == 0;
}

} // namespace quillon
