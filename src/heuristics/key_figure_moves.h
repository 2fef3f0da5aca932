#pragma once
// SH_KEYWHITEFIGURE: a white bishop, rook or queen pins a black figure, and all of White's play rests on the pin.

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// Does the pattern hold: the key figure and the pinned figure on their squares, on one line with the black king behind
/// or before?
[[nodiscard]] bool HoldsKeyPin(const TChessboard& b);

/// All moves but the key figure's quiet ones that give no check; -1 while the pattern does not hold.
int GenerateKeyFigureMoves(const TChessboard& b, TMove* list);

} // namespace quillon
