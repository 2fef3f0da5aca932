#pragma once
// White pawns that decide a game by getting through. For the plan of passes; White is to move.

#include "core/chessboard.h"

namespace quillon {

/// Free pawn: a white pawn that cannot be stopped as things stand. No black pawn guards its way or stands on it,
/// nothing else does either, and the black king is too far off.
[[nodiscard]] bool HasFreeWhitePawn(const TChessboard& b);

/// A pawn on the seventh rank promotes with effect - the new figure stands, or is taken only by the king and avenged -
/// and the black king then has a way inwards, to a square two or more from the edge. What keeps him near the edge would
/// doubt all such play.
[[nodiscard]] bool DrivesKingInByPromotion(const TChessboard& b);

/// The same after any move of a white pawn on the fifth rank or beyond.
[[nodiscard]] bool DrivesKingInByPawns(const TChessboard& b);

} // namespace quillon
