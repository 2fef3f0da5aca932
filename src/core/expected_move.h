#pragma once
// A move that a problem file expects: squares, and perhaps the figure of a promotion.

#include "core/move.h"

namespace quillon {

/// Is `move` the one that is meant? A promotion without a figure is to a queen.
[[nodiscard]] constexpr bool IsMoveMeant(const TMove& expected, const TMove& move) {
    const bool bFigure = PromotionKind(expected) == PromotionKind(move) ||
                         (PromotionKind(expected) == 0 && PromotionKind(move) == kQueen);
    return expected.m_nFrom == move.m_nFrom && expected.m_nTo == move.m_nTo && bFigure;
}

} // namespace quillon
