#pragma once
// Perft: the number of legal move sequences of a depth, through the generators and makers, by the rules of chess alone.

#include <cstdint>
#include <functional>

#include "core/chessboard.h"

namespace quillon {

/// Leaves `nDepth` plies (0..40) below `root`, each made by its maker (no bulk counting).
///   root  a record of a context's stack, validated, whose m_nMoves has the parity of the side to move and is at least
///         nDepth, and that stands in its RootSlot; the context's stack is used.
[[nodiscard]] std::uint64_t Perft(TChessboard& root, int nDepth);

/// The same, telling the leaves below each root move.
std::uint64_t PerftDivide(TChessboard& root, int nDepth, const std::function<void(const TMove&, std::uint64_t)>& tell);

} // namespace quillon
