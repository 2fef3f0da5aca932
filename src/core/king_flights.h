#pragma once
// Free squares of the black king, as a mask: those around him that hold no black man and that White does not attack,
// looking through him. Their number alone is CountBlackKingFreeSquares (core/attacks.h).

#include "core/mask_attacks.h"
#include "core/mate_test.h"

namespace quillon {

/// Squares anywhere on the board that he could stand on as things are.
[[nodiscard]] inline TMask SquaresOpenToBlackKing(const TFigureMasks& m) {
    return ~m.m_black & ~WhiteAttacks(m, m.Occupied() & ~MaskOf(m.m_nBlackKing));
}

[[nodiscard]] inline TMask BlackKingFreeSquares(const TFigureMasks& m) {
    return KingAttacks(m.m_nBlackKing) & SquaresOpenToBlackKing(m);
}

} // namespace quillon
