#pragma once
// Which heuristics of a set would doubt a forced mate that is known already.
//
// A set that doubts the solution costs a whole pass and every pass after it until the last one of the bits is gone.
// When the best-first search has found a mate (search/proof_guide.h), its positions tell which bits do not fit the
// composition, and the first pass starts without them.

#include <cstdint>

#include "core/chessboard.h"
#include "search/proof_guide.h"

namespace quillon {

/// Walks White's moves of the guide with all replies, from `root` in its slot of the stack, and asks each bit of `mask`
/// alone about each position. Returns the bits that doubt one of them.
///   root   its context holds the parameters of the bits; left as it was.
///   Bound  so many of White's positions as one pass would try within moments: a proof too large to be walked may keep
///          a bit that does not fit.
[[nodiscard]] std::uint32_t HeuristicsAgainstGuide(TChessboard& root, const CProofGuide& guide, std::uint32_t mask);

} // namespace quillon
