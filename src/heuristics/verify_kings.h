#pragma once
// Rules about the two kings' distance.

#include "heuristics/verified_move.h"

namespace quillon {

/// SH_AREKINGSNEAR: without a queen the white king takes part in the mate, and is too far off.
[[nodiscard]] ERuling DoubtsDistantKings(CVerifiedMove& move);

/// SH_CAPTUREKNIGHT: with the kings face to face on the edge a black knight that is not to be taken saves Black.
[[nodiscard]] ERuling DoubtsLivingKnight(CVerifiedMove& move);

/// The black king comes to meet the white one: Black has no other figures to move, and he has a free square nearer.
[[nodiscard]] bool IsBlackKingDrawnNearer(const TChessboard& b);

/// Has Black a knight, and can White take none?
[[nodiscard]] bool AreBlackKnightsSafe(const TChessboard& b);

} // namespace quillon
