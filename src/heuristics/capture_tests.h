#pragma once
// What can be captured, with White to move. Pure functions of the position.

#include "core/chessboard.h"

namespace quillon {

/// En prise: can White capture what stands on the square, pins observed? The king captures only what is not defended.
[[nodiscard]] bool CanWhiteCaptureOn(const TChessboard& b, TSquare square);

/// Does a black man other than the king stand where White attacks and Black does not defend? Such a capture costs White
/// nothing, so the next move may be reckoned to make it.
///   bPawns  pawns count as men too.
[[nodiscard]] bool HasLooseBlackMan(const TChessboard& b, bool bPawns);

/// Black rooks that White could capture with its next move.
[[nodiscard]] int CountBlackRooksEnPrise(const TChessboard& b);

/// Does a white man other than the king hold this square, and can Black's men other than the king not take that man?
/// Then the black king does not get there.
[[nodiscard]] bool IsHeldBySafeWhiteMan(const TChessboard& b, TSquare square);

} // namespace quillon
