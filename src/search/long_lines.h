#pragma once
// Attempts at long forced lines: what the short-mate search does when no trial has found a mate. A white move that
// leaves Black only a few replies is tested by a short-mate search behind each of them.

#include "core/chessboard.h"

namespace quillon {

/// White to move in `p`, inside its outermost short-mate search: does one of a few forcing moves mate within m_nMoves?
///   True is a proof. False says nothing. Attempts do not nest: inside one this answers false.
[[nodiscard]] bool FindLongLine(TChessboard& p);

} // namespace quillon
