#pragma once
// A proof by checks alone: White plays nothing but checks, Black everything that answers them. Such a line may be far
// longer than a full search can be, and what it finds is a mate like any other.

#include "core/chessboard.h"

namespace quillon {

/// White to move in `p`: do checks alone force mate within m_nMoves plies?
///   True is a proof. False says nothing: the look is bounded in positions.
///   `p` is left as it was.
[[nodiscard]] bool ProveByForcing(TChessboard& p);

} // namespace quillon
