#pragma once
// What the user or a known variant says about the order of White's moves.

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// IndicatedScore when no indication applies.
inline constexpr int kNotIndicated = 1000;

/// The score that the analysis' sort indications give the white move that led to `child`: kScoreFirst and the places
/// behind it in the order of the list, kScoreKnownNoMate for a move to be avoided, or kNotIndicated.
///   The first indication that applies decides.
[[nodiscard]] int IndicatedScore(const TChessboard& child, const TMove& move);

/// m_wKingState bit 15: the main variant is followed.
inline constexpr std::uint16_t kFollowsMainVariant = 0x8000;

/// Is `move`, White's in `p`, the main variant's move at this ply?
[[nodiscard]] bool IsMainVariantMove(const TChessboard& p, const TMove& move);

} // namespace quillon
