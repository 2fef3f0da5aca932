#pragma once
// Which of White's figures take part in the attack.

#include "core/chessboard.h"

namespace quillon {

/// Does the white figure on the square (no king, no pawn) take no part in the attack: it looks, as things stand, at no
/// square beside the black king, nor at the king himself? In a pass without heuristics every figure counts as busy.
[[nodiscard]] bool IsIdleFigure(const TChessboard& b, TSquare square);

} // namespace quillon
