#pragma once
// How deep the short-mate search looks: the horizon of its trials.

#include <cstdint>

#include "core/chessboard.h"

namespace quillon {

/// The horizon when the position is not to be searched at all.
inline constexpr int kQuickerSearchRefused = -1;

/// Of m_wBlackState: the context's m_nQuickerCap bounds the horizon.
inline constexpr std::uint16_t kCappedByContext = 0x4;

/// The longest trial, in plies, that the short-mate search makes of `p` (White to move, m_nMoves = m): the setting if
/// there is one, else a mate in six or seven, less where such a search costs too much. At most m.
///   Reads the context's nesting depth, so it is asked inside the search that has raised it.
///   The figures come from experience with long problems; none of them bears on correctness.
[[nodiscard]] int QuickerHorizon(const TChessboard& p);

/// The longest trial in a FindForcedMate run of this depth code: about as deep as its threats. The run lives on narrow
/// lines, and a full search of every position on the way would cost more than the run.
[[nodiscard]] int ForcedRunHorizon(int nDepthCode);

/// A white pawn stands one step before its promotion.
[[nodiscard]] bool HasPawnOnSeventh(const TChessboard& b);

} // namespace quillon
