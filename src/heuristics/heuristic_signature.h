#pragma once
// The signature that keeps results of different heuristic sets apart.

#include <cstdint>

#include "core/chessboard.h"

namespace quillon {

/// Value for m_nHeurParams: the parameters, of the bits set in m_nHeuristics, that can differ between the passes or the
/// lines of one solve, packed into 32 bits. Together with the mask it is part of a register key, so it is computed anew
/// after every change of the mask, of a parameter, or of a bit of m_wBlackState or m_bySideState that enters it.
///   Arithmetic  modulo 2^32: what a large set shifts out at the top is lost.
///   Result      0 for an empty mask, whatever the parameters; the context is not looked at then.
///   Contract    otherwise the board has a context, and with SH_DONTLETFIGUREUNBLOCK the context has a root.
///   Cost        for the search: no allocation; one pass over the root's squares with SH_DONTLETFIGUREUNBLOCK.
[[nodiscard]] std::uint32_t ComputeHeurParams(const TChessboard& board) noexcept;

} // namespace quillon
