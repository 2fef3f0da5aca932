#pragma once
// The main variant of a solved position: the key, then Black's longest resistance and White's mating moves.

#include <vector>

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// The line after `key`, key first, to the mate: at each turn the black reply that takes White longest (the first such
/// in the order of generation), answered by the first white move found that mates in the fewest moves.
///   root  the root of a run, in its slot; `key` mates within its m_nMoves.
///   Empty if the search is stopped on the way.
[[nodiscard]] std::vector<TMove> BuildMainVariant(TChessboard& root, const TMove& key);

} // namespace quillon
