#pragma once
// Which material that precalculated data are at hand for is left when white men are taken away.

#include "core/chessboard.h"
#include "core/position_type.h"

namespace quillon {

/// Lowers White's counters to those of the first such material, the cheaper men leaving before the dearer ones: with
/// queen, rook and pawn the pawn, the rook, both, the queen. At least one man leaves, and one stays beside the king.
///   b       only its counters are looked at and written; as they were if there is none.
///   Result  false: there is none.
[[nodiscard]] bool LowerCountersToData(TChessboard& b, bool (*isAvailable)(TPositionType));

} // namespace quillon
