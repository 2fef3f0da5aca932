#pragma once
// Looks aside: what would White do with a few plies from here? A node asks it to judge a move, not to prove a verdict
// of its own. It runs the ordinary recursion on a copy, below the slots that the line is using.

#include "core/chessboard.h"

namespace quillon {

/// How a look aside is made.
enum class ELookAside {
    Proof,           // plain chess, nothing in force: a mate found is a proof
    UnderHeuristics, // with the heuristics of the position: cheaper, and finds less
};

/// Does White, to move in `b`, force mate within nPlies (odd, at least 1)? Tried with 1, 3, 5, ... plies.
///   Stack    `b` is left as it is; the slots of the context's stack up to nPlies are used, so `b` and the line above
///   it
///            have to stand higher.
///   False    says nothing if the analysis is being stopped.
[[nodiscard]] bool HasMateWithin(const TChessboard& b, int nPlies, ELookAside kind = ELookAside::Proof);

/// The position after Black, to move in `child` and not in check, has done nothing. It links to `child`.
[[nodiscard]] TChessboard WithBlackPassing(const TChessboard& child);

/// Would White, if Black passed now in `child`, mate within nPlies (odd)? Never looks further than the plies left.
[[nodiscard]] bool ThreatensMate(const TChessboard& child, int nPlies, ELookAside kind = ELookAside::Proof);

} // namespace quillon
