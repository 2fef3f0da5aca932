#pragma once
// The main variant of a solved position: the key, then Black's longest resistance and White's mating moves.

#include <cstdint>
#include <vector>

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// Less than a second: exact for mates that are not much longer than six moves.
inline constexpr std::uint64_t kVariantPositions = 1'000'000;

/// The line after `key`, key first, to the mate: at each turn the black reply that takes White longest (the first such
/// in the order of generation, unless threads share the work), answered by a white move that mates in the fewest moves.
///   root            the root of a run, in its slot; `key` mates within its m_nMoves.
///   nMostPositions  what may be spent on telling the lengths of the replies apart, and as much again on White's moves.
///                   With less than it takes, a reply that holds out longest as far as is known stands for the best.
///                   An only reply gets a part of it: the mate behind it may then be longer than need be.
///   Empty if the search is stopped on the way, or the moves that mate are not found again within the bound.
[[nodiscard]] std::vector<TMove> BuildMainVariant(TChessboard& root, const TMove& key,
                                                  std::uint64_t nMostPositions = kVariantPositions);

} // namespace quillon
