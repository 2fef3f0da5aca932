#pragma once
// The short-mate search. A position in the middle of a long problem often has a much shorter mate, and a proof of that
// mate ends the whole subtree whatever the defence: so it is looked for first, from mate in one upwards.

#include "core/chessboard.h"

namespace quillon {

/// White to move in `p`: is there a mate within m_nMoves plies that a short look finds?
///   True is a proof. False says nothing: only that no short mate was found.
///   `p` is on return what it was before, byte for byte; the positions of the trials are counted apart.
///   A stop of the analysis makes it answer false.
[[nodiscard]] bool FindQuickerMate(TChessboard* p);

} // namespace quillon
